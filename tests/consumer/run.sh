#!/usr/bin/env bash
# Usage: run.sh BUILD PREFIX COMPILER VERSION. Installs what BUILD holds below a new folder, and builds and runs
# this project against it.
set -euo pipefail
folder=$1/consumer
prefix=$folder/root$2
rm -rf "$folder"
DESTDIR=$folder/root cmake --install "$1" >/dev/null
cmake -S "$(dirname "$0")" -B "$folder" -G Ninja -DCMAKE_CXX_COMPILER="$3" -DCMAKE_PREFIX_PATH="$prefix" -DVERSION="$4"
cmake --build "$folder"
library=$(find "$prefix" -name libpocketagent.so)
"$folder/linked"
LD_LIBRARY_PATH=${library%/*} "$folder/flagged"
"$folder/loaded" "$library"
[ ! -x "$prefix/bin/pocket-terminal" ] || [ "$("$prefix/bin/pocket-terminal" --version)" = "pocket-terminal $4" ]
