"""The torvell program and an instrument on a serial line, under the real clock.
Usage: line_test.py PATH-OF-TORVELL [unittest options]

Discovery alone takes more than a second on each line, so all cases run side by side, each with a data
folder and lines of its own.
"""
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import unittest

sys.dont_write_bytecode = True  # the sources stay as they are
from controller import BAD_PACKET, REFUSED_NOT_IDLE, RUN_TEST, Controller, counts_of, degrees

TORVELL = sys.argv.pop(1) if len(sys.argv) > 1 and not sys.argv[1].startswith("-") else "torvell"
HEADING = ("position,action,sample id,temperature,rotor on time,known viscosity,"
           "injection time,cool-down time\n")
B0, B1, B2 = 1100, -400, 2
GUARD = 60  # seconds until a program counts as hanging


class Program:
    """A running torvell, whose output is collected while it runs."""

    def __init__(self, words, environment):
        self.words = words
        self.process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True, env=environment)
        self.changed = threading.Condition()
        self.lines = {"stdout": [], "stderr": []}
        self.readers = [threading.Thread(target=self.collect, args=(name,), daemon=True)
                        for name in self.lines]
        for reader in self.readers:
            reader.start()

    def collect(self, name):
        for line in getattr(self.process, name):
            with self.changed:
                self.lines[name].append(line)
                self.changed.notify_all()

    def text(self, name):
        with self.changed:
            return "".join(self.lines[name])

    def wait_for(self, name, part):
        with self.changed:
            if not self.changed.wait_for(
                    lambda: any(part in line for line in self.lines[name]), GUARD):
                raise AssertionError(f"no {part}: {self.lines}")

    def end(self):
        """Waits for the end; returns the exit code."""
        try:
            code = self.process.wait(GUARD)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise AssertionError(f"{self.words} hangs: {self.lines}") from None
        finally:
            for reader in self.readers:
                reader.join()
            self.process.stdout.close()
            self.process.stderr.close()
        return code


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="torvell-line.")
        self.addCleanup(shutil.rmtree, self.folder, True)
        self.data = os.path.join(self.folder, "data")
        self.environment = {key: value for key, value in os.environ.items()
                            if key not in ("TORVELL_USER", "TORVELL_LOG")}

    def controller(self, **options):
        made = Controller(self.folder, **options)
        self.addCleanup(made.close)
        return made

    def start(self, *arguments, data=None):
        program = Program([TORVELL, "--data", data or self.data, *map(str, arguments)],
                          self.environment)
        self.addCleanup(lambda: program.process.poll() is None and program.process.kill())
        return program

    def torvell(self, *arguments, expect=0, data=None):
        program = self.start(*arguments, data=data)
        self.assertEqual(program.end(), expect, f"{arguments}: {program.lines}")
        self.stderr = program.text("stderr")
        return program.text("stdout")

    def connect(self, *controllers, calibrate=True, data=None):
        """Sets a port for each controller, and its instrument's cell constants."""
        for port, controller in enumerate(controllers, 1):
            if calibrate:
                # The simulated instrument of the first free port has the settings of address 0.
                self.torvell("--simulate", "--clock", "virtual", "constants", "set", -20, B0, B1,
                             B2, data=data)
            self.torvell("ports", "set", f"COM{port}", controller.link, data=data)

    def tray(self, *samples, name="tray.csv"):
        """Writes a tray of measurements of 30 s at -20 degrees C; a sample is its position and its id."""
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(HEADING)
            for position, sample in samples:
                file.write(f"{position},measure,{sample},-20,30,,60,30\n")
        return path

    def two(self, **options):
        return self.tray((1, "oil A"), (3, "oil B"), **options)

    def events(self, program, kind):
        events = [json.loads(line) for line in program.text("stdout").splitlines()]
        return [event for event in events if event["event"] == kind]

    def samples(self):
        return json.loads(self.torvell("--json", "samples"))

    def check_sample(self, sample, test, model):
        """Checks that the stored sample is what the controller showed at the end of the test."""
        self.assertEqual(sample["Position"], test["position"] + 1)
        self.assertAlmostEqual(sample["Speed"], test["speed"] * 6e-05, delta=5.1e-6)
        self.assertAlmostEqual(sample["Average Temperature"],
                               degrees(test["temperature"], model), 9)
        self.assertAlmostEqual(sample["Viscosity"],
                               B0 / sample["Speed"] + B1 + B2 * sample["Speed"], 6)
        constants = [sample[f"Constant {number}"] for number in range(1, 41)]
        self.assertEqual(constants[:7], [B0, B1, B2, 5, 0, -20, 30])
        for value in constants[20:25]:
            self.assertAlmostEqual(value, sample["Speed"], 9)
        self.assertEqual(constants[25:], [0] * 15)

    def check_tray(self, controller, stored, ids=("oil A", "oil B")):
        self.assertEqual([sample["Sample ID"] for sample in stored], list(ids))
        self.assertEqual(len(controller.tests), len(ids))
        for sample, test in zip(stored, controller.tests):
            self.check_sample(sample, test, controller.model)
            # The abort comes only after a reading for each half second of the rotor's time.
            self.assertGreaterEqual(test["counts"], 2 * test["rotor"])

    def names(self, controller, since=0):
        return [command[:3] for command in controller.commands(since)]


