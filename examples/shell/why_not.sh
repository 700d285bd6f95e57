#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Finds out why a trigger's actions did not run: why_not.sh TRIGGER
# With a service that keeps traces, as korvo-action-engine-simulator does.
set -eu

if [ $# -ne 1 ]; then
    echo "usage: why_not.sh TRIGGER" >&2
    exit 2
fi
shown=$(korvo-action-engine show "$1" --json)
trigger=$(echo "$shown" | jq '.[] | select(.kind | endswith("_trigger"))')
id=$(echo "$trigger" | jq .id)
if [ "$(echo "$trigger" | jq '.action_id | length')" -eq 0 ]; then
    echo "Nothing is bound to trigger $id: see korvo-action-engine create-association --help"
fi
# One trace a line, the last one last; of other triggers and their actions it tells too.
traces=$(korvo-action-engine why --trigger "$id" --json)
last=$(echo "$traces" | tail -n 1 | jq --argjson id "$id" \
    '.triggers |= map(select(.trigger_id == $id)) | .actions |= map(select(.trigger_id == $id))')
if [ -z "$last" ]; then
    echo "No event and no timer has met trigger $id: is the service told of events?"
    exit 0
fi
echo "$last" | jq -r '"It ended with: \(.outcome)",
    (.triggers[] | select(.why) | "trigger \(.trigger_id): \(.verdict), \(.why)"),
    (.actions[] | select(.verdict != "succeeded") | "action \(.action_id): \(.verdict), \(.window // .words // "")")'
# The hours of what was held back.
for action in $(echo "$last" | jq '.actions[] | select(.verdict == "held back") | .action_id'); do
    korvo-action-engine filters preview "$action"
done
