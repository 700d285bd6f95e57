// SPDX-License-Identifier: Apache-2.0
// Subscriptions while the runtime folder goes away, is refused, or changes faster than anybody looks.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "support/ends.h"
#include "support/runtime_folder.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;

}  // namespace

TEST(Subscriptions, OutliveTheRuntimeFolder) {
    TestRuntimeFolder const parent;
    std::string const path = parent.path() + "/run";
    processes::EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", path);
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe(), done);
    {
        Service service;
        ASSERT_TRUE(publishUntilReceived(service, client, "before"));
    }
    testing::internal::CaptureStderr();
    std::filesystem::remove_all(path);
    // It makes the folder anew, or finds that the client has.
    Service service;
    auto const event = publishUntilReceived(service, client, "after");
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(event->event, "after");
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("the runtime folder " + path + " was removed; made again"), std::string::npos) << log;
}

TEST(Subscriptions, AreRefusedWithTheFolderAndMadeWhenItIsGoodAgain) {
    TestRuntimeFolder const folder;
    Service service;
    Client client;
    client.collectEvents();
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(client.subscribe(), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("refused the runtime folder " + folder.path()),
              std::string::npos);
    ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
    EXPECT_EQ(client.subscribe(), done);
    EXPECT_TRUE(publishUntilReceived(service, client, "after"));
}

TEST(Subscriptions, ThatWereLostAreForgottenWhenTheyAreTakenBack) {
    TestRuntimeFolder const folder;
    Client client;
    client.collectEvents();
    auto service = std::make_unique<Service>();
    ASSERT_EQ(client.subscribe(), done);
    ASSERT_TRUE(publishUntilReceived(*service, client, "before"));
    service.reset();
    EXPECT_EQ(korvo_core_ipc_initiator_event_unsubscribe(client.handle(), "sample"), done);
    testing::internal::CaptureStderr();
    EXPECT_EQ(korvo_core_ipc_initiator_event_unsubscribe(client.handle(), "sample"),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    service = std::make_unique<Service>();
    ASSERT_EQ(client.subscribe(), done);
    ASSERT_TRUE(publishUntilReceived(*service, client, "after"));
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("cannot unsubscribe from service sample: it is not subscribed to"), std::string::npos)
        << log;
    // Nobody missed the events of the time in between.
    EXPECT_EQ(log.find("were missed"), std::string::npos) << log;
}

TEST(Subscriptions, FindAServiceThatStartsAmongMoreChangesThanTheKernelKeeps) {
    unsigned int kept = 0;
    if (!(std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> kept) || kept > 100'000) {
        GTEST_SKIP() << "it keeps very many";
    }
    TestRuntimeFolder const folder;
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe(), done);
    Service other("other");
    other.answerWith([](Command const &command) { return command.command; });
    // The messaging thread is busy with a callback, and looks at nothing meanwhile.
    struct Gates {
        Gate begun;
        Gate go_on;
    } gates;
    auto const take = [](char **, char **, char **, char **, void *context) {
        auto &both = *static_cast<Gates *>(context);
        both.begun.open();
        EXPECT_TRUE(both.go_on.wait());
    };
    ASSERT_EQ(korvo_core_ipc_initiator_response_receive_callback(client.handle(), take, &gates), done);
    ASSERT_EQ(client.send("id", "{}", "other"), done);
    ASSERT_TRUE(gates.begun.wait());
    std::string const names[] = {folder.path() + "/one", folder.path() + "/two"};
    std::ofstream(names[0]).put('x');
    for (unsigned int change = 0; change <= kept + 1; ++change) {
        ASSERT_EQ(std::rename(names[change % 2].c_str(), names[(change + 1) % 2].c_str()), 0);
    }
    Service service;
    gates.go_on.open();
    EXPECT_TRUE(publishUntilReceived(service, client, "found"));
    ASSERT_EQ(korvo_core_ipc_initiator_response_receive_callback(client.handle(), nullptr, &gates), done);
}
