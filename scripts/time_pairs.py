#!/usr/bin/env python3
"""Times commands in pairs: each command once a round, in turn, so that a machine that slows down slows
all of them.  Tells each one's median cpu time and its median ratio to the first.
usage: time_pairs.py ROUNDS FILE COMMAND...      In each command, a string of words, {} is the file.
As: time_pairs.py 15 song.mp3 'mpg123 -q -e f32 -w /dev/null {}' 'build/tools/decode_song {} /dev/null'"""
import resource
import statistics
import subprocess
import sys


def cpu(command, file):
    """Seconds of a whole process, start and end included."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run([word.replace("{}", file) for word in command.split()], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


rounds, file, commands = int(sys.argv[1]), sys.argv[2], sys.argv[3:]
times = {command: [] for command in commands}
for _ in range(rounds):
    for command in commands:
        times[command].append(cpu(command, file))
for command in commands:
    ratio = statistics.median(a / b for a, b in zip(times[command], times[commands[0]]))
    print(f"{statistics.median(times[command]):.3f} s  {ratio:.3f}  {command}")
