// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_UNDO_H
#define KORVO_TOOL_UNDO_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tool {

/// Steps that belong together: each says how it is undone, and when one fails all before it are, the last first.
class Steps {
  public:
    /// What undoes the step that was just done, and its name: "the new action 7".
    void done(std::string what, std::function<void()> undo) {
        done_.emplace_back(std::move(what), std::move(undo));
    }

    /// Runs `work`, between whose steps the user may interrupt. On a failure it throws that again, with what was undone, and
    /// what could not be, added to it.
    void run(std::function<void()> const &work);

  private:
    std::vector<std::pair<std::string, std::function<void()>>> done_;
};

}  // namespace tool

#endif
