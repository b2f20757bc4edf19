"""The torvell program as people and scripts run it. Usage: cli_test.py PATH-OF-TORVELL FOLDERS-OF-OTHER-MODULES [unittest options]

The second is a list of folders, separated by commas, each with a module of another version.

No test waits for wall-clock time. Where a test has to act in the middle of a run, the run's output goes
through a small pipe: under the virtual clock the whole program stops while its output is not read.
"""
import csv
import fcntl
import io
import json
import os
import pty
import select
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import unittest

TORVELL = sys.argv.pop(1) if len(sys.argv) > 1 and not sys.argv[1].startswith("-") else "torvell"
OTHER_MODULES = sys.argv.pop(1) if len(sys.argv) > 1 and not sys.argv[1].startswith("-") else ""
PIPE_SIZE_OPTION = 1031  # F_SETPIPE_SZ
HEADING = ("position,action,sample id,temperature,rotor on time,known viscosity,"
           "injection time,cool-down time\n")
READING_KEYS = ["intCount", "temperature", "targetTemperature", "plusVss", "minusVss", "speed",
                "machineStatus", "machineStatusText", "switchByte", "operation", "operationText",
                "errorCode"]


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="torvell-test.")
        self.addCleanup(shutil.rmtree, self.folder, True)
        self.data = os.path.join(self.folder, "data")
        self.environment = {key: value for key, value in os.environ.items()
                            if key not in ("TORVELL_USER", "TORVELL_LOG")}
        self.environment["LC_ALL"] = "C"

    def command(self, *arguments, simulate=True, seed=1):
        words = [TORVELL, "--data", self.data]
        if simulate:
            words += ["--simulate", "--clock", "virtual"]
            if seed is not None:
                words += ["--seed", str(seed)]
        return words + [str(argument) for argument in arguments]

    def run_torvell(self, *arguments, expect=0, simulate=True, seed=1, text=None, user=None):
        environment = dict(self.environment)
        if user:
            environment["TORVELL_USER"] = user
        done = subprocess.run(self.command(*arguments, simulate=simulate, seed=seed),
                              input=text or "", capture_output=True, text=True, env=environment,
                              encoding="utf-8", check=False)
        self.assertEqual(done.returncode, expect, f"{arguments}\n{done.stdout}\n{done.stderr}")
        if expect in (2, 3, 4, 5):
            self.assertTrue("error: " in done.stderr, done.stderr)
        self.stderr = done.stderr
        return done.stdout

    def json(self, *arguments, **options):
        return json.loads(self.run_torvell("--json", *arguments, **options))

    def file(self, name, content):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8", newline="") as file:
            file.write(content)
        return path

    def calibrate(self, *temperatures):
        for temperature in temperatures or (-20, -25):
            self.run_torvell("constants", "set", temperature, 1100, -400, 2)

    def tray(self, *lines):
        return self.file("tray.csv", HEADING + "".join(line + "\n" for line in lines))

    def events(self, *arguments, **options):
        output = self.run_torvell("--json", "run", *arguments, **options)
        return [json.loads(line) for line in output.splitlines()]

    def sample_ids(self):
        return [sample["ID"] for sample in self.json("samples")]


class ReadingCommands(Case):
    def test_discover_status_and_monitor_have_their_keys(self):
        found = self.json("discover")
        self.assertEqual([list(each) for each in found],
                         [["port", "address", "modelCode", "model", "options", "firmware",
                           "serialNumber", "simulated"]])
        self.assertEqual((found[0]["port"], found[0]["modelCode"], found[0]["simulated"]),
                         ("COM1", "4", True))
        status = self.json("status")
        self.assertEqual(list(status), READING_KEYS)
        self.assertIsNone(status["targetTemperature"])
        lines = self.run_torvell("--json", "monitor", "--count", 4).splitlines()
        self.assertEqual(len(lines), 4)
        counts = [json.loads(line)["intCount"] for line in lines]
        self.assertEqual(len(set(counts)), 4)
        self.assertEqual(list(json.loads(lines[0])), READING_KEYS)

    def test_without_an_instrument_each_port_says_why(self):
        self.run_torvell("ports", "set", "COM2", "/dev/does-not-exist", simulate=False)
        self.run_torvell("discover", expect=3, simulate=False)
        for port in ("COM1: no device", "COM2: ", "COM3: no device", "COM4: no device"):
            self.assertIn(port, self.stderr)
        self.assertIn("does-not-exist", self.stderr)
        self.run_torvell("--clock", "virtual", "status", expect=3, simulate=False)
        self.assertIn("keeps real time", self.stderr)

    def test_an_unknown_instrument_is_refused_with_those_there_are(self):
        self.run_torvell("--instrument", "COM3", "status", expect=2)
        self.assertIn("COM1", self.stderr)
        for name in ("COM1", "0", "RVXCOM1:0"):
            self.run_torvell("--instrument", name, "status")

    def test_ports_are_kept_and_cleared(self):
        ports = self.json("ports", "set", "COM1", "/dev/ttyS9", "--settings", "19200")
        self.assertEqual(ports[0]["device"], "/dev/ttyS9")
        self.assertIn("19200", ports[0]["settings"])
        self.run_torvell("ports", "set", "COM9", "/dev/ttyS9", expect=2)
        self.run_torvell("ports", "set", "COM2", "/dev/ttyS9", "--settings", "fast", expect=2)
        self.assertIsNone(self.json("ports", "clear", "COM1")[0]["device"])


