// SPDX-License-Identifier: Apache-2.0
#include "simulator/engine.h"

#include <algorithm>
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
    return std::make_shared<std::string const>("Topic: " + beginning(event.topic) +
                                               "\nMessage: " + beginning(event.message) + "\n");
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

}  // namespace

EngineState::EngineState(Catalogue kept, Time now) : catalogue(std::move(kept)) {
    for (auto const &trigger : catalogue.entries(Table::triggers)) {
        restartTrigger(trigger.first, now);
    }
}

void EngineState::restartTrigger(std::uint32_t trigger_id, Time now) {
    forgetTrigger(trigger_id);
    Catalogue::Entry const &trigger = catalogue.at(Table::triggers, trigger_id);
    if (trigger.kind->type == protocol::reoccurring_timer) {
        deadlines_.repeat(trigger_id, now,
                          std::chrono::seconds(setting<std::uint32_t>(trigger, "timer_seconds")));
    }
}

void EngineState::forgetTrigger(std::uint32_t trigger_id) {
    deadlines_.remove(trigger_id);
    unstable_.erase(trigger_id);
    changed_ = true;
}

void EngineState::inject(onvif::Event const &event, Time now) {
    if (fired_.size() >= most_waiting) {
        throw impossible(std::to_string(fired_.size()) +
                         " triggers have fired and wait for their actions; the event is left out");
    }
    Cause const cause = causeOf(event);
    for (auto const &[trigger_id, trigger] : catalogue.entries(Table::triggers)) {
        if (trigger.kind->type == protocol::reoccurring_timer) {
            continue;
        }
        onvif::Namespaces const namespaces{setting<Texts>(trigger, "namespace_keys"),
                                           setting<Texts>(trigger, "namespace_uris")};
        if (!onvif::topicMatches(setting<std::string>(trigger, "topic_filter"), namespaces, event)) {
            continue;
        }
        bool const fits = onvif::contentMatches(setting<std::string>(trigger, "content_filter"), event);
        if (trigger.kind->type == protocol::onvif_event) {
            if (fits) {
                fired_.push_back({trigger_id, cause});
            }
        } else if (!fits) {
            deadlines_.remove(trigger_id);
            unstable_.erase(trigger_id);
        } else if (!deadlines_.contains(trigger_id)) {
            deadlines_.once(trigger_id,
                            now + std::chrono::seconds(setting<std::uint32_t>(trigger, "stability_seconds")));
            unstable_[trigger_id] = cause;
        }
    }
    changed_ = true;
}

std::optional<EngineState::Firing> EngineState::takeFiring(Time now) {
    // Timers join only when all that has fired is done, so that slow actions let no heap of firings grow.
    if (fired_.empty()) {
        for (std::uint32_t const trigger_id : deadlines_.takeDue(now)) {
            auto const waiting = unstable_.find(trigger_id);
            if (waiting == unstable_.end()) {
                fired_.push_back({trigger_id, nullptr});
            } else {
                fired_.push_back({trigger_id, std::move(waiting->second)});
                unstable_.erase(waiting);
            }
        }
    }
    if (fired_.empty()) {
        return std::nullopt;
    }
    Firing firing = std::move(fired_.front());
    fired_.pop_front();
    return firing;
}

bool EngineState::takeChanged() {
    return std::exchange(changed_, false);
}

Engine::Engine(Catalogue catalogue, Surroundings surroundings, Log const &log)
    : surroundings_(std::move(surroundings)), log_(log), state_(std::move(catalogue), surroundings_.now()) {}

bool Engine::step() {
    if (runs_.empty()) {
        return takeRuns();
    }
    Run const run = std::move(runs_.front());
    runs_.pop_front();
    if (std::optional<Job> const job = prepare(run)) {
        publish(*job, surroundings_.run(*job));
    }
    return true;
}

std::optional<Engine::Time> Engine::nextDeadline() {
    return state_.with([](EngineState &state) { return state.nextDeadline(); });
}

bool Engine::takeRuns() {
    return state_.with([this](EngineState &state) {
        std::optional<EngineState::Firing> const firing = state.takeFiring(surroundings_.now());
        if (!firing) {
            return false;
        }
        // The trigger may have been deleted since it fired.
        if (state.catalogue.find(Table::triggers, firing->trigger_id) != nullptr) {
            for (std::uint32_t const action_id : state.catalogue.actionsOf(firing->trigger_id)) {
                runs_.push_back({action_id, firing->trigger_id, firing->cause});
            }
        }
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
        if (!mayRun(action->filters, time)) {
            held_back = "action " + std::to_string(run.action_id) + " " + quoted(prepared.name()) +
                        " does not run: its filters do not allow it at this time";
            return std::nullopt;
        }
        return prepared;
    });
    if (!held_back.empty()) {
        log_.info(held_back);
    }
    return job;
}

void Engine::publish(Job const &job, bool success) {
    std::string event;
    JsonWriter writer(event);
    writer.text("event", protocol::action_completed::event);
    writer.number(protocol::action_completed::action_id, job.action_id);
    writer.text(protocol::action_completed::action_name, job.name());
    writer.flag(protocol::action_completed::success, success);
    writer.close();
    surroundings_.publish(event);
}

}  // namespace simulator
