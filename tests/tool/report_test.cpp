// SPDX-License-Identifier: Apache-2.0
// The page about a service. That a browser shows it is looked at by scripts/check-report.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "korvo_core.h"
#include "support/service.h"
#include "support/workspace.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using end_to_end::Workspace;
using processes::exited;

constexpr char topic[] = "tns1:Device/Trigger";
constexpr char hostile[] = "</title><script>alert('1')</script>&lt;";

std::string textOf(std::filesystem::path const &file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::size_t countOf(std::string const &text, std::string const &wanted) {
    std::size_t count = 0;
    for (auto place = text.find(wanted); place != std::string::npos; place = text.find(wanted, place + 1)) {
        ++count;
    }
    return count;
}

std::filesystem::path newPage() {
    return Workspace::ofThisProgram().newFolder("report") / "page.html";
}

class Report : public ::testing::Test {
  protected:
    void SetUp() override {
        auto const password = fileWith("geheim-4711\n").string();
        (void)results({"rule", "add", "--topic", topic, "--content",
                       R"(boolean(//tt:SimpleItem[@Name="IsInside" and @Value="true"]))", "--name", hostile,
                       "--action", "wiper action_name=wipe", "--filter", "Mon-Fri 22:00-06:00"});
        (void)results({"create-ftp-action", "--action-name", "upload", "--server-name", "files.example.org",
                       "--username", "anna", "--password-file", password, "--path", "p", "--filename", "f"});
    }

    Service service{{"--clock", "virtual=2026-11-23T23:30:00"}};
};

TEST_F(Report, HoldsEverythingOnOnePage) {
    (void)results({"inject", topic, "IsInside=false"});
    (void)results({"sim", "clock", "--advance", "60"});
    (void)results({"inject", topic, "IsInside=true"});
    auto const file = newPage();
    EXPECT_EQ(results({"report", file.string(), "--json", "--show-secrets"}),
              "{\"file\":\"" + file.string() +
                  "\",\"triggers\":1,\"actions\":2,\"mistakes\":1,\"picture\":true,\"traces\":2}\n");
    std::string const page = textOf(file);
    // The picture, with arrows.
    EXPECT_NE(page.find("<title>trigger_1&#45;&gt;filter_1</title>"), std::string::npos) << page;
    EXPECT_NE(page.find("action 2 (upload): no trigger: no trigger runs it"), std::string::npos) << page;
    // Five nights are ten times, and one more on Saturday morning; Monday begins with none.
    EXPECT_NE(page.find("<title>Mon 22:00-24:00</title>"), std::string::npos) << page;
    EXPECT_NE(page.find("<title>Sat 00:00-06:00</title>"), std::string::npos) << page;
    EXPECT_EQ(page.find("<title>Mon 00:00-06:00</title>"), std::string::npos) << page;
    EXPECT_EQ(countOf(page, "fill=\"#5a9e4b\""), 10U) << page;
    // The time line: from its left end to its right one.
    EXPECT_EQ(countOf(page, "<circle "), 2U) << page;
    EXPECT_NE(page.find("<a href=\"#trace-1\"><circle cx=\"80\""), std::string::npos) << page;
    EXPECT_NE(page.find("<a href=\"#trace-2\"><circle cx=\"980\""), std::string::npos) << page;
    EXPECT_NE(page.find("<pre id=\"trace-1\">"), std::string::npos) << page;
    EXPECT_NE(page.find("message fails: &quot;IsInside&quot; was"), std::string::npos) << page;

    EXPECT_EQ(page.find("geheim-4711"), std::string::npos);
    EXPECT_EQ(countOf(page, "<script"), 0U);
    EXPECT_NE(page.find("&lt;/title&gt;&lt;script&gt;"), std::string::npos);
    std::smatch reference;
    EXPECT_FALSE(std::regex_search(
        page, reference, std::regex("(src|href|data|action)=\"[^#\"]|url\\(|@import|<link|<iframe")))
        << reference.str();
}

TEST_F(Report, SaysThatThePictureIsMissing) {
    auto const file = newPage();
    processes::Command command = toolCommand({"report", file.string()});
    command.environment.emplace_back("PATH", Workspace::ofThisProgram().newFolder("empty").string());
    Finished const finished = run(command);
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    std::string const why =
        "No picture: the program dot, which draws the picture, cannot be started; install Graphviz";
    EXPECT_EQ(finished.errors.find("korvo-action-engine: " + why), 0U) << finished.errors;
    std::string const page = textOf(file);
    EXPECT_NE(page.find(why), std::string::npos) << page;
    EXPECT_EQ(page.find("<title>trigger_1"), std::string::npos);
    EXPECT_NE(page.find("Nothing: no event and no timer"), std::string::npos);
}

TEST_F(Report, IsThereAsAWhole) {
    auto const file = newPage();
    auto const link = file.parent_path() / "link.html";
    std::ofstream(file) << "before";
    ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
    std::filesystem::create_symlink(file, link);
    EXPECT_EQ(results({"report", link.string()}), "");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(textOf(file).find("<!DOCTYPE html>"), 0U);
    struct stat found = {};
    ASSERT_EQ(::stat(file.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 07777U, 0640U);

    for (std::string const wrong : {"/nowhere/page.html", "/dev/null", "/"}) {
        Finished const finished = tool({"report", wrong});
        EXPECT_TRUE(finished.exit == exited(2)) << finished.errors;
        EXPECT_EQ(finished.errors.find("korvo-action-engine: FILE: cannot write \"" + wrong + "\": "), 0U)
            << finished.errors;
    }
    // A file that may not grow so far is a full disk.
    std::ofstream(file) << "before";
    ShellOutcome const full =
        shell("ulimit -f 1; trap '' XFSZ; korvo-action-engine report " + file.string() + " 2>&1");
    EXPECT_EQ(full.code, 1) << full.out;
    EXPECT_EQ(textOf(file), "before");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 2)
        << "something is left over";
}

/// A service that answers everything with nothing, as one of another maker might.
class OtherService {
  public:
    OtherService() {
        EXPECT_EQ(korvo_core_ipc_target_init(nullptr, "action_engine", nullptr, "other", &messaging_),
                  KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(korvo_core_ipc_target_command_receive_callback(messaging_, answer, messaging_),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    ~OtherService() { (void)korvo_core_ipc_deinit(messaging_); }
    OtherService(OtherService const &) = delete;
    OtherService &operator=(OtherService const &) = delete;

  private:
    static void answer(char **source, char **request, char **, void *messaging) {
        (void)korvo_core_ipc_target_response_send(messaging, *source, *request, R"({"status":0})");
    }

    void *messaging_ = nullptr;
};

TEST(ReportOfAnotherService, SaysThatItHasNoTraces) {
    OtherService const service;
    auto const file = newPage();
    Finished const finished = tool({"report", file.string(), "--json"});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.errors, "korvo-action-engine: no traces: this service keeps none\n");
    EXPECT_NE(finished.out.find("\"traces\":null"), std::string::npos) << finished.out;
    EXPECT_NE(textOf(file).find("This service keeps no traces"), std::string::npos);
}

}  // namespace

}  // namespace tool_tests
