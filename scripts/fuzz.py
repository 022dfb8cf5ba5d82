#!/usr/bin/env python3
"""Runs every fuzz target for a bounded time, from seeds cut out of the tests' songs and from what
earlier runs have found worth keeping, fuzz/corpus/NAME.tar.xz.

usage: fuzz.py FOLDER SECONDS [NAME...] [--keep]      FOLDER holds the fuzz_* programs
--keep packs the corpora anew, with what this run has found.
"""
import pathlib
import random
import struct
import subprocess
import sys
import tarfile
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent


def mpeg_seeds():
    chance = random.Random(1)
    for song in sorted((ROOT / "tests" / "data").glob("*.mp?")):
        data = song.read_bytes()
        for options in (0xC0, 0xC3, 0xD8):
            start = chance.randrange(len(data) - 3000)
            head = bytes([options]) + bytes(chance.randrange(256) for _ in range(11))
            yield head + data[start:start + 3000]


def song_seeds():
    tag = b"ID3\x04\0\x10\0\0\0\x10" + bytes(16) + b"3DI\x04\0\x10\0\0\0\x10"
    item = struct.pack("<II", 4, 0) + b"Key\0\xff\xfb\x90\0"
    ape = item + b"APETAGEX" + struct.pack("<IIII", 2000, len(item) + 32, 1, 0) + bytes(8)
    lyrics = b"LYRICSBEGININD0000200"
    lyrics += b"%06dLYRICS200" % len(lyrics)
    for song in sorted((ROOT / "tests" / "data").glob("*.mp?")):
        frames = song.read_bytes()[:4000]
        yield b"\0\x30\x80\xf0" + tag + frames + ape + lyrics + b"TAG" + bytes(125)
        yield b"\1\x10\xfa\x60" + bytes(100) + frames + b"TAG" + bytes(125) + tag + frames


def wav_seeds():
    for channels, bits in ((1, 8), (2, 16), (3, 24)):
        form = struct.pack("<HHIIHH", 1, channels, 44100, 0, 0, bits)
        yield (b"\0RIFF....WAVEfmt " + struct.pack("<I", 16) + form + b"LIST1234data" +
               struct.pack("<I", 400) + bytes(range(256)) * 2)


def settings_seeds():
    yield b"Software\\KWO\\SLIDERVOL=dword:00000064\nSoftware\\KWO\\DIROPEN=string:%41b\n"


def playlist_seeds():
    yield b"VERSION 10\r\nADD C:\\music\\a b.mp3\r\nSELECTED\r\n// note\rplay x.MP2\nADD y.pla\n"


def tag_seeds():
    yield b"some sound" + b"TAG" + b"Title".ljust(30) + b"Artist".ljust(30, b"\0") + b"A" * 65


def bmp_seeds():
    for bits in (8, 24, 32):
        size = (5 * bits // 8 + 3) // 4 * 4 * 3
        palette = bytes(1024) if bits == 8 else b""
        yield (b"BM" + bytes(8) + struct.pack("<I", 54 + len(palette)) +
               struct.pack("<IiiHHI", 40, 5, -3, 1, bits, 0) + bytes(20) + palette + bytes(size))


def skin_description_seeds():
    yield (ROOT / "skin" / "default" / "ui.txt").read_bytes()


def presets_seeds():
    yield b"My preset".ljust(64, b"\0") * 64 + struct.pack("<f", 1.25) * 64 * 17


def drive_seeds():
    yield (b"press 144 268\nwait 900\npress 292 268\nmenu Deselect All\nrightpress 100 90\n"
           b"drag 336 126 280 130\n")
    yield b"drop a.mp3 b.mp3\nshift on\nshiftdrop c\ntray left\nminimise\nrestore\ndoublepress 90 140\n"
    yield b"press 328 268\npress 208 58\ndrag 100 90 300 140\npress 244 203\ntype Sea\ncaret 1\nbackspace\n"
    yield b"press 436 268\npress 244 110\ndeactivate\nactivate\nmove 9 9\ndown\nup\ndialog x\nclose\n"


def uri_seeds():
    yield b"file:///home/user/My%20songs/a-b_%C3%A4%23%25.mp3"
    yield b"FILE://localhost/%41%2fb%e4"
    yield b"file:/a%00b%5c%4"


SEEDS = {"bmp": bmp_seeds, "drive": drive_seeds, "mpeg": mpeg_seeds, "playlist": playlist_seeds,
         "presets": presets_seeds, "settings": settings_seeds,
         "skin_description": skin_description_seeds, "song": song_seeds, "tag": tag_seeds,
         "uri": uri_seeds, "wav": wav_seeds}


LONGEST_INPUT = 9000
LONGEST_KEPT = 3000
LARGEST_CORPUS = 400000
# Inputs that run the whole program reach the most and would all be kept, a second or two each.
NOT_KEPT = {"drive"}


def unpack(archive, corpus):
    with tarfile.open(archive) as tar:
        for member in tar.getmembers():
            (corpus / pathlib.Path(member.name).name).write_bytes(tar.extractfile(member).read())


def keep(target, corpus, archive):
    """Packs the fewest inputs that reach all that the corpus reaches, the small ones of them."""
    with tempfile.TemporaryDirectory() as work:
        least = pathlib.Path(work) / "least"
        least.mkdir()
        subprocess.run([target.resolve(), "-merge=1", f"-max_len={LONGEST_KEPT}", least, corpus],
                       cwd=work, capture_output=True, check=True)
        archive.parent.mkdir(exist_ok=True)
        total = 0
        with tarfile.open(archive, "w:xz") as tar:
            for path in sorted(least.iterdir(), key=lambda path: (path.stat().st_size, path.name)):
                total += path.stat().st_size
                if total > LARGEST_CORPUS:
                    break
                entry = tarfile.TarInfo(path.name[:16])
                entry.size = path.stat().st_size
                with path.open("rb") as data:
                    tar.addfile(entry, data)


def fuzz(target, seconds, keeping):
    """The last line of the target's report, and its end if it failed."""
    name = target.name.removeprefix("fuzz_")
    archive = ROOT / "fuzz" / "corpus" / f"{name}.tar.xz"
    with tempfile.TemporaryDirectory() as work:
        corpus = pathlib.Path(work) / "corpus"
        corpus.mkdir()
        for number, seed in enumerate(SEEDS[name]()):
            (corpus / str(number)).write_bytes(seed)
        if archive.exists():
            unpack(archive, corpus)
        command = [target.resolve(), f"-max_total_time={seconds}", f"-max_len={LONGEST_INPUT}",
                   "-timeout=10", corpus]
        result = subprocess.run(command, cwd=work, capture_output=True, text=True)
        lines = result.stderr.strip().splitlines()
        print(f"{name}: {lines[-1] if lines else 'no output'}", flush=True)
        if result.returncode != 0:
            print("\n".join(lines[-40:]))
            return False
        if keeping and name not in NOT_KEPT:
            keep(target, corpus, archive)
        return True


def main():
    folder, seconds, rest = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3:]
    keeping, names = "--keep" in rest, {f"fuzz_{name}" for name in rest if name != "--keep"}
    targets = [path for path in sorted(folder.glob("fuzz_*"))
               if path.is_file() and (not names or path.name in names)]
    failed = [target.name for target in targets if not fuzz(target, seconds, keeping)]
    return 1 if failed or not targets else 0


if __name__ == "__main__":
    sys.exit(main())
