#!/usr/bin/env python3
"""Compares the messages of the program with the tables of messages in docs/manual.ja.md.

The messages of the program are the string literals in src/ that hold Japanese letters, adjacent literals
joined, without the captions, displays and logs that the constants below describe. The messages of the
manual are the cells of the table columns whose heading is in HEADINGS: <br> ends a line, 〈...〉 stands for
what the program fills in, and ・ opens a message.

Both sides are compared line by line, to the character, without what is filled in. Prints each line that
only one side has. The exit status is 0 without a difference, else 1.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
MANUAL = "docs/manual.ja.md"
HEADINGS = {"メッセージ", "題名", "表示"}

# Files without messages that the manual has to explain: captions, displays and menus; the console.
OTHER_FILES = re.compile(
    r"src/(cli/|ui/pictures/|ui/main/typefaces\.h"
    r"|view/(commands|library_view|texts)\.|state/app_state_info\.h)")
# Functions, types and constants that make captions, and texts for the status bar and for progress. Also the
# faults of a copy for which the window has a message of its own, so that only the console gives the reason.
CAPTIONS = re.compile(
    r"setWindowTitle|setText|setStatus_?|label|addButton|Make\w*(Button|Group)"
    r"|FileChooser|Q(CheckBox|GroupBox|Label|ProgressDialog|PushButton)|Field|JobTexts|k\w*(Stage|Status)"
    r"|k(NoRoom|Unwritable|Unreadable|Stopped|NoMemory|SameFile|NameTaken)")
# The only functions of src/report that make messages; all other texts there belong into logs.
REPORT_MESSAGES = re.compile(r"\w*(Message|Refusal)")

JAPANESE = re.compile("[ぁ-ヺー-ヾ一-鿿]")
TOKEN = re.compile(
    r"""//[^\n]*|/\*.*?\*/|(?:u8|[uUL])?"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])'|\w+|\S""", re.DOTALL)
FILLED_IN = re.compile(r"%[sd]|\{[^{}]*\}|〈[^〈〉]*〉|<br>|[\n\r\t]")
ESCAPES = {"n": "\n", "r": "\r", "t": "\t"}


def lines(text):
    """Returns the lines of `text`, cut where something is filled in, that hold Japanese letters."""
    cut = (line.strip().removeprefix("・") for line in FILLED_IN.split(text))
    return {line for line in cut if JAPANESE.search(line)}


def literals(code):
    """Yields, for each string literal of C++ code, its text, the names in front of it in its statement and
    in the initializers around it, and the functions that hold it."""
    names, functions = [], []
    braces = []  # by open brace: names and functions outside it
    calls, called = [], ""  # by open parenthesis, the name in front of it; that of the last closed one
    text, before = None, ""
    for token in TOKEN.findall(code) + [";"]:
        if token.startswith(("//", "/*")):
            continue
        if token.endswith('"'):
            body = token[token.index('"') + 1 : -1]
            text = (text or "") + re.sub(r"\\(.)", lambda m: ESCAPES.get(m[1], m[1]), body)
            continue
        if text is not None:
            yield text, names, functions
            text = None
        if token == "(":
            calls.append(before)
        elif token == ")" and calls:
            called = calls.pop()
        elif token == "{":
            if before in (")", "const", "override", "noexcept"):
                braces.append(([], functions))
                names, functions = [], functions + [called]
            else:
                braces.append((names, functions))
        elif token == "}" and braces:
            names, functions = braces.pop()
        elif token == ";":
            names = []
        elif re.match(r"[A-Za-z_]", token):
            names = names + [token]
        before = token


def program_lines():
    """Returns the lines of the messages in src/, each with the file that holds it."""
    found = {}
    for path in sorted((ROOT / "src").rglob("*")):
        name = path.relative_to(ROOT).as_posix()
        if path.suffix not in (".cpp", ".h") or OTHER_FILES.match(name):
            continue
        for text, names, functions in literals(path.read_text(encoding="utf-8")):
            if any(CAPTIONS.fullmatch(word) for word in names):
                continue
            if name.startswith("src/report/") and not any(map(REPORT_MESSAGES.fullmatch, functions)):
                continue
            for line in lines(text):
                found.setdefault(line, name)
    return found


def manual_lines():
    """Returns the set of the lines of the messages in the manual."""
    found = set()
    columns = []
    for row in (ROOT / MANUAL).read_text(encoding="utf-8").splitlines():
        cells = [cell.strip() for cell in row.strip("|").split("|")] if row.startswith("|") else []
        if HEADINGS.intersection(cells) or not cells:
            columns = [column for column, cell in enumerate(cells) if cell in HEADINGS]
            continue
        for column in columns:
            found |= lines(cells[column])
    return found


def main():
    program, manual = program_lines(), manual_lines()
    missing = [f"{name}: {line}" for line, name in program.items() if line not in manual]
    stale = sorted(manual - program.keys())
    if missing:
        print(f"{MANUAL} has no such message:", *missing, sep="\n  ")
    if stale:
        print(f"src has no such message as {MANUAL} tells:", *stale, sep="\n  ")
    if not program:
        print("src has no message at all: the sources are read otherwise than they are written")
    return 1 if missing or stale or not program else 0


if __name__ == "__main__":
    sys.exit(main())
