// SPDX-License-Identifier: Apache-2.0
// The event Action_completed and its handlers.

#include "client_test.h"

using fake_platform::LogLine;
using fake_platform::Text;

namespace {

struct Delivery {
    int handler;
    unsigned int action_id;
    std::string action_name;
    unsigned char success;
    Text source;
    void *context;
};

// Handlers get no more than their context, and two registrations may share one.
std::vector<Delivery> deliveries;
void *handle_in_use = nullptr;

template <int number>
void handle(unsigned int action_id, char const *action_name, unsigned char success, char const *source,
            void *context) {
    deliveries.push_back(
        {number, action_id, action_name, success, source != nullptr ? Text(source) : Text(), context});
}

void throwing(unsigned int, char const *, unsigned char, char const *, void *) {
    throw 1;
}

void registering(unsigned int, char const *, unsigned char, char const *, void *) {
    korvo_api_action_engine_action_completed_register_event_handler(handle_in_use, handle<1>, nullptr);
}

void unregistering(unsigned int, char const *, unsigned char, char const *, void *) {
    korvo_api_action_engine_action_completed_unregister_event_handler(handle_in_use, handle<1>);
}

void unregisteringWithContext(unsigned int, char const *, unsigned char, char const *, void *) {
    korvo_api_action_engine_action_completed_unregister_event_handler_with_context(handle_in_use, handle<1>,
                                                                                   nullptr);
}

void registeringDefault(unsigned int, char const *, unsigned char, char const *, void *) {
    korvo_api_action_engine_register_default_callbacks(handle_in_use);
}

json::Object completed() {
    json::Object event;
    event.Insert({"event", json::String("Action_completed")});
    event.Insert({"action_id", json::Number(7)});
    event.Insert({"action_name", json::String("door")});
    event.Insert({"success", json::Boolean(true)});
    return event;
}

}  // namespace

class Event : public testing::Test {
  protected:
    Event() : client_(1) {
        deliveries.clear();
        handle_in_use = client_.handle();
    }

    using Handler = korvo_api_action_engine_action_completed_event_callback_func_ptr;

    void add(Handler handler, void *context = nullptr) {
        korvo_api_action_engine_action_completed_register_event_handler(client_.handle(), handler, context);
    }
    void remove(Handler handler) {
        korvo_api_action_engine_action_completed_unregister_event_handler(client_.handle(), handler);
    }
    void remove(Handler handler, void *context) {
        korvo_api_action_engine_action_completed_unregister_event_handler_with_context(client_.handle(),
                                                                                       handler, context);
    }

    /// Delivers the event and gives the numbers of the handlers that were called.
    std::string called() {
        deliveries.clear();
        fake_platform::deliverEvent("camera-1", completed());
        std::string numbers;
        for (Delivery const &delivery : deliveries) {
            numbers += std::to_string(delivery.handler);
        }
        return numbers;
    }

    std::vector<LogLine> exceptionLine(std::string const &function) {
        return client_.onlyError("Threw an exception in function " + function);
    }

    Client client_;
    int contexts_[3] = {};
};

