#!/bin/sh
# The same model gives the same export on both systems: digests line for line, and the scene that the
# renderer wrote byte for byte.
#   same_export.sh NATIVE_RUBY NATIVE_BUILD RUN_UNDER_WINE WINDOWS_RUBY WINDOWS_BUILD
set -eu
script=$(dirname "$0")/export.rb
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export KVAPP_PICTURE=0

EXTENSION_DIR="$2/extension" MODELHOST_DIR="$2/modelhost" KVAPP_DIR="$2/renderer" \
  QUELLIX_IPC_DIGEST="$folder/here.txt" KVAPP_OUT="$folder/here" "$1" "$script"
EXTENSION_DIR="Z:$5/extension" MODELHOST_DIR="Z:$5/modelhost" KVAPP_DIR="Z:$5/renderer" \
  QUELLIX_IPC_DIGEST="Z:$folder/there.txt" KVAPP_OUT="Z:$folder/there" "$3" "$4" "Z:$script"

lines=$(wc -l <"$folder/here.txt")
[ "$lines" -gt 10 ] || { echo "the digest has only $lines lines"; exit 1; }
tr -d '\r' <"$folder/there.txt" | diff "$folder/here.txt" - ||
  { echo "the digests differ: < here, > under Wine"; exit 1; }
cmp "$folder/here/scene.glb" "$folder/there/scene.glb"
echo "$lines digest lines and scene.glb are equal"
