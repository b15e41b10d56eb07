#!/usr/bin/env bash
# Installs into a scratch DESTDIR, under another prefix than the package's, and starts the
# installed app from there offscreen, with nothing pointing it at the build tree. It must show
# its first frame (its first usage record, which waits for that frame, reaches a stand-in
# server), serve the default window from the shipped artwork in its installed bundle (nothing
# rendered into its empty artwork cache), load its installed audio module (no line about it),
# and save its settings when SIGTERM ends it. Before that, without any display, --version names
# the version and --help lists every environment variable the README does.
#   installed_app_test.sh CMAKE BUILD_DIR ZELLICK_SERVICES README VERSION
set -euo pipefail
cmake=$1 build=$2 services=$3 readme=$4 version=$5

work=$(mktemp -d)
services_pid= app_pid=
cleanup() {
  for pid in $app_pid $services_pid; do kill "$pid" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
fail() {
  echo "FAIL: $*" >&2
  if [ -s "$work/app.log" ]; then sed 's/^/  app: /' "$work/app.log" >&2; fi
  exit 1
}
# Waits up to $1 tenths of a second for the command after it to succeed.
wait_for() {
  local tenths=$1
  shift
  for ((i = 0; i < tenths; i++)); do
    "$@" && return 0
    sleep 0.1
  done
  return 1
}

prefix=/opt/zellick
DESTDIR="$work/root" "$cmake" --install "$build" --prefix "$prefix" >/dev/null
app="$work/root$prefix/bin/zellick"
[ -x "$app" ] || fail "nothing installed at $prefix/bin/zellick"

headless=(env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM)
answer=$("${headless[@]}" "$app" --version) || fail "--version failed without a display"
[ "$answer" = "Zellick $version" ] || fail "--version said \"$answer\""
help=$("${headless[@]}" "$app" --help) || fail "--help failed without a display"
listed=$(sed -n '/^## Environment/,/^## [^E]/p' "$readme" | grep -o 'ZELLICK_[A-Z_]*' | sort -u)
[ -n "$listed" ] || fail "no variable found in the README's Environment section"
for name in $listed; do
  grep -q "^  $name " <<<"$help" || fail "--help does not list $name"
done

"$services" --records "$work/records.txt" >"$work/services.out" 2>/dev/null &
services_pid=$!
wait_for 100 grep -qs 'listening on' "$work/services.out" || fail "the stand-in server did not start"
url=$(sed -n 's/.*listening on \(http[^ ]*\).*/\1/p' "$work/services.out")

mkdir -p "$work/home" "$work/artwork"
env -u ZELLICK_BUNDLE -u ZELLICK_AUDIO_MODULE -u ZELLICK_NO_AUDIO \
  -u ZELLICK_AD_PRIMARY_URL -u ZELLICK_AD_FALLBACK_URL -u QT_QUICK_BACKEND \
  HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_CACHE_HOME="$work/home/.cache" \
  QT_QPA_PLATFORM=offscreen ZELLICK_SETTINGS="$work/defaults.ini" \
  ZELLICK_ARTWORK_CACHE="$work/artwork" ZELLICK_MAKER_URL="$url" \
  "$app" >/dev/null 2>"$work/app.log" &
app_pid=$!

shown() { [ -s "$work/records.txt" ] || ! kill -0 "$app_pid" 2>/dev/null; }
wait_for 300 shown || fail "no usage record within 30 s: no first frame"
kill -0 "$app_pid" 2>/dev/null || fail "the app ended on its own"
# The pressed pictures load a moment after the first frame.
sleep 2
kill -TERM "$app_pid"
status=0
wait "$app_pid" || status=$?
app_pid=

[ "$status" -eq 0 ] || fail "the app exited with $status on SIGTERM"
grep -q 'tag=' "$work/records.txt" || fail "the stand-in received no usage record"
if grep -q 'audio module' "$work/app.log"; then fail "the installed audio module did not load"; fi
rendered=$(ls -A "$work/artwork")
[ -z "$rendered" ] || fail "rendered artwork the installed bundle should have served: $rendered"
[ -s "$work/defaults.ini" ] || fail "no settings saved"
echo "the installed app ran from $prefix under DESTDIR: first frame, bundle, audio module, save"
