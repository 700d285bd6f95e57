// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_RULE_H
#define KORVO_TOOL_RULE_H

// Making and taking away actions, triggers and bindings, each step with its way back.

#include <boost/json/object.hpp>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tool/catalogue.h"
#include "tool/undo.h"

namespace tool {

class RuleSteps {
  public:
    explicit RuleSteps(Client &client) : client_(&client) {}

    /// Each gives the identifier.
    unsigned int create(std::string const &kind, boost::json::object const &settings);
    void modify(Entry const &before, boost::json::object const &settings);
    void setFilters(unsigned int action_id, boost::json::object const &filters,
                    boost::json::object const &before);
    void bind(unsigned int trigger_id, unsigned int action_id);
    void unbind(unsigned int trigger_id, unsigned int action_id);
    /// Undone by making it anew, with the bindings it had: its identifier is another one then.
    void remove(Catalogue const &catalogue, Entry const &entry);

    void run(std::function<void()> const &work) { steps_.run(work); }

  private:
    unsigned int make(std::string const &kind, boost::json::object const &settings);

    Client *client_;
    Steps steps_;
    /// Actions (true) and triggers by the identifiers they had.
    std::set<std::pair<bool, unsigned int>> removed_;
    std::map<std::pair<bool, unsigned int>, unsigned int> made_again_;
};

/// Settings of a kind from words like "snapshot action_name=door filename=door.jpg": what is left out is empty, 0 or false.
/// The kind may go without its "_action". A value with blanks stands in double quotes. Throws a Failure that names the option.
struct Described {
    std::string kind;
    boost::json::object settings;
};
Described actionOf(std::string const &option, std::string const &words);

}  // namespace tool

#endif
