#!/bin/sh
# Paired benchmark of velmora bench against fio; see compare-fio.py for the options.
exec python3 "$(dirname "$0")/compare-fio.py" "$@"
