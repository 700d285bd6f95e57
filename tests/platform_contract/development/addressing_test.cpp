// SPDX-License-Identifier: Apache-2.0
#include "messaging/addressing.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <set>

#include "korvo_core.h"
#include "processes/environment_variable.h"
#include "support/runtime_folder.h"

using platform::isSocketOf;
using platform::Log;
using platform::RuntimeFolder;
using platform::socketName;
using processes::EnvironmentVariable;

namespace {

bool opens() {
    return static_cast<bool>(RuntimeFolder::fromEnvironment().open(Log(nullptr)));
}

/// What the log says while the runtime folder that the environment names is opened.
std::string complaint() {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(opens());
    return testing::internal::GetCapturedStderr();
}

unsigned int modeOf(std::string const &path) {
    struct stat found = {};
    EXPECT_EQ(stat(path.c_str(), &found), 0) << path;
    return found.st_mode & 07777U;
}

}  // namespace

TEST(SocketName, IsTwoDigestsWhateverTheTextsAre) {
    std::string const plain = socketName("action_engine", "");
    EXPECT_EQ(plain.size(), 49U);
    EXPECT_EQ(plain[24], '.');
    EXPECT_EQ(plain.find_first_not_of("0123456789abcdef."), std::string::npos);
    for (std::string const &target :
         {std::string("../../x"), std::string(100000, 'y'), std::string("\n\0\xff", 3)}) {
        std::string const name = socketName("action_engine", target);
        EXPECT_EQ(name.size(), 49U);
        EXPECT_EQ(name.find_first_not_of("0123456789abcdef."), std::string::npos);
        EXPECT_EQ(name.substr(0, 25), plain.substr(0, 25));
    }
}

TEST(SocketName, DiffersForEveryServiceAndTarget) {
    std::set<std::string> const names = {socketName("a", "b"), socketName("ab", ""), socketName("", "ab"),
                                         socketName("b", "a"), socketName("a", ""),  socketName("", "a"),
                                         socketName("A", "b"), socketName("a", "b ")};
    EXPECT_EQ(names.size(), 8U);
}

TEST(SocketName, IsTheSameInEveryProcess) {
    // Processes that were built at different times meet under these names.
    EXPECT_EQ(socketName("action_engine", ""), socketName("action_engine", std::string_view()));
    EXPECT_EQ(socketName("action_engine", "camera 1"), socketName("action_engine", "camera 1"));
}

TEST(SocketName, TellsTheServiceOfATarget) {
    EXPECT_TRUE(isSocketOf(socketName("a", "b"), "a"));
    EXPECT_TRUE(isSocketOf(socketName("a", ""), "a"));
    EXPECT_FALSE(isSocketOf(socketName("a", "b"), "b"));
    EXPECT_FALSE(isSocketOf(socketName("a", "b") + ".lock", "a"));
    EXPECT_FALSE(isSocketOf(socketName("a", "b") + ".new", "a"));
    EXPECT_FALSE(isSocketOf("", "a"));
}

TEST(RuntimeFolderTest, IsMadeForTheUserAlone) {
    TestRuntimeFolder const parent;
    EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", parent.path() + "/made");
    EXPECT_TRUE(opens());
    EXPECT_EQ(modeOf(parent.path() + "/made"), 0700U);
}

TEST(RuntimeFolderTest, IsInTheSessionsFolderByDefault) {
    TestRuntimeFolder const session;
    EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", std::nullopt);
    EnvironmentVariable const session_folder("XDG_RUNTIME_DIR", session.path());
    EXPECT_EQ(RuntimeFolder::fromEnvironment().path(), session.path() + "/korvo");
    EXPECT_TRUE(opens());
    EXPECT_EQ(modeOf(session.path() + "/korvo"), 0700U);
}

TEST(RuntimeFolderTest, IsInTheTemporaryFolderWithoutASession) {
    TestRuntimeFolder const temporary;
    EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", "");
    EnvironmentVariable const session("XDG_RUNTIME_DIR", std::nullopt);
    EnvironmentVariable const temporary_folder("TMPDIR", temporary.path());
    std::string const expected = temporary.path() + "/korvo-" + std::to_string(geteuid());
    EXPECT_EQ(RuntimeFolder::fromEnvironment().path(), expected);
    EXPECT_TRUE(opens());
    EXPECT_EQ(modeOf(expected), 0700U);
}

