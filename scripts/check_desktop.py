#!/usr/bin/env python3
"""Reaches the program as a desktop does: by media keys and its panel, by its file manager, by the bus,
with the real clients of each.
usage: check_desktop.py PROGRAM"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

import gi

import desk
from checks import check, finish
from session import Bus, Ear, awaits

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME, PATH = "com.tavarine.kwo", "/com/tavarine/kwo"
MEDIA, MEDIA_PATH = "org.mpris.MediaPlayer2.kwo", "/org/mpris/MediaPlayer2"
PLAYER = "org.mpris.MediaPlayer2.Player"

program = pathlib.Path(sys.argv[1]).resolve()
work = pathlib.Path(tempfile.mkdtemp(prefix="kwo-bus-"))
songs = [work / "songs" / f"{name} song.mp3" for name in ("first", "second", "third")]


class Monitor:
    """What the player tells on the bus."""

    def __init__(self):
        self.file = work / "signals"
        self.client = subprocess.Popen(["gdbus", "monitor", "--session", "--dest", MEDIA],
                                       stdout=open(self.file, "w"))
        awaits(lambda: "is owned" in self.file.read_text())
        self.place = 0

    def new(self):
        time.sleep(0.4)
        lines = self.file.read_text().splitlines()
        fresh, self.place = lines[self.place:], len(lines)
        return fresh

    def end(self):
        self.client.kill()
        self.client.wait()


def client(*command):
    """What a client of the bus says, or what it complains of."""
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True)
    return (result.stdout + result.stderr).strip()


def playerctl(*words):
    return client("playerctl", "-p", "kwo", *words)


def launch(*paths):
    return client("gapplication", "launch", NAME, *paths)


def call(name, path, method, *arguments):
    return client("gdbus", "call", "--session", "--dest", name, "--object-path", path,
                  "--method", method, *arguments)


def prop(name, signature="", value=""):
    """A property of the player's, read or written."""
    words = ["busctl", "--user", "set-property" if signature else "get-property", MEDIA, MEDIA_PATH,
             PLAYER, name]
    return client(*words, *([signature, "--", value] if signature else []))


def position():
    found = re.fullmatch(r"x (\d+)", prop("Position"))
    return int(found[1]) / 1e6 if found else -1


def windows():
    """Those of the program that are seen."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "^kwo$"],
                           capture_output=True, text=True).stdout.split()
    return [window for window in found if "WIDTH=488" in client(
        "xdotool", "getwindowgeometry", "--shell", window)]


def menu_is_up(player):
    """A menu is a window of the program's own."""
    found = client("xdotool", "search", "--onlyvisible", "--pid", player.process.pid).split()
    return len(found) > 1


def is_active(window):
    return awaits(lambda: client("xdotool", "getactivewindow") == window)


def await_controls():
    awaits(lambda: MEDIA in client("busctl", "--user", "list"))


def title():
    return playerctl("metadata", "xesam:title")


def plays(song):
    return awaits(lambda: playerctl("status") == "Playing" and title() == song.name)


def start_player(folder, *listed):
    """A player with songs in its list."""
    folder.mkdir(exist_ok=True)
    lines = [f"ADD {song}".replace("/", "\\") for song in listed]
    (folder / "HISTORY.PLA").write_bytes("\r\n".join(["VERSION 10", *lines, ""]).encode())
    player = desk.Player(program, folder)
    await_controls()
    return player


def buttons(player):
    check("the clients see one player, stopped", client("playerctl", "-l") == "kwo" and
          playerctl("status") == "Stopped", playerctl("status"))
    playerctl("next")
    check("Next leaves a stopped player stopped", playerctl("status") == "Stopped" and
          title() == songs[1].name and ear.silent(), title())
    playerctl("previous")
    for again in ("", ", once more"):
        playerctl("play")
        check("Play" + again, awaits(lambda: ear.level() > 30) and playerctl("status") == "Playing")
    for again in ("", ", once more"):
        playerctl("pause")
        check("Pause" + again, ear.silent() and playerctl("status") == "Paused")
    playerctl("play-pause")
    check("PlayPause goes on", awaits(lambda: ear.level() > 30) and playerctl("status") == "Playing")
    playerctl("stop")
    check("Stop", ear.silent() and playerctl("status") == "Stopped" and position() == 0)
    playerctl("play")


