// SPDX-License-Identifier: Apache-2.0
// The program itself, as a process of its own with clients at its messaging.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "korvo_core.h"
#include "processes/kill.h"
#include "program.h"
#include "recorded.h"
#include "support.h"

namespace simulator::tests {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/// Puts variables of the environment back at its end.
class Environment {
  public:
    explicit Environment(std::vector<char const *> const &names) {
        for (char const *const name : names) {
            char const *const value = std::getenv(name);
            previous_[name] = value == nullptr ? std::nullopt : std::optional<std::string>(value);
        }
    }
    ~Environment() {
        for (auto const &[name, value] : previous_) {
            if (value) {
                ::setenv(name.c_str(), value->c_str(), 1);
            } else {
                ::unsetenv(name.c_str());
            }
        }
    }
    Environment(Environment const &) = delete;
    Environment &operator=(Environment const &) = delete;

  private:
    std::map<std::string, std::optional<std::string>> previous_;
};

constexpr char const *create_wiper = R"({"command":"Create_wiper_action","action_name":"w"})";
constexpr char const *get_actions = R"({"command":"Get_actions"})";

}  // namespace

TEST_F(ProgramTest, SaysWhenItIsReadyAndEndsCleanlyOnSignals) {
    for (int const signal : {SIGTERM, SIGINT}) {
        Program program({});
        expectReady(program);
        auto const start = steady_clock::now();
        program.signal(signal);
        EXPECT_EQ(program.exitStatus(), 0);
        EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(1));
        EXPECT_EQ(program.errors(), "");
    }
}

TEST_F(ProgramTest, NamesItsTarget) {
    Program program({"--target", "lab 7"});
    EXPECT_EQ(program.line(), "korvo-action-engine-simulator: ready (target \"lab 7\")");
}

TEST_F(ProgramTest, PrintsHelpAndVersion) {
    Program help({"--help"});
    EXPECT_EQ(help.line(), "Usage: korvo-action-engine-simulator [options]");
    EXPECT_EQ(help.exitStatus(), 0);
    Program version({"--version"});
    EXPECT_EQ(version.line(), "korvo-action-engine-simulator 1.19.0");
    EXPECT_EQ(version.exitStatus(), 0);
}

TEST_F(ProgramTest, ExplainsErrorsAndTellsThemApartByItsExitStatus) {
    Program usage({"--drop", "Get_acton_type"});
    EXPECT_EQ(usage.exitStatus(), 2);
    EXPECT_EQ(usage.errors(),
              "korvo-action-engine-simulator: --drop: there is no method \"Get_acton_type\". Did you mean "
              "Get_action_type?\n");
    Program store({"--store", state / "no/store"});
    EXPECT_EQ(store.exitStatus(), 1);
    EXPECT_THAT(store.errors(), StartsWith("korvo-action-engine-simulator: cannot open the store"));
    writeFile(state / "file", "");
    Program folder({"--snapshots", state / "file/pictures"});
    EXPECT_EQ(folder.exitStatus(), 1);
    EXPECT_THAT(folder.errors(), HasSubstr("cannot make the folder"));
}

TEST_F(ProgramTest, KeepsPicturesAndMailsWhereTheCoreKeepsState) {
    struct Case {
        char const *own;
        char const *xdg;
        char const *home;
        std::string expected;
    };
    std::string const home = state.path();
    std::string const xdg = state / "xdg";
    Case const cases[] = {
        {"", xdg.c_str(), home.c_str(), xdg + "/korvo/action-engine-simulator"},
        {"", "", home.c_str(), home + "/.local/state/korvo/action-engine-simulator"},
        // A relative path names no folder that could be found again.
        {"", "relative", home.c_str(), home + "/.local/state/korvo/action-engine-simulator"},
    };
    Environment const previous({"KORVO_STATE_DIR", "XDG_STATE_HOME", "HOME"});
    for (Case const &one : cases) {
        ::setenv("KORVO_STATE_DIR", one.own, 1);
        ::setenv("XDG_STATE_HOME", one.xdg, 1);
        ::setenv("HOME", one.home, 1);
        Program program({});
        expectReady(program);
        EXPECT_TRUE(std::filesystem::is_directory(one.expected + "/snapshots")) << one.expected;
        EXPECT_TRUE(std::filesystem::is_directory(one.expected + "/outbox")) << one.expected;
        std::filesystem::remove_all(one.expected);
    }
    for (char const *const name : {"KORVO_STATE_DIR", "XDG_STATE_HOME", "HOME"}) {
        ::unsetenv(name);
    }
    Program nowhere({});
    EXPECT_EQ(nowhere.exitStatus(), 1);
    EXPECT_THAT(nowhere.errors(), HasSubstr("there is no folder for pictures and mails: neither "));
}

