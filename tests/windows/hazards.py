#!/usr/bin/env python3
"""What can happen to a rewrite by the companion for Windows: names, ends in the middle, neighbours, full disks.

    hazards.py COMPANION WINDOWS_COMPANION WINE

COMPANION, of this system, makes the clip and judges it afterwards.
"""

import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

KILLS = 30
companion = os.path.abspath(sys.argv[1])
windows = [sys.argv[3], os.path.abspath(sys.argv[2])]
failures = []


def expect(truth, what):
    if not truth:
        failures.append(what)
        print("FAILED:", what)


def run(program, *arguments):
    return subprocess.run([*program, *arguments], capture_output=True, text=True, timeout=120)


def rewrap(clip, method="mapped"):
    return [*windows, "rewrap", clip, "--silence", "1", "--silence", "8", "--yes", "--no-log", "--method", method]


def is_silent(clip):
    return run([companion], "verify", clip, "--silence", "1", "--silence", "8").returncode == 0


def is_old_or_new(data, old, new, essence):
    """Whether each byte from `essence` on is the old one or the new one."""
    step = 4096
    return len(data) == len(old) and all(
        data[i:i + step] in (old[i:i + step], new[i:i + step]) or
        all(byte in (a, b) for byte, a, b in zip(data[i:i + step], old[i:i + step], new[i:i + step]))
        for i in range(essence, len(data), step))


