// SPDX-License-Identifier: Apache-2.0
#include "support/automation.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/operation.h"

namespace end_to_end {

namespace {

char key[] = "tns1";
char uri[] = "http://www.onvif.org/ver10/topics";
char *keys[] = {key, nullptr};
char *uris[] = {uri, nullptr};

}  // namespace

Automation::Automation(Client const &client, std::string name) : topic_("tns1:Test/" + std::move(name)) {
    void *const handle = client.handle();
    EXPECT_EQ(korvo_api_action_engine_create_ptz_preset_action_send(handle, nullptr, topic_.c_str(), "gate",
                                                                    &action_id_),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_api_action_engine_create_onvif_trigger_send(
                  handle, nullptr, topic_.c_str(), topic_.c_str(), "", "", keys, uris, &trigger_id_),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_api_action_engine_create_association_send(handle, nullptr, trigger_id_, action_id_),
              KORVO_CORE_STATUS_NO_ERROR);
}

void Automation::fire(Client const &client) const {
    EXPECT_EQ(korvo_api_action_engine_onvif_event_send(client.handle(), nullptr, topic_.c_str(), "<fired/>",
                                                       keys, uris),
              KORVO_CORE_STATUS_NO_ERROR);
}

unsigned int numberOfActions(Client const &client) {
    Answer const answer = operation("get_action_counts").send(client.handle(), nullptr, {});
    EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR);
    return answer.results.empty() ? 0 : std::get<Number>(answer.results[0]);
}

}  // namespace end_to_end
