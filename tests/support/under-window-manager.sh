#!/bin/sh
# Runs a command on the current X display with openbox managing its windows, as on a desktop:
# titles, frames and placement are then those a user sees. openbox is waited for (a bounded wait
# for its claim on the display), and ended with the command.
openbox --sm-disable >/dev/null 2>&1 &
manager=$!
tries=0
while [ $tries -lt 200 ] && ! xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; do
  sleep 0.05
  tries=$((tries + 1))
done
"$@"
status=$?
kill "$manager" 2>/dev/null
wait "$manager" 2>/dev/null
exit $status
