#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds with a sanitizer and runs the tests that its preset chooses.
#
#   scripts/sanitize.sh asan-ubsan|tsan [--no-install] [ctest argument...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

preset=${1:-}
case "$preset" in
  asan-ubsan | tsan) shift ;;
  *)
    sed -n '3,5s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
    ;;
esac
install=()
if [[ "${1:-}" == --no-install ]]; then
  install=(--no-install)
  shift
fi
need_packages "${install[@]}" build test check

# The thread sanitizer's fixed shadow mapping and address randomisation of newer kernels can collide,
# so the programs (also those that list their tests during the build) run without randomisation.
run=() targets=()
if [[ "$preset" == tsan ]]; then targets=(--target thread_tests); fi
if [[ "$preset" == tsan ]] && setarch "$(uname -m)" -R true 2>/dev/null; then
  run=(setarch "$(uname -m)" -R)
fi
cmake --preset "$preset"
"${run[@]}" cmake --build --preset "$preset" "${targets[@]}"
"${run[@]}" ctest --preset "$preset" "$@"
