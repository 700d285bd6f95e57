// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_CONTROL_H
#define KORVO_TOOL_CONTROL_H

#include <boost/json/object.hpp>
#include <memory>
#include <string>

#include "korvo_core.h"
#include "tool/events.h"
#include "tool/settings.h"

namespace tool {

/// The service action_engine_simulator, by which a service for development machines is questioned and moved. It takes JSON
/// as docs/simulator-control.md has it, over the messaging of korvo_core.h.
class Control {
  public:
    explicit Control(Settings const &settings);
    ~Control();
    Control(Control const &) = delete;
    Control &operator=(Control const &) = delete;

    /// The answer's members. Throws a Failure with the service's reason when it refuses.
    boost::json::object ask(std::string const &command, boost::json::object members = {});
    /// Events go there from now on, as their JSON texts.
    void subscribe(Waiter &waiter);

  private:
    char const *target() const { return settings_->target.empty() ? nullptr : settings_->target.c_str(); }
    [[noreturn]] void fail(std::string const &command, korvo_core_status status);
    std::string receive(std::string const &command, std::string const &request);

    Settings const *settings_;
    void *logging_ = nullptr;
    void *messaging_ = nullptr;
    unsigned int requests_ = 0;
};

/// Nothing where no service for development machines is running.
std::unique_ptr<Control> controlIfThere(Settings const &settings);

}  // namespace tool

#endif
