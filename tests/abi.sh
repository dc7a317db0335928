#!/usr/bin/env bash
# Usage: abi.sh LIBRARY [--accept]. Compares the library's symbols and the boundary's layout, as Clang reports it, with
# tests/abi.txt; --accept writes them there. Finds every record and interface of host/ by itself.
set -euo pipefail
library=$(realpath "$1")
cd "$(dirname "$0")/.."
found=$(mktemp)
trap 'rm -f "$found"' EXIT

# symbols WHICH PATTERN
symbols() {
  nm -D --demangle "$1" "$library" | sed -nE "s/^[0-9a-f ]* [A-Za-z] ($2)/  \\1/p" | LC_ALL=C sort -u |
    sed -E 's/__cxx11:://g; s/basic_string<char, std::char_traits<char>, std::allocator<char> >/string/g
      s/, std::allocator<[^<>]*> >/>/g'
}

# Includes every header, uses each record, and derives from each interface to make Clang print its vtable. Compiled as
# C++17, which is what the headers promise.
everything() {
  printf '#include "%s"\n' host/*.h pocketagent/ipocketagent.cpp
  echo 'template <class I> struct Probe : I { Probe() {} };'
  sed -nE 's/^class (I[A-Z]\w+) \{/template struct Probe<orvane::\1>;/p
    s/^struct (\w+) \{/static_assert(sizeof(orvane::\1) > 0);/p' host/*.h
}

layout() {
  everything | clang++-14 -std=c++17 -I. -w -x c++ - -S -emit-llvm -o /dev/null \
    -Xclang -fdump-record-layouts -Xclang -fdump-vtable-layouts | awk '
      /^$/ && on { print; on = 0 }
      /^ +0 \| (struct|class) orvane::[A-Za-z]+( \(empty\))?$/ || /^Vtable for .orvane::/ { on = 1; print; next }
      on && (/^ +[0-9]+ \| (  )?[^ ]/ || /\[sizeof/)' |
    sed -E 's/\[sizeof=([0-9]+), .*(align=[0-9]+),/  size=\1 \2/; s/(class|struct) std::/std::/g; s/basic_string<char>/string/g'
}

{
  echo "The library's ABI on 64-bit Linux, as tests/abi.sh writes it down. Offsets and sizes are bytes."
  objdump -p "$library" | sed -nE 's/^ +SONAME +(.*)/\n\1 offers/p'
  symbols --defined-only '.*'
  printf '\nand wants of the host\n'
  symbols --undefined-only 'orvane::.*'
  printf '\nEnumerations and names for types\n'
  grep -hE '^(enum|using) ' host/*.h | sed 's/^/  /'
  printf '\nRecords and tables of operations\n\n'
  layout
} >"$found"

if [ "${2:-}" = --accept ]; then
  cp "$found" tests/abi.txt
elif ! diff tests/abi.txt "$found"; then
  echo "The ABI (>) differs from tests/abi.txt (<): hosts built against that one break."
  echo "If the change is intended, raise the major version in CMakeLists.txt, build, and run tests/abi.sh $library --accept"
  exit 1
fi
