// SPDX-License-Identifier: Apache-2.0
#include "simulator/engine.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "simulator/json_writer.h"
#include "simulator/refused.h"

namespace simulator {

namespace {

using Table = Catalogue::Table;

template <typename T>
T const &setting(Catalogue::Entry const &trigger, std::string_view name) {
    return valueOf<T>(trigger.settings, settingsRow(*trigger.kind), name);
}

/// An event for the record. Messages can be large and many can wait, so only the beginning is kept.
EngineState::Cause causeOf(onvif::Event const &event) {
    static constexpr std::size_t longest = 4096;
    auto const beginning = [](std::string const &text) {
        std::size_t end = std::min(text.size(), longest);
        // A character of several bytes is not cut in two.
        while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80U) {
            --end;
        }
        return text.substr(0, end);
    };
    return std::make_shared<std::string const>("Topic: " + beginning(event.topic_text) +
                                               "\nMessage: " + beginning(event.message_text) + "\n");
}

/// For log lines: what it is, its identifier and its name.
std::string described(std::uint32_t trigger_id, Catalogue::Entry const &trigger) {
    return "trigger " + std::to_string(trigger_id) + " " +
           quoted(setting<std::string>(trigger, "trigger_name"));
}

std::string propertyOf(onvif::Event const &event) {
    std::string property;
    for (onvif::Name const &name : event.topic) {
        property += "{" + name.uri + "}" + name.local + "/";
    }
    return property + event.message.property();
}

std::string describe(std::uint32_t trigger_id, Catalogue::Entry const *trigger,
                     EngineState::Cause const &cause) {
    std::string text = "Trigger " + std::to_string(trigger_id);
    if (trigger != nullptr) {
        text +=
            " " + quoted(setting<std::string>(*trigger, "trigger_name")) + " (" + trigger->kind->noun + ")";
    }
    text += " fired.\n";
    return cause == nullptr ? text : text + *cause;
}

/// The event that tells of a run (JSON).
std::string completion(Job const &job, bool success) {
    std::string event;
    JsonWriter writer(event);
    writer.text("event", protocol::action_completed::event);
    writer.number(protocol::action_completed::action_id, job.action_id);
    writer.text(protocol::action_completed::action_name, job.name());
    writer.flag(protocol::action_completed::success, success);
    writer.close();
    return event;
}

/// One line for each entry that a person would wait for in vain.
void warnOfFaults(Catalogue const &catalogue, Log const &log) {
    for (auto const &[trigger_id, trigger] : catalogue.entries(Table::triggers)) {
        if (!trigger.fault.empty()) {
            log.warning(described(trigger_id, trigger) + " never fires: " + trigger.fault);
        }
    }
    for (auto const &[action_id, action] : catalogue.entries(Table::actions)) {
        if (!action.fault.empty()) {
            log.warning("action " + std::to_string(action_id) + " " +
                        quoted(setting<std::string>(action, "action_name")) + " never runs: " + action.fault);
        }
    }
}

}  // namespace

EngineState::EngineState(Catalogue kept, Time now) : catalogue(std::move(kept)) {
    for (auto const &trigger : catalogue.entries(Table::triggers)) {
        startTimer(trigger.first, now);
    }
    changed_ = true;
}

void EngineState::restartTrigger(std::uint32_t trigger_id, Time now) noexcept {
    forgetTrigger(trigger_id);
    try {
        startTimer(trigger_id, now);
    } catch (std::exception const &) {
        // The trigger itself is stored and answered for.
        timers_are_missing_ = true;
    }
}

void EngineState::startTimer(std::uint32_t trigger_id, Time now) {
    Catalogue::Entry const &trigger = catalogue.at(Table::triggers, trigger_id);
    if (trigger.kind->type == protocol::reoccurring_timer) {
        deadlines_.repeat(trigger_id, now,
                          std::chrono::seconds(setting<std::uint32_t>(trigger, "timer_seconds")));
    }
}

