// SPDX-License-Identifier: Apache-2.0
// Catalogues as pictures.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/service.h"
#include "support/workspace.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using processes::exited;

constexpr char secret[] = "geheim-4711";

/// A timer that runs an upload with a filter, and texts that mean something to Graphviz.
std::string const catalogue =
    R"({"format":"korvo-action-engine-catalogue","version":1,"actions":[)"
    R"({"id":1,"kind":"ftp_action","settings":{"action_name":"a\"b\\n&lt;<c>\n","server_name":"files.example.org",)"
    R"("username":"anna","password":"geheim-4711","path":"p","filename":"f.jpg"},"filters":)"
    R"({"weekday_filters":[62],"time_filters_start":[28800],"time_filters_end":[64800]}},)"
    R"({"id":2,"kind":"wiper_action","settings":{"action_name":"wipe"},"filters":)"
    R"({"weekday_filters":[],"time_filters_start":[],"time_filters_end":[]}}],"triggers":[)"
    R"({"id":7,"kind":"timer_trigger","settings":{"trigger_name":"minute","timer_seconds":60}}],)"
    R"("associations":[{"trigger_id":7,"action_id":1},{"trigger_id":7,"action_id":2}]})";

TEST(Graph, ShowsTriggersFiltersActionsAndBindings) {
    EXPECT_EQ(results({"graph", fileWith(catalogue).string(), "--show-secrets"}),
              "digraph catalogue {\n"
              "    rankdir=LR;\n"
              "    bgcolor=transparent;\n"
              "    node [shape=box, style=\"rounded,filled\", fontname=\"sans-serif\", fontsize=11];\n"
              "    trigger_7 [label=\"minute\\ntimer 7\\nevery 60 s\", fillcolor=\"#dbe9f6\"];\n"
              "    action_1 [label=\"a\\\"b\\\\n&amp;lt;<c>\\\\n\\nftp 1\\nfiles.example.org\", "
              "fillcolor=\"#dff0d8\"];\n"
              "    filter_1 [label=\"Mon-Fri 08:00-18:00\", shape=note, style=filled, "
              "fillcolor=\"#fff3cd\"];\n"
              "    filter_1 -> action_1;\n"
              "    action_2 [label=\"wipe\\nwiper 2\", fillcolor=\"#dff0d8\"];\n"
              "    trigger_7 -> filter_1;\n"
              "    trigger_7 -> action_2;\n"
              "}\n");
}

TEST(Graph, ShowsWhatTheServiceHas) {
    Service service;
    (void)results({"import", "--merge", fileWith(catalogue).string()});
    EXPECT_NE(results({"graph"}).find("    trigger_1 -> filter_1;\n"), std::string::npos);
    EXPECT_EQ(results({"graph", "--json"}).find(R"({"dot":"digraph catalogue {\n)"), 0U);
    EXPECT_EQ(results({"graph"}).find(secret), std::string::npos);
}

TEST(Graph, IsDrawnByGraphviz) {
    std::string const picture = results({"graph", "--svg", fileWith(catalogue).string()});
    EXPECT_EQ(picture.find("<svg "), 0U) << picture;
    EXPECT_NE(picture.find(">a&quot;b\\n&amp;lt;&lt;c&gt;\\n</text>"), std::string::npos) << picture;
    EXPECT_NE(picture.find("<title>trigger_7&#45;&gt;filter_1</title>"), std::string::npos) << picture;
    EXPECT_EQ(picture.find(secret), std::string::npos);
    EXPECT_EQ(picture.rfind("</svg>\n"), picture.size() - 7);
}

TEST(Graph, SaysThatGraphvizIsMissing) {
    processes::Command command = toolCommand({"graph", "--svg", fileWith(catalogue).string()});
    command.environment.emplace_back("PATH",
                                     end_to_end::Workspace::ofThisProgram().newFolder("empty").string());
    Finished const finished = run(command);
    EXPECT_TRUE(finished.exit == exited(1)) << finished.errors;
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(finished.errors,
              "korvo-action-engine: the program dot, which draws the picture, cannot be started\n"
              "  install Graphviz (on Debian the package graphviz)\n");
}

}  // namespace

}  // namespace tool_tests
