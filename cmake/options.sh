# Sourced by the scripts that run a panel, which have a function usageError TEXT: what they ask of the
# options that they have in common.
# shellcheck shell=bash

# checkWord OPTION VALUE WORD...: the value has to be one of the words.
checkWord() {
    local option=$1 value=$2 word words
    shift 2
    for word; do
        [[ $value != "$word" ]] || return 0
    done
    words=$(printf ', %s' "$@")
    usageError "$option '$value' is none of ${words:2}"
}

# checkScreen VALUE SMALLEST: WIDTHxHEIGHT in pixels, neither smaller than that nor above 9999.
checkScreen() {
    if [[ $1 =~ ^([1-9][0-9]{1,3})x([1-9][0-9]{1,3})$ ]] \
        && ((BASH_REMATCH[1] >= $2 && BASH_REMATCH[2] >= $2)); then
        return 0
    fi
    usageError "--screen '$1' is no size such as 800x480"
}

# chosenView VALUE DESKTOP: the view asked for, or a window where DESKTOP, what the environment says of
# one, is not empty; dies where a window is wanted without.
chosenView() {
    local view=$1 desktop=$2
    if [[ -z $view ]]; then
        if [[ -n $desktop ]]; then view=window; else view=vnc; fi
    fi
    [[ $view != window || -n $desktop ]] || die "--view window needs a desktop: DISPLAY is not set"
    printf '%s\n' "$view"
}
