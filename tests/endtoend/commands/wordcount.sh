#!/bin/bash
# The example client prints what coreutils make of the same text.
#
#   wordcount.sh PROGRAM_FOLDER SCRATCH_FOLDER
set -euo pipefail
bin=$1
scratch=$2
rm -rf "$scratch"
mkdir -p "$scratch"
export VELK_REGISTRY_DIR=$scratch/registry
export LC_ALL=C

expected() {
  tr -cs A-Za-z '\n' <"$1" | tr A-Z a-z | sed '/^$/d' | sort | uniq -c |
    sort -k1,1nr -k2 | head | sed 's/^ *//'
}

printf 'One one ONE two\nthree-two caf\303\251 a1b2c3' >"$scratch/mixed"
: >"$scratch/empty"
printf '  .-9 \n' >"$scratch/wordless"
seq 1 30000 | sed 's/0/zero /g; s/1/one /g; s/2/two /g' >"$scratch/long"

"$bin/velkcom" register --user
for text in mixed empty wordless long; do
  diff <(expected "$scratch/$text") <("$bin/wordcount" "$scratch/$text") || {
    echo "wordcount of '$text' differs" >&2
    exit 1
  }
done
if "$bin/wordcount" "$scratch/missing" 2>"$scratch/message"; then
  echo "a missing file must fail" >&2
  exit 1
fi
grep -q "cannot read '$scratch/missing'" "$scratch/message"
"$bin/velkcom" unregister --user
