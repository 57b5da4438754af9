#!/bin/sh
# The module exports its six functions and nothing else.
#   check_exports.sh <module>
set -eu
expected="DllCanUnloadNow
DllGetClassObject
DllInstall
DllRegisterServer
DllUnregisterServer
convertMZCOMIDispatch2MSCOMIDispatch"
case $1 in
*.dll)
    found=$(x86_64-w64-mingw32-objdump -p "$1" |
        sed -n '/Ordinal\/Name Pointer/,/^$/s/^[[:space:]]*\[ *[0-9].* //p')
    ;;
*) found=$(nm -D --defined-only "$1" | awk '{ print $NF }') ;;
esac
found=$(echo "$found" | LC_ALL=C sort)
if [ "$found" != "$expected" ]; then
    echo "exported:"
    echo "$found"
    exit 1
fi