TEST_F(ProgramTest, IsTheOnlyOneWithItsStoreAndWithItsTarget) {
    Program first({"--store", state / "store"});
    expectReady(first);
    Program same_store({"--store", state / "store", "--target", "other"});
    EXPECT_EQ(same_store.exitStatus(), 1);
    EXPECT_THAT(same_store.errors(), HasSubstr("is in use by another process"));
    Program same_target({});
    EXPECT_EQ(same_target.exitStatus(), 1);
    EXPECT_THAT(same_target.errors(), HasSubstr("cannot listen as \"action_engine\", target \"\""));
    Client client;
    EXPECT_EQ(client.call(get_actions),
              R"(r: {"command":"Get_actions","status":0,"action_id":[],"action_type":[]})");
}

TEST_F(ProgramTest, KeepsItsCatalogueInTheStoreAlsoWhenItIsKilled) {
    {
        Program program({"--store", state / "store"});
        expectReady(program);
        Client client;
        EXPECT_EQ(client.call(create_wiper),
                  R"(r: {"command":"Create_wiper_action","status":0,"action_id":1})");
        program.signal(SIGKILL);
        EXPECT_EQ(program.exitStatus(), -SIGKILL);
    }
    Program program({"--store", state / "store"});
    expectReady(program);
    Client client;
    EXPECT_EQ(client.call(get_actions),
              R"(r: {"command":"Get_actions","status":0,"action_id":[1],"action_type":[7]})");
}

TEST_F(ProgramTest, FiresTimersRunsActionsAndPublishesTheirCompletion) {
    Program program({});
    expectReady(program);
    Client client;
    client.subscribe();
    client.call(R"({"command":"Create_snapshot_action","action_name":"door","filename":"door.jpg"})");
    client.call(R"({"command":"Create_ptz_preset_action","action_name":"gate","preset_id":"3"})");
    client.call(R"({"command":"Create_snapshot_action","action_name":"evil","filename":"../evil.jpg"})");
    client.call(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":1})");
    for (char const *const action_id : {"1", "2", "3"}) {
        client.call(std::string(R"({"command":"Create_association","trigger_id":1,"action_id":)") +
                    action_id + "}");
    }
    auto events = client.events(3);
    events.resize(3);
    EXPECT_THAT(
        events,
        ElementsAre(R"({"event":"Action_completed","action_id":1,"action_name":"door","success":true})",
                    R"({"event":"Action_completed","action_id":2,"action_name":"gate","success":true})",
                    R"({"event":"Action_completed","action_id":3,"action_name":"evil","success":false})"));
    EXPECT_EQ(readFile(state / "action-engine-simulator/snapshots/door.jpg").substr(0, 3), "\xff\xd8\xff");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    std::string const log = program.errors();
    EXPECT_THAT(log, HasSubstr("PTZ preset action 2 \"gate\": preset \"3\", head moves to pan "));
    EXPECT_THAT(log,
                HasSubstr("snapshot action 3 \"evil\" failed: the file name \"../evil.jpg\" is refused"));
}

