// SPDX-License-Identifier: Apache-2.0
// Making and ending a client handle.

#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <thread>

#include "client_test.h"
#include "frame/interfaces.h"

using fake_platform::Call;
using fake_platform::Function;
using fake_platform::LogLine;
using fake_platform::Text;

namespace {

// Handles that are only compared.
int sentinel_object = 0;
void *const sentinel = &sentinel_object;
int logging_object = 0;
void *const logging = &logging_object;

std::vector<Function> functionsCalled() {
    std::vector<Function> functions;
    for (Call const &call : fake_platform::calls()) {
        functions.push_back(call.function);
    }
    return functions;
}

using Functions = std::vector<Function>;
using Lines = std::vector<LogLine>;

bool is_without_entropy = false;

}  // namespace

// In place of the C library's, for the client library.
extern "C" __attribute__((visibility("default"))) ssize_t getrandom(void *buffer, size_t size,
                                                                    unsigned int flags) {
    if (is_without_entropy) {
        errno = EIO;
        return -1;
    }
    return syscall(SYS_getrandom, buffer, size, flags);
}

class Lifecycle : public testing::Test {
  protected:
    void SetUp() override { fake_platform::script(); }
    void TearDown() override { EXPECT_EQ(fake_platform::openMessagingHandles(), 0U); }

    korvo_core_status init(void *messaging, unsigned char subscribe_events, char const *name = "my client") {
        return korvo_api_action_engine_initiator_init(messaging, logging, &handle_, subscribe_events, name);
    }

    void *handle_ = sentinel;
};

