// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_AUTOMATION_H
#define KORVO_TESTS_END_TO_END_AUTOMATION_H

#include <string>

#include "support/client.h"

namespace end_to_end {

/// An ONVIF trigger bound to a PTZ preset action: each fire() makes the service publish one Action_completed.
class Automation {
  public:
    Automation(Client const &client, std::string name);

    void fire(Client const &client) const;

    unsigned int actionId() const { return action_id_; }
    unsigned int triggerId() const { return trigger_id_; }

  private:
    std::string topic_;
    unsigned int action_id_ = 0;
    unsigned int trigger_id_ = 0;
};

/// The number of actions that the service has; fails the test when it does not say.
unsigned int numberOfActions(Client const &client);

}  // namespace end_to_end

#endif
