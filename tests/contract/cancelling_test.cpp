// SPDX-License-Identifier: Apache-2.0
// What _cancel_async removes: the registration behind each match in the order of the identifiers, and not the
// match.

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "client_test.h"

namespace {

/// Registrations of one operation in the order of their identifiers, each with a context of its own.
class Registrations {
  public:
    Registrations(Client const &client, std::string const &operation_name, std::size_t count)
        : name_(operation_name) {
        for (std::size_t place = 0; place < count; ++place) {
            auto context = std::make_unique<Context>();
            std::string const request_id = sendAsync(client, name_, Callback::first, *context);
            by_identifier_[request_id] = std::move(context);
        }
    }

    Context &context(std::size_t place) {
        return *std::next(by_identifier_.begin(), difference(place))->second;
    }

    /// Which are still there: a response to each is delivered, and some are called.
    std::string alive() {
        std::string marks;
        for (auto const &[request_id, context] : by_identifier_) {
            std::size_t const before = context->calls.size();
            fake_platform::deliverResponse(sample_target, request_id, responseOf(expectation(name_)));
            marks += context->calls.size() == before + 1 ? 'x' : '-';
        }
        return marks;
    }

  private:
    static std::ptrdiff_t difference(std::size_t place) { return static_cast<std::ptrdiff_t>(place); }

    std::string name_;
    std::map<std::string, std::unique_ptr<Context>> by_identifier_;
};

}  // namespace

class Cancelling : public EveryOperation {
  protected:
    korvo_core_status cancel(Client const &client, Callback callback, Context &context) {
        return operation(name()).cancelAsync(client.handle(), callback, &context);
    }
};
FOR_EVERY_OPERATION(Cancelling);

TEST_P(Cancelling, DropsTheRegistrationBehindTheMatch) {
    Client const client;
    Registrations registrations(client, name(), 3);
    EXPECT_EQ(registrations.alive(), "xxx");
    EXPECT_EQ(cancel(client, Callback::first, registrations.context(0)), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(registrations.alive(), "x-x");
    std::string const line = std::string("received a callback for ") + expected().method +
                             " but no initiator callback was registered";
    EXPECT_EQ(fake_platform::logLines(), client.onlyWarning(line));
    // The match is still there, and so is a match with the next one.
    EXPECT_EQ(cancel(client, Callback::first, registrations.context(0)), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(registrations.alive(), "x--");
}

TEST_P(Cancelling, DropsNothingBehindTheLastRegistration) {
    Client const client;
    Registrations registrations(client, name(), 3);
    EXPECT_EQ(cancel(client, Callback::first, registrations.context(2)), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(registrations.alive(), "xxx");
}

TEST_P(Cancelling, DropsNothingWithoutAMatch) {
    Client const client;
    EXPECT_EQ(operation(name()).cancelAsync(client.handle(), Callback::first, nullptr),
              KORVO_CORE_STATUS_NO_ERROR);
    Registrations registrations(client, name(), 3);
    Context foreign;
    EXPECT_EQ(cancel(client, Callback::first, foreign), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(cancel(client, Callback::second, registrations.context(0)), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(cancel(client, Callback::none, registrations.context(0)), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(operation(name()).cancelAsync(client.handle(), Callback::first, nullptr),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(registrations.alive(), "xxx");
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST_P(Cancelling, LeavesOtherOperationsAlone) {
    Client const client;
    std::string const other = name() == "get_actions" ? "get_triggers" : "get_actions";
    Registrations registrations(client, other, 3);
    EXPECT_EQ(cancel(client, Callback::first, registrations.context(0)), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(registrations.alive(), "xxx");
}

TEST_P(Cancelling, SendsNothing) {
    Client const client;
    Registrations registrations(client, name(), 2);
    std::size_t const before = fake_platform::calls().size();
    EXPECT_EQ(cancel(client, Callback::first, registrations.context(0)), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(fake_platform::calls().size(), before);
}

TEST(CancellingChains, DropWhatFollowsEachMatchAndGoOnBehindADroppedMatch) {
    // M matches, f does not; x is still there afterwards, - is not.
    std::map<std::string, std::string> const expected = {
        {"ffff", "xxxx"}, {"fffM", "xxxx"}, {"ffMf", "xxx-"}, {"ffMM", "xxx-"},
        {"fMff", "xx-x"}, {"fMfM", "xx-x"}, {"fMMf", "xx--"}, {"fMMM", "xx--"},
        {"Mfff", "x-xx"}, {"MffM", "x-xx"}, {"MfMf", "x-x-"}, {"MfMM", "x-x-"},
        {"MMff", "x--x"}, {"MMfM", "x--x"}, {"MMMf", "x---"}, {"MMMM", "x---"}};
    // Identifiers are random, so patterns turn up in random order: go on until each has been there. 16
    // patterns in 2000 rounds leave a chance below 1e-50 of missing one.
    std::set<std::string> seen;
    Expectation const &row = expectation("get_action_type");
    for (unsigned int round = 0; round < 2000 && seen.size() < expected.size(); ++round) {
        Client const client;
        Context match;
        Context foreign;
        std::map<std::string, bool> matches;
        std::map<std::string, bool> other_callback;
        for (unsigned int place = 0; place < 4; ++place) {
            bool const is_match = (round >> place & 1U) != 0;
            // What does not match has another context, or another callback with the context of the matches.
            bool const by_callback = !is_match && (round >> (4 + place) & 1U) != 0;
            std::string const request_id =
                sendAsync(client, row.operation, by_callback ? Callback::second : Callback::first,
                          is_match || by_callback ? match : foreign);
            matches[request_id] = is_match;
        }
        std::string pattern;
        for (auto const &entry : matches) {
            pattern += entry.second ? 'M' : 'f';
        }
        seen.insert(pattern);
        EXPECT_EQ(operation(row.operation).cancelAsync(client.handle(), Callback::first, &match),
                  KORVO_CORE_STATUS_NO_ERROR);
        std::string alive;
        for (auto const &entry : matches) {
            std::size_t const before = match.calls.size() + foreign.calls.size();
            fake_platform::deliverResponse(sample_target, entry.first, responseOf(row));
            alive += match.calls.size() + foreign.calls.size() == before + 1 ? 'x' : '-';
        }
        EXPECT_EQ(alive, expected.at(pattern)) << pattern;
    }
    EXPECT_EQ(seen.size(), expected.size());
}

TEST(CancellingChains, MeetTheRegistrationOfARefusedRequest) {
    // A request with a NULL input is never sent, so its identifier is unknown; but when it sorts before that
    // of another request, cancelling it drops the other one. That happens in half of all rounds.
    Expectation const &row = expectation("create_timer_trigger");
    bool dropped = false;
    for (int round = 0; round < 200 && !dropped; ++round) {
        Client const client;
        Context refused;
        Context sent;
        Inputs inputs(samples(row.inputs));
        inputs.setNull(0);
        EXPECT_EQ(operation(row.operation)
                      .sendAsync(client.handle(), sample_target, inputs, Callback::first, &refused),
                  KORVO_CORE_STATUS_INVALID_PARAMS);
        std::string const request_id = sendAsync(client, row.operation, Callback::first, sent);
        EXPECT_EQ(operation(row.operation).cancelAsync(client.handle(), Callback::first, &refused),
                  KORVO_CORE_STATUS_NO_ERROR);
        fake_platform::deliverResponse(sample_target, request_id, responseOf(row));
        dropped = sent.calls.empty();
    }
    EXPECT_TRUE(dropped) << "a refused request left no registration";
}
