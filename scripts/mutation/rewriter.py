"""Rewrites C++ sources so that each place can be broken at run time. A place has one of these kinds:

text       one character of a literal changed
compare    == for !=, < for <= and so on
condition  an `if` turned round
guard      an `if` that leads to return, continue, break or throw never holds
limit      std::min, std::max or std::clamp returns its first argument
convert    a text stays in the encoding that it came in
order      two statements in a row swapped, unless they are assignments that do not see each other
negate     a function returns the opposite bool
"""
import re

from mutation.switches import NAMES, OTHER

TOKEN = re.compile(
    r'(?P<skip>//[^\n]*|^[ \t]*#(?:[^\n\\]|\\.)*|(?<!\w)\'(?:[^\'\\]|\\.)+\'|if constexpr|operator""'
    r'|R"(?P<mark>\w*)\(.*?\)(?P=mark)")'
    r'|(?P<text>"(?:[^"\\]|\\.)*")'
    r"| (?P<comparison>==|!=|<=|>=|<|>) "
    r"|\bif (?P<condition>\()"
    r"|\bstd::(?P<limit>min|max|clamp)(?:<\w+>)?\((?!\{)"
    r"|\b(?:CodeConvert::)?(?P<convert>gbk_to_utf8|utf8_to_gbk)\(", re.M | re.S)
LITERAL = re.compile(r'R"(\w*)\(.*?\)\1"|"(?:[^"\\]|\\.)*"|//[^\n]*|(?<!\w)\'(?:[^\'\\]|\\.)+\'', re.S)
# A call, an assignment or a count, alone on its line.
STATEMENT = re.compile(r"[ \t]+(?!return\b|throw\b|else\b|delete\b|co_)[\w.:>\[\]*-]+?(?:\(.*\)| [+|-]?= .+|\+\+);")
ASSIGNMENT = re.compile(r"\s*(?P<target>[\w.>\[\]*:-]+?) [+|-]?= (?P<value>.+);")
BOOL_FUNCTION = re.compile(r"^(?!.*constexpr).*\bbool (?:\w+::)*\w+\([^;{}]*\) ?(?:const )?(?:override )?\{", re.M)
LAMBDA = re.compile(r"\[[^\[\]]*\](?:\([^;{}]*\))?[^;{}()]*\{")


def broken(text):
    """The literal with one character changed and as many bytes as before; None if it has nothing to change."""
    wide = re.search(r"[\u4e00-\u9fff]", text)
    plain = list(re.finditer(r"(?<!\\)[A-Za-z0-9]", text))
    if wide:
        at, new = wide.start(), "一" if wide.group() != "一" else "下"
    elif plain:
        at = plain[-1].start()
        new = "x" if text[at] != "x" else "y"
    elif len(text) > 2 and "\\" not in text:
        at, new = 1, "#"
    else:
        return None
    return text[:at] + new + text[at + 1:]


def closing(source, opening):
    """Where the bracket that opens at `opening` is closed."""
    left = source[opening]
    right = {"(": ")", "{": "}"}[left]
    depth = 0
    for at in range(opening, len(source)):
        depth += {left: 1, right: -1}.get(source[at], 0)
        if depth == 0:
            return at
    raise ValueError("no closing bracket")


def independent(first, second):
    """Whether two statements are assignments that do not see each other, so that swapping them changes nothing."""
    pair = [ASSIGNMENT.fullmatch(each.rstrip()) for each in (first, second)]
    if not all(pair):
        return False
    named = [re.search(rf"(?<![\w.]){re.escape(one['target'])}(?!\w)", other.group()) or
             one["target"].startswith((other["target"] + ".", other["target"] + "["))
             for one, other in (pair, reversed(pair))]
    called = [re.findall(r"[\w.]*\w(?=\()", each["value"]) for each in pair]
    # The function, and the object that it may change.
    calls = [{name for call in each for name in (call.split(".")[0], call.split(".")[-1])} for each in called]
    return not any(named) and not calls[0] & calls[1]


class Rewriter:
    def __init__(self):
        self.places = []  # (kind, "path:line:column: what") of each break, from number 1 on

    def rewrite(self, path, source):
        # The compiler's own calculations cannot be switched at run time.
        source = re.sub(r"(constexpr bool rowsFollowTheirValues[^§]*?)?static_assert\([^;]*;",
                        lambda found: "\n" * found.group().count("\n"), source)
        source = source.replace("constexpr const char* ", "const char* const ")
        source = re.sub(r"(?<!static )\bconstexpr (FailureTexts|std::array|std::string_view|\w+ k\w+ = \[)", r"const \1",
                        source)
        return File(self.places, path, source).rewrite()


