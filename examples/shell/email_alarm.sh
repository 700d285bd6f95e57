#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Motion that lasts five seconds sends an e-mail with a picture: email_alarm.sh SERVER FROM TO...
set -eu

if [ $# -lt 3 ]; then
    echo "usage: email_alarm.sh SERVER FROM TO..." >&2
    exit 2
fi
server=$1
from=$2
shift 2
# A setting that is a list is given once for each entry.
action="email action_name=alarm smtp_server=$server from_address=$from subject=Motion attach_jpeg=true include_event=true"
for address in "$@"; do
    action="$action to_addresses=$address"
done
korvo-action-engine rule add --name motion --stable 5 --topic tns1:RuleEngine/MotionRegionDetector/Motion \
    --content 'boolean(//tt:SimpleItem[@Name="State" and @Value="true"])' --action "$action"