TEST(RuntimeFolderTest, InTheTemporaryFolderIsNoLink) {
    TestRuntimeFolder const temporary;
    EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", std::nullopt);
    EnvironmentVariable const session("XDG_RUNTIME_DIR", std::nullopt);
    EnvironmentVariable const temporary_folder("TMPDIR", temporary.path());
    std::filesystem::create_directory(temporary.path() + "/elsewhere");
    std::filesystem::create_directory_symlink(temporary.path() + "/elsewhere",
                                              temporary.path() + "/korvo-" + std::to_string(geteuid()));
    EXPECT_NE(complaint(), "");
}

TEST(RuntimeFolderTest, IsRefusedWhenOthersCanWriteToIt) {
    for (mode_t const mode : {0770U, 0707U, 0722U, 01777U}) {
        TestRuntimeFolder const folder;
        ASSERT_EQ(chmod(folder.path().c_str(), mode), 0);
        std::string const said = complaint();
        EXPECT_NE(said.find(folder.path()), std::string::npos) << said;
        EXPECT_NE(said.find("others can write to it"), std::string::npos) << said;
        EXPECT_NE(said.find("chmod 700"), std::string::npos) << said;
    }
}

TEST(RuntimeFolderTest, MayBeReadByOthers) {
    TestRuntimeFolder const folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    EXPECT_TRUE(opens());
}

TEST(RuntimeFolderTest, IsRefusedWhenItBelongsToSomebodyElse) {
    TestRuntimeFolder const folder;
    if (geteuid() == 0) {
        ASSERT_EQ(chown(folder.path().c_str(), 12345, 12345), 0);
        std::string const said = complaint();
        EXPECT_NE(said.find("belongs to user 12345"), std::string::npos) << said;
    } else {
        EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", "/usr");
        std::string const said = complaint();
        EXPECT_NE(said.find("belongs to user 0"), std::string::npos) << said;
    }
}

TEST(RuntimeFolderTest, MayBeReachedThroughALinkThatLeadsToAGoodOne) {
    TestRuntimeFolder const parent;
    std::filesystem::create_directory(parent.path() + "/real");
    std::filesystem::create_directory_symlink(parent.path() + "/real", parent.path() + "/link");
    EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", parent.path() + "/link");
    ASSERT_EQ(chmod((parent.path() + "/real").c_str(), 0700), 0);
    EXPECT_TRUE(opens());
    ASSERT_EQ(chmod((parent.path() + "/real").c_str(), 0777), 0);
    EXPECT_NE(complaint().find("others can write to it"), std::string::npos);
}

TEST(RuntimeFolderTest, IsRefusedWhenItIsNoFolder) {
    TestRuntimeFolder const parent;
    EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", "/dev/null");
    EXPECT_NE(complaint().find("/dev/null"), std::string::npos);
    EnvironmentVariable const missing("KORVO_RUNTIME_DIR", parent.path() + "/a/b/c");
    EXPECT_NE(complaint().find("/a/b/c"), std::string::npos);
}

TEST(RuntimeFolderTest, ThatIsRefusedFailsInitiatorsAndTargetsWhenTheyAreOpened) {
    TestRuntimeFolder const folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    void *handle = nullptr;
    EXPECT_EQ(korvo_core_ipc_initiator_init(nullptr, "name", &handle, 1), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(korvo_core_ipc_target_init(nullptr, "service", "", "name", &handle),
              KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(handle, nullptr);
}

TEST(RuntimeFolderTest, MayHaveAPathThatIsTooLongForSockets) {
    TestRuntimeFolder const parent;
    std::string const deep = parent.path() + "/" + std::string(200, 'd');
    EnvironmentVariable const chosen("KORVO_RUNTIME_DIR", deep);
    void *service = nullptr;
    void *client = nullptr;
    ASSERT_EQ(korvo_core_ipc_target_init(nullptr, "service", "", "name", &service),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(korvo_core_ipc_initiator_init(nullptr, "name", &client, 1), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_ipc_initiator_command_send(client, "service", "", "id", "{}"),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_ipc_deinit(client), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_ipc_deinit(service), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(std::filesystem::is_empty(deep));
}
