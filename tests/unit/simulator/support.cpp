// SPDX-License-Identifier: Apache-2.0
#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <fstream>
#include <iterator>

#include "live_blocks/live_blocks.h"

namespace simulator::tests {

void RecordedLog::keep(korvo_core_log_priority priority, std::string const &text) {
    live_blocks::Unnoticed const own;
    lines.push_back(std::to_string(priority) + " " + text);
}

bool RecordedLog::holds(std::string const &part) const {
    return std::any_of(lines.begin(), lines.end(),
                       [&](std::string const &line) { return line.find(part) != std::string::npos; });
}

Bench::Bench(std::string const &store_path, Dispatcher::Settings settings, Catalogue::Rules const &rules,
             Engine::Settings const &engine_settings)
    : store(store_path),
      engine(Catalogue(store, rules),
             {[this] { return clock == nullptr ? now : clock->now(); },
              [this] { return clock == nullptr ? Wall(std::chrono::seconds(1795417140)) : clock->wall(); },
              [this] { return clock == nullptr ? local_time : clock->local(); },
              [this](Job const &job, auto const &done) {
                  live_blocks::Unnoticed const own;
                  jobs.push_back(job);
                  done({actions_succeed, actions_succeed ? "done" : "it is broken"});
              },
              [this](std::string const &event) {
                  live_blocks::Unnoticed const own;
                  events.push_back(event);
              },
              [this] { ++wakes; }},
             log.log(), engine_settings),
      dispatcher(engine, settings, log.log(), [this] { return now; }) {}

Bench::Bench(Clock const &the_clock) : Bench() {
    clock = &the_clock;
}

std::string Bench::respond(std::string_view command) {
    return dispatcher.answer(command).text;
}

boost::json::object Bench::answer(std::string_view command) {
    std::string const text = respond(command);
    return boost::json::parse(text).as_object();
}

std::int64_t Bench::status(std::string_view command) {
    return answer(command).at("status").as_int64();
}

std::int64_t Bench::number(std::string_view command, char const *member) {
    boost::json::object const response = answer(command);
    EXPECT_EQ(response.at("status").as_int64(), 0) << command;
    return response.contains(member) ? response.at(member).as_int64() : -1;
}

std::vector<std::uint32_t> Bench::run() {
    std::size_t const before = jobs.size();
    while (engine.step()) {
    }
    std::vector<std::uint32_t> ran;
    for (std::size_t n = before; n < jobs.size(); ++n) {
        ran.push_back(jobs[n].action_id);
    }
    return ran;
}

std::string readFile(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void writeFile(std::string const &path, std::string_view contents) {
    std::ofstream file(path, std::ios::binary);
    file << contents;
}

}  // namespace simulator::tests
