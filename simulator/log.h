// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_LOG_H
#define KORVO_SIMULATOR_LOG_H

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "korvo_core.h"

namespace simulator {

/// Where the service writes what happens. As safe to share between threads as its sink is.
class Log {
  public:
    using Sink = std::function<void(korvo_core_log_priority, std::string const &)>;

    explicit Log(Sink sink) : sink_(std::move(sink)) {}

    void error(std::string const &text) const { sink_(KORVO_CORE_LOG_PRIORITY_ERR, text); }
    void warning(std::string const &text) const { sink_(KORVO_CORE_LOG_PRIORITY_WARNING, text); }
    /// What a person who tries an automation wants to see: actions that ran, and those that did not.
    void notice(std::string const &text) const { sink_(KORVO_CORE_LOG_PRIORITY_NOTICE, text); }
    void info(std::string const &text) const { sink_(KORVO_CORE_LOG_PRIORITY_INFO, text); }

  private:
    Sink sink_;
};

/// A client's text for a log line or an error: in double quotes, with escapes for what does not show, and cut when long.
std::string quoted(std::string_view text);

/// The beginning of a text, where it is longer than so many bytes; no character is cut in two.
std::string beginningOf(std::string_view text, std::size_t longest);

}  // namespace simulator

#endif