class Discovery(Case):
    def test_each_model_tells_who_it_is(self):
        # Above address 9 it may answer with the request's address character or with another one.
        asked = [dict(model="1", address=0), dict(model="2", address=11),
                 dict(model="3", address=11, reply_address="L"),
                 dict(model="4", address=0), dict(model="4", address=11, options="\x02")]
        names = ["RVX-A Mark 2", "RVX-B Mark 2", "RVX-C TX", "RVX-D TX", "RVX-D LX"]
        programs = []
        for number, options in enumerate(asked):
            controller = self.controller(name=f"line{number}", **options)
            data = f"{self.data}{number}"
            self.connect(controller, calibrate=False, data=data)
            programs.append(self.start("--json", "discover", data=data))
        for number, (program, options, name) in enumerate(zip(programs, asked, names)):
            self.assertEqual(program.end(), 0, program.lines)
            self.assertEqual(
                json.loads(program.text("stdout")),
                [{"port": "COM1", "address": options["address"], "modelCode": options["model"],
                  "model": name, "options": ["Low Temperature Option"] if number == 4 else [],
                  "firmware": "02.17", "serialNumber": f"SN-line{number}", "simulated": False}])

    def test_the_readings_are_the_record_that_was_sent(self):
        controller = self.controller()
        self.connect(controller, calibrate=False)
        status = json.loads(self.torvell("--json", "status"))
        self.assertAlmostEqual(status["temperature"], degrees(controller.temperature, "4"), 9)
        self.assertLess(abs(status["intCount"] - 0xFFD0), 40)
        self.assertEqual((status["plusVss"], status["minusVss"]), (15.0, -15.0))
        self.assertIsNone(status["targetTemperature"])
        self.assertEqual((status["machineStatus"], status["operation"], status["errorCode"]),
                         (0, 0, 0))
        # At the first contact the control is switched off; no other command is sent.
        [command] = controller.commands()
        self.assertEqual(command[:5], "CTC00")
        self.assertAlmostEqual(int(command[5:], 16), counts_of(25.0, "4"), delta=1)

    def test_a_line_that_another_program_holds_is_refused(self):
        controller = self.controller(stall=0)
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        controller.wait_for_run(0)
        seen = len(controller.frames)
        other = os.path.join(self.folder, "other")
        self.connect(controller, calibrate=False, data=other)
        self.torvell("discover", data=other, expect=3)
        self.assertIn("held by another program", self.stderr)
        self.assertEqual(controller.frames[seen:], [])
        controller.stall = None
        self.assertEqual(run.end(), 0, run.lines)


