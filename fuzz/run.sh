#!/usr/bin/env bash
# Builds the libFuzzer target with clang in its own build directory and fuzzes the XML
# layer for N seconds (default 600) over fuzz/corpus (new inputs go to a scratch folder).
#   fuzz/run.sh [seconds] [build-dir]
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
seconds=${1:-600}
build=${2:-${TMPDIR:-/tmp}/zellick-build-fuzz}
CC=clang CXX=clang++ cmake -S "$here/.." -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j"$(nproc)" --target xml_fuzzer
work="$build/fuzz-corpus"
mkdir -p "$work" "$build/artifacts"
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
exec "$build/fuzz/xml_fuzzer" -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=4096 \
  -artifact_prefix="$build/artifacts/" -print_final_stats=1 "$work" "$here/corpus"
