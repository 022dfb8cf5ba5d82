#!/usr/bin/env python3
"""Gives the program work without end and files that do not answer, on a real X desktop, and tells how
long everything took: how long the picture stood still, when it was done, and when the program ended
that was told to in the middle of it.
usage: check_waits.py PROGRAM      Needs bindfs, with what it needs of the kernel, and python3-pyqt6."""
import concurrent.futures
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

import desk
from checks import check, finish, pixels

LONGEST_STILL = 1.0  # seconds of one picture, with a shot every tenth or so
LONGEST_END = 5.0
SONGS = 4000
NAMES = 100000

program = pathlib.Path(sys.argv[1]).resolve()
work = pathlib.Path(tempfile.mkdtemp(prefix="kwo-waits-"))
shot = work / "shot.png"
song = desk.ROOT / "music" / "one-horizon.mp3"
tag = b"TAG" + b"Title".ljust(30, b"\0") + b"Artist".ljust(30, b"\0") + bytes(65)
player = None


def folder(name):
    path = work / name
    path.mkdir()
    return path


def songs(path, count):
    for i in range(count):
        (path / f"{i:04}.mp3").write_bytes(tag)
    return path


def system_path(path):
    return str(path).replace("/", "\\")


def listed():
    return re.findall(r"ADD (.*)\r", (player.folder / "HISTORY.PLA").read_bytes().decode())


def start(paths):
    """A player whose list is `paths`, and the seconds until its window is up."""
    global player
    if player is None:
        player = desk.Player(program, folder("player"))
        player.quit()
    lines = "".join(f"ADD {system_path(path)}\r\n" for path in paths)
    (player.folder / "HISTORY.PLA").write_bytes(("VERSION 10\r\n" + lines).encode())
    player.start()
    time.sleep(1.5)
    return player.first_seen


def end():
    """Seconds until the program has ended by itself."""
    begun = time.monotonic()
    player.process.send_signal(signal.SIGTERM)
    try:
        player.process.wait(timeout=10)
    except subprocess.TimeoutExpired:
        player.process.kill()
        player.process.wait()
    return time.monotonic() - begun


def check_end(what, kept):
    seconds = end()
    check(f"{what}: it ends when it is told to", seconds < LONGEST_END, f"{seconds:.1f} s")
    found = len(set(listed()) & {system_path(path) for path in kept})
    check(f"{what}: nothing that was there is lost", found == len(kept), f"{found} songs")


