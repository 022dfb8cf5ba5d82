#!/usr/bin/env python3
"""Plays the demo song in the window and saves a screenshot of every page.
usage: show_pages.py PROGRAM OUTDIR"""
import pathlib
import sys
import time

import desk

program, out = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
out.mkdir(parents=True, exist_ok=True)
player = desk.Player(program)
try:
    time.sleep(1.5)
    player.press(desk.PLAY, rest=6)
    player.move(500, 320)
    player.portrait(out / "main.png")
    for name in ("playlist", "mixer", "info", "config", "window"):
        player.open_page(name)
        if name != "mixer":
            player.portrait(out / f"{name}.png")
            continue
        for sub, place in desk.SUB_PAGES.items():
            player.press(place, rest=1.4)
            player.portrait(out / f"mixer-{sub}.png")
    player.open_page("main")
    for _ in range(3):
        player.press(desk.DISPLAY_MODE, rest=1)
    player.move(500, 320)
    player.portrait(out / "full-window.png")
    for path in sorted(out.glob("*.png")):
        print(path)
finally:
    code = player.quit()
    player.remove()
sys.exit(code)