void EngineState::startMissingTimers(Time now) {
    for (auto const &trigger : catalogue.entries(Table::triggers)) {
        if (!deadlines_.contains(trigger.first)) {
            startTimer(trigger.first, now);
        }
    }
    timers_are_missing_ = false;
}

void EngineState::forgetTrigger(std::uint32_t trigger_id) noexcept {
    deadlines_.remove(trigger_id);
    for (auto followed = followed_.lower_bound({trigger_id, ""});
         followed != followed_.end() && followed->first.first == trigger_id;) {
        Deadlines::Ticket const ticket(trigger_id, followed->second);
        deadlines_.remove(ticket);
        waiting_.erase(ticket);
        followed = followed_.erase(followed);
    }
    changed_ = true;
}

EngineState::Injection EngineState::inject(onvif::Event const &event, Time now) {
    constexpr std::size_t most_missed = 20;
    if (fired_.size() >= most_waiting) {
        throw impossible(std::to_string(fired_.size()) +
                         " triggers have fired and wait for their actions; the event is left out");
    }
    Injection injection;
    std::vector<std::uint32_t> fires;
    std::vector<std::uint32_t> waits;
    std::vector<std::uint32_t> ends;
    std::string const property = propertyOf(event);
    std::size_t followed_more = 0;
    for (auto const &[trigger_id, trigger] : catalogue.entries(Table::triggers)) {
        if (trigger.kind->type == protocol::reoccurring_timer || !trigger.fault.empty() ||
            !trigger.meaning.topics.matches(event.topic)) {
            continue;
        }
        bool const stable = trigger.kind->type == protocol::stable_onvif_event;
        bool const fits = trigger.meaning.contents.matches(event.message);
        if (!fits && injection.missed.size() < most_missed) {
            injection.missed.push_back(described(trigger_id, trigger) + " does not take the message: " +
                                       trigger.meaning.contents.whyNot(event.message));
        }
        if (!stable && fits) {
            fires.push_back(trigger_id);
        } else if (stable && fits && !event.message.deletes()) {
            waits.push_back(trigger_id);
            followed_more += 1 - followed_.count({trigger_id, property});
        } else if (stable) {
            ends.push_back(trigger_id);
        }
    }
    if (followed_more != 0 && property.size() > longest_property) {
        throw impossible(
            "a stable trigger takes the event, and the items that name its property have more than " +
            std::to_string(longest_property) + " bytes");
    }
    if (followed_.size() + followed_more > most_followed) {
        throw impossible("stable triggers follow " + std::to_string(followed_.size()) +
                         " properties already; the event is left out");
    }

    // All that takes memory is made first, so that an event is taken as a whole or not at all.
    Cause const cause = causeOf(event);
    std::list<Firing> more_fired;
    for (std::uint32_t const trigger_id : fires) {
        more_fired.push_back({trigger_id, cause});
    }
    std::uint64_t last_wait = last_wait_;
    Deadlines more_deadlines;
    decltype(followed_) more_followed;
    decltype(waiting_) more_waiting;
    for (std::uint32_t const trigger_id : waits) {
        if (followed_.count({trigger_id, property}) == 0) {
            auto const seconds =
                setting<std::uint32_t>(catalogue.at(Table::triggers, trigger_id), "stability_seconds");
            Deadlines::Ticket const ticket(trigger_id, ++last_wait);
            more_deadlines.once(ticket, now + std::chrono::seconds(seconds));
            more_followed.emplace(Followed(trigger_id, property), ticket.wait);
            more_waiting.emplace(ticket, cause);
        }
    }
    std::vector<Followed> ended;
    ended.reserve(ends.size());
    for (std::uint32_t const trigger_id : ends) {
        ended.emplace_back(trigger_id, property);
    }

    fired_.splice(fired_.end(), more_fired);
    last_wait_ = last_wait;
    deadlines_.add(std::move(more_deadlines));
    followed_.merge(more_followed);
    waiting_.merge(more_waiting);
    for (Followed const &followed : ended) {
        endWait(followed);
    }
    changed_ = true;
    injection.fired = static_cast<unsigned int>(fires.size());
    return injection;
}

