#!/usr/bin/env bash
# Builds the operator panel and runs all its tests. Arguments go to ctest ("-R name").
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

installPackages "${BuildPackages[@]}" "${TestPackages[@]}"
configureAndBuild debug
say "Testing (debug)"
ctest --preset debug "$@" || die "tests failed"
