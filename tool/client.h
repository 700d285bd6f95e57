// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_CLIENT_H
#define KORVO_TOOL_CLIENT_H

#include <boost/json/object.hpp>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tool/operations.h"
#include "tool/settings.h"

namespace tool {

/// The service, by the public C functions. What fails throws a Failure that has found out why.
class Client {
  public:
    explicit Client(Settings const &settings, bool subscribe_events = false);
    ~Client();
    Client(Client const &) = delete;
    Client &operator=(Client const &) = delete;

    void *handle() const { return handle_; }

    /// Waits for the results.
    boost::json::object call(Operation const &operation, boost::json::object const &inputs = {});

    struct Call {
        Operation const *operation;
        boost::json::object inputs;
    };
    /// Many calls, a bounded number of them on their way at a time. `done` gets the place of each and its results, in
    /// order. A refused call, as of an action that was deleted meanwhile, gives nothing.
    void callAll(std::vector<Call> const &calls,
                 std::function<void(std::size_t, std::optional<boost::json::object>)> const &done);

    std::pair<unsigned int, unsigned int> serviceVersion();
    /// Throws a Failure where the settings ask for another version than the service's.
    void requireVersion();

  private:
    struct Request;

    char const *target() const { return settings_->target.empty() ? nullptr : settings_->target.c_str(); }
    void send(Request &request, boost::json::object const &inputs);
    boost::json::object receive(Request &request);
    /// The status of an answer to what was sent then, which `receive` waits for so long. Throws a Failure at an interruption,
    /// and when the time is over, with `late` behind what was not answered.
    korvo_core_status await(std::string const &what, std::string const &late,
                            std::chrono::steady_clock::time_point sent,
                            std::function<korvo_core_status(std::chrono::milliseconds)> const &receive) const;
    [[noreturn]] void fail(Operation const &operation, boost::json::object const &inputs,
                           korvo_core_status status);
    bool isListed(std::string const &member, unsigned int identifier);
    bool isThere();

    Settings const *settings_;
    void *logging_ = nullptr;
    void *handle_ = nullptr;
};

/// Throws a Failure when the folder where services are met is not the user's own.
void checkRuntimeFolder();
/// The Failure for a service that cannot be reached.
[[noreturn]] void failWithoutService(Settings const &settings, char const *service);

}  // namespace tool

#endif
