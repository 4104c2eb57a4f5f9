#!/usr/bin/env bash
# monkey.sh [MINUTES] [SEED]: random touches and keys on every page, under the address and
# undefined-behaviour sanitizers, run after run for MINUTES (10), each with the next seed from SEED
# (the time of day) on. Stops at the first run that fails and prints its seed.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

minutes=${1:-10}
seed=${2:-$(date +%s)}
limit=900 # seconds that a run may take

installPackages "${BuildPackages[@]}" libbenchmark-dev
command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
say "Building (asan)"
cmake --preset asan -DPANEL_BENCHMARKS=ON >/dev/null
cmake --build --preset asan --target monkey

log=$(mktemp)
trap 'rm -f "$log"' EXIT
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
runs=0
end=$((SECONDS + minutes * 60))
while ((SECONDS < end)); do
    if ! timeout --kill-after=10 "$limit" build/asan/benchmarks/monkey "$seed" >"$log" 2>&1; then
        cat "$log"
        die "seed $seed fails, after $runs clean runs: build/asan/benchmarks/monkey $seed"
    fi
    runs=$((runs + 1))
    say "seed $seed is clean ($SECONDS s)"
    seed=$((seed + 1))
done
say "$runs runs without a fault"
