#!/usr/bin/env bash
# Paints every page at every screen class with the ordinary program and with the lean one, both with
# the fonts of a panel alone, and compares the pictures to the pixel: tests/samepictures.sh. They stay
# in build/pictures.
set -euo pipefail

(($# == 0)) || { printf "samepictures.sh: unknown argument '%s'\n" "$1" >&2; exit 2; }
cd "$(dirname "${BASH_SOURCE[0]}")/.."
fonts=/usr/share/fonts/truetype/ttf-bitstream-vera
rm -rf build/pictures
mkdir -p build/pictures
cat >build/pictures/fonts.conf <<END
<?xml version="1.0"?>
<fontconfig><dir>$fonts</dir><cachedir>$PWD/build/pictures/cache</cachedir></fontconfig>
END
FONTCONFIG_FILE=$PWD/build/pictures/fonts.conf tests/contactsheet.sh build/pictures/ordinary
QT_QPA_FONTDIR=$fonts tests/contactsheet.sh --lean build/pictures/lean --compare build/pictures/ordinary
