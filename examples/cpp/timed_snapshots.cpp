// SPDX-License-Identifier: Apache-2.0
// Saves a snapshot every second: creates a snapshot action and a timer trigger, binds them, watches the service run the
// action, lists the catalogue, and cleans up.
//
//     timed_snapshots [EVENTS]        leaves after that many events (3 if not given)
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <korvo/action_engine.hpp>
#include <mutex>

namespace {

void run(korvo::ActionEngine const &engine, unsigned long wanted) {
    std::printf("Creating a snapshot action that saves timed.jpg\n");
    korvo::SnapshotAction picture;
    picture.action_name = "timed snapshot";
    picture.filename = "timed.jpg";
    korvo::ActionId const action = engine.create_snapshot_action(picture).value();

    std::mutex mutex;
    std::condition_variable changed;
    unsigned long seen = 0;
    auto const watch =
        engine
            .on_action_completed([&](korvo::ActionCompleted const &event) {
                std::lock_guard<std::mutex> const lock(mutex);
                if (event.action_id == action) {
                    ++seen;
                    std::printf("  Action_completed: action %u \"%s\" %s\n", korvo::number(action),
                                event.action_name.c_str(), event.success ? "succeeded" : "failed");
                    changed.notify_one();
                }
            })
            .value();

    std::printf("Creating a timer trigger that fires every second\n");
    korvo::TimerTrigger timer;
    timer.trigger_name = "every second";
    timer.timer_seconds = 1;
    korvo::TriggerId const trigger = engine.create_timer_trigger(timer).value();
    std::printf("Binding trigger %u to action %u, and watching it run %lu times\n", korvo::number(trigger),
                korvo::number(action), wanted);
    engine.create_association(trigger, action).value();
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (!changed.wait_for(lock, std::chrono::seconds(10 * wanted), [&] { return seen >= wanted; })) {
            throw std::runtime_error("too few Action_completed came");
        }
    }
    std::printf("The catalogue now:\n");
    for (korvo::ActionEntry const &entry : engine.get_actions().value()) {
        std::printf("  action %u of type %u\n", korvo::number(entry.action_id), entry.action_type);
    }
    for (korvo::TriggerEntry const &entry : engine.get_triggers().value()) {
        std::printf("  trigger %u of type %u\n", korvo::number(entry.trigger_id), entry.trigger_type);
    }
    std::printf("Cleaning up\n");
    engine.delete_trigger(trigger).value();
    engine.delete_action(action).value();
}

}  // namespace

int main(int argc, char **argv) {
    try {
        run(korvo::ActionEngine::open({"timed_snapshots"}).value(),
            argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 3);
        return EXIT_SUCCESS;
    } catch (std::exception const &error) {
        std::fprintf(stderr, "timed_snapshots: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
