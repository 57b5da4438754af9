#!/bin/bash
# Commands that only read make no registry, and what is no module is refused.
#
#   reads.sh PROGRAM_FOLDER
bin=$1
folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT
export HOME=$folder/home VELK_REGISTRY_DIR=$folder/registry
cd "$folder" || exit 1

fail() {
  echo "$*" >&2
  exit 1
}

# expect CODE WORDS ARGUMENT...: the program ends with this code and says this.
expect() {
  local message
  message=$(timeout 30 "$bin/velkcom" "${@:3}" 2>&1)
  local code=$?
  echo "$message"
  [ "$code" -eq "$1" ] || fail "velkcom ${*:3}: the exit code is $code, not $1"
  [[ $message == *"$2"* ]] || fail "velkcom ${*:3}: does not say $2"
}

expect 0 "library" typelib "$bin/VelkCOMAdapter.so"
expect 1 "CO_E_CLASSSTRING" call No.Such.Class Member
expect 1 "" enum No.Such.Class Enum Constant
expect 1 "" enum "$bin/VelkCOMAdapter.so" NoSuchEnum Constant
expect 0 "" props create "$folder/document"
expect 0 "" props list "$folder/document"
mkfifo "$folder/pipe.so"
for path in "$folder/pipe.so" "$folder" /dev/zero; do
  expect 1 "ERROR_BAD_EXE_FORMAT (0x800700C1)" register "$path"
done
expect 1 "0x80029c4a" typelib "$folder/pipe.so"
[ ! -e "$folder/registry" ] && [ ! -e "$folder/home" ] || fail "reading has made a registry"
