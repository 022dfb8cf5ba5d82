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
import time

import desk

ROOT = pathlib.Path(__file__).resolve().parent.parent
RATE = 44100
FRAME = 4
# The server fades its own edges: the stream's start can lose some milliseconds in the monitor, and
# the device is closed with the last buffers still queued.
HEAD = RATE // 20
# The recorder's own failure, which says nothing about the sound.
CUT_RECORDING = "the recording holds only"
TAIL = RATE * 3 // 10
# Frames on both sides of a join by which it is found: more than the encoder's silence.
BEFORE_JOIN, AFTER_JOIN = 8192, 256


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
    if place is None:
        return "the songs did not come out"
    start, end = place + BEFORE_JOIN - join, len(sent) // FRAME - TAIL
    sent, heard = frames(sent), frames(heard)
    if start + HEAD < 0 or start + end > len(heard):
        return f"{CUT_RECORDING} frames {-start} to {len(heard) - start} of {len(sent)}"
    differences = sum(heard[start + i] != sent[i] for i in range(HEAD, end))
    print(f"run {run}: {end - HEAD} frames compared, {differences} differ", flush=True)
    return None if played.returncode == 0 and differences == 0 else "the sound is not what was sent"


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
            problem = check()
            if problem and problem.startswith(CUT_RECORDING):
                print(f"{problem}; once more", flush=True)
                problem = check()
            if problem:
                print(problem)
                return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
