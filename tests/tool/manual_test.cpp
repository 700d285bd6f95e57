// SPDX-License-Identifier: Apache-2.0
// The manual pages beside what the tool says of itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "emulator/emulator.h"
#include "support/service.h"
#include "support/workspace.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

/// Words with one blank between them.
std::string collapsed(std::string const &text) {
    std::stringstream words(text);
    std::string result;
    for (std::string word; words >> word;) {
        result += (result.empty() ? "" : " ") + word;
    }
    return result;
}

bool contains(std::string const &text, std::string const &part) {
    return text.find(part) != std::string::npos;
}

/// A line of a page as a reader sees it.
std::string shown(std::string line) {
    for (auto const &[escape, character] : std::vector<std::pair<std::string, std::string>>{{"\\fB", ""},
                                                                                            {"\\fI", ""},
                                                                                            {"\\fR", ""},
                                                                                            {"\\-", "-"},
                                                                                            {"\\&", ""},
                                                                                            {"\\(aq", "'"},
                                                                                            {"\\e", "\\"}}) {
        for (auto place = line.find(escape); place != std::string::npos; place = line.find(escape)) {
            line.replace(place, escape.size(), character);
        }
    }
    return line;
}

/// What stands below a heading, or one thing that is explained there.
struct Entry {
    /// As it stands in the page: names are bold.
    std::string title;
    std::string text;
    std::vector<Entry> below;
};

/// The entries of a section, those between .RS and .RE below the one before.
std::vector<Entry> sectionOf(std::string const &page, std::string const &section) {
    std::vector<Entry> entries;
    std::stringstream lines(page.substr(std::min(page.find(".SH " + section + "\n"), page.size())));
    std::string line;
    std::getline(lines, line);
    bool nested = false;
    while (std::getline(lines, line) && line.compare(0, 4, ".SH ") != 0) {
        if (line == ".RS" || line == ".RE") {
            nested = line == ".RS";
        } else if (line == ".TP") {
            std::getline(lines, line);
            (nested ? entries.back().below : entries).push_back({line, "", {}});
        } else if (line.front() != '.' && !entries.empty()) {
            Entry &entry = nested ? entries.back().below.back() : entries.back();
            entry.text += (entry.text.empty() ? "" : " ") + shown(line);
        }
    }
    return entries;
}

/// Lines of help that begin something: those with two blanks before, below the headings that are wanted.
std::vector<std::string> listedIn(std::string const &help, bool subcommands) {
    std::vector<std::string> found;
    std::stringstream lines(help);
    std::string heading;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == ':' && line.front() != ' ') {
            heading = line;
        } else if (line.compare(0, 2, "  ") == 0 && line.size() > 2 && line[2] != ' ') {
            bool const is_parameter = heading == "Options:" || heading == "Positionals:";
            std::string const name = line.substr(2, line.find(' ', 2) - 2);
            if (is_parameter != subcommands && name != "-h,--help" && name != "--version") {
                found.push_back(name);
            }
        }
    }
    return found;
}

std::string helpOf(std::string const &command) {
    std::stringstream words(command);
    std::vector<std::string> given;
    for (std::string word; words >> word;) {
        given.push_back(word);
    }
    given.emplace_back("--help");
    return results(given);
}

/// Each parameter of the help stands on the page and the other way round, with the same words.
void expectSameParameters(std::string const &command, std::string const &help,
                          std::vector<Entry> const &page) {
    EXPECT_EQ(listedIn(help, /*subcommands*/ false).size(), page.size()) << command;
    std::string const words = collapsed(help);
    for (Entry const &entry : page) {
        std::string title = shown(entry.title);
        std::string text = entry.text;
        std::string const required = " (required)";
        bool const is_required = text.size() > required.size() &&
                                 text.compare(text.size() - required.size(), required.size(), required) == 0;
        if (is_required) {
            text.erase(text.size() - required.size());
        }
        if (title == "-v, --verbose") {
            title = "-v,--verbose";
        }
        std::string const as_help = title + (is_required ? " REQUIRED " : " ");
        EXPECT_TRUE(contains(words, as_help + collapsed(text)) ||
                    contains(words, as_help + "... " + collapsed(text)))
            << command << ": " << as_help << text;
    }
}

/// The name of a command: what is bold.
std::string nameOf(Entry const &entry) {
    auto const begin = entry.title.find("\\fB") + 3;
    return shown(entry.title.substr(begin, entry.title.find("\\fR") - begin));
}

