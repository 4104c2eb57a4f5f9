#!/usr/bin/env bash
# update.sh [--check]: brings every operator-panel_LANGUAGE.ts up to date with the texts of the
# program; with --check changes nothing and fails when one of them is not up to date, has a text
# without a finished translation, or when lupdate warns. Without line numbers, so that a file changes
# only when a text does, and with one version of lupdate, since others write it otherwise.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=cmake/packages.sh
source cmake/packages.sh

wanted='lupdate version 6.4.2'
lupdate=/usr/lib/qt6/bin/lupdate
folders=(app calibration forms infobox input platform settings wizard)

case ${1:-} in
'' | --check) ;;
*) printf 'usage: translations/update.sh [--check]\n' >&2; exit 2 ;;
esac

installPackages qt6-l10n-tools
[[ $("$lupdate" -version) == "$wanted" ]] || die "this is not $wanted, which the files are made with"

# collect FILE: has lupdate collect the texts into FILE; its warnings are errors.
collect() {
    local output
    output=$("$lupdate" -silent -locations none -no-obsolete -source-language en -I . "${folders[@]}" \
        -ts "$1" 2>&1) || die "lupdate failed: $output"
    [[ -z $output ]] || die "lupdate warns: $output"
}

failed=0
for file in translations/operator-panel_*.ts; do
    if [[ -z ${1:-} ]]; then
        collect "$file"
        continue
    fi
    copy=$(mktemp --suffix=.ts)
    cp "$file" "$copy"
    (collect "$copy") || failed=1
    if ! diff -q "$file" "$copy" >/dev/null; then
        printf '%s is not up to date: run translations/update.sh\n' "$file" >&2
        failed=1
    elif grep -q 'type="' "$file"; then
        printf '%s has texts without a finished translation\n' "$file" >&2
        failed=1
    fi
    rm -f "$copy"
done
exit "$failed"
