#!/usr/bin/env python3
"""Kills a running tray again and again, and checks what the next start finds.

Usage: kill_rounds.py PATH-OF-TORVELL [--rounds N] [--seed S]

All rounds share one data folder. After each kill the database must be intact and contain every reported
sample exactly once, and the journal and "tray show" must agree with the archive. Then the tray goes on
from where it stopped, or a new one replaces it. When a tray comes to its end, each of its tests must have
been measured exactly once, however often it was killed. Ends with code 1 at the first failure, and prints
its round.
"""
import argparse
import fcntl
import json
import os
import random
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time

PIPE_SIZE_OPTION = 1031  # F_SETPIPE_SZ
POSITIONS = 4
TESTS = 3
HEADING = ("position,action,sample id,temperature,rotor on time,known viscosity,"
           "injection time,cool-down time\n")


class Broken(Exception):
    pass


def require(holds, text):
    if not holds:
        raise Broken(text)


class Rounds:
    def __init__(self, torvell, folder, seed):
        self.torvell = torvell
        self.folder = folder
        self.data = os.path.join(folder, "data")
        self.random = random.Random(seed)
        self.reported = set()
        self.chain = 0  # number of the latest tray
        self.killed = {"before the start": 0, "in the run": 0, "behind the end": 0}
        self.resumed = 0
        self.finished = 0
        self.environment = {key: value for key, value in os.environ.items()
                            if key not in ("TORVELL_USER", "TORVELL_LOG")}
        self.run_to_end("--quiet", "constants", "set", "--", "-20", "1100", "-400", "2")
        begin = time.monotonic()
        self.check_end(self.go(self.new_tray(), None))
        self.duration = time.monotonic() - begin  # seconds of a whole run, for the moments of kills

    def words(self, *arguments):
        return [self.torvell, "--data", self.data, "--simulate", "--clock", "virtual", "--seed",
                str(self.random.randrange(1, 1 << 30)), *arguments]

    def run_to_end(self, *arguments):
        done = subprocess.run(self.words(*arguments), capture_output=True, text=True, check=False,
                              env=self.environment)
        require(done.returncode == 0, f"{arguments} ended with {done.returncode}: {done.stderr}")
        return done.stdout

    def new_tray(self):
        """Writes a tray whose tests differ in sample id or rotor on time; returns the arguments for it."""
        self.chain += 1
        path = os.path.join(self.folder, "tray.csv")
        with open(path, "w", encoding="utf-8") as file:
            file.write(HEADING)
            for position in range(1, POSITIONS + 1):
                for test in range(TESTS):
                    file.write(f"{position},measure,{self.chain}-{position},-20,{30 + test},,2,3\n")
        return [path]

    def go(self, arguments, kill):
        """Runs a tray. `kill` says when to kill it: None for never, ("lines", n), ("seconds", s), or
        ("notice",) for when it prints which samples of an interrupted tray it leaves out. Returns the
        exit code, negative when killed."""
        words = self.words("--json", "run", *arguments, "--prepare")
        if kill == ("notice",):
            code, lines = self.kill_at_notice(words)
        else:
            code, lines = self.kill_in_run(words, kill)
        for line in lines:
            if line.startswith('{"event":"sample",') and line.endswith("}\n"):
                self.reported.add(json.loads(line)["ID"])
        if code < 0:
            ended = any('"trayFinished"' in line for line in lines)
            self.killed["behind the end" if ended else "in the run" if lines
                        else "before the start"] += 1
        return code

    def kill_in_run(self, words, kill):
        ours, theirs = os.pipe()
        # A small pipe blocks the program, so that a kill by lines hits it in the middle.
        fcntl.fcntl(ours, PIPE_SIZE_OPTION, 4096)
        process = subprocess.Popen(words, stdout=theirs, stderr=subprocess.DEVNULL,
                                   env=self.environment)
        os.close(theirs)
        lines = []
        with os.fdopen(ours, encoding="utf-8", errors="replace") as output:
            if kill and kill[0] == "seconds":
                try:
                    process.wait(kill[1])
                except subprocess.TimeoutExpired:
                    process.send_signal(signal.SIGKILL)
            for line in output:
                lines.append(line)
                if kill and kill[0] == "lines" and len(lines) == kill[1]:
                    process.send_signal(signal.SIGKILL)
        return process.wait(), lines

    def kill_at_notice(self, words):
        with tempfile.TemporaryFile("w+", encoding="utf-8") as output:
            process = subprocess.Popen(words, stdout=output, stderr=subprocess.PIPE, text=True,
                                       env=self.environment)
            with process.stderr:
                for line in process.stderr:
                    if "is not run again" in line:
                        process.send_signal(signal.SIGKILL)
            code = process.wait()
            output.seek(0)
            return code, output.readlines()

    def look(self):
        """Checks the database without the program. Returns whether a run is open."""
        database = sqlite3.connect(os.path.join(self.data, "torvell.db"))
        try:
            require(database.execute("PRAGMA integrity_check").fetchall() == [("ok",)],
                    "the database is damaged")
            rows = database.execute('SELECT "ID", "Sample ID", "Constant 7" FROM SAMPLES').fetchall()
            ids = {row[0] for row in rows}
            lost = self.reported - ids
            require(not lost, f"reported samples are lost: {lost}")
            tests = [row[1:] for row in rows]
            require(len(set(tests)) == len(tests), "a test is in the archive twice")
            linked = [row[0] for row in database.execute('SELECT "ID" FROM TRAY_RUN_SAMPLES')]
            require(len(set(linked)) == len(linked) and set(linked) == ids,
                    "the journal's samples are not those of the archive")
            open_runs = database.execute(
                'SELECT COUNT(*) FROM TRAY_RUNS WHERE "Ended" IS NULL').fetchone()[0]
            require(open_runs <= 1, f"{open_runs} runs are open")
            self.tests = set(tests)
            # The tray of the last run: a kill may have come before a new one was taken over.
            self.tray = database.execute(
                'SELECT "Sample ID" FROM TRAY_RUN_POSITIONS '
                'ORDER BY "Run" DESC LIMIT 1').fetchone()[0].split("-")[0]
            return open_runs == 1
        finally:
            database.close()

    def look_at_tray(self):
        """Returns what the program prints about an interrupted tray."""
        shown = json.loads(self.run_to_end("--json", "--quiet", "tray", "show"))
        require(shown["interruptedSince"] is not None, "the interruption is not shown")
        for position in shown["positions"]:
            require(0 <= position["measuredTests"] <= TESTS, f"measured tests of {position}")

    def check_end(self, code, resumed=False):
        # Killed after the last sample: nothing is left to resume, which the program reports with code 2.
        require(code == 0 or (resumed and code == 2), f"the run ended with {code}")
        require(not self.look(), "a run that has ended is still open")
        for position in range(1, POSITIONS + 1):
            for test in range(TESTS):
                require((f"{self.tray}-{position}", 30.0 + test) in self.tests,
                        f"test {test + 1} of position {position} of a whole tray was never measured")
        self.finished += 1

    def moment(self, resumed):
        # Between the removal of measured samples from a tray and the start of its run.
        if resumed and self.random.random() < 0.25:
            return ("notice",)
        if self.random.random() < 0.5:
            return "lines", self.random.randint(1, 12 * POSITIONS * TESTS)
        return "seconds", self.random.uniform(0, self.duration)

    def round(self):
        interrupted = self.look()
        if interrupted and self.random.random() < 0.2:
            self.look_at_tray()
        if interrupted and self.random.random() < 0.7:
            self.resumed += 1
            arguments = []
        else:
            arguments = self.new_tray()
        code = self.go(arguments, self.moment(resumed=not arguments))
        if code >= 0:
            self.check_end(code, resumed=not arguments)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("torvell")
    parser.add_argument("--rounds", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    folder = tempfile.mkdtemp(prefix="torvell-kill.")
    number = 0
    begin = time.monotonic()
    try:
        rounds = Rounds(options.torvell, folder, options.seed)
        while sum(rounds.killed.values()) < options.rounds:
            number += 1
            rounds.round()
        if rounds.look():
            rounds.check_end(rounds.go([], None), resumed=True)
    except Broken as broken:
        print(f"Round {number} of seed {options.seed}: {broken}. The data folder is kept: {folder}",
              file=sys.stderr)
        return 1
    killed = ", ".join(f"{count} {when}" for when, count in rounds.killed.items())
    print(f"{sum(rounds.killed.values())} kills ({killed}), {rounds.resumed} runs taken up again, "
          f"{rounds.finished} trays finished, {len(rounds.reported)} samples reported and none lost or "
          f"doubled, {time.monotonic() - begin:.0f} s")
    shutil.rmtree(folder)
    return 0


sys.exit(main())
