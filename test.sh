#!/usr/bin/env bash
# Builds the operator panel and runs all its tests: ./test.sh [--preset NAME] [CTEST ARGUMENT]...,
# for example "-R name". NAME is debug unless told; asan and tsan have the sanitizers.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

preset=debug
if [[ ${1:-} == --preset ]]; then
    preset=${2:?--preset needs a name}
    shift 2
fi
installPackages "${BuildPackages[@]}"
configureAndBuild "$preset"
say "Testing ($preset)"
ctest --preset "$preset" "$@" || die "tests failed"
