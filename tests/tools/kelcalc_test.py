#!/usr/bin/env python3
"""kelcalc as a process. Arguments: the program, the source folder (unused)."""

import errno
import os
import random
import subprocess
import sys
import tempfile
import time
import unittest

KELCALC = os.path.abspath(sys.argv[1])


def run(*arguments, text="", **options):
    """Status, output and errors of one run; `text` is its standard input."""
    if isinstance(text, str):
        text = text.encode("latin-1")
    done = subprocess.run([KELCALC, *arguments], input=text, timeout=120, check=False,
                          capture_output=True, **options)
    return done.returncode, done.stdout.decode("latin-1"), done.stderr.decode("latin-1")


class KelcalcTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def write(self, name, text):
        with open(name, "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode("latin-1"))
        return name

    def test_arguments(self):
        self.write("a.3dc", "5 x : \n")
        self.write("b.3dc", "x # \n")
        self.write("-b.3dc", "x 1 + # \n")
        self.write("cut.3dc", "x # x #")
        self.write("script.3dc", "#!/usr/bin/env kelcalc\n1 # \n")
        self.write("mark.3dc", "1 #!\n2 # \n")
        self.write("bang.3dc", "\n#!\n")
        rows = [
            # arguments, standard input, output, errors
            ([], "1 2 + # ", " 3.000000\n", ""),
            ([], "1 # 2 #", " 1.000000\n", ""),
            ([], "", "", ""),
            ([], "1 # \x04 2 # ", " 1.000000\n", ""),
            ([], "1 - # ", " 1.000000\n", "\a \n"),
            ([], '"missing" ;read # ', ' "missing"\n', " Can't open file missing.3dc!\n\a \n"),
            (["--no-stack"], "1 - # ", " 1.000000\n", "\a \n"),
            (["--no-where"], "1 - # ", " 1.000000\n", "\a \n"),
            (["-"], "1 - # ", " 1.000000\n", "\a \n"),
            ([], "q(2,0,0,0) 0 / # ", " q(2.000000,   0.000000, 0.000000, 0.000000)\n",
             "Quaternion divided by zero!\n"),
            ([], "#!\n1 # ", " 1.000000\n", "\nUnrecognized operator #!\n"),
            (["a.3dc", "b.3dc"], "7 # ", " 5.000000\n", ""),
            (["a.3dc", "cut.3dc", "b.3dc"], "", " 5.000000\n 5.000000\n", ""),
            (["a.3dc", "-"], "x # ", " 5.000000\n", ""),
            (["-", "b.3dc"], "6 x : ", " 6.000000\n", ""),
            (["-e", "1 2 + #"], "7 # ", " 3.000000\n", ""),
            (["-e", "4 x :", "b.3dc"], "", " 4.000000\n", ""),
            (["a.3dc", "-e", "x #"], "", " 5.000000\n", ""),
            (["a.3dc", "--", "-b.3dc"], "", " 6.000000\n", ""),
            (["script.3dc"], "", " 1.000000\n", ""),
            (["mark.3dc"], "", " 2.000000\n", "\nUnrecognized operator #!\n"),
            (["bang.3dc"], "", "", "\nUnrecognized operator #!\n"),
            (["-e", "\"a\" ;read x #"], "", " 5.000000\n", ""),
        ]
        for arguments, text, output, errors in rows:
            with self.subTest(arguments=arguments, text=text):
                self.assertEqual(run(*arguments, text=text), (0, output, errors))

    def test_help_version_and_wrong_usage(self):
        rows = [
            # argument, status, output, errors
            ("--help", 0, "(?s)kelcalc.*-e .*--help.*--version", r"\A\Z"),
            ("--version", 0, r"\Akelcalc \d+\.\d+\.\d+\n", r"\A\Z"),
            ("--nope", 2, r"\A\Z", "kelcalc"),
            ("-e", 2, r"\A\Z", "kelcalc"),
        ]
        for argument, status, output, errors in rows:
            with self.subTest(argument=argument):
                ended, *written = run(argument)
                self.assertEqual(ended, status)
                self.assertRegex(written[0], output)
                self.assertRegex(written[1], errors)

    def test_files_that_cannot_be_opened(self):
        os.mkdir("folder.d")
        for name in "missing.3dc", "folder.d":
            with self.subTest(name=name):
                status, _, errors = run(name)
                self.assertEqual(status, 1)
                self.assertIn(f" Can't open file {name}!\n", errors)

    def test_a_first_line_that_comes_in_pieces(self):
        os.mkfifo("pipe")
        with subprocess.Popen([KELCALC, "pipe"], stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT) as process:
            with open("pipe", "wb", buffering=0) as pipe:
                for piece in b"#", b"!", b"kelcalc\n", b"1 ", b"# \n":
                    pipe.write(piece)
                    time.sleep(0.05)
            self.assertEqual(process.stdout.read(), b" 1.000000\n")

    def test_closed_pipe(self):
        self.write("much.3dc", "1 # \n" * 200000)
        with subprocess.Popen([KELCALC, "much.3dc"], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE) as process:
            self.assertEqual(process.stdout.readline(), b" 1.000000\n")
            process.stdout.close()
            errors = process.stderr.read().decode()
            self.assertGreater(process.wait(timeout=120), 0, "no status of its own")
        self.assertRegex(errors, "kelcalc: .+\n")

    @unittest.skipUnless(os.path.exists("/dev/full"), "no /dev/full here")
    def test_full_disk(self):
        # The last one has errors of arithmetic between the failure and its report.
        for arguments, text in (([], "1 # "), (["-e", "1 #"], ""), ([], "1 # \n" * 100000),
                                ([], "1000 ;exp # \n" * 100000)):
            with self.subTest(arguments=arguments), open("/dev/full", "wb") as full:
                done = subprocess.run([KELCALC, *arguments], input=text.encode(), stdout=full,
                                      stderr=subprocess.PIPE, timeout=120, check=False)
                self.assertGreater(done.returncode, 0)
                self.assertRegex(done.stderr.decode(),
                                 f"kelcalc: .*{os.strerror(errno.ENOSPC)}\n")

    def test_garbage(self):
        source = random.Random(7)
        for _ in range(20):
            garbage = bytes(byte for byte in source.randbytes(20000) if byte != 4)
            self.assertEqual(run(text=garbage)[0], 0)
            self.assertEqual(run(self.write("garbage.3dc", garbage))[0], 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