class Runs(Case):
    def demo_tray(self):
        return self.tray("1,measure,oil A,-20,30,,60,30", "1,measure,,-25,30,,,",
                         "3,verify,oil B,-20,30,5000,60,30")

    def test_events_and_samples_of_a_whole_tray(self):
        self.calibrate()
        events = self.events(self.demo_tray(), "--prepare")
        kinds = [event["event"] for event in events]
        self.assertEqual(kinds[0], "trayStarted")
        self.assertEqual(kinds[-2:], ["trayFinished", "summary"])
        self.assertEqual(events[-1],
                         {"event": "summary", "samples": 3, "errors": 0, "aborted": False})
        marks = [(event["event"], event["position"]) for event in events
                 if event["event"] in ("sampleStarted", "sampleFinished")]
        self.assertEqual(marks, [("sampleStarted", 0), ("sampleFinished", 0),
                                 ("sampleStarted", 2), ("sampleFinished", 2)])
        self.assertIn({"event": "status", "position": 0, "text": "Run Test"}, events)
        reported = [event for event in events if event["event"] == "sample"]
        stored = self.json("samples")
        self.assertEqual([dict(sample, event="sample") for sample in stored], reported)
        for sample in stored:
            self.assertEqual(len(sample), 62)  # the columns, and whether it is simulated
            speed = sample["Speed"]
            self.assertEqual(sample["Viscosity"], 1100 / speed - 400 + 2 * speed)
        self.assertEqual([sample["Constant 5"] for sample in stored], [0, 0, 5000])
        self.assertEqual([sample["Position"] for sample in stored], [1, 1, 3])
        self.assertEqual(self.json("tray", "show")["positions"], [])

    def test_the_same_seed_gives_the_same_bytes_in_every_locale(self):
        outputs = []
        for locale in ("C", "de_DE.UTF-8"):
            self.environment["LC_ALL"] = locale
            self.data = os.path.join(self.folder, "data-" + locale)
            self.calibrate()
            outputs.append(
                self.run_torvell("--json", "run", self.demo_tray(), "--prepare", seed=7) +
                self.run_torvell("--json", "samples", seed=7) +
                self.run_torvell("samples", seed=7) +
                self.run_torvell("--json", "constants", "show", seed=7))
        self.assertEqual(outputs[0], outputs[1])
        self.assertIn("2026-01-05T08:", outputs[0])
        first = self.sample_ids()
        self.events(self.demo_tray(), "--prepare", seed=7)
        # The clock of both runs began at the same time, so their samples are in mixed order.
        both = self.sample_ids()
        self.assertEqual(len(set(both)), 6)
        self.assertLess(set(first), set(both))

    def test_samples_as_csv_hold_every_column(self):
        self.calibrate()
        self.events(self.demo_tray(), "--prepare")
        path = os.path.join(self.folder, "out.csv")
        self.run_torvell("samples", "--last", 2, "--csv", path)
        with open(path, encoding="utf-8", newline="") as file:
            rows = list(csv.DictReader(file))
        stored = self.json("samples", "--last", 2)
        self.assertEqual(len(rows), 2)
        self.assertEqual(list(rows[0]), list(stored[0]))
        for row, sample in zip(rows, stored):
            self.assertEqual(float(row["Viscosity"]), sample["Viscosity"])
            self.assertEqual(row["Timestamp"], sample["Timestamp"])
        self.run_torvell("samples", "--csv", "/does/not/exist.csv", expect=5)

    def test_a_tray_that_may_not_start_says_why(self):
        self.run_torvell("run", expect=2)
        self.assertIn("empty", self.stderr)
        # Not homed and not ready: it pauses by itself, and no person is there to resume it.
        self.calibrate()
        events = self.events(self.demo_tray(), expect=1)
        self.assertTrue([event for event in events if event["event"] == "error"])
        self.assertEqual(events[-1]["event"], "summary")
        self.assertGreater(events[-1]["errors"], 0)
        self.assertTrue(events[-1]["aborted"])
        self.assertTrue(self.json("messages"))
        self.assertEqual(list(self.json("messages")[0])[:4], ["time", "kind", "source", "message"])

    def test_named_trays(self):
        self.calibrate()
        tray = self.demo_tray()
        self.assertEqual(self.events("COM1=" + tray, "--prepare")[-1]["samples"], 3)
        self.run_torvell("run", tray, tray, expect=2)
        self.run_torvell("run", "COM1=" + tray, "COM1=" + tray, expect=2)
        self.run_torvell("run", "COM2=" + tray, expect=2)


