# SPDX-License-Identifier: Apache-2.0
# Which Debian packages each job needs, and the one way in which the scripts install them.
# To be sourced:  source scripts/packages.sh; need_packages build test
# shellcheck shell=bash disable=SC2034

# One array a job, named packages_<job>; a package stands in the first job that needs it.
# What compiles the library, the reference host and the test programs (dev and release preset).
packages_build=(
  ca-certificates
  ccache
  cmake
  g++
  libgmock-dev
  libgtest-dev
  libicu-dev
  libjpeg62-turbo-dev
  libpng-dev
  libsqlite3-dev
  llvm-14
  mold
  ninja-build
  nlohmann-json3-dev
  pkg-config
  python3
)
# Outside tools that the tests compare with, and recordings that they and the demonstration read.
packages_test=(
  alsa-utils
  ffmpeg
  sndfile-programs
  sox
)
# The recordings that the demonstration mixes.
packages_demo=(
  alsa-utils
)
# Sanitizer and fuzz presets, formatting and static checks.
packages_check=(
  clang-14
  clang-format-14
  clang-tidy-14
  libclang-rt-14-dev
)
# The reference manual.
packages_docs=(
  doxygen
)
# Peers that the benchmarks are measured against.
packages_bench=(
  libavutil-dev
  libebur128-dev
  libfmt-dev
  libglib2.0-dev
  libliquid-dev
  libopencv-imgproc-dev
  libpixman-1-dev
  libsamplerate0-dev
  libsdl2-dev
  libsndfile1-dev
  libsoxr-dev
  libspeexdsp-dev
  libswresample-dev
  libswscale-dev
  libvolk2-dev
  libyuv-dev
  libzita-resampler-dev
)

# Coverage figures.
packages_coverage=(
  gcovr
)

# Prints those of the named packages that aren't installed.
missing_packages() {
  local package
  for package in "$@"; do
    if [[ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" != installed ]]; then
      printf '%s\n' "$package"
    fi
  done
}

# need_packages [--no-install] JOB...
# Installs what the jobs need and the machine lacks: as root, else through sudo where it asks for no
# password. Where neither works it prints the line to run and ends the script with 2. With --no-install,
# or MARLO_NO_INSTALL=1 in the environment, it names what is missing and goes on.
need_packages() {
  local install=yes job list wanted=() missing=()
  [[ "${MARLO_NO_INSTALL:-0}" == 1 ]] && install=no
  for job in "$@"; do
    if [[ "$job" == --no-install ]]; then
      install=no
      continue
    fi
    list="packages_$job"
    if ! declare -p "$list" >/dev/null 2>&1; then
      echo "packages.sh: there is no package list for \"$job\"" >&2
      exit 2
    fi
    list="${list}[@]"
    wanted+=("${!list}")
  done

  if ! command -v dpkg-query >/dev/null; then
    echo "This isn't a Debian system; please see to these packages or their like: ${wanted[*]}" >&2
    [[ $install == no ]] && return 0
    exit 2
  fi
  mapfile -t missing < <(missing_packages "${wanted[@]}" | sort -u)
  ((${#missing[@]} == 0)) && return 0
  if [[ $install == no ]]; then
    echo "Not installed: ${missing[*]}" >&2
    return 0
  fi

  local line=(apt-get install -y --no-install-recommends "${missing[@]}") root=()
  if ((EUID != 0)); then
    if ! sudo -n true 2>/dev/null; then
      echo "Please run this as root, then start again:" >&2
      echo "  ${line[*]}" >&2
      exit 2
    fi
    root=(sudo -n)
  fi
  echo "Installing: ${missing[*]}" >&2
  # The index of a fresh machine is empty, so a first failure is answered by fetching it.
  if ! "${root[@]}" env DEBIAN_FRONTEND=noninteractive "${line[@]}" </dev/null >&2; then
    "${root[@]}" apt-get update </dev/null >&2 || true
    if ! "${root[@]}" env DEBIAN_FRONTEND=noninteractive "${line[@]}" </dev/null >&2; then
      echo "These packages couldn't be installed: ${missing[*]}" >&2
      exit 2
    fi
  fi
}
