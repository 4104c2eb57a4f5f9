# Sourced by .ci/run: what includes what.
# shellcheck shell=bash

# One line "FILE INCLUDED" for every include of the project's own files; a form stands for its
# header.
includePairs() {
    git ls-files -z '*.cpp' '*.h' \
        | xargs -0 sed -nE 's|^#include "(.*)".*|\1|; T; F; p' \
        | paste -d ' ' - - \
        | sed -E 's| ui_(.*)\.h$| forms/\1.ui|'
}

# checkIncludeOrder: app -> wizard, calibration -> input -> infobox -> settings -> platform; every
# folder may use what is further right. Four pairs look left because the system is shaped so.
checkIncludeOrder() {
    includePairs | awk '
        BEGIN {
            rank["platform"] = 1; rank["settings"] = 2; rank["infobox"] = 3; rank["input"] = 4
            rank["calibration"] = 5; rank["wizard"] = 5; rank["app"] = 6
            for (i = split("tests simulator benchmarks", apart); i > 0; --i) rank[apart[i]] = 7
            allowed["settings/veltasettings.cpp infobox/veltainfobox.h"] = 1
            allowed["settings/veltasettings.cpp wizard/ip4validator.h"] = 1
            allowed["wizard/veltawizard.cpp app/veltakbdinput.h"] = 1
            allowed["calibration/calibrationpage.cpp app/cursor.h"] = 1
        }
        {
            split($1, from, "/"); split($2, to, "/")
            if (from[1] == to[1] || !(to[1] in rank) || rank[from[1]] == 7 || $0 in allowed) next
            if (rank[to[1]] >= rank[from[1]]) { print $1 " must not include " $2; found = 1 }
        }
        END { exit found }'
}

# landedState: the commit that changes are counted from: where this branch left origin/main, or,
# in a clone of what is to land, the one that .ci/landed names. Nothing where all files are to be
# checked, because there is no such commit.
landedState() {
    local base recorded
    if base=$(git merge-base HEAD refs/remotes/origin/main 2>/dev/null) \
        && ! git diff --quiet "$base" --; then
        printf '%s\n' "$base"
        return
    fi
    recorded=$(cat .ci/landed 2>/dev/null) || return 0
    if git merge-base --is-ancestor "$recorded" HEAD 2>/dev/null; then
        printf '%s\n' "$recorded"
    fi
}

# changedSources COMMIT: the .cpp files that differ from COMMIT, and those that include, by however
# many others, a header or form that does. All of them when it is the rules that differ.
changedSources() {
    local changed
    changed=$({ git diff --name-only "$1" --; git ls-files --others --exclude-standard; } | sort -u)
    if grep -qxE '(.*/)?\.clang-tidy|cmake/.*\.cmake|CMakePresets\.json' <<<"$changed"; then
        git ls-files '*.cpp'
        return
    fi
    { printf '%s\n' "$changed"; includePairs; } | awk '
        NF == 1 { todo[++count] = $1; seen[$1] = 1; next }
        { includers[$2] = includers[$2] " " $1 }
        END {
            for (i = 1; i <= count; ++i) {
                for (n = split(includers[todo[i]], more, " "); n > 0; --n)
                    if (!(more[n] in seen)) { seen[more[n]] = 1; todo[++count] = more[n] }
                if (todo[i] ~ /\.cpp$/) print todo[i]
            }
        }' | while IFS= read -r file; do [[ -f $file ]] && printf '%s\n' "$file"; done
}