class Trays(Case):
    def test_two_samples(self):
        controller = self.controller(model="4")
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        self.assertEqual(run.end(), 0, run.lines)
        self.assertEqual(self.events(run, "summary"),
                         [{"event": "summary", "samples": 2, "errors": 0, "aborted": False}])
        texts = [(event["position"], event["text"]) for event in self.events(run, "status")]
        for text in ("Locate Sample", "Injection Burst", "Cooldown", "Equilibration", "Run Test"):
            self.assertIn((0, text), texts)
            self.assertIn((2, text), texts)
        stored = self.samples()
        self.check_tray(controller, stored)
        self.assertEqual([sample["Serial Number"] for sample in stored], ["SN-line"] * 2)
        # Position, 60 s of injection, the cool-down and the rotor's times, and -20 degrees C.
        first = controller.tests[0]
        self.assertEqual((first["payload"][0], first["payload"][1], first["payload"][5],
                          first["payload"][6]), (0, 60, 30, 30))
        self.assertAlmostEqual(first["wanted"], counts_of(-20.0, "4"), delta=1)
        self.assertEqual(self.names(controller), ["CTC", "CST", "CAB", "CST", "CAB", "CMP"])
        self.assertEqual(controller.commands()[-1], "CMP00")

    def test_injection_by_hand_without_a_terminal(self):
        controller = self.controller(model="1")
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        self.assertEqual(run.end(), 0, run.lines)
        self.check_tray(controller, self.samples())
        self.assertEqual(self.names(controller),
                         ["CTC", "CST", "CUA", "CAB", "CST", "CUA", "CAB", "CMP"])
        said = run.text("stderr")
        self.assertEqual(said.count("Lower injection tube into the sample then press OK."), 2)
        self.assertEqual(said.count("(no terminal: answered OK)"), 2)

    def test_injection_by_hand_at_address_11(self):
        controller = self.controller(model="3", address=11)
        self.connect(controller, calibrate=False)
        self.torvell("constants", "set", -20, B0, B1, B2)
        seen = len(controller.frames)
        run = self.start("--json", "run", self.tray((1, "oil C")))
        self.assertEqual(run.end(), 0, run.lines)
        self.check_tray(controller, self.samples(), ids=["oil C"])
        self.assertEqual(self.names(controller, seen), ["CTC", "CST", "CUA", "CAB", "CMP"])

    def test_two_instruments_at_once(self):
        first = self.controller(name="first", stall=0)
        second = self.controller(name="second", model="2")
        self.connect(first, second)
        run = self.start("--json", "run",
                         "COM1=" + self.tray((1, "oil A"), name="a.csv"),
                         "COM2=" + self.tray((1, "oil X"), (2, "oil Y"), name="b.csv"))
        first.wait_for_run(0)
        # The whole tray of the second passes while the first is in the middle of its sample.
        second.wait_until(lambda me: "CMP00" in me.frames, "end of the second tray")
        self.assertEqual((first.operation, self.names(first)), (RUN_TEST, ["CTC", "CST"]))
        first.stall = None
        self.assertEqual(run.end(), 0, run.lines)
        self.assertEqual([(event["instrument"], event["samples"], event["errors"])
                          for event in self.events(run, "summary")],
                         [("COM1", 1, 0), ("COM2", 2, 0)])
        stored = self.samples()
        self.assertEqual([sample["Sample ID"] for sample in stored], ["oil X", "oil Y", "oil A"])
        self.check_tray(first, stored[2:], ids=["oil A"])
        self.check_tray(second, stored[:2], ids=["oil X", "oil Y"])


class Calibration(Case):
    def test_runs_of_the_simulator_calibrate_no_instrument(self):
        controller = self.controller()
        simulated = ("--simulate", "--clock", "virtual")
        oils = {"oil A": 3000, "oil B": 6000, "oil C": 12000}
        files = {"oils.csv": "position,temperature,true viscosity\n", "tray.csv": HEADING}
        for position, (name, viscosity) in enumerate(oils.items(), 1):
            files["oils.csv"] += f"{position},-20,{viscosity}\n"
            files["tray.csv"] += f"{position},verify,{name},-20,,{viscosity},,\n"
        for name, text in files.items():
            with open(os.path.join(self.folder, name), "w", encoding="utf-8") as file:
                file.write(text)
        self.torvell("simulate", "oils", os.path.join(self.folder, "oils.csv"))
        self.torvell(*simulated, "run", os.path.join(self.folder, "tray.csv"), "--prepare")
        self.connect(controller, calibrate=False)
        output = self.torvell("--json", "calibrate", "--temperature", -20, "--save", expect=2)
        self.assertIn("3 of the runs that take part were made on the simulator", self.stderr)
        document = json.loads(output)
        self.assertEqual((len(document["runs"]), document["saved"]), (3, False))
        self.assertIsNotNone(document["fit"])
        self.assertTrue(json.loads(self.torvell("--json", "constants", "show"))[4]["empty"])


