"""A controller of a viscometer on a pseudo-terminal, for tests of a conversation over a real line.

Its clock ticks every 10 ms while it runs a test, and every half second while it is idle. In a test it first
shows a ramp of speeds and temperatures and then constant values, so that a program that averages anything
but the end of the run gets another result.
"""
import math
import os
import random
import select
import threading
import time
import tty

IDLE_TICK = 0.5
RUN_TICK = 0.01
LOCATE, LOWER, RAISE, BURST, PAUSE, PURGE, COOLDOWN, EQUILIBRATION, RUN_TEST = (
    4, 5, 6, 8, 9, 10, 11, 12, 13)
# Operation and ticks before the rotor runs.
INJECTING = [(LOCATE, 3), (LOWER, 2), (BURST, 3), (PAUSE, 2), (PURGE, 2), (RAISE, 2)]
BY_HAND = [(LOCATE, 3), (BURST, None)]  # until the user has acknowledged
COOLING = [(COOLDOWN, 4), (EQUILIBRATION, 3)]
ACKNOWLEDGED_TICKS = 3
RAMP_TICKS = 30
MOVE_TICKS = 3
STEPPER_MOVING, CONTROL_ON, TEST_RUNNING, AUTO_REPORT = 0x08, 0x10, 0x20, 0x80
OFF = 0xFFFF
REFUSED_NOT_IDLE, REFUSED_POSITION, REFUSED_COMMAND, REFUSED_MANUAL, BAD_PACKET = (
    0x40, 0x41, 0x80, 0x82, 0x87)

# The constants of the probe that a new instrument has.
A0, A1, A2 = 1.292035, 0.22621, 0.000210003


# The default temperature offset by model, degrees C.
OFFSETS = {"1": 0.0, "2": 0.0, "3": 0.12, "4": 0.12}


def degrees(counts, model):
    """Temperature in degrees C of a converter count, with supplies of exactly 15 V."""
    at_converter = counts / 65536 * 20 - 10
    resistance = 30.0 / ((at_converter / 11 + 15.0) / 525930.0) - 987930.0
    log = math.log(resistance)
    return 1000 / (A0 + A1 * log + A2 * log ** 3) - 273.0 + OFFSETS[model]


def counts_of(temperature, model):
    """The smallest count that is not colder than a temperature in degrees C."""
    low, high = 20000, 65000
    while low < high:
        middle = (low + high) // 2
        if degrees(middle, model) < temperature:
            low = middle + 1
        else:
            high = middle
    return low


