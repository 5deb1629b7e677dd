#!/bin/sh
# The names that the library exports, those of the symbol map, and those that the header declares
# are the same. Usage: check_symbols.sh LIBRARY MAP HEADER
set -eu
LC_ALL=C
export LC_ALL
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
nm -D --defined-only "$1" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort >"$work/library"
sed -n 's/^ *\([MSP]_[A-Za-z0-9_]*\);$/\1/p' "$2" | sort >"$work/map"
grep -o '[ *][MSP]_[A-Za-z0-9_]*(' "$3" | tr -d ' *(' | sort -u >"$work/header"
diff "$work/map" "$work/library"
diff "$work/header" "$work/library"