class BadLines(Case):
    def test_a_noisy_line(self):
        controller = self.controller(noise=20)
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        self.assertEqual(run.end(), 0, run.lines)
        self.check_tray(controller, self.samples())

    def test_a_slow_line_with_a_silence(self):
        controller = self.controller(model="2", delay=0.3, silences={"QST": 1})
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        self.assertEqual(run.end(), 0, run.lines)
        self.check_tray(controller, self.samples())

    def test_a_packet_that_arrives_damaged_is_sent_again(self):
        controller = self.controller(refusals={"CHO": [BAD_PACKET] * 5})
        self.connect(controller)
        self.torvell("service", "home")
        self.assertEqual(self.names(controller).count("CHO"), 6)
        self.assertEqual(self.start("run", self.tray((1, "oil A"))).end(), 0)
        self.check_tray(controller, self.samples(), ids=["oil A"])

    def test_a_start_that_arrives_damaged_leaves_nothing_running(self):
        controller = self.controller(refusals={"CST": [BAD_PACKET] * 90})
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        self.assertEqual(run.end(), 1, run.lines)
        # The sample is given up after the refusals. Its start must not be sent again after the abort.
        names = [name for name in self.names(controller) if name != "CTC"]
        starts = names.index("CAB")
        self.assertEqual(names, ["CST"] * starts + ["CAB", "CST", "CAB", "CMP"])
        self.check_tray(controller, self.samples(), ids=["oil B"])

    def test_a_refused_sample_is_reported_and_the_next_one_runs(self):
        controller = self.controller(refusals={"CST": [REFUSED_NOT_IDLE]})
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        self.assertEqual(run.end(), 1, run.lines)
        refused = "The instrument must be idle to initiate the requested operation."
        self.assertIn(("oil A", refused), [(event["sampleId"], event["message"])
                                           for event in self.events(run, "error")])
        self.assertIn(refused, run.text("stderr"))
        self.check_tray(controller, self.samples(), ids=["oil B"])
        self.assertEqual(self.names(controller), ["CTC", "CST", "CAB", "CST", "CAB", "CMP"])

    def test_the_line_is_pulled(self):
        controller = self.controller(stall=1)
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        controller.wait_for_run(1)
        controller.pull()
        self.assertEqual(run.end(), 1, run.lines)
        stored = self.samples()
        self.assertEqual([sample["Sample ID"] for sample in stored], ["oil A"])
        self.check_sample(stored[0], controller.tests[0], "4")
        [error] = self.events(run, "error")
        self.assertIn("The line of COM1 broke", error["message"])
        self.assertIn("no terminal to resume it from", run.text("stderr"))
        reported = [message["message"] for message in json.loads(self.torvell("--json", "messages"))]
        self.assertEqual(reported, [error["message"]])
        self.assertIn({"event": "pauseChanged", "paused": True}, self.events(run, "pauseChanged"))
        self.assertEqual(self.events(run, "summary"),
                         [{"event": "summary", "samples": 1, "errors": 1, "aborted": True}])


class Ends(Case):
    """Runs that end in the middle of a sample."""

    def test_two_signals_abort(self):
        controller = self.controller(stall=0)
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        controller.wait_for_run(0)
        run.process.send_signal(signal.SIGINT)
        run.wait_for("stderr", "another signal aborts")
        self.assertEqual(self.names(controller), ["CTC", "CST"])
        run.process.send_signal(signal.SIGINT)
        self.assertEqual(run.end(), 130, run.lines)
        self.assertEqual(self.names(controller), ["CTC", "CST", "CAB"])
        self.assertEqual(controller.switches, 0)
        self.assertEqual(self.samples(), [])
        self.assertEqual([event["aborted"] for event in self.events(run, "summary")], [True])

    def test_a_killed_run_is_found_again_and_nothing_moves(self):
        controller = self.controller(stall=1)
        self.connect(controller)
        run = self.start("--json", "run", self.two())
        controller.wait_for_run(1)
        run.process.kill()
        self.assertEqual(run.end(), -signal.SIGKILL)
        seen = len(controller.frames)
        shown = json.loads(self.torvell("--json", "tray", "show"))
        self.assertIn("was interrupted", self.stderr)
        self.assertIsNotNone(shown["interruptedSince"])
        self.assertEqual([(position["position"], position["sampleId"], position["measuredTests"])
                          for position in shown["positions"]],
                         [(1, "oil A", 1), (3, "oil B", 0)])
        # The instrument still runs its test: it got no command but "control off".
        self.assertLessEqual({command[:5] for command in controller.commands(seen)}, {"CTC00"})
        self.assertEqual((controller.operation, len(controller.tests)), (RUN_TEST, 2))
        [sample] = self.samples()
        self.check_sample(sample, controller.tests[0], "4")


class SideBySide(unittest.TestSuite):
    """Runs each test of the suite on a separate thread, not too many at once: an instrument that answers
    the discovery late is not found."""

    places = threading.Semaphore(10)

    def run_one(self, test, result):
        if isinstance(test, unittest.TestSuite):
            test(result)
            return
        with self.places:
            test(result)

    def run(self, result, debug=False):
        threads = [threading.Thread(target=self.run_one, args=(test, result)) for test in self]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        return result


class LockedResult(unittest.TextTestResult):
    """A result to which several threads may report."""

    def __init__(self, *arguments, **options):
        super().__init__(*arguments, **options)
        self.lock = threading.RLock()

    def startTest(self, test):
        with self.lock:
            super().startTest(test)

    def addSuccess(self, test):
        with self.lock:
            super().addSuccess(test)

    def addFailure(self, test, error):
        with self.lock:
            super().addFailure(test, error)

    def addError(self, test, error):
        with self.lock:
            super().addError(test, error)


if __name__ == "__main__":
    loader = unittest.TestLoader()
    loader.suiteClass = SideBySide
    unittest.main(testLoader=loader, testRunner=unittest.TextTestRunner(resultclass=LockedResult))
