#!/usr/bin/env python3
"""A tray of 30 positions with one test at -20 degrees C each, as a person runs it: the whole command on
the simulated instrument under virtual time, discovery, archive and process start included.

Usage: tray_bench.py FOLDER_OF_PROGRAMS WORK_FOLDER [--runs N]

Prints one JSON object: medians of wall time and peak memory, and how much faster than the instrument.
"""
import argparse
import datetime
import json
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

POSITIONS = 30
HEADING = ("position,action,sample id,temperature,rotor on time,known viscosity,"
           "injection time,cool-down time\n")
CLOCK_START = datetime.datetime(2026, 1, 5, 8)  # where the time of day starts with --seed
PROGRESS_TIME = re.compile(r"^(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d) tray ended", re.M)


def run_once(torvell, folder):
    """Wall time in s, CPU time in s, peak memory in MB, simulated time in s of one tray."""
    data = tempfile.mkdtemp(dir=folder)
    tray = pathlib.Path(folder, "tray.csv")
    command = [torvell, "--data", data, "--simulate", "--clock", "virtual", "--seed", "1"]
    subprocess.run(command + ["constants", "set", "--", "-20", "1100", "-400", "0"], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    with tempfile.TemporaryFile(dir=folder) as out, tempfile.TemporaryFile(dir=folder) as progress:
        start = time.monotonic()
        process = subprocess.Popen(command + ["--json", "run", str(tray), "--prepare"], stdout=out,
                                   stderr=progress, stdin=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        out.seek(0)
        progress.seek(0)
        events = [json.loads(line) for line in out.read().decode().splitlines()]
        ended = PROGRESS_TIME.search(progress.read().decode())
    shutil.rmtree(data)
    if process.returncode != 0 or events[-1] != {"event": "summary", "samples": POSITIONS,
                                                 "errors": 0, "aborted": False} or not ended:
        sys.exit(f"error: the tray did not run to its end, exit code {process.returncode}")
    simulated = (datetime.datetime.fromisoformat(ended[1]) - CLOCK_START).total_seconds()
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, simulated


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("programs")
    parser.add_argument("work_folder")
    parser.add_argument("--runs", type=int, default=15)
    arguments = parser.parse_args()
    folder = tempfile.mkdtemp(prefix="torvell-bench.", dir=arguments.work_folder)
    try:
        pathlib.Path(folder, "tray.csv").write_text(HEADING + "".join(
            f"{position},measure,oil {position},-20,,,,\n" for position in range(1, POSITIONS + 1)))
        torvell = str(pathlib.Path(arguments.programs, "torvell"))
        runs = [run_once(torvell, folder) for _ in range(arguments.runs)]
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    wall, cpu, memory, simulated = (statistics.median(column) for column in zip(*runs))
    print(json.dumps({"runs": arguments.runs, "wall_s": wall, "wall_max_s": max(r[0] for r in runs),
                      "cpu_s": cpu, "peak_mb": memory, "simulated_s": simulated,
                      "times_real": simulated / wall}))


if __name__ == "__main__":
    main()
