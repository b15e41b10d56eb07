#!/usr/bin/env bash
# Starts the app with accessibility on, in its own X server and session bus (run it under
# dbus-run-session), and checks its accessible tree with atspi_check.py.
# Usage: run_atspi.sh APP CHECK_SCRIPT
set -u
app=$1
check=$2
home=$(mktemp -d)
trap 'kill $app_pid $bus_pid $x_pid 2>/dev/null; wait 2>/dev/null; rm -rf "$home"' EXIT

# The server picks a free display and writes its number once it takes connections.
mkfifo "$home/display"
Xvfb -displayfd 3 -screen 0 720x1280x24 -nolisten tcp 3>"$home/display" >"$home/x.log" 2>&1 &
x_pid=$!
read -r -t 20 number <"$home/display" || { echo "Xvfb did not start"; cat "$home/x.log"; exit 1; }
export DISPLAY=:$number
for _ in $(seq 50); do [ -S "/tmp/.X11-unix/X$number" ] && break; sleep 0.1; done
/usr/libexec/at-spi-bus-launcher --launch-immediately >/dev/null 2>&1 &
bus_pid=$!

export QT_QPA_PLATFORM=xcb QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 ZELLICK_NO_AUDIO=1
export ZELLICK_SETTINGS=$home/defaults.ini XDG_CONFIG_HOME=$home/config \
  XDG_DATA_HOME=$home/data XDG_CACHE_HOME=$home/cache ZELLICK_MAKER_URL=http://127.0.0.1:9/
# Once in a loaded run the first connection to a fresh server has failed; a start that ends
# within a second on that error is made again, once, and said so.
"$app" --no-usage-records >"$home/app.log" 2>&1 &
app_pid=$!
sleep 1
if ! kill -0 $app_pid 2>/dev/null && grep -q "could not connect to display" "$home/app.log"; then
  echo "the app could not reach the display at first; started again"
  "$app" --no-usage-records >"$home/app.log" 2>&1 &
  app_pid=$!
fi
/usr/bin/python3 "$check"
status=$?
[ $status -eq 0 ] || sed "s/^/app: /" "$home/app.log" "$home/x.log"
exit $status
