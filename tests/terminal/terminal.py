"""A pseudo-terminal with kelcalc at its other end."""

import fcntl
import os
import pty
import re
import select
import signal
import struct
import termios
import time

PATIENCE = 20  # seconds until a test gives up; passing tests never wait for it

ESCAPES = re.compile(rb"\x1b(\[[0-9;?]*[A-Za-z]|[()][A-Z0-9]|[=>A-Z])")


class Terminal:
    """Starts `command` on a new terminal; `seen` is all that it has shown, `raw` with the
    terminal's control sequences."""

    def __init__(self, command, environment, term="xterm"):
        self.raw = b""
        self.start = 0  # where the next `expect` begins to look
        self.status = None
        self.pid, self.master = pty.fork()
        if self.pid == 0:
            os.execve(command[0], command, {"TERM": term, **environment})

    @property
    def seen(self):
        return ESCAPES.sub(b"", self.raw).replace(b"\r", b"").decode("utf-8", "replace")

    def read(self):
        """Takes what has arrived; false at the end of the output."""
        if not select.select([self.master], [], [], PATIENCE)[0]:
            raise AssertionError(f"nothing came after:\n{self.seen}")
        try:
            data = os.read(self.master, 65536)
        except OSError:  # the other end is closed
            data = b""
        self.raw += data
        return bool(data)

    def expect(self, text):
        """Waits until `text` appears after what was expected last; returns what came before."""
        deadline = time.monotonic() + PATIENCE
        while (at := self.seen.find(text, self.start)) < 0:
            if time.monotonic() > deadline or not self.read():
                raise AssertionError(f"{text!r} is missing after:\n{self.seen[self.start:]}")
        before = self.seen[self.start:at]
        self.start = at + len(text)
        return before

    def send(self, text):
        os.write(self.master, text if isinstance(text, bytes) else text.encode())

    def resize(self, columns):
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack("4H", 25, columns, 0, 0))

    def line(self, text, prompt):
        """Types a line and waits for the next prompt; returns all that stands between."""
        self.send(text + "\r")
        return self.expect("\n" + prompt) + "\n"

    def interrupt(self):
        os.kill(self.pid, signal.SIGINT)

    def finish(self):
        """Waits for the end of the process; returns its exit status."""
        while self.read():
            pass
        self.status = os.waitstatus_to_exitcode(os.waitpid(self.pid, 0)[1])
        os.close(self.master)
        return self.status

    def kill(self):
        if self.status is None:
            os.kill(self.pid, signal.SIGKILL)
            os.waitpid(self.pid, 0)
            os.close(self.master)
