// SPDX-License-Identifier: Apache-2.0
// What there is and what happens: list, show, filters preview, rules, events.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "support/service.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using processes::exited;

std::vector<std::string> const inside = {"rule",     "add",
                                         "--topic",  "tns1:Device/Trigger",
                                         "--name",   "inside",
                                         "--action", "snapshot action_name=door filename=door.jpg",
                                         "--action", "wiper action_name=\"wipe it\"",
                                         "--filter", "Mon-Fri 08:00-18:15",
                                         "--filter", "Sat,Sun 22:00-06:00"};

TEST(RuleAdd, MakesATriggerActionsFiltersAndBindings) {
    Service service;
    EXPECT_EQ(results(inside),
              "trigger  1\n"
              "actions  1, 2\n");
    EXPECT_EQ(results({"rule", "add", "--timer", "60", "--action", "door", "--name", "minute", "--json"}),
              "{\"trigger_id\":2,\"action_id\":[1]}\n");
    EXPECT_EQ(
        results({"list"}),
        "ACTION  KIND      NAME     TRIGGERS  RUNS                                      SETTINGS\n"
        "1       snapshot  door     1,2       Mon-Fri 08:00-18:15; Sat,Sun 22:00-06:00  filename=door.jpg\n"
        "2       wiper     wipe it  1         Mon-Fri 08:00-18:15; Sat,Sun 22:00-06:00\n"
        "\n"
        "TRIGGER  KIND   NAME    ACTIONS  SETTINGS\n"
        "1        onvif  inside  1,2      topic_filter=tns1:Device/Trigger namespace_keys=tns1, tt "
        "namespace_uris=http://www.onvif.org/ver10/topics, http:...\n"
        "2        timer  minute  1        timer_seconds=60\n");
    EXPECT_EQ(results({"show", "action:2"}),
              "action 2 (wipe it)\n"
              "  kind         wiper_action\n"
              "  action_name  wipe it\n"
              "  runs         Mon-Fri 08:00-18:15; Sat,Sun 22:00-06:00\n"
              "  bound to     trigger 1 (inside)\n");
    EXPECT_EQ(results({"show", "minute", "--json"}),
              "[{\"id\":2,\"kind\":\"timer_trigger\",\"settings\":{\"trigger_name\":\"minute\",\"timer_"
              "seconds\":60},"
              "\"action_id\":[1]}]\n");
    EXPECT_EQ(results({"filters", "preview", "door", "--week"}),
              "action 1 (door) runs Mon-Fri 08:00-18:15; Sat,Sun 22:00-06:00\n"
              "     00    03    06    09    12    15    18    21\n"
              "Mon  ############....####################+...........\n"
              "Tue  ................####################+...........\n"
              "Wed  ................####################+...........\n"
              "Thu  ................####################+...........\n"
              "Fri  ................####################+...........\n"
              "Sat  ............................................####\n"
              "Sun  ############................................####\n"
              "     # runs, . does not, + some of the half hour\n");
    EXPECT_EQ(results({"rule", "remove", "inside"}),
              "removed trigger  1\n"
              "removed actions  2\n");
    EXPECT_EQ(results({"get-actions", "--json"}), "{\"action_id\":[1],\"action_type\":[2]}\n");
    EXPECT_EQ(results({"get-triggers", "--json"}), "{\"trigger_id\":[2],\"trigger_type\":[1]}\n");
}

TEST(RuleAdd, UndoesAllWhenAStepFails) {
    Service service({"--fail", "Create_association=9"});
    Finished const failed = tool(inside);
    EXPECT_TRUE(failed.exit == exited(5)) << failed.errors;
    EXPECT_NE(failed.errors.find("; undone: the filters of action 1, the new action 1, the new trigger 1\n"),
              std::string::npos)
        << failed.errors;
    EXPECT_EQ(results({"get-actions", "--json"}), "{\"action_id\":[],\"action_type\":[]}\n");
    EXPECT_EQ(results({"get-triggers", "--json"}), "{\"trigger_id\":[],\"trigger_type\":[]}\n");
}

