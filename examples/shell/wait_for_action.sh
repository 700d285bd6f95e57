#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Waits until an action has run, and tells whether it worked: wait_for_action.sh ACTION [TIME]
# Exit code 0: it worked. 1: it ran and failed. Others are the tool's: 3 that it did not run in time.
set -eu

if [ $# -lt 1 ]; then
    echo "usage: wait_for_action.sh ACTION [TIME]" >&2
    exit 2
fi
code=0
event=$(korvo-action-engine wait-event --action "$1" --timeout "${2:-1m}" --json) || code=$?
case $code in
    0) ;;
    3)
        # Where the service keeps traces it tells what it knows of this action.
        korvo-action-engine why --action "$1" >&2 || true
        exit 3
        ;;
    *) exit "$code" ;;
esac
[ "$(echo "$event" | jq .success)" = true ] || { echo "wait_for_action.sh: $1 has failed" >&2; exit 1; }
