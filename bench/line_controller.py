"""A controller on a pseudo-terminal for the benchmarks: it replies at once, and runs a test that never ends."""
import os
import pty
import select
import threading
import time
import tty

TICK = 0.5  # s between two int counts, and between two frames of an auto report
IDENTIFICATION = "RVX 4102.17BENCH-1"
CONTROL_OFF = 0xFFFF
SWITCH_TEST_RUNNING, SWITCH_CONTROL, SWITCH_AUTO_REPORT = 0x20, 0x10, 0x80
OPERATION_COOLDOWN = 11


class LineController:
    """Plays an instrument at address 0 on a thread of its own, from start() to stop().

    `device` is what a program opens. A started test stays in its cool-down until it is aborted.
    """

    def __init__(self):
        self.far_end, self._near_end = pty.openpty()  # the near end stays open: no hang-up between users
        tty.setraw(self._near_end)
        self.device = os.ttyname(self._near_end)
        self._wake_read, self._wake_write = os.pipe()
        self._thread = threading.Thread(target=self._main, daemon=True)
        self._switches = 0
        self._operation = 0
        self.tests_started = 0
        self.aborts = 0

    def start(self):
        self._thread.start()
        return self

    def stop(self):
        os.write(self._wake_write, b"x")
        self._thread.join()
        for descriptor in (self.far_end, self._near_end, self._wake_read, self._wake_write):
            os.close(descriptor)

    def _main(self):
        pending = b""
        next_report = None
        while True:
            if not self._switches & SWITCH_AUTO_REPORT:
                next_report = None
            elif next_report is None:
                next_report = time.monotonic() + TICK
            wait = None if next_report is None else max(0.0, next_report - time.monotonic())
            ready, _, _ = select.select([self.far_end, self._wake_read], [], [], wait)
            if self._wake_read in ready:
                return
            if self.far_end in ready:
                pending += os.read(self.far_end, 256)
                *requests, pending = pending.split(b"\r")
                for request in requests:
                    self._answer(request.decode("ascii", "replace"))
            if next_report is not None and time.monotonic() >= next_report:
                next_report += TICK
                self._send_status("")

    def _answer(self, request):
        tag = request[3:5]
        if request[1:2] != "0":
            return
        if request[2:3] == "Q":
            if tag == "MT":
                self._send("MT" + IDENTIFICATION)
            elif tag == "ST":
                self._send_status("")
            elif tag == "TR":
                self._send("TR0000")
            return
        if tag == "ST":
            self.tests_started += 1
            self._operation = OPERATION_COOLDOWN
            self._switches |= SWITCH_TEST_RUNNING | SWITCH_CONTROL | SWITCH_AUTO_REPORT
        elif tag == "AB":
            self.aborts += 1
            self._operation = self._switches = 0
        elif tag == "AR":
            on = request[5:7] not in ("00", "")
            self._switches = self._switches & ~SWITCH_AUTO_REPORT | (SWITCH_AUTO_REPORT if on else 0)
        self._send_status(tag)

    def _send_status(self, tag):
        words = [int(time.monotonic() / TICK) & 0xFFFF, 0xE200, CONTROL_OFF, 0xE000, 0x2000, 0]
        data = "".join(f"{word:04X}" for word in words)
        data += f"00{self._switches:02X}{self._operation:02X}0000"
        data += tag.encode().hex().upper() if tag else "0000"
        self._send("ST" + data)

    def _send(self, text):
        os.write(self.far_end, f"-0Q{text}\r".encode())
