#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs the build into an empty folder, and builds and runs the consumer of examples/ from there, once
# through the CMake package and once through pkg-config.
#
#   install.sh BUILD-FOLDER SOURCE-FOLDER WORK-FOLDER COMPILER VERSION
set -euo pipefail
build=$1 source=$2 work=$3 compiler=$4 version=$5
consumer=$source/examples/consumer

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/first" >/dev/null
# Moving the tree shows a path of the build that slipped into what is installed.
mv "$work/first" "$work/prefix"
prefix=$work/prefix

for wanted in bin/marlo include/marlo110k/marlo110k.h; do
  [[ -e "$prefix/$wanted" ]] || { echo "$wanted wasn't installed" && exit 1; }
done
if [[ -n "$(find "$prefix/include" -type f ! -name '*.h')" ]]; then
  echo "something other than headers lies below include/"
  exit 1
fi
if ! diff <(cd "$source/include" && find . -name '*.h' | sort) <(cd "$prefix/include" && find . -name '*.h' | sort); then
  echo "the installed headers aren't those of the source"
  exit 1
fi
if grep -rIl --include='*.cmake' --include='*.pc' --include='*.h' -e "$source" -e "$build" "$prefix"; then
  echo "installed files name the folders they were built in"
  exit 1
fi

echo "== find_package"
cmake -S "$consumer" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" \
  -DWANTED_VERSION="$version" >/dev/null
cmake --build "$work/cmake"
"$work/cmake/consumer"

echo "== pkg-config"
library=$(dirname "$(find "$prefix" -name libmarlo110k.so)")
export PKG_CONFIG_PATH=$library/pkgconfig
[[ "$(pkg-config --modversion marlo110k)" == "$version" ]]
# shellcheck disable=SC2046
"$compiler" -Wall -Wextra -Werror "$consumer/consumer.cpp" $(pkg-config --cflags --libs marlo110k) -o "$work/consumer"
LD_LIBRARY_PATH=$library "$work/consumer"
LD_LIBRARY_PATH=$library "$prefix/bin/marlo" --help >/dev/null
