"""kelcalc as a process. Arguments of every test that uses this: the program, the source folder."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

KELCALC = os.path.abspath(sys.argv[1])
ROOT = pathlib.Path(sys.argv[2]).resolve()


def run(*arguments, text="", **options):
    """Status, output and errors of one run; `text` is its standard input."""
    text = text if isinstance(text, bytes) else text.encode()
    done = subprocess.run([KELCALC, *arguments], input=text, timeout=120, check=False,
                          capture_output=True, **options)
    return done.returncode, done.stdout.decode(), done.stderr.decode(errors="replace")


class ProcessTest(unittest.TestCase):
    """Every test works in an empty folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)


def main():
    unittest.main(module="__main__", argv=sys.argv[:1], verbosity=2)
