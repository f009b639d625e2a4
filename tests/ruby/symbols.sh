#!/bin/sh
# The extension offers the names of the module definition and no others.
#   symbols.sh NM LIBRARY DEFINITIONS
set -eu
wanted=$(awk '/^EXPORTS/ {on = 1; next} on {print $1}' "$3" | LC_ALL=C sort)
offered=$("$1" -D --defined-only "$2" | awk '{print $NF}' | LC_ALL=C sort)
[ "$(echo "$wanted" | wc -l)" = 26 ] || { echo "the definitions are not the entry point and 25 methods"; exit 1; }
[ "$wanted" = "$offered" ] || { printf 'wanted:\n%s\noffered:\n%s\n' "$wanted" "$offered"; exit 1; }
