#!/usr/bin/env bash
# Runs a command on a virtual display of its own, under a small window manager. The environment of the
# command names the process of the window manager, QUORVAN_WINDOW_MANAGER. The exit status is that of the
# command. QUORVAN_MANAGER names another window manager than openbox, for example xfwm4.
set -euo pipefail

# Starts the display, and this script once more on it.
if [[ -z ${QUORVAN_DESKTOP-} ]]; then
  QUORVAN_DESKTOP=1 exec xvfb-run --auto-servernum --server-args='-screen 0 2200x1400x24 -nolisten tcp' "$0" "$@"
fi

${QUORVAN_MANAGER:-openbox} >/dev/null 2>&1 &
export QUORVAN_WINDOW_MANAGER=$! QT_QPA_PLATFORM=xcb
for ((i = 0; i < 100; ++i)); do
  if xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; then break; fi
  sleep 0.1
done

status=0
"$@" || status=$?
kill -CONT "$QUORVAN_WINDOW_MANAGER"
kill "$QUORVAN_WINDOW_MANAGER"
exit "$status"
