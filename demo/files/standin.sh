#!/bin/sh
# Stands in for the programs that setup runs outside itself: the application and the tools of its
# registry. Setup's sample medium installs this one file under each of their names. It appends to
# Application/registry how it was called, then does as much of the named program's work
# as the caller depends on. STANDIN_STATUS is the exit status that the tools pretend.
set -eu

case $0 in
*/Application/*) application=${0%/Application/*}/Application ;;
*) application=Application ;; # called from the destination directory by a relative name
esac
name=${0##*/}

{
    printf 'program %s\n' "$name"
    for word; do
        printf 'argument <%s>\n' "$word"
    done
    printf 'OV_HOME %s\n' "${OV_HOME-(unset)}"
    printf 'MWHOME %s\n' "${MWHOME-(unset)}"
    printf 'MWREGISTRY %s\n' "${MWREGISTRY-(unset)}"
    printf 'OV_COMMONDIR %s\n' "${OV_COMMONDIR-(unset)}"
    printf 'directory %s\n\n' "$PWD"
} >>"$application/registry"

case $name in
mwperl | mwgeneric.pl)
    exec "$@" # the interpreter runs its script, the script the tool that it is given
    ;;
kivo*)
    if [ "${1-}" = -migrate ] && ! [ -f "${2-}/Data/Preferences/cpm.cpm" ]; then
        printf '%s: no preferences in %s\n' "$name" "${2-}" >&2
        exit 1
    fi
    ;;
esac
exit "${STANDIN_STATUS:-0}"
