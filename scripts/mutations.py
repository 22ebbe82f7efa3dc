"""Finds places in C++ sources where scripts/mutate can seed a fault. Works on lines: the sources are
formatted by clang-format, so that binary operators are between spaces."""

import collections
import dataclasses
import re

# Replacements of operators and words. Unary and template uses of these characters have no space on
# one side.
OPERATORS = {
    " == ": [" != "], " != ": [" == "],
    " < ": [" <= "], " <= ": [" < "], " > ": [" >= "], " >= ": [" > "],
    " && ": [" || "], " || ": [" && "],
    " + ": [" - "], " - ": [" + "], " += ": [" -= "], " -= ": [" += "],
    " * ": [" / "], " / ": [" * "], " % ": [" * "],
    "true": ["false"], "false": ["true"],
    "std::min": ["std::max"], "std::max": ["std::min"],
}
OPERATOR = re.compile(r" (?:==|!=|<=|>=|<|>|&&|\|\||\+|-|\+=|-=|\*|/|%) "
                      r"|\b(?:true|false)\b|std::(?:min|max)(?=[(<])")
NUMBER = re.compile(r"(?<![\w.'])\d[\d']*(?![\w.'])")
NEGATION = re.compile(r"!(?=[\w(*])")
IF = re.compile(r"^(\s*(?:\} else )?if (?:constexpr )?\()(.*)(\) \{)$")
TERNARY = re.compile(r"(?:return |(?<![=!<>])= |\()([\w.]+(?:->\w+)?(?:\(\))?)(?= \? )")

# The start of a statement that can be removed: a call, an assignment, or a lock that is held until
# the end of the block. A declaration has two words before its first parenthesis or "=".
STATEMENT = re.compile(
    r"^\s+(?:[+-]{2})?(?!return\b|if\b|for\b|while\b|switch\b|static_assert\b|sizeof\b|"
    r"decltype\b|[A-Z]\w*\()[A-Za-z_*(][\w.:>\-\[\]<*]*(?:\(| [+\-|&]?= |\+\+;|--;)"
    r"|^\s+(?:const )?std::(?:lock_guard|unique_lock|scoped_lock|shared_lock)\b"
    r"|^\s+(?:Q_EMIT \w|(?:break|continue);)")
SKIPPED = re.compile(r"^\s*(?:#|\*|/\*|using\b|namespace\b|template\b|static_assert\b|typedef\b|\[\[nodiscard"
                     r"\]\] bool operator)")


@dataclasses.dataclass(frozen=True)
class Mutation:
    file: str  # relative to the tree
    line: int  # counted from 1
    last_line: int
    original: str  # the text of the lines without indentation; " #2" if it is the second such line
    changed: str

    def key(self):
        return self.file, self.original, self.changed


def code_of(line):
    """Returns the line with literals and the comment replaced by spaces, so that columns stay."""
    line = re.sub(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])+\'(?!\d)', lambda m: " " * len(m[0]), line)
    comment = line.find("//")
    return line if comment < 0 else line[:comment] + " " * (len(line) - comment)


def changes_of_line(line):
    code = code_of(line)

    def replaced(match, text, group=0):
        return line[:match.start(group)] + text + line[match.end(group):]

    for match in OPERATOR.finditer(code):
        if match[0] in (" + ", " += ") and re.search(r'["\']', line):
            continue  # joins texts
        for text in OPERATORS[match[0]]:
            yield replaced(match, text)
    for match in NUMBER.finditer(code):
        digits = match[0].replace("'", "")
        is_octal = digits[0] == "0" and len(digits) > 1
        yield replaced(match, f"0{int(digits, 8) + 1:o}" if is_octal else str(int(digits) + 1))
    for match in NEGATION.finditer(code):
        yield replaced(match, "")
    for match in TERNARY.finditer(code):
        yield replaced(match, f"!{match[1]}", 1)
    match = IF.match(code)
    if match:
        start = match.start(2)
        if ";" in match[2]:  # after the declaration in the condition
            start = code.rindex(";", start, match.end(2)) + 2
        condition = line[start:match.end(2)]
        if not re.search(r"[^=!<>]=[^=]", code[start:match.end(2)]):
            for text in (f"true || ({condition})", f"false && ({condition})"):
                yield line[:start] + text + line[match.end(2):]


def end_of_statement(lines, first):
    """Returns the index of the last line of the statement, or None if it contains a block."""
    depth = 0
    for index in range(first, min(first + 6, len(lines))):
        code = code_of(lines[index]).rstrip()
        if code.endswith("{"):
            return None
        depth += sum(code.count(c) for c in "([{") - sum(code.count(c) for c in ")]}")
        if code.endswith(";") and depth == 0:
            return index
    return None


def mutations(file, text):
    """Returns all mutations of a source file."""
    lines = text.split("\n")
    found = {}
    lines_with = collections.defaultdict(list)  # the lines at which a text begins

    def add(first, last, changed):
        original = " ".join(line.strip() for line in lines[first:last + 1])
        same = lines_with[original]
        if first not in same:
            same.append(first)
        if len(same) > 1:
            original += f" #{len(same)}"
        found.setdefault((first, changed.strip()), Mutation(file, first + 1, last + 1, original,
                                                            changed.strip()))

    may_start = False  # the previous line of code ended a statement
    for index, line in enumerate(lines):
        code = code_of(line).rstrip()
        if SKIPPED.match(code) or not code.strip():
            may_start = may_start and not code.strip()
            continue
        for changed in changes_of_line(line):
            add(index, index, changed)
        if may_start and STATEMENT.match(code):
            last = end_of_statement(lines, index)
            if last is not None:
                add(index, last, ";")
        may_start = code.endswith((";", "{", "}", ":"))
    return list(found.values())


def apply(text, mutation):
    lines = text.split("\n")
    first = lines[mutation.line - 1]
    indentation = first[:len(first) - len(first.lstrip())]
    lines[mutation.line - 1:mutation.last_line] = [indentation + mutation.changed]
    return "\n".join(lines)
