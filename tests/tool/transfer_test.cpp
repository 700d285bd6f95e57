// SPDX-License-Identifier: Apache-2.0
// A catalogue from and to files: export, import, diff.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/service.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using processes::exited;

/// With two actions of one name, filters and a password; made in another order than the document has.
void fill() {
    (void)results({"create-ftp-action", "--action-name", "upload", "--server-name", "s", "--username", "u",
                   "--password-file", fileWith("open sesame").string(), "--path", "/", "--filename", "f"});
    (void)results({"rule", "add", "--timer", "60", "--name", "minute", "--action", "upload", "--action",
                   "wiper action_name=same", "--action", "wiper action_name=same", "--filter",
                   "daily 22:00-06:00"});
}

constexpr char document[] = R"({
  "format": "korvo-action-engine-catalogue",
  "version": 1,
  "actions": [
    {
      "id": 1,
      "kind": "wiper_action",
      "settings": {"action_name":"same"},
      "filters": {"weekday_filters":[127],"time_filters_start":[79200],"time_filters_end":[21600]}
    },
    {
      "id": 2,
      "kind": "wiper_action",
      "settings": {"action_name":"same"},
      "filters": {"weekday_filters":[127],"time_filters_start":[79200],"time_filters_end":[21600]}
    },
    {
      "id": 3,
      "kind": "ftp_action",
      "settings": {
        "action_name": "upload",
        "server_name": "s",
        "username": "u",
        "password": PASSWORD,
        "path": "/",
        "filename": "f"
      },
      "filters": {"weekday_filters":[127],"time_filters_start":[79200],"time_filters_end":[21600]}
    }
  ],
  "triggers": [{"id":1,"kind":"timer_trigger","settings":{"trigger_name":"minute","timer_seconds":60}}],
  "associations": [{"trigger_id":1,"action_id":1},{"trigger_id":1,"action_id":2},{"trigger_id":1,"action_id":3}]
}
)";

std::string documentWith(std::string const &password) {
    std::string text = document;
    std::string const place = "PASSWORD";
    return text.replace(text.find(place), place.size(), password);
}

TEST(Export, IsOneDocumentInCanonicalOrder) {
    Service service;
    fill();
    EXPECT_EQ(results({"export"}), documentWith("null"));
    EXPECT_EQ(results({"export", "--show-secrets"}), documentWith("\"open sesame\""));
}

TEST(Import, GivesTheSameExport) {
    std::string const wanted = documentWith("\"open sesame\"");
    auto const file = fileWith(wanted).string();
    Service service;
    (void)results({"rule", "add", "--timer", "5", "--name", "other", "--action",
                   "snapshot action_name=old filename=f"});
    (void)results({"create-timer-trigger", "--trigger-name", "minute", "--timer-seconds", "5"});
    std::string const steps = results({"import", file, "--replace"});
    EXPECT_EQ(steps,
              "create wiper_action \"same\"\n"
              "create wiper_action \"same\" (2)\n"
              "create ftp_action \"upload\"\n"
              "change timer_trigger \"minute\"\n"
              "bind \"minute\" -> \"same\"\n"
              "bind \"minute\" -> \"same\"\n"
              "bind \"minute\" -> \"upload\"\n"
              "remove snapshot_action \"old\"\n"
              "remove timer_trigger \"other\"\n");
    EXPECT_EQ(results({"export", "--show-secrets"}), wanted);
    EXPECT_EQ(results({"import", file, "--replace"}), "") << "there is nothing left to do";
    EXPECT_EQ(results({"import", fileWith(documentWith("null")).string(), "--merge"}), "")
        << "a hidden password is the present one";
    EXPECT_EQ(results({"diff", file, "service"}), "");
}

