#!/usr/bin/env python3
"""Kills the program at random moments while a user adds, moves, removes and saves, and looks at what
the next start finds: list, presets and settings whole, no older than ten seconds before the kill,
and no file left over.
usage: check_kills.py PROGRAM [KILLS] [SEED]     KILLS: 200"""
import pathlib
import random
import re
import shutil
import signal
import struct
import sys
import tempfile
import time

import desk

OLDEST = 10  # seconds
SONGS = 40
PRESETS = 64 * b"User Preset".ljust(64, b"\0") + 64 * 17 * struct.pack("<f", 1.0)

program = pathlib.Path(sys.argv[1])
kills = int(sys.argv[2]) if len(sys.argv) > 2 else 200
seed = int(sys.argv[3]) if len(sys.argv) > 3 else 1
chance = random.Random(seed)
work = pathlib.Path(tempfile.mkdtemp(prefix="kwo-kills-"))
failures = []
oldest = kill = 0


def fail(what):
    print(f"FAIL kill {kill}: {what}", flush=True)
    failures.append(what)


def songs_of(history):
    return re.findall(r"ADD \S*?(\w+)\.mp3", history)


class Hands:
    """One player's user, who remembers what the list and the balance were, and when."""

    def __init__(self, player, songs, balance):
        self.player, self.songs, self.balance = player, list(songs), balance
        self.page = "main"
        self.states = [(time.monotonic(), list(songs), balance)]

    def open(self, page):
        if self.page != page:
            # A press on what has not come to rest would be lost, on a busy machine too.
            self.player.open_page(page, rest=2.5)
            self.page = page

    def note(self):
        self.states.append((time.monotonic(), list(self.songs), self.balance))

    def menu(self, button, item):
        self.player.press(button, rest=0.3)
        desk.run("xdotool", "key", *["Down"] * item, "Return")
        time.sleep(0.3)

    def add(self):
        self.open("playlist")
        name = f"s{len(self.songs)}_{chance.randrange(10 ** 6)}"
        (work / "songs" / f"{name}.mp3").touch()
        self.menu(desk.ADD, 3)
        desk.await_window("Choose Songs")
        desk.run("xdotool", "type", "--delay", "4", f"{work}/songs/{name}.mp3")
        desk.run("xdotool", "key", "Return")
        self.songs.append(name)
        self.note()
        time.sleep(0.3)

    def scroll_up(self):
        self.player.move(*desk.FIRST_ROW)
        desk.run("xdotool", "click", "--repeat", 20, "--delay", 5, 4)

    def remove(self):
        self.open("playlist")
        self.scroll_up()
        self.player.press(desk.FIRST_ROW, rest=0.3)
        self.menu(desk.REMOVE, 1)
        del self.songs[:1]
        self.note()

    def move(self):
        """The first song goes one place down."""
        if len(self.songs) < 2:
            return
        self.open("playlist")
        self.scroll_up()
        self.player.press(desk.FIRST_ROW, rest=0.3)
        self.player.press(desk.ITEM_DOWN, rest=0.3)
        self.songs[:2] = reversed(self.songs[:2])
        self.note()

    def turn(self):
        """A notch on the balance."""
        self.open("mixer")
        self.player.move(336, 164)
        desk.run("xdotool", "click", 4 if self.balance < 50 else 5)
        self.balance += 5 if self.balance < 50 else -5
        self.note()
        time.sleep(0.2)

    def work(self, end):
        while time.monotonic() < end:
            if chance.random() < 0.15:
                self.turn()
            else:
                chance.choice([self.add, self.add, self.move, self.remove])()


def saved(player):
    """What the told files hold: songs and balance."""
    history = (player.folder / "HISTORY.PLA").read_bytes().decode()
    if not history.startswith("VERSION 10\r\n") or not history.endswith("\r\n"):
        fail("the list is not whole")
    if (player.folder / "EQ.SET").read_bytes() != PRESETS:
        fail("the presets are not whole")
    settings = (player.folder / "config/kwo/settings").read_text()
    found = re.search(r"SLIDERPAN=dword:([0-9a-f]{8})", settings)
    if not found:
        fail("the settings are not whole")
        return songs_of(history), 0
    balance = int(found[1], 16)
    return songs_of(history), balance - (balance >> 31 << 32)


def check(found, users, killed):
    """What was found is a state of one of the users, and not too old a one.  Songs are compared by
    their number: on a busy machine a press may miss its row, and another one moves or goes."""
    global oldest
    songs, balance = found
    known = {path.stem for path in (work / "songs").iterdir()} | set(users[0].states[0][1])
    if len(set(songs)) < len(songs) or not set(songs) <= known:
        fail(f"songs that were never added: {songs}")
    ages = []
    for user in users:
        for at, (begun, listed, turned) in enumerate(user.states):
            if len(listed) == len(songs) and turned == balance:
                # It held until the next one.
                until = user.states[at + 1][0] if at + 1 < len(user.states) else killed
                ages.append(max(0, killed - until))
    if not ages:
        fail(f"what was found was never there: {found}, but {[u.states[-1] for u in users]}")
        return
    oldest = max(oldest, min(ages))
    if min(ages) > OLDEST:
        fail(f"what was found is {min(ages):.1f} s old")


def left_over(folder):
    usual = {"kwo", "modules", "skin", "help", "music", "config", "stderr", "HISTORY.PLA", "EQ.SET"}
    names = {path.name for path in folder.iterdir()} - usual
    names |= {path.name for path in (folder / "config/kwo").iterdir()} - {"settings", "screens"}
    return {name for name in names if not re.fullmatch(r"(HISTORY|EQ)-OLD(-\d)?\.(PLA|SET)", name)}


for folder in ("songs", "player"):
    (work / folder).mkdir()
player = desk.Player(program, work / "player")
player.quit()
state = saved(player)
others = []
try:
    for kill in range(1, kills + 1):
        player.start()
        time.sleep(1.2)
        user = Hands(player, *state)
        users, others = [user], []
        if kill % 4 == 0:
            # A second one on the same files, which starts beside the first and is idle.
            others.append(desk.Player(program, player.folder))
            time.sleep(1)
            users.append(Hands(others[0], *state))
            desk.run("wmctrl", "-i", "-a", player.window)
        user.work(time.monotonic() + chance.uniform(0, 18))
        if kill % 3 == 0:  # in the middle of the end
            player.process.send_signal(signal.SIGTERM)
            time.sleep(chance.uniform(0, 1.5))
        killed = time.monotonic()
        for one in [player] + others:
            one.process.kill()
            one.process.wait()
        player.start()
        time.sleep(1.2)
        running = list(player.folder.glob("RUNNING-*"))
        if len(running) != 1:
            fail(f"{len(running)} running copies")
        if player.quit() != 0:
            fail("the next run does not end in order")
        state = saved(player)
        check(state, users, killed)
        if left_over(player.folder):
            fail(f"left over: {left_over(player.folder)}")
        if len(state[0]) > SONGS:
            (player.folder / "HISTORY.PLA").write_bytes(b"VERSION 10\r\n")
            state = saved(player)
        print(f"kill {kill}: {len(user.states) - 1} changes, {len(state[0])} songs", flush=True)
finally:
    for one in [player] + others:
        if one.process.poll() is None:
            one.process.kill()
if failures:
    print(f"what was found is in {work}")
else:
    shutil.rmtree(work, ignore_errors=True)
print(f"kills: {len(failures)} of {kills} checks failed; the oldest state found was {oldest:.1f} s old")
sys.exit(bool(failures))
