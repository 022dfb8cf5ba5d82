"""What the checks on a desktop share: telling what holds, and reading screenshots."""
import subprocess
import sys

import numpy

failures = []


def check(what, holds, figure=""):
    print(f"{'ok  ' if holds else 'FAIL'} {what} {figure}", flush=True)
    if not holds:
        failures.append(what)


def figure(what, value):
    """What depends on the machine and what else it does is told, not judged."""
    print(f"     {what}: {value}", flush=True)


def pixels(path, width=488):
    """Rows of red, green and blue."""
    data = subprocess.run(["convert", path, "-depth", "8", "rgb:-"], check=True,
                          capture_output=True).stdout
    return numpy.frombuffer(data, numpy.uint8).reshape(-1, width, 3).astype(int)


def finish(name):
    print(f"{name}: " + (f"{len(failures)} checks failed" if failures else "all checks passed"))
    sys.exit(bool(failures))
