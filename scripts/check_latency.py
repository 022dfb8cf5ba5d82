#!/usr/bin/env python3
"""Plays songs into sinks that tell of up to five seconds of delay, side by side, with the machine held
busy, and compares what comes out of their monitors, frame for frame, with what the engine renders
without a device: no gap, and the last song to its last sample.
usage: check_latency.py TOOLS [MINUTES]      TOOLS: the folder of play_list and render_list; 20 minutes
Needs a C compiler and a PulseAudio server where ALSA's default leads."""
import math
import os
import pathlib
import subprocess
import sys
import tempfile
import threading
import time

import numpy

import check_sound
import desk
from checks import check, finish

DELAYS = (0, 500, 1500, 5000)  # milliseconds
LOADS = 2
PIECE = 4096  # frames
HEAD = check_sound.RATE // 2  # which the server fades in, late on a busy machine

tools = pathlib.Path(sys.argv[1]).resolve()
minutes = float(sys.argv[2]) if len(sys.argv) > 2 else 20


def frames(path, offset=0):
    data = path.read_bytes()[offset:]
    return numpy.frombuffer(data[:len(data) // 4 * 4], numpy.uint32)


def listen(delay, work, results):
    sink = f"late{delay}"
    module = desk.run("pactl", "load-module", "module-null-sink", f"sink_name={sink}",
                      f"rate={check_sound.RATE}").strip()
    recording = work / sink
    with open(recording, "wb") as out:
        recorder = subprocess.Popen(
            ["parec", "-d", f"{sink}.monitor", "--latency-msec=500", "--format=s16le",
             f"--rate={check_sound.RATE}", "--channels=2"], stdout=out, stderr=subprocess.DEVNULL)
        while recording.stat().st_size < check_sound.RATE:
            time.sleep(0.05)
        environment = dict(os.environ, PULSE_SINK=sink, LATE_SINK=str(delay),
                           LD_PRELOAD=str(work / "late_sink.so"))
        player = subprocess.run([tools / "play_list", work / "songs.pla"], env=environment,
                                stdout=subprocess.DEVNULL)
        time.sleep(2)
        recorder.terminate()
        recorder.wait()
    desk.run("pactl", "unload-module", module)
    results[delay] = player.returncode, frames(recording)


def place_of(sent, heard):
    """Where in `heard` the second second of `sent` begins, or None."""
    sought = sent[check_sound.RATE:check_sound.RATE + PIECE].tobytes()
    data = heard.tobytes()
    at = data.find(sought)
    while at >= 0 and at % 4:
        at = data.find(sought, at + 1)
    return at // 4 if at >= 0 else None


def judge(delay, code, sent, heard):
    name = f"a delay of {delay} ms"
    place = place_of(sent, heard)
    check(f"{name}: it plays", code == 0 and place is not None)
    if place is None:
        return
    start = place - check_sound.RATE
    heard = heard[max(0, start + HEAD):start + len(sent)]
    sent = sent[HEAD:]
    differing = numpy.flatnonzero(heard != sent[:len(heard)])
    first = f"at {(differing[0] + HEAD) / check_sound.RATE:.2f} s" if len(differing) else ""
    check(f"{name}: no frame is missing or another", not len(differing),
          f"{len(differing)} of {len(heard)} {first}")
    check(f"{name}: it is heard to its last sample", len(heard) == len(sent),
          f"{len(sent) - len(heard)} frames missing")


with tempfile.TemporaryDirectory() as folder:
    work = pathlib.Path(folder)
    subprocess.run(["cc", "-shared", "-fPIC", "-o", work / "late_sink.so",
                    desk.ROOT / "scripts/late_sink.c", "-ldl"], check=True)
    songs = [desk.ROOT / "music/one-horizon.mp3", desk.ROOT / "tests/data/joint320.mp3"]
    line = "".join(f"ADD {song}\r\n" for song in songs).replace("/", "\\")
    for times in (1, None):
        (work / "songs.pla").write_text(line * (times or repeats))
        subprocess.run([tools / "render_list", work / "songs.pla", work / "sent.wav"], check=True)
        sent = frames(work / "sent.wav", 44)
        repeats = math.ceil(minutes * 60 * check_sound.RATE / len(sent)) if times else repeats
    results = {}
    load = [subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(LOADS)]
    listeners = [threading.Thread(target=listen, args=(delay, work, results)) for delay in DELAYS]
    try:
        for listener in listeners:
            listener.start()
        for listener in listeners:
            listener.join()
    finally:
        for one in load:
            one.kill()
    for delay in DELAYS:
        judge(delay, results[delay][0], sent, results[delay][1])
finish("latency")
