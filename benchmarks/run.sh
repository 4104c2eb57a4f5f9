#!/usr/bin/env bash
# Builds the release preset and prints every figure. Wants a machine that does nothing else.
# PAIRS: pairs of starts that are compared; IDLE_SECONDS: length of each idle watch;
# WAIT_SECONDS: length of the watch on the calibration that waits for a touch.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

installPackages "${BuildPackages[@]}" libbenchmark-dev
configureAndBuild release
build=build/release
"$build/benchmarks/bench_startup" "$build" "${PAIRS:-21}"
"$build/benchmarks/bench_idle" "$build" "${IDLE_SECONDS:-20}"
"$build/benchmarks/bench_panel"
"$build/benchmarks/bench_calibration" "${WAIT_SECONDS:-10}"
"$build/benchmarks/bench_keyboard"
"$build/benchmarks/bench_memory"
