#!/usr/bin/env bash
# Takes the pictures of the manual (docs/pictures) again, from the running program. Needs no display.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

tools/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target manual_pictures
mkdir -p docs/pictures
QUORVAN_SCREENSHOTS=docs/pictures QT_QPA_PLATFORM=offscreen build/release/bin/manual_pictures
