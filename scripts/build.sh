#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures once, then builds.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
if [ ! -f "build/$preset/build.ninja" ]; then
    cmake --preset "$preset" >/dev/null
fi
cmake --build "build/$preset" --target "${@:-all}"
