// SPDX-License-Identifier: Apache-2.0
// Mistakes that must not compile, one for each MISTAKE; without it, the right ways beside them, which must.
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <korvo/action_engine.hpp>

using korvo::ActionEngine;
using korvo::ActionId;
using korvo::TriggerId;

void use(ActionEngine &engine);

void use(ActionEngine &engine) {
    ActionId const action{1};
    TriggerId const trigger{2};
    korvo::FtpAction upload;
#if !defined(MISTAKE)
    (void)engine.create_association(trigger, action);
    upload.path = "/pictures";
    korvo::Result<ActionId> const made = engine.create_ftp_action(upload, std::chrono::seconds(2));
    unsigned int const plain = made ? korvo::number(made.value()) : 0U;
    std::vector<korvo::ActionFilter> filters;
    filters.push_back({62, 8 * 3600, 17 * 3600});
    (void)engine.set_action_filters(ActionId{plain}, filters);
    // Callables that can only be moved, and those that take the result in other ways.
    auto number = std::make_unique<int>(1);
    korvo::PendingCall pending = engine.get_actions_async(
        [number = std::move(number)](korvo::Result<std::vector<korvo::ActionEntry>> const &) {
            (void)number;
        });
    pending.detach();
    korvo::PendingCall other = engine.delete_action_async(
        action, [](auto const &) {}, std::chrono::minutes(1));
    other.cancel();
    std::future<korvo::Result<void>> const future = engine.delete_trigger_future(trigger);
    korvo::Result<korvo::Subscription> subscription = engine.on_action_completed([](auto const &) {});
    ActionEngine moved = std::move(engine);
    engine = std::move(moved);
#elif MISTAKE == 1   // an action and a trigger that changed places
    (void)engine.create_association(action, trigger);
#elif MISTAKE == 2   // a trigger where an action belongs
    (void)engine.delete_action(trigger);
#elif MISTAKE == 3   // a bare number as an identifier
    (void)engine.delete_action(7);
#elif MISTAKE == 4   // an identifier as a number
    unsigned int const plain = action;
    (void)plain;
#elif MISTAKE == 5   // texts in a row instead of named members
    (void)engine.create_ftp_action("name", "server", "user", "/path", "password", "file");
#elif MISTAKE == 6   // settings of another kind of action
    (void)engine.create_email_action(upload);
#elif MISTAKE == 7   // a copy of an engine
    ActionEngine const copy = engine;
#elif MISTAKE == 8   // a time-out without a unit
    (void)engine.get_actions(500);
#elif MISTAKE == 9   // a callable for another operation's result
    korvo::PendingCall pending = engine.get_actions_async([](korvo::Result<korvo::ActionType> const &) {});
#elif MISTAKE == 10  // a callable that takes no event
    auto subscription = engine.on_action_completed([](int) {});
#elif MISTAKE == 11  // a result that nobody looks at
    engine.delete_action(action);
#elif MISTAKE == 12  // a pending call that ends at once, since nobody keeps it
    engine.delete_action_async(action, [](auto const &) {});
#elif MISTAKE == 13  // a subscription that ends at once
    engine.on_action_completed([](auto const &) {});
#elif MISTAKE == 14  // a result taken for its value
    ActionId const made = engine.create_ftp_action(upload);
#elif MISTAKE == 15  // a result taken for a number of its own
    int const status = engine.delete_action(action);
#elif MISTAKE == 16  // a time-out finer than the messaging's
    (void)engine.get_actions(std::chrono::microseconds(5));
#endif
    (void)action;
    (void)trigger;
    (void)upload;
}
