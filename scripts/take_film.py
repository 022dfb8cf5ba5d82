#!/usr/bin/env python3
"""Films a tour of the window without a desktop, as a moving picture that begins anew at its end.
usage: take_film.py DRIVE_WINDOW OUT.webp      needs img2webp (Debian's webp) and ImageMagick"""
import pathlib
import subprocess
import sys
import tempfile

import desk
import shown_list

FRAME = 50  # milliseconds
TOUCH = 30  # that a hand of the script takes for a move, for a press and for letting go
QUALITY = 75
ARROW = "M 0,0 L 0,16 L 4,12 L 7,18 L 9,17 L 6,11 L 11,11 Z"
CURVE = [(152, 130), (170, 108), (196, 134), (226, 152), (256, 168), (290, 140), (316, 112),
         (336, 104)]  # by the layout of the font that is used without a desktop


class Tour:
    """A script for the program, and where its pointer is at each frame."""

    def __init__(self):
        self.lines, self.pointers, self.place = [], [], (300, 220)

    def say(self, *lines):
        self.lines += lines

    def stay(self, milliseconds):
        for _ in range(milliseconds // FRAME):
            self.say(f"wait {FRAME}", f"shot {len(self.pointers):04}.png")
            self.pointers.append(self.place)

    def go(self, place, milliseconds=400):
        """Moves the pointer there, softly."""
        start, frames = self.place, milliseconds // FRAME
        for frame in range(1, frames + 1):
            share = frame / frames
            share = share * share * (3 - 2 * share)
            self.place = tuple(round(a + (b - a) * share) for a, b in zip(start, place))
            self.touch("move {} {}".format(*self.place))

    def touch(self, command):
        """What the hand does, in the time of one frame."""
        self.say(command, f"wait {FRAME - TOUCH}", f"shot {len(self.pointers):04}.png")
        self.pointers.append(self.place)

    def press(self, place, rest):
        self.go(place)
        self.touch("down")
        self.touch("up")
        self.stay(rest)

    def drag(self, places, milliseconds, rest):
        self.go(places[0])
        self.touch("down")
        for place in places[1:]:
            self.go(place, milliseconds // (len(places) - 1))
        self.touch("up")
        self.stay(rest)


tour = Tour()
# Names as artist and title, the bars, and the music under way.
tour.say("press {} {}".format(*desk.PAGES["playlist"]), "wait 1500", "menu Show : Artist - Title",
         "press {} {}".format(*desk.FUNCTION), "wait 500",
         "press {} {}".format(*desk.PAGES["main"]), "wait 1500",
         "press {} {}".format(*desk.VISUALISER), "wait 300",
         "press {} {}".format(*desk.PLAY), "wait 9000", "move 300 220")
tour.stay(700)
tour.drag([desk.DIGITS, (desk.DIGITS[0] + 20, desk.DIGITS[1])], 600, 400)
tour.press(desk.PAGES["playlist"], 900)
tour.press(desk.PAGES["mixer"], 600)
tour.press(desk.SUB_PAGES["equaliser"], 600)
tour.drag(CURVE, 1000, 300)
tour.press(desk.PAGES["main"], 700)
tour.press(desk.VISUALISER, 700)
for _ in range(3):
    tour.press(desk.DISPLAY_MODE, 100)
tour.go((300, 220))
tour.stay(900)
tour.press(desk.DISPLAY_MODE, 200)
for _ in range(6):  # to the one that it began with
    tour.say("press {} {}".format(*desk.VISUALISER))
tour.go((300, 220))

program, out = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
with tempfile.TemporaryDirectory(prefix="kwo-film-") as folder:
    work = pathlib.Path(folder)
    player = work / "player"
    player.mkdir()
    (player / "skin").symlink_to(desk.ROOT / "skin")
    shown_list.write(work, player, [song for song in shown_list.SONGS if "".join(song).isascii()])
    (work / "tour").write_text("\n".join(tour.lines) + "\n")
    desk.run(program, work / "tour", "--program", player, "--out", work)
    frames = [work / f"{number:04}.png" for number in range(len(tour.pointers))]
    for frame, (x, y) in zip(frames, tour.pointers):
        desk.run("convert", frame, "-fill", "white", "-stroke", "black", "-draw",
                 f"translate {x},{y} path '{ARROW}'", frame)
    desk.run("img2webp", "-loop", 0, "-min_size", "-lossy", "-q", QUALITY, "-m", 6, "-d", FRAME,
             *frames, "-o", out)
print(f"{out}: {len(frames) * FRAME / 1000:g} s, {out.stat().st_size / 1e6:.2f} MB")
