#!/bin/sh
# Paired benchmark against du, ncdu and gdu; see compare-peers.py for the options.
exec python3 "$(dirname "$0")/compare-peers.py" "$@"
