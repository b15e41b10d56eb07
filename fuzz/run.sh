#!/usr/bin/env bash
# Builds a libFuzzer target with clang in its own build directory and fuzzes it for N seconds
# (default 600) over its seed corpus (new inputs go to a scratch folder): the XML layer (xml, the
# default), the catalogue's refresh (apps) or the ad network's reply reader (adconnect).
#   fuzz/run.sh [seconds] [build-dir] [xml|apps|adconnect]
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
seconds=${1:-600}
build=${2:-${TMPDIR:-/tmp}/zellick-build-fuzz}
target=${3:-xml}
case "$target" in
  xml) corpus="$here/corpus" ;;
  apps) corpus="$here/apps-corpus" ;;
  adconnect) corpus="$here/adconnect-corpus" ;;
  *) echo "usage: $0 [seconds] [build-dir] [xml|apps|adconnect]" >&2; exit 2 ;;
esac
CC=clang CXX=clang++ cmake -S "$here/.." -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j"$(nproc)" --target "${target}_fuzzer"
work="$build/fuzz-corpus-$target"
mkdir -p "$work" "$build/artifacts"
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
dict=()
[ -f "$here/$target.dict" ] && dict=(-dict="$here/$target.dict")
exec "$build/fuzz/${target}_fuzzer" -max_total_time="$seconds" -max_len=4096 -timeout=10 \
  -rss_limit_mb=4096 "${dict[@]}" -artifact_prefix="$build/artifacts/" -print_final_stats=1 \
  "$work" "$corpus"
