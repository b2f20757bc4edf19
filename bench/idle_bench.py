#!/usr/bin/env python3
"""What an idle instrument costs, and one that runs, under the real clock.

Usage: idle_bench.py FOLDER_OF_PROGRAMS WORK_FOLDER [--seconds N]

Side by side, in one run: `torvell monitor` on a pseudo-terminal and on the simulated instrument, a bare
loop of poll, write and read with the same period, and a tray on a pseudo-terminal. For each: CPU time
and wake-ups of all threads, from /proc, and resident memory. Prints one JSON object.
"""
import argparse
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from line_controller import LineController  # noqa: E402

HEADING = ("position,action,sample id,temperature,rotor on time,known viscosity,"
           "injection time,cool-down time\n")
# The threads that are there for the program and not for the instrument: its main thread, which prints
# what is monitored, and the one that waits for Ctrl+C.
PROGRAM_THREADS = ("torvell", "interrupt watch")
START_LIMIT = 30  # s


class Usage:
    """CPU time in s and wake-ups of each thread of a process, by thread id, at one moment."""

    def __init__(self, pid):
        self.time = time.monotonic()
        self.threads = {}
        for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
            status = dict(line.split(":", 1) for line in (task / "status").read_text().splitlines())
            running = int((task / "schedstat").read_text().split()[0]) / 1e9
            self.threads[task.name] = (status["Name"].strip(), running,
                                       int(status["voluntary_ctxt_switches"]))


def resident_mb(pid):
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1]) / 1024
    return 0.0


def difference(before, after, pid):
    seconds = after.time - before.time
    cpu, wakes, by_thread = 0.0, 0, {}
    for thread, (name, running, switches) in after.threads.items():
        _, old_running, old_switches = before.threads.get(thread, (name, 0.0, 0))
        cpu += running - old_running
        wakes += switches - old_switches
        by_thread[name] = by_thread.get(name, 0) + (switches - old_switches) / seconds
    of_instrument = sum(rate for name, rate in by_thread.items() if name not in PROGRAM_THREADS)
    return {"cpu_percent": 100 * cpu / seconds, "wakeups": wakes / seconds,
            "instrument_wakeups": of_instrument, "resident_mb": resident_mb(pid),
            "wakeups_by_thread": {name: round(rate, 2) for name, rate in sorted(by_thread.items())}}


class Bench:
    def __init__(self, programs, folder):
        self.programs, self.folder = pathlib.Path(programs), folder
        self.processes, self.controllers = {}, []

    def command(self, data, *words):
        return [str(self.programs / "torvell"), "--data", f"{self.folder}/{data}", *words]

    def run(self, data, *words):
        subprocess.run(self.command(data, *words), check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

    def start(self, name, words, output=None):
        self.processes[name] = subprocess.Popen(words, stdin=subprocess.DEVNULL,
                                                stdout=output or subprocess.DEVNULL,
                                                stderr=subprocess.DEVNULL)

    def line(self, data):
        controller = LineController().start()
        self.controllers.append(controller)
        if data:
            self.run(data, "ports", "set", "COM1", controller.device)
        return controller

    def start_all(self):
        self.line("line")
        self.start("line", self.command("line", "--json", "monitor"), self.output("line"))
        self.start("simulated", self.command("simulated", "--simulate", "--json", "monitor"),
                   self.output("simulated"))
        self.running = self.line("run")
        self.run("run", "constants", "set", "--", "-20", "1100", "-400", "0")
        tray = pathlib.Path(self.folder, "tray.csv")
        tray.write_text(HEADING + "1,measure,oil,-20,,,,\n")
        self.start("run", self.command("run", "--json", "run", str(tray)))
        self.start("bare", [str(self.programs / "bare_poll"), self.line(None).device,
                            str(self.period_ms())])

    def period_ms(self):
        """The period with which the instrument polls, from its settings."""
        text = subprocess.run(self.command("period", "--simulate", "--clock", "virtual", "--json",
                                           "settings", "show"),
                              check=True, capture_output=True, text=True).stdout
        for setting in json.loads(text):
            if setting["key"] == "status-period":
                return int(setting["value"])
        sys.exit("error: the settings do not say how often the instrument polls")

    def output(self, name):
        return open(pathlib.Path(self.folder, name + ".out"), "wb")

    def wait_until_started(self):
        """Both monitors have printed and the tray's test runs."""
        limit = time.monotonic() + START_LIMIT
        waited = [pathlib.Path(self.folder, name + ".out") for name in ("line", "simulated")]
        while time.monotonic() < limit:
            if all(path.stat().st_size for path in waited) and self.running.tests_started:
                time.sleep(2)  # what a start brings with it is over
                return
            time.sleep(0.1)
        sys.exit("error: the programs did not start")

    def measure(self, seconds):
        before = {name: Usage(process.pid) for name, process in self.processes.items()}
        time.sleep(seconds)
        result = {"seconds": seconds, "period_ms": self.period_ms()}
        for name, process in self.processes.items():
            if process.poll() is not None:
                sys.exit(f"error: {name} ended by itself with code {process.returncode}")
            result[name] = difference(before[name], Usage(process.pid), process.pid)
        if self.running.tests_started != 1 or self.running.aborts:
            sys.exit("error: the tray did not stay in its test")
        return result

    def end(self):
        for process in self.processes.values():
            process.send_signal(signal.SIGINT)
        time.sleep(0.2)
        for process in self.processes.values():
            if process.poll() is None:
                process.send_signal(signal.SIGINT)
            try:
                process.wait(timeout=20)
            except subprocess.TimeoutExpired:
                process.kill()
        for controller in self.controllers:
            controller.stop()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("programs")
    parser.add_argument("work_folder")
    parser.add_argument("--seconds", type=float, default=20)
    arguments = parser.parse_args()
    folder = tempfile.mkdtemp(prefix="torvell-bench.", dir=arguments.work_folder)
    bench = Bench(arguments.programs, folder)
    try:
        bench.start_all()
        bench.wait_until_started()
        print(json.dumps(bench.measure(arguments.seconds)))
    finally:
        bench.end()
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
