// SPDX-License-Identifier: Apache-2.0
// The example scripts, as a user runs them, with each interpreter.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "lua_interpreters/lua_interpreters.h"
#include "processes/child.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

class LuaExamples : public ::testing::TestWithParam<std::string> {
  protected:
    static Command command(std::string const &name, std::vector<std::string> const &arguments) {
        Command example = {
            GetParam(), {KORVO_LUA_EXAMPLES_FOLDER "/" + name}, lua_interpreters::environment()};
        example.arguments.insert(example.arguments.end(), arguments.begin(), arguments.end());
        return example;
    }

    static Finished runExample(std::string const &name, std::vector<std::string> const &arguments = {}) {
        return run(command(name, arguments));
    }

    std::string file(std::string const &name) const { return (folder_ / name).string(); }

    std::string writeFile(std::string const &name, std::string const &text) const {
        std::ofstream(file(name)) << text;
        return file(name);
    }

  private:
    std::filesystem::path folder_ = Workspace::ofThisProgram().newFolder("lua");
};

INSTANTIATE_TEST_SUITE_P(, LuaExamples, ::testing::ValuesIn(lua_interpreters::paths),
                         [](auto const &tested) { return lua_interpreters::nameOf(tested.param); });

unsigned int create(Client const &client, std::string const &what, Values const &settings) {
    Answer const answer = operation("create_" + what).send(client.handle(), nullptr, settings);
    EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR) << what;
    return answer.results.empty() ? 0 : std::get<Number>(answer.results.front());
}

/// The results of an operation that succeeds.
Values ask(Client const &client, std::string const &what, Values const &inputs = {}) {
    Answer const answer = operation(what).send(client.handle(), nullptr, inputs);
    EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR) << what;
    return answer.results;
}

void expectEmptyCatalogue(Client const &client) {
    EXPECT_EQ(ask(client, "get_actions"), (Values{Numbers{}, Numbers{}}));
    EXPECT_EQ(ask(client, "get_triggers"), (Values{Numbers{}, Numbers{}}));
}

struct Sample {
    char const *what;
    Values settings;
};

/// One action and one trigger of each kind, in the order of their types, with texts that a careless program breaks.
std::vector<Sample> const sample_actions = {
    {"email_action",
     {"to \"them\"", "mail.example.org", Texts{"a@example.org", "b@example.org"}, Texts{}, "cam@example.org",
      "Türe\\n]] --", "two\nlines\r\nand a tab\t", Flag{1}, Flag{0}}},
    {"ftp_action", {"upload", "ftp.example.org", "me", "sec'ret\"", "/a b", "picture.jpg"}},
    {"snapshot_action", {"door", "door.jpg"}},
    {"ptz_pattern_action", {"pattern", "1"}},
    {"ptz_preset_action", {"preset", "2"}},
    {"ptz_tour_action", {"tour", "3"}},
    {"ptz_scan_action", {"scan", "4"}},
    {"wiper_action", {"wipe"}},
    {"washer_action", {""}},
    {"relay_action", {"gate", "relay 1", 3U, Flag{1}, 4294967295U, 3000000000U, 0U}},
};
std::vector<Sample> const sample_triggers = {
    {"onvif_trigger",
     {"motion", "tns1:A|tns1:B//.", "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet",
      "boolean(//tt:SimpleItem[@Name=\"IsMotion\" and @Value=\"true\"])", Texts{"tns1", "tt"},
      Texts{"urn:a", "http://www.onvif.org/ver10/schema"}}},
    {"timer_trigger", {"never", 0U}},
    {"stable_onvif_trigger", {"stable", "A", "", Texts{}, Texts{}, 7U}},
};

struct Made {
    std::vector<unsigned int> actions;
    std::vector<unsigned int> triggers;
};

/// A catalogue that has everything. The nth action is bound to the first n triggers.
Made fillCatalogue(Client const &client) {
    Made made;
    for (Sample const &action : sample_actions) {
        made.actions.push_back(create(client, action.what, action.settings));
    }
    for (Sample const &trigger : sample_triggers) {
        made.triggers.push_back(create(client, trigger.what, trigger.settings));
    }
    for (std::size_t trigger = 0; trigger < made.triggers.size(); ++trigger) {
        for (std::size_t action = 0; action <= trigger; ++action) {
            ask(client, "create_association", {made.triggers[trigger], made.actions[action]});
        }
    }
    ask(client, "set_action_filters",
        {made.actions[2], Numbers{62, 65}, Numbers{28800, 86399}, Numbers{61200, 0}});
    return made;
}

