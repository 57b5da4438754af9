# Shared by the commands of this folder; sourced, never run.
set -euo pipefail
# With it, cd goes elsewhere and says where.
unset CDPATH
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$ROOT"

# What a person should read goes to standard error, so that results alone
# stand on standard output.
say() {
  if [ -t 2 ]; then printf "\033[1m==>\033[0m %s\n" "$*" >&2; else printf "==> %s\n" "$*" >&2; fi
}

# configure PRESET and build TARGET...
build() {
  local preset=$1
  shift
  local log
  log=$(mktemp)
  if ! cmake --preset "$preset" >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    return 1
  fi
  rm -f "$log"
  local targets=()
  for target in "$@"; do targets+=(--target "$target"); done
  cmake --build "build/$preset" "${targets[@]}" 1>&2
}
