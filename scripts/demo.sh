#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Shows the main job on real recordings: builds the release preset and runs the steps of scripts/demo.d.
#
#   scripts/demo.sh [--no-install] [FILE.wav ...]
#
# Without files it mixes the spoken recordings of Debian's alsa-utils. What it makes stands in build/demo.
# Ends with 0, with 1 when a step failed, with 2 when something is missing that it can't install.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=scripts/packages.sh
source "$here/scripts/packages.sh"

install=()
recordings=()
for word in "$@"; do
  case "$word" in
    --no-install) install=(--no-install) ;;
    --help | -h)
      sed -n '3,9s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
      exit 0
      ;;
    -*)
      echo "demo.sh: there is no option $word" >&2
      exit 2
      ;;
    *) recordings+=("$(realpath -- "$word")") ;;
  esac
done

need_packages "${install[@]}" build demo
if ((${#recordings[@]} == 0)); then
  recordings=(/usr/share/sounds/alsa/{Front_Center,Front_Left,Front_Right,Rear_Left,Rear_Right}.wav)
fi
for recording in "${recordings[@]}"; do
  if [[ ! -r "$recording" ]]; then
    echo "demo.sh: $recording can't be read" >&2
    exit 2
  fi
done

cd "$here"
mkdir -p build/demo
echo "== Building the release preset"
# Without the benchmarks, whose peers a demonstration needn't have.
if ! { cmake --preset release -DMARLO_BENCH=OFF -DMARLO_TESTS=OFF && cmake --build --preset release --target marlo; } >build/demo/build.log 2>&1; then
  tail -n 30 build/demo/build.log >&2
  echo "demo.sh: the build failed; all of its output is in build/demo/build.log" >&2
  exit 1
fi

# What the steps may use.
marlo="$here/build/release/bin/marlo"
output="$here/build/demo"
export marlo output
for step in "$here"/scripts/demo.d/*.sh; do
  # shellcheck source=/dev/null
  source "$step"
done