class Controller(threading.Thread):
    """Its thread starts in the constructor. `link` is the path of its line. The test must close it.

    refusals: {"CST": [0x40]}: error codes for the next commands with that name, in turn; an abort
        removes them.
    silences: {"QST": 1}: the number of next requests with that name that are not answered.
    delay: seconds before an answer, at most 0.1 s before the identification.
    noise: seed of noise and damaged frames around the good ones; None: a clean line.
    stall: index of the test that stops in the middle of its rotor run, with a constant count.
    reply_address: the address character of its replies, if not that of the requests.
    """

    def __init__(self, folder, name="line", model="4", address=0, options=" ", refusals=None,
                 silences=None, delay=0.0, noise=None, stall=None, reply_address=None):
        super().__init__(daemon=True)
        self.master, self.slave = os.openpty()
        tty.setraw(self.slave)
        self.link = os.path.join(folder, name)
        os.symlink(os.ttyname(self.slave), self.link)
        self.model = model
        self.address = "0123456789ABCDEF"[address]
        self.reply_address = reply_address or self.address
        self.identity = f"QMTRVX {model}{options}02.17SN-{name:<7.7}"
        self.refusals = refusals or {}
        self.silences = silences or {}
        self.delay = delay
        self.noise = None if noise is None else random.Random(noise)
        self.stall = stall

        self.changed = threading.Condition()
        self.frames = []  # without start, address and end
        self.tests = []  # one record for each started test
        self.count = 0xFFD0  # wraps in the first rotor run
        self.temperature, self.target, self.speed = counts_of(-12.0, model), OFF, 0
        self.switches = self.operation = self.prompt = 0
        self.phases = []
        self.ticks_left = None
        self.last_report = False
        self.received = bytearray()
        self.wake_read, self.wake_write = os.pipe()
        self.start()

    # --- For the test's thread

    def wait_until(self, condition, what):
        with self.changed:
            if not self.changed.wait_for(lambda: condition(self), 30):
                raise AssertionError(f"{self.link}: no {what}; frames: {self.frames[-20:]}")

    def wait_for_run(self, index):
        self.wait_until(lambda me: len(me.tests) == index + 1 and me.operation == RUN_TEST and
                        me.tests[index]["counts"] > 5, f"rotor run of test {index}")

    def commands(self, since=0):
        """The commands that the program sent, without its queries."""
        with self.changed:
            return [frame for frame in self.frames[since:] if frame[0] != "Q"]

    def pull(self):
        """Pulls the cable; its device file disappears."""
        os.unlink(self.link)
        self.close()

    def close(self):
        if self.is_alive():
            os.write(self.wake_write, b"x")
            self.join()
        for descriptor in (self.master, self.slave, self.wake_read, self.wake_write):
            if descriptor >= 0:
                os.close(descriptor)
        self.master = self.slave = self.wake_read = self.wake_write = -1

    # --- Its own thread

    def run(self):
        next_tick = time.monotonic()
        while True:
            wait = max(0.0, next_tick - time.monotonic())
            ready = select.select([self.master, self.wake_read], [], [], wait)[0]
            if self.wake_read in ready:
                return
            with self.changed:
                was_running = self.is_running()
                if self.master in ready:
                    self.take(os.read(self.master, 4096))
                if time.monotonic() >= next_tick or (self.is_running() and not was_running):
                    self.tick()
                    next_tick = time.monotonic() + (RUN_TICK if self.is_running() else IDLE_TICK)
                self.changed.notify_all()

    def is_running(self):
        # While it waits for the user it ticks slowly: a report that crosses the acknowledgement on the line
        # would be taken for its reply. That is rare with ticks of half a second, but not of 10 ms.
        return self.last_report or (self.operation != 0 and not self.prompt)

    def take(self, data):
        for byte in data:
            if byte == ord("/"):
                self.received.clear()
            elif byte == ord("\r"):
                text = self.received.decode("latin-1")
                self.received.clear()
                if text[:1] == self.address:
                    self.frames.append(text[1:])
                    self.answer(text[1:4], bytes.fromhex(text[4:]))
            else:
                self.received.append(byte)

    def answer(self, name, payload):
        if self.silences.get(name, 0) > 0:
            self.silences[name] -= 1
            return
        if name == "QMT":
            time.sleep(min(self.delay, 0.1))
            self.send(self.identity)
            return
        time.sleep(self.delay)
        if name == "QTR":
            self.send("QTR0000")
        elif name == "QST":
            self.send_status("\0\0")
        else:
            waiting = self.refusals.get(name, [])
            code = waiting.pop(0) if waiting else self.execute(name, payload)
            self.send_status(name[1:], code)

    def execute(self, name, payload):
        """Carries a command out; returns the error code of its reply."""
        if name in ("CST", "CMP"):
            if self.switches != 0:
                return REFUSED_NOT_IDLE
            if payload[0] > 29:
                return REFUSED_POSITION
            if name == "CMP":
                self.switches, self.operation, self.ticks_left = STEPPER_MOVING, LOCATE, MOVE_TICKS
            else:
                self.start_test(payload)
        elif name == "CTC":
            if self.switches & TEST_RUNNING:
                return REFUSED_MANUAL
            self.target = int.from_bytes(payload[1:], "big") if payload[0] else OFF
            self.switches = CONTROL_ON if payload[0] else 0
        elif name == "CAB":
            self.refusals.clear()
            self.last_report = bool(self.switches & AUTO_REPORT)
            self.go_idle()
        elif name == "CUA":
            self.ticks_left = ACKNOWLEDGED_TICKS
        elif name != "CHO":
            return REFUSED_COMMAND
        return 0

    def start_test(self, payload):
        by_hand = self.model in ("1", "3")
        index = len(self.tests)
        wanted = int.from_bytes(payload[7:9], "big")
        self.tests.append({
            "payload": payload, "position": payload[0], "rotor": payload[6], "wanted": wanted,
            # What it shows at the end: a little off the wanted temperature, and its own speed.
            "temperature": wanted + 3 + index, "speed": 3000 + 250 * payload[0] + 40 * index,
            "counts": 0, "prompted": by_hand})
        self.switches = AUTO_REPORT | TEST_RUNNING
        self.phases = (BY_HAND if by_hand else INJECTING) + COOLING + [(RUN_TEST, None)]
        self.next_phase()

    def next_phase(self):
        self.operation, self.ticks_left = self.phases.pop(0)
        self.prompt = 1 if self.operation == BURST and self.ticks_left is None else 0

    def go_idle(self):
        self.switches = self.operation = self.prompt = self.speed = 0
        self.phases, self.ticks_left = [], None

    def tick(self):
        stalled = (self.operation == RUN_TEST and self.stall == len(self.tests) - 1 and
                   self.tests[-1]["counts"] >= RAMP_TICKS)
        if not stalled:
            self.count = (self.count + 1) & 0xFFFF
            if self.ticks_left is not None:
                self.ticks_left -= 1
                if self.ticks_left <= 0:
                    self.next_phase() if self.phases else self.go_idle()
            if self.operation == RUN_TEST:
                self.show_run(self.tests[-1])
        if self.switches & AUTO_REPORT or self.last_report:
            self.last_report = self.last_report and bool(self.switches & AUTO_REPORT)
            self.send_status("\0\0", reply=False)

    def show_run(self, test):
        test["counts"] += 1
        left = max(0, RAMP_TICKS - test["counts"])
        self.speed = test["speed"] - 50 * left
        self.temperature = test["temperature"] - 20 * left

    # --- To the line

    def send_status(self, tag, code=0, reply=True):
        words = (self.count, self.temperature, self.target, 0xE000, 0x2000, self.speed)
        data = b"".join(word.to_bytes(2, "big") for word in words)
        data += bytes((0, self.switches, self.operation, self.prompt, code)) + tag.encode()
        self.send("QST" + data.hex().upper(), reply)

    def send(self, text, reply=True):
        frame = f"-{self.reply_address}{text}\r".encode("latin-1")
        # In one write: the program discards what it has not read yet when a frame is complete.
        os.write(self.master, self.make_noise(reply) + frame)

    def make_noise(self, before_reply):
        if self.noise is None or self.noise.random() < 0.5:
            return b""
        status = "".join(self.noise.choice("0123456789ABCDEF") for _ in range(38))
        own = "-" + self.reply_address
        damaged = self.noise.choice((
            "\0\xff~{", own + "QST" + status[:20] + "\r", own + "QST" + status[:30] + "g0" + "\r",
            own + "QST" + status.lower().replace("0", "f") + "\r", own + "QST" + status * 2 + "\r",
            own + "XST" + status + "\r", "-5QST" + status + "\r", own + "Q\r", "\r\r-\r",
            own + "QST" + status[:13], "-"))
        # An unfinished frame spoils the next one. A report comes again, but a reply does not.
        return (damaged + ("\r" if before_reply else "")).encode("latin-1")
