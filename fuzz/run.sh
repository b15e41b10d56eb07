#!/usr/bin/env bash
# Builds a libFuzzer target with clang in its own build directory and fuzzes it for N seconds
# (default 600) over its seed corpus (new inputs go to a scratch folder): xml_fuzzer (the XML
# layer, fuzz/corpus, the default) or adconnect_fuzzer (the ad network's reply reader,
# fuzz/adconnect-corpus).
#   fuzz/run.sh [seconds] [build-dir] [target]
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
seconds=${1:-600}
build=${2:-${TMPDIR:-/tmp}/zellick-build-fuzz}
target=${3:-xml_fuzzer}
case "$target" in
  xml_fuzzer) corpus="$here/corpus" ;;
  adconnect_fuzzer) corpus="$here/adconnect-corpus" ;;
  *) echo "unknown target $target" >&2; exit 2 ;;
esac
CC=clang CXX=clang++ cmake -S "$here/.." -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j"$(nproc)" --target "$target"
work="$build/$target-corpus"
mkdir -p "$work" "$build/artifacts"
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
dict=()
[ -f "$here/${target%_fuzzer}.dict" ] && dict=(-dict="$here/${target%_fuzzer}.dict")
exec "$build/fuzz/$target" -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=4096 \
  "${dict[@]}" -artifact_prefix="$build/artifacts/" -print_final_stats=1 "$work" "$corpus"
