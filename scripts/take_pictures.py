#!/usr/bin/env python3
"""Takes the pictures of README and help anew, from a player with a list to be seen.
usage: take_pictures.py PROGRAM OUTDIR      OUTDIR: help/images"""
import pathlib
import re
import shutil
import sys
import tempfile
import time

import desk
import shown_list

SETTINGS = {"PLAYLISTDISPLAYMODE": 3, "EFFECTCR": 1, "EFFECTLT": 1, "EFFECTEQSWITCH": 1}
CURVE = [(127, 118), (145, 106), (175, 140), (205, 155), (225, 176), (250, 178), (280, 150),
         (300, 130), (316, 108)]

program, out = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
work = pathlib.Path(tempfile.mkdtemp(prefix="kwo-pictures-"))
(work / "player").mkdir()
player = desk.Player(program, work / "player")
try:
    player.quit()
    shown_list.write(work, work / "player")
    settings = work / "player/config/kwo/settings"
    text = settings.read_text()
    for name, value in SETTINGS.items():
        text = re.sub(rf"({name}=dword:)\w+", rf"\g<1>{value:08x}", text)
    settings.write_text(text)
    player.start()
    time.sleep(2)
    player.press(desk.VISUALISER)
    player.press(desk.PLAY, rest=9)
    player.move(500, 320)
    player.portrait(out / "main.png")
    for name in ("playlist", "info", "config", "window", "mixer"):
        player.open_page(name, rest=2)
        player.portrait(out / f"{'sliders' if name == 'mixer' else name}.png")
        if name == "playlist":
            player.press(desk.FUNCTION)
            player.portrait(out / "menu.png")
            desk.run("xdotool", "key", "Escape")
    player.press(desk.SUB_PAGES["equaliser"], rest=1.4)
    for start, end in zip(CURVE, CURVE[1:]):
        player.drag(start, end, rest=0.1)
    for name in ("equaliser", "effects", "dj"):
        player.press(desk.SUB_PAGES[name], rest=2)
        player.portrait(out / f"{name}.png")
    player.open_page("main")
    for _ in range(3):
        player.press(desk.DISPLAY_MODE, rest=1)
    player.move(500, 320)
    player.portrait(out / "full-window.png")
finally:
    player.quit()
    shutil.rmtree(work, ignore_errors=True)
