// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_OPTIONS_H
#define KORVO_SIMULATOR_OPTIONS_H

#include <chrono>
#include <stdexcept>
#include <string>

#include "simulator/dispatcher.h"
#include "simulator/time/clock.h"

namespace simulator {

struct Options {
    /// What to do: serve, or only print a text on standard output.
    enum class Mode { serve, help, version };
    Mode mode = Mode::serve;

    /// Empty for the default target.
    std::string target;
    /// Empty for a store in memory.
    std::string store;
    /// Empty for the folders under the state folder.
    std::string snapshots;
    std::string outbox;
    /// Empty to leave the level to the environment.
    std::string log_level;
    Catalogue::Rules rules;
    /// Empty for none.
    std::string capture;
    bool show_secrets = false;
    /// Empty for none.
    std::string replay;
    std::string from_capture;
    /// What really leaves the machine, with which logins (a file, or empty) and authorities (likewise).
    bool live_mail = false;
    bool live_ftp = false;
    std::string smtp_login;
    std::string tls_authorities;
    std::chrono::seconds live_time_out{30};
    Clock::Settings clock;
    Engine::Settings engine = Engine::default_settings;
    /// The actions of a trigger run in another order each time; engine.shuffle_seed is empty where none was given.
    bool shuffle = false;
    Dispatcher::Settings answers;
};

/// The command line cannot be understood. what() says what was wrong, with what, and what to do.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads the command line, of which the first text is the program's name. Throws UsageError. Not for two threads at a
/// time.
Options parseOptions(int argc, char *argv[]);

/// What --help prints.
std::string helpText();

}  // namespace simulator

#endif
