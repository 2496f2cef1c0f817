#!/usr/bin/env bash
# Kills the application with SIGKILL at random moments while it autosaves a large sermon, many
# times over, and checks that the file is always one whole version: never cut, never mixed.
# Not part of `make test` (it takes a minute); run it after `make test` has built the tests:
#   scripts/kill-during-autosave.sh [ROUNDS]
set -euo pipefail
cd "$(dirname "$0")/.."
rounds=${1:-30}
child=build/test/tests/AbruptEndingTest
[ -x "$child" ] || { echo "build the tests first (make test)"; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
file=$work/sermon.md
body=$(for i in $(seq 1 4000); do printf 'A spoken line, number %d, long enough to take some room.\n' "$i"; done)
printf '# Edit 0\n\n%s\n' "$body" >"$file"
expected_tail=$(tail -n +2 "$file" | md5sum)
bad=0
for round in $(seq 1 "$rounds"); do
  HOME=$work XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config QT_QPA_PLATFORM=offscreen \
    ASAN_OPTIONS=detect_leaks=0 ORANTIUM_CHILD_FILE=$file ORANTIUM_CHILD_AUTOSAVE_MS=1 \
    ORANTIUM_CHILD_KEEP_EDITING=1 \
    "$child" --gtest_also_run_disabled_tests --gtest_filter=DISABLED_AbruptEndingChild.Run >/dev/null 2>&1 &
  pid=$!
  sleep "$(( RANDOM % 2 + 1 )).$(( RANDOM % 10 ))"
  kill -9 "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  first=$(head -n 1 "$file")
  if [[ ! "$first" =~ ^#\ (Edit\ [0-9]+|Typed\ just\ before\ the\ end)$ ]] || [ "$(tail -n +2 "$file" | md5sum)" != "$expected_tail" ]; then
    echo "round $round: the file is neither an old nor a new version (first line: $first)"
    bad=$((bad + 1))
  fi
  leftovers=$(find "$work" -maxdepth 1 -name '.sermon.md.*' | wc -l)
  [ "$leftovers" -eq 0 ] || rm -f "$work"/.sermon.md.*
  echo "round $round: $first, temporary files left by the kill: $leftovers"
done
echo "$rounds kills, $bad broken files"
[ "$bad" -eq 0 ]
