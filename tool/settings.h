// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_SETTINGS_H
#define KORVO_TOOL_SETTINGS_H

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tool {

/// The options that every command takes.
struct Settings {
    bool json = false;
    bool show_secrets = false;
    bool verbose = false;
    /// Of each call; nothing waits without limit.
    std::optional<std::chrono::milliseconds> timeout = std::chrono::seconds(5);
    bool timeout_given = false;
    /// Empty is the default target.
    std::string target;
    std::optional<std::pair<unsigned int, unsigned int>> required_version;
};

/// What was given to one command: words by the names of its parameters.
class Arguments {
  public:
    void add(std::string const &name, std::vector<std::string> words) { given_[name] = std::move(words); }

    bool has(std::string const &name) const { return given_.count(name) != 0; }
    /// Empty when nothing was given.
    std::string text(std::string const &name) const;
    std::vector<std::string> const &texts(std::string const &name) const;
    /// Throw a Failure that names the parameter when the word is no such number.
    unsigned int number(std::string const &name) const;
    std::vector<unsigned int> numbers(std::string const &name) const;
    bool flag(std::string const &name) const;

  private:
    std::map<std::string, std::vector<std::string>> given_;
};

/// "5s", "250ms", "2m", "1h", or "forever": nothing. Throws a Failure that names the option for anything else.
std::optional<std::chrono::milliseconds> durationOf(std::string const &option, std::string const &word);
/// A whole number from 0 to 4294967295.
unsigned int numberOf(std::string const &option, std::string const &word);

}  // namespace tool

#endif
