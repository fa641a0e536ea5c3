#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The long runs, to be started on a machine that does nothing else: exhaustive sweeps, ten minutes of fuzzing
# a target, benchmarks and coverage.
#
#   scripts/nightly.sh [--no-install] [sweeps|fuzz|bench|coverage...]
#
# Without a name all are run. Figures are written to build/nightly.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

install=() parts=()
for argument in "$@"; do
  case "$argument" in
    --no-install) install=(--no-install) ;;
    sweeps | fuzz | bench | coverage) parts+=("$argument") ;;
    *)
      sed -n '3,8s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
      exit 2
      ;;
  esac
done
if ((${#parts[@]} == 0)); then parts=(sweeps bench fuzz coverage); fi
need_packages "${install[@]}" build test check bench coverage
mkdir -p build/nightly

# The release build with the tests that shorten themselves by day told not to.
run_sweeps() {
  cmake --preset release && cmake --build --preset release || return 1
  MARLO_NIGHTLY=1 ctest --preset release --output-junit "$PWD/build/nightly/sweeps.xml"
}

run_fuzz() {
  scripts/fuzz.sh 600 --no-install 2>&1 | tee build/nightly/fuzz.txt
}

run_bench() {
  local bench broken=0
  cmake --preset release && cmake --build --preset release || return 1
  : >build/nightly/bench.txt
  while read -r bench; do
    echo "== $bench" | tee -a build/nightly/bench.txt
    "build/release/bin/$bench" 2>&1 | tee -a build/nightly/bench.txt || broken=1
  done <build/release/marlo_benches.txt
  return $broken
}

run_coverage() {
  cmake --preset coverage && cmake --build --preset coverage || return 1
  find build/coverage -name '*.gcda' -delete
  ctest --preset coverage || return 1
  gcovr --root . --filter 'src/' --branches --exclude-throw-branches --exclude-unreachable-branches \
    --txt build/nightly/coverage.txt --xml build/nightly/coverage.xml --print-summary build/coverage
}

failed=()
for part in "${parts[@]}"; do
  echo "==== $part"
  "run_$part" || failed+=("$part")
done
if ((${#failed[@]} > 0)); then
  echo "Failed: ${failed[*]}"
  exit 1
fi