def levels():
    time.sleep(2)
    full = ear.level(1.5)
    playerctl("volume", "0.5")
    time.sleep(2)
    half = ear.level(1.5)
    check("Volume, as it is heard", abs(half / full - 0.5) < 0.03, f"{half / full:.3f}")
    for written, read in (("-3", "0"), ("2.5", "2"), ("1", "1")):
        prop("Volume", "d", written)
        check(f"Volume {written} is {read}", awaits(lambda: prop("Volume") == f"d {read}"))
    check("what is no number is refused", "number" in prop("Volume", "d", "nan") and
          "type" in prop("Volume", "s", "loud") and prop("Volume") == "d 1")
    for written, read in (("1.5", "1.25"), ("0.1", "0.75"), ("1", "1")):
        prop("Rate", "d", written)
        check(f"Rate {written} is {read}", awaits(lambda: prop("Rate") == f"d {read}"))
    prop("Rate", "d", "0")
    check("Rate 0 pauses", ear.silent() and playerctl("status") == "Paused")
    playerctl("play")
    playerctl("loop", "Playlist")
    check("Loop", awaits(lambda: playerctl("loop") == "Playlist") and
          "repeated" in playerctl("loop", "Track") and playerctl("loop") == "Playlist")
    playerctl("shuffle", "On")
    check("Shuffle", awaits(lambda: playerctl("shuffle") == "On"))
    playerctl("shuffle", "Off")


def times():
    playerctl("position", "20")
    check("SetPosition", awaits(lambda: 20 <= position() < 24), f"{position():.1f}")
    playerctl("position", "10+")
    check("Seek", awaits(lambda: 30 <= position() < 35), f"{position():.1f}")
    track = playerctl("metadata", "mpris:trackid").strip("'")
    for song, place in ((track + "9", 1), (track, -1), (track, 999)):
        call(MEDIA, MEDIA_PATH, PLAYER + ".SetPosition", song, f"int64 {place}000000")
    check("a place of no such song, in front of it or behind it is none", 30 <= position() < 38,
          f"{position():.1f}")
    call(MEDIA, MEDIA_PATH, PLAYER + ".Seek", "int64 -99000000")
    check("a seek before the beginning", awaits(lambda: position() < 4), f"{position():.1f}")
    call(MEDIA, MEDIA_PATH, PLAYER + ".Seek", "int64 99000000")
    check("a seek past the end is Next", plays(songs[1]), title())


def signals():
    monitor = Monitor()
    monitor.new()
    playerctl("next")
    check("the third song", plays(songs[2]))
    told = monitor.new()
    check("a song's change is one message", sum("Metadata" in line for line in told) == 1 and
          sum("Changed" in line for line in told) == 1 and sum("Seeked" in line for line in told) == 1,
          "\n".join(told))
    playerctl("position", "5")
    told = monitor.new()
    check("a jump is told", len(told) == 1 and "Seeked (int64 5000000,)" in told[0], "\n".join(told))
    time.sleep(3)
    check("nothing else is told", monitor.new() == [])
    playerctl("position", "36")
    monitor.new()
    check("the list goes round", plays(songs[0]))
    told = [line for line in monitor.new() if "Metadata" in line]
    check("the next song is told by itself, once", len(told) == 1, "\n".join(told))
    monitor.end()


def raising(player):
    desk.run("xdotool", "windowminimize", player.window)
    time.sleep(1)
    check("the window is down", player.window not in windows())
    call(MEDIA, MEDIA_PATH, "org.mpris.MediaPlayer2.Raise")
    check("Raise", is_active(player.window))
    time.sleep(1.5)  # the page comes back
    player.press(desk.ADD, rest=0.5)
    playerctl("pause")
    check("the keys work beside an open menu", menu_is_up(player) and awaits(
        lambda: playerctl("status") == "Paused") and menu_is_up(player))
    desk.run("xdotool", "key", "Escape")
    begun = time.monotonic()
    call(MEDIA, MEDIA_PATH, "org.mpris.MediaPlayer2.Quit")
    check("Quit", player.process.wait(timeout=20) == 0, f"{time.monotonic() - begun:.1f} s")


def media_controls():
    player = start_player(work / "player", *songs)
    player.open_page("playlist")
    buttons(player)
    levels()
    times()
    signals()
    raising(player)