void expectFullCatalogue(Client const &client, Made const &made) {
    for (std::size_t place = 0; place < made.actions.size(); ++place) {
        EXPECT_EQ(ask(client, std::string("get_") + sample_actions[place].what, {made.actions[place]}),
                  sample_actions[place].settings);
    }
    for (std::size_t place = 0; place < made.triggers.size(); ++place) {
        EXPECT_EQ(ask(client, std::string("get_") + sample_triggers[place].what, {made.triggers[place]}),
                  sample_triggers[place].settings);
        Numbers bound(made.actions.begin(), made.actions.begin() + static_cast<std::ptrdiff_t>(place) + 1);
        std::sort(bound.begin(), bound.end());
        EXPECT_EQ(ask(client, "get_trigger_associations", {made.triggers[place]}).front(), Value(bound));
    }
    EXPECT_EQ(ask(client, "get_action_filters", {made.actions[2]}),
              (Values{Numbers{62, 65}, Numbers{28800, 86399}, Numbers{61200, 0}}));
    EXPECT_EQ(ask(client, "get_action_filters", {made.actions[0]}),
              (Values{Numbers{}, Numbers{}, Numbers{}}));
}

// ---- list_catalogue.lua ----

TEST_P(LuaExamples, ListCatalogueShowsAnEmptyOne) {
    Service const service;
    Finished const finished = runExample("list_catalogue.lua");
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out, "actions: 0, triggers: 0\n");
}

TEST_P(LuaExamples, ListCatalogueShowsSettingsFiltersAndAssociations) {
    Service const service;
    Client client;
    unsigned int const upload =
        create(client, "ftp_action", {"upload", "ftp.example.org", "me", "secret", "/", "a.jpg"});
    unsigned int const preset = create(client, "ptz_preset_action", {"look left", "3"});
    unsigned int const timer = create(client, "timer_trigger", {"hourly", 3600U});
    create(client, "timer_trigger", {"idle", 0U});
    ask(client, "create_association", {timer, upload});
    ask(client, "create_association", {timer, preset});
    ask(client, "set_action_filters", {preset, Numbers{62, 65}, Numbers{28800, 0}, Numbers{61200, 3660}});
    Finished const finished = runExample("list_catalogue.lua");
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out,
              "actions: 2, triggers: 2\n"
              "action 1: ftp_action \"upload\"\n"
              "    filename = \"a.jpg\"\n"
              "    password = (hidden)\n"
              "    path = \"/\"\n"
              "    server_name = \"ftp.example.org\"\n"
              "    username = \"me\"\n"
              "action 2: ptz_preset_action \"look left\"\n"
              "    preset_id = \"3\"\n"
              "    runs only Mon Tue Wed Thu Fri from 08:00 to 17:00\n"
              "    runs only Sun Sat from 00:00 to 01:01\n"
              "trigger 1: timer_trigger \"hourly\"\n"
              "    timer_seconds = 3600\n"
              "    runs action 1, 2\n"
              "trigger 2: timer_trigger \"idle\"\n"
              "    timer_seconds = 0\n"
              "    runs nothing\n");
}

