#!/usr/bin/env bash
# test.sh [ctest arguments]: installs what is missing, builds, and runs all tests. Needs no display.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-packages.sh build test
scripts/build.sh release
cd build/release
exec ctest --output-on-failure --no-tests=error -j "$(nproc)" "$@"