def begin(clip, old, method="mapped"):
    """A rewrite of the clip `old` that has begun to write, or has ended already."""
    clip.write_bytes(old)
    before = clip.stat().st_mtime_ns
    job = subprocess.Popen(rewrap(clip, method), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    while job.poll() is None and clip.stat().st_mtime_ns == before:
        pass
    return job


def signal_in_the_middle(clip, old, sent):
    """A rewrite that got the signal before its end."""
    for _ in range(20):
        job = begin(clip, old)
        job.send_signal(sent)
        if job.poll() is None:
            return job
    raise RuntimeError("each rewrite has ended too soon")


def names(folder, old):
    deep = folder / ("深" * 80) / ("い" * 80)  # 240 bytes each
    deep.mkdir(parents=True)
    for name in ("映像 第1話.mxf", "🎬é.mxf", "n" * 240 + ".mxf"):
        for place in (folder, deep):
            (place / name).write_bytes(old)
            ended = run(rewrap(str(place / name).upper() if name[0] == "n" else place / name))
            expect(ended.returncode == 0 and is_silent(place / name), f"{place / name}: {ended.stderr}")
            (place / name).unlink()
    (folder / "clip.mxf").write_bytes(old)
    taken = folder / "TRACK-1.WAV"
    taken.write_bytes(b"taken")
    ended = run(windows, "export", folder / "clip.mxf", "--tracks", "1", "--folder", folder)
    expect(ended.returncode == 0 and taken.read_bytes() == b"taken" and len(list(folder.glob("Track-1*"))) == 1,
           f"export beside a name in capital letters: {ended}")


    for command in (["export", folder / "clip.mxf", "--tracks", "1", "--folder", folder, "--prefix", "clip.mxf:s"],
                    ["conform", folder / "clip.mxf", folder / "a?b.mxf"]):
        ended = run(windows, *command)
        expect(ended.returncode == 1 and (folder / "clip.mxf").read_bytes() == old, f"a name that cannot be: {ended}")


def ends_in_the_middle(folder, old, essence):
    clip = folder / "killed.mxf"
    for method in ("mapped", "file"):
        job = begin(clip, old, method)
        began = time.monotonic()
        expect(job.wait() == 0 and is_silent(clip), f"rewrap --method {method}")
        writing = time.monotonic() - began
        new = clip.read_bytes()
        partly = 0
        for moment in range(KILLS):
            job = begin(clip, old, method)
            time.sleep(writing * moment / KILLS)
            job.kill()
            job.wait()
            killed = clip.stat().st_mtime_ns
            data = clip.read_bytes()
            partly += data[essence:] not in (old[essence:], new[essence:])
            expect(is_old_or_new(data, old, new, essence), f"{method}, killed at {moment}: neither old nor new")
            expect(run([companion], "info", clip).returncode == 0, f"{method}, killed at {moment}: no clip any more")
            expect(clip.stat().st_mtime_ns == killed, f"{method}, killed at {moment}: lives on")
        expect(partly > 0, f"{method}: no end came in the middle")
        expect(run(rewrap(clip, method)).returncode == 0 and is_silent(clip), f"{method}: not rewritten after kills")


def interrupt_key(folder, old):
    job = signal_in_the_middle(folder / "interrupted.mxf", old, signal.SIGINT)
    text = job.communicate()[1]
    expect(job.returncode == 3 and "The rewrite was stopped." in text, f"interrupt key: {job.returncode}, {text}")


def neighbours(folder, old):
    """Nobody gets at a clip that is being rewritten, and the rewrite goes on."""
    clip = folder / "two.mxf"
    job = signal_in_the_middle(clip, old, signal.SIGSTOP)
    for other in (rewrap(clip), rewrap(clip, "file"), [*windows, "info", clip],
                  [*windows, "export", clip, "--tracks", "1", "--folder", folder / "out"]):
        ended = run(other)
        expect(ended.returncode == 1 and "ERR: 20" in ended.stderr, f"beside a rewrite: {other}: {ended}")
    job.send_signal(signal.SIGCONT)
    expect(job.wait() == 0 and is_silent(clip), "a rewrite that others disturb")


def cut_under_a_view(folder, old):
    clip = folder / "cut.mxf"
    clip.write_bytes(old)
    job = subprocess.Popen([*windows, "export", clip, "--tracks", "1-8", "--folder", folder / "out"],
                           stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, text=True)
    while job.poll() is None and not any(file.stat().st_size > 100000 for file in (folder / "out").iterdir()):
        pass
    job.send_signal(signal.SIGSTOP)
    os.truncate(clip, 100000)
    job.send_signal(signal.SIGCONT)
    text = job.communicate()[1]
    expect(job.returncode == 1 and "cut.mxf" in text, f"cut under its view: status {job.returncode}, {text}")


def places_that_refuse(folder, old):
    """A full disk and a disk that nobody may write, where this user may make them; else a read-only file."""
    if os.geteuid() != 0:
        clip = folder / "kept.mxf"
        clip.write_bytes(old)
        clip.chmod(0o444)
        ended = run(rewrap(clip))
        expect(ended.returncode == 1 and clip.read_bytes() == old, f"rewrap of a read-only file: {ended}")
    place = folder / "small"
    place.mkdir()
    if run(["mount"], "-t", "tmpfs", "-o", f"size={len(old) + 300000}", "small", place).returncode != 0:
        print("no small disk for this user: not tried")
        return
    try:
        clip = place / "clip.mxf"
        for command in (["export", clip, "--tracks", "1-8", "--folder", place], ["conform", clip, place / "copy.mxf"],
                        ["rewrap", clip, "--silence", "1", "--silence", "8", "--yes"]):
            ends = []
            for program in ([companion], windows):
                for file in place.iterdir():
                    file.unlink()
                clip.write_bytes(old)
                if command[0] == "rewrap":  # not even the log fits
                    (place / "rest").write_bytes(bytes(os.statvfs(place).f_bavail * os.statvfs(place).f_frsize))
                ended = run(program, *command)
                ends.append((ended.returncode, bool(ended.stderr)))
                good = is_silent(clip) if command[0] == "rewrap" else clip.read_bytes() == old
                expect(good and ended.stderr, f"{command[0]} on a full disk: {ended}")
            expect(ends[0] == ends[1], f"{command[0]} on a full disk: {ends}")
        clip.write_bytes(old)
        subprocess.run(["mount", "-o", "remount,ro", place], check=True)
        ended = run(rewrap(clip))
        expect(ended.returncode == 1 and "clip.mxf" in ended.stderr, f"rewrap on a read-only disk: {ended}")
        expect(clip.read_bytes() == old, "rewrap on a read-only disk: the clip has changed")
    finally:
        subprocess.run(["umount", place], check=True)


with tempfile.TemporaryDirectory() as work:
    os.environ |= {"WINEDEBUG": "-all", "LC_ALL": "C.UTF-8"}
    folder = Path(work)
    (folder / "out").mkdir()
    tones = [word for f in range(1, 9) for word in ("-f", "lavfi", "-t", "30", "-i", f"sine=f={300 * f}:r=48000")]
    maps = [word for n in range(9) for word in ("-map", str(n))]
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "color=s=64x64:r=25:d=30", *tones, *maps, "-c:v",
                    "mpeg2video", "-pix_fmt", "yuv422p", "-profile:v", "0", "-level:v", "2", "-c:a", "pcm_s24le",
                    folder / "made.mxf"], check=True)
    subprocess.run([companion, "conform", folder / "made.mxf", folder / "clip.mxf"], check=True,
                   stdout=subprocess.DEVNULL)
    old = (folder / "clip.mxf").read_bytes()
    essence = old.index(bytes.fromhex("060e2b34020501010d01030104010100"))  # the first system element
    names(folder, old)
    ends_in_the_middle(folder, old, essence)
    interrupt_key(folder, old)
    neighbours(folder, old)
    cut_under_a_view(folder, old)
    places_that_refuse(folder, old)
sys.exit(bool(failures))