class InTheMiddleOfARun(Case):
    """Runs of several samples that are stopped after the first."""

    def setUp(self):
        super().setUp()
        self.calibrate(-20)
        self.path = self.tray(*[f"{position},measure,oil {position},-20,30,,60,30"
                                for position in range(1, 7)])

    def start(self):
        read_end, write_end = os.pipe()
        fcntl.fcntl(write_end, PIPE_SIZE_OPTION, 4096)
        process = subprocess.Popen(self.command("--json", "run", self.path, "--prepare"),
                                   stdout=write_end, stderr=subprocess.DEVNULL,
                                   stdin=subprocess.DEVNULL, env=self.environment)
        os.close(write_end)
        return process, os.fdopen(read_end, encoding="utf-8")

    def read_until(self, output, kind):
        events = []
        for line in output:
            events.append(json.loads(line))
            if events[-1]["event"] == kind:
                return events
        self.fail(f"no {kind}: {events}")

    def test_one_signal_ends_the_run_behind_the_present_sample(self):
        process, output = self.start()
        with output:
            events = self.read_until(output, "sample")
            process.send_signal(signal.SIGINT)
            events += [json.loads(line) for line in output]
        self.assertEqual(process.wait(), 130)
        self.assertTrue(events[-1]["aborted"])
        self.assertIn({"event": "pauseChanged", "paused": True}, events)
        samples = [event["ID"] for event in events if event["event"] == "sample"]
        self.assertLess(len(samples), 6)
        self.assertEqual(self.sample_ids(), samples)
        # Each sample that was started was also finished.
        started = [event for event in events if event["event"] == "sampleStarted"]
        self.assertEqual(len(started), len(samples))

    def test_two_signals_abort(self):
        process, output = self.start()
        with output:
            events = self.read_until(output, "sample")
            # Stopped until both signals are pending, so that no sample can be finished between them.
            for number in (signal.SIGSTOP, signal.SIGINT, signal.SIGTERM, signal.SIGCONT):
                process.send_signal(number)
            events += [json.loads(line) for line in output]
        self.assertEqual(process.wait(), 130)
        self.assertFalse([event for event in events if event["event"] == "pauseChanged"])
        self.assertEqual([event["event"] for event in events[-2:]], ["trayFinished", "summary"])
        self.assertTrue(events[-1]["aborted"])

    def test_a_killed_run_is_found_again_and_only_the_rest_is_run(self):
        process, output = self.start()
        with output:
            events = self.read_until(output, "sample")
            process.kill()
            process.wait()
            rest = output.read().splitlines()
        # All reported samples are stored. A sample that was not yet reported may be stored too.
        reported = [event["ID"] for event in events if event["event"] == "sample"]
        reported += [json.loads(line)["ID"] for line in rest
                     if line.startswith('{"event":"sample"') and line.endswith("}")]
        stored = self.sample_ids()
        self.assertEqual(stored[:len(reported)], reported)
        self.assertLess(len(stored), 6)

        shown = self.json("tray", "show")
        self.assertIn("was interrupted", self.stderr)
        self.assertIsNotNone(shown["interruptedSince"])
        self.assertEqual(sum(position["measuredTests"] for position in shown["positions"]),
                         len(stored))
        again = self.events("--prepare")
        self.assertIn("position 1 (oil 1): measured", self.stderr)
        self.assertEqual(again[-1]["samples"], 6 - len(stored))
        names = [sample["Sample ID"] for sample in self.json("samples")]
        self.assertEqual(sorted(names), [f"oil {position}" for position in range(1, 7)])
        self.assertIsNone(self.json("tray", "show")["interruptedSince"])

    def test_a_start_that_was_refused_takes_no_test_away(self):
        self.path = self.tray(*[f"1,measure,oil,-20,{30 + test},,60,30" for test in range(8)])
        process, output = self.start()
        with output:
            self.read_until(output, "sample")
            process.kill()
            process.wait()
        self.assertLess(len(self.sample_ids()), 8)
        database = sqlite3.connect(os.path.join(self.data, "torvell.db"))
        database.execute("CREATE TRIGGER REFUSES BEFORE INSERT ON TRAY_RUNS "
                         "BEGIN SELECT RAISE(ABORT, 'refused'); END")
        database.commit()
        for _ in range(2):
            self.run_torvell("run", "--prepare", expect=5)
        database.execute("DROP TRIGGER REFUSES")
        database.commit()
        database.close()
        self.run_torvell("run", "--prepare")
        self.assertEqual(sorted(sample["Constant 7"] for sample in self.json("samples")),
                         [30.0 + test for test in range(8)])


