#!/usr/bin/env python3
"""Plants faults in source files, one at a time, and lists those that the unit suite does not notice.

usage: plant_faults.py FILE... [--count N] [--seed S]

Each fault changes one token: a comparison is turned, a constant is off by one, a condition is
negated, a statement is dropped, or two arguments are exchanged.  N (20) faults are drawn by chance
S (1) from all that the files have room for; one that does not compile is drawn again.  The work is
done on a copy of the tree in build-faults/, which is kept to make the next run quicker: nothing
else is ever touched.  A suite that takes far too long has noticed, too.

A survivor is a question: can a user notice it?  If so, a test is missing.
"""
import argparse
import os
import pathlib
import random
import re
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPY = ROOT / "build-faults"
SUITE = COPY / "build" / "tests" / "kwo_tests"
SLOWEST = 3  # times the suite's own time

TURNED = {" < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " == ": " != ",
          " != ": " == "}
COMPARISON = re.compile(r" (?:[<>]=?|[=!]=) (?=[^=])")
NUMBER = re.compile(r"(?<![\w.\"'])(?:0x[0-9a-fA-F]+|\d+(?:\.\d+)?)(?=[fuUlL]*\b)")
CONDITION = re.compile(r"\bif \(")
DECLARES = (r"return|break|continue|using|case|default|goto|else|if|for|while|do|switch|const|auto|"
            r"static|constexpr|struct|class|enum|namespace|template|typedef|extern|friend|public|"
            r"private|protected|delete")
STATEMENT = re.compile(rf"^ +(?!(?:{DECLARES})\b)[\w:.\->\[\]()*&]+(?: [-+*/|&^]?= .*|\(.*\)|\+\+|--);$")
CALL = re.compile(r"\b\w+\((?=[^()]*,)")
PARAMETER = re.compile(r"(?:const )?[\w:<>]+[ *&]+\w+")


def blanked(text):
    """The text with what is no code, comments and quoted text, made blank at its place."""
    quiet = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])'|^#[^\n]*",
                       re.S | re.M)
    return quiet.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), text)


def closing(text, start):
    """The place of the bracket that closes the one in front of `start`; -1 if none does."""
    depth = 1
    for place in range(start, len(text)):
        depth += (text[place] in "([{") - (text[place] in ")]}")
        if depth == 0:
            return place
    return -1


def arguments(code, start, end):
    """The places of the arguments between two brackets."""
    places, depth, first = [], 0, start
    for place in range(start, end + 1):
        depth += (code[place] in "([{") - (code[place] in ")]}")
        if place == end or (code[place] == "," and depth == 0):
            places.append((first, place))
            first = place + 1
    return [(a + len(code[a:b]) - len(code[a:b].lstrip()), b) for a, b in places]


def off_by(step, number):
    if "." not in number:
        return str(int(number, 0) + step)
    digits = len(number.split(".")[1])
    return f"{float(number) + step * 10 ** -digits:.{digits}f}"


def faults(text):
    """All faults that the text has room for: from, to, and what stands there instead."""
    code = blanked(text)
    for found in COMPARISON.finditer(code):
        yield found.start(), found.end(), TURNED[found.group()]
    for found in NUMBER.finditer(code):
        for step in (1, -1):
            yield found.start(), found.end(), off_by(step, found.group())
    for found in CONDITION.finditer(code):
        end = closing(code, found.end())
        if end > 0 and ";" not in code[found.end():end]:
            yield found.end(), end, f"!({text[found.end():end]})"
    place = 0
    for line in code.split("\n"):
        if STATEMENT.match(line) and line.count("(") == line.count(")"):
            indent = len(line) - len(line.lstrip())
            yield place + indent, place + len(line), ";"
        place += len(line) + 1
    for found in CALL.finditer(code):
        end = closing(code, found.end())
        for (a, b), (c, d) in zip(*[arguments(code, found.end(), end)[i:] for i in (0, 1)]):
            if text[a:b] != text[c:d] and not PARAMETER.fullmatch(text[a:b]):
                yield a, d, text[c:d] + text[b:c] + text[a:b]


def fail(message):
    sys.exit(f"plant_faults.py: {message}")


def run(command):
    return subprocess.run(command, cwd=COPY, capture_output=True, text=True)


def build():
    return run(["cmake", "--build", "build", "--target", "kwo_tests"])


def copy_tree():
    """Brings the copy up to date, and leaves alone what has not changed."""
    names = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, text=True,
                           capture_output=True, check=True).stdout.split("\n")
    for name in filter(None, names):
        source, target = ROOT / name, COPY / name
        if not source.is_file():
            continue
        data = source.read_bytes()
        if name == "CMakeLists.txt":  # what a fault leaves unused is no error
            data = data.replace(b" -Werror", b"")
        if not target.exists() or target.read_bytes() != data:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(data)
    for path in COPY.rglob("*"):
        inside = path.relative_to(COPY)
        if inside.parts[0] != "build" and path.is_file() and not (ROOT / inside).exists():
            path.unlink()


def suite_notices(limit):
    command = [SUITE, "--gtest_fail_fast", "--gtest_brief=1"]
    suite = subprocess.Popen(command, cwd=COPY / "build", stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL, start_new_session=True)
    try:
        return suite.wait(limit) != 0
    except subprocess.TimeoutExpired:
        return True
    finally:
        # Nothing that hangs may live on, nor what it has started.
        try:
            os.killpg(suite.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        suite.wait()


def plant(path, fault, limit):
    """Whether the suite notices; None where the fault does not compile."""
    start, end, instead = fault
    text = path.read_text()
    path.write_text(text[:start] + instead + text[end:])
    try:
        built = build()
        if "no work to do" in built.stdout:
            fail(f"the suite does not contain {path.relative_to(COPY)}")
        return None if built.returncode else suite_notices(limit)
    finally:
        path.write_text(text)


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n")[2][7:])
    parser.add_argument("files", nargs="+")
    parser.add_argument("--count", type=int, default=20)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()

    drawn = []
    for name in options.files:
        path = (pathlib.Path.cwd() / name).resolve()
        if not path.is_file() or ROOT not in path.parents:
            fail(f"{name} is no file of this tree")
        relative = path.relative_to(ROOT)
        drawn += [(relative, fault) for fault in faults(path.read_text())]
    random.Random(options.seed).shuffle(drawn)

    COPY.mkdir(exist_ok=True)
    copy_tree()
    if run(["cmake", "--preset", "release"]).returncode or build().returncode:
        fail("the suite does not build")
    start = time.monotonic()
    if suite_notices(600):
        fail("the suite fails without any fault")
    limit = SLOWEST * (time.monotonic() - start) + 10

    tried = survivors = 0
    for name, fault in drawn:
        if tried == options.count:
            break
        noticed = plant(COPY / name, fault, limit)
        if noticed is None:
            continue
        tried += 1
        survivors += not noticed
        text = (ROOT / name).read_text()
        line = text.count("\n", 0, fault[0]) + 1
        was = " ".join(text[fault[0]:fault[1]].split())
        print(f"{'noticed ' if noticed else 'SURVIVES'} {name}:{line}: {was} -> "
              f"{' '.join(fault[2].split())}", flush=True)
    if tried == 0:
        fail("no fault compiles")
    print(f"{tried - survivors} of {tried} faults noticed")


if __name__ == "__main__":
    main()
