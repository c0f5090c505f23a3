# shellcheck shell=bash
# What the scripts of this directory share. Sourced by them, after "set -eu -o pipefail".

# shellcheck disable=SC2034 # the scripts use it
root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
jobs=$(nproc)

die()
{
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

heading()
{
    printf '\n== %s\n' "$*"
}

# quietly LOG COMMAND...: the command's output goes to the log, and is shown only if it fails.
quietly()
{
    local log=$1

    shift
    "$@" >"$log" 2>&1 && return
    cat "$log" >&2
    die "'$*' failed"
}