def drop(paths):
    """Out of a file manager's window, onto the player's, to stand behind what is there."""
    uris = work / "uris"
    uris.write_text("".join(f"file://{path}\r\n" for path in paths))
    source = subprocess.Popen(["/usr/bin/python3", desk.ROOT / "scripts/drag_files.py", uris],
                              stderr=subprocess.DEVNULL)
    window = []
    while not window:
        time.sleep(0.3)
        window = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(source.pid)],
                                capture_output=True, text=True).stdout.split()
    x, y = desk.geometry(window[-1])
    to_x, to_y = player.place[0] + 240, player.place[1] + 150
    desk.run("xdotool", "mousemove", x + 50, y + 50, "mousedown", 1)
    for i in range(1, 15):
        desk.run("xdotool", "mousemove", x + 50 + (to_x - x - 50) * i // 14,
                 y + 50 + (to_y - y - 50) * i // 14)
        time.sleep(0.06)
    time.sleep(0.8)
    desk.run("xdotool", "keydown", "shift", "mouseup", 1)
    time.sleep(0.1)
    desk.run("xdotool", "keyup", "shift")
    return source


def add(path):
    """By the list's file dialog."""
    player.press(desk.ADD, rest=0.4)
    desk.run("xdotool", "key", *["Down"] * (4 if path.is_dir() else 3), "Return")
    time.sleep(1)
    desk.run("xdotool", "type", "--delay", "4", path)
    desk.run("xdotool", "key", "Return")


def walking():
    """Whether the player's files are being looked at for an add."""
    for task in pathlib.Path(f"/proc/{player.process.pid}/task").iterdir():
        try:
            if (task / "comm").read_text() == "kwo files\n":
                return True
        except OSError:
            pass
    return False


def walk(patience, longest_rest=1.5):
    """Seconds of work behind a drop or dialog, or None if there is no end to it in time; 0 if none
    begins for `longest_rest`."""
    begun, started = time.monotonic(), None
    while time.monotonic() - begun < patience:
        if walking():
            started = started or time.monotonic()
        elif started:
            return time.monotonic() - started
        elif time.monotonic() - begun > longest_rest:
            return 0.0
        time.sleep(0.002)
    return None


def still(seconds):
    """The longest time without a new picture."""
    begun = changed = time.monotonic()
    longest, before = 0.0, None
    while time.monotonic() - begun < seconds:
        player.shot(shot)
        now, picture = time.monotonic(), pixels(shot).tobytes()
        longest = max(longest, now - changed)
        if picture != before:
            changed = now
        before = picture
    return longest


def told(seconds):
    return "no end" if seconds is None else f"{seconds:.2f} s"


def without_end():
    """Folders and files whose walk has no natural end, or a far one."""
    linked = folder("link to all")
    (linked / "all").symlink_to("/")
    ring = folder("ring")
    for i in range(10):
        (ring / f"f{i}").mkdir()
    for i in range(10):
        for j in range(10):
            (ring / f"f{i}" / f"to{j}").symlink_to(ring / f"f{j}")
    unbroken = work / "unbroken.pla"
    unbroken.write_bytes(b"ADD" + b"x" * (4 << 20))
    twice = folder("twice")
    for i in range(18):
        line = f"ADD {system_path(twice / f'{i + 1}.pla')}\r\n"
        (twice / f"{i}.pla").write_text(line * 2)
    many = folder("many")
    for i in range(NAMES):
        (many / f"{i}.txt").touch()
    return {"a link to all": linked, "ten folders linked to each other": ring,
            "4 MB without a blank": unbroken, "18 lists that add the next twice": twice / "0.pla",
            f"{NAMES} names": many}


def check_adds():
    kept = [work / f"kept{i}.mp3" for i in range(3)]
    for path in kept:
        shutil.copy(song, path)
    for name, path in without_end().items():
        start(kept)
        player.press(desk.PLAY)
        if path.is_dir():
            source = drop([path])
        else:
            player.open_page("playlist")
            add(path)
            source = None
        seconds = walk(120)
        limit = 2 if path.name == "many" else 120
        check(f"{name}: has an end", seconds is not None and seconds < limit, told(seconds))
        if source:
            source.kill()
        player.open_page("main")
        if path.is_dir():
            source = drop([path])
            longest = still(2)
            check(f"{name}: the picture goes on", longest < LONGEST_STILL, f"{longest:.2f} s")
            source.kill()
            source = drop([path])
            time.sleep(0.1)
            check_end(name, kept)
            source.kill()
        else:
            check_end(name, kept)
        seconds = start([*kept, path])
        check(f"{name}, in the list at the start: the window comes", seconds < 4, f"{seconds:.2f} s")
        end()


def check_quick():
    """What must be quick where the files answer at once."""
    large = songs(folder("large"), SONGS)
    files = sorted(large.iterdir())
    for what, paths, limit in ((f"{SONGS} songs of a folder", [large], 0.3),
                               ("2000 dropped files", files[:2000], 0.3)):
        start([])
        with concurrent.futures.ThreadPoolExecutor() as pool:
            seconds = pool.submit(walk, 20, 10)
            source = drop(paths)
            seconds = seconds.result()
        check(f"{what}: added at once", seconds is not None and 0 < seconds < limit, told(seconds))
        source.kill()
        time.sleep(1)
        end()
        want = SONGS if len(paths) == 1 else len(paths)
        check(f"{what}: all are there", len(listed()) == want, len(listed()))


class Mount:
    """A folder through a file system that can be stopped."""

    def __init__(self, source):
        self.path = folder(source.name + " mounted")
        self.process = subprocess.Popen(["bindfs", "-f", source, self.path])
        deadline = time.monotonic() + 5
        while not self.path.is_mount() and time.monotonic() < deadline:
            time.sleep(0.05)
        self.slow = False

    def stop(self):
        self.process.send_signal(signal.SIGSTOP)

    def go(self):
        self.process.send_signal(signal.SIGCONT)

    def stumble(self):
        """From now on it stands still most of the time."""
        def run():
            while self.slow:
                self.stop()
                time.sleep(0.3)
                self.go()
                time.sleep(0.001)
        self.slow = True
        self.thread = threading.Thread(target=run)
        self.thread.start()

    def walk(self):
        self.slow = False
        self.thread.join()

    def remove(self):
        self.go()
        time.sleep(0.3)
        subprocess.run(["fusermount", "-u", self.path])
        self.process.wait()


def check_slow():
    kept = [work / "kept0.mp3", work / "kept1.mp3"]
    mount = Mount(work / "large")
    try:
        start(kept)
        player.press(desk.PLAY)
        player.open_page("playlist")
        mount.stumble()
        add(mount.path)
        time.sleep(1)
        longest = still(3)
        busy = walking()
        check("a slow file system: rows come while it is walked", busy and longest < LONGEST_STILL,
              f"{longest:.2f} s")
        # A press on the first row, and one that moves it down.
        player.press(desk.FIRST_ROW, rest=0.2)
        player.press(desk.ITEM_DOWN, rest=0.2)
        seconds = walk(120)
        check("a slow file system: the add has an end", seconds is not None, told(seconds))
        mount.walk()
        time.sleep(1)
        end()
        names = [line.split("\\")[-1] for line in listed()]
        check("a slow file system: presses are carried out afterwards, in order",
              len(names) == SONGS + 2 and names[:2] == ["kept1.mp3", "kept0.mp3"],
              f"{len(names)} songs, {names[:2]}")
        start(kept)
        player.press(desk.PLAY)
        mount.stumble()
        source = drop([mount.path])
        longest = still(3)
        check("a slow file system: frames go on", longest < LONGEST_STILL, f"{longest:.2f} s")
        check_end("a slow file system", kept)
        source.kill()
    finally:
        if mount.slow:
            mount.walk()
        mount.remove()


def check_silent():
    silent = folder("silent")
    for i in range(5):
        shutil.copy(song, silent / f"{i}.mp3")
    mount = Mount(silent)
    kept = [mount.path / f"{i}.mp3" for i in range(5)]
    local = [work / "kept0.mp3"]
    try:
        mount.stop()
        seconds = start(kept)
        check("a silent file system, listed: the window comes", seconds < 4, f"{seconds:.2f} s")
        check_end("a silent file system, listed", kept)
        start(kept)
        player.press(desk.PLAY)
        check_end("a silent file system, played from", kept)
        mount.go()
        start(kept)
        player.press(desk.PLAY, rest=2)
        mount.stop()
        time.sleep(3)
        check_end("a file system that falls silent under a song", kept)
        start(local)
        player.press(desk.PLAY)
        # Dropped it would hang the file manager first.
        player.open_page("playlist")
        player.press(desk.ADD, rest=0.4)
        mount.go()
        desk.run("xdotool", "key", *["Down"] * 4, "Return")
        time.sleep(1)
        desk.run("xdotool", "type", "--delay", "4", mount.path)
        time.sleep(0.5)
        desk.run("xdotool", "key", "Return")
        mount.stop()
        time.sleep(0.2)
        check_end("a file system that falls silent under an add", local)
    finally:
        mount.remove()


def check_shape():
    """A skin whose shape is a chess board."""
    skin = player.folder / "skin"
    skin.unlink()
    shutil.copytree(desk.ROOT / "skin", skin)
    width, height = 2000, 1500
    two = [bytes((9, 0, 9, 40, 50, 60)) * (width // 2), bytes((40, 50, 60, 9, 0, 9)) * (width // 2)]
    rows = b"".join(two[y % 2] for y in range(height))
    header = b"BM" + bytes(8) + (54).to_bytes(4, "little") + (40).to_bytes(4, "little")
    header += width.to_bytes(4, "little") + height.to_bytes(4, "little") + b"\1\0\x18\0" + bytes(24)
    (skin / "default" / "background.bmp").write_bytes(header + rows)
    lines = "".join(f"ADD {system_path(work / 'kept0.mp3')}\r\n")
    (player.folder / "HISTORY.PLA").write_bytes(("VERSION 10\r\n" + lines).encode())
    player.start(width=width)
    check("a chess board's shape: the window comes", player.first_seen < 4,
          f"{player.first_seen:.2f} s")
    time.sleep(2)
    check_end("a chess board's shape", [work / "kept0.mp3"])


try:
    for part in (check_adds, check_quick, check_slow, check_silent, check_shape):
        if len(sys.argv) < 3 or part.__name__ in sys.argv[2:]:
            part()
finally:
    if player and player.process.poll() is None:
        player.process.kill()
    shutil.rmtree(work, ignore_errors=True)
finish("waits")
