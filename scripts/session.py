"""A user's session for the checks on a desktop: its bus, and the sound that is heard in it."""
import os
import subprocess
import threading
import time

import numpy
from gi.repository import Gio

PATIENCE = 15  # seconds; of a busy machine


def awaits(holds):
    """Whether something holds within the patience."""
    until = time.monotonic() + PATIENCE
    while not (held := holds()) and time.monotonic() < until:
        time.sleep(0.1)
    return held


class Ear:
    """Listens to the null device without end, and remembers when it was loud."""

    def __init__(self):
        self.levels = []
        self.recorder = subprocess.Popen(
            ["parec", "-d", "null.monitor", "--format=s16le", "--rate=44100", "--channels=2",
             "--latency-msec=20"], stdout=subprocess.PIPE)
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        while data := self.recorder.stdout.read(8820):
            values = numpy.frombuffer(data, numpy.int16).astype(float)
            self.levels.append((time.monotonic(), numpy.sqrt((values ** 2).mean())))

    def level(self, seconds=0.7):
        """How loud it is from now on."""
        begun = time.monotonic()
        time.sleep(seconds)
        heard = [level for at, level in self.levels if at > begun + 0.1]
        return sum(heard) / len(heard) if heard else 0

    def first_loud(self, since):
        """When something is heard; infinite for never."""
        until = time.monotonic() + PATIENCE
        while time.monotonic() < until:
            for at, level in self.levels:
                if at > since and level > 30:
                    return at
            time.sleep(0.05)
        return float("inf")

    def silent(self):
        return awaits(lambda: self.level() < 30)


class Bus:
    """A session bus with a home of its own, which knows the services of a data folder."""

    def __init__(self, home, data=None):
        environment = dict(os.environ, XDG_DATA_HOME=str(data or home / "nothing"),
                           XDG_CONFIG_HOME=str(home / "config"))
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                                       env=environment)
        self.address = self.daemon.stdout.readline().strip()
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.address

    def connection(self):
        flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
                 Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
        return Gio.DBusConnection.new_for_address_sync(self.address, flags, None, None)

    def end(self):
        self.daemon.kill()
        self.daemon.wait()
