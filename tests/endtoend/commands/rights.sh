#!/bin/bash
# Registering for the machine without the right to do so says so, names the
# way out and leaves nothing behind.
#
#   rights.sh PROGRAM_FOLDER
bin=$1
# No user, not even root, can make a folder there.
export VELK_REGISTRY_DIR=/proc/registry
message=$("$bin/velkcom" register 2>&1)
code=$?
echo "$message"
[ "$code" -eq 1 ] || {
  echo "the exit code is $code, not 1" >&2
  exit 1
}
[[ $message == *E_ACCESSDENIED* && $message == *--user* ]]