class Terminal(Case):
    def talk(self, arguments, dialogue):
        """Runs the program on a new terminal; dialogue is a list of pairs of awaited text and answer.
        Returns the exit code and all output."""
        child, terminal = pty.fork()
        if child == 0:
            os.environ.clear()
            os.environ.update(self.environment, TERM="xterm")
            os.execv(TORVELL, self.command(*arguments))
        shown = ""
        searched = 0
        try:
            while True:
                if not select.select([terminal], [], [], 120)[0]:  # only a guard against a hang
                    os.kill(child, signal.SIGKILL)
                    self.fail(f"silent, waiting for {dialogue}: {shown[-2000:]}")
                try:
                    shown += os.read(terminal, 4096).decode("utf-8", "replace")
                except OSError:
                    break
                if dialogue and dialogue[0][0] in shown[searched:]:
                    searched = len(shown)
                    os.write(terminal, dialogue.pop(0)[1].encode())
        finally:
            os.close(terminal)
        self.assertEqual(dialogue, [], shown[-2000:])
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), shown

    # Enough to fill the terminal's buffer, so that the program waits before the run is over.
    POSITIONS = 20

    def long_tray(self):
        return self.tray(*[f"{n},measure,oil {n},-20,30,,60,30" for n in range(1, self.POSITIONS + 1)])

    def test_a_run_is_drawn_paused_and_resumed(self):
        self.calibrate(-20)
        path = self.long_tray()
        code, shown = self.talk(["run", path, "--prepare"],
                                [("Injection", "\x03"), ("press r", "r")])
        self.assertEqual(code, 0, shown[-2000:])
        self.assertIn("\x1b[", shown)
        for part in ("oil 1", "waiting", "remaining", "degC", "rpm/1000", "expected end"):
            self.assertIn(part, shown)
        self.assertEqual(len(self.sample_ids()), self.POSITIONS)

    def test_a_paused_run_can_be_aborted(self):
        self.calibrate(-20)
        path = self.long_tray()
        code, _ = self.talk(["run", path, "--prepare"], [("Injection", "\x03"), ("press r", "a")])
        self.assertEqual(code, 130)
        self.assertIn(len(self.sample_ids()), range(1, self.POSITIONS))

    def test_passwords_are_asked_for_and_not_shown(self):
        code, shown = self.talk(["users", "add", "anna", "100"],
                                [("New password of anna: ", "first\n"),
                                 ("The same again: ", "other\n")])
        self.assertEqual(code, 2)
        self.assertNotIn("first", shown)
        code, _ = self.talk(["users", "add", "anna", "100"],
                            [("New password of anna: ", "secret\n"),
                             ("The same again: ", "secret\n")])
        self.assertEqual(code, 0)
        code, _ = self.talk(["--user", "anna", "users", "list"],
                            [("Password of anna: ", "secret\n")])
        self.assertEqual(code, 0)