class File:
    def __init__(self, places, path, source):
        self.places, self.path, self.source = places, path, source
        # The same, with literals and comments blanked.
        self.plain = LITERAL.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), source)
        self.edits = []  # (from, to, new text)
        self.fixed = self.constants()

    def place(self, kind, at, what=None):
        line = self.source.count("\n", 0, at) + 1
        column = at - self.source.rfind("\n", 0, at)
        self.places.append((kind, f"{self.path}:{line}:{column}: {kind}: "
                                  f"{what or self.source.splitlines()[line - 1].strip()}"))
        return len(self.places)

    def constants(self):
        """The ranges that must stay constant: constexpr functions and static members."""
        functions = re.finditer(r"\bconstexpr [^;{}=()]*\([^;{}]*\)[^;{}]*\{", self.plain)
        members = re.finditer(r"\bstatic constexpr [^;(){}]*[={][^;]*;", self.plain)
        return [(head.start(), closing(self.plain, head.end() - 1)) for head in functions] + [
            member.span() for member in members]

    def is_fixed(self, at):
        return any(begin <= at <= end for begin, end in self.fixed)

    def rewrite(self):
        # Of two edits that begin at the same place, the outer one is added first.
        if self.path.endswith(".cpp"):  # in a header a constructor looks like a call
            self.order()
        self.negate()
        for token in TOKEN.finditer(self.source):
            if token.lastgroup != "skip" and not self.is_fixed(token.start()):
                getattr(self, token.lastgroup)(token)
        result = self.source
        for _, (begin, end, new) in sorted(enumerate(self.edits), key=lambda each: (each[1][0], each[0]), reverse=True):
            result = result[:begin] + new + result[end:]
        return result

    def text(self, token):
        new = broken(token["text"])
        beside = re.search(r'"\s*$', self.source[:token.start()]) or re.match(r'\s*"', self.source[token.end():])
        if not new or beside:  # literals in a row are one literal
            return
        number = self.place("text", token.start(), f'{token["text"]} -> {new}')
        suffix = "_gbk" if self.source.startswith("_gbk", token.end()) else ""
        self.edits.append((token.start(), token.end() + len(suffix),
                           f'(mutation::on({number}) ? {new}{suffix} : {token["text"]}{suffix})'))

    def comparison(self, token):
        operator = token["comparison"]
        number = self.place("compare", token.start())
        self.edits.append((token.start(), token.end(), f" {operator} mutation::{NAMES[operator]}{{{number}}} {operator} "))

    def condition(self, token):
        first = token.start("condition") + 1
        end = closing(self.plain, first - 1)
        begin = first + self.plain[first:end].split("{")[0].rfind(";") + 1  # after the declarations of an init
        if " = " in self.plain[begin:end]:
            return  # declares what it tests
        switch = f"mutation::on({self.place('condition', token.start())}) != bool("
        if re.match(r"\s*\{?\s*(return|continue|break|throw)\b", self.plain[end + 1:]):
            switch = f"!mutation::on({self.place('guard', token.start())}) && {switch}"
        self.edits += [(begin, begin, switch), (end, end, ")")]

    def limit(self, token):
        number = self.place("limit", token.start())
        self.edits += [(token.start(), token.start() + len("std"), "mutation"), (token.end(), token.end(), f"{number}, ")]

    def convert(self, token):
        end = closing(self.plain, token.end() - 1)
        argument = self.source[token.end():end]
        if not argument.startswith(("const std::string&", "std::string_view")):  # such an argument declares the operation
            number = self.place("convert", token.start())
            self.edits += [(token.start(), token.start(), f"(mutation::on({number}) ? std::string({argument}) : "),
                           (end + 1, end + 1, ")")]

    def order(self):
        lines = self.plain.splitlines(keepends=True)
        starts = [sum(map(len, lines[:at])) for at in range(len(lines) + 1)]
        at = 1
        while at + 1 < len(lines):
            pair = lines[at:at + 2]
            # Not the body of an `if` without braces.
            if re.search(r"[;{}]\s*$", lines[at - 1]) and all(STATEMENT.fullmatch(each.rstrip()) for each in pair) and \
                    not independent(*pair) and not self.is_fixed(starts[at]):
                begin, middle, end = starts[at:at + 3]
                number = self.place("order", begin)
                self.edits += [(begin, begin, f"mutation::inOrder({number}, [&] {{ "), (middle, middle, "}, [&] { "),
                               (end, end, "}); ")]
                at += 1
            at += 1

    def negate(self):
        for head in BOOL_FUNCTION.finditer(self.plain):
            opening = head.end() - 1
            body = self.plain[opening:closing(self.plain, opening)]
            for found in LAMBDA.finditer(body, 1):
                end = closing(body, found.end() - 1)
                body = body[:found.start()] + re.sub(r"[^\n]", " ", body[found.start():end]) + body[end:]
            for found in re.finditer(r"\breturn (?=[^{;])([^;]*);", body):
                begin, end = opening + found.start(1), opening + found.end(1)
                number = self.place("negate", begin)
                self.edits += [(begin, begin, f"mutation::on({number}) != bool("), (end, end, ")")]
