// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_UNIT_SIMULATOR_SUPPORT_H
#define KORVO_TESTS_UNIT_SIMULATOR_SUPPORT_H

#include <boost/json/object.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "processes/temporary_folder.h"
#include "simulator/catalogue.h"
#include "simulator/dispatcher.h"
#include "simulator/engine.h"
#include "simulator/log.h"
#include "simulator/store.h"

namespace simulator::tests {

using processes::TemporaryFolder;

/// A log that keeps what is written: "warning: text".
class RecordedLog {
  public:
    Log const &log() const { return log_; }
    std::vector<std::string> lines;
    bool holds(std::string const &part) const;

  private:
    void keep(korvo_core_log_priority priority, std::string const &text);

    Log log_{[this](korvo_core_log_priority priority, std::string const &text) { keep(priority, text); }};
};

/// The service without its messaging: commands in, responses out, with a clock that the test moves. What it keeps for the
/// test is not counted among the service's allocations.
class Bench {
  public:
    /// An empty path keeps the store in memory.
    explicit Bench(std::string const &store_path = "", Dispatcher::Settings settings = {},
                   Catalogue::Rules const &rules = {},
                   Engine::Settings const &engine_settings = Engine::default_settings);
    /// One that goes by this clock.
    explicit Bench(Clock const &clock);

    /// The response to a command, as text and as an object.
    std::string respond(std::string_view command);
    boost::json::object answer(std::string_view command);
    /// The "status" of the response.
    std::int64_t status(std::string_view command);
    /// The number that a command that succeeds is answered with.
    std::int64_t number(std::string_view command, char const *member);

    void advance(std::chrono::milliseconds time) { now += time; }
    /// Runs all that is due, and gives the identifiers of the actions that ran, in order.
    std::vector<std::uint32_t> run();

    Deadlines::Time now = Deadlines::Time(std::chrono::hours(1));
    /// Wednesday, noon.
    LocalTime local_time{3, 12 * 60 * 60};
    bool actions_succeed = true;
    std::vector<Job> jobs;
    std::vector<std::string> events;
    unsigned int wakes = 0;

    /// NULL to go by the two above.
    Clock const *clock = nullptr;
    RecordedLog log;
    Store store;
    Engine engine;
    Dispatcher dispatcher;
};

std::string readFile(std::string const &path);
void writeFile(std::string const &path, std::string_view contents);

}  // namespace simulator::tests

#endif