TEST_F(Event, ReachesEveryHandlerInTheOrderOfRegistration) {
    add(handle<2>, &contexts_[2]);
    add(handle<1>, &contexts_[1]);
    add(handle<2>, &contexts_[0]);
    EXPECT_EQ(called(), "212");
    EXPECT_EQ(deliveries[0].context, &contexts_[2]);
    EXPECT_EQ(deliveries[1].context, &contexts_[1]);
    EXPECT_EQ(deliveries[2].context, &contexts_[0]);
    for (Delivery const &delivery : deliveries) {
        EXPECT_EQ(delivery.action_id, 7U);
        EXPECT_EQ(delivery.action_name, "door");
        EXPECT_EQ(delivery.success, 1);
        EXPECT_EQ(delivery.source, Text("camera-1"));
    }
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST_F(Event, HandsAFailedActionAndANullSourceOn) {
    add(handle<1>);
    fake_platform::deliverEvent(Text(), with(completed(), "success", json::Boolean(false)));
    ASSERT_EQ(deliveries.size(), 1U);
    EXPECT_EQ(deliveries[0].success, 0);
    EXPECT_EQ(deliveries[0].source, Text());
}

TEST_F(Event, CutsTheActionsIdentifierLikeAnyNumber) {
    add(handle<1>);
    for (Conversion const &conversion : conversions()) {
        deliveries.clear();
        fake_platform::deliverEvent("camera-1",
                                    with(completed(), "action_id", json::Number(conversion.json)));
        ASSERT_EQ(deliveries.size(), 1U);
        EXPECT_EQ(deliveries[0].action_id, conversion.read);
    }
}

TEST_F(Event, IsDroppedSilentlyWithoutHandlers) {
    EXPECT_EQ(called(), "");
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST_F(Event, OfAnotherNameIsIgnored) {
    add(handle<1>);
    for (char const *name : {"Action_started", "action_completed", "", "Get_actions"}) {
        fake_platform::deliverEvent("camera-1", with(completed(), "event", json::String(name)));
    }
    EXPECT_TRUE(deliveries.empty());
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST_F(Event, IsReadBeforeAnyHandlerIsCalled) {
    add(handle<1>);
    for (char const *member : {"action_id", "action_name", "success"}) {
        std::vector<json::Object> broken = {without(completed(), member),
                                            with(completed(), member, json::Null()),
                                            with(completed(), member, json::Array())};
        for (json::Object const &event : broken) {
            fake_platform::script();
            fake_platform::deliverEvent("camera-1", event);
            EXPECT_TRUE(deliveries.empty()) << member;
            EXPECT_EQ(fake_platform::logLines(), exceptionLine("action_engineAction_completed")) << member;
        }
    }
    EXPECT_EQ(called(), "1");
}

TEST_F(Event, SkipsANullHandlerThatStaysInTheList) {
    add(handle<1>);
    add(nullptr, &contexts_[0]);
    add(handle<2>);
    EXPECT_EQ(called(), "12");
    remove(nullptr);
    EXPECT_EQ(called(), "12");
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST_F(Event, CallsAHandlerAsOftenAsItWasRegistered) {
    add(handle<1>, &contexts_[0]);
    add(handle<1>, &contexts_[0]);
    EXPECT_EQ(called(), "11");
    remove(handle<1>, &contexts_[0]);
    EXPECT_EQ(called(), "");
}

TEST_F(Event, LosesAllRegistrationsOfAHandlerAtOnce) {
    add(handle<1>, &contexts_[0]);
    add(handle<2>, &contexts_[0]);
    add(handle<1>, &contexts_[1]);
    add(handle<3>, nullptr);
    remove(handle<1>);
    EXPECT_EQ(called(), "23");
    // Unregistering what is not there changes nothing.
    remove(handle<1>);
    EXPECT_EQ(called(), "23");
}

TEST_F(Event, LosesOnlyTheRegistrationsWithTheContext) {
    add(handle<1>, &contexts_[0]);
    add(handle<1>, &contexts_[1]);
    add(handle<2>, &contexts_[0]);
    add(handle<1>, &contexts_[0]);
    remove(handle<1>, &contexts_[0]);
    EXPECT_EQ(called(), "12");
    EXPECT_EQ(deliveries[0].context, &contexts_[1]);
    remove(handle<1>, nullptr);
    EXPECT_EQ(called(), "12");
}

TEST_F(Event, EndsAtAHandlerThatThrows) {
    add(handle<1>);
    add(throwing);
    add(handle<2>);
    EXPECT_EQ(called(), "1");
    EXPECT_EQ(fake_platform::logLines(), exceptionLine("action_engineAction_completed"));
    // The mutex is free again.
    remove(throwing);
    EXPECT_EQ(called(), "12");
}

TEST_F(Event, IsHarmlessWhenTheLogThrowsToo) {
    for (fake_platform::Throw const exception : exceptions()) {
        fake_platform::script();
        fake_platform::arrange(fake_platform::Function::log, exception);
        fake_platform::deliverEvent("camera-1", json::Object(without(completed(), "success")));
        // One that is none throws where the messaging calls.
        fake_platform::deliverEvent("camera-1", json::Object(without(completed(), "event")));
    }
    add(handle<1>);
    EXPECT_EQ(called(), "1");
}

TEST_F(Event, HandlersCannotChangeTheHandlers) {
    struct Case {
        Handler handler;
        char const *function;
    };
    for (Case const &forbidden :
         {Case{registering, "korvo_api_action_engine_action_completed_register_event_handler"},
          Case{unregistering, "korvo_api_action_engine_action_completed_unregister_event_handler"},
          Case{unregisteringWithContext,
               "korvo_api_action_engine_action_completed_unregister_event_handler_with_context"},
          Case{registeringDefault, "korvo_api_action_engine_action_completed_register_event_handler"}}) {
        fake_platform::script();
        add(handle<1>);
        add(forbidden.handler);
        add(handle<2>);
        EXPECT_EQ(called(), "12") << forbidden.function;
        EXPECT_EQ(fake_platform::logLines(), exceptionLine(forbidden.function));
        remove(forbidden.handler);
        EXPECT_EQ(called(), "12") << forbidden.function;
        remove(handle<1>);
        remove(handle<2>);
    }
}

TEST_F(Event, HandlersMayCallTheService) {
    static korvo_core_status status = static_cast<korvo_core_status>(99);
    static unsigned int action_type = 0;
    add([](unsigned int action_id, char const *, unsigned char, char const *, void *) {
        status = korvo_api_action_engine_get_action_type_send(handle_in_use, sample_target, action_id,
                                                              &action_type);
    });
    fake_platform::respond(responseOf(expectation("get_action_type")));
    EXPECT_EQ(called(), "");
    EXPECT_EQ(status, KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(action_type, 7U);
}

TEST_F(Event, IsPrintedByTheDefaultHandler) {
    korvo_api_action_engine_register_default_callbacks(client_.handle());
    testing::internal::CaptureStdout();
    fake_platform::deliverEvent("camera-1", completed());
    fake_platform::deliverEvent("", with(with(completed(), "success", json::Boolean(false)), "action_name",
                                         json::String("%s \"x\"")));
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "action_engine:action_completed:camera-1 fired with params: 7, \"door\", true\n"
              "action_engine:action_completed: fired with params: 7, \"%s \"x\"\", false\n");
}

TEST_F(Event, IsPrintedAsOftenAsTheDefaultHandlerWasRegistered) {
    char const *const line = "action_engine:action_completed:camera-1 fired with params: 7, \"door\", true\n";
    korvo_api_action_engine_register_default_callbacks(client_.handle());
    add(handle<1>);
    korvo_api_action_engine_register_default_callbacks(client_.handle());
    testing::internal::CaptureStdout();
    EXPECT_EQ(called(), "1");
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(line) + line);

    korvo_api_action_engine_unregister_default_callbacks(client_.handle());
    testing::internal::CaptureStdout();
    EXPECT_EQ(called(), "1");
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}
