// SPDX-License-Identifier: Apache-2.0
#include "simulator/options.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "simulator/log.h"
#include "simulator/methods.h"

namespace simulator {

namespace {

enum Choice : int {
    choice_target = 1,
    choice_store,
    choice_snapshots,
    choice_outbox,
    choice_fail,
    choice_delay,
    choice_drop,
    choice_target_version,
    choice_log_level,
    choice_help,
    choice_version,
};

constexpr option choices[] = {
    {"target", required_argument, nullptr, choice_target},
    {"store", required_argument, nullptr, choice_store},
    {"snapshots", required_argument, nullptr, choice_snapshots},
    {"outbox", required_argument, nullptr, choice_outbox},
    {"fail", required_argument, nullptr, choice_fail},
    {"delay", required_argument, nullptr, choice_delay},
    {"drop", required_argument, nullptr, choice_drop},
    {"target-version", required_argument, nullptr, choice_target_version},
    {"log-level", required_argument, nullptr, choice_log_level},
    {"help", no_argument, nullptr, choice_help},
    {"version", no_argument, nullptr, choice_version},
    {nullptr, 0, nullptr, 0},
};

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

void apply(int choice, std::string const &value, Options &options) {
    Faults &faults = options.answers.faults;
    switch (choice) {
        case choice_target:
            options.target = value;
            break;
        case choice_store:
            options.store = nonEmpty("store", value);
            break;
        case choice_snapshots:
            options.snapshots = nonEmpty("snapshots", value);
            break;
        case choice_outbox:
            options.outbox = nonEmpty("outbox", value);
            break;
        case choice_fail: {
            auto const [failing, status] = methodAndNumber("fail", "STATUS", value);
            if (status == 0) {
                throw UsageError("--fail: status 0 is success. Give another one, 9 for example.");
            }
            faults[failing].status = status;
            break;
        }
        case choice_delay: {
            auto const [late, milliseconds] = methodAndNumber("delay", "MS", value);
            faults[late].delay = std::chrono::milliseconds(milliseconds);
            break;
        }
        case choice_drop:
            faults[method("drop", value)].drop = true;
            break;
        case choice_target_version:
            options.answers.version = version(value);
            break;
        case choice_log_level:
            options.log_level = logLevel(value);
            break;
        case choice_help:
            options.mode = Options::Mode::help;
            break;
        case choice_version:
            options.mode = Options::Mode::version;
            break;
        default:
            break;
    }
}

char const *nameOf(int choice) {
    for (option const &known : choices) {
        if (known.val == choice && known.name != nullptr) {
            return known.name;
        }
    }
    return "";
}

}  // namespace

Options parseOptions(int argc, char *argv[]) {
    constexpr char const *advice = " --help lists the options.";
    Options options;
    // 0 makes the parser forget an earlier command line. The errors are ours, so it prints none.
    optind = 0;
    opterr = 0;
    while (true) {
        int const choice = getopt_long(argc, argv, "+:", choices, nullptr);
        if (choice == -1) {
            break;
        }
        if (choice == ':') {
            throw UsageError(std::string("--") + nameOf(optopt) + " needs a value." + advice);
        }
        if (choice == '?') {
            // An option that is known has been given a value that it does not take.
            if (char const *const name = nameOf(optopt); *name != '\0') {
                throw UsageError(std::string("--") + name + " takes no value." + advice);
            }
            throw UsageError("there is no option " + quoted(argv[optind - 1]) +
                             ", or it is short for several." + advice);
        }
        apply(choice, optarg == nullptr ? "" : optarg, options);
        if (options.mode != Options::Mode::serve) {
            return options;
        }
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

  --target TEXT       serve under this target instead of the default one
  --store FILE        keep the catalogue in this file; without it, it is gone at
                      the end
  --snapshots DIR     where snapshot actions write their pictures
  --outbox DIR        where e-mails and uploads are put; nothing is ever sent
                      (both folders are made; without the options they are
                      under the state folder, KORVO_STATE_DIR)
  --log-level LEVEL   emerg, alert, crit, err, warning, notice, info or debug

To try out how a program takes errors; each may be given several times, and a
METHOD is named as on the wire, like Get_action_type:

  --fail METHOD=STATUS          answer with this status, and do nothing
  --delay METHOD=MS             do it, and answer so many milliseconds later
  --drop METHOD                 neither do it nor answer
  --target-version MAJOR.MINOR  answer version queries with this instead of 1.19

  --help              print this and exit
  --version           print the program's version and exit

When it takes commands it prints a line that begins with
"korvo-action-engine-simulator: ready". SIGTERM and SIGINT end it, with exit
status 0. Errors have exit status 1, a wrong command line has 2.
)";
}

}  // namespace simulator
