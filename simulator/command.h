// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_COMMAND_H
#define KORVO_SIMULATOR_COMMAND_H

#include <boost/json/basic_parser.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parser.hpp>
#include <boost/json/value.hpp>
#include <cstddef>
#include <optional>
#include <string_view>

#include "simulator/values.h"

namespace simulator {

/// Reads commands, one after the other, into memory that is used again for each. For one thread at a time.
class CommandReader {
  public:
    CommandReader();

    CommandReader(CommandReader const &) = delete;
    CommandReader &operator=(CommandReader const &) = delete;

    /// Takes a command's text in. Afterwards name() tells what its "command" is, as far as there is one. Throws Refused:
    /// status 1 for what is no JSON object or has no text as "command", status 8 for a method that the service does not
    /// have.
    void read(std::string_view text);

    /// The "command" of the command that was read last, empty when it has none. Valid until the next read().
    std::string_view name() const { return name_; }

    /// The method of the command that was read last; only after a read() that succeeded.
    std::size_t method() const { return *method_; }

    /// Reads the inputs of the method, as readMembers() does. They stay valid, and may be moved from, until the next call.
    Values &inputs();

  private:
    unsigned char parser_memory_[4096];
    unsigned char value_memory_[16384];
    std::optional<boost::json::monotonic_resource> resource_;
    boost::json::parser parser_;
    std::optional<boost::json::value> value_;
    std::string_view name_;
    std::optional<std::size_t> method_;
    Values inputs_;
};

}  // namespace simulator

#endif