/// Lets the next identifiers be greater than any signed 32-bit number.
void setLastIdentifiers(std::string const &store, char const *statement) {
    sqlite3 *database = nullptr;
    ASSERT_EQ(sqlite3_open(store.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, statement, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
}

TEST_P(LuaExamples, CopeWithIdentifiersThatListsShowAsNegative) {
    std::string const store = file("store.db");
    Service service({"--store", store});
    {
        Client client;
        ask(client, "delete_action", {create(client, "wiper_action", {"wipe"})});
        ask(client, "delete_trigger", {create(client, "timer_trigger", {"timer", 1U})});
    }
    service.stop();
    setLastIdentifiers(store, "UPDATE sqlite_sequence SET seq = 2999999999");
    service.start();
    Finished const built = runExample("build_rule.lua");
    EXPECT_TRUE(built.exit == exited(0)) << built.errors;
    EXPECT_NE(
        built.out.find("trigger 3000000000 \"motion at the gate\" runs action 3000000001 \"who is there\""),
        std::string::npos)
        << built.out;
    Finished const listed = runExample("list_catalogue.lua");
    EXPECT_TRUE(listed.exit == exited(0)) << listed.errors;
    EXPECT_NE(listed.out.find("    runs action 3000000000, 3000000001\n"), std::string::npos) << listed.out;
    Finished const exported = runExample("export_restore.lua", {"export", file("saved")});
    EXPECT_TRUE(exported.exit == exited(0)) << exported.errors;
    Finished const restored = runExample("export_restore.lua", {"restore", file("saved")});
    EXPECT_TRUE(restored.exit == exited(0)) << restored.errors;
    EXPECT_NE(restored.out.find("trigger 1 is now 3000000001\n"), std::string::npos) << restored.out;
}

// ---- build_rule.lua ----

TEST_P(LuaExamples, BuildRuleMakesItsOwnRule) {
    Service const service;
    Finished const finished = runExample("build_rule.lua");
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out,
              "trigger 1 \"motion at the gate\" runs action 1 \"open the gate\"\n"
              "trigger 1 \"motion at the gate\" runs action 2 \"who is there\"\n");
    Client client;
    EXPECT_EQ(ask(client, "get_onvif_trigger", {1U}).front(), Value(Text("motion at the gate")));
    EXPECT_EQ(ask(client, "get_trigger_associations", {1U}).front(), Value(Numbers{1, 2}));
    EXPECT_EQ(ask(client, "get_action_filters", {1U}),
              (Values{Numbers{62, 62}, Numbers{28800, 46800}, Numbers{43200, 61200}}));
    EXPECT_EQ(ask(client, "get_action_filters", {2U}), (Values{Numbers{}, Numbers{}, Numbers{}}));
}

TEST_P(LuaExamples, BuildRuleMakesTheRuleOfAFile) {
    Service const service;
    std::string const rule = writeFile(
        "rule.lua",
        "return {trigger = {kind = 'timer_trigger', trigger_name = 'hourly', timer_seconds = 3600},\n"
        "actions = {{kind = 'wiper_action', action_name = 'wipe'}}}\n");
    Finished const finished = runExample("build_rule.lua", {rule});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out, "trigger 1 \"hourly\" runs action 1 \"wipe\"\n");
}

TEST_P(LuaExamples, BuildRuleLeavesNothingBehindWhenAnyStepFails) {
    for (char const *step : {"Create_onvif_trigger", "Create_relay_action", "Set_action_filters",
                             "Create_snapshot_action", "Create_association"}) {
        Service const service({"--fail", std::string(step) + "=9"});
        Finished const finished = runExample("build_rule.lua");
        EXPECT_TRUE(finished.exit == exited(1)) << step;
        EXPECT_EQ(finished.out, "") << step;
        std::string operation = step;
        operation.front() = static_cast<char>(operation.front() - 'A' + 'a');
        EXPECT_EQ(finished.errors, "build_rule.lua: " + operation + ": status 9 (remote function failure)\n");
        Client client;
        expectEmptyCatalogue(client);
    }
}

TEST_P(LuaExamples, BuildRuleTellsWhatItCouldNotUndo) {
    Service const service({"--fail", "Create_association=9", "--fail", "Delete_trigger=9"});
    Finished const finished = runExample("build_rule.lua");
    EXPECT_TRUE(finished.exit == exited(1));
    EXPECT_EQ(
        finished.errors,
        "build_rule.lua: create_association: status 9 (remote function failure); left behind: trigger 1\n");
    Client client;
    EXPECT_EQ(ask(client, "get_actions"), (Values{Numbers{}, Numbers{}}));
}

