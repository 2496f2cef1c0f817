#!/usr/bin/env bash
# Runs each libFuzzer target for FUZZ_SECONDS (default 60); fails on the first finding.
set -euo pipefail
seconds=${FUZZ_SECONDS:-60}
mkdir -p build/fuzz/corpus
for target in build/fuzz/tests/fuzz/fuzz_*; do
  [ -f "$target" ] && [ -x "$target" ] || continue
  name=$(basename "$target")
  corpus=build/fuzz/corpus/$name
  mkdir -p "$corpus"
  echo "== $name for $seconds s"
  if ! "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 -max_len=65536 \
      "$corpus" examples tests/fuzz/seeds >"build/fuzz/$name.log" 2>&1; then
    tail -n 40 "build/fuzz/$name.log"
    echo "$name found a fault; the input is saved as crash-* / timeout-* in $(pwd)"
    exit 1
  fi
  tail -n 1 "build/fuzz/$name.log"
done
