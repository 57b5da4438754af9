#!/bin/bash
# What registering and unregistering say: where it is not permitted, the way out,
# with nothing left behind; what is not registered, and where it is instead.
#
#   rights.sh PROGRAM_FOLDER
bin=$1
folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT

# expect CODE WORDS ARGUMENT...: the program ends with this code and says this.
expect() {
  local message
  message=$("$bin/velkcom" "${@:3}" 2>&1)
  local code=$?
  echo "$message"
  [[ $code -eq $1 && $message == *$2* ]] || {
    echo "velkcom ${*:3}: not exit code $1 and \"$2\"" >&2
    exit 1
  }
}

# No user, not even root, can make a folder there.
export VELK_REGISTRY_DIR=/proc/registry
expect 1 E_ACCESSDENIED register
expect 1 --user register
expect 1 E_ACCESSDENIED register --user

export VELK_REGISTRY_DIR=$folder
expect 1 "was not registered for the machine" unregister
expect 0 "for the current user" register --user
expect 1 "registered for the current user: velkcom unregister --user" unregister
expect 0 "for the machine" register
expect 0 "for the current user" unregister --user
expect 1 "registered for the machine: velkcom unregister without --user" unregister --user
expect 0 "for the machine" unregister
expect 1 "was not registered for the machine" unregister
