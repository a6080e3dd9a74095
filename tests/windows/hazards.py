#!/usr/bin/env python3
"""What can happen to a rewrite by the companion for Windows: names, ends in the middle, neighbours, full disks.

    hazards.py COMPANION WINDOWS_COMPANION COMMAND_OF_WINE...

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
windows = [*sys.argv[3:], os.path.abspath(sys.argv[2])]
failures = []


def expect(truth, what):
    if not truth:
        failures.append(what)
        print("FAILED:", what)


def run(program, *arguments):
    return subprocess.run([*program, *arguments], capture_output=True, text=True)


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


def names(folder, old):
    deep = folder / ("深" * 80) / ("い" * 80)  # 240 bytes each
    deep.mkdir(parents=True)
    for name in ("映像 第1話.mxf", "🎬é.mxf", "n" * 240 + ".mxf"):
        for place in (folder, deep):
            (place / name).write_bytes(old)
            ended = run(rewrap(str(place / name)))
            expect(ended.returncode == 0 and is_silent(place / name), f"{place / name}: {ended.stderr}")
            (place / name).unlink()


def ends_in_the_middle(folder, old, essence):
    clip = folder / "killed.mxf"
    for method in ("mapped", "file"):
        writing = 0  # seconds from the first write to the end
        partly = 0
        for moment in range(KILLS + 1):
            clip.write_bytes(old)
            before = clip.stat().st_mtime_ns
            job = subprocess.Popen(rewrap(clip, method), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            while job.poll() is None and clip.stat().st_mtime_ns == before:
                pass
            began = time.monotonic()
            if moment == 0:
                expect(job.wait() == 0 and is_silent(clip), f"rewrap --method {method}")
                writing = time.monotonic() - began
                new = clip.read_bytes()
                continue
            time.sleep(writing * (moment - 1) / KILLS)
            job.kill()
            job.wait()
            data = clip.read_bytes()
            partly += data[essence:] not in (old[essence:], new[essence:])
            expect(is_old_or_new(data, old, new, essence), f"{method}, killed at {moment}: neither old nor new")
            expect(run([companion], "info", clip).returncode == 0, f"{method}, killed at {moment}: no clip any more")
        expect(partly > 0, f"{method}: no end came in the middle")
        expect(run(rewrap(clip, method)).returncode == 0 and is_silent(clip), f"{method}: not rewritten after kills")


def interrupt_key(folder, old):
    clip = folder / "interrupted.mxf"
    statuses = []
    while 3 not in statuses and len(statuses) < 10:  # a rewrite may end before the key comes
        clip.write_bytes(old)
        before = clip.stat().st_mtime_ns
        job = subprocess.Popen(rewrap(clip), stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, text=True)
        while job.poll() is None and clip.stat().st_mtime_ns == before:
            pass
        job.send_signal(signal.SIGINT)
        text = job.communicate()[1]
        statuses.append(job.returncode)
    expect(statuses[-1] == 3 and "The rewrite was stopped." in text, f"interrupt key: {statuses}, {text}")


def neighbours(folder, old):
    clip = folder / "two.mxf"
    clip.write_bytes(old)
    jobs = [subprocess.Popen(rewrap(clip, method), stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, text=True)
            for method in ("mapped", "file")]
    ended = sorted((job.wait(), job.stderr.read()) for job in jobs)
    expect([status for status, _ in ended] in ([0, 0], [0, 1]) and is_silent(clip), f"two at once: {ended}")


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
    """A full disk and a disk that nobody may write, where this user may make them."""
    place = folder / "small"
    place.mkdir()
    if run(["mount"], "-t", "tmpfs", "-o", f"size={len(old) + 300000}", "small", place).returncode != 0:
        print("no small disk for this user: not tried")
        return
    try:
        clip = place / "clip.mxf"
        clip.write_bytes(old)
        ended = run(windows, "export", clip, "--tracks", "1-8", "--folder", place)
        expect(ended.returncode == 1 and ended.stderr, f"export to a full disk: {ended}")
        expect(clip.read_bytes() == old, "export to a full disk: the clip has changed")
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
