#!/usr/bin/env python3
"""Runs the same commands with this system's companion and with that for Windows, on the same clips.

    same_bytes.py COMPANION WINDOWS_COMPANION COMMAND_OF_WINE...

Exit statuses, texts, JSON, clips, exported files and logs must be the same, except that
- a path has another folder and another sign between its parts (here / is put for each \\);
- the UMIDs and the time of change that `info` tells of a rewritten clip are taken for each other, wherever they stand;
- the lines of a log that tell when it was written are not compared;
- the logs of Windows are in code page 932, with numbers for the characters that it lacks.
"""

import codecs
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

CLIPS = {  # name: rate, tracks, bits, start, IN and OUT, the timecode in frame 5 as its bytes
    "clip": ("25", 2, 24, "10:00:00:00", ("10:00:00:12", "10:00:01:10"), b"\x81\x05\x00\x00\x10"),
    "映像é🎬": ("30000/1001", 4, 16, "23:59:59;00", ("23:59:59:10", "00:00:00:05"), b"\x81\x45\x59\x59\x23")}
COMMANDS = """conform {0}_made.mxf {0}.mxf --json
conform {0}.mxf --check
info {0}.mxf --json --index
info {0}.mxf --method file
info {0}_broken.mxf --timecode-log {0}_breaks.txt
loudness {0}.mxf --tracks 1,2 --json
export {0}.mxf --tracks 1-2 --folder . --prefix {0}書出し
export {0}.mxf --tracks 1-2 --folder . --prefix {0} --in {1} --out {2} --method file
rewrap {0}.mxf --yes --track 1={0}.mxf
rewrap {0}.mxf --yes --track 2=mono.wav --silence 1 --out {1} --method file --buffer 0
verify {0}.mxf --track 1=音ｱ①.wav
rewrap {0}.mxf --yes --track 1=音ｱ①.wav --in {1} --out {2} --method mapped
verify {0}.mxf --track 1=音ｱ①.wav --in {1} --out {2}
info {0}.mxf --json""".split("\n")


def make_material(folder, name, rate, tracks, bits, start):
    tones = "".join(f" -t 2 -f lavfi -i sine=f={300 * t}:r=48000" for t in range(1, tracks + 1))
    maps = "".join(f" -map {t}" for t in range(tracks + 1))
    subprocess.run(f"ffmpeg -v error -f lavfi -i testsrc2=s=320x180:r={rate}:d=2{tones}{maps} -c:v mpeg2video "
                   "-pix_fmt yuv422p -profile:v 0 -level:v 2 "
                   f"-c:a pcm_s{bits}le -timecode {start} {folder}/{name}_made.mxf".split(), check=True)
    for wav, channels in (("音ｱ①", 2), ("mono", 1)):
        subprocess.run("ffmpeg -v error -f lavfi -i anoisesrc=r=48000:d=1.25:seed=1 "
                       f"-ac {channels} -c:a pcm_s{bits}le {folder}/{wav}.wav".split(), check=True)


def results(program, folder, log_encoding, name, points, timecode):
    """What the commands print and leave behind, by command or file, without what may differ."""
    def without_place_and_time(text):
        text = text.replace("\\\\", "/").replace("\\", "/").replace(f"Z:{folder}", "<folder>").replace(str(folder), "<folder>")
        return re.sub(r"(更新日|処理開始|処理終了|(?<=\]\r\n)作成日): .*", r"\1", text).encode()

    found = {}
    for command in COMMANDS:
        if "_broken" in command:
            whole = (folder / f"{name}.mxf").read_bytes()
            (folder / f"{name}_broken.mxf").write_bytes(whole.replace(timecode, timecode[:1] + b"\x49" + timecode[2:]))
        ran = subprocess.run(program + command.format(name, *points).split(), cwd=folder, capture_output=True)
        found[command] = without_place_and_time(f"{ran.returncode}\n{ran.stdout.decode()}{ran.stderr.decode()}")
    for path in folder.iterdir():
        data = path.read_bytes()
        if path.suffix == ".txt":
            data = without_place_and_time(data.decode(log_encoding).encode("cp932", "number").decode("cp932"))
        found[path.name] = data
    base = json.loads(ran.stdout)["MXF_BASE_INFO"]
    date = base["modifiedDateText"]
    year, *rest = (int(part) for part in re.split(r"\D+", date))
    same = [(date.encode(), b"date"), (re.escape(year.to_bytes(2, "big") + bytes(rest)) + b".", b"stamp")]
    for umid in ("materialUmid", "sourceUmid"):
        same += [(base[umid].encode(), umid.encode()), (re.escape(bytes.fromhex(base[umid])), umid.encode())]
    for pattern, word in same:
        found = {key: re.sub(pattern, word, data, flags=re.S) for key, data in found.items()}
    return found


companion, windows_companion = map(os.path.abspath, sys.argv[1:3])
windows_companion = [*sys.argv[3:], windows_companion]
codecs.register_error("number", lambda error: (f"<U+{ord(error.object[error.start]):04X}>", error.start + 1))
differ = False
with tempfile.TemporaryDirectory() as work:
    subprocess.run(["localedef", "-i", "ja_JP", "-f", "UTF-8", f"{work}/ja_JP.UTF-8"], check=True)
    os.environ |= {"LOCPATH": work, "LC_ALL": "ja_JP.UTF-8", "WINEDEBUG": "-all"}
    subprocess.run([*windows_companion, "--version"], check=True)  # the first start may print more
    for clip, (name, (*making, points, timecode)) in enumerate(CLIPS.items()):
        native, windows = (Path(work) / f"{side}{clip}" for side in ("native", "windows"))
        native.mkdir()
        make_material(native, name, *making)
        subprocess.run(["cp", "-r", native, windows], check=True)
        a = results([companion], native, "utf-8", name, points, timecode)
        b = results(windows_companion, windows, "cp932", name, points, timecode)
        for key in sorted(a.keys() | b.keys()):
            if a.get(key) != b.get(key):
                differ = True
                print(f"{name}: {key} differs:", a.get(key, b"")[:999], b.get(key, b"")[:999], sep="\n")
sys.exit(differ)
