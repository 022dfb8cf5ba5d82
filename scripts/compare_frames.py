#!/usr/bin/env python3
"""Drives two builds of drive_window by the same fixed script through every page, menu and control, and
compares what they show and print, the list and the presets, byte for byte: for changes that move code
and nothing else.
usage: compare_frames.py DRIVE_WINDOW_BEFORE DRIVE_WINDOW_AFTER"""
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

import desk

MENU_ROWS = {
    desk.FUNCTION: ("Select All", "Deselect All", "Sort", "Read Tag Information", "Show : Title",
                    "Show : Title - Artist", "Show : Artist - Title", "Show : Artist - Album - Title",
                    "Show : Filename"),
    desk.REMOVE: ("Remove Selected", "Remove Dead Links", "Remove Unselected", "Remove All"),
}
shots = 0


def shot(count=1, wait=60):
    global shots
    lines = []
    for _ in range(count):
        lines += [f"wait {wait}", f"shot {shots:05}.png"]
        shots += 1
    return lines


def press(place, frames=4, kind="press"):
    return [f"{kind} {place[0]} {place[1]}", *shot(frames), "print"]


def drag(start, end, frames=3):
    lines = [f"move {start[0]} {start[1]}", "down", *shot(1)]
    for i in range(1, 5):
        lines.append("move " + " ".join(str(start[k] + (end[k] - start[k]) * i // 4) for k in (0, 1)))
        lines += shot(1)
    return [*lines, "up", *shot(frames), "print"]


def menu(button, row):
    return [f"menu {row}", *press(button)]


def pages(songs):
    lines = [*shot(30), *press(desk.PLAY, 20), *drag(desk.DIGITS, (desk.DIGITS[0] + 60, 62), 10)]
    for _ in range(8):
        lines += press(desk.VISUALISER, 8)
    for _ in range(4):
        lines += press(desk.DISPLAY_MODE, 12)
    lines += [*press(desk.PAGES["playlist"], 30), f"drop {' '.join(songs)}", *shot(10)]
    x, y = desk.FIRST_ROW
    for row in range(4):
        lines += press((x, y + 16 * row), 3) + press((x, y + 16 * row), 3, "rightpress")
    lines += press((x, y + 32), 6, "doublepress") + drag((x, y), (x, y + 64))
    for button in (desk.ITEM_UP, desk.ITEM_DOWN):
        lines += press(button) + press(button, 4, "rightpress")
    lines += drag((445, 100), (445, 190)) + press((445, 90)) + press((445, 225))
    lines += [f"dialog {songs[1]} {songs[2]}", *menu(desk.ADD, "Add Files")]
    lines += [f"dialog {pathlib.Path(songs[0]).parent}", *menu(desk.ADD, "Add Directory")]
    lines += ["dialog", *menu(desk.ADD, "Open Directory")]
    for button, rows in MENU_ROWS.items():
        for row in rows:
            lines += menu(button, row)
            if row.startswith("Remove Dead"):
                lines += press((x, y))
    lines += [f"dialog {' '.join(songs)}", *menu(desk.ADD, "Open Files")]
    lines += press(desk.PAGES["mixer"], 30)
    for height in (126, 164, 202):
        lines += drag((336, height), (290, height)) + press((420, height)) + press((60, height))
    lines += press(desk.SUB_PAGES["equaliser"], 25) + drag((130, 118), (330, 150))
    lines += drag((440, 110), (440, 140)) + press((430, 120), 4, "rightpress")
    for place in (desk.PRESET_FORWARD, desk.PRESET_BACK, (60, 218), (244, 218), (430, 218), (100, 230),
                  (350, 230)):
        lines += press(place, 8)
    lines += [*press(desk.PRESET_NAME), "type Night train", *shot(4), "caret 3", "backspace", *shot(4)]
    lines += press(desk.PRESET_FORWARD, 6) + drag((150, 150), (300, 90))
    for name in ("effects", "dj"):
        lines += press(desk.SUB_PAGES[name], 25)
        for height in range(90, 240, 12):
            lines += press((120, height)) + press((320, height))
    for name in ("info", "config", "window"):
        lines += press(desk.PAGES[name], 25)
    for height in (60, 82, 105, 105, 105, 105):
        lines += press((174, height), 8)
    lines += ["minimise", *shot(4), "restore", *shot(20), "deactivate", *shot(4), "activate", *shot(4)]
    lines += ["menu", "tray left", *shot(6), "menu", "tray right", *shot(4)]
    for button in (desk.NEXT, desk.NEXT, desk.PREVIOUS, desk.STOP, desk.PLAY, desk.PLAY, desk.PLAY):
        lines += press(button, 8)
    return lines


def hands(seed, songs):
    """Anything, anywhere, with all pages in reach."""
    chance = random.Random(seed)
    # Where a press lands on Quit, the story ends there.
    buttons = [*desk.PAGES.values(), *desk.SUB_PAGES.values(), desk.PLAY, desk.STOP, desk.NEXT,
               desk.PREVIOUS]
    rows = [(button, row) for button, names in MENU_ROWS.items() for row in names]
    lines = [f"drop {' '.join(songs)}", *shot(20)]
    for _ in range(150):
        kind = chance.randrange(8)
        place = chance.randrange(30, 460), chance.randrange(40, 240)
        if kind < 2:
            lines += press(chance.choice(buttons), chance.randrange(1, 12))
        elif kind < 4:
            lines += press(place, 2)
        elif kind == 4:
            lines += press(place, 2, chance.choice(("doublepress", "rightpress")))
        elif kind == 5:
            lines += drag(place, (chance.randrange(0, 488), chance.randrange(0, 300)), 2)
        elif kind == 6:
            button, row = chance.choice(rows)
            lines += [*press(desk.PAGES["playlist"], 20), *menu(button, row)]
        else:
            lines += [f"wait {chance.randrange(3000)}", *shot(1)]
    return lines


def run(program, script, songs, folder):
    folder.mkdir()
    for data in ("skin", "help", "music"):
        (folder / data).symlink_to(desk.ROOT / data)
    out = folder / "shots"
    out.mkdir()
    done = subprocess.run([program, script, "--out", out, "--program", folder], check=True,
                          capture_output=True, text=True)
    seen = {path.name: path.read_bytes() for path in sorted(out.iterdir())}
    for name in ("HISTORY.PLA", "EQ.SET"):
        seen[name] = (folder / name).read_bytes()
    shutil.rmtree(folder)
    return seen | {"what is printed": done.stdout}


os.environ["LC_ALL"] = "C.UTF-8"
before, after = (pathlib.Path(path).resolve() for path in sys.argv[1:])
different = 0
with tempfile.TemporaryDirectory(prefix="kwo-frames-") as name:
    work = pathlib.Path(name)
    (work / "songs").mkdir()
    songs = []
    for number in range(14):
        song = work / "songs" / f"{number}.mp3"
        tag = b"TAG" + f"Title {number}".encode().ljust(30, b"\0") + f"Artist {9 - number % 5}".encode()
        song.write_bytes((desk.ROOT / "tests/data/joint128.mp3").read_bytes() * (5 + number) +
                         tag.ljust(128, b"\0"))
        songs.append(str(song))
    for story in [pages(songs), *(hands(seed, songs) for seed in range(1, 3))]:
        script = work / "script"
        script.write_text("\n".join(story) + "\n")
        first, second = (run(program, script, songs, work / "program") for program in (before, after))
        differing = [name for name in first if first[name] != second.get(name)]
        print(f"{len(first)} compared, {len(set(first.values()))} different from each other;",
              f"differ: {', '.join(differing[:5]) or 'none'}", flush=True)
        different += len(differing) + (first.keys() != second.keys())
sys.exit(different > 0)
