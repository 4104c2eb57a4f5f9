#!/usr/bin/env bash
# Builds the release preset and prints every figure. Wants a machine that does nothing else.
# PAIRS: pairs of starts that are compared; IDLE_SECONDS: length of each idle watch;
# WAIT_SECONDS: length of the watch on the calibration that waits for a touch.
# Where packaging/lean-qt.sh has made a lean Qt, the lean program is measured, too.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

installPackages "${BuildPackages[@]}" libbenchmark-dev
configureAndBuild release
build=build/release
lean=()
if [[ -e build/lean-qt/$(dpkg --print-architecture).stamp ]]; then
    configureAndBuild lean operator-panel-offscreen
    lean=(build/lean/benchmarks/operator-panel-offscreen)
fi
"$build/benchmarks/bench_startup" "$build" "${PAIRS:-21}" "${lean[@]}"
"$build/benchmarks/bench_idle" "$build" "${IDLE_SECONDS:-20}"
"$build/benchmarks/bench_panel"
"$build/benchmarks/bench_calibration" "${WAIT_SECONDS:-10}"
"$build/benchmarks/bench_keyboard"
"$build/benchmarks/bench_memory"
