#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the reference of the public headers into build/dev/reference and fails on what isn't documented.
#
#   scripts/docs.sh [--no-install]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
need_packages "$@" build docs

cmake --preset dev -DMARLO_DOCS=ON
cmake --build --preset dev --target docs