TEST_F(ProgramTest, CapturesWhatGoesToAndFro) {
    TemporaryFolder const captures;
    Program program({"--capture", captures / "c"});
    expectReady(program);
    Client client;
    EXPECT_EQ(client.call(create_wiper), R"(r: {"command":"Create_wiper_action","status":0,"action_id":1})");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    std::string const captured = readFile(captures / "c");
    std::string const answer = captured.substr(captured.find('\n') + 1);
    EXPECT_THAT(captured,
                HasSubstr(R"("direction":"to service","text":"{\"command\":\"Create_wiper_action\")"));
    EXPECT_THAT(
        answer,
        HasSubstr(R"("direction":"from service","text":"{\"command\":\"Create_wiper_action\",\"status\":0)"));
}

TEST_F(ProgramTest, ShowsACapturedFaultAgain) {
    TemporaryFolder const captures;
    std::string const file = captures / "c";
    std::vector<std::string> recorded;
    auto const asked = [](Client &client) {
        std::vector<std::string> answers;
        client.subscribe();
        for (char const *const command :
             {create_wiper, R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":1})",
              R"({"command":"Create_association","trigger_id":1,"action_id":1})"}) {
            answers.push_back(client.call(command));
        }
        answers.push_back(client.events(1).front());
        answers.push_back(client.call(get_actions));
        return answers;
    };
    {
        Program program({"--capture", file, "--fail", "Get_actions=7"});
        expectReady(program);
        Client client;
        recorded = asked(client);
        program.signal(SIGTERM);
        EXPECT_EQ(program.exitStatus(), 0);
    }
    Program program({"--replay", file});
    expectReady(program);
    Client client;
    EXPECT_EQ(asked(client), recorded);
    EXPECT_EQ(recorded.back(), R"(r: {"command":"Get_actions","status":7})");
    EXPECT_EQ(client.call(get_actions), R"(r: {"command":"Get_actions","status":9})");
    Client control("action_engine_simulator");
    EXPECT_THAT(control.call(R"({"command":"Stop_replay"})"),
                HasSubstr(R"("status":0,"answered":4,"refused":1,"left":0)"));
    EXPECT_EQ(client.call(get_actions),
              R"(r: {"command":"Get_actions","status":0,"action_id":[],"action_type":[]})");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(program.errors(),
                HasSubstr("refused: the capture holds this command no further time (once in all)"));
}

TEST_F(ProgramTest, TakesTheEventsOfAReplayFromAVirtualClock) {
    TemporaryFolder const captures;
    Captured captured;
    captured.command(get_actions).answer("{}").after(std::chrono::hours(1)).event("after an hour");
    writeFile(captures / "c", captured.text());
    Program program({"--replay", captures / "c", "--clock", "virtual"});
    expectReady(program);
    Client client;
    Client control("action_engine_simulator");
    client.subscribe();
    EXPECT_EQ(client.call(get_actions), "r: {}");
    EXPECT_THAT(control.call(R"({"command":"Advance_clock","seconds":3601})"), HasSubstr(R"("status":0)"));
    EXPECT_THAT(client.events(1), ElementsAre("after an hour"));
}

TEST_F(ProgramTest, BeginsWithTheCatalogueOfACapture) {
    TemporaryFolder const captures;
    Captured captured;
    captured.command(create_wiper).answer(R"({"command":"Create_wiper_action","status":0,"action_id":7})");
    writeFile(captures / "c", captured.text());
    std::string const list = R"(r: {"command":"Get_actions","status":0,"action_id":[7],"action_type":[7]})";
    for (bool const again : {false, true}) {
        std::vector<std::string> arguments = {"--store", state / "lab.db"};
        if (!again) {
            arguments.insert(arguments.end(), {"--from-capture", captures / "c"});
        }
        Program program(arguments);
        expectReady(program);
        Client client;
        EXPECT_EQ(client.call(get_actions), list);
        program.signal(SIGTERM);
        EXPECT_EQ(program.exitStatus(), 0);
    }
    Program full({"--store", state / "lab.db", "--from-capture", captures / "c"});
    EXPECT_EQ(full.exitStatus(), 1);
    EXPECT_THAT(full.errors(), HasSubstr("holds a catalogue already; give --store another file"));
    writeFile(captures / "d", captured.text() + "{\n");
    for (char const *const option : {"--from-capture", "--replay"}) {
        Program malformed({option, captures / "d"});
        EXPECT_EQ(malformed.exitStatus(), 1);
        EXPECT_THAT(malformed.errors(), HasSubstr("line 3 is no JSON: incomplete JSON"));
    }
    captured.command(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":1})")
        .answer(R"({"command":"Create_timer_trigger","status":0,"trigger_id":1})");
    captured
        .command(
            R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter":"*","topic_filter_dialect":"","content_filter":"","namespace_keys":[],"namespace_uris":[]})")
        .answer(R"({"command":"Create_onvif_trigger","status":0,"trigger_id":2})");
    writeFile(captures / "e", captured.text());
    Program nonsense({"--store", state / "new.db", "--from-capture", captures / "e"});
    EXPECT_EQ(nonsense.exitStatus(), 1);
    EXPECT_THAT(nonsense.errors(), HasSubstr("trigger 2: "));
    Program empty({"--store", state / "new.db"});
    expectReady(empty);
    Client client;
    EXPECT_EQ(client.call(R"({"command":"Get_triggers"})"),
              R"(r: {"command":"Get_triggers","status":0,"trigger_id":[],"trigger_type":[]})")
        << "nothing is half done";
}

TEST_F(ProgramTest, IsMovedAndQuestionedByItsControlService) {
    Program program({"--clock", "virtual=2026-11-23T07:59:00Z"});
    expectReady(program);
    Client client;
    Client control("action_engine_simulator");
    control.subscribe();
    client.subscribe();
    client.call(create_wiper);
    client.call(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":20})");
    client.call(R"({"command":"Create_association","trigger_id":1,"action_id":1})");
    EXPECT_THAT(control.call(R"({"command":"Advance_clock","seconds":60})"),
                HasSubstr(R"("unix_seconds":1795420800)"));
    EXPECT_EQ(client.events(3).size(), 3U);
    auto events = control.events(3);
    events.resize(3);
    EXPECT_THAT(events, ElementsAre(R"({"event":"Trace_added","id":1,"outcome":"ran"})",
                                    R"({"event":"Trace_added","id":2,"outcome":"ran"})",
                                    R"({"event":"Trace_added","id":3,"outcome":"ran"})"));
    EXPECT_THAT(control.call(R"({"command":"Get_traces","limit":1})"),
                HasSubstr(R"("words":"the wiper ran")"));
    EXPECT_THAT(control.call(R"({"command":"Nonsense"})"), HasSubstr(R"("status":8)"));
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
}

TEST_F(ProgramTest, GarblesDuplicatesAndClosesAsItsControlServiceSays) {
    Program program({});
    expectReady(program);
    Client client;
    Client control("action_engine_simulator");
    control.call(
        R"({"command":"Add_fault","method":"Get_actions","garble":true,"duplicate":true,"count":1})");
    std::string const garbled = client.call(get_actions);
    EXPECT_THAT(garbled, StartsWith(R"(r: {"command":"Get_actions")"));
    EXPECT_EQ(garbled.find('}'), std::string::npos);
    EXPECT_THAT(client.call(R"({"command":"Get_triggers"})"), HasSubstr("Get_triggers"))
        << "the core passes over the second copy";
    control.call(R"({"command":"Add_fault","method":"Get_actions","close":true,"count":1})");
    EXPECT_EQ(client.call(get_actions), "no response") << "the connection is lost";
    std::string answer;
    for (auto const end = steady_clock::now() + patience; steady_clock::now() < end && answer.empty();) {
        if (client.send(get_actions, "again") == KORVO_CORE_STATUS_NO_ERROR) {
            answer = client.receive().value_or("");
        }
    }
    EXPECT_THAT(answer, HasSubstr(R"("status":0)")) << "it listens again";
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
}

TEST_F(ProgramTest, HoldsUpNoOtherAnswerWhileOneIsDelayedAndLeavesDroppedOnesOut) {
    Program program(
        {"--delay", "Get_triggers=300", "--drop", "Get_action_counts", "--fail", "Delete_action=7"});
    expectReady(program);
    Client client;
    auto const start = steady_clock::now();
    client.send(R"({"command":"Get_triggers"})", "late");
    client.send(R"({"command":"Get_action_counts"})", "dropped");
    client.send(get_actions, "prompt");
    client.send(R"({"command":"Delete_action","action_id":1})", "failed");
    EXPECT_EQ(client.receive(),
              R"(prompt: {"command":"Get_actions","status":0,"action_id":[],"action_type":[]})");
    EXPECT_EQ(client.receive(), R"(failed: {"command":"Delete_action","status":7})");
    EXPECT_EQ(client.receive(),
              R"(late: {"command":"Get_triggers","status":0,"trigger_id":[],"trigger_type":[]})");
    EXPECT_GE(steady_clock::now() - start, milliseconds(300));
    EXPECT_EQ(client.receive(milliseconds(0)), std::nullopt);
}

TEST_F(ProgramTest, HoldsBackSoManyAnswersAndNoMore) {
    Program program({"--delay", "Get_triggers=600000"});
    expectReady(program);
    Client client;
    for (int n = 0; n <= 4096; ++n) {
        ASSERT_EQ(client.send(R"({"command":"Get_triggers"})", std::to_string(n)),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    // Answered in order, so all before it have been taken.
    EXPECT_THAT(client.call(get_actions), HasSubstr("\"status\":0"));
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(program.errors(), HasSubstr("an answer is left out: 4096 are held back already"));
}

TEST_F(ProgramTest, RefusesQuestionsToItsControlServiceWhereTooManyWait) {
    std::string replace =
        R"({"command":"Replace_catalogue","catalogue":{"format":"korvo-action-engine-catalogue","version":1,)"
        R"("triggers":[],"associations":[],"actions":[)";
    for (int id = 1; id <= 1500; ++id) {
        replace += R"({"id":)" + std::to_string(id) +
                   R"(,"kind":"wiper_action","settings":{"action_name":"w"},"filters":{"weekday_filters":[],)"
                   R"("time_filters_start":[],"time_filters_end":[]}},)";
    }
    replace.pop_back();
    replace += "]}}";
    Program program({});
    expectReady(program);
    Client control("action_engine_simulator");
    // These take long, and what comes behind them waits.
    constexpr int replacing = 20;
    constexpr int asking = 1500;
    for (int n = 0; n < replacing; ++n) {
        ASSERT_EQ(control.send(replace, "replace " + std::to_string(n)), KORVO_CORE_STATUS_NO_ERROR);
    }
    for (int n = 0; n < asking; ++n) {
        ASSERT_EQ(control.send(R"({"command":"Get_clock"})", "ask " + std::to_string(n)),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    std::map<std::string, std::string> answers;
    while (answers.size() < replacing + asking) {
        std::string const answer = control.receive().value_or("");
        ASSERT_NE(answer, "") << "only " << answers.size() << " have been answered";
        std::size_t const colon = answer.find(": ");
        EXPECT_TRUE(answers.emplace(answer.substr(0, colon), answer.substr(colon + 2)).second) << answer;
    }
    std::string const refusal =
        R"({"command":"Get_clock","status":9,"reason":"1000 commands to the control service wait already; ask again later"})";
    auto const refused = std::count_if(answers.begin(), answers.end(),
                                       [&](auto const &answer) { return answer.second == refusal; });
    EXPECT_GE(refused, 1);
    EXPECT_LE(refused, asking + replacing - 1000);
    EXPECT_THAT(answers["replace 0"], HasSubstr("\"status\":0"));
    EXPECT_THAT(answers["ask 0"], HasSubstr("\"status\":0"));
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(program.errors(), "");
}

TEST_F(ProgramTest, TellsTheSeedThatGivesAnOrderAgain) {
    Program program({"--shuffle", "--log-level", "notice"});
    expectReady(program);
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(program.errors(),
                testing::ContainsRegex("actions run in orders that --seed [0-9]+ gives again"));
}

TEST_F(ProgramTest, RefusesWhatIsTooMuchInWordsAndWorksOn) {
    Program program({});
    expectReady(program);
    Client client;
    auto const repeated = [](char const *text, std::size_t count) {
        std::string all;
        for (std::size_t n = 0; n < count; ++n) {
            all += text;
        }
        return all;
    };
    std::string const condition = R"(boolean(//tt:SimpleItem[@Name="n"]))";
    std::string const items = repeated(R"(<tt:SimpleItem Name="n" Value="v"/>)", 10'000);
    constexpr std::size_t bound = 1'000'000;
    enum class Is { event, topic_filter, content_filter };
    struct Case {
        Is what;
        std::string text;
        int status;
        /// In the log; empty for what is taken.
        char const *words;
    };
    Case const cases[] = {
        {Is::content_filter, condition, 0, ""},
        {Is::event, "", 9, "the message is no XML"},
        {Is::event, "no XML", 9, "the message is no XML"},
        {Is::event, "<m", 9, "the message is no XML"},
        {Is::event, "<m>" + std::string(bound, 'x') + "</m>", 0, ""},
        {Is::event, "<m>" + std::string(bound, 'x'), 9, "the message is no XML"},
        {Is::event, "<tt:Message><tt:Data>" + items + "</tt:Data></tt:Message>", 0, ""},
        {Is::event, repeated("<m>", bound / 7) + repeated("</m>", bound / 7), 9,
         "the message has more than 100 elements in one another"},
        {Is::event, "<m" + repeated(" a='b'", bound / 6) + "/>", 0, ""},
        {Is::topic_filter, repeated("a/", 32 * 1024), 9, "it has 65536 bytes, and 32768 are the most"},
        {Is::topic_filter, repeated("|", 30 * 1024), 9, "the topic filter, column 1:"},
        {Is::content_filter, std::string(64 * 1024, ' '), 9, "it has 65536 bytes, and 32768 are the most"},
        {Is::content_filter, repeated("(", 1000) + condition + repeated(")", 1000), 9,
         "column 101: more than 100 brackets in one another"},
        {Is::content_filter, repeated("not(", 1000) + condition + repeated(")", 1000), 9,
         "column 401: more than 100 brackets in one another"},
        {Is::content_filter, condition + repeated((" or " + condition).c_str(), 800), 0, ""},
    };
    auto const command_of = [](Case const &one) {
        boost::json::object command{{"namespace_keys", {"tt"}},
                                    {"namespace_uris", {"http://www.onvif.org/ver10/schema"}}};
        if (one.what == Is::event) {
            command["command"] = "Onvif_event";
            command["topic"] = "t";
            command["message"] = one.text;
        } else {
            command["command"] = "Create_onvif_trigger";
            command["trigger_name"] = "n";
            command["topic_filter"] = one.what == Is::topic_filter ? one.text : "";
            command["topic_filter_dialect"] = "";
            command["content_filter"] = one.what == Is::content_filter ? one.text : "";
        }
        return boost::json::serialize(command);
    };
    for (int round = 0; round < 3; ++round) {
        for (Case const &one : cases) {
            EXPECT_THAT(client.call(command_of(one)), HasSubstr("\"status\":" + std::to_string(one.status)))
                << one.text.substr(0, 40) << ", " << one.text.size() << " bytes; " << one.words;
        }
    }
    EXPECT_LT(program.mostMemory(), 256U << 20U);
    EXPECT_THAT(client.call(get_actions), HasSubstr("\"status\":0"));
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    std::string const log = program.errors();
    for (Case const &one : cases) {
        EXPECT_THAT(log, HasSubstr(one.words));
    }
}

TEST_F(ProgramTest, SurvivesClientsThatDieAndSendNonsense) {
    Program program({});
    expectReady(program);
    for (int n = 0; n < 10; ++n) {
        pid_t const child = ::fork();
        if (child == 0) {
            void *messaging = nullptr;
            if (korvo_core_ipc_initiator_init(nullptr, "short-lived", &messaging, 1) ==
                KORVO_CORE_STATUS_NO_ERROR) {
                for (int k = 0; k < 200; ++k) {
                    char const *const command = k % 3 == 0   ? "{\"command\":"
                                                : k % 3 == 1 ? get_actions
                                                             : create_wiper;
                    (void)korvo_core_ipc_initiator_command_send(messaging, "action_engine", nullptr, "x",
                                                                command);
                }
            }
            processes::kill(::getpid());
        }
        int how = 0;
        ASSERT_EQ(::waitpid(child, &how, 0), child);
    }
    Client client;
    EXPECT_EQ(client.call(R"({"command":"Get_action_type","action_id":4294967295})"),
              R"(r: {"command":"Get_action_type","status":9})");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
}

TEST_F(ProgramTest, EndsWithinASecondWhileActionsPileUp) {
    Program program({"--log-level", "err"});
    expectReady(program);
    Client client;
    client.call(R"({"command":"Create_snapshot_action","action_name":"a","filename":"a.jpg"})");
    client.call(
        R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter":"","topic_filter_dialect":"","content_filter":"","namespace_keys":[],"namespace_uris":[]})");
    client.call(R"({"command":"Create_association","trigger_id":1,"action_id":1})");
    for (int n = 0; n < 5000; ++n) {
        ASSERT_THAT(
            client.call(
                R"({"command":"Onvif_event","topic":"t","message":"<m/>","namespace_keys":[],"namespace_uris":[]})"),
            HasSubstr("\"status\":0"));
    }
    auto const start = steady_clock::now();
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(1));
}

}  // namespace simulator::tests
