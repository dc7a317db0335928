"""mutation.h: the C++ by which the environment variable MUTANT chooses one break."""

OTHER = {"==": "!=", "!=": "==", "<": "<=", ">": ">=", "<=": "<", ">=": ">"}
NAMES = dict(zip(OTHER, ("Equal", "Unequal", "Less", "Greater", "AtMost", "AtLeast")))

HEADER = """#pragma once
#include <algorithm>
#include <cstdlib>
#include <string>
namespace mutation {
inline bool on(int place) {
  static const int chosen = std::getenv("MUTANT") == nullptr ? 0 : std::atoi(std::getenv("MUTANT"));
  return chosen == place;
}
template <typename A, typename B> void inOrder(int place, A first, B second) {
  if (on(place)) { second(); first(); } else { first(); second(); }
}
template <typename T> T min(int place, const T& a, const T& b) { return on(place) ? a : std::min(a, b); }
template <typename T> T max(int place, const T& a, const T& b) { return on(place) ? a : std::max(a, b); }
template <typename T> T clamp(int place, const T& a, const T& from, const T& to) {
  return on(place) ? a : std::clamp(a, from, to);
}
template <typename A> struct Left { const A& value; int place; };
"""
# a == b becomes a == Equal{7} == b, which binds as the operator did.
COMPARISON = """struct %(name)s { int place; };
template <typename A> Left<A> operator%(op)s(const A& a, %(name)s o) { return {a, o.place}; }
template <typename A, typename B> bool operator%(op)s(const Left<A>& a, const B& b) {
  return on(a.place) ? a.value %(other)s b : a.value %(op)s b;
}
"""


def header():
    comparisons = (COMPARISON % {"name": NAMES[op], "op": op, "other": other} for op, other in OTHER.items())
    return HEADER + "".join(comparisons) + "}\n"
