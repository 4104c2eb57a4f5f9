#!/usr/bin/env bash
# Paints every page at every screen class with the ordinary program and with the lean one, and compares
# the pictures to the pixel: tests/samepictures.sh. They stay in build/pictures.
set -euo pipefail

(($# == 0)) || { printf "samepictures.sh: unknown argument '%s'\n" "$1" >&2; exit 2; }
cd "$(dirname "${BASH_SOURCE[0]}")/.."
rm -rf build/pictures
tests/contactsheet.sh build/pictures/ordinary
tests/contactsheet.sh --lean build/pictures/lean --compare build/pictures/ordinary
