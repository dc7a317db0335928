#!/usr/bin/env bash
# Usage: runtests.sh ROOT. scripts/run-tests counts each outcome of a test, and fails exactly if one failed or none ran.
set -euo pipefail
root=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# expect STATUS LINE: what the suite in CTestTestfile.cmake must come to.
expect() {
  local output
  local status=0
  output=$("$root/scripts/run-tests" "$folder" --test-dir "$folder") || status=$?
  [ $((status != 0)) -eq "$1" ] && [ "${output##*$'\n'}" = "$2" ] || {
    printf 'Expected "%s" and status %s, but got %s and:\n%s\n' "$2" "$1" "$status" "$output"
    exit 1
  }
}

# suite LINE...: the suite is these lines.
suite() {
  printf '%s\n' "$@" >"$folder/CTestTestfile.cmake"
}

passing='add_test(passing true)'
failing='add_test(failing false)'
skipped='add_test(skipped sh -c "exit 77")
set_tests_properties(skipped PROPERTIES SKIP_RETURN_CODE 77)'
skippedByText='add_test(skipped_by_text echo "[  SKIPPED ] Case")
set_tests_properties(skipped_by_text PROPERTIES SKIP_REGULAR_EXPRESSION "SKIPPED")'
disabled='add_test(disabled true)
set_tests_properties(disabled PROPERTIES DISABLED ON)'
missing='add_test(missing /nowhere/program)'

suite "$passing" "$failing" "$skipped" "$missing"
expect 1 "1 passed, 2 failed, 1 skipped"
suite "$passing" "$skipped" "$skippedByText" "$disabled"
expect 0 "1 passed, 0 failed, 3 skipped"
suite "$passing" "$missing"
expect 1 "1 passed, 1 failed, 0 skipped"
suite
expect 1 "0 passed, 1 failed, 0 skipped"
suite 'message(FATAL_ERROR)'
expect 1 "0 passed, 1 failed, 0 skipped"
