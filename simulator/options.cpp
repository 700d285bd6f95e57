// SPDX-License-Identifier: Apache-2.0
#include "simulator/options.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/kinds.h"
#include "simulator/log.h"
#include "simulator/methods.h"

namespace simulator {

namespace {

constexpr std::string_view log_levels[] = {"emerg",   "alert",  "crit", "err",
                                           "warning", "notice", "info", "debug"};

std::string nonEmpty(char const *name, std::string const &value) {
    if (value.empty()) {
        throw UsageError(std::string("--") + name + " needs a value that is not empty.");
    }
    return value;
}

std::optional<std::uint32_t> wholeNumber(std::string_view text) {
    std::uint32_t number = 0;
    auto const read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

std::size_t method(char const *name, std::string_view text) {
    if (auto const found = findMethod(text)) {
        return *found;
    }
    std::string close;
    for (std::string const &candidate : closeMethodNames(text)) {
        close += (close.empty() ? "" : ", ") + candidate;
    }
    throw UsageError(std::string("--") + name + ": there is no method " + quoted(text) + ". " +
                     (close.empty() ? "Methods are named as on the wire, like Get_action_type."
                                    : "Did you mean " + close + "?"));
}

/// Reads METHOD=NUMBER.
std::pair<std::size_t, std::uint32_t> methodAndNumber(char const *name, char const *meaning,
                                                      std::string_view text) {
    std::size_t const equals = text.find('=');
    auto const number =
        equals == std::string_view::npos ? std::nullopt : wholeNumber(text.substr(equals + 1));
    std::size_t const found = method(name, text.substr(0, equals));
    if (!number) {
        throw UsageError(std::string("--") + name + " needs METHOD=" + meaning +
                         " with a whole number, for example --" + name + " " + methodAt(found).method +
                         "=9; it was " + quoted(text) + ".");
    }
    return {found, *number};
}

handlers::Version version(std::string_view text) {
    std::size_t const dot = text.find('.');
    if (dot != std::string_view::npos) {
        auto const major = wholeNumber(text.substr(0, dot));
        auto const minor = wholeNumber(text.substr(dot + 1));
        if (major && minor) {
            return {*major, *minor};
        }
    }
    throw UsageError("--target-version needs MAJOR.MINOR, for example --target-version 1.20; it was " +
                     quoted(text) + ".");
}

std::string logLevel(std::string_view text) {
    if (std::find(std::begin(log_levels), std::end(log_levels), text) == std::end(log_levels)) {
        std::string all;
        for (std::string_view const level : log_levels) {
            all.append(all.empty() ? "" : ", ").append(level);
        }
        throw UsageError("--log-level: there is no level " + quoted(text) + ". Levels are " + all + ".");
    }
    return std::string(text);
}

constexpr char const *advice = " --help lists the options.";

void setTarget(Options &options, std::string const &value) {
    options.target = value;
}

void setStore(Options &options, std::string const &value) {
    options.store = nonEmpty("store", value);
}

void setSnapshots(Options &options, std::string const &value) {
    options.snapshots = nonEmpty("snapshots", value);
}

void setOutbox(Options &options, std::string const &value) {
    options.outbox = nonEmpty("outbox", value);
}

void setLogLevel(Options &options, std::string const &value) {
    options.log_level = logLevel(value);
}

void addFailure(Options &options, std::string const &value) {
    auto const [failing, status] = methodAndNumber("fail", "STATUS", value);
    if (status == 0) {
        throw UsageError("--fail: status 0 is success. Give another one, 9 for example.");
    }
    options.answers.faults[failing].status = status;
}

void addDelay(Options &options, std::string const &value) {
    auto const [late, milliseconds] = methodAndNumber("delay", "MS", value);
    options.answers.faults[late].delay = std::chrono::milliseconds(milliseconds);
}

void addDrop(Options &options, std::string const &value) {
    options.answers.faults[method("drop", value)].drop = true;
}

void setTargetVersion(Options &options, std::string const &value) {
    options.answers.version = version(value);
}

void setLenient(Options &options, std::string const &) {
    options.rules.nonsense = Catalogue::Nonsense::kept;
}

void setClock(Options &options, std::string const &value) {
    constexpr std::string_view with_start = "virtual=";
    options.clock.start.reset();
    options.clock.is_virtual = value == "virtual" || value.rfind(with_start, 0) == 0;
    if (!options.clock.is_virtual && value != "real") {
        throw UsageError("--clock needs real, virtual or virtual=TIME; it was " + quoted(value) + ".");
    }
    if (options.clock.is_virtual && value != "virtual") {
        std::string const moment = value.substr(with_start.size());
        options.clock.start = readMoment(moment);
        if (!options.clock.start) {
            throw UsageError("--clock: " + quoted(moment) + " " + no_moment);
        }
    }
}

void setClockRate(Options &options, std::string const &value) {
    auto const rate = wholeNumber(value);
    if (!rate || *rate > Clock::fastest) {
        throw UsageError("--clock-rate needs a whole number from 0 to " + std::to_string(Clock::fastest) +
                         ", by which time goes faster, for example --clock-rate 60; it was " + quoted(value) +
                         ".");
    }
    options.clock.rate = *rate;
}

void setTraces(Options &options, std::string const &value) {
    constexpr std::uint32_t most = 100'000;
    auto const number = wholeNumber(value);
    if (!number || *number > most) {
        throw UsageError("--traces needs a whole number from 0 to " + std::to_string(most) + "; it was " +
                         quoted(value) + ".");
    }
    options.engine.most_traces = *number;
}

/// Reads NUMBER or KIND=NUMBER.
template <std::size_t size>
void setBound(char const *name, EntryKind const (&kinds)[size], Catalogue::Bounds &bounds,
              std::string_view value) {
    std::size_t const equals = value.find('=');
    bool const of_kind = equals != std::string_view::npos;
    auto const number = wholeNumber(of_kind ? value.substr(equals + 1) : value);
    EntryKind const *const kind = of_kind ? findKind(kinds, value.substr(0, equals)) : nullptr;
    if (of_kind && kind == nullptr) {
        std::string all;
        for (EntryKind const &one : kinds) {
            all.append(all.empty() ? "" : ", ").append(kindName(one));
        }
        throw UsageError(std::string("--") + name + ": there is no kind " + quoted(value.substr(0, equals)) +
                         ". Kinds are " + all + ".");
    }
    if (!number || *number > Catalogue::most_entries) {
        throw UsageError(std::string("--") + name + " needs a whole number from 0 to " +
                         std::to_string(Catalogue::most_entries) + ", or KIND=NUMBER, for example --" + name +
                         " " + std::string(kindName(kinds[1])) + "=10; it was " + quoted(value) + ".");
    }
    if (kind == nullptr) {
        bounds.most = *number;
    } else {
        bounds.most_of_type[kind->type] = *number;
    }
}

void setMaxActions(Options &options, std::string const &value) {
    setBound("max-actions", action_kinds, options.rules.actions, value);
}

void setMaxTriggers(Options &options, std::string const &value) {
    setBound("max-triggers", trigger_kinds, options.rules.triggers, value);
}

void setDeletePolicy(Options &options, std::string const &value) {
    if (value != "refuse" && value != "cascade") {
        throw UsageError("--delete-policy needs refuse or cascade; it was " + quoted(value) + ".");
    }
    options.rules.deletion = value == "refuse" ? Catalogue::Deletion::refused : Catalogue::Deletion::cascades;
}

void setShuffle(Options &options, std::string const &) {
    options.shuffle = true;
}

void setSeed(Options &options, std::string const &value) {
    options.engine.shuffle_seed = wholeNumber(value);
    if (!options.engine.shuffle_seed) {
        throw UsageError("--seed needs a whole number from 0 to 4294967295; it was " + quoted(value) + ".");
    }
}

void setHelp(Options &options, std::string const &) {
    options.mode = Options::Mode::help;
}

void setVersion(Options &options, std::string const &) {
    options.mode = Options::Mode::version;
}

void setLive(Options &options, std::string const &value) {
    options.live_mail = value == "mail" || value == "mail,ftp" || value == "ftp,mail";
    options.live_ftp = value == "ftp" || value == "mail,ftp" || value == "ftp,mail";
    if (!options.live_mail && !options.live_ftp) {
        throw UsageError("--live needs mail, ftp or mail,ftp; it was " + quoted(value) + ".");
    }
}

void setCapture(Options &options, std::string const &value) {
    options.capture = nonEmpty("capture", value);
}

void setShowSecrets(Options &options, std::string const &) {
    options.show_secrets = true;
}

void setReplay(Options &options, std::string const &value) {
    options.replay = nonEmpty("replay", value);
}

void setFromCapture(Options &options, std::string const &value) {
    options.from_capture = nonEmpty("from-capture", value);
}

void setLiveTimeOut(Options &options, std::string const &value) {
    constexpr std::uint32_t most = 3600;
    auto const number = wholeNumber(value);
    if (!number || *number == 0 || *number > most) {
        throw UsageError("--live-time-out needs a whole number of seconds from 1 to " + std::to_string(most) +
                         "; it was " + quoted(value) + ".");
    }
    options.live_time_out = std::chrono::seconds(*number);
}

void setSmtpLogin(Options &options, std::string const &value) {
    options.smtp_login = nonEmpty("smtp-login", value);
}

void setTlsAuthorities(Options &options, std::string const &value) {
    options.tls_authorities = nonEmpty("tls-authorities", value);
}

/// Everything about one option. The man page repeats the words, which a test compares.
struct Row {
    char const *name;
    /// NULL for an option without a value.
    char const *argument;
    /// What it does, for --help; a line is at most 48 characters long.
    char const *words;
    void (*take)(Options &options, std::string const &value);
};

constexpr Row general[] = {
    {"target", "TEXT", "Serve under this target instead of the default\none.", setTarget},
    {"store", "FILE", "Keep the catalogue in this file. Without it, the\ncatalogue is gone at the end.",
     setStore},
    {"snapshots", "DIR",
     "Where snapshot actions write their pictures.\nWithout it, action-engine-simulator/snapshots\n"
     "in the state folder. The folder is made where it\nis missing.",
     setSnapshots},
    {"outbox", "DIR",
     "Where e-mails and uploads are put that are not\nsent, which without --live is all of them. Without\n"
     "it, action-engine-simulator/outbox in the state\nfolder. The folder is made where it is missing.",
     setOutbox},
    {"live", "WHAT",
     "Really send e-mails (mail), uploads (ftp), or both\n(mail,ftp), to the servers that actions name.",
     setLive},
    {"live-time-out", "SECONDS", "How long a server may take for one, 30 seconds\nwhere it is not given.",
     setLiveTimeOut},
    {"smtp-login", "FILE",
     "The logins for sending e-mails, a line for each\nserver: machine HOST login USER password PASSWORD.\n"
     "They go to servers with TLS only.",
     setSmtpLogin},
    {"tls-authorities", "FILE",
     "The authorities (PEM) that servers' certificates\nmust be from, not the machine's.", setTlsAuthorities},
    {"log-level", "LEVEL", "emerg, alert, crit, err, warning, notice, info\nor debug.", setLogLevel},
    {"lenient", nullptr,
     "Take filters, triggers and events that mean\nnothing, which are else refused. They never fire,\n"
     "and the log says why.",
     setLenient},
    {"clock", "CLOCK",
     "real, or virtual for a time that stands until it\nis moved, or runs at a rate; virtual=TIME begins\n"
     "at a local time like 2026-11-23T07:59:00. Timers,\nwindows, weekdays and stability follow it.",
     setClock},
    {"clock-rate", "NUMBER", "Let a virtual clock run so many times as fast.", setClockRate},
    {"traces", "NUMBER", "Keep so many traces of each outcome, 1000 where it\nis not given.", setTraces},
    {"max-actions", "[KIND=]NUMBER",
     "Take at most so many actions, or so many of one\nkind like snapshot_action; may be given several\n"
     "times. What a store already holds stays.",
     setMaxActions},
    {"max-triggers", "[KIND=]NUMBER", "The same for triggers; kinds are like\ntimer_trigger.",
     setMaxTriggers},
    {"delete-policy", "POLICY",
     "refuse to delete an action or trigger that is\nbound, or cascade to its associations, which is\n"
     "done where nothing is given.",
     setDeletePolicy},
    {"shuffle", nullptr,
     "Run the actions of a trigger in another order\neach time, not in that of their identifiers.",
     setShuffle},
    {"seed", "NUMBER",
     "Draw the orders of --shuffle from this number, so\nthat they are the same each time. The log tells\n"
     "it where it is not given.",
     setSeed},
    {"capture", "FILE",
     "Add every message to and from clients to this file,\none JSON object a line, for a report of a fault.\n"
     "Passwords are null.",
     setCapture},
    {"show-secrets", nullptr, "Leave passwords in the capture.", setShowSecrets},
    {"replay", "FILE",
     "Answer clients as this capture has it, and send\nits events at their places, so that a fault shows\n"
     "again. The catalogue is not asked.",
     setReplay},
    {"from-capture", "FILE",
     "Begin with the catalogue that this capture shows.\nThe store must be new or empty.", setFromCapture},
    {"help", nullptr, "Print the options and exit.", setHelp},
    {"version", nullptr, "Print the program's version and exit.", setVersion},
};

constexpr Row faults[] = {
    {"fail", "METHOD=STATUS", "Answer with this status, and do nothing.", addFailure},
    {"delay", "METHOD=MS", "Do it, and answer so many milliseconds later.", addDelay},
    {"drop", "METHOD", "Neither do it nor answer.", addDrop},
    {"target-version", "MAJOR.MINOR", "Answer version queries with this instead of\n1.19.", setTargetVersion},
};

std::vector<Row> allRows() {
    std::vector<Row> rows(std::begin(general), std::end(general));
    rows.insert(rows.end(), std::begin(faults), std::end(faults));
    return rows;
}

template <std::size_t size>
std::string helpOf(Row const (&rows)[size]) {
    constexpr std::size_t words_column = 30;
    std::string text;
    for (Row const &row : rows) {
        std::string line =
            std::string("  --") + row.name + (row.argument == nullptr ? "" : std::string(" ") + row.argument);
        for (std::string_view words = row.words; !words.empty();) {
            std::size_t const end = std::min(words.find('\n'), words.size());
            line.resize(std::max(line.size() + 1, words_column), ' ');
            text.append(line).append(words.substr(0, end)) += '\n';
            line.clear();
            line.resize(words_column - 1, ' ');
            words.remove_prefix(std::min(end + 1, words.size()));
        }
    }
    return text;
}

}  // namespace

Options parseOptions(int argc, char *argv[]) {
    std::vector<Row> const rows = allRows();
    std::vector<option> known;
    // Beyond all characters, which short options are told by.
    constexpr int first_choice = 256;
    for (Row const &row : rows) {
        known.push_back({row.name, row.argument == nullptr ? no_argument : required_argument,
                         /*flag*/ nullptr, first_choice + static_cast<int>(known.size())});
    }
    auto const row_of = [&rows](int choice) -> Row const & {
        return rows[static_cast<std::size_t>(choice - first_choice)];
    };
    known.push_back({nullptr, 0, nullptr, 0});

    Options options;
    // 0 makes the parser forget an earlier command line. The errors are ours, so it prints none.
    optind = 0;
    opterr = 0;
    while (true) {
        int const choice = getopt_long(argc, argv, "+:", known.data(), nullptr);
        if (choice == -1) {
            break;
        }
        if (choice == ':' || (choice == '?' && optopt >= first_choice)) {
            // An option that is known lacks its value, or has been given one that it does not take.
            throw UsageError(std::string("--") + row_of(optopt).name +
                             (choice == ':' ? " needs a value." : " takes no value.") + advice);
        }
        if (choice == '?') {
            throw UsageError("there is no option " + quoted(argv[optind - 1]) +
                             ", or it is short for several." + advice);
        }
        row_of(choice).take(options, optarg == nullptr ? "" : optarg);
        if (options.mode != Options::Mode::serve) {
            return options;
        }
    }
    if (options.clock.rate != 0 && !options.clock.is_virtual) {
        throw UsageError("--clock-rate is for a virtual clock; give --clock virtual too.");
    }
    if (!options.smtp_login.empty() && !options.live_mail) {
        throw UsageError("--smtp-login is for e-mails that are sent; give --live mail too.");
    }
    if (options.show_secrets && options.capture.empty()) {
        throw UsageError("--show-secrets is for a capture; give --capture FILE too.");
    }
    if (options.engine.shuffle_seed && !options.shuffle) {
        throw UsageError("--seed is for orders that are drawn; give --shuffle too.");
    }
    if (optind < argc) {
        throw UsageError("there is no argument " + quoted(argv[optind]) + "; everything is an option." +
                         advice);
    }
    return options;
}

std::string helpText() {
    return R"(Usage: korvo-action-engine-simulator [options]

The action_engine service for development machines: keeps actions and triggers,
fires timers, runs what is bound to them and publishes Action_completed.

)" + helpOf(general) +
           R"(
To try out how a program takes errors; each may be given several times, and a
METHOD is named as on the wire, like Get_action_type:

)" + helpOf(faults) +
           R"(
Filters: the n-th entries of the three lists of Set_action_filters are one
filter, a set of weekdays (Sunday 1, Monday 2, ... Saturday 64, added up) and a
window in seconds since local midnight, with its start and without its end. An
action runs when one of its filters fits, or when it has none. A window whose
end comes before its start crosses midnight and belongs to the day on which it
started; equal start and end are the whole day.

Triggers: a topic filter is topics with "|" between them, each alone or with
"//." at its end for all below it. A content filter is conditions like
boolean(//tt:SimpleItem[@Name="IsMotion" and @Value="true"]), joined by and,
or, not(...) and brackets. What cannot be understood is refused with status 9,
and the log says where it is wrong. With --log-level info the log also says of
each event which triggers did not take it, and why.

When it takes commands it prints a line that begins with
"korvo-action-engine-simulator: ready". SIGTERM and SIGINT end it, with exit
status 0. Errors have exit status 1, a wrong command line has 2. The manual
page says more.
)";
}

}  // namespace simulator