TEST(Import, DoesNothingWhenDry) {
    Service service;
    std::string const steps =
        results({"import", fileWith(documentWith("\"p\"")).string(), "--merge", "--dry-run"});
    EXPECT_EQ(processes::count(steps, "create "), 4U) << steps;
    EXPECT_EQ(results({"get-actions", "--json"}), "{\"action_id\":[],\"action_type\":[]}\n");
}

TEST(Import, TakesAHiddenPasswordFromAFile) {
    Service service;
    auto const file = fileWith(documentWith("null")).string();
    Finished const refused = tool({"import", file, "--merge"});
    EXPECT_TRUE(refused.exit == exited(2));
    EXPECT_NE(refused.errors.find("FILE has no password for ftp_action \"upload\""), std::string::npos)
        << refused.errors;
    EXPECT_EQ(results({"get-actions", "--json"}), "{\"action_id\":[],\"action_type\":[]}\n");
    (void)results({"import", file, "--merge", "--password-file", fileWith("open sesame\n").string()});
    EXPECT_EQ(results({"export", "--show-secrets"}), documentWith("\"open sesame\""));
}

std::string const no_actions = "{\"action_id\":[],\"action_type\":[]}\n";

void makeUpload(std::string const &server, std::string const &password) {
    (void)results({"create-ftp-action", "--action-name", "upload", "--server-name", server, "--username", "u",
                   "--password-file", fileWith(password).string(), "--path", "/", "--filename", "f"});
}

TEST(Import, OfAnExportDoesNothingWhereSeveralHaveOneName) {
    Service service;
    // In canonical order the second one is the first.
    makeUpload("z.example", "of z");
    makeUpload("a.example", "of a");
    std::string const before = results({"list", "--json", "--show-secrets"});
    for (char const *secrets : {"--show-secrets=false", "--show-secrets"}) {
        auto const file = fileWith(results({"export", secrets})).string();
        for (char const *way : {"--replace", "--merge"}) {
            EXPECT_EQ(results({"import", file, way}), "") << way;
            EXPECT_EQ(results({"list", "--json", "--show-secrets"}), before) << way;
        }
    }
}

TEST(Import, TakesThePasswordOfAFileOnlyWhereTheServiceHasNone) {
    Service service;
    makeUpload("s", "present");
    auto const file = fileWith(results({"export"})).string();
    EXPECT_EQ(results({"import", file, "--merge", "--password-file", fileWith("other").string()}), "");
    EXPECT_NE(results({"export", "--show-secrets"}).find("\"present\""), std::string::npos);
    EXPECT_EQ(results({"import", file, "--merge", "--password-file", "/nowhere"}), "") << "it is not needed";
}

TEST(Import, ReadsStandardInputOnce) {
    std::string file;
    {
        Service service;
        makeUpload("s", "p");
        makeUpload("t", "q");
        file = fileWith(results({"export"})).string();
    }
    Service service;
    EXPECT_EQ(
        shell("echo 'open sesame' | korvo-action-engine import " + file + " --merge --password-file -").out,
        "create ftp_action \"upload\"\ncreate ftp_action \"upload\" (2)\n");
    EXPECT_EQ(processes::count(results({"export", "--show-secrets"}), "\"open sesame\""), 2U);

    ShellOutcome const both = shell("korvo-action-engine import - --merge --password-file - 2>&1 < " + file);
    EXPECT_EQ(both.code, 2);
    EXPECT_EQ(both.out,
              "korvo-action-engine: FILE and --password-file cannot both be standard input\n"
              "  name a file for one of them\n");
}

TEST(Import, RefusesAnEmptyPasswordOfAFile) {
    Service service;
    auto const file = fileWith(documentWith("null")).string();
    for (char const *text : {"", "\nsecond line\n"}) {
        Finished const refused =
            tool({"import", file, "--merge", "--password-file", fileWith(text).string()});
        EXPECT_TRUE(refused.exit == exited(2)) << refused.errors;
        EXPECT_NE(refused.errors.find("--password-file: the first line of \""), std::string::npos)
            << refused.errors;
    }
    EXPECT_EQ(results({"get-actions", "--json"}), no_actions);
}

