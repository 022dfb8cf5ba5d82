"""The program on a real X desktop: starting it, pressing its controls, seeing and hearing it.

Needs DISPLAY with a window manager, xdotool, ImageMagick's `import` and, for sound, `parec`."""
import math
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent

# The middles of the controls, in the window's pixels.
PREVIOUS, STOP, PLAY, NEXT = (58, 268), (100, 268), (144, 268), (186, 268)
PAGES = {"main": (256, 268), "playlist": (292, 268), "mixer": (328, 268), "info": (364, 268),
         "config": (400, 268), "window": (436, 268)}
SUB_PAGES = {"sliders": (136, 58), "equaliser": (208, 58), "effects": (280, 58), "dj": (352, 58)}
DIGITS = (244, 62)
DISPLAY_MODE, VISUALISER = (124, 63), (364, 63)
FUNCTION, ADD, REMOVE, ITEM_UP, ITEM_DOWN = ((x, 52) for x in (116, 180, 244, 308, 372))
FIRST_ROW = (120, 100)
VOLUME, PAN = (336, 126), (336, 164)
VOLUME_LABEL, PAN_LABEL = (60, 126), (60, 164)
SLIDERS_LEFT = 232
VOLUME_SLIDER = (239, 118, 448, 135)  # where it takes presses: left, top, and what lies behind it
THIRD_BAND = (178, 100)  # of the equaliser's curve
EQ_SWITCH, DJ = (60, 218), (120, 111)
PRESET_BACK, PRESET_NAME, PRESET_FORWARD = (99, 203), (244, 203), (389, 203)
AUTO, MINIMISE = (174, 105), (174, 142)


def run(*command, **options):
    return subprocess.run([str(c) for c in command], check=True, capture_output=True, text=True,
                          **options).stdout


def sound_server():
    """Process and command line of the null sound server of this check."""
    listing = subprocess.run(["pgrep", "-f", "module-null-sink sink_name=null"],
                             capture_output=True, text=True).stdout.split()
    folder = os.environ["XDG_RUNTIME_DIR"]
    for pid in listing:
        try:
            if f"XDG_RUNTIME_DIR={folder}".encode() in pathlib.Path(
                    f"/proc/{pid}/environ").read_bytes().split(b"\0"):
                return int(pid), pathlib.Path(f"/proc/{pid}/cmdline").read_bytes().split(b"\0")[:-1]
        except OSError:
            continue
    return None


def rectangle(window):
    lines = run("xdotool", "getwindowgeometry", "--shell", window).split()
    values = dict(line.split("=") for line in lines)
    return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))


def geometry(window):
    return rectangle(window)[:2]


def await_window(name, rest=0.7):
    """The newest window of that name, once there is one; a dialog's first opening may take seconds."""
    until = time.monotonic() + 20
    while True:
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", name],
                               capture_output=True, text=True).stdout.split()
        if found:
            time.sleep(rest)
            return found[-1]
        if time.monotonic() > until:
            raise RuntimeError(f"no window comes up with the name {name}")
        time.sleep(0.1)