TEST(RuleAdd, LeavesTheBindingsThatWereThereWhenItIsUndone) {
    Service service;
    (void)results({"rule", "add", "--timer", "60", "--name", "minute", "--action", "wiper action_name=wipe"});
    (void)results({"sim", "fault", "Create_washer_action", "--fail", "9"});
    std::string const before = results({"list", "--json"});
    Finished failed = tool(
        {"rule", "add", "--trigger", "minute", "--action", "wipe", "--action", "washer action_name=wash"});
    EXPECT_TRUE(failed.exit == exited(5)) << failed.errors;
    EXPECT_EQ(failed.errors.find("undone"), std::string::npos) << failed.errors;
    EXPECT_EQ(results({"list", "--json"}), before);

    // One that is named twice is bound once.
    failed = tool({"rule", "add", "--timer", "5", "--action", "wipe", "--action", "wipe", "--action",
                   "washer action_name=wash"});
    EXPECT_TRUE(failed.exit == exited(5)) << failed.errors;
    EXPECT_NE(failed.errors.find("; undone: the binding of action 1, the new trigger 2\n"), std::string::npos)
        << failed.errors;
    EXPECT_EQ(results({"list", "--json"}), before);
}

std::string const no_triggers = "{\"trigger_id\":[],\"trigger_type\":[]}\n";

/// Until the service has made what this process asks for; what it answers is still to come.
void waitUntilListed(processes::Child const &child, std::string const &made) {
    auto const limit = processes::Clock::now() + processes::patience;
    while (processes::count(results({"list", "--json"}), made) == 0 && child.running() &&
           processes::Clock::now() < limit) {
    }
}

TEST(RuleAdd, UndoesAlsoTheStepThatWasInterrupted) {
    // Where this process is slow the next steps wait for it as well.
    Service service({"--delay", "Create_timer_trigger=2000", "--delay", "Create_wiper_action=2000", "--delay",
                     "Create_association=2000"});
    processes::Child child(
        toolCommand({"rule", "add", "--timer", "60", "--action", "wiper action_name=wipe"}));
    waitUntilListed(child, "\"timer_trigger\"");
    child.signal(SIGINT);
    EXPECT_TRUE(child.wait() == exited(130)) << child.errors().text();
    std::string const errors = child.errors().text();
    EXPECT_EQ(errors.find("korvo-action-engine: interrupted; undone: "), 0U) << errors;
    EXPECT_NE(errors.find("the new trigger 1\n"), std::string::npos) << errors;
    EXPECT_EQ(errors.find("could not be undone"), std::string::npos) << errors;
    EXPECT_EQ(results({"get-triggers", "--json"}), no_triggers);
}

TEST(RuleAdd, UndoesAlsoTheLastStepThatWasInterrupted) {
    Service service({"--delay", "Create_association=3000"});
    (void)results({"create-wiper-action", "--action-name", "wipe"});
    processes::Child child(toolCommand({"rule", "add", "--timer", "60", "--action", "wipe"}));
    waitUntilListed(child, "{\"trigger_id\":1,\"action_id\":1}");
    child.signal(SIGINT);
    EXPECT_TRUE(child.wait() == exited(130)) << child.errors().text();
    EXPECT_EQ(child.errors().text(),
              "korvo-action-engine: interrupted; undone: the binding of action 1, the new trigger 1\n");
    EXPECT_EQ(results({"get-triggers", "--json"}), no_triggers);
}

TEST(RuleAdd, EndsAStepThatIsInterruptedTwice) {
    Service service({"--delay", "Create_timer_trigger=600000"});
    processes::Child child(toolCommand(
        {"rule", "add", "--timer", "60", "--action", "wiper action_name=wipe", "--timeout", "forever"}));
    waitUntilListed(child, "\"timer_trigger\"");
    // Signals that come before the last was seen are one.
    auto exit = child.wait(processes::milliseconds(20));
    for (auto const limit = processes::Clock::now() + processes::patience;
         !exit && processes::Clock::now() < limit;) {
        child.signal(SIGINT);
        exit = child.wait(processes::milliseconds(20));
    }
    EXPECT_TRUE(exit == exited(130)) << child.errors().text();
    EXPECT_EQ(child.errors().text(),
              "korvo-action-engine: interrupted; the service may still do it\n"
              "  see what the service does\n");
}

