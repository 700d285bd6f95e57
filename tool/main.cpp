// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tool/command_line.h"
#include "tool/failure.h"
#include "tool/interruption.h"

namespace {

using tool::Exit;

int end(tool::Failure const &failure, bool as_json) {
    if (as_json) {
        boost::json::object error = {{"exit_code", static_cast<int>(failure.code())},
                                     {"kind", nameOf(failure.code())},
                                     {"text", failure.what()},
                                     {"advice", failure.advice()}};
        if (failure.status() >= 0) {
            error["status"] = failure.status();
        }
        std::cerr << boost::json::serialize(boost::json::value{{"error", error}}) << "\n";
    } else {
        std::cerr << tool::program << ": " << failure.what() << "\n";
        if (!failure.advice().empty()) {
            std::cerr << "  " << failure.advice() << "\n";
        }
    }
    return static_cast<int>(failure.code());
}

int run(std::vector<std::string> const &words) {
    auto const chosen = tool::parse(words);
    if (!chosen) {
        return static_cast<int>(Exit::done);
    }
    // The library's lines are for those who ask for them; where they do, the user's own level holds.
    if (!chosen->settings.verbose) {
        (void)::setenv("KORVO_LOG_LEVEL", "emerg", /*overwrite*/ 1);
    }
    tool::Context context(chosen->settings, chosen->arguments);
    chosen->command->run(context);
    return static_cast<int>(Exit::done);
}

}  // namespace

int main(int count, char **words) {
    std::vector<std::string> const given(words + std::min(count, 1), words + count);
    bool const as_json = std::find(given.begin(), given.end(), "--json") != given.end();
    try {
        tool::interruption::prepare();
        return run(given);
    } catch (tool::ReaderGone const &) {
        return static_cast<int>(Exit::done);
    } catch (tool::Failure const &failure) {
        return end(failure, as_json);
    } catch (std::exception const &problem) {
        return end(tool::Failure(Exit::other, problem.what()), as_json);
    }
}
