#!/bin/sh
# Makes the archive and unpacks it as the host does, then runs a command whose PLUGIN_DIR is what was
# inside. There is no other extension that it could load.
#   unpacked.sh CMAKE BUILD_FOLDER DRIVE COMMAND ARGUMENT...
set -eu
cmake=$1 build=$2 drive=$3
shift 3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

mkdir "$folder/plugins"
(cd "$build" && "${cmake%cmake}cpack" --config CPackConfig.cmake -B "$folder/packed") >"$folder/log" 2>&1 ||
  { cat "$folder/log"; exit 1; }
(cd "$folder/plugins" && "$cmake" -E tar xf "$folder"/packed/*.rbz)
unset EXTENSION_DIR
PLUGIN_DIR="$drive$folder/plugins" "$@"
