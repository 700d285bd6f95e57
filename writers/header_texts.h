// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_WRITERS_HEADER_TEXTS_H
#define KORVO_WRITERS_HEADER_TEXTS_H

// What the comments of the C headers say. They are the one place where operations are explained.

#include <map>
#include <string>
#include <vector>

namespace korvo::writers {

/// The comment in front of a function.
struct Explanation {
    std::vector<std::string> lines;            // what stands before the first heading
    std::map<std::string, std::string> names;  // of inputs and results
    std::string statuses;
};

class HeaderTexts {
  public:
    void read(std::string const &header);

    /// Empty where the header says nothing.
    Explanation const &function(std::string const &name) const;
    std::string constant(std::string const &name) const;

  private:
    void readFunctions(std::vector<std::string> const &lines);
    void readStatuses(std::vector<std::string> const &lines);
    void readEnumerators(std::string const &text);

    std::map<std::string, Explanation> functions_;
    std::map<std::string, std::string> constants_;
};

}  // namespace korvo::writers

#endif
