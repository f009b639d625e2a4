#!/bin/sh
# What the extension needs and offers.
#   symbols.sh OBJDUMP LIBRARY DEFINITIONS DLL...
# It exports exactly the names of the module definition, and imports from nothing but Windows' own
# libraries and the DLLs named, each of which it does use.
set -eu
objdump=$1 library=$2 definitions=$3
shift 3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$objdump" -p "$library" | tr -d '\r' >"$folder/headers"

awk '/^EXPORTS/ {on = 1; next} on {print $1}' "$definitions" | LC_ALL=C sort >"$folder/wanted"
awk '/\[Ordinal\/Name Pointer\] Table/ {on = 1; next} on && NF == 0 {exit} on {print $NF}' \
  "$folder/headers" | LC_ALL=C sort >"$folder/exported"
[ "$(wc -l <"$folder/wanted")" = 26 ] || { echo "the definitions are not the entry point and 25 methods"; exit 1; }
diff "$folder/wanted" "$folder/exported" || { echo "exports: < wanted, > found"; exit 1; }

awk '/DLL Name:/ {print tolower($3)}' "$folder/headers" | LC_ALL=C sort -u >"$folder/imported"
for dll in "$@"; do
  dll=$(echo "$dll" | tr '[:upper:]' '[:lower:]')
  grep -qxF "$dll" "$folder/imported" || { echo "$dll is not imported"; exit 1; }
  grep -vxF "$dll" "$folder/imported" >"$folder/rest" || true
  mv "$folder/rest" "$folder/imported"
done
for dll in advapi32.dll comctl32.dll comdlg32.dll gdi32.dll kernel32.dll msimg32.dll msvcrt.dll \
  ole32.dll oleacc.dll oleaut32.dll rpcrt4.dll shell32.dll shlwapi.dll user32.dll uxtheme.dll \
  version.dll winmm.dll winspool.drv ws2_32.dll; do
  grep -vxF "$dll" "$folder/imported" >"$folder/rest" || true
  mv "$folder/rest" "$folder/imported"
done
[ ! -s "$folder/imported" ] || { echo "imported beside those allowed:"; cat "$folder/imported"; exit 1; }
