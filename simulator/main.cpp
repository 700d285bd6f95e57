// SPDX-License-Identifier: Apache-2.0
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

#include "error_words.h"
#include "korvo_core.h"
#include "simulator/captures/rebuilding.h"
#include "simulator/captures/recording.h"
#include "simulator/captures/tape.h"
#include "simulator/catalogue.h"
#include "simulator/folders.h"
#include "simulator/log.h"
#include "simulator/loop.h"
#include "simulator/options.h"
#include "simulator/refused.h"
#include "simulator/runners/runner.h"
#include "simulator/service.h"
#include "simulator/state_folder.h"
#include "simulator/store.h"

namespace {

constexpr char const *program = "korvo-action-engine-simulator";

enum ExitStatus : int { exit_good = 0, exit_failure = 1, exit_usage = 2 };

void check(korvo_core_status status, char const *what) {
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        throw std::runtime_error(std::string(what) + ": " + korvo_core_status_to_string(status));
    }
}

/// The platform core, for as long as the program uses it.
class Core {
  public:
    Core() { check(korvo_core_init(), "cannot start the platform core"); }
    ~Core() { (void)korvo_core_deinit(); }
    Core(Core const &) = delete;
    Core &operator=(Core const &) = delete;
};

class CoreLogging {
  public:
    CoreLogging() { check(korvo_core_logging_init(protocol::service, &handle_), "cannot open the log"); }
    ~CoreLogging() { (void)korvo_core_logging_deinit(handle_); }
    CoreLogging(CoreLogging const &) = delete;
    CoreLogging &operator=(CoreLogging const &) = delete;

    void *handle() const { return handle_; }

  private:
    void *handle_ = nullptr;
};

/// The folder to use, made where it does not exist.
std::string folder(std::string const &chosen, char const *otherwise) {
    std::string path = chosen.empty() ? simulator::stateFolder() + "/" + otherwise : chosen;
    simulator::makeFolder(path);
    return path;
}

simulator::Engine::Settings engineSettings(simulator::Options const &options, simulator::Log const &log) {
    simulator::Engine::Settings settings = options.engine;
    if (options.shuffle && !settings.shuffle_seed) {
        settings.shuffle_seed = std::random_device()();
        log.notice("actions run in orders that --seed " + std::to_string(*settings.shuffle_seed) +
                   " gives again");
    }
    return settings;
}

simulator::Catalogue catalogue(simulator::Store &store, simulator::Options const &options,
                               simulator::Log const &log) {
    simulator::Catalogue made(store, options.rules);
    if (options.from_capture.empty()) {
        return made;
    }
    for (auto const table : {simulator::Catalogue::Table::actions, simulator::Catalogue::Table::triggers}) {
        if (!made.entries(table).empty()) {
            throw std::runtime_error("--from-capture: the store " + simulator::quoted(options.store) +
                                     " holds a catalogue already; give --store another file");
        }
    }
    simulator::Rebuilt rebuilt = simulator::catalogueIn(simulator::readCapture(options.from_capture));
    try {
        made.replace(std::move(rebuilt.contents));
    } catch (simulator::Refused const &refused) {
        throw std::runtime_error("cannot build the catalogue from the capture " +
                                 simulator::quoted(options.from_capture) + ": " + refused.what());
    }
    for (std::string const &remark : rebuilt.remarks) {
        log.warning("from the capture: " + remark);
    }
    return made;
}

void serve(simulator::Options const &options) {
    if (!options.log_level.empty() &&
        ::setenv("KORVO_LOG_LEVEL", options.log_level.c_str(), /*overwrite*/ 1) != 0) {
        throw std::runtime_error("cannot set KORVO_LOG_LEVEL: out of memory");
    }
    // A reader of our output that is gone is an error of writing, not the end.
    std::signal(SIGPIPE, SIG_IGN);
    // So is a file that may not grow any more, as on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    // Before anything else, so that a signal always ends the program in good order.
    simulator::Loop loop;

    Core const core;
    CoreLogging const logging;
    simulator::Log const log([&logging](korvo_core_log_priority priority, std::string const &text) {
        (void)korvo_core_logging_log(logging.handle(), priority, "%s", text.c_str());
    });
    simulator::Clock clock(options.clock);
    simulator::Store store(options.store, [&log](std::string const &remark) { log.warning(remark); });
    simulator::runners::Runner::Live live{options.live_mail, options.live_ftp};
    std::optional<simulator::runners::Transfers> transfers;
    if (options.live_mail || options.live_ftp) {
        transfers.emplace(
            simulator::runners::Transfers::Settings{options.live_time_out, options.tls_authorities},
            [&loop] { loop.wake(); }, log);
        live.transfers = &*transfers;
    }
    if (!options.smtp_login.empty()) {
        live.logins = simulator::runners::readLogins(options.smtp_login);
    }
    simulator::runners::Runner runner(
        {folder(options.snapshots, "snapshots"), folder(options.outbox, "outbox")},
        [&clock] { return clock.wall(); }, [&clock] { return clock.now(); }, log, std::move(live));
    simulator::Tape tape(log);
    if (!options.capture.empty()) {
        tape.startCapture(
            options.capture,
            options.show_secrets ? simulator::Capture::Secrets::shown : simulator::Capture::Secrets::hidden,
            simulator::Capture::Existing::added_to);
    }
    if (!options.replay.empty()) {
        tape.startReplay(options.replay, clock.now());
    }
    simulator::Service service(loop, logging.handle(), options.target, catalogue(store, options, log),
                               options.answers, engineSettings(options, log), clock, runner, tape, log);
    std::cout << program << ": ready (target " << simulator::quoted(options.target) << ")" << std::endl;
    service.run();
}

}  // namespace

int main(int argc, char *argv[]) {
    try {
        simulator::Options const options = simulator::parseOptions(argc, argv);
        switch (options.mode) {
            case simulator::Options::Mode::help:
                std::cout << simulator::helpText();
                break;
            case simulator::Options::Mode::version:
                std::cout << program << " " << KORVO_VERSION << "\n";
                break;
            case simulator::Options::Mode::serve:
                serve(options);
                break;
        }
        return exit_good;
    } catch (simulator::UsageError const &error) {
        std::cerr << program << ": " << error.what() << "\n";
        return exit_usage;
    } catch (std::exception const &error) {
        std::cerr << program << ": " << platform::wordsOf(error) << "\n";
        return exit_failure;
    }
}