TEST_P(LuaExamples, BuildRuleNamesTheMistakeInARule) {
    Service const service;
    struct Mistake {
        char const *trigger;
        char const *action;
        std::string message;
    };
    char const *const timer = "{kind = 'timer_trigger', trigger_name = 'hourly', timer_seconds = 3600}";
    char const *const wiper = "{kind = 'wiper_action', action_name = 'wipe'}";
    char const *const seconds = "trigger: 'timer_seconds' ";
    std::string const whole_number = "a whole number from 0 to 4294967295";
    for (Mistake const &mistake : {
             Mistake{"{kind = 'clock'}", wiper,
                     "trigger: 'kind' wants one of onvif_trigger, stable_onvif_trigger, timer_trigger"},
             Mistake{"nil", wiper, "trigger must be a table"},
             Mistake{"{kind = 'timer_trigger', trigger_name = 'hourly'}", wiper,
                     seconds + ("is missing; it wants " + whole_number)},
             Mistake{"{kind = 'timer_trigger', trigger_name = 'hourly', timer_seconds = -1}", wiper,
                     seconds + ("wants " + whole_number) + ", and is -1"},
             Mistake{timer, "{kind = 'wiper_action', action_name = 5}",
                     "action 1: 'action_name' wants a text without zero bytes, and is 5"},
             Mistake{timer, "{kind = 'wiper_action', action_name = 'wipe', speed = 5}",
                     "action 1: there is no 'speed'; its arguments are action_name"},
             Mistake{
                 timer,
                 "{kind = 'wiper_action', action_name = 'wipe', filters = {{weekdays = 62, start = '8'}}}",
                 "action 1: 'filters' wants a list of {weekdays = " + whole_number + ", start = " +
                     whole_number + ", stop = " + whole_number + "} (element 1: 'start' is a text)"},
             Mistake{timer,
                     "{kind = 'email_action', action_name = '', smtp_server = '', to_addresses = {5}, "
                     "cc_addresses = {}, from_address = '', subject = '', body = '', attach_jpeg = true, "
                     "include_event = true}",
                     "action 1: 'to_addresses' wants a list of texts (element 1 is 5)"},
         }) {
        std::string const rule = writeFile("rule.lua", std::string("return {trigger = ") + mistake.trigger +
                                                           ", actions = {" + mistake.action + "}}\n");
        Finished const finished = runExample("build_rule.lua", {rule});
        EXPECT_TRUE(finished.exit == exited(1)) << mistake.message;
        EXPECT_EQ(finished.errors, "build_rule.lua: rule: " + mistake.message + "\n");
    }
    Client client;
    expectEmptyCatalogue(client);
}

TEST_P(LuaExamples, BuildRuleRefusesAFileThatReturnsNoRule) {
    Service const service;
    Finished const finished = runExample("build_rule.lua", {writeFile("rule.lua", "return 5\n")});
    EXPECT_TRUE(finished.exit == exited(1)) << finished.out;
    EXPECT_EQ(finished.errors, "build_rule.lua: rule: takes a table with a trigger and a list of actions\n");
}

// ---- export_restore.lua ----

TEST_P(LuaExamples, RestoringIntoAnEmptyServiceGivesTheSameCatalogue) {
    std::string const saved = file("catalogue.saved");
    {
        Service const service;
        Client client;
        fillCatalogue(client);
        Finished const finished = runExample("export_restore.lua", {"export", saved});
        EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
        EXPECT_EQ(finished.out, "exported\n");
    }
    Service const service;
    Finished const finished = runExample("export_restore.lua", {"restore", saved});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out.substr(0, 16), "action 1 is now ");
    EXPECT_EQ(finished.out.substr(finished.out.size() - 28), "trigger 3 is now 3\nrestored\n");
    Client client;
    // In the order of their names.
    expectFullCatalogue(client, {{7, 9, 2, 4, 5, 8, 6, 10, 1, 3}, {1, 2, 3}});

    // And what is exported again is the same to the byte.
    EXPECT_TRUE(runExample("export_restore.lua", {"export", file("again")}).exit == exited(0));
    std::stringstream first;
    std::stringstream second;
    first << std::ifstream(saved).rdbuf();
    second << std::ifstream(file("again")).rdbuf();
    EXPECT_GT(first.str().size(), 1000U);
    EXPECT_EQ(first.str(), second.str());
}

TEST_P(LuaExamples, RestoringIntoAFullServiceKeepsWhatIsThereAndGivesNewIdentifiers) {
    Service const service;
    Client client;
    create(client, "wiper_action", {"already here"});
    Made const old = fillCatalogue(client);
    EXPECT_TRUE(runExample("export_restore.lua", {"export", file("saved")}).exit == exited(0));
    Finished const finished = runExample("export_restore.lua", {"restore", file("saved")});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_NE(finished.out.find("action 2 is now 13\n"), std::string::npos) << finished.out;
    EXPECT_NE(finished.out.find("trigger 1 is now 4\n"), std::string::npos) << finished.out;
    expectFullCatalogue(client, old);
    expectFullCatalogue(client, {{19, 21, 14, 16, 17, 20, 18, 22, 12, 15}, {4, 5, 6}});
}

