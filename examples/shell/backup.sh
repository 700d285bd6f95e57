#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Saves the whole catalogue, with passwords, or brings it back: backup.sh save FILE | backup.sh restore FILE
# The file is readable by its owner only, and an older one stays until the new one is whole.
set -eu

word=${1:-}
file=${2:-}
case $word:$file in
    save:?*)
        umask 077
        trap 'rm -f "$file.new"' EXIT
        korvo-action-engine export --show-secrets >"$file.new"
        mv "$file.new" "$file"
        ;;
    restore:?*)
        korvo-action-engine import "$file" --replace
        [ -z "$(korvo-action-engine diff "$file" service)" ] || echo "backup.sh: somebody else changes the catalogue" >&2
        ;;
    *)
        echo "usage: backup.sh save FILE | backup.sh restore FILE" >&2
        exit 2
        ;;
esac
