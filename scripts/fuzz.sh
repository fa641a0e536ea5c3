#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs every fuzz target, or those named, for a number of seconds each.
#
#   scripts/fuzz.sh SECONDS [--no-install] [--keep] [target...]
#
# Starts from the kept corpus, fuzz/corpus/TARGET; a target without one is an error. New inputs gather in
# build/fuzz/corpus, and --keep then adds to the kept corpus those that reach further. What breaks a target
# is written to build/fuzz/findings.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

seconds=${1:-}
if ! [[ "$seconds" =~ ^[1-9][0-9]*$ ]]; then
  sed -n '3,9s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
  exit 2
fi
shift
install=() keep=no wanted=()
for argument in "$@"; do
  case "$argument" in
    --no-install) install=(--no-install) ;;
    --keep) keep=yes ;;
    *) wanted+=("$argument") ;;
  esac
done
need_packages "${install[@]}" build check

cmake --preset fuzz
cmake --build --preset fuzz
mapfile -t targets <build/fuzz/marlo_fuzz_targets.txt
if ((${#wanted[@]} > 0)); then targets=("${wanted[@]}"); fi
if ((${#targets[@]} == 0)); then
  echo "fuzz.sh: there is no fuzz target" >&2
  exit 1
fi

export ASAN_OPTIONS=allow_user_segv_handler=1:detect_stack_use_after_return=0
export UBSAN_OPTIONS=print_stacktrace=1
failed=()
mkdir -p build/fuzz/findings
for target in "${targets[@]}"; do
  corpus=fuzz/corpus/$target
  found=build/fuzz/corpus/$target
  if [[ ! -d "$corpus" ]]; then
    echo "$target: no corpus in $corpus"
    failed+=("$target")
    continue
  fi
  mkdir -p "$found"
  log=build/fuzz/$target.log
  if "build/fuzz/bin/$target" "$found" "$corpus" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$target-" >"$log" 2>&1; then
    echo "$target: clean, $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") runs in $seconds s"
    if [[ $keep == yes ]]; then
      "build/fuzz/bin/$target" -merge=1 "$corpus" "$found" >/dev/null 2>&1
    fi
  else
    tail -n 40 "$log"
    echo "$target: FAILED, see $log"
    failed+=("$target")
  fi
done
if ((${#failed[@]} > 0)); then
  echo "Failed: ${failed[*]}"
  exit 1
fi
