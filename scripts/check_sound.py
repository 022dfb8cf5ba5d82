#!/usr/bin/env python3
"""Plays songs through the real device path and compares what comes out of the sound server's
monitor, sample for sample, with what the engine renders without a device; twice, and then with the
server killed and started again in the middle.

usage: check_sound.py TOOLS      TOOLS is the folder of play_list and render_list
Needs a PulseAudio server with a null sink named null, where ALSA's default leads.
"""
import array
import math
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import threading
import time

import desk

ROOT = pathlib.Path(__file__).resolve().parent.parent
RATE = 44100
FRAME = 4
# The server fades its own edges: the stream's start can lose some milliseconds in the monitor, and
# the device is closed with the last buffers still queued.
HEAD = RATE // 20
TAIL = RATE * 3 // 10
# Seconds.  A machine that stands still for longer lets the server lose more than HEAD at the edge.
STANDSTILL = 0.03
TRIES = 5
# Frames on both sides of a join by which it is found: more than the encoder's silence.
BEFORE_JOIN, AFTER_JOIN = 8192, 256


class Spoilt(Exception):
    """The recording says nothing about the sound, for the reason given."""


class Punctuality:
    """Measures by how many seconds at most each core of the machine was late meanwhile."""

    def __enter__(self):
        self.latest, self.watching = 0, True
        self.threads = [threading.Thread(target=self.watch, args=(core,))
                        for core in os.sched_getaffinity(0)]
        for thread in self.threads:
            thread.start()
        return self

    def watch(self, core):
        os.sched_setaffinity(0, {core})
        while self.watching:
            due = time.monotonic() + 0.005
            time.sleep(0.005)
            self.latest = max(self.latest, time.monotonic() - due)

    def __exit__(self, *_):
        self.watching = False
        for thread in self.threads:
            thread.join()


def expected_sound(render, songs, work):
    wav = work / "expected.wav"
    subprocess.run([render, songs, wav], check=True, timeout=60)
    return wav.read_bytes()[44:]


def start_recording(path):
    recorder = subprocess.Popen(
        ["parec", "-d", "null.monitor", "--latency-msec=20", "--format=s16le", f"--rate={RATE}",
         "--channels=2"], stdout=open(path, "wb"), stderr=subprocess.DEVNULL)
    deadline = time.time() + 20
    while path.stat().st_size < RATE * FRAME // 2 and time.time() < deadline:
        time.sleep(0.05)
    return recorder


def frames(data):
    return array.array("I", data[:len(data) // FRAME * FRAME])


def find_frames(data, sought):
    at = data.find(sought)
    while at >= 0 and at % FRAME:
        at = data.find(sought, at + 1)
    return at // FRAME if at >= 0 else None


def check_exact(tools, work, run):
    songs, recording = work / "songs.pla", work / "recording"
    song = ROOT / "tests" / "data" / "joint320.mp3"
    songs.write_text(f"ADD {song}\r\nADD {song}\r\n".replace("/", "\\"))
    sent = expected_sound(tools / "render_list", songs, work)
    with Punctuality() as machine:
        recorder = start_recording(recording)
        played = subprocess.run([tools / "play_list", songs], stdout=subprocess.DEVNULL, timeout=60)
        time.sleep(0.7)
        recorder.terminate()
        recorder.wait()
    heard = recording.read_bytes()
    # Both songs are the same: the join is the one place that tells where in the list we are, and its
    # second half alone is also how the first song begins.
    join = len(sent) // FRAME // 2
    place = find_frames(heard, sent[(join - BEFORE_JOIN) * FRAME:(join + AFTER_JOIN) * FRAME])
    if played.returncode != 0:
        return "play_list failed"
    if place is None:
        problem = "the songs did not come out"
    else:
        start, end = place + BEFORE_JOIN - join, len(sent) // FRAME - TAIL
        sent, heard = frames(sent), frames(heard)
        if start + HEAD < 0 or start + end > len(heard):
            raise Spoilt(f"it holds only frames {-start} to {len(heard) - start} of {len(sent)}")
        differing = [i for i in range(HEAD, end) if heard[start + i] != sent[i]]
        print(f"run {run}: {end - HEAD} frames compared, {len(differing)} differ", flush=True)
        if not differing:
            return None
        problem = f"frames {differing[0]} to {differing[-1]} are not what was sent"
    if machine.latest > STANDSTILL:
        raise Spoilt(f"the machine stood still for {machine.latest * 1000:.0f} ms; {problem}")
    return problem


def persistently(check):
    """What `check` finds in the first recording that is fit to be judged."""
    for _ in range(TRIES):
        try:
            return check()
        except Spoilt as reason:
            print(f"spoilt recording: {reason}", flush=True)
    return f"no recording out of {TRIES} is fit to be judged"


def check_restart(tools, work):
    song, recording = ROOT / "music" / "one-horizon.mp3", work / "recording"
    player = subprocess.Popen([tools / "play_list", song], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    time.sleep(3)
    pid, command = desk.sound_server()
    os.kill(pid, signal.SIGKILL)
    time.sleep(2)
    server = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    time.sleep(4)
    recorder = start_recording(recording)
    time.sleep(3)
    recorder.terminate()
    recorder.wait()
    player.terminate()
    chatter = player.communicate(timeout=30)[1]
    server.terminate()
    heard = array.array("h", recording.read_bytes()[:RATE * FRAME])
    level = math.sqrt(sum(value * value for value in heard) / max(len(heard), 1))
    print(f"after the server's restart: a level of {level:.0f}", flush=True)
    if chatter:
        return "chatter on stderr: " + chatter.decode(errors="replace")
    return None if level > 500 else "the song did not go on"


def main():
    tools = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        for check in (lambda: check_exact(tools, work, 1), lambda: check_exact(tools, work, 2),
                      lambda: check_restart(tools, work)):
            problem = persistently(check)
            if problem:
                print(problem)
                return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