class Refusals(Case):
    def test_bad_use(self):
        for words in (["frobnicate"], ["--clock", "sometimes", "samples"], ["service"],
                      ["settings", "set", "injection-time"], ["run", "/does/not/exist.csv"],
                      ["settings", "set", "no-such-key=1"], ["constants", "set", "-21", 1, 2, 3],
                      ["service", "temperature", "cold"], ["tray", "load"]):
            self.run_torvell(*words, expect=2)
        self.run_torvell("--help")
        self.run_torvell("run", "--help")

    def test_a_window_without_a_display_is_refused(self):
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"):
            self.environment.pop(name, None)
        self.run_torvell("--clock", "x20", "desktop", simulate=False, expect=2)
        self.assertIn("there is no display", self.stderr)

    def test_a_bad_tray_file_is_refused_as_a_whole(self):
        self.calibrate(-20)
        self.run_torvell("tray", "load", self.tray("2,measure,before,-20,,,,"))
        before = self.run_torvell("tray", "export")
        cases = {
            "1,measure,A,-20,,,,\n3,melt,B,-20,,,,": ("line 3", "column 2", "melt", "measure, verify"),
            "31,measure,A,-20,,,,": ("line 2", "column 1", "31", "1 to 30"),
            "1,measure,A,-25,,,,": ("line 2", "column 4", "-25", "-20"),
            "1,verify,A,-80,,5000,,": ("line 2", "column 4", "-80"),
            "1,verify,A,-20,,12,,": ("line 2", "column 6", "12"),
            "1,measure,A,cold,,,,": ("line 2", "column 4", "cold", "number"),
            "\n".join(["5,measure,A,-20,,,,"] * 21): ("line 22", "21", "20 tests"),
        }
        for lines, parts in cases.items():
            path = self.tray(lines)
            self.run_torvell("run", path, "--prepare", expect=2)
            self.run_torvell("tray", "load", path, expect=2)
            self.assertIn(path, self.stderr)
            for part in parts:
                self.assertIn(part, self.stderr)
            self.assertEqual(self.run_torvell("tray", "export"), before)
        self.assertEqual(self.sample_ids(), [])

    def test_a_data_folder_that_can_not_be_used(self):
        self.data = self.file("no-folder", "a file")
        self.run_torvell("samples", expect=5)
        self.data = os.path.join(self.folder, "newer")
        self.run_torvell("samples")
        for name in os.listdir(self.data):
            path = os.path.join(self.data, name)
            with open(path, "rb") as file:
                if file.read(6) != b"SQLite":
                    continue
            with sqlite3.connect(path) as database:
                database.execute("PRAGMA user_version = 9999")
            database.close()
        self.run_torvell("samples", expect=5)
        self.assertIn("newer", self.stderr)

    def test_a_module_of_another_version_is_not_used(self):
        # Each of these modules ends the program if one of its functions is called.
        for folder in OTHER_MODULES.split(","):
            self.assertTrue(os.path.exists(os.path.join(folder, "librvx.so")), folder)
            self.environment["LD_LIBRARY_PATH"] = folder
            self.run_torvell("settings", "set", "injection-time=200", expect=5)
            self.assertRegex(self.stderr, "not belong to this program.*Install program and module")
        with sqlite3.connect(os.path.join(self.data, "torvell.db")) as database:
            for table in ("INSTRUMENTS", "ERRORS", "AUDIT", "PORTS", "SAMPLES"):
                self.assertEqual(database.execute(f"SELECT COUNT(*) FROM {table}").fetchone(), (0,))
        database.close()

    def test_output_that_is_lost_is_an_error(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            done = subprocess.run(self.command("discover"), stdout=full, stderr=subprocess.PIPE,
                                  text=True, env=self.environment, check=False)
        self.assertEqual(done.returncode, 5)
        self.assertIn("error: ", done.stderr)


class Settings(Case):
    def test_settings_change_all_or_none_and_travel_as_text(self):
        def value(key):
            return {each["key"]: each["value"] for each in self.json("settings", "show")}[key]
        self.run_torvell("settings", "set", "injection-time=200", "cool-down-time=100")
        self.run_torvell("settings", "set", "injection-time=150", "cool-down-time=256", expect=2)
        self.assertIn("256", self.stderr)
        text = self.run_torvell("settings", "export")
        self.run_torvell("settings", "set", "injection-time=10")
        self.run_torvell("settings", "import", self.file("settings.txt", text))
        self.assertEqual(value("injection-time"), "200")
        self.run_torvell("settings", "import", self.file("bad.txt", "what?\n"), expect=2)

    def test_constants_keep_their_date_until_they_are_cleared(self):
        self.calibrate(-20)
        slots = {slot["temperature"]: slot for slot in self.json("constants", "show")}
        self.assertEqual(slots[-20]["b0"], 1100)
        self.assertEqual(slots[-20]["date"][:11], "2026-01-05T")
        self.assertTrue(slots[-25]["empty"])
        self.run_torvell("constants", "set", -20, 0, 0, 0)
        slots = {slot["temperature"]: slot for slot in self.json("constants", "show")}
        self.assertTrue(slots[-20]["empty"])
        self.assertIsNone(slots[-20]["date"])

    def test_the_constants_are_printed_without_a_display(self):
        self.calibrate(-20)
        path = os.path.join(self.folder, "constants.pdf")
        self.environment["QT_QPA_PLATFORM"] = "xcb"  # a missing display must not matter
        self.environment.pop("DISPLAY", None)
        for words, box in ([], b"[0 0 595."), (["--paper", "letter"], b"[0 0 612."):
            self.run_torvell("--quiet", "print", "constants", "--pdf", path, *words)
            self.assertEqual([line for line in self.stderr.splitlines()
                              if not line.startswith("note: ")], [])
            with open(path, "rb") as file:
                pdf = file.read()
            self.assertTrue(pdf.startswith(b"%PDF-"))
            self.assertIn(b"/MediaBox " + box, pdf)
        self.run_torvell("print", "constants", "--pdf", "/dev/null/x.pdf", expect=5)
        self.run_torvell("print", "constants", "--pdf", path, "--paper", "a5", expect=2)
        self.assertIn("a4, letter", self.stderr)

    def test_standards_give_a_verified_oil_its_value(self):
        path = self.file("standards.csv", "name,temperature,known viscosity,lot\n"
                         "S1,-20,3950,\"lot, one\"\nS1,-5,1200,\n")
        self.run_torvell("standards", "import", path, simulate=False)
        self.assertEqual(self.json("standards", "list", simulate=False)[0],
                         {"name": "S1", "temperature": -20.0, "knownViscosity": 3950.0,
                          "lot": "lot, one"})
        exported = self.run_torvell("standards", "export", simulate=False)
        self.assertEqual(list(csv.reader(io.StringIO(exported)))[2], ["S1", "-5", "1200", ""])
        self.run_torvell("standards", "import",
                         self.file("bad.csv", "name,temperature,known viscosity,lot\nS,-21,1,\n"),
                         expect=2, simulate=False)
        self.assertIn("line 2, column 2", self.stderr)
        self.assertEqual(self.run_torvell("standards", "export", simulate=False), exported)
        self.run_torvell("tray", "load", self.tray("1,verify,S1,-20,,,,"))
        tests = self.json("tray", "show")["positions"][0]["tests"]
        self.assertEqual(tests[0]["knownViscosity"], 3950)

    def test_a_tray_that_is_exported_loads_again(self):
        self.calibrate(-20)
        self.run_torvell("tray", "load", self.tray("1,measure,\"a, \"\"b\"\"\",-20,45,,200,",
                                                   "30,verify,c,-25,,5000.5,,"))
        exported = self.run_torvell("tray", "export")
        self.run_torvell("tray", "clear")
        self.assertEqual(self.run_torvell("tray", "export"), HEADING)
        self.run_torvell("tray", "load", "-", text=exported)
        self.assertEqual(self.run_torvell("tray", "export"), exported)


class Service(Case):
    def test_manual_commands(self):
        self.assertEqual(self.json("service", "home"), {"command": "home", "done": True})
        self.run_torvell("service", "temperature", "-20")
        self.run_torvell("service", "temperature", "off")
        self.run_torvell("service", "switch", "motor", "on")
        self.run_torvell("service", "abort")
        self.assertEqual(self.json("service", "selftest")["failures"], [])
        self.run_torvell("service", "jog", "table", 700, expect=2)
        self.run_torvell("service", "move", 31, expect=1)
        self.run_torvell("service", "precondition")  # its time is 0: nothing to do
        self.run_torvell("settings", "set", "precondition-time=1")
        self.run_torvell("service", "precondition", expect=1)  # the steppers have no home
        self.assertIn("error: ", self.stderr)


class Rights(Case):
    def add_user(self, name, level, user=None, expect=0):
        self.run_torvell("users", "add", name, level, "--password-fd", 0, text=name + " secret\n",
                         user=user, expect=expect)

    def test_who_may_do_what(self):
        self.calibrate(-20)
        self.assertEqual(self.stderr.count("you act at level 100"), 1)
        self.add_user("olga", "operator", expect=2)
        self.add_user("sam", "service")
        self.add_user("olga", "operator", expect=4)
        self.add_user("olga", "operator", user="sam")
        self.add_user("mia", 50, user="sam")
        self.assertEqual(self.json("users", "list"),
                         [{"name": "mia", "level": 50}, {"name": "olga", "level": 10},
                          {"name": "sam", "level": 100}])
        tray = self.tray("1,measure,A,-20,,,,")
        for command in (["tray", "load", tray], ["tray", "clear"], ["run", tray, "--prepare"],
                        ["service", "home"]):
            self.run_torvell(*command, expect=4)
            self.assertIn("10", self.stderr)
            self.run_torvell(*command, user="olga")
        for command in (["constants", "set", -25, 1, 2, 3], ["ports", "set", "COM2", "/dev/ttyS8"],
                        ["settings", "set", "injection-time=200"]):
            self.run_torvell(*command, user="olga", expect=4)
            self.assertIn("50", self.stderr)
            self.run_torvell(*command, user="mia")
        for command in (["settings", "set", "temperature-offset=0.2"], ["calibrate", "--all"]):
            self.run_torvell(*command, user="mia", expect=4)
            self.assertIn("100", self.stderr)
        self.run_torvell("settings", "set", "temperature-offset=0.2", user="sam")
        # Without samples to fit, an operator's failure is not about rights.
        self.run_torvell("calibrate", "--temperature", -20, "--save", user="olga", expect=1)
        self.run_torvell("calibrate", "--temperature", -20, "--save", expect=4)
        self.run_torvell("users", "remove", "olga", user="mia", expect=4)
        for command in (["samples"], ["status"], ["tray", "show"], ["settings", "export"]):
            self.run_torvell(*command)
            self.run_torvell(*command, user="stranger")
        self.assertEqual(self.json("samples")[0]["Operator"], "olga")

    def test_passwords(self):
        self.add_user("sam", 100)
        self.run_torvell("--user", "sam", "--password-fd", 0, "service", "home",
                         text="sam secret\n")
        for name, password in (("sam", "wrong\n"), ("nobody", "sam secret\n")):
            self.run_torvell("--user", name, "--password-fd", 0, "service", "home", text=password,
                             expect=4)
        self.run_torvell("--user", "sam", "service", "home", expect=2)
        # The acting user's password comes first, then the new one.
        self.run_torvell("--user", "sam", "--password-fd", 0, "users", "passwd", "sam",
                         text="sam secret\nnew secret\n")
        self.run_torvell("--user", "sam", "--password-fd", 0, "samples", text="new secret\n")
        self.run_torvell("users", "remove", "sam", user="sam", expect=2)


class Calibrations(Case):
    EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "examples")

    def rehearse(self):
        """Runs the tray of standards with simulated oils of known viscosity."""
        os.makedirs(os.path.join(self.data, "files"))
        shutil.copy(os.path.join(self.EXAMPLES, "StandardGroups.txt"),
                    os.path.join(self.data, "files"))
        self.run_torvell("standards", "import", os.path.join(self.EXAMPLES, "standards.csv"))
        tray = self.json("standards", "tray", "--temperature", -20, -25)
        self.run_torvell("simulate", "oils", os.path.join(self.EXAMPLES, "calibration-oils.csv"))
        self.run_torvell("run", "--prepare")
        return tray

    def test_a_cell_is_calibrated_from_the_runs_of_its_standards(self):
        tray = self.rehearse()
        self.assertEqual(sum(len(position["tests"]) for position in tray), 12)
        document = self.json("calibrate", "--temperature", -20)
        runs, fit = document["runs"], document["fit"]
        self.assertEqual(len(runs), 6)
        self.assertEqual(list(fit), ["B0", "B1", "B2", "R", "stdDev", "shown"])
        shown = {key: float(text) for key, text in fit["shown"].items()}
        for run in runs:
            speed, known = run["Speed"], run["Constant 5"]
            recalculated = shown["B0"] / speed + shown["B1"] + shown["B2"] * speed
            self.assertAlmostEqual(run["recalculated"], recalculated, places=6)
            self.assertAlmostEqual(run["percentDiff"], (recalculated - known) / known * 100)
            self.assertLess(abs(run["percentDiff"]), 0.5)
            self.assertTrue(run["used"] and run["Simulated"])
        self.assertEqual(document["largestPercentDiff"],
                         max((run["percentDiff"] for run in runs), key=abs))
        self.assertTrue(all(slot["empty"] for slot in self.json("constants", "show")))
        self.assertEqual((document["lastCalibration"], document["saved"]), (None, False))
        document = self.json("calibrate", "--temperature", -20, "--save")
        slot = self.json("constants", "show")[4]
        self.assertEqual((document["lastCalibration"], document["saved"]), (slot["date"], True))
        self.assertEqual([slot["b0"], slot["b1"], slot["b2"]],
                         [shown["B0"], shown["B1"], shown["B2"]])
        with sqlite3.connect(os.path.join(self.data, "torvell.db")) as database:
            old, new = database.execute("SELECT Old, New FROM AUDIT WHERE Object LIKE "
                                        "'calibration of RVXCOM1:0, -20 degC'").fetchone()
        self.assertIn("none", old)
        self.assertIn(f"B0 {fit['shown']['B0']}", new)
        self.assertIn("simulated", new)

    def test_runs_are_left_out_by_their_ids(self):
        self.rehearse()
        runs = self.json("calibrate", "--temperature", -20)["runs"]
        document = self.json("calibrate", "--temperature", -20, "--exclude", runs[0]["ID"][:8],
                             runs[1]["Sample ID"])
        self.assertEqual([run["used"] for run in document["runs"]], [False, False] + [True] * 4)
        self.assertIsNotNone(document["runs"][0]["recalculated"])
        self.run_torvell("calibrate", "--temperature", -20, "--exclude", "nothing", expect=2)
        with sqlite3.connect(os.path.join(self.data, "torvell.db")) as database:
            # Two ids that begin alike, and a sample id that is the beginning of another run's id.
            self.assertEqual(database.execute(
                "UPDATE SAMPLES SET ID = substr(?, 1, 8) || substr(ID, 9) WHERE ID = ?",
                (runs[0]["ID"], runs[1]["ID"])).rowcount, 1)
            database.execute('UPDATE SAMPLES SET "Sample ID" = substr(?, 1, 6) WHERE ID = ?',
                             (runs[2]["ID"], runs[3]["ID"]))
        for text, reason in ((runs[0]["ID"][:8], "2 runs have an id"),
                             (runs[2]["ID"][:6], "sample id of another")):
            self.run_torvell("calibrate", "--temperature", -20, "--exclude", text, expect=2)
            self.assertIn(reason, self.stderr)
        self.run_torvell("calibrate", "--temperature", -20, "--exclude", runs[0]["ID"])
        runs = self.json("calibrate", "--temperature", -20)["runs"]
        output = self.run_torvell("--json", "calibrate", "--temperature", -20, "--save",
                                  "--exclude", *(run["ID"] for run in runs[:4]), expect=1)
        self.assertIsNone(json.loads(output)["fit"])
        self.assertIn("nothing to fit", self.stderr)
        self.assertTrue(self.json("constants", "show")[4]["empty"])

    def test_runs_of_one_speed_give_no_constants_that_are_kept(self):
        # Without an oils file the simulated rotor always has the same speed.
        self.run_torvell("run", self.tray("1,verify,A,-20,,3000,,", "2,verify,B,-20,,4000,,",
                                          "3,verify,C,-20,,5000,,"), "--prepare")
        output = self.run_torvell("--json", "calibrate", "--temperature", -20, "--save", expect=1)
        self.assertFalse(json.loads(output)["saved"])
        self.assertIn("three different speeds", self.stderr)
        self.assertTrue(self.json("constants", "show")[4]["empty"])

    def test_nothing_to_fit_and_bad_use_are_said(self):
        self.run_torvell("calibrate", "--temperature", -20, "--save", expect=1)
        self.assertIn("nothing to fit", self.stderr)
        for arguments in (("--temperature", -21), (), ("--temperature", -20, "--all"),
                          ("--temperature", -20, "--hours", 367)):
            self.run_torvell("calibrate", *arguments, expect=2)
        self.run_torvell("standards", "tray", "--temperature", -20, expect=2)
        self.assertIn("do not conform", self.stderr)
        self.run_torvell("standards", "conform")
        self.assertIn("StandardGroups.txt", self.stderr)

    def test_oils_are_taken_whole_or_not_at_all(self):
        heading = "position,temperature,true viscosity\n"
        good = self.file("oils.csv", heading + "1,-20,5000\n")
        self.run_torvell("simulate", "oils", good, simulate=False)
        self.run_torvell("simulate", "oils", self.file("bad.csv", heading + "1,-20,1\n2,-20,6000\n"),
                         expect=2, simulate=False)
        self.assertEqual(self.json("simulate", "show", simulate=False),
                         [{"position": 1, "temperature": -20, "trueViscosity": 5000}])
        self.run_torvell("simulate", "off", simulate=False)
        self.assertEqual(self.json("simulate", "show", simulate=False), [])


if __name__ == "__main__":
    unittest.main()
