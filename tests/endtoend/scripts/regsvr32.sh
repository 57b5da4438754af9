#!/bin/bash
# regsvr32 registers the module for the machine and for the user; afterwards
# the registry is what it was before, but for keys that are to stay, and keys
# of others below ours survive.
#
#   regsvr32.sh RUN_WINE MODULE
set -euo pipefail
run=$1
module=Z:$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
machine='HKLM\Software\Classes'
user='HKCU\Software\Classes'
progid=VelkCOMAdapter.VelkCOMProxy
ours='5A2C7E31-9B84-4F06-8D1E-3C7A9B2E4F18|71A9C3E5-2F4B-4E8D-B6A1-5D3E8C0F2B94|6E1F2A90-4C3B-4D7E-A1F2-0B9C8D7E6F51|C3E8A1F2-7D54-4B9A-9E21-6F0B3D8C2A47|E4F16C2A-3B97-4D85-8A0C-7E2B9F1D5C63|VelkCOMAdapter'

fail() {
  echo "$*" >&2
  exit 1
}

# own_keys HIVE: the keys with one of our names.
own_keys() {
  "$run" reg export "$1" "$(winepath_of "$scratch/export.reg")" /y >/dev/null
  iconv -f UTF-16 -t UTF-8 "$scratch/export.reg" | tr -d '\r' | grep -E '^\[' | grep -iE "$ours" || true
}

winepath_of() { printf 'Z:%s' "${1//\//\\}"; }

has() { "$run" reg query "$1" >/dev/null 2>&1; }

"$run" reg add "$user" /f >/dev/null
[ -z "$(own_keys "$machine")$(own_keys "$user")" ] || fail "keys of ours are there already"

"$run" regsvr32 /s "$module"
has "$machine\\$progid\\CurVer" || fail "not registered for the machine"
[ -z "$(own_keys "$user")" ] || fail "registering for the machine wrote for the user"
"$run" reg add "$machine\\$progid\\Theirs" /f >/dev/null
"$run" regsvr32 /u /s "$module"
left=$(own_keys "$machine")
has "$machine\\$progid\\Theirs" || fail "a key of others is gone"
[ "$(wc -l <<<"$left")" = 2 ] || fail "left for the machine: $left"
"$run" reg delete "$machine\\$progid" /f >/dev/null
[ -z "$(own_keys "$machine")" ] || fail "left for the machine: $(own_keys "$machine")"

"$run" regsvr32 /s /n /i:user "$module"
has "$user\\$progid\\CurVer" || fail "not registered for the user"
if has "$machine\\$progid"; then fail "registering for the user wrote for the machine"; fi
"$run" regsvr32 /s /u /n /i:user "$module"
left=$(own_keys "$user")$(own_keys "$machine")
[ -z "$left" ] || fail "left for the user: $left"
echo "the registry is what it was"