void EngineState::endWait(Followed const &followed) noexcept {
    auto const found = followed_.find(followed);
    if (found != followed_.end()) {
        Deadlines::Ticket const ticket(followed.first, found->second);
        deadlines_.remove(ticket);
        waiting_.erase(ticket);
        followed_.erase(found);
    }
}

EngineState::Firing const *EngineState::nextFiring(Time now) {
    if (timers_are_missing_) {
        startMissingTimers(now);
    }
    // Timers join only when all that has fired is done, so that slow actions let no heap of firings grow.
    if (fired_.empty()) {
        for (;;) {
            std::list<Firing> firing(1);
            std::optional<Deadlines::Ticket> const ticket = deadlines_.takeDue(now);
            if (!ticket) {
                break;
            }
            firing.front().trigger_id = ticket->trigger_id;
            auto const waiting = waiting_.find(*ticket);
            if (waiting != waiting_.end()) {
                firing.front().cause = std::move(waiting->second);
                waiting_.erase(waiting);
            }
            fired_.splice(fired_.end(), firing);
        }
    }
    return fired_.empty() ? nullptr : &fired_.front();
}

bool EngineState::takeChanged() {
    return std::exchange(changed_, false);
}

Engine::Engine(Catalogue catalogue, Surroundings surroundings, Log const &log)
    : surroundings_(std::move(surroundings)), log_(log), state_(std::move(catalogue), surroundings_.now()) {
    state_.with([&log](EngineState const &state) { warnOfFaults(state.catalogue, log); });
}

bool Engine::step() {
    if (runs_.empty()) {
        return takeRuns();
    }
    std::optional<Job> const job = prepare(runs_.front());
    if (job) {
        // Both, before the action runs: afterwards nothing may fail that would let it run again.
        std::string const succeeded = completion(*job, /*success*/ true);
        std::string const failed = completion(*job, /*success*/ false);
        runs_.pop_front();
        surroundings_.publish(surroundings_.run(*job) ? succeeded : failed);
    } else {
        runs_.pop_front();
    }
    return true;
}

std::optional<Engine::Time> Engine::nextDeadline() {
    return state_.with([](EngineState &state) { return state.nextDeadline(); });
}

bool Engine::takeRuns() {
    return state_.with([this](EngineState &state) {
        EngineState::Firing const *const firing = state.nextFiring(surroundings_.now());
        if (firing == nullptr) {
            return false;
        }
        std::deque<Run> runs;
        // The trigger may have been deleted since it fired.
        if (state.catalogue.find(Table::triggers, firing->trigger_id) != nullptr) {
            for (std::uint32_t const action_id : state.catalogue.actionsOf(firing->trigger_id)) {
                runs.push_back({action_id, firing->trigger_id, firing->cause});
            }
        }
        runs_.swap(runs);
        state.dropFiring();
        return true;
    });
}

std::optional<Job> Engine::prepare(Run const &run) {
    LocalTime const time = surroundings_.local_time();
    std::string held_back;
    std::optional<Job> job = state_.with([&](EngineState &state) -> std::optional<Job> {
        Catalogue::Entry const *const action = state.catalogue.find(Table::actions, run.action_id);
        if (action == nullptr) {
            return std::nullopt;
        }
        Catalogue::Entry const *const trigger = state.catalogue.find(Table::triggers, run.trigger_id);
        Job prepared{run.action_id, action->kind, action->settings,
                     describe(run.trigger_id, trigger, run.cause)};
        bool const sound = action->fault.empty();
        if (!sound || !mayRun(action->filters, time)) {
            held_back =
                "action " + std::to_string(run.action_id) + " " + quoted(prepared.name()) +
                " does not run: " + (sound ? "its filters do not allow it at this time" : action->fault);
            return std::nullopt;
        }
        return prepared;
    });
    if (!held_back.empty()) {
        log_.info(held_back);
    }
    return job;
}

}  // namespace simulator
