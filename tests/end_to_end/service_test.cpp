// SPDX-License-Identifier: Apache-2.0
// The service as a program: how it starts, refuses to start, and ends; and the run-time folder that it meets its
// clients in.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>

#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

namespace fs = std::filesystem;

constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;

std::size_t socketsIn(fs::path const &folder) {
    std::size_t sockets = 0;
    for (auto const &entry : fs::directory_iterator(folder)) {
        sockets += entry.is_socket() ? 1U : 0U;
    }
    return sockets;
}

TEST(Service, EndsWellOnSigtermAndTakesItsSocketAway) {
    fs::path const folder = Workspace::ofThisProgram().runtimeFolder();
    Service service;
    EXPECT_EQ(socketsIn(folder), 2U) << "its own and that of its control";
    service.stop();
    EXPECT_EQ(socketsIn(folder), 0U);
}

TEST(Service, EndsWellInTheMiddleOfWork) {
    Service service({"--delay", "Get_triggers=600000"});
    Client client(Events::subscribed);
    char *request_id = nullptr;
    ASSERT_EQ(operation("get_triggers").nonBlockingSend(client.handle(), nullptr, &request_id, {}), done);
    ASSERT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
    auto const taken = timeOf([&] { service.stop(); });
    EXPECT_LT(taken, milliseconds(5000)) << "held back answers are not waited for";
    EXPECT_EQ(operation("get_triggers").receive(client.handle(), 1, nullptr, request_id).status,
              KORVO_CORE_STATUS_IPC_FAILED);
    korvo_api_action_engine_free_uuid(request_id);
}

TEST(Service, EndsOnSigintToo) {
    Command command = Service::command({});
    Child child(command);
    ASSERT_TRUE(child.out().waitFor("ready"));
    child.signal(SIGINT);
    EXPECT_TRUE(child.wait() == exited(0)) << child.errors().text();
}

TEST(Service, SaysWhenItIsReadyAndForWhichTarget) {
    Child child(Service::command({"--target", "garden"}));
    EXPECT_TRUE(child.out().waitFor("korvo-action-engine-simulator: ready (target \"garden\")\n"));
}

TEST(SecondService, IsRefusedUnderTheSameName) {
    Service first;
    Finished const second = run(Service::command({}));
    EXPECT_TRUE(second.exit == exited(1)) << second.errors;
    EXPECT_NE(second.errors.find("another"), std::string::npos) << second.errors;
    EXPECT_EQ(second.out.find("ready"), std::string::npos);

    Client client;
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done)
        << "the first one goes on";
    first.kill();
    first.start();
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done)
        << "what a killed service leaves behind is in nobody's way";
}

TEST(SecondService, IsRefusedWhileTheFirstOneHangs) {
    Service first;
    first.pause();
    Finished const second = run(Service::command({}));
    EXPECT_TRUE(second.exit == exited(1)) << second.errors;
    first.resume();
}

TEST(Options, ThatMakeNoSenseAreExplained) {
    struct {
        std::vector<std::string> options;
        char const *explanation;
    } const cases[] = {
        {{"--nonsense"}, "--nonsense"},
        {{"--fail", "Get_action=9"}, "Get_actions"},
        {{"--fail", "Get_actions=nine"}, "Get_actions"},
        {{"--delay", "Get_actions"}, "--delay"},
        {{"--target-version", "1"}, "1.20"},
        {{"--store"}, "--store"},
        {{"left over"}, "left over"},
    };
    for (auto const &[options, explanation] : cases) {
        Finished const finished = run(Service::command(options));
        EXPECT_TRUE(finished.exit == exited(2)) << options[0];
        EXPECT_NE(finished.errors.find(explanation), std::string::npos) << finished.errors;
    }
    Finished const help = run(Service::command({"--help"}));
    EXPECT_TRUE(help.exit == exited(0));
    EXPECT_NE(help.out.find("--store"), std::string::npos);
}

