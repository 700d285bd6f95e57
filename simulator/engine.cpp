// SPDX-License-Identifier: Apache-2.0
#include "simulator/engine.h"

#include <algorithm>
#include <boost/json/serialize.hpp>
#include <exception>
#include <utility>

#include "error_words.h"
#include "simulator/completion.h"
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
EngineState::Cause causeOf(Trace const &trace) {
    return std::make_shared<EngineState::Origin const>(
        EngineState::Origin{"Topic: " + trace.topic + "\nMessage: " + trace.message + "\n", trace.chain});
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
    return cause == nullptr ? text : text + cause->words;
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

/// Why the trigger does not fire; empty where it does, or waits.
std::string why(TriggerVerdict verdict, Catalogue::Entry const &trigger, onvif::Event const &event) {
    switch (verdict) {
        case TriggerVerdict::never_fires:
            return trigger.fault;
        case TriggerVerdict::topic_differs:
            return trigger.meaning.topics.whyNot(event.topic);
        case TriggerVerdict::message_fails:
            return trigger.meaning.contents.whyNot(event.message);
        case TriggerVerdict::ends_wait:
        case TriggerVerdict::property_deleted:
            return event.message.deletes() && trigger.meaning.contents.matches(event.message)
                       ? "the message tells that the property is deleted"
                       : trigger.meaning.contents.whyNot(event.message);
        default:
            return "";
    }
}

std::string endOf(EngineState::Chain const &chain) {
    std::string words = "a chain ends after " + std::to_string(chain.size()) + " actions: ";
    for (std::string const &action : chain) {
        words.append(&action == &chain.front() ? "" : " > ").append(action);
    }
    return words;
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

void judgeAction(Catalogue::Entry const &action, LocalTime time, ActionTrace &trace) {
    trace.name = setting<std::string>(action, "action_name");
    trace.kind = action.kind->noun;
    if (!action.fault.empty()) {
        trace.verdict = ActionVerdict::never_runs;
        trace.window = action.fault;
        return;
    }
    trace.verdict = mayRun(action.filters, time) ? ActionVerdict::would_run : ActionVerdict::held_back;
    trace.window = whyMayRun(action.filters, time);
}

EngineState::EngineState(Catalogue kept, Time now, std::size_t most_traces)
    : catalogue(std::move(kept)), traces(most_traces) {
    for (auto const &trigger : catalogue.entries(Table::triggers)) {
        startTimer(trigger.first, now);
    }
    catalogue.store().readTraces([this](std::uint64_t id, std::uint32_t outcome, std::string_view text) {
        if (outcome < outcome_count) {
            traces.restore(KeptTrace(id, static_cast<Outcome>(outcome), std::string(text)));
        }
    });
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

void EngineState::replace(Catalogue::Contents contents, Time now) {
    catalogue.replace(std::move(contents));
    deadlines_ = Deadlines();
    followed_.clear();
    waiting_.clear();
    for (auto const &trigger : catalogue.entries(Table::triggers)) {
        restartTrigger(trigger.first, now);
    }
    changed_ = true;
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

TriggerVerdict EngineState::judge(std::uint32_t trigger_id, Catalogue::Entry const &trigger,
                                  onvif::Event const &event, std::string const &property) const {
    if (!trigger.fault.empty()) {
        return TriggerVerdict::never_fires;
    }
    if (!trigger.meaning.topics.matches(event.topic)) {
        return TriggerVerdict::topic_differs;
    }
    bool const fits = trigger.meaning.contents.matches(event.message);
    if (trigger.kind->type != protocol::stable_onvif_event) {
        return fits ? TriggerVerdict::fires : TriggerVerdict::message_fails;
    }
    bool const followed = followed_.count({trigger_id, property}) != 0;
    if (fits && !event.message.deletes()) {
        return followed ? TriggerVerdict::goes_on : TriggerVerdict::begins_wait;
    }
    if (followed) {
        return TriggerVerdict::ends_wait;
    }
    return fits ? TriggerVerdict::property_deleted : TriggerVerdict::message_fails;
}

template <typename Each>
Trace EngineState::lookAt(onvif::Event const &event, std::string const &property, Wall wall,
                          bool is_completion, Each each) const {
    Trace trace;
    trace.time = wall;
    trace.topic = beginningOf(event.topic_text, Trace::longest_text);
    trace.message = beginningOf(event.message_text, Trace::longest_text);
    std::size_t differing = 0;
    for (auto const &[trigger_id, trigger] : catalogue.entries(Table::triggers)) {
        if (trigger.kind->type == protocol::reoccurring_timer ||
            (is_completion && trigger.meaning.topics.takesAll())) {
            continue;
        }
        TriggerVerdict const verdict = judge(trigger_id, trigger, event, property);
        if (verdict == TriggerVerdict::topic_differs && ++differing > Trace::most_triggers) {
            // Its words would be left out anyway, and there may be very many.
            ++trace.triggers_left_out;
            continue;
        }
        TriggerTrace looked_at{trigger_id, setting<std::string>(trigger, "trigger_name"), verdict,
                               why(verdict, trigger, event)};
        each(trigger, looked_at);
        trace.add(std::move(looked_at));
    }
    return trace;
}

Trace EngineState::explain(onvif::Event const &event, Wall wall) const {
    std::vector<std::uint32_t> fires;
    Trace trace = lookAt(event, propertyOf(event), wall, /*is_completion*/ false,
                         [&](Catalogue::Entry const &, TriggerTrace const &looked_at) {
                             if (looked_at.verdict == TriggerVerdict::fires ||
                                 looked_at.verdict == TriggerVerdict::begins_wait) {
                                 fires.push_back(looked_at.id);
                             }
                         });
    for (std::uint32_t const trigger_id : fires) {
        for (std::uint32_t const action_id : catalogue.actionsOf(trigger_id)) {
            ActionTrace action{trigger_id, action_id, "", nullptr, ActionVerdict::gone, "", "", {}, ""};
            judgeAction(catalogue.at(Table::actions, action_id), localTime(wall), action);
            trace.add(std::move(action));
        }
    }
    return trace;
}

void EngineState::refuse(std::string const &topic, std::string const &message, char const *why, Wall wall,
                         Chain chain) noexcept {
    try {
        Trace trace;
        trace.time = wall;
        trace.topic = beginningOf(topic, Trace::longest_text);
        trace.message = beginningOf(message, Trace::longest_text);
        trace.refusal = why;
        if (!chain.empty()) {
            trace.cause = Trace::Cause::completion;
            trace.chain = std::move(chain);
        }
        traces.add(std::move(trace));
        changed_ = true;
    } catch (std::exception const &) {
        // The event is refused all the same.
    }
}

bool EngineState::followsCompletion(bool success) const {
    onvif::Topic const &topic = completionTopic(success);
    auto const &triggers = catalogue.entries(Table::triggers);
    return std::any_of(triggers.begin(), triggers.end(), [&topic](auto const &entry) {
        Catalogue::Entry const &trigger = entry.second;
        return trigger.kind->type != protocol::reoccurring_timer && trigger.fault.empty() &&
               !trigger.meaning.topics.takesAll() && trigger.meaning.topics.matches(topic);
    });
}

EngineState::Injection EngineState::inject(onvif::Event const &event, Time now, Wall wall, Chain chain) {
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
    auto const open = std::make_shared<OpenTrace>();
    Trace &trace = open->trace;
    trace = lookAt(event, property, wall, !chain.empty(),
                   [&](Catalogue::Entry const &trigger, TriggerTrace const &looked_at) {
                       bool const fails = looked_at.verdict == TriggerVerdict::message_fails ||
                                          (looked_at.verdict == TriggerVerdict::ends_wait &&
                                           !trigger.meaning.contents.matches(event.message));
                       if (fails && injection.missed.size() < most_missed) {
                           injection.missed.push_back(described(looked_at.id, trigger) +
                                                      " does not take the message: " + looked_at.why);
                       }
                       if (looked_at.verdict == TriggerVerdict::fires) {
                           fires.push_back(looked_at.id);
                       } else if (looked_at.verdict == TriggerVerdict::begins_wait) {
                           waits.push_back(looked_at.id);
                       } else if (looked_at.verdict == TriggerVerdict::ends_wait) {
                           ends.push_back(looked_at.id);
                       }
                   });
    if (!chain.empty()) {
        trace.cause = Trace::Cause::completion;
        trace.chain = std::move(chain);
    }
    if (!waits.empty() && property.size() > longest_property) {
        throw impossible(
            "a stable trigger takes the event, and the items that name its property have more than " +
            std::to_string(longest_property) + " bytes");
    }
    if (followed_.size() + waits.size() > most_followed) {
        throw impossible("stable triggers follow " + std::to_string(followed_.size()) +
                         " properties already; the event is left out");
    }

    // All that takes memory is made first, so that an event is taken as a whole or not at all.
    Cause const cause = causeOf(trace);
    std::list<Firing> more_fired;
    for (std::uint32_t const trigger_id : fires) {
        more_fired.push_back({trigger_id, cause, open});
    }
    std::uint64_t last_wait = last_wait_;
    Deadlines more_deadlines;
    decltype(followed_) more_followed;
    decltype(waiting_) more_waiting;
    for (std::uint32_t const trigger_id : waits) {
        auto const seconds =
            setting<std::uint32_t>(catalogue.at(Table::triggers, trigger_id), "stability_seconds");
        Deadlines::Ticket const ticket(trigger_id, ++last_wait);
        more_deadlines.once(ticket, now + std::chrono::seconds(seconds));
        more_followed.emplace(Followed(trigger_id, property), ticket.wait);
        more_waiting.emplace(ticket, Wait{cause, trace.topic, trace.message});
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
    open->pending = fires.size();
    if (fires.empty()) {
        traces.add(std::move(trace));
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

std::optional<Deadlines::Ticket> EngineState::joinDue(Time now, Wall wall) {
    std::list<Firing> firing(1);
    auto const open = std::make_shared<OpenTrace>();
    std::optional<Deadlines::Ticket> const ticket = deadlines_.takeDue(now);
    if (!ticket) {
        return ticket;
    }
    // From here on nothing may fail, or the firing would be lost.
    open->pending = 1;
    open->trace.time = wall;
    open->trace.cause = Trace::Cause::timer;
    firing.front().trigger_id = ticket->trigger_id;
    firing.front().trace = open;
    auto const waiting = waiting_.find(*ticket);
    if (waiting != waiting_.end()) {
        open->trace.cause = Trace::Cause::stability;
        open->trace.topic = std::move(waiting->second.topic);
        open->trace.message = std::move(waiting->second.message);
        firing.front().cause = std::move(waiting->second.cause);
        waiting_.erase(waiting);
    }
    Cause const cause = firing.front().cause;
    fired_.splice(fired_.end(), firing);
    try {
        if (cause != nullptr) {
            open->trace.chain = cause->chain;
        }
        open->trace.add(
            {ticket->trigger_id,
             setting<std::string>(catalogue.at(Table::triggers, ticket->trigger_id), "trigger_name"),
             TriggerVerdict::fires, ""});
    } catch (std::exception const &) {
        open->trace.fired = 1;
        open->trace.triggers_left_out = 1;
    }
    return ticket;
}

EngineState::Firing const *EngineState::nextFiring(Time now, Wall wall) {
    if (timers_are_missing_) {
        startMissingTimers(now);
    }
    // Timers join only when all that has fired is done, so that slow actions let no heap of firings grow.
    if (fired_.empty()) {
        while (joinDue(now, wall)) {
        }
    }
    return fired_.empty() ? nullptr : &fired_.front();
}

bool EngineState::takeChanged() {
    return std::exchange(changed_, false);
}

Engine::Engine(Catalogue catalogue, Surroundings surroundings, Log const &log, Settings const &settings)
    : surroundings_(std::move(surroundings)),
      log_(log),
      state_(std::move(catalogue), surroundings_.now(), settings.most_traces) {
    if (settings.shuffle_seed) {
        shuffling_.emplace(*settings.shuffle_seed);
    }
    state_.with([&log](EngineState const &state) { warnOfFaults(state.catalogue, log); });
}

bool Engine::step() {
    if (runs_.empty()) {
        return takeRuns();
    }
    ActionTrace told{
        runs_.front().trigger_id, runs_.front().action_id, "", nullptr, ActionVerdict::gone, "", "", {}, ""};
    std::optional<Job> const job = prepare(runs_.front(), told);
    std::shared_ptr<OpenTrace> const trace = runs_.front().trace;
    if (!job) {
        runs_.pop_front();
        finishRun(trace, std::move(told));
        return true;
    }
    told.parameters =
        boost::json::serialize(objectOf(settingsRow(*job->kind), job->settings, Telling::shortened));
    auto const begin = std::chrono::steady_clock::now();
    // Both events, before the action runs: afterwards nothing may fail that would let it run again.
    std::function<void(RunResult)> done =
        [this, begin, trace, told = std::move(told), succeeded = completion(*job, /*success*/ true),
         failed = completion(*job, /*success*/ false),
         ended = Ended{job->action_id, job->name(), runs_.front().cause}](RunResult result) mutable {
            using std::chrono::microseconds;
            told.duration =
                std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - begin);
            told.verdict = result.success ? ActionVerdict::succeeded : ActionVerdict::failed;
            told.words = std::move(result.words);
            finishRun(trace, std::move(told));
            surroundings_.publish(result.success ? succeeded : failed);
            tellTriggers(ended, result.success);
        };
    runs_.pop_front();
    // Moved: a copy would take memory.
    surroundings_.run(*job, std::move(done));
    return true;
}

void Engine::finishRun(std::shared_ptr<OpenTrace> const &trace, ActionTrace action) noexcept {
    try {
        trace->trace.add(std::move(action));
    } catch (std::exception const &) {
        ++trace->trace.actions_left_out;
    }
    if (trace->ends()) {
        state_.with([&](EngineState &state) { state.traces.add(std::move(trace->trace)); });
        surroundings_.wake();
    }
}

void Engine::tellTriggers(Ended const &ended, bool success) noexcept {
    try {
        constexpr std::size_t longest_name = 100;
        std::string end;
        change([&](EngineState &state) {
            if (!state.followsCompletion(success)) {
                return;
            }
            onvif::Event const event =
                completionEvent(ended.action_id, ended.name, success, surroundings_.wall());
            EngineState::Chain chain = ended.cause == nullptr ? EngineState::Chain() : ended.cause->chain;
            chain.push_back("action " + std::to_string(ended.action_id) + " " +
                            quoted(beginningOf(ended.name, longest_name)));
            try {
                if (chain.size() >= EngineState::longest_chain) {
                    throw impossible(endOf(chain));
                }
                state.inject(event, surroundings_.now(), surroundings_.wall(), chain);
            } catch (Refused const &refused) {
                end = refused.what();
                state.refuse(event.topic_text, event.message_text, refused.what(), surroundings_.wall(),
                             std::move(chain));
            }
        });
        if (!end.empty()) {
            log_.warning("no trigger is told of action " + std::to_string(ended.action_id) + ": " + end);
        }
    } catch (std::exception const &) {
        // Memory is short. The run itself has been told of.
    }
}

std::vector<KeptTrace> Engine::takeTraces() {
    TraceKeeper::Changes changes = state_.with([](EngineState &state) { return state.traces.takeChanges(); });
    if (changes.empty()) {
        return {};
    }
    std::vector<Store::StoredTrace> rows;
    bool const in_memory = state_.with([](EngineState &state) { return state.catalogue.store().inMemory(); });
    if (!in_memory) {
        // Without the lock: this is most of the work.
        try {
            for (KeptTrace const &trace : changes.added) {
                rows.push_back({trace.id(), static_cast<std::uint32_t>(trace.outcome()),
                                boost::json::serialize(trace.object())});
            }
            state_.with(
                [&](EngineState &state) { state.catalogue.store().changeTraces(rows, changes.removed); });
        } catch (std::exception const &error) {
            log_.warning(std::to_string(changes.added.size()) +
                         " traces are in memory only: " + platform::wordsOf(error));
        }
    }
    return std::move(changes.added);
}

std::optional<Engine::Time> Engine::nextDeadline() {
    return state_.with([](EngineState &state) { return state.nextDeadline(); });
}

bool Engine::takeRuns() {
    Wall const wall = surroundings_.wall();
    return state_.with([&](EngineState &state) {
        EngineState::Firing const *const firing = state.nextFiring(surroundings_.now(), wall);
        if (firing == nullptr) {
            return false;
        }
        std::deque<Run> runs;
        std::shared_ptr<OpenTrace> const open = firing->trace;
        // The trigger may have been deleted since it fired.
        if (state.catalogue.find(Table::triggers, firing->trigger_id) != nullptr) {
            std::vector<std::uint32_t> action_ids = state.catalogue.actionsOf(firing->trigger_id);
            shuffle(action_ids);
            for (std::uint32_t const action_id : action_ids) {
                runs.push_back({action_id, firing->trigger_id, firing->cause, open});
            }
        } else {
            for (TriggerTrace &trigger : open->trace.triggers) {
                trigger.verdict = trigger.id == firing->trigger_id ? TriggerVerdict::gone : trigger.verdict;
            }
        }
        runs_.swap(runs);
        open->pending += runs_.size();
        state.dropFiring();
        if (open->ends()) {
            state.traces.add(std::move(open->trace));
        }
        return true;
    });
}

void Engine::shuffle(std::vector<std::uint32_t> &action_ids) {
    if (!shuffling_) {
        return;
    }
    // std::shuffle may differ from one library to the next, and a seed is to give the same order everywhere.
    for (std::size_t left = action_ids.size(); left > 1; --left) {
        std::swap(action_ids[left - 1], action_ids[(*shuffling_)() % left]);
    }
}

std::optional<Job> Engine::prepare(Run const &run, ActionTrace &trace) {
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
        judgeAction(*action, time, trace);
        if (trace.verdict != ActionVerdict::would_run) {
            held_back =
                "action " + std::to_string(run.action_id) + " " + quoted(prepared.name()) +
                " does not run: " +
                (trace.verdict == ActionVerdict::held_back ? "its filters do not allow it at this time: "
                                                           : "") +
                trace.window;
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