def opened_songs():
    """With the program running, wherever its window is."""
    player = start_player(work / "player", songs[0])
    launch(songs[1])
    check("a song is opened", plays(songs[1]) and ear.level() > 30)
    desk.run("xdotool", "windowminimize", player.window)
    time.sleep(1)
    launch(songs[2], songs[0])
    check("by a minimised player", plays(songs[2]) and is_active(player.window))
    subprocess.run(["gapplication", "launch", NAME], env=dict(os.environ, DESKTOP_STARTUP_ID="me_TIME7"))
    check("the launch is told to the desktop", awaits(
        lambda: "me_TIME7" in client("xprop", "-id", player.window, "_NET_STARTUP_ID")))
    time.sleep(1.5)  # the pages come back
    player.open_page("window")
    player.press(desk.AUTO)
    desk.run("xdotool", "mousemove", 640, 780)
    check("the window hides by itself", awaits(lambda: not windows()))
    launch(songs[1])
    check("by a hidden one", plays(songs[1]) and awaits(windows))
    time.sleep(1.5)
    check("which waits for the pointer", windows())
    player.move(*desk.DIGITS)
    time.sleep(1)
    for _ in range(2):  # to AUTO [OFF]
        player.press(desk.AUTO)
    launch(work / "songs")
    check("a folder", awaits(lambda: title() == songs[0].name), title())
    (work / "list.pla").write_bytes(f"ADD {songs[2]}\r\n".encode())
    launch(work / "list.pla")
    check("a playlist", plays(songs[2]))
    launch("http://localhost/a.mp3", "file:///%zz/a.mp3", "file:///a%00.mp3", work / "no song.txt")
    time.sleep(1)
    check("what is no song changes nothing", plays(songs[2]))
    many = [f"{work}/many/{number}.mp3" for number in range(5000)]
    begun = time.monotonic()
    launch(songs[0], *many)
    check("5,000 at once", plays(songs[0]) and ear.level() > 30, f"{time.monotonic() - begun:.1f} s")
    for action, status in (("play-pause", "Paused"), ("play-pause", "Playing"), ("stop", "Stopped")):
        client("gapplication", "action", NAME, action)
        check(f"the action {action}", awaits(lambda: playerctl("status") == status))
    check("an action that is none", "no such action" in call(
        NAME, PATH, "org.freedesktop.Application.ActivateAction", "jump", "[]", "{}"))
    check("nothing on stderr", player.errors() == "", player.errors())
    return player


def name_taken(first):
    second = start_player(work / "second", songs[1])
    launch(songs[2])
    check("a second player leaves the songs to the first", plays(songs[2]))
    check("each has its controls", awaits(
        lambda: f"{MEDIA}.instance{second.process.pid} " in client("busctl", "--user", "list")))
    first.quit()
    launch(songs[0])
    check("once that has gone they are the second's", awaits(
        lambda: client("playerctl", "metadata", "xesam:title") == songs[0].name) and windows() and
        second.process.poll() is None)
    second.quit()


def hostile_calls():
    player = start_player(work / "player", songs[0])
    playerctl("play")
    check("types that are others are refused", all(
        "other types" in client("busctl", "--user", "call", *words) for words in (
            (MEDIA, MEDIA_PATH, PLAYER, "Seek", "s", "far"),
            (NAME, PATH, "org.freedesktop.Application", "Open", "sa{sv}", "a", 0),
            (NAME, PATH, "org.freedesktop.Application", "Activate"))))
    connection = the_bus.connection()
    huge = "x" * 4_000_000

    def send(name, path, interface, method, arguments):
        connection.call(name, path, interface, method, arguments, None,
                        Gio.DBusCallFlags.NO_AUTO_START, -1, None, None)
    send(MEDIA, MEDIA_PATH, PLAYER, "OpenUri", GLib.Variant("(s)", (f"file:///{huge}.mp3",)))
    send(NAME, PATH, "org.freedesktop.Application", "Open",
         GLib.Variant("(asa{sv})", ([f"file:///{huge}"], {
             "desktop-startup-id": GLib.Variant("s", huge), "activation-token": GLib.Variant("x", 7)})))
    send(NAME, PATH, "org.freedesktop.Application", "ActivateAction",
         GLib.Variant("(sava{sv})", (huge, [], {})))
    player.open_page("playlist")
    player.press(desk.ADD, rest=0.5)  # with a menu open
    check("a menu is open", menu_is_up(player))
    memory = player.memory()
    begun = time.monotonic()
    for number in range(5000):
        method = ("Next", "Previous", "Pause", "Play", "PlayPause", "Stop")[number % 6]
        send(MEDIA, MEDIA_PATH, PLAYER, method, None)
        if number % 50 == 0:
            connection.flush_sync()
            time.sleep(max(0, begun + number / 1000 - time.monotonic()))
    desk.run("xdotool", "key", "Escape")
    playerctl("play")
    check("a thousand calls a second leave the player playing", awaits(
        lambda: playerctl("status") == "Playing" and ear.level() > 30))
    check("and take no memory", player.memory() < memory + 3, f"{memory:.1f} to {player.memory():.1f} MiB")
    player.quit()