TEST(Store, ThatIsNoStoreIsRefusedAndLeftAlone) {
    fs::path const file = Workspace::ofThisProgram().newFolder("store") / "notes.txt";
    std::string const text(4096, 'n');
    FILE *const notes = std::fopen(file.c_str(), "w");
    ASSERT_NE(notes, nullptr);
    std::fputs(text.c_str(), notes);
    std::fclose(notes);
    Finished const finished = run(Service::command({"--store", file.string()}));
    EXPECT_TRUE(finished.exit == exited(1)) << finished.errors;
    EXPECT_NE(finished.errors.find(file.string()), std::string::npos) << finished.errors;
    EXPECT_EQ(fs::file_size(file), text.size());
}

/// A run-time folder of its own, with this mode.
class RuntimeFolder {
  public:
    explicit RuntimeFolder(mode_t mode)
        : path_(Workspace::ofThisProgram().newFolder("runtime")),
          variable_("KORVO_RUNTIME_DIR", path_.string()) {
        EXPECT_EQ(chmod(path_.c_str(), mode), 0);
    }
    ~RuntimeFolder() { (void)chmod(path_.c_str(), 0700); }
    RuntimeFolder(RuntimeFolder const &) = delete;
    RuntimeFolder &operator=(RuntimeFolder const &) = delete;

    fs::path const &path() const { return path_; }

  private:
    fs::path path_;
    EnvironmentVariable variable_;
};

class OpenRuntimeFolder : public ::testing::TestWithParam<mode_t> {};

INSTANTIATE_TEST_SUITE_P(, OpenRuntimeFolder, ::testing::Values(0777, 0720, 0702, 01777),
                         [](auto const &tested) {
                             std::ostringstream name;
                             name << "Mode" << std::oct << tested.param;
                             return name.str();
                         });

TEST_P(OpenRuntimeFolder, IsRefusedByTheService) {
    RuntimeFolder const folder(GetParam());
    Finished const finished = run(Service::command({}));
    EXPECT_TRUE(finished.exit == exited(1)) << finished.errors;
    EXPECT_NE(finished.errors.find(folder.path().string()), std::string::npos) << finished.errors;
    EXPECT_NE(finished.errors.find("others can write to it"), std::string::npos) << finished.errors;
    EXPECT_EQ(socketsIn(folder.path()), 0U);
}

TEST_P(OpenRuntimeFolder, IsRefusedByClients) {
    RuntimeFolder const folder(GetParam());
    auto const mark = ErrorOutput::ofThisProgram().mark();
    void *handle = nullptr;
    korvo_core_status status =
        korvo_api_action_engine_initiator_init(nullptr, nullptr, &handle, /*subscribe_events*/ 0, "refused");
    if (status == done) {
        status = operation("get_actions").send(handle, nullptr, {}).status;
        (void)korvo_api_action_engine_initiator_deinit(handle);
    }
    EXPECT_NE(status, done);
    std::string const log = ErrorOutput::ofThisProgram().since(mark);
    EXPECT_NE(log.find(folder.path().string()), std::string::npos) << log;
    EXPECT_NE(log.find("others can write to it"), std::string::npos) << log;
}

TEST_P(OpenRuntimeFolder, IsRefusedWhenItHoldsAServiceAlready) {
    RuntimeFolder const folder(0700);
    Service const service;
    Client client;
    ASSERT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
    Client late;
    ASSERT_EQ(chmod(folder.path().c_str(), GetParam()), 0);
    auto const mark = ErrorOutput::ofThisProgram().mark();
    EXPECT_NE(operation("get_actions").send(late.handle(), nullptr, {}).status, done);
    EXPECT_TRUE(ErrorOutput::ofThisProgram().waitFor("others can write to it", mark));
    ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
    EXPECT_EQ(operation("get_actions").send(late.handle(), nullptr, {}).status, done);
}

TEST(MissingRuntimeFolder, IsMade) {
    fs::path const folder = Workspace::ofThisProgram().newFolder("parent") / "run";
    EnvironmentVariable const variable("KORVO_RUNTIME_DIR", folder.string());
    Service const service;
    Client client;
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
}

TEST(LongRuntimeFolder, IsNoObstacle) {
    fs::path folder = Workspace::ofThisProgram().newFolder("long");
    for (int n = 0; n < 3; ++n) {
        folder /= std::string(100, 'l');
        fs::create_directory(folder);
    }
    EnvironmentVariable const variable("KORVO_RUNTIME_DIR", folder.string());
    Service const service;
    Client client;
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
}

}  // namespace

}  // namespace end_to_end
