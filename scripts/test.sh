#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the library and the reference host, and runs all tests.
#
#   scripts/test.sh [--no-install] [ctest argument...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

install=()
if [[ "${1:-}" == --no-install ]]; then
  install=(--no-install)
  shift
fi
if [[ "${1:-}" == --help || "${1:-}" == -h ]]; then
  sed -n '3,5s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
  exit 0
fi
need_packages "${install[@]}" build test

cmake --preset dev
cmake --build --preset dev
ctest --preset dev "$@"
