"""A pseudo-terminal with a program at its other end."""

import re

import pexpect

# One that has not arrived whole counts, too.
ESCAPES = re.compile(r"\x1b(\[[0-9;?]*[A-Za-z]|[()][A-Z0-9]|[=>A-Z]|(\[[0-9;?]*|[()])?\Z)")


class Terminal(pexpect.spawn):
    """Runs `command` on a new terminal; `raw` is all that it has shown."""

    def __init__(self, command, environment, term="xterm"):
        self.raw = ""
        super().__init__(command[0], command[1:], env={"TERM": term, **environment}, timeout=20,
                         encoding="utf-8", codec_errors="surrogateescape")
        self.delaybeforesend = None

    @property
    def seen(self):
        """The same without the terminal's control sequences."""
        return ESCAPES.sub("", self.raw).replace("\r", "")

    def read_nonblocking(self, size=1, timeout=-1):
        before = len(self.seen)
        self.raw += super().read_nonblocking(65536, timeout)
        return self.seen[before:]

    def until(self, text):
        """Waits until `text` appears after what was expected last; returns what came before."""
        self.expect_exact(text)
        return self.before

    def line(self, text, prompt):
        """Types a line and waits for the next prompt; returns all that stands between."""
        self.send(text + "\r")
        return self.until("\n" + prompt) + "\n"

    def finish(self):
        """Waits for the end of the process; returns its exit status."""
        self.until(pexpect.EOF)
        return self.wait()
