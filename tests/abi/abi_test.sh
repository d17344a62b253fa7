#!/usr/bin/env bash
# Compares the library's binary interface with the recorded one: layouts, order of virtual
# functions, enumerators, symbols. Any change fails, an addition too, until it is recorded.
#
# abi_test.sh check|update LIBRARY INCLUDE_DIRECTORY
#
# LIBRARY: built by g++ with debug information. The record is of one architecture; on another one
# the test counts as skipped (exit status 77).
set -euo pipefail

command=$1 library=$2 include=$3
here=$(cd "$(dirname "$0")" && pwd)
recorded=$here/libtree.abi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Nothing of where it was built: the same sources give the same record on every machine.
abidw --headers-dir "$include" --drop-private-types --suppressions "$here/libtree.abignore" \
  --drop-undefined-syms --no-write-default-sizes --no-show-locs --no-corpus-path \
  --no-comp-dir-path --type-id-style hash --out-file "$scratch/libtree.abi" "$library"
grep -q '<class-decl' "$scratch/libtree.abi" || {
  echo "$library has no debug information" >&2
  exit 1
}

architecture() { grep -o "architecture='[^']*'" "$1"; }

case $command in
  update)
    cp "$scratch/libtree.abi" "$recorded"
    echo "recorded: $recorded"
    ;;
  check)
    if [[ $(architecture "$scratch/libtree.abi") != "$(architecture "$recorded")" ]]; then
      echo "skipped: the record is of another architecture, $(architecture "$recorded")"
      exit 77
    fi
    abidiff --harmless "$recorded" "$scratch/libtree.abi" || {
      echo "An intended change is recorded by \`./dev abi --update\`, with a line under ABI in the" \
        "changelog; TREE_SOVERSION rises with every incompatible one." >&2
      exit 1
    }
    echo 'no change'
    ;;
  *)
    echo "unknown command: $command" >&2
    exit 1
    ;;
esac
