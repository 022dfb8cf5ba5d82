#!/usr/bin/env python3
"""Uses the program on a real X desktop with careless hands: a drag that the window leaves, a press in
the middle of typing, the wheel, a second screen that comes and goes, another density.
usage: check_hands.py PROGRAM"""
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

import numpy

import desk
from checks import check, finish, pixels
from session import awaits

STILL = (40, 40, 400, 160)  # of the info page nothing moves there
# Half of a selected row's colour, that colour, the mark's and the text's.
MENU_COLORS = [(8, 29, 43), (16, 58, 86), (255, 184, 102), (216, 236, 246)]

def area(x, y, width, height):
    """Of the window's picture."""
    player.shot(shot)
    return pixels(shot, player.on_screen(488))[y:y + height, x:x + width]


def enlarged(picture, scale):
    """By means over what each pixel of the screen lies upon."""
    def shares(size):
        screen, own = numpy.arange(int(size * scale))[:, None], numpy.arange(size)[None, :]
        overlap = numpy.minimum(own + 1, (screen + 1) / scale) - numpy.maximum(own, screen / scale)
        return numpy.maximum(overlap, 0) * scale
    down, across = shares(picture.shape[0]), shares(picture.shape[1])
    return numpy.einsum("yr,xc,rcz->yxz", down, across, picture, optimize=True)


def outside():
    """Where the root shows, which is green."""
    return (area(0, 0, player.on_screen(488), player.on_screen(302)) == (0, 255, 0)).all(axis=2)


def own_outside(scale):
    """The same by the skin's key: a pixel of the screen is where its middle lies."""
    key = (pixels(desk.ROOT / "skin/default/background.bmp") == (9, 0, 9)).all(axis=2)
    key = numpy.pad(key, (0, 1), constant_values=True)
    middles = [((numpy.arange(player.on_screen(size)) + 0.5) / scale).astype(int)
               for size in (302, 488)]
    return key[numpy.ix_(*middles)]


def press_edges():
    """Brings the volume from 100 to 99, by presses at three corners of its slider and beside each
    side."""
    player.open_page("mixer")
    player.press(desk.VOLUME_LABEL, rest=0.3)
    left, top, right, bottom = (player.on_screen(value) for value in desk.VOLUME_SLIDER)
    high = (top + bottom) // 2
    for x, y in ((left, top), (left, bottom - 1), (right - 1, bottom - 1), (left - 1, high),
                 (right, high), (left + 4, top - 1), (right - 5, bottom)):
        desk.run("xdotool", "mousemove", player.place[0] + x, player.place[1] + y, "click", 1)
        time.sleep(0.1)


def use_menu():
    """Chooses the first way to show names by keys, and the last one by the pointer."""
    player.open_page("playlist")
    player.press(desk.FUNCTION, rest=0.4)
    mouse("key", "--delay", "30", *["Down"] * 5, "Return")
    player.press(desk.FUNCTION, rest=0.4)
    menu = awaits(lambda: next((place for place in map(desk.rectangle, shown())
                                if player.on_screen(200) < place[2] < player.on_screen(300)), None))
    check("the menu comes up", menu)
    if not menu:
        return
    x, y, width, height = menu
    mouse("mousemove", x + width // 2, y + height - player.on_screen(16))
    desk.run("import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage", shot)
    seen = pixels(shot, width)
    ground, *others = ((seen == color).all(axis=2).mean() for color in MENU_COLORS)
    check("the menu has the skin's colours", ground > 0.7 and min(others) > 0.0002, (ground, others))
    row = seen[height - player.on_screen(16)] == MENU_COLORS[1]
    check("the row under the pointer too", row.all(axis=1).mean() > 0.6)
    check("it is as large as the window makes it look", 210 < width / player.scale < 260 and
          230 < height / player.scale < 270, (width, height))
    mouse("click", 1)


def warmth():
    """How much more red than blue the volume's slider has at its warmest pixel: a held piece is amber."""
    x, y = desk.VOLUME
    strip = area(x - 100, y - 9, 200, 18)
    return (strip[:, :, 0] - strip[:, :, 2]).max()


def setting(name):
    text = (player.folder / "config/kwo/settings").read_text()
    return int(re.search(rf"{name}=dword:([0-9a-f]{{8}})", text)[1], 16)


def restart():
    code = player.quit()
    player.start()
    time.sleep(1.5)
    return code


def shown():
    return subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(player.process.pid)],
                          capture_output=True, text=True).stdout.split()


def mouse(*command):
    desk.run("xdotool", *command)
    time.sleep(0.3)


