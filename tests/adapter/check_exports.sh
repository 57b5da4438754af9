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
found=$(nm -D --defined-only "$1" | awk '{ print $NF }' | LC_ALL=C sort)
if [ "$found" != "$expected" ]; then
    echo "exported:"
    echo "$found"
    exit 1
fi
