#!/usr/bin/env python3
"""Measures players in turn, as a user has them on the screen: CPU and wakings while idle, while playing
and while playing minimised, anonymous memory while playing, and the time from the start to the window.
Prints the medians over the rounds, and each figure beside the last player's.
usage: measure_players.py SONG SECONDS ROUNDS PLAYER...     PLAYER: a build's kwo, or "audacious"

Needs a display of its own with a window manager, a session bus, a sound server with a null sink, and
xdotool."""
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import desk

FIGURES = {"idle": "%", "idle wakings": "/s", "playing": "%", "playing wakings": "/s",
           "minimised": "%", "minimised wakings": "/s", "memory": "MiB", "start": "ms"}


class Audacious:
    """In its classic interface, which is a skinned window too."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kwo-other-"))
        settings = self.folder / "config/audacious/config"
        settings.parent.mkdir(parents=True)
        settings.write_text("[audacious]\nuse_qt=TRUE\n\n[audqt]\niface=skins-qt\n")
        self.environment = dict(os.environ, XDG_CONFIG_HOME=str(self.folder / "config"),
                                XDG_DATA_HOME=str(self.folder / "data"))
        begun = time.monotonic()
        self.process = subprocess.Popen(["audacious", song], env=self.environment,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.window = desk.await_window("udacious", rest=0)
        self.first_seen = time.monotonic() - begun
        time.sleep(2)
        self.tell("--stop")

    def tell(self, word):
        subprocess.run(["audacious", word], env=self.environment, stderr=subprocess.DEVNULL)

    def play(self):
        self.tell("--play")

    def quit(self):
        self.process.terminate()
        self.process.wait(timeout=20)
        shutil.rmtree(self.folder, ignore_errors=True)


class Ours:
    def __init__(self, program):
        folder = pathlib.Path(tempfile.mkdtemp(prefix="kwo-measured-"))
        (folder / "HISTORY.PLA").write_bytes(
            f"VERSION 10\r\nADD {song}\r\n".replace("/", "\\").encode())
        self.player = desk.Player(program, folder)
        self.process, self.window = self.player.process, self.player.window
        self.first_seen = self.player.first_seen

    def play(self):
        self.player.press(desk.PLAY)

    def quit(self):
        self.player.quit()
        self.player.remove()


def spent(pid):
    """Nanoseconds of CPU and wakings of all threads that live."""
    total, wakings = 0, 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        total += int((task / "schedstat").read_text().split()[0])
        wakings += int(re.search(r"\nvoluntary_ctxt_switches:\s+(\d+)",
                                 (task / "status").read_text())[1])
    return total, wakings


def load(pid):
    """Percent of a core, and wakings a second."""
    before, begun = spent(pid), time.monotonic()
    time.sleep(seconds)
    after, passed = spent(pid), time.monotonic() - begun
    return (after[0] - before[0]) / 1e7 / passed, (after[1] - before[1]) / passed


def anonymous(pid):
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
    return int(re.search(r"Anonymous:\s+(\d+)", rollup)[1]) / 1024


def measure(name):
    player = Audacious() if name == "audacious" else Ours(name)
    pid = player.process.pid
    desk.run("xdotool", "mousemove", 1270, 790)
    time.sleep(4)
    figures = {"start": player.first_seen * 1000}
    figures["idle"], figures["idle wakings"] = load(pid)
    player.play()
    desk.run("xdotool", "mousemove", 1270, 790)
    time.sleep(4)
    figures["playing"], figures["playing wakings"] = load(pid)
    figures["memory"] = anonymous(pid)
    desk.run("xdotool", "windowminimize", player.window)
    time.sleep(3)
    figures["minimised"], figures["minimised wakings"] = load(pid)
    player.quit()
    return figures


if len(sys.argv) < 5:
    sys.exit(__doc__)
song, seconds, rounds = pathlib.Path(sys.argv[1]).resolve(), float(sys.argv[2]), int(sys.argv[3])
players = sys.argv[4:]
found = {player: [] for player in players}
for number in range(rounds):
    for player in players:
        found[player].append(measure(player))
for figure, unit in FIGURES.items():
    medians = [statistics.median(one[figure] for one in found[player]) for player in players]
    print(f"{figure:18} " + "  ".join(f"{median:8.2f} {unit}" for median in medians) +
          (f"   first beside last {medians[0] / medians[-1]:.2f}" if medians[-1] else ""))
