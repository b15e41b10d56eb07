#!/usr/bin/env bash
# Prints "first frame" once PROGRAM has shown its first frame, then ends it with SIGTERM and
# exits with its status: lets the start-up bench time a program without a hook of its own, such
# as the installed app. Qt Quick's render loop logs each frame once it is swapped, when asked.
#   first_frame_from_log.sh PROGRAM [ARGS...]
set -uo pipefail
export QT_LOGGING_RULES="qt.scenegraph.time.renderloop.debug=true"
coproc APP { exec "$@" 2>&1 >/dev/null; }
app_pid=$APP_PID
while IFS= read -r line <&"${APP[0]}"; do
  [[ $line == *"Frame rendered"* ]] || continue
  echo "first frame"
  kill -TERM "$app_pid"
  wait "$app_pid"
  exit
done
wait "$app_pid"
exit 1