TEST_P(LuaExamples, RestoreLeavesNothingBehindWhenAStepFails) {
    {
        Service const service;
        Client client;
        fillCatalogue(client);
        EXPECT_TRUE(runExample("export_restore.lua", {"export", file("saved")}).exit == exited(0));
    }
    Service const service({"--fail", "Create_stable_onvif_trigger=9"});
    Finished const finished = runExample("export_restore.lua", {"restore", file("saved")});
    EXPECT_TRUE(finished.exit == exited(1)) << finished.out;
    EXPECT_NE(finished.errors.find("create_stable_onvif_trigger: "), std::string::npos) << finished.errors;
    Client client;
    expectEmptyCatalogue(client);
}

TEST_P(LuaExamples, RestoreRefusesFilesThatItHasNotSaved) {
    Service const service;
    auto const restore = [&](std::string const &text) {
        Finished const finished = runExample("export_restore.lua", {"restore", writeFile("saved", text)});
        EXPECT_TRUE(finished.exit == exited(1)) << text;
        return finished.errors;
    };
    std::string const head = R"({"format": "korvo-action-engine-catalogue", "version": 1, "triggers": [], )";
    EXPECT_EQ(restore("return 5"), "export_restore.lua: import: line 1, column 1: a value is missing\n");
    EXPECT_EQ(restore("5"),
              "export_restore.lua: import: takes a document with format = "
              "\"korvo-action-engine-catalogue\" and version = 1\n");
    EXPECT_EQ(restore(head + R"("actions": [], "associations": [{"trigger_id": 1, "action_id": 1}]})"),
              "export_restore.lua: import: association 1 names what is not in the document\n");
    EXPECT_EQ(restore(head +
                      R"("actions": [{"id": 1, "kind": "wiper_action", "settings": {"action_name": "w"}}]})"),
              "export_restore.lua: import: action 1: filters must be an object\n");
    Finished const missing = runExample("export_restore.lua", {"restore", file("nothing")});
    EXPECT_TRUE(missing.exit == exited(1));
    EXPECT_EQ(missing.errors, "export_restore.lua: " + file("nothing") + ": No such file or directory\n");
    Client client;
    expectEmptyCatalogue(client);
}

TEST_P(LuaExamples, ExportWritesAFileForItsOwnerAlone) {
    // Names are no part of the shell's command, and what an export that was interrupted has left is not written to.
    std::string const name = "it's $HOME; saved";
    writeFile(name + ".new", "left");
    std::filesystem::permissions(file(name + ".new"), std::filesystem::perms(0644));
    Service const service;
    Finished const finished = runExample("export_restore.lua", {"export", file(name)});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(std::filesystem::status(file(name)).permissions(), std::filesystem::perms(0600));
    EXPECT_FALSE(std::filesystem::exists(file(name + ".new")));
    Finished const restored = runExample("export_restore.lua", {"restore", file(name)});
    EXPECT_TRUE(restored.exit == exited(0)) << restored.errors;
}

TEST_P(LuaExamples, ExportSaysWhereItCannotWrite) {
    Service const service;
    Finished const finished = runExample("export_restore.lua", {"export", file("no folder/saved")});
    EXPECT_TRUE(finished.exit == exited(1)) << finished.out;
    EXPECT_NE(finished.errors.find("export_restore.lua: cannot make " + file("no folder/saved.new") + "\n"),
              std::string::npos)
        << finished.errors;
}

TEST_P(LuaExamples, ExportKeepsTheOldFileWhenItFails) {
    std::string const saved = writeFile("saved", "the old one");
    Service const service({"--fail", "Get_triggers=9"});
    EXPECT_TRUE(runExample("export_restore.lua", {"export", saved}).exit == exited(1));
    std::stringstream text;
    text << std::ifstream(saved).rdbuf();
    EXPECT_EQ(text.str(), "the old one");
    EXPECT_FALSE(std::filesystem::exists(saved + ".new"));
}

// ---- watch.lua ----

TEST_P(LuaExamples, WatchReportsWhatIsNewChangedAndGone) {
    Service const service;
    Client client;
    create(client, "wiper_action", {"already here"});
    Child watching(command("watch.lua", {"--interval", "0.05"}));
    ASSERT_TRUE(watching.out().waitFor("new      action 1: wiper_action \"already here\"\n"))
        << watching.errors().text();
    create(client, "timer_trigger", {"hourly", 3600U});
    EXPECT_TRUE(watching.out().waitFor("new      trigger 1: timer_trigger \"hourly\"\n"));
    ask(client, "modify_timer_trigger", {1U, "hourly", 60U});
    EXPECT_TRUE(watching.out().waitFor("changed  trigger 1: timer_seconds is now 60, it was 3600\n"));
    ask(client, "delete_action", {1U});
    EXPECT_TRUE(watching.out().waitFor("gone     action 1: wiper_action \"already here\"\n"));
    EXPECT_EQ(count(watching.out().text(), "\n"), 4U) << watching.out().text();
    EXPECT_EQ(watching.errors().text(), "");
}