TEST(Import, BindsAPairOnceThatStandsTwice) {
    Service service;
    std::string twice = documentWith("\"p\"");
    std::string const first = "{\"trigger_id\":1,\"action_id\":1},";
    twice.insert(twice.find(first), first);
    std::string const steps = results({"import", fileWith(twice).string(), "--merge"});
    EXPECT_EQ(processes::count(steps, "bind "), 3U) << steps;
}

TEST(Import, UndoesAllWhenAStepFails) {
    Service service;
    (void)results({"rule", "add", "--timer", "5", "--name", "other", "--action",
                   "snapshot action_name=old filename=f"});
    (void)results({"create-timer-trigger", "--trigger-name", "minute", "--timer-seconds", "5"});
    std::string const before = results({"export", "--show-secrets"});
    // The last step of all.
    (void)results({"sim", "fault", "Delete_trigger", "--fail", "9", "--count", "1"});
    Finished const failed = tool({"import", fileWith(documentWith("\"p\"")).string(), "--replace"});
    EXPECT_TRUE(failed.exit == exited(5)) << failed.errors;
    EXPECT_NE(failed.errors.find("; undone: the removal of action 1 (old), "), std::string::npos)
        << failed.errors;
    EXPECT_EQ(failed.errors.find("could not be undone"), std::string::npos) << failed.errors;
    EXPECT_EQ(results({"export", "--show-secrets"}), before);
}

TEST(Import, RefusesWhatIsNoCatalogueWithoutAskingTheService) {
    struct Case {
        char const *text;
        char const *what;
    };
    for (Case const &wrong : {
             Case{"{", "FILE: this is no JSON"},
             Case{"{}", "FILE: the document lacks its member \"format\""},
             Case{R"({"format":"korvo-action-engine-catalogue","version":2})", "no catalogue of version 1"},
             Case{R"({"format":"korvo-action-engine-catalogue","version":1,"actions":[{"id":1,"kind":"x"}]})",
                  "FILE: actions[0]: there is no kind \"x\""},
             Case{R"({"format":"korvo-action-engine-catalogue","version":1,"actions":[],"triggers":[{"id":1,
                  "kind":"timer_trigger","settings":{"trigger_name":"a"}}]})",
                  "FILE: triggers[0]: Create_timer_trigger lacks its input \"timer_seconds\""},
             Case{R"({"format":"korvo-action-engine-catalogue","version":1,"actions":[],"triggers":[],
                  "associations":[{"trigger_id":1,"action_id":1}]})",
                  "FILE: associations[0] binds what is not there"},
         }) {
        Finished const finished = tool({"import", fileWith(wrong.text).string(), "--merge"});
        EXPECT_TRUE(finished.exit == exited(2)) << finished.errors;
        EXPECT_NE(finished.errors.find(wrong.what), std::string::npos) << finished.errors;
    }
    EXPECT_TRUE(tool({"import", "-"}).exit == exited(2)) << "neither --merge nor --replace";
}

TEST(Diff, TellsWhatDiffers) {
    auto const before = fileWith(documentWith("null")).string();
    std::string changed = documentWith("\"p\"");
    changed.replace(changed.find("\"timer_seconds\":60"), 18, "\"timer_seconds\":61");
    changed.replace(changed.find("{\"action_name\":\"same\"}"), 22, "{\"action_name\":\"else\"}");
    EXPECT_EQ(results({"diff", before, fileWith(changed).string()}),
              "- binding of timer_trigger \"minute\" to wiper_action \"same\" (2)\n"
              "~ timer_trigger \"minute\": timer_seconds 60 -> 61\n"
              "- wiper_action \"same\" (2)\n"
              "+ binding of timer_trigger \"minute\" to wiper_action \"else\"\n"
              "+ wiper_action \"else\"\n");
}

}  // namespace

}  // namespace tool_tests
