#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compiles every public header alone, and twice in one source, with one compiler.
#
#   headers.sh COMPILER INCLUDE-FOLDER        ends with 77 when there is no such compiler
set -euo pipefail
compiler=$1
include=$2
if ! command -v "$compiler" >/dev/null; then
  echo "$compiler isn't installed"
  exit 77
fi

check_header() {
  printf '#include "%s"\n#include "%s"\n' "$3" "$3" |
    "$1" -std=c++20 -Wall -Wextra -Wshadow -Wconversion -Wold-style-cast -Werror -fsyntax-only -I "$2" -x c++ - ||
    { echo "$3 doesn't compile alone" && return 1; }
}
export -f check_header

mapfile -t headers < <(cd "$include" && find marlo110k -name '*.h' | sort)
# An empty folder would pass every check.
if ((${#headers[@]} < 10)); then
  echo "only ${#headers[@]} headers in $include"
  exit 1
fi
# shellcheck disable=SC2016
printf '%s\0' "${headers[@]}" |
  xargs -0 -P 2 -I HEADER bash -c 'check_header "$0" "$1" "$2"' "$compiler" "$include" HEADER
echo "$compiler: ${#headers[@]} headers"
