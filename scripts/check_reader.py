#!/usr/bin/env python3
"""Uses the program by the accessibility bus alone, as a screen reader does, with the sound and the
window as witnesses.
usage: check_reader.py PROGRAM"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import warnings

import gi

import desk
from checks import check, finish, pixels
from session import Bus, Ear, awaits

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

warnings.filterwarnings("ignore", category=DeprecationWarning)

PAGES = ["Playlist page", "Mixer page", "Info page", "Config page", "Window page", "Main page"]
NAME = "object:property-change:accessible-name"
ADDED = "object:children-changed:add"


def children(parent):
    return [parent.get_child_at_index(i) for i in range(parent.get_child_count())]


def walk(parent):
    for child in children(parent):
        if child:
            yield child
            yield from walk(child)


def application():
    found = [a for a in children(Atspi.get_desktop(0)) if a and a.get_name() == "kwo"]
    return found[-1] if found else None


def find(name):
    """The control of a name, or that begins with it, once it is there."""
    def look():
        controls = list(walk(application()))
        return ([c for c in controls if c.get_name() == name] or
                [c for c in controls if c.get_name().startswith(name)])
    return awaits(look)[0]


def has(name, state):
    return find(name).get_state_set().contains(getattr(Atspi.StateType, state))


def do(name, action="Press"):
    control = find(name)
    actions = [Atspi.Action.get_action_name(control, i)
               for i in range(Atspi.Action.get_n_actions(control))]
    Atspi.Action.do_action(control, actions.index(action))
    time.sleep(1.2)


def value(name, new=None):
    control = find(name)
    if new is not None:
        Atspi.Value.set_current_value(control, new)
        time.sleep(0.8)
    return Atspi.Value.get_current_value(control)


def events(kind, seconds):
    """The sources' names of what is told in some seconds."""
    told = []
    listener = Atspi.EventListener.new(lambda event, *_: told.append(event.source.get_name()))
    listener.register(kind)
    until = time.monotonic() + seconds
    while time.monotonic() < until:
        GLib.MainContext.default().iteration(False)
        time.sleep(0.01)
    listener.deregister(kind)
    return told


def place_of(control):
    """Left, top, right and bottom within the window."""
    place = Atspi.Component.get_extents(control, Atspi.CoordType.SCREEN)
    x, y = place.x - player.place[0], place.y - player.place[1]
    return x, y, x + place.width, y + place.height


def inside(control):
    left, top, right, bottom = place_of(control)
    return 0 <= left < right <= 488 and 0 <= top < bottom <= 302


def picture(name):
    """What the window shows of a control."""
    left, top, right, bottom = place_of(find(name))
    player.shot(work / "shot.png")
    return pixels(work / "shot.png")[top:bottom, left:right]


def changes(name, act):
    before = picture(name)
    act()
    player.move(-50, -50)
    time.sleep(0.5)
    return (picture(name) != before).any()


def pages():
    for page in PAGES:
        do(page)
        check(f"{page} is opened", has(page, "PRESSED"))
        outside = [c.get_name() for c in walk(application().get_child_at_index(0)) if not inside(c)]
        check("all of it lies within the window", not outside, outside)
    names = {c.get_name() for c in walk(application())}
    check("nothing of another page is there", "QUIT" not in names and "Next visualiser" in names)
    Atspi.Action.do_action(find("Window page"), 0)
    told = events(ADDED, 2)
    check("a page is told once", len(told) == 4, told)


def songs():
    do("Playlist page")
    do("2. ", "Toggle")
    check("a row is selected", has("2. ", "SELECTED") and not has("1. ", "SELECTED"))
    do("List functions")
    do("Select All")
    check("a menu is opened, and its item chosen", has("1. ", "SELECTED") and has("2. ", "SELECTED"))
    do("2. ")
    check("a song of the list is played", awaits(lambda: ear.level() > 30) and
          has("2. ", "ACTIVE") and "second" in player.caption(), player.caption())
    do("Main page")
    line = find("second.mp3\n")
    check("the song's line says it", line.get_role_name() == "label", repr(line.get_name()))
    check("the time is not told by itself", not events(NAME, 2))
    Atspi.Component.grab_focus(find("Time "))
    told = events(NAME, 4)
    check("it tells whole seconds where the focus is", 3 <= len(told) <= 6, told)
    Atspi.Component.grab_focus(find("Stop"))
    Atspi.Value.set_current_value(find("Time "), 20)
    check("a time is set", awaits(lambda: find("Time ").get_name().startswith("Time 0:2")))


def mixer():
    do("Mixer page")
    check("the volume is moved", value("Volume", 0) == 0 and ear.silent())
    value("Volume", 100)
    check("and back", awaits(lambda: ear.level() > 30))
    do("Pan", "Increase")
    check("a step of the pan", value("Pan") == 1)
    do("Effects")
    check("Crystalizer is switched",
          changes("Crystalizer", lambda: do("Crystalizer", "Toggle")) and has("Crystalizer", "CHECKED"))
    do("Equaliser page")
    check("a band is moved", changes("Band 3", lambda: value("Band 3", 140)) and value("Band 3") == 140)
    do("Next preset")
    check("a preset is stepped to", find("2. ") is not None)
    do("2. ")
    edit = find("Preset name")
    check("the name's edit has the focus", edit.get_state_set().contains(Atspi.StateType.FOCUSED))
    Atspi.EditableText.set_text_contents(edit, "Read aloud")
    time.sleep(0.5)
    do("2. ")
    check("a preset is named", awaits(lambda: find("2. ").get_name() == "2. Read aloud"))
    names = [c.get_name() for c in walk(application())]
    check("the edit has gone with the typing", "Preset name" not in names)


def quit_by_name():
    do("Window page")
    do("QUIT")
    check("it has ended in order", player.process.wait(timeout=20) == 0)


def walk_without_end(seconds):
    walked, until = 0, time.monotonic() + seconds
    while time.monotonic() < until:
        for control in walk(application()):
            control.get_role_name(), control.get_state_set()
            walked += 1
    return walked


program = pathlib.Path(sys.argv[1]).resolve()
work = pathlib.Path(tempfile.mkdtemp(prefix="kwo-reader-"))
(work / "config").mkdir()
ear = Ear()
bus = Bus(work)
player = None
try:
    subprocess.run(["gdbus", "call", "--session", "--dest", "org.a11y.Bus", "--object-path",
                    "/org/a11y/bus", "--method", "org.freedesktop.DBus.Properties.Set",
                    "org.a11y.Status", "IsEnabled", "<true>"], check=True, stdout=subprocess.DEVNULL)
    folder = work / "player"
    (folder / "music").mkdir(parents=True)
    shutil.copy(program, folder / "kwo")
    for data in ("skin", "help"):
        (folder / data).symlink_to(desk.ROOT / data)
    for song, tone in (("first", 300), ("second", 400), ("third", 500)):
        subprocess.run(f"sox -V1 -n -r 44100 -c 2 -t wav - synth 60 sine {tone} vol 0.25 | lame --quiet "
                       f"-b 128 - '{folder}/music/{song}.mp3'", shell=True, check=True)
    player = desk.Player(program, folder)
    Atspi.init()
    awaits(application)
    Atspi.Accessible.set_cache_mask(application(), Atspi.Cache.NONE)
    time.sleep(2)
    pages()
    songs()
    mixer()
    print(f"     controls read in 3 s: {walk_without_end(3)}")
    quit_by_name()
finally:
    if player and player.process.poll() is None:
        player.quit()
    ear.recorder.kill()
    bus.end()
    shutil.rmtree(work, ignore_errors=True)
finish("a screen reader")
