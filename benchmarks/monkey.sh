#!/usr/bin/env bash
# monkey.sh [MINUTES] [SEED]: random touches and keys on every page, under the address and
# undefined-behaviour sanitizers, run after run for MINUTES (10), each with the next seed from SEED
# (the time of day) on. Stops at the first run that fails and prints its seed.
#
# monkey.sh --keys [KEYS] [RUNS] [SEED]: KEYS (100000) random keys, digits and known escape
# combinations through the keyboard driver of a panel whose password nobody knows, in RUNS (10)
# runs with the seeds from SEED (1) on; those with an odd seed have no digit. Prints a line for each
# run and the sums; fails when a run passed the password, started a PLC application through a
# button without a mark, ended the program, or found its keyboard dead.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

# buildMonkey TARGET
buildMonkey() {
    installPackages "${BuildPackages[@]}" libbenchmark-dev
    command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
    say "Building (asan)"
    cmake --preset asan -DPANEL_BENCHMARKS=ON >/dev/null
    cmake --build --preset asan --target "$1"
}

export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1

touchEverything() {
    local minutes=${1:-10} seed=${2:-$(date +%s)} limit=900 runs=0 end log
    buildMonkey monkey
    log=$(mktemp)
    # shellcheck disable=SC2064
    trap "rm -f '$log'" EXIT
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
}

# typeOne SEED KEYS: one run; its line of figures on stdout, all else below it where it fails.
typeOne() {
    local output limit=1800
    if output=$(timeout --kill-after=10 "$limit" build/asan/benchmarks/keymonkey "$1" "$2" 2>&1); then
        grep '^seed ' <<<"$output"
    else
        printf '%s\n%s\n' "FAILED: build/asan/benchmarks/keymonkey $1 $2" \
            "$(grep -v '^evdevkeyboard: ' <<<"$output")"
    fi
}

typeKeys() {
    local keys=${1:-100000} runs=${2:-10} first=${3:-1} report
    buildMonkey keymonkey
    export -f typeOne
    SECONDS=0
    # shellcheck disable=SC2016 # that shell expands it
    report=$(seq "$first" $((first + runs - 1)) \
        | xargs -P "$(nproc)" -I SEED bash -c 'typeOne "$1" "$2"' typeOne SEED $((keys / runs)) \
        | tee >(cat >&2))
    local clean sum
    clean=$(grep -c '^seed .* 0 faults' <<<"$report" || true)
    sum=$(sed -n 's/^seed [^:]*: \([0-9]*\) keys.* \([0-9]*\) faults.*/\1 \2/p' <<<"$report" \
        | awk '{keys += $1; faults += $2} END {printf "%d keys, %d faults", keys, faults}')
    say "$sum; $clean of $runs runs clean, $SECONDS s"
    ((clean == runs))
}

if [[ ${1:-} == --keys ]]; then
    shift
    typeKeys "$@"
else
    touchEverything "$@"
fi