def without_bus():
    """A bus that dies; then none at all."""
    global the_bus
    player = start_player(work / "player", songs[0])
    playerctl("play")
    awaits(lambda: ear.level() > 30)
    the_bus.end()
    time.sleep(1)
    check("the bus dies, the music does not", ear.level() > 30)
    player.press(desk.NEXT)
    check("the player goes on", player.process.poll() is None and player.errors() == "",
          player.errors())
    begun = time.monotonic()
    check("and ends", player.quit() == 0 and time.monotonic() - begun < 5,
          f"{time.monotonic() - begun:.1f} s")
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"
    player = desk.Player(program, work / "player")
    player.press(desk.PLAY)
    check("without a bus the player plays", awaits(lambda: ear.level() > 30))
    begun = time.monotonic()
    check("and ends, silently", player.quit() == 0 and player.errors() == "" and
          time.monotonic() - begun < 5, f"{time.monotonic() - begun:.1f} s")


def await_end():
    check("it has ended", awaits(lambda: not windows()))
    time.sleep(3)


def launcher():
    """Installed for one user: the bus starts the player."""
    global the_bus
    home = work / "my home"
    prefix = home / ".local"
    subprocess.run(["cmake", "--install", program.parent.parent, "--prefix", prefix], check=True,
                   stdout=subprocess.DEVNULL)
    start = [prefix / "bin/kwo-open"]

    def end():
        subprocess.run(["pkill", "-TERM", "-f", f"{prefix}/lib/kwo/kwo"])
        await_end()
    opener = subprocess.Popen(start + [songs[0]])
    check("the launcher opens the player without a bus", awaits(windows))
    end()
    opener.wait()
    the_bus = Bus(work)
    opener = subprocess.Popen(start + [songs[0]])
    check("and with one that does not know it", awaits(windows))
    await_controls()
    playerctl("play")
    awaits(lambda: ear.level() > 30)
    call(MEDIA, MEDIA_PATH, "org.mpris.MediaPlayer2.Quit")
    launch(songs[1])
    check("opened in the last fade without a service", awaits(lambda: title() == songs[1].name))
    check("by a player of its own", awaits(windows) and opener.wait() == 0)
    end()
    the_bus.end()
    the_bus = Bus(work, prefix / "share")
    client(*start, songs[2])
    up = time.monotonic() if awaits(windows) else float("inf")
    heard = ear.first_loud(up - 2)
    check("the bus starts the player with its song", plays(songs[2]) and heard - up < 2,
          f"heard {heard - up:.2f} s behind the window")
    call(MEDIA, MEDIA_PATH, "org.mpris.MediaPlayer2.Quit")
    launch(songs[0])
    check("opened in the last fade", plays(songs[0]) and awaits(lambda: ear.level() > 30))
    plain = work / "home"  # the openers' scripts know no blanks in it
    plain.symlink_to(home)
    environment = dict(os.environ, HOME=str(plain), XDG_DATA_HOME=f"{plain}/.local/share",
                       XDG_CONFIG_HOME=f"{plain}/.config", PATH=f"{prefix}/bin:{os.environ['PATH']}")
    subprocess.run(["update-desktop-database", prefix / "share/applications"], check=True)
    subprocess.run(["xdg-mime", "default", f"{NAME}.desktop", "audio/mpeg"], env=environment,
                   check=True)
    for opener, song in ((["gio", "open"], songs[1]), (["xdg-open"], songs[2]),
                         (["gio", "launch", f"{prefix}/share/applications/{NAME}.desktop"], songs[0])):
        subprocess.run([*opener, song], env=environment)
        check("by " + " ".join(opener[:2]), plays(song), title())
    check("it is one player", len(windows()) == 1)
    end()


for folder in ("songs", "config", "many"):
    (work / folder).mkdir()
for song, tone in zip(songs, (300, 400, 500)):
    subprocess.run(f"sox -V1 -n -r 44100 -c 2 -t wav - synth 40 sine {tone} vol 0.25 "
                   f"| lame --quiet -b 128 - '{song}'", shell=True, check=True)
ear = Ear()
the_bus = Bus(work)
try:
    media_controls()
    name_taken(opened_songs())
    hostile_calls()
    without_bus()
    launcher()
finally:
    subprocess.run(["pkill", "-KILL", "-f", str(work)])
    the_bus.end()
    ear.recorder.kill()
    shutil.rmtree(work, ignore_errors=True)
finish("the desktop")
