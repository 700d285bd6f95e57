#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# An input of the camera opens the gate, in office hours only: relay_office_hours.sh [RELAY]
# Trigger, action, hours and binding are made in one go: when one fails, none of them is left.
set -eu

relay=${1:-relay_1}
korvo-action-engine rule add --name "door bell" --topic "tns1:Device/Trigger//." \
    --content 'boolean(//tt:SimpleItem[@Name="LogicalState" and @Value="true"])' \
    --action "relay action_name=\"open the gate\" relay_target=$relay config_mode=1 config_repeat_cycles=1 config_on_time_ms=500" \
    --filter "Mon-Fri 08:00-12:00" --filter "Mon-Fri 13:00-17:00"
korvo-action-engine filters preview "open the gate"