TEST_F(Lifecycle, InitWithoutAPlaceForTheHandleBuildsNothing) {
    EXPECT_EQ(korvo_api_action_engine_initiator_init(nullptr, logging, nullptr, 1, "my client"),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_TRUE(fake_platform::calls().empty());
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST_F(Lifecycle, OpensAndClosesAMessagingHandleOfItsOwn) {
    for (char const *name : {"my client", "", static_cast<char const *>(nullptr)}) {
        fake_platform::script();
        ASSERT_EQ(init(nullptr, 0, name), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_NE(handle_, sentinel);
        ASSERT_EQ(functionsCalled(), Functions{Function::initiator_init});
        Call const opened = fake_platform::calls()[0];
        EXPECT_EQ(opened.logging, logging);
        EXPECT_EQ(opened.name, name != nullptr ? Text(name) : Text());
        EXPECT_EQ(opened.number, 1);
        EXPECT_EQ(fake_platform::openMessagingHandles(), 1U);

        void *const messaging = static_cast<korvoInitiatorInterfaces *>(handle_)->messagingHandle();
        EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(functionsCalled(), (Functions{Function::initiator_init, Function::deinit}));
        EXPECT_EQ(fake_platform::calls()[1].messaging, messaging);
        EXPECT_TRUE(fake_platform::logLines().empty());
    }
}

TEST_F(Lifecycle, NeitherOpensNorClosesASharedMessagingHandle) {
    void *messaging = nullptr;
    ASSERT_EQ(korvo_core_ipc_initiator_init(logging, "shared", &messaging, 1), KORVO_CORE_STATUS_NO_ERROR);
    fake_platform::script();
    for (unsigned char const subscribe_events : std::vector<unsigned char>{0, 1}) {
        ASSERT_EQ(init(messaging, subscribe_events), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
    }
    EXPECT_EQ(functionsCalled(), (Functions{Function::event_subscribe, Function::event_receive_callback}));
    EXPECT_EQ(fake_platform::openMessagingHandles(), 1U);
    EXPECT_EQ(korvo_core_ipc_deinit(messaging), KORVO_CORE_STATUS_NO_ERROR);
}

TEST_F(Lifecycle, SubscribesToTheServiceAndThenAsksForEvents) {
    for (unsigned char const subscribe_events : std::vector<unsigned char>{1, 2, 255}) {
        fake_platform::script();
        ASSERT_EQ(init(nullptr, subscribe_events), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(functionsCalled(), (Functions{Function::initiator_init, Function::event_subscribe,
                                                Function::event_receive_callback}));
        std::vector<Call> const calls = fake_platform::calls();
        void *const messaging = static_cast<korvoInitiatorInterfaces *>(handle_)->messagingHandle();
        EXPECT_EQ(calls[1].messaging, messaging);
        EXPECT_EQ(calls[1].service, Text("action_engine"));
        EXPECT_EQ(calls[2].messaging, messaging);
        EXPECT_EQ(calls[2].object, handle_);
        EXPECT_TRUE(fake_platform::hasEventEntry());
        EXPECT_FALSE(fake_platform::hasResponseEntry());
        EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
    }
}

TEST_F(Lifecycle, TellsMessagingWhichCommandsAreAsynchronous) {
    ASSERT_EQ(init(nullptr, 0), KORVO_CORE_STATUS_NO_ERROR);
    auto *const object = static_cast<korvoInitiatorInterfaces *>(handle_);
    // None is in hand: not of a method, nor of one that nobody has, nor where messaging cannot name it.
    EXPECT_FALSE(object->isAsynchronous("Get_actions", "id"));
    EXPECT_FALSE(object->isAsynchronous("Get_nothing", "id"));
    EXPECT_FALSE(object->isAsynchronous(nullptr, "id"));
    EXPECT_FALSE(object->isAsynchronous("Get_actions", nullptr));
    EXPECT_FALSE(object->isAsynchronous(nullptr, nullptr));
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
}

TEST_F(Lifecycle, DoesNeitherWithoutTheWish) {
    ASSERT_EQ(init(nullptr, 0), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(functionsCalled(), Functions{Function::initiator_init});
    EXPECT_FALSE(fake_platform::hasEventEntry());
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
}

TEST_F(Lifecycle, InitGivesStatus2AndTheReasonWhenMessagingCannotBeOpened) {
    for (korvo_core_status const status : failures()) {
        expectLeftBehind({}, [&] {
            fake_platform::script();
            fake_platform::arrange(Function::initiator_init, status);
            EXPECT_EQ(init(nullptr, 1), KORVO_CORE_STATUS_ALLOC_FAILED);
            EXPECT_EQ(handle_, sentinel);
            EXPECT_EQ(functionsCalled(), Functions{Function::initiator_init});
            EXPECT_EQ(fake_platform::logLines(),
                      (Lines{{logging, 3,
                              "korvoInitiatorInterfaces: failed call to initiator init (" +
                                  std::to_string(status) + ")"}}));
        });
    }
}

TEST_F(Lifecycle, InitGivesStatus2AndTheReasonWhenThereIsNoEntropy) {
    expectLeftBehind({}, [&] {
        fake_platform::script();
        is_without_entropy = true;
        EXPECT_EQ(init(nullptr, 1), KORVO_CORE_STATUS_ALLOC_FAILED);
        is_without_entropy = false;
        EXPECT_EQ(handle_, sentinel);
        EXPECT_EQ(functionsCalled(), Functions{});
        EXPECT_EQ(
            fake_platform::logLines(),
            (Lines{{logging, 3,
                    "korvoInterfaces: cannot make request identifiers: no entropy: Input/output error"}}));
    });
}

TEST_F(Lifecycle, InitGivesStatus2AndClosesMessagingWhenEventsAreRefused) {
    struct Case {
        Function function;
        char const *line;
        Functions calls;
    };
    std::vector<Case> const cases = {
        {Function::event_subscribe,
         "initializeEventStructures:failed call to subscribe to events",
         {Function::initiator_init, Function::event_subscribe, Function::deinit}},
        {Function::event_receive_callback,
         "initializeEventStructures:failed call to receive callbacks",
         {Function::initiator_init, Function::event_subscribe, Function::event_receive_callback,
          Function::deinit}}};
    for (Case const &refused : cases) {
        for (korvo_core_status const status : failures()) {
            expectLeftBehind({}, [&] {
                fake_platform::script();
                fake_platform::arrange(refused.function, status);
                EXPECT_EQ(init(nullptr, 1), KORVO_CORE_STATUS_ALLOC_FAILED);
                EXPECT_EQ(handle_, sentinel);
                EXPECT_EQ(functionsCalled(), refused.calls);
                EXPECT_EQ(fake_platform::logLines(), (Lines{{logging, 3, refused.line}}));
                EXPECT_EQ(fake_platform::openMessagingHandles(), 0U);
            });
        }
    }
}

TEST_F(Lifecycle, InitLeavesASharedMessagingHandleOpenWhenEventsAreRefused) {
    void *messaging = nullptr;
    ASSERT_EQ(korvo_core_ipc_initiator_init(logging, "shared", &messaging, 1), KORVO_CORE_STATUS_NO_ERROR);
    fake_platform::arrange(Function::event_subscribe, KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(init(messaging, 1), KORVO_CORE_STATUS_ALLOC_FAILED);
    EXPECT_EQ(handle_, sentinel);
    EXPECT_EQ(fake_platform::openMessagingHandles(), 1U);
    EXPECT_EQ(korvo_core_ipc_deinit(messaging), KORVO_CORE_STATUS_NO_ERROR);
}

TEST_F(Lifecycle, InitTurnsEveryExceptionIntoStatus2) {
    for (Function const function :
         {Function::initiator_init, Function::event_subscribe, Function::event_receive_callback}) {
        for (fake_platform::Throw const exception : exceptions()) {
            expectLeftBehind({}, [&] {
                fake_platform::script();
                fake_platform::arrange(function, exception);
                EXPECT_EQ(init(nullptr, 1), KORVO_CORE_STATUS_ALLOC_FAILED);
                EXPECT_EQ(handle_, sentinel);
                EXPECT_EQ(fake_platform::openMessagingHandles(), 0U);
                EXPECT_TRUE(fake_platform::logLines().empty());
            });
        }
    }
}

TEST_F(Lifecycle, InitGivesStatus2WhenTheReasonCannotBeLogged) {
    for (Function const function :
         {Function::initiator_init, Function::event_subscribe, Function::event_receive_callback}) {
        fake_platform::script();
        fake_platform::arrange(function, KORVO_CORE_STATUS_IPC_FAILED);
        fake_platform::arrange(Function::log, fake_platform::Throw::number);
        EXPECT_EQ(init(nullptr, 1), KORVO_CORE_STATUS_ALLOC_FAILED);
        EXPECT_EQ(handle_, sentinel);
        EXPECT_EQ(fake_platform::openMessagingHandles(), 0U);
    }
}

TEST_F(Lifecycle, InitMayBeTriedAgain) {
    fake_platform::arrange(Function::initiator_init, KORVO_CORE_STATUS_DISABLED_TARGET, 1);
    EXPECT_EQ(init(nullptr, 0), KORVO_CORE_STATUS_ALLOC_FAILED);
    EXPECT_EQ(init(nullptr, 0), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
}

TEST_F(Lifecycle, DeinitOfNullSucceeds) {
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(nullptr), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(fake_platform::calls().empty());
}

TEST_F(Lifecycle, DeinitLogsAFailureToCloseMessagingAndSucceeds) {
    for (korvo_core_status const status : failures()) {
        fake_platform::script();
        ASSERT_EQ(init(nullptr, 0), KORVO_CORE_STATUS_NO_ERROR);
        fake_platform::arrange(Function::deinit, status);
        EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(fake_platform::logLines(),
                  (Lines{{logging, 3,
                          "~korvoInitiatorInterfaces: failed call to initiator deinit (" +
                              std::to_string(status) + ")"}}));
        EXPECT_EQ(fake_platform::calls(Function::deinit).size(), 1U);
    }
}

TEST_F(Lifecycle, DeinitSurvivesAPlatformThatThrows) {
    for (fake_platform::Throw const exception : exceptions()) {
        for (Function const function : {Function::deinit, Function::log}) {
            fake_platform::script();
            ASSERT_EQ(init(nullptr, 0), KORVO_CORE_STATUS_NO_ERROR);
            fake_platform::arrange(Function::deinit, KORVO_CORE_STATUS_IPC_FAILED);
            fake_platform::arrange(function, exception);
            EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
        }
    }
}

TEST_F(Lifecycle, DeinitFreesRegistrationsAndHandlers) {
    expectLeftBehind({}, [&] {
        Context context;
        {
            Client const client(1);
            for (std::string const &name : operationNames()) {
                (void)sendAsync(client, name, Callback::first, context);
            }
            korvo_api_action_engine_register_default_callbacks(client.handle());
        }
        EXPECT_TRUE(context.calls.empty());
    });
}

TEST_F(Lifecycle, AMessageThatArrivesWhileMessagingIsClosedMeetsAWholeObject) {
    // The messaging layer may be delivering at the very moment of closing; what it delivers is still handled,
    // since the object closes its messaging before it loses anything else. The fake delivers from within the
    // closing.
    Context context;
    std::string request_id;
    auto client = std::make_unique<Client>(static_cast<unsigned char>(1));
    request_id = sendAsync(*client, "get_actions", Callback::first, context);
    static std::string name;
    name.clear();
    korvo_api_action_engine_action_completed_register_event_handler(
        client->handle(),
        [](unsigned int, char const *action_name, unsigned char, char const *, void *) {
            name = action_name;
        },
        nullptr);
    fake_platform::onClosing([&] {
        fake_platform::deliverResponse(sample_target, request_id, responseOf(expectation("get_actions")));
        json::Object event;
        event["event"] = json::String("Action_completed");
        event["action_id"] = json::Number(1);
        event["action_name"] = json::String("the last one");
        event["success"] = json::Boolean(true);
        fake_platform::deliverEvent(sample_target, event);
    });
    client.reset();
    EXPECT_EQ(context.calls.size(), 1U);
    EXPECT_EQ(name, "the last one");
}

TEST_F(Lifecycle, DeinitInsideACallbackOfItsHandleDestroysNothingAndSaysSo) {
    Context context;
    Client const client(1);
    fake_platform::LogLine const told = client.error(
        "korvo_api_action_engine_initiator_deinit does nothing: it was called from inside a callback of its "
        "handle");

    context.during = [&] {
        EXPECT_EQ(korvo_api_action_engine_initiator_deinit(client.handle()), KORVO_CORE_STATUS_NO_ERROR);
    };
    std::string const request_id = sendAsync(client, "get_actions", Callback::first, context);
    fake_platform::deliverResponse(sample_target, request_id, responseOf(expectation("get_actions")));
    EXPECT_EQ(context.calls.size(), 1U);
    EXPECT_EQ(fake_platform::logLines(), std::vector<fake_platform::LogLine>{told});
    EXPECT_EQ(fake_platform::openMessagingHandles(), 1U);

    korvo_api_action_engine_action_completed_register_event_handler(
        client.handle(),
        [](unsigned int, char const *, unsigned char, char const *, void *handle) {
            EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle), KORVO_CORE_STATUS_NO_ERROR);
        },
        client.handle());
    json::Object event;
    event["event"] = json::String("Action_completed");
    event["action_id"] = json::Number(1);
    event["action_name"] = json::String("door");
    event["success"] = json::Boolean(true);
    fake_platform::deliverEvent(sample_target, event);
    EXPECT_EQ(fake_platform::logLines(), (std::vector<fake_platform::LogLine>{told, told}));
    EXPECT_EQ(fake_platform::openMessagingHandles(), 1U);

    // It serves as before; another handle may be ended from its callbacks.
    context.during = nullptr;
    EXPECT_TRUE(isUuid(sendAsync(client, "get_actions", Callback::first, context)));
    auto *const other = new Client;
    context.during = [&] { delete other; };
    fake_platform::deliverResponse(sample_target, request_id, responseOf(expectation("get_actions")),
                                   client.handle());
    EXPECT_EQ(context.calls.size(), 2U);

    // The handle stays where that cannot be told, too.
    fake_platform::arrange(Function::log, fake_platform::Throw::number);
    context.during = [&] {
        EXPECT_EQ(korvo_api_action_engine_initiator_deinit(client.handle()), KORVO_CORE_STATUS_NO_ERROR);
    };
    fake_platform::deliverResponse(sample_target, sendAsync(client, "get_actions", Callback::first, context),
                                   responseOf(expectation("get_actions")), client.handle());
    EXPECT_EQ(context.calls.size(), 3U);
    EXPECT_EQ(fake_platform::openMessagingHandles(), 1U);
}

TEST_F(Lifecycle, DeinitEndsCallsThatWaitAndLetsThemOut) {
    fake_platform::reset();
    constexpr int callers = 4;
    for (int round = 0; round < 50; ++round) {
        void *target = nullptr;
        ASSERT_EQ(korvo_core_ipc_target_init(logging, "action_engine", "", "service", &target),
                  KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(init(nullptr, 0), KORVO_CORE_STATUS_NO_ERROR);
        std::array<korvo_core_status, callers> statuses = {};
        std::vector<std::thread> threads;
        for (int caller = 0; caller < callers; ++caller) {
            threads.emplace_back([this, &status = statuses.at(static_cast<std::size_t>(caller))] {
                unsigned int **ids = nullptr;
                unsigned int **types = nullptr;
                status =
                    korvo_api_action_engine_get_actions_send_with_timeout(handle_, nullptr, -1, &ids, &types);
            });
        }
        // When the service has all commands, the callers wait, or are on their way from sending to waiting.
        for (int command = 0; command < callers; ++command) {
            char *source = nullptr;
            char *request_id = nullptr;
            char *text = nullptr;
            ASSERT_EQ(korvo_core_ipc_target_command_receive(target, 20000, &source, &request_id, &text),
                      KORVO_CORE_STATUS_NO_ERROR);
            std::free(source);
            std::free(request_id);
            std::free(text);
        }
        EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
        for (std::thread &thread : threads) {
            thread.join();
        }
        for (korvo_core_status const status : statuses) {
            EXPECT_EQ(status, KORVO_CORE_STATUS_IPC_FAILED);
        }
        EXPECT_EQ(korvo_core_ipc_deinit(target), KORVO_CORE_STATUS_NO_ERROR);
    }
}

TEST_F(Lifecycle, TellsTheInitiatorsVersion) {
    Client const client;
    unsigned int major = 77;
    unsigned int minor = 78;
    EXPECT_EQ(korvo_api_action_engine_get_initiator_version(client.handle(), nullptr, &minor),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_api_action_engine_get_initiator_version(client.handle(), &major, nullptr),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_api_action_engine_get_initiator_version(client.handle(), nullptr, nullptr),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(major, 77U);
    EXPECT_EQ(minor, 78U);
    EXPECT_EQ(korvo_api_action_engine_get_initiator_version(client.handle(), &major, &minor),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(major, 1U);
    EXPECT_EQ(minor, 19U);
}

TEST_F(Lifecycle, FreesIdentifiersAndAcceptsNull) {
    korvo_api_action_engine_free_uuid(nullptr);
    live_blocks::Recording recording;
    char *const request_id = strdup(sample_request_id);
    void const *const address = request_id;
    korvo_api_action_engine_free_uuid(request_id);
    EXPECT_FALSE(holdsIdentifier(recording.end(), address));
}

TEST_F(Lifecycle, HandlesShareNothing) {
    void *second = nullptr;
    ASSERT_EQ(init(nullptr, 0), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(korvo_api_action_engine_initiator_init(nullptr, logging, &second, 0, "another"),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_NE(handle_, second);
    EXPECT_EQ(fake_platform::openMessagingHandles(), 2U);
    Expectation const &expected = expectation("get_actions");
    Context context;
    EXPECT_EQ(
        operation("get_actions")
            .sendAsync(handle_, sample_target, Inputs(samples(expected.inputs)), Callback::first, &context),
        KORVO_CORE_STATUS_NO_ERROR);
    Context other;
    EXPECT_EQ(
        operation("get_actions")
            .sendAsync(second, sample_target, Inputs(samples(expected.inputs)), Callback::first, &other),
        KORVO_CORE_STATUS_NO_ERROR);
    // The first one's response at the second one's door is unknown there.
    fake_platform::deliverResponse(sample_target, *fake_platform::calls(Function::send_command)[0].request_id,
                                   responseOf(expected), second);
    EXPECT_TRUE(context.calls.empty());
    EXPECT_EQ(fake_platform::logLines(),
              (Lines{{logging, 4,
                      "received a callback for Get_actions but no initiator callback was registered"}}));
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(second), KORVO_CORE_STATUS_NO_ERROR);
}

TEST_F(Lifecycle, TheBaseClassAloneLogsMakesIdentifiersAndIgnoresMessages) {
    {
        korvoInitiatorInterfaces object(nullptr, logging, 3, 7, "a client of another service", 10);
        EXPECT_EQ(object.majorVersion(), 3U);
        EXPECT_EQ(object.minorVersion(), 7U);
        object.IPC_LOG_ERR("%s:%d", "error", -5);
        object.IPC_LOG_WARNING("%s:%u", "warning", 5U);
        EXPECT_EQ(fake_platform::logLines(), (Lines{{logging, 3, "error:-5"}, {logging, 4, "warning:5"}}));

        std::string identifiers[2];
        for (std::string &identifier : identifiers) {
            char *const text = object.generateUUID();
            identifier = text;
            std::free(text);
            EXPECT_TRUE(isUuid(identifier)) << identifier;
        }
        EXPECT_NE(identifiers[0], identifiers[1]);

        std::size_t const calls = fake_platform::calls().size();
        json::Object message = responseOf(expectation("get_actions"));
        object.subclassResponseDispatch("Get_actions", nullptr, nullptr, message);
        object.subclassEventDispatch("camera-1", "Action_completed", message);
        EXPECT_EQ(fake_platform::calls().size(), calls);
        EXPECT_EQ(fake_platform::logLines().size(), 2U);
    }
    EXPECT_EQ(fake_platform::calls().back().function, Function::deinit);
}