TEST(RuleAdd, TellsWhatCouldNotBeUndone) {
    Service service({"--fail", "Create_association=9", "--fail", "Delete_action=9"});
    Finished const failed = tool(inside);
    EXPECT_TRUE(failed.exit == exited(5));
    EXPECT_NE(failed.errors.find("could not be undone: the new action 1\n"), std::string::npos)
        << failed.errors;
}

TEST(RuleAdd, NamesTheOptionThatIsWrong) {
    struct Case {
        std::vector<std::string> words;
        char const *what;
    };
    for (Case const &wrong : std::vector<Case>{
             {{"--action", "1"}, "the rule has no trigger"},
             {{"--timer", "1", "--topic", "a", "--action", "1"}, "the rule has several triggers"},
             {{"--timer", "1"}, "--action is required"},
             {{"--timer", "x", "--action", "1"}, "--timer is a whole number"},
             {{"--timer", "1", "--action", "nothing a=b"}, "--action names no kind of action"},
             {{"--timer", "1", "--action", "wiper a=b"}, "--action: a wiper_action has no setting \"a=b\""},
             {{"--timer", "1", "--action", "ftp action_name=a password=b"}, "--action holds a password"},
             {{"--timer", "1", "--action", "relay action_name=a config_mode=b"},
              "--action config_mode is a whole number"},
             {{"--timer", "1", "--action", "wiper action_name=a", "--filter", "Mon 25:00-26:00"},
              "--filter is weekdays"},
             {{"--timer", "1", "--action", "wiper action_name=a", "--filter", "Mo 08:00-09:00"},
              "--filter is weekdays"},
             {{"--topic", "a", "--action", "wiper action_name=a", "--namespace", "tns2"},
              "--namespace is a prefix"}}) {
        std::vector<std::string> words = {"rule", "add"};
        words.insert(words.end(), wrong.words.begin(), wrong.words.end());
        Finished const finished = tool(words);
        EXPECT_TRUE(finished.exit == exited(2)) << finished.errors;
        EXPECT_NE(finished.errors.find(wrong.what), std::string::npos) << finished.errors;
    }
}

TEST(Names, ThatSeveralHaveAreNoIdentifiers) {
    Service service;
    (void)results({"create-wiper-action", "--action-name", "same"});
    (void)results({"create-wiper-action", "--action-name", "same"});
    Finished const finished = tool({"rule", "add", "--timer", "60", "--action", "same"});
    EXPECT_TRUE(finished.exit == exited(2));
    EXPECT_NE(finished.errors.find("--action: 2 actions are called \"same\""), std::string::npos)
        << finished.errors;
    EXPECT_TRUE(tool({"show", "other"}).exit == exited(6));
}

TEST(List, LeavesOutWhatIsRefusedWithItsBindings) {
    Service service;
    (void)results(inside);
    std::string const left =
        "ACTION  KIND   NAME     TRIGGERS  RUNS                                      SETTINGS\n"
        "2       wiper  wipe it  1         Mon-Fri 08:00-18:15; Sat,Sun 22:00-06:00\n";
    auto const refuse_once = [](char const *method) {
        (void)results({"sim", "fault", method, "--fail", "9", "--count", "1"});
    };
    refuse_once("Get_snapshot_action");
    EXPECT_EQ(results({"list"}).find(left), 0U);
    refuse_once("Get_snapshot_action");
    std::string const listed = results({"list", "--json"});
    EXPECT_NE(listed.find("\"associations\":[{\"trigger_id\":1,\"action_id\":2}]"), std::string::npos)
        << listed;
    refuse_once("Get_snapshot_action");
    std::string const exported = results({"export"});
    EXPECT_NE(exported.find("\"associations\": [{\"trigger_id\":1,\"action_id\":1}]"), std::string::npos)
        << exported;
    refuse_once("Get_onvif_trigger");
    EXPECT_NE(results({"export"}).find("\"associations\": []"), std::string::npos);
}

/// Until this process has written something; events before its subscription are missed.
void injectUntil(processes::Child const &child) {
    while (child.out().size() == 0 && child.running()) {
        (void)results({"inject", "tns1:Device/Trigger", "source:Input=1", "State=a \"b\" <&"});
    }
}