def drag(start, end, button=1):
    """Places of the screen."""
    run("xdotool", "mousemove", *start, "mousedown", button)
    for i in range(1, 11):
        run("xdotool", "mousemove", *(start[k] + (end[k] - start[k]) * i // 10 for k in (0, 1)))
        time.sleep(0.04)
    time.sleep(0.1)
    run("xdotool", "mouseup", button)


class Player:
    """The program in a folder of its own, with a home of its own."""

    def __init__(self, program, folder=None):
        self.folder = pathlib.Path(folder or tempfile.mkdtemp(prefix="kwo-desk-"))
        self.program = self.folder / "kwo"
        if not self.program.exists():
            shutil.copy(program, self.program)
            modules = pathlib.Path(program).resolve().parent / "modules"
            if modules.exists():
                (self.folder / "modules").symlink_to(modules)
            for data in ("skin", "help", "music"):
                (self.folder / data).symlink_to(ROOT / data)
        self.start()

    def start(self, scale=1, width=488, **environment):
        """Where the screen is `scale` times as dense as a plain one; a skin may have another width."""
        self.scale = scale
        environment = dict(os.environ, XDG_CONFIG_HOME=str(self.folder / "config"), **environment)
        (self.folder / "config").mkdir(exist_ok=True)
        begun = time.monotonic()
        self.process = subprocess.Popen([self.program], env=environment, cwd=self.folder,
                                        stderr=open(self.folder / "stderr", "w"))
        self.window = None
        while self.window is None:
            if time.monotonic() - begun > 20 or self.process.poll() is not None:
                raise RuntimeError("the window does not come up: " + self.errors())
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid",
                                    str(self.process.pid)], capture_output=True, text=True).stdout
            for window in found.split():  # not the tray icon's
                if f"WIDTH={self.on_screen(width)}" in run("xdotool", "getwindowgeometry", "--shell", window):
                    self.window = window
        self.first_seen = time.monotonic() - begun
        self.place = geometry(self.window)

    def errors(self):
        return (self.folder / "stderr").read_text()

    def caption(self):
        return run("xdotool", "getwindowname", self.window).strip()

    def on_screen(self, pixels):
        """So many of the window's own pixels, in the screen's."""
        return math.ceil(pixels * self.scale)

    def move(self, x, y):
        run("xdotool", "mousemove", self.place[0] + self.on_screen(x),
            self.place[1] + self.on_screen(y))

    def press(self, place, button=1, rest=0.7, count=1):
        self.move(*place)
        run("xdotool", "click", "--repeat", count, "--delay", 60, button)
        time.sleep(rest)

    def drag(self, start, end, button=1, rest=0.7):
        x, y = self.place
        drag((x + start[0], y + start[1]), (x + end[0], y + end[1]), button)
        time.sleep(rest)

    def open_page(self, name, rest=1.4):
        self.press(PAGES[name], rest=rest)

    def shot(self, path):
        """The window's rectangle of the screen."""
        x, y = self.place
        run("import", "-window", "root", "-crop",
            f"{self.on_screen(488)}x{self.on_screen(302)}+{x}+{y}", "+repage", path)

    def portrait(self, path):
        """The same, with what is not the window's made clear."""
        self.shot(path)
        run("convert", path, "(", ROOT / "skin/default/background.bmp", "-transparent",
            "rgb(9,0,9)", "-alpha", "extract", ")", "-alpha", "off", "-compose", "CopyOpacity",
            "-composite", path)

    def memory(self):
        """Pss in MiB."""
        for line in open(f"/proc/{self.process.pid}/smaps_rollup"):
            if line.startswith("Pss:"):
                return int(line.split()[1]) / 1024

    def cpu(self, seconds):
        """Share of one core over some seconds, in percent, by the scheduler's own nanoseconds: the
        usual ticks fall in step with a program that wakes at even times."""
        def spent():
            total = 0
            for task in os.listdir(f"/proc/{self.process.pid}/task"):
                total += int(open(f"/proc/{self.process.pid}/task/{task}/schedstat").read().split()[0])
            return total
        before = spent()
        time.sleep(seconds)
        return (spent() - before) / 1e7 / seconds

    def wakings(self, thread, seconds):
        """Of the thread with that name, in a second."""
        tasks = pathlib.Path(f"/proc/{self.process.pid}/task").iterdir()
        task = next(t for t in tasks if (t / "comm").read_text().strip() == thread)

        def switches():
            return int(re.search(r"\nvoluntary_ctxt_switches:\s+(\d+)",
                                 (task / "status").read_text())[1])
        before = switches()
        time.sleep(seconds)
        return (switches() - before) / seconds

    def threads(self):
        return len(os.listdir(f"/proc/{self.process.pid}/task"))

    def quit(self, how=signal.SIGTERM):
        if self.process.poll() is None:
            self.process.send_signal(how)
        return self.process.wait(timeout=20)

    def remove(self):
        shutil.rmtree(self.folder, ignore_errors=True)