program = pathlib.Path(sys.argv[1])
os.environ["LC_ALL"] = "C.UTF-8"  # for what xdotool types
# With ä and € on its keys: for others xdotool changes a key's meaning just before it presses it, and
# who hears of it too late loses the letter.
desk.run("setxkbmap", "de")
desk.run("xsetroot", "-solid", "#00ff00")
work = pathlib.Path(tempfile.mkdtemp(prefix="kwo-hands-"))
shot = work / "shot.png"
player = desk.Player(program)
teller = manager = display = None
try:
    time.sleep(1.5)
    # The thumb of the volume, held and let go.
    player.open_page("mixer")
    check("a thumb at rest looks it", warmth() < 10, warmth())
    player.move(*desk.VOLUME)
    mouse("mousedown", 1)
    check("a held thumb looks held", warmth() > 40, warmth())
    mouse("mouseup", 1)
    check("it is at rest again when it is let go", warmth() < 10, warmth())
    player.press((60, desk.VOLUME[1]))

    # A press while a name is typed only ends the typing.
    player.press(desk.SUB_PAGES["equaliser"], rest=1.4)
    for press in (desk.PRESET_FORWARD, desk.PRESET_NAME):
        player.press(desk.PRESET_NAME, rest=0.4)
        desk.run("xdotool", "type", "--delay", "30", "x")
        player.press(press, rest=0.5)
        desk.run("xdotool", "type", "--delay", "30", "y")
    player.press(desk.PRESET_NAME, rest=0.4)
    desk.run("xdotool", "key", "--repeat", "20", "BackSpace")
    desk.run("xdotool", "type", "--delay", "30", "€€")
    desk.run("xdotool", "key", "Left")
    desk.run("xdotool", "type", "--delay", "30", "ä" * 28)
    time.sleep(0.4)
    before = area(166, 192, 160, 20)
    desk.run("xdotool", "key", "Left")
    time.sleep(0.4)
    check("the caret of a long name is in sight", (area(166, 192, 160, 20) != before).any())
    desk.run("xdotool", "key", "Return")
    restart()
    check("a press while a name is typed does nothing else", setting("EFFECTEQCURRENT") == 0)
    name = (player.folder / "EQ.SET").read_bytes()[:64].split(b"\0")[0].decode(errors="replace")
    check("the name is what was typed", name == "€" + "ä" * 28 + "€", name)

    # The wheel.
    player.open_page("mixer")
    player.move(*desk.VOLUME)
    mouse("click", "--repeat", "3", "--delay", "50", 4)
    songs = player.folder / "HISTORY.PLA"
    player.quit()
    check("three notches are fifteen", setting("SLIDERVOL") == 115, setting("SLIDERVOL"))
    songs.write_bytes(b"VERSION 10\r\n" + b"".join(b"ADD \\x\\%d.mp3\r\n" % i for i in range(30)))
    player.start()
    time.sleep(1.5)
    player.open_page("playlist")
    player.move(*desk.FIRST_ROW)
    mouse("click", "--repeat", "2", "--delay", "50", 5)
    # A hand that lets go over the menu has let go.
    player.move(*desk.ADD)
    mouse("mousedown", 1)
    mouse("mouseup", 1)
    mouse("key", "Escape")
    player.move(*desk.FIRST_ROW)
    mouse("click", 5)
    restart()
    check("three notches are nine rows", setting("PLAYLISTTOPINDEX") == 9,
          setting("PLAYLISTTOPINDEX"))

    # The window hides in a drag, and the button is let go outside.
    player.open_page("window")
    player.press(desk.AUTO)
    player.open_page("mixer")
    caption = area(200, 8, 88, 16)
    player.move(*desk.VOLUME)
    mouse("mousedown", 1)
    mouse("mousemove", 1100, 790)
    time.sleep(1.5)
    check("the window hides in the drag", not shown())
    mouse("mouseup", 1)
    mouse("mousemove", 0, 0)
    time.sleep(1.5)
    check("it comes back in the corner", bool(shown()))
    player.place = (0, 0)
    check("with its picture", (area(200, 8, 88, 16) == caption).all())
    check("and its shape", (outside() == own_outside(player.scale)).all())
    player.window = shown()[0]
    check("under its name", player.caption() == "0.mp3", player.caption())
    check("before all others",
          "_STATE_ABOVE" in desk.run("xprop", "-id", player.window, "_NET_WM_STATE"))
    before = area(40, 118, 160, 16)
    for x in (300, 400, 340):
        mouse("mousemove", x, desk.VOLUME[1])
    check("nothing is held any more", (area(40, 118, 160, 16) == before).all())
    player.open_page("window")
    player.press(desk.AUTO)
    player.press(desk.AUTO)

    # Two screens, of which the second goes.
    desk.run("xrandr", "--setmonitor", "left", "640/170x800/210+0+0", "screen")
    desk.run("xrandr", "--setmonitor", "right", "640/170x800/210+640+0", "none")
    time.sleep(1)
    restart()
    frame = (244, 15)
    player.drag(frame, (frame[0] + 750 - player.place[0], frame[1] + 100 - player.place[1]))
    placed = desk.geometry(player.window)
    restart()
    check("a place on a second screen lasts", desk.geometry(player.window) == placed and
          placed[0] > 640, placed)
    desk.run("xrandr", "--delmonitor", "right")
    time.sleep(1.5)
    left = desk.geometry(player.window)
    check("the window follows when its screen goes", left[0] + 488 <= 640, left)
    desk.run("xrandr", "--delmonitor", "left")
    time.sleep(1)
    restart()

    # Denser screens show the same, and are pressed at the same places.
    player.drag(frame, (frame[0] + 700 - player.place[0], frame[1] + 450 - player.place[1]))
    player.place = desk.geometry(player.window)
    player.open_page("info")
    plain = area(*STILL)
    player.quit()
    for dots in (192, 120, 144, 168):
        subprocess.run(["xrdb", "-merge"], input=f"Xft.dpi: {dots}\n", text=True, check=True)
        # On Wayland desktops the window has alpha.
        wayland = {"WAYLAND_DISPLAY": "none"} if dots == 144 else {}
        player.start(scale=dots / 96, **wayland)
        depth = 32 if wayland else 24
        check(f"{depth} bits a pixel", f"Depth: {depth}" in desk.run("xwininfo", "-id", player.window))
        place = desk.geometry(player.window)
        check(f"at {dots} dots an inch the window is wholly on the screen",
              0 <= place[0] <= 1280 - player.on_screen(488) and
              0 <= place[1] <= 800 - player.on_screen(302), place)
        time.sleep(1.5)
        player.open_page("info")
        x, y, width, height = (int(value * player.scale) for value in STILL)
        difference = abs(area(x, y, width, height) - enlarged(plain, player.scale)).max()
        check("every pixel is the mean of what it lies upon", difference <= 1, difference)
        check("the shape is the skin's", (outside() == own_outside(player.scale)).all())
        press_edges()
        use_menu()
        player.drag(frame, (frame[0] + 60, frame[1] + 60))
        moved = desk.geometry(player.window)
        check("a drag moves the window as far, to its own pixel",
              all(abs(place[i] + 60 - moved[i]) < player.scale for i in (0, 1)), moved)
        check("the end is in order", player.quit() == 0)
        check("presses go to the pixel", setting("SLIDERVOL") == 99, setting("SLIDERVOL"))
        check("the menu's item is the one under the pointer", setting("PLAYLISTDISPLAYMODE") == 4)
    subprocess.run(["xrdb", "-merge"], input="Xft.dpi: 96\n", text=True, check=True)

    # The density changes while the program runs.
    tell = work / "xsettings"
    tell.write_text(f"Xft/DPI {1024 * 96}\n")
    teller = subprocess.Popen(["xsettingsd", "-c", tell], stderr=subprocess.DEVNULL)
    time.sleep(0.5)
    player.start()
    time.sleep(1.5)
    for dots in (192, 144):
        tell.write_text(f"Xft/DPI {1024 * dots}\n")
        teller.send_signal(signal.SIGHUP)
        player.scale = dots / 96
        size = (player.on_screen(488), player.on_screen(302))
        check(f"the window follows to {dots} dots an inch",
              awaits(lambda: desk.rectangle(player.window)[2:] == size))
        time.sleep(0.5)
        player.place = desk.geometry(player.window)
        check("its shape too", (outside() == own_outside(player.scale)).all())
        press_edges()
        use_menu()
    tip_ground = (area(0, 0, *size) == MENU_COLORS[0]).all(axis=2).sum()
    player.move(*desk.REMOVE)
    mouse("mousemove_relative", 1, 0)
    check("a tip has the skin's colours", awaits(
        lambda: (area(0, 0, *size) == MENU_COLORS[0]).all(axis=2).sum() > tip_ground + 1000))
    check("the end is in order", player.quit() == 0)
    check("presses go to the pixel", setting("SLIDERVOL") == 99, setting("SLIDERVOL"))
    check("the menu's item is the one under the pointer", setting("PLAYLISTDISPLAYMODE") == 4)

    # A display of ten bits a channel, no whole number of the window's pixels wide.
    display = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1366x768x30"],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    os.environ["DISPLAY"] = f":{display.stdout.readline().strip()}"
    manager = subprocess.Popen(["openbox"], stderr=subprocess.DEVNULL)
    awaits(lambda: "window id" in desk.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))
    subprocess.run(["xrdb", "-merge"], input="Xft.dpi: 144\n", text=True, check=True)
    player.start(scale=1.5)
    time.sleep(1.5)
    player.open_page("info")
    x, y, width, height = (int(value * player.scale) for value in STILL)
    difference = abs(area(x, y, width, height) - enlarged(plain, player.scale)).max()
    check("thirty bits a pixel show the same", difference <= 2, difference)
    player.open_page("window")
    player.press(desk.AUTO)
    mouse("mousemove", 10, 700)
    check("the window hides", awaits(lambda: not shown()))
    mouse("mousemove", 1365, 767)
    check("it comes back in the last corner", awaits(shown))
    time.sleep(1)
    check("and stays there", shown() and
          desk.rectangle(shown()[0]) == (1366 - 731, 768 - 453, 732, 453), shown())
    check("the end is in order", player.quit() == 0)
finally:
    if player.process.poll() is None:
        player.process.kill()
    for helper in filter(None, (teller, manager, display)):
        helper.terminate()
        helper.wait()
    player.remove()
    subprocess.run(["rm", "-rf", work])
finish("the hands")
