// SPDX-License-Identifier: Apache-2.0
// Triggers that fire, actions that run, and the events that tell of it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "support/automation.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

unsigned int create(Client const &client, std::string const &name, Values const &settings) {
    Answer const answer = operation("create_" + name).send(client.handle(), nullptr, settings);
    EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR) << name;
    return answer.results.empty() ? 0 : std::get<Number>(answer.results[0]);
}

void associate(Client const &client, unsigned int trigger_id, unsigned int action_id) {
    EXPECT_EQ(operation("create_association").send(client.handle(), nullptr, {trigger_id, action_id}).status,
              KORVO_CORE_STATUS_NO_ERROR);
}

std::string contentsOf(std::filesystem::path const &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Fires whatever has an ONVIF trigger on this topic.
void inject(Client const &client, std::string const &topic) {
    EXPECT_EQ(
        operation("onvif_event").send(client.handle(), nullptr, {topic, "<fired/>", Texts{}, Texts{}}).status,
        KORVO_CORE_STATUS_NO_ERROR);
}

TEST(TimerTrigger, SavesASnapshotAndReportsIt) {
    EventRecorder recorder;
    Service const service;
    Client client(Events::subscribed);
    recorder.registerOn(client);
    unsigned int const snapshot =
        create(client, "snapshot_action", {"picture \"1\" \xe2\x82\xac", "timed.jpg"});
    associate(client, create(client, "timer_trigger", {"every second", 1U}), snapshot);

    ASSERT_TRUE(recorder.waitForCount(2));
    auto const events = recorder.events();
    EXPECT_EQ(events[0].action_id, snapshot);
    EXPECT_EQ(events[0].action_name, "picture \"1\" \xe2\x82\xac");
    EXPECT_EQ(events[0].success, 1);
    EXPECT_EQ(events[1], events[0]);

    std::string const picture = contentsOf(service.snapshots() / "timed.jpg");
    ASSERT_GT(picture.size(), 1000U);
    EXPECT_EQ(picture.substr(0, 3), "\xff\xd8\xff") << "no beginning of a JPEG file";
    EXPECT_EQ(picture.substr(picture.size() - 2), "\xff\xd9") << "no end of a JPEG file";
}

TEST(TimerTrigger, StopsWhenItIsDeleted) {
    EventRecorder recorder;
    Service const service;
    Client client(Events::subscribed);
    recorder.registerOn(client);
    unsigned int const timer = create(client, "timer_trigger", {"every second", 1U});
    associate(client, timer, create(client, "wiper_action", {"wipe"}));
    ASSERT_TRUE(recorder.waitForCount(1));
    ASSERT_EQ(operation("delete_trigger").send(client.handle(), nullptr, {timer}).status,
              KORVO_CORE_STATUS_NO_ERROR);

    // Three seconds of another timer without another run of the deleted one.
    std::size_t const before = recorder.count();
    unsigned int const clock = create(client, "washer_action", {"clock"});
    associate(client, create(client, "timer_trigger", {"clock", 1U}), clock);
    ASSERT_TRUE(recorder.waitForCount(before + 3));
    auto const events = recorder.events();
    for (std::size_t n = before + 1; n < events.size(); ++n) {
        EXPECT_EQ(events[n].action_id, clock) << "event " << n;
    }
}

TEST(Snapshots, StayInTheirFolder) {
    EventRecorder recorder;
    Service const service;
    Client client(Events::subscribed);
    recorder.registerOn(client);
    unsigned int const trigger = create(client, "onvif_trigger", {"", "go", "", "", Texts{}, Texts{}});
    std::string const absolute = (service.snapshots().parent_path() / "outside.jpg").string();
    for (std::string const &name : {std::string("../outside.jpg"), absolute, std::string(".."), std::string(),
                                    std::string("a/../../outside.jpg")}) {
        associate(client, trigger, create(client, "snapshot_action", {"outside", name}));
    }
    associate(client, trigger, create(client, "snapshot_action", {"inside", "inside.jpg"}));
    inject(client, "go");

    ASSERT_TRUE(recorder.waitForCount(6));
    for (auto const &event : recorder.events()) {
        EXPECT_EQ(event.success, event.action_name == "inside" ? 1 : 0) << event.action_id;
    }
    EXPECT_TRUE(std::filesystem::exists(service.snapshots() / "inside.jpg"));
    EXPECT_FALSE(std::filesystem::exists(absolute));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(service.snapshots()), {}), 1);
}

