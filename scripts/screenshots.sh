#!/usr/bin/env bash
# Draws the README's pictures (docs/*.png) from the real program, offscreen: the main window
# on the sandbox's demo company, an invoice as it is mailed, the import window with a
# vendor's invoice, the overdue reminders window and the preferences' pages. Needs a build with the window
# (scripts/setup.sh build).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cmake --build "$here/build" --target dorvane_screenshots >/dev/null
QT_QPA_PLATFORM=offscreen DORVANE_TODAY=${DORVANE_TODAY:-2026-11-18} \
  "$here/build/tools/dorvane_screenshots" "$here/docs"
