"""What can be changed in a line of C++ so that a good test notices."""
import re

# Comments, texts and characters are no code; they keep their places as blanks.
NO_CODE = re.compile(r'//.*|"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'')
CONDITION = re.compile(r"\bif (?:constexpr )?\(")
# One whole statement that does something: a call, an assignment, an increment, a jump within the function.
STATEMENT = re.compile(r"^\s+(?!return\b|using\b|throw\b|case\b|delete\b|goto\b)"
                       r"(?:[\w:\[\]().>*&<-]+(?: [-+|&^]?= .*|\(.*\))|(?:\+\+|--)[\w:.>-]+|break|continue);$")
SWAPS = (
    (r" == ", " != "), (r" != ", " == "),
    (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "),
    (r" && ", " || "), (r" \|\| ", " && "),
    (r" \+ ", " - "), (r" - ", " + "), (r" \+= ", " -= "), (r" -= ", " += "),
    (r"\+\+(?=\w)", "--"), (r"--(?=\w)", "++"),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
)


def closing(code, start):
    """Where the parenthesis that opens before `start` closes, or -1 when that is on another line."""
    depth = 1
    for at in range(start, len(code)):
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        if depth == 0:
            return at
    return -1


def of_line(line):
    """All changed versions of a line."""
    code = NO_CODE.sub(lambda found: " " * len(found.group()), line)
    if code.lstrip().startswith(("#", "template", "static_assert", "using ")) or "operator" in code:
        return
    for found in CONDITION.finditer(code):
        end = closing(code, found.end())
        start = code.rfind("; ", found.end(), end) + 2 if "; " in code[found.end():end] else found.end()
        parts = re.findall(r" (?:==|!=|&&|\|\|) ", code[start:end])
        # A single comparison is swapped below, which is the same.
        if end > 0 and "constexpr" not in found.group() and parts not in ([" == "], [" != "]):
            yield line[:start] + "!(" + line[start:end] + ")" + line[end:]
    if STATEMENT.match(code.rstrip()):
        yield re.match(r"\s*", line).group() + ";"
    for before, after in SWAPS:
        for found in re.finditer(before, code):
            yield line[:found.start()] + after + line[found.end():]


def of_text(text):
    """(line number from 1, line, changed line) for every change of a source."""
    return [(number, line, changed) for number, line in enumerate(text.split("\n"), 1)
            for changed in of_line(line)]