TEST_P(LuaExamples, WatchLooksAsOftenAsItIsTold) {
    Service const service;
    Client client;
    create(client, "wiper_action", {"wipe"});
    Finished const finished = runExample("watch.lua", {"--count", "3", "--interval", "0.01"});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out, "new      action 1: wiper_action \"wipe\"\n");
    EXPECT_EQ(runExample("watch.lua", {"--often", "3"}).errors, "watch.lua: unknown option '--often'\n");
    EXPECT_EQ(runExample("watch.lua", {"--count"}).errors, "watch.lua: --count needs a number\n");
}

TEST_P(LuaExamples, WatchGoesOnWhenTheServiceIsRestarted) {
    Service service;
    Client client;
    create(client, "wiper_action", {"wipe"});
    Child watching(command("watch.lua", {"--interval", "0.05"}));
    ASSERT_TRUE(watching.out().waitFor("new      action 1")) << watching.errors().text();
    service.stop();
    EXPECT_TRUE(watching.out().waitFor("the service does not answer: get_actions: status 10 "));
    service.start();
    EXPECT_TRUE(
        watching.out().waitFor("the service answers again\ngone     action 1: wiper_action \"wipe\"\n"))
        << watching.out().text();
}

// ---- targets.lua ----

TEST_P(LuaExamples, TargetsAsksTenServicesAtOnce) {
    std::vector<std::string> words = {"--events", "2"};
    std::vector<std::unique_ptr<Service>> services;
    for (int number = 1; number <= 10; ++number) {
        std::string const target = "camera-" + std::to_string(number);
        services.push_back(std::make_unique<Service>(std::vector<std::string>{"--target", target}));
        words.push_back(target);
        Client const client;
        auto const ask = [&](char const *what, Values const &inputs) {
            EXPECT_EQ(operation(what).send(client.handle(), target.c_str(), inputs).status,
                      KORVO_CORE_STATUS_NO_ERROR);
        };
        ask("create_wiper_action", {"wipe " + target});
        ask("create_timer_trigger", {"often", 1U});
        ask("create_association", {1U, 1U});
    }
    words.push_back("nobody");
    Finished const finished = runExample("targets.lua", words);
    EXPECT_TRUE(finished.exit == exited(1)) << finished.errors;
    for (int number = 1; number <= 10; ++number) {
        std::string const target = "camera-" + std::to_string(number);
        EXPECT_EQ(count(finished.out, target + ": actions: 1, triggers: 1\n"), 1U) << finished.out;
        EXPECT_EQ(count(finished.out, target + ": action 1 \"wipe " + target + "\" succeeded\n"), 2U)
            << finished.out;
    }
    EXPECT_NE(finished.errors.find("nobody: get_action_counts: status 10 "), std::string::npos)
        << finished.errors;
}

TEST_P(LuaExamples, TargetsSaysHowItIsUsed) {
    EXPECT_TRUE(runExample("targets.lua").exit == exited(2));
    Finished const finished = runExample("targets.lua", {"camera", "--events", "many"});
    EXPECT_TRUE(finished.exit == exited(2)) << finished.out;
    EXPECT_EQ(finished.errors, "usage: targets.lua [--events HOW_MANY] TARGET...\n");
}

// ---- All ----

TEST_P(LuaExamples, ExplainWhatIsWrongWithoutAService) {
    for (std::string const name : {"list_catalogue.lua", "build_rule.lua"}) {
        Finished const finished = runExample(name);
        EXPECT_TRUE(finished.exit == exited(1)) << finished.out;
        EXPECT_NE(finished.errors.find(name + ": "), std::string::npos) << finished.errors;
        EXPECT_NE(finished.errors.find(": status 10 "), std::string::npos) << finished.errors;
        EXPECT_NE(finished.errors.find(": the service is not running\n"), std::string::npos)
            << finished.errors;
    }
}

}  // namespace

}  // namespace end_to_end
