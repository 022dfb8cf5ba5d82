#!/usr/bin/env python3
"""Plays noise through the real device path and compares what comes out of the sound server's
monitor, sample for sample, with what went in; twice, and then with the server killed and started
again in the middle.

usage: check_sound.py PLAY_LIST
Needs a PulseAudio server with a null sink named null, where ALSA's default leads.
"""
import array
import os
import pathlib
import random
import signal
import struct
import subprocess
import sys
import tempfile
import time

RATE = 44100
FRAME = 4
# The server fades its own edges: the stream's start can lose some milliseconds in the monitor, and
# the device is closed with the last buffers still queued.
HEAD = RATE // 20
TAIL = RATE * 3 // 10


def write_wav(path, seconds, seed):
    data = random.Random(seed).randbytes(RATE * FRAME * seconds)
    header = b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " + struct.pack(
        "<IHHIIHH", 16, 1, 2, RATE, RATE * FRAME, FRAME, 16) + b"data" + struct.pack("<I", len(data))
    path.write_bytes(header + data)
    return data


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


def check_exact(play, work, run):
    song, recording = work / "noise.wav", work / "recording"
    sent = frames(write_wav(song, 6, run))
    recorder = start_recording(recording)
    played = subprocess.run([play, song], stdout=subprocess.DEVNULL, timeout=60)
    time.sleep(0.7)
    recorder.terminate()
    recorder.wait()
    heard = frames(recording.read_bytes())
    middle = len(sent) // 2
    try:
        start = heard.index(sent[middle]) - middle
    except ValueError:
        return "the noise did not come out at all"
    end = len(sent) - TAIL
    if start + HEAD < 0 or start + end > len(heard):
        return f"the recording holds frames {-start} to {len(heard) - start} of {len(sent)} only"
    differences = sum(heard[start + i] != sent[i] for i in range(HEAD, end))
    print(f"run {run}: {end - HEAD} frames compared, {differences} differ", flush=True)
    return None if played.returncode == 0 and differences == 0 else "the sound is not what was sent"


def server_pid():
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


def check_restart(play, work):
    song, recording = work / "long.wav", work / "recording"
    write_wav(song, 20, 7)
    player = subprocess.Popen([play, song], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    time.sleep(3)
    pid, command = server_pid()
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
    loud = sum(abs(value) > 1000 for value in heard)
    print(f"after the server's restart: {loud} of {len(heard)} values are loud", flush=True)
    if chatter:
        return "chatter on stderr: " + chatter.decode(errors="replace")
    return None if loud > len(heard) // 2 else "the song did not go on"


def main():
    play = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        for problem in (check_exact(play, work, 1), check_exact(play, work, 2),
                        check_restart(play, work)):
            if problem:
                print(problem)
                return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