TEST(Events, AreWatchedUntilAnInterruption) {
    Service service;
    (void)results({"rule", "add", "--topic", "tns1:Device/Trigger", "--content",
                   "boolean(//tt:SimpleItem[@Name=\"Input\" and @Value=\"1\"])", "--action",
                   "snapshot action_name=door filename=d.jpg"});
    processes::Child child(toolCommand({"watch", "--json", "--action", "1"}));
    injectUntil(child);
    child.signal(SIGINT);
    EXPECT_TRUE(child.wait() == exited(0)) << child.errors().text();
    EXPECT_EQ(
        child.out().text().find("{\"event\":\"Action_completed\",\"action_id\":1,\"action_name\":\"door\","
                                "\"success\":true,\"source\":\"\"}\n"),
        0U)
        << child.out().text();
}

TEST(Events, AreWaitedForAndCounted) {
    Service service;
    (void)results({"rule", "add", "--topic", "tns1:Device/Trigger", "--action", "wiper action_name=wipe"});
    processes::Child child(toolCommand({"wait-event", "--count", "2"}));
    while (child.running()) {
        (void)results({"inject", "tns1:Device/Trigger"});
    }
    EXPECT_TRUE(child.wait() == exited(0)) << child.errors().text();
    EXPECT_EQ(processes::count(child.out().text(), "action 1 (wipe) "), 2U) << child.out().text();

    Finished const late = tool({"wait-event", "--action", "7", "--timeout", "100ms"});
    EXPECT_TRUE(late.exit == exited(3)) << late.errors;
    EXPECT_EQ(late.out, "");
}

TEST(Inject, MakesTheMessage) {
    EXPECT_EQ(
        results({"inject", "tns1:Device/Trigger", "--dry-run", "--time", "2026-11-23T07:59:00Z",
                 "--operation", "Changed", "source:Input=1", "key:K=v", "State=a \"b\" <&", "data:More=2"}),
        "<tt:Message xmlns:tt=\"http://www.onvif.org/ver10/schema\" UtcTime=\"2026-11-23T07:59:00Z\" "
        "PropertyOperation=\"Changed\">"
        "<tt:Source><tt:SimpleItem Name=\"Input\" Value=\"1\"/></tt:Source>"
        "<tt:Key><tt:SimpleItem Name=\"K\" Value=\"v\"/></tt:Key>"
        "<tt:Data><tt:SimpleItem Name=\"State\" Value=\"a &quot;b&quot; &lt;&amp;\"/>"
        "<tt:SimpleItem Name=\"More\" Value=\"2\"/></tt:Data></tt:Message>\n");
    EXPECT_TRUE(tool({"inject", "a", "--operation", "changed"}).exit == exited(2));
    EXPECT_TRUE(tool({"inject", "a", "b"}).exit == exited(2));
}

TEST(WaitService, EndsWhenItIsThere) {
    EXPECT_TRUE(tool({"wait-service", "--timeout", "100ms"}).exit == exited(3));
    processes::Child child(toolCommand({"wait-service"}));
    Service service;
    EXPECT_TRUE(child.wait() == exited(0)) << child.errors().text();
}

TEST(WaitService, LooksAtTheVersionOfOneThatComesLater) {
    processes::Child child(toolCommand({"wait-service", "--require-version", "2.0"}));
    // So long that the first one has looked for the service too.
    EXPECT_TRUE(tool({"wait-service", "--timeout", "200ms"}).exit == exited(3));
    Service service;
    EXPECT_TRUE(child.wait() == exited(7)) << child.errors().text();
}

TEST(WaitService, GoesOnAfterALostConnection) {
    Service service;
    (void)results({"sim", "fault", "__get_target_version__", "--close", "--count", "1"});
    EXPECT_EQ(results({"wait-service", "--timeout", "1m"}), "");
    (void)results({"sim", "fault", "__get_target_version__", "--drop"});
    Finished const late = tool({"wait-service", "--timeout", "300ms"});
    EXPECT_TRUE(late.exit == exited(3)) << late.errors;
    EXPECT_NE(late.errors.find("the service did not come within 300 ms"), std::string::npos) << late.errors;
}

}  // namespace

}  // namespace tool_tests