TEST(PtzActions, LogWhereTheHeadIs) {
    EventRecorder recorder;
    Service const service;
    Client client(Events::subscribed);
    recorder.registerOn(client);
    unsigned int const trigger = create(client, "onvif_trigger", {"", "go", "", "", Texts{}, Texts{}});
    for (std::string const kind : {"pattern", "preset", "scan", "tour"}) {
        associate(client, trigger, create(client, "ptz_" + kind + "_action", {"move " + kind, "door"}));
    }
    inject(client, "go");
    ASSERT_TRUE(recorder.waitForCount(4));
    for (std::string const kind : {"pattern", "preset", "scan", "tour"}) {
        std::string const name = "\"move " + kind + "\"";
        // The event and the log come by ways of their own, and either may be first.
        ASSERT_TRUE(service.waitForLog(name)) << kind;
        std::string const log = service.log();
        std::size_t const place = log.find(name);
        std::string const line = log.substr(place, log.find('\n', place) - place);
        EXPECT_NE(line.find("pan "), std::string::npos) << line;
        EXPECT_NE(line.find("tilt "), std::string::npos) << line;
        EXPECT_NE(line.find("zoom "), std::string::npos) << line;
    }
}

TEST(ContentFilters, TakeTheMessagesWithTheirItemAndTheLogSaysWhatAnotherOneHad) {
    EventRecorder recorder;
    Service const service({"--log-level", "info"});
    Client client(Events::subscribed);
    recorder.registerOn(client);
    Texts const keys{"tns1", "tt"};
    Texts const uris{"http://www.onvif.org/ver10/topics", "http://www.onvif.org/ver10/schema"};
    Text const motion = "boolean(//tt:SimpleItem[@Name=\"IsMotion\" and @Value=\"true\"])";
    unsigned int const trigger =
        create(client, "onvif_trigger", {"motion", "tns1:VideoSource//.", "", motion, keys, uris});
    unsigned int const action = create(client, "wiper_action", {"wipe"});
    associate(client, trigger, action);
    auto const report = [&](Text const &value) {
        Text const message = "<tt:Message><tt:Data><tt:SimpleItem Name=\"IsMotion\" Value=\"" + value +
                             "\"/></tt:Data></tt:Message>";
        return operation("onvif_event")
            .send(client.handle(), nullptr, {"tns1:VideoSource/MotionAlarm", message, keys, uris})
            .status;
    };
    EXPECT_EQ(report("false"), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(
        service.waitForLog("trigger 1 \"motion\" does not take the message: \"IsMotion\" was \"false\", the "
                           "filter wants \"true\""));
    EXPECT_EQ(report("true"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(recorder.waitForCount(1));
    EXPECT_EQ(recorder.events()[0].action_id, action);

    Text const single_quotes = "boolean(//tt:SimpleItem[@Name='IsMotion' and @Value='true'])";
    EXPECT_EQ(operation("modify_onvif_trigger")
                  .send(client.handle(), nullptr,
                        {trigger, "motion", "tns1:VideoSource//.", "", single_quotes, keys, uris})
                  .status,
              KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE);
    EXPECT_TRUE(
        service.waitForLog("the content filter, column 31: these are not the quotes that filters have"));
}

TEST(Filters, KeepAnActionFromRunning) {
    EventRecorder recorder;
    Service const service;
    Client client(Events::subscribed);
    recorder.registerOn(client);
    unsigned int const trigger = create(client, "onvif_trigger", {"", "go", "", "", Texts{}, Texts{}});
    unsigned int const filtered = create(client, "wiper_action", {"filtered"});
    unsigned int const free = create(client, "wiper_action", {"free"});
    associate(client, trigger, filtered);
    associate(client, trigger, free);
    // No weekday at all, whenever this test runs.
    ASSERT_EQ(operation("set_action_filters")
                  .send(client.handle(), nullptr, {filtered, Numbers{0}, Numbers{0}, Numbers{86400}})
                  .status,
              KORVO_CORE_STATUS_NO_ERROR);
    inject(client, "go");
    ASSERT_TRUE(recorder.waitForCount(1));
    EXPECT_EQ(recorder.events()[0].action_id, free);

    // Every weekday; and then the same without filters.
    for (Numbers const &weekdays : {Numbers{127}, Numbers{}}) {
        Numbers const zero(weekdays.size(), 0);
        ASSERT_EQ(operation("set_action_filters")
                      .send(client.handle(), nullptr, {filtered, weekdays, zero, zero})
                      .status,
                  KORVO_CORE_STATUS_NO_ERROR);
        std::size_t const before = recorder.count();
        inject(client, "go");
        ASSERT_TRUE(recorder.waitForCount(before + 2));
        EXPECT_EQ(recorder.events()[before].action_id, filtered);
    }
}

TEST(Events, ReachEveryHandlerOfEverySubscribedHandle) {
    EventRecorder recorders[6];
    Service const service;
    std::vector<std::unique_ptr<Client>> clients;
    for (int n = 0; n < 3; ++n) {
        clients.push_back(std::make_unique<Client>(Events::subscribed));
        recorders[2 * n].registerOn(*clients.back());
        recorders[2 * n + 1].registerOn(*clients.back());
    }
    EventRecorder unsubscribed;
    Client other;
    unsubscribed.registerOn(other);

    Automation const automation(other, "all");
    for (int n = 0; n < 3; ++n) {
        automation.fire(*clients[0]);
    }
    for (EventRecorder const &recorder : recorders) {
        ASSERT_TRUE(recorder.waitForCount(3));
        for (ActionCompleted const &event : recorder.events()) {
            EXPECT_EQ(event.action_id, automation.actionId());
            EXPECT_EQ(event.action_name, "tns1:Test/all");
            EXPECT_EQ(event.success, 1);
        }
        EXPECT_EQ(recorder.count(), 3U);
    }
    EXPECT_EQ(unsubscribed.count(), 0U);
}

TEST(Events, StopForAHandlerThatIsTakenAway) {
    EventRecorder leaving;
    EventRecorder staying;
    Service const service;
    Client client(Events::subscribed);
    leaving.registerOn(client);
    staying.registerOn(client);
    Automation const automation(client, "all");
    automation.fire(client);
    ASSERT_TRUE(staying.waitForCount(1));
    leaving.unregisterFrom(client);
    automation.fire(client);
    ASSERT_TRUE(staying.waitForCount(2));
    EXPECT_EQ(leaving.count(), 1U);
}

TEST(Events, CarryTheTargetOfTheServiceAsTheirSource) {
    EventRecorder recorder;
    Service const service({"--target", "second camera"});
    Client client(Events::subscribed);
    recorder.registerOn(client);
    void *const handle = client.handle();
    unsigned int action_id = 0;
    unsigned int trigger_id = 0;
    ASSERT_EQ(korvo_api_action_engine_create_wiper_action_send(handle, "second camera", "wipe", &action_id),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(
        korvo_api_action_engine_create_timer_trigger_send(handle, "second camera", "soon", 1, &trigger_id),
        KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(korvo_api_action_engine_create_association_send(handle, "second camera", trigger_id, action_id),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(recorder.waitForCount(1));
    EXPECT_EQ(recorder.events()[0], (ActionCompleted{action_id, "wipe", 1, "second camera"}));
}

TEST(DefaultHandler, PrintsOneLineAnEvent) {
    EventRecorder recorder;
    Service const service;
    Client client(Events::subscribed);
    Automation const automation(client, "printed");
    ::testing::internal::CaptureStdout();
    korvo_api_action_engine_register_default_callbacks(client.handle());
    // Behind the default handler: when this one has been called, the line is printed.
    recorder.registerOn(client);
    automation.fire(client);
    bool const came = recorder.waitForCount(1);
    korvo_api_action_engine_unregister_default_callbacks(client.handle());
    automation.fire(client);
    bool const came_again = recorder.waitForCount(2);
    std::fflush(stdout);
    std::string const printed = ::testing::internal::GetCapturedStdout();

    ASSERT_TRUE(came && came_again);
    EXPECT_EQ(printed, "action_engine:action_completed:" + recorder.events()[0].source +
                           " fired with params: " + std::to_string(automation.actionId()) +
                           ", \"tns1:Test/printed\", true\n");
}

}  // namespace

}  // namespace end_to_end
