#!/usr/bin/env bash
# fuzz.sh [SECONDS [TARGET...]]: builds the fuzz targets and runs each for SECONDS (20), as many at a
# time as there are processors. Inputs that found something stay in build/fuzz/fuzz/findings.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-20}
[ $# -eq 0 ] || shift
scripts/install-packages.sh build fuzz
scripts/build.sh fuzz fuzz
cd build/fuzz/fuzz
mkdir -p findings

# What an input may take: 2 s of processor time, which the targets measure themselves, and 1 GB.
run() {
    mkdir -p "corpus/$2"
    "./kvn_fuzz_$2" -max_total_time="$1" -timeout=60 -rss_limit_mb=1024 -max_len=16384 \
        -print_final_stats=1 -artifact_prefix="findings/$2-" "corpus/$2" "seeds/$2" >"$2.log" 2>&1 &&
        echo "$2: $(sed -n 's/^stat::number_of_executed_units: *//p' "$2.log") inputs" && return
    echo "$2: FAILED" && tail -n 60 "$2.log" && return 1
}
export -f run
targets=("$@")
[ $# -gt 0 ] || mapfile -t targets < <(ls seeds)
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c "run $seconds {}"
