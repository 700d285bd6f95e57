// SPDX-License-Identifier: Apache-2.0
// The examples of docs/service.md, as they stand there: what was sent, and the piece of the trace that decided.
#include <gtest/gtest.h>

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "simulator/control/control.h"
#include "simulator/methods.h"
#include "support.h"
#include "time_zone.h"

namespace simulator::tests {

namespace {

struct WorkedExample {
    std::string title;
    std::vector<std::string> commands;
    std::string decides;
};

std::vector<WorkedExample> readExamples() {
    std::vector<WorkedExample> examples;
    std::istringstream document(readFile(SERVICE_DOCUMENT));
    std::string block;
    for (std::string line; std::getline(document, line);) {
        if (line.rfind("## ", 0) == 0) {
            examples.push_back({line.substr(3), {}, ""});
        } else if (line.rfind("```", 0) == 0) {
            block = line.substr(3);
        } else if (!examples.empty() && block == "json") {
            examples.back().commands.push_back(line);
        } else if (!examples.empty() && block == "text") {
            examples.back().decides += line;
        }
    }
    return examples;
}

/// The outcome of the last trace, and the first piece behind it: "OUTCOME: WHY".
std::string decisionIn(boost::json::object const &trace) {
    std::string const outcome(trace.at("outcome").as_string());
    if (trace.contains("refusal")) {
        return outcome + ": " + std::string(trace.at("refusal").as_string());
    }
    for (char const *const list : {"actions", "triggers"}) {
        for (auto const &entry : trace.at(list).as_array()) {
            char const *const member = list[0] == 'a' ? "window" : "why";
            if (entry.as_object().contains(member)) {
                return outcome + ": " + std::string(entry.at(member).as_string());
            }
        }
    }
    return outcome;
}

/// The service and its control, one minute before eight on a Monday.
class WorkedService {
  public:
    boost::json::object send(std::string const &command) {
        std::string const name(boost::json::parse(command).at("command").as_string());
        std::string answer;
        if (findMethod(name)) {
            answer = bench_.respond(command);
        } else {
            control_.answer(command, [&](std::string const &text) { answer = text; });
        }
        do {
            bench_.run();
        } while (control_.advance());
        return boost::json::parse(answer).as_object();
    }

  private:
    TimeZone zone_{berlin};
    Clock clock_{{true, readMoment("2026-11-23T07:59:00"), 0}};
    Bench bench_{clock_};
    TemporaryFolder folder_;
    runners::Runner runner_{{folder_.path(), folder_.path()},
                            [this] { return clock_.wall(); },
                            [this] { return clock_.now(); },
                            bench_.log.log()};
    Tape tape_{bench_.log.log()};
    control::Control control_{{bench_.engine, clock_, bench_.dispatcher.faults(), runner_, tape_, [] {}},
                              bench_.log.log()};
};

}  // namespace

TEST(WorkedExamples, AskWhyNotAndGetTheRightPiece) {
    std::vector<WorkedExample> const examples = readExamples();
    EXPECT_EQ(examples.size(), 10U);
    for (WorkedExample const &example : examples) {
        SCOPED_TRACE(example.title);
        ASSERT_GE(example.commands.size(), 4U);
        WorkedService service;
        for (std::string const &command : example.commands) {
            std::int64_t const status = service.send(command).at("status").to_number<std::int64_t>();
            EXPECT_EQ(status, example.decides.rfind("refused", 0) == 0 && &command == &example.commands.back()
                                  ? 9
                                  : 0)
                << command;
        }
        auto const answer = service.send(R"({"command":"Get_traces","limit":1})");
        ASSERT_EQ(answer.at("traces").as_array().size(), 1U);
        EXPECT_EQ(decisionIn(answer.at("traces").at(0).as_object()), example.decides);
    }
}

}  // namespace simulator::tests
