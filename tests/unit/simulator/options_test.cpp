// SPDX-License-Identifier: Apache-2.0
#include "simulator/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "simulator/methods.h"
#include "support.h"

namespace simulator::tests {

namespace {

using testing::HasSubstr;

Options parse(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "korvo-action-engine-simulator");
    std::vector<char *> pointers;
    for (std::string &argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    return parseOptions(static_cast<int>(arguments.size()), pointers.data());
}

std::string refusal(std::vector<std::string> const &arguments) {
    try {
        parse(arguments);
    } catch (UsageError const &error) {
        return error.what();
    }
    return "no refusal";
}

/// The text with one blank for each run of blanks and line ends.
std::string plain(std::string const &text) {
    return std::regex_replace(text, std::regex("\\s+"), " ");
}

/// A manual page's text without what makes it pretty.
std::string withoutMacros(std::string const &page) {
    std::string text = std::regex_replace(page, std::regex("\\\\f[BIR]"), "");
    text = std::regex_replace(text, std::regex("\\\\-"), "-");
    return std::regex_replace(text, std::regex("(^|\n)\\.(SS|TP|PP|SH)"), "$1");
}

/// What follows a beginning, up to the next option, or to the paragraph's end where there is none.
std::string sentencesAfter(std::string const &text, std::string const &beginning) {
    std::size_t const found = text.find(beginning);
    if (found == std::string::npos) {
        return "";
    }
    std::string const rest = text.substr(found + beginning.size());
    std::smatch end;
    bool const more = std::regex_search(
        rest, end, std::regex(" --[a-z]| To try out | Filters: | Triggers: | When it takes "));
    return more ? rest.substr(0, static_cast<std::size_t>(end.position())) : rest;
}

Fault fault(Options const &options, char const *method) {
    return options.answers.faults[findMethod(method).value()];
}

}  // namespace

TEST(Options, HaveDefaults) {
    Options const options = parse({});
    EXPECT_EQ(options.mode, Options::Mode::serve);
    EXPECT_EQ(options.target, "");
    EXPECT_EQ(options.store, "");
    EXPECT_EQ(options.snapshots, "");
    EXPECT_EQ(options.outbox, "");
    EXPECT_EQ(options.log_level, "");
    EXPECT_EQ(options.answers.version.major, 1U);
    EXPECT_EQ(options.answers.version.minor, 19U);
    for (Fault const &none : options.answers.faults) {
        EXPECT_FALSE(none.status || none.drop || none.delay.count() != 0);
    }
}

TEST(Options, AreTakenFromTheCommandLine) {
    Options const options = parse({"--target", "lab", "--store=s.db", "--snapshots", "pictures",
                                   "--outbox=out", "--log-level", "debug", "--target-version", "1.20"});
    EXPECT_EQ(options.target, "lab");
    EXPECT_EQ(options.store, "s.db");
    EXPECT_EQ(options.snapshots, "pictures");
    EXPECT_EQ(options.outbox, "out");
    EXPECT_EQ(options.log_level, "debug");
    EXPECT_EQ(options.answers.version.major, 1U);
    EXPECT_EQ(options.answers.version.minor, 20U);
}

TEST(Options, OfFaultsMayBeRepeatedAndCombined) {
    Options const options =
        parse({"--fail", "Get_actions=9", "--delay", "Get_actions=250", "--fail=Delete_action=4294967295",
               "--drop", "Onvif_event", "--drop=__get_target_version__"});
    EXPECT_EQ(fault(options, "Get_actions").status, 9U);
    EXPECT_EQ(fault(options, "Get_actions").delay, std::chrono::milliseconds(250));
    EXPECT_FALSE(fault(options, "Get_actions").drop);
    EXPECT_EQ(fault(options, "Delete_action").status, 4294967295U);
    EXPECT_TRUE(fault(options, "Onvif_event").drop);
    EXPECT_TRUE(fault(options, "__get_target_version__").drop);
    EXPECT_FALSE(fault(options, "Get_triggers").status);
}

TEST(Options, SetTheClock) {
    EXPECT_FALSE(parse({}).clock.is_virtual);
    EXPECT_FALSE(parse({"--clock", "virtual", "--clock=real"}).clock.is_virtual);
    Clock::Settings const standing = parse({"--clock", "virtual"}).clock;
    EXPECT_TRUE(standing.is_virtual);
    EXPECT_FALSE(standing.start);
    EXPECT_EQ(standing.rate, 0U);
    Clock::Settings const running = parse({"--clock-rate=60", "--clock=virtual=2026-11-23T06:59:00Z"}).clock;
    ASSERT_TRUE(running.start);
    EXPECT_EQ(std::chrono::system_clock::to_time_t(*running.start), 1795417140);
    EXPECT_EQ(running.rate, 60U);
}

TEST(Options, SetBoundsAndWhatDeletionsDo) {
    EXPECT_EQ(parse({}).rules.actions.most, 50'000U);
    EXPECT_EQ(parse({}).rules.deletion, Catalogue::Deletion::cascades);
    Options const options = parse({"--max-actions", "10", "--max-actions=relay_action=0", "--max-triggers",
                                   "timer_trigger=3", "--delete-policy=refuse"});
    EXPECT_EQ(options.rules.actions.most, 10U);
    EXPECT_EQ(options.rules.actions.most_of_type[9], 0U);
    EXPECT_FALSE(options.rules.actions.most_of_type[8]);
    EXPECT_EQ(options.rules.triggers.most, 50'000U);
    EXPECT_EQ(options.rules.triggers.most_of_type[1], 3U);
    EXPECT_EQ(options.rules.deletion, Catalogue::Deletion::refused);
    EXPECT_FALSE(options.shuffle);
    EXPECT_EQ(parse({"--shuffle", "--seed", "7"}).engine.shuffle_seed, 7U);
    EXPECT_FALSE(parse({"--shuffle"}).engine.shuffle_seed);
}

TEST(Options, SayWhatIsLive) {
    EXPECT_FALSE(parse({}).live_mail || parse({}).live_ftp);
    EXPECT_TRUE(parse({"--live", "mail"}).live_mail);
    EXPECT_FALSE(parse({"--live", "mail"}).live_ftp);
    Options const both =
        parse({"--live=ftp,mail", "--smtp-login", "l", "--tls-authorities", "a", "--live-time-out", "5"});
    EXPECT_TRUE(both.live_mail && both.live_ftp);
    EXPECT_EQ(both.smtp_login, "l");
    EXPECT_EQ(both.tls_authorities, "a");
    EXPECT_EQ(both.live_time_out, std::chrono::seconds(5));
}

TEST(Options, ForHelpAndVersionEndTheReading) {
    EXPECT_EQ(parse({"--help"}).mode, Options::Mode::help);
    EXPECT_EQ(parse({"--version", "nonsense"}).mode, Options::Mode::version);
}

TEST(Options, ThatAreWrongAreExplained) {
    struct Case {
        std::vector<std::string> arguments;
        char const *error;
    };
    Case const cases[] = {
        {{"--stor", "x", "--tar", "y"},
         "there is no option \"--tar\", or it is short for several. --help lists the options."},
        {{"--nonsense"},
         "there is no option \"--nonsense\", or it is short for several. --help lists the options."},
        {{"-x"}, "there is no option \"-x\", or it is short for several. --help lists the options."},
        {{"--store"}, "--store needs a value. --help lists the options."},
        {{"--store", ""}, "--store needs a value that is not empty."},
        {{"--snapshots="}, "--snapshots needs a value that is not empty."},
        {{"--outbox="}, "--outbox needs a value that is not empty."},
        {{"--help=now"}, "--help takes no value. --help lists the options."},
        {{"extra"}, "there is no argument \"extra\"; everything is an option. --help lists the options."},
        {{"--", "extra"},
         "there is no argument \"extra\"; everything is an option. --help lists the options."},
        {{"--drop", "Get_acton_type"},
         "--drop: there is no method \"Get_acton_type\". Did you mean Get_action_type?"},
        {{"--drop", "get_actions"}, "--drop: there is no method \"get_actions\". Did you mean Get_actions, "},
        {{"--drop", "zzzzzzzzzzzzzzzzzzzzzzzzz"},
         "--drop: there is no method \"zzzzzzzzzzzzzzzzzzzzzzzzz\". Methods are named as on the wire, like "
         "Get_action_type."},
        {{"--fail", "Get_actions"},
         "--fail needs METHOD=STATUS with a whole number, for example --fail Get_actions=9; it was "
         "\"Get_actions\"."},
        {{"--fail", "Get_actions="}, "--fail needs METHOD=STATUS"},
        {{"--fail", "Get_actions=x"}, "--fail needs METHOD=STATUS"},
        {{"--fail", "Get_actions=-1"}, "--fail needs METHOD=STATUS"},
        {{"--fail", "Get_actions=4294967296"}, "--fail needs METHOD=STATUS"},
        {{"--fail", "Get_actions=0"}, "--fail: status 0 is success."},
        {{"--fail", "Get_action=9"}, "--fail: there is no method \"Get_action\". Did you mean "},
        {{"--delay", "Get_actions=1.5"}, "--delay needs METHOD=MS"},
        {{"--target-version", "1"},
         "--target-version needs MAJOR.MINOR, for example --target-version 1.20; it was \"1\"."},
        {{"--target-version", "1.x"}, "--target-version needs MAJOR.MINOR"},
        {{"--target-version", "1.2.3"}, "--target-version needs MAJOR.MINOR"},
        {{"--clock", "fast"}, "--clock needs real, virtual or virtual=TIME; it was \"fast\"."},
        {{"--clock", "virtual="}, "--clock: \"\" is no time that the clock shows, written like "},
        {{"--clock", "virtual=2026-02-29T00:00:00"}, "--clock: \"2026-02-29T00:00:00\" is no time that"},
        {{"--clock=virtual", "--clock-rate", "86401"},
         "--clock-rate needs a whole number from 0 to 86400, by which time goes faster, for example "
         "--clock-rate 60; it was \"86401\"."},
        {{"--clock=virtual", "--clock-rate", "-1"}, "--clock-rate needs a whole number"},
        {{"--clock-rate", "60"}, "--clock-rate is for a virtual clock; give --clock virtual too."},
        {{"--traces", "100001"}, "--traces needs a whole number from 0 to 100000; it was \"100001\"."},
        {{"--traces", "many"}, "--traces needs a whole number"},
        {{"--live", "mail,"}, "--live needs mail, ftp or mail,ftp; it was \"mail,\"."},
        {{"--live-time-out", "0"}, "--live-time-out needs a whole number of seconds from 1 to 3600; it was"},
        {{"--live", "ftp", "--smtp-login", "f"},
         "--smtp-login is for e-mails that are sent; give --live mail too."},
        {{"--max-actions", "50001"},
         "--max-actions needs a whole number from 0 to 50000, or KIND=NUMBER, for example --max-actions "
         "ftp_action=10; it was \"50001\"."},
        {{"--max-actions", "relay_action="}, "--max-actions needs a whole number from 0 to 50000"},
        {{"--max-actions", "timer_trigger=1"},
         "--max-actions: there is no kind \"timer_trigger\". Kinds are email_action, ftp_action, "},
        {{"--max-triggers", "relay=1"},
         "--max-triggers: there is no kind \"relay\". Kinds are onvif_trigger, timer_trigger, "
         "stable_onvif_trigger."},
        {{"--delete-policy", "never"}, "--delete-policy needs refuse or cascade; it was \"never\"."},
        {{"--shuffle", "--seed", "x"}, "--seed needs a whole number from 0 to 4294967295; it was \"x\"."},
        {{"--replay", ""}, "--replay needs a value that is not empty."},
        {{"--from-capture", ""}, "--from-capture needs a value that is not empty."},
        {{"--show-secrets"}, "--show-secrets is for a capture; give --capture FILE too."},
        {{"--seed", "1"}, "--seed is for orders that are drawn; give --shuffle too."},
        {{"--log-level", "loud"},
         "--log-level: there is no level \"loud\". Levels are emerg, alert, crit, err, warning, notice, "
         "info, debug."},
    };
    for (Case const &one : cases) {
        EXPECT_THAT(refusal(one.arguments), testing::StartsWith(one.error));
    }
}

TEST(Options, AreExplainedInTheManualPageInTheSameWords) {
    std::string const help = plain(helpText());
    std::string const manual = plain(withoutMacros(readFile(MANUAL_PAGE)));
    // Of both texts, what stands from the first option on: for each option its name, its value and its words.
    for (char const *const option : {"--target TEXT",
                                     "--store FILE",
                                     "--snapshots DIR",
                                     "--outbox DIR",
                                     "--log-level LEVEL",
                                     "--lenient",
                                     "--live WHAT",
                                     "--live-time-out SECONDS",
                                     "--smtp-login FILE",
                                     "--tls-authorities FILE",
                                     "--clock CLOCK",
                                     "--clock-rate NUMBER",
                                     "--traces NUMBER",
                                     "--max-actions [KIND=]NUMBER",
                                     "--max-triggers [KIND=]NUMBER",
                                     "--delete-policy POLICY",
                                     "--shuffle",
                                     "--seed NUMBER",
                                     "--capture FILE",
                                     "--show-secrets",
                                     "--replay FILE",
                                     "--from-capture FILE",
                                     "--help",
                                     "--version",
                                     "--fail METHOD=STATUS",
                                     "--delay METHOD=MS",
                                     "--drop METHOD",
                                     "--target-version MAJOR.MINOR"}) {
        std::string const words = sentencesAfter(help, std::string(" ") + option + " ");
        ASSERT_GT(words.size(), 10U) << option;
        EXPECT_THAT(manual, HasSubstr(std::string(" ") + option + " " + words));
    }
    std::string const filters = sentencesAfter(help, " Filters: ");
    EXPECT_THAT(manual, HasSubstr(" Filters " + filters));
}

TEST(Options, OfTheManualPageAreAllInTheHelp) {
    std::istringstream manual(readFile(MANUAL_PAGE));
    unsigned int options = 0;
    for (std::string line; std::getline(manual, line);) {
        constexpr char const *beginning = "\\fB\\-\\-";
        if (line.rfind(beginning, 0) == 0) {
            EXPECT_THAT(plain(helpText()), HasSubstr(plain(withoutMacros(" " + line + " "))));
            ++options;
        }
    }
    EXPECT_EQ(options, 28U);
}

TEST(CloseMethodNames, AreAtMostThreeTheClosestFirst) {
    EXPECT_EQ(closeMethodNames("Create_onvif_triger").front(), "Create_onvif_trigger");
    EXPECT_LE(closeMethodNames("Create_onvif_triger").size(), 3U);
    EXPECT_EQ(closeMethodNames("GET_TARGET_VERSION").front(), "__get_target_version__");
    EXPECT_TRUE(closeMethodNames("").empty());
    EXPECT_TRUE(closeMethodNames(std::string(100'000, 'x')).empty());
}

}  // namespace simulator::tests