TEST(ManualPage, SaysWhatHelpSays) {
    std::string const page = results({"manual"});
    std::string const help = results({"--help"});
    auto common = sectionOf(page, "OPTIONS");
    ASSERT_GT(common.size(), 2U);
    EXPECT_EQ(shown(common.back().title), "--version");
    common.resize(common.size() - 2);
    expectSameParameters("", help, common);

    std::map<std::string, Entry> on_page;
    for (Entry const &entry : sectionOf(page, "COMMANDS")) {
        EXPECT_TRUE(on_page.emplace(nameOf(entry), entry).second) << entry.title;
    }
    std::size_t count = 0;
    std::vector<std::string> open = listedIn(help, /*subcommands*/ true);
    EXPECT_GT(open.size(), 60U);
    for (std::size_t place = 0; place < open.size(); ++place) {
        std::string const &name = open[place];
        bool const is_group = on_page.count(name) == 0;
        count += is_group ? 0 : 1;
        // An emulator takes its time for each.
        if (emulator::present && !is_group && place % 10 != 0) {
            continue;
        }
        std::string const said = helpOf(name);
        if (is_group) {
            auto const below = listedIn(said, /*subcommands*/ true);
            EXPECT_FALSE(below.empty()) << name << " is not on the page";
            std::string const before = name + " ";
            for (std::string const &word : below) {
                open.push_back(before + word);
            }
            continue;
        }
        Entry const &entry = on_page[name];
        EXPECT_TRUE(contains(collapsed(entry.text), collapsed(said.substr(0, said.find('\n'))))) << name;
        expectSameParameters(name, said, entry.below);
    }
    EXPECT_EQ(count, on_page.size()) << "the page has commands that help does not know";
}

TEST(ManualPage, TellsEveryExitCode) {
    std::string codes;
    for (Entry const &entry : sectionOf(results({"manual"}), "EXIT STATUS")) {
        codes += shown(entry.title) + "\n";
    }
    EXPECT_EQ(codes,
              "0  done\n"
              "1  other\n"
              "2  usage\n"
              "3  time-out\n"
              "4  no service\n"
              "5  refused\n"
              "6  no such identifier\n"
              "7  version\n"
              "8  not permitted\n"
              "130  interrupted\n");
}

TEST(CataloguePage, TellsEveryKindWithItsSettings) {
    std::string const page = results({"manual", "catalogue"});
    for (char const *kind :
         {"email_action", "ftp_action", "snapshot_action", "ptz_pattern_action", "ptz_preset_action",
          "ptz_tour_action", "ptz_scan_action", "wiper_action", "washer_action", "relay_action",
          "timer_trigger", "onvif_trigger", "stable_onvif_trigger"}) {
        EXPECT_TRUE(contains(page, std::string("\n.SS ") + kind + "\n")) << kind;
    }
    EXPECT_TRUE(
        contains(page,
                 ".SS snapshot_action\n"
                 ".TP\n\\fBaction_name\\fR\na text: the action\\(aqs name; Action_completed reports it.\n"
                 ".TP\n\\fBfilename\\fR\na text: "))
        << page;
    EXPECT_TRUE(contains(page, ".TP\n\\fBpassword\\fR\na text, or null: ")) << page;
    EXPECT_EQ(sectionOf(page, "DESCRIPTION").size(), 8U) << "the members of a document, and of its entries";
}

/// Beside what the service writes: each member, and nothing else.
TEST(CapturePage, TellsEveryMember) {
    auto const file = end_to_end::Workspace::ofThisProgram().newFolder("capture") / "messages";
    end_to_end::Service service({"--capture", file.string()});
    (void)results({"get-actions"});
    std::stringstream page;
    page << std::ifstream(KORVO_CAPTURE_PAGE).rdbuf();
    std::string members;
    for (Entry const &entry : sectionOf(page.str(), "DESCRIPTION")) {
        members += shown(entry.title).substr(std::string(".B ").size()) + "\n";
    }
    EXPECT_EQ(members, shell("jq -r 'keys_unsorted[]' " + file.string() + " | awk '!seen[$0]++'").out);
}

TEST(Manual, RefusesPagesThatAreNone) {
    Finished const finished = tool({"manual", "catalog"});
    EXPECT_TRUE(finished.exit == processes::exited(2));
    EXPECT_EQ(finished.errors, "korvo-action-engine: PAGE is not \"catalog\"\n  it is tool or catalogue\n");
}

}  // namespace

}  // namespace tool_tests
