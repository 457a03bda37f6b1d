#!/usr/bin/env python3
"""kelcalc as a process: its arguments, streams and statuses."""

import errno
import os
import pathlib
import signal
import subprocess
import time
import unittest

from process import KELCALC, ProcessTest, main, run


class KelcalcTest(ProcessTest):
    def test_arguments(self):
        pathlib.Path("a.3dc").write_text("5 x : \n")
        pathlib.Path("b.3dc").write_text("x # \n")
        pathlib.Path("-b.3dc").write_text("x 1 + # \n")
        pathlib.Path("cut.3dc").write_text("x # x #")
        pathlib.Path("script.3dc").write_text("#!/usr/bin/env kelcalc\n1 # \n")
        pathlib.Path("mark.3dc").write_text("1 #!\n2 # \n")
        rows = [
            # arguments, standard input, output, errors
            ([], "1 2 + # ", " 3.000000\n", ""),
            ([], "1 # \x04 2 # ", " 1.000000\n", ""),
            ([], "1 - # ", " 1.000000\n", "\a \n"),
            ([], '"missing" ;read # ', ' "missing"\n', " Can't open file missing.3dc!\n\a \n"),
            (["--no-stack", "--no-where", "--no-warn"], "1 - # ", " 1.000000\n", "\a \n"),
            (["-"], "1 - # ", " 1.000000\n", "\a \n"),
            ([], "q(2,0,0,0) 0 / # ", " q(2.000000,   0.000000, 0.000000, 0.000000)\n",
             "Quaternion divided by zero!\n"),
            ([], "#!\n1 # ", " 1.000000\n", "\nUnrecognized operator #!\n"),
            (["a.3dc", "b.3dc"], "7 # ", " 5.000000\n", ""),
            (["a.3dc", "cut.3dc", "b.3dc"], "", " 5.000000\n 5.000000\n", ""),
            (["-", "b.3dc"], "6 x : ", " 6.000000\n", ""),
            (["-e", "1 2 + #"], "7 # ", " 3.000000\n", ""),
            (["a.3dc", "-e", "x #"], "", " 5.000000\n", ""),
            (["a.3dc", "--", "-b.3dc"], "", " 6.000000\n", ""),
            (["script.3dc"], "", " 1.000000\n", ""),
            (["mark.3dc"], "", " 2.000000\n", "\nUnrecognized operator #!\n"),
        ]
        for arguments, text, output, errors in rows:
            with self.subTest(arguments=arguments, text=text):
                self.assertEqual(run(*arguments, text=text), (0, output, errors))

    def test_help_version_and_wrong_usage(self):
        rows = [
            # argument, status, output, errors
            ("--help", 0, "(?s)kelcalc.*-e .*--help.*--version", r"\A\Z"),
            ("-V", 0, r"\Akelcalc \d+\.\d+\.\d+( \([0-9a-f]+\+?\))?\n\Z", r"\A\Z"),
            ("--nope", 2, r"\A\Z", "kelcalc"),
            ("2 3 + #", 1, r"\A\Z", r" Can't open file 2 3 \+ #!\n.*kelcalc -e '"),
        ]
        for argument, status, output, errors in rows:
            with self.subTest(argument=argument):
                ended, *written = run(argument)
                self.assertEqual(ended, status)
                self.assertRegex(written[0], output)
                self.assertRegex(written[1], errors)

    def test_wrong_options_say_why(self):
        digits = "--digits takes a number from 1 to 17, not "
        rows = [
            (["--digits", "0"], digits + "'0'"),
            (["--digits", "18"], digits + "'18'"),
            (["--digits", "99999999999"], digits + "'99999999999'"),
            (["--digits=3x"], digits + "'3x'"),
            (["--digits"], "option --digits needs N"),
            (["-e"], "option -e needs TEXT"),
            (["-i1"], "unknown option -i1"),
            (["--stop=1"], "unknown option --stop=1"),
            (["-x", "--help"], "unknown option -x"),
        ]
        for arguments, error in rows:
            self.assertEqual(run(*arguments),
                             (2, "", f"kelcalc: {error}\nTry 'kelcalc --help'.\n"))

    def test_files_that_cannot_be_opened(self):
        os.mkdir("folder.d")
        for name in "missing.3dc", "folder.d":
            with self.subTest(name=name):
                self.assertEqual(run(name, "-e", "1 #"),
                                 (1, " 1.000000\n", f" Can't open file {name}!\n"))
                self.assertEqual(run("--stop", name, "-e", "1 #")[:2], (1, ""))

    def test_closed_pipe(self):
        pathlib.Path("much.3dc").write_text("1 # \n" * 200000)
        for action, status in (signal.SIG_DFL, -signal.SIGPIPE), (signal.SIG_IGN, 1):
            with subprocess.Popen([KELCALC, "much.3dc"], stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, restore_signals=False,
                                  preexec_fn=lambda a=action: signal.signal(signal.SIGPIPE, a),
                                  ) as process:
                self.assertEqual(process.stdout.readline(), b" 1.000000\n")
                process.stdout.close()
                self.assertEqual((process.stderr.read(), process.wait(timeout=120)), (b"", status))

    def test_a_partner_gets_its_answers(self):
        os.mkfifo("pipe.x")
        for arguments in ["-e", "1 #", "pipe.x"], ["-e", '1 # "pipe.x" ;read'], []:
            with subprocess.Popen([KELCALC, *arguments], stdin=subprocess.PIPE, bufsize=0,
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
                if arguments:
                    self.assertEqual(process.stdout.readline(), b" 1.000000\n")
                with open("pipe.x", "wb", buffering=0) if arguments else process.stdin as pipe:
                    for piece in b"#", b"!", b"kelcalc\n", b"2 # \n":
                        pipe.write(piece)
                        time.sleep(0.05)
                    self.assertEqual(process.stdout.readline(), b" 2.000000\n")

    def test_messages_follow_what_was_printed_before(self):
        done = subprocess.run([KELCALC], input=b"1 # . 2 # q(1,2,3,4) 0 / nope( 3 # ", check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120)
        self.assertEqual(done.stdout, b" 1.000000\nProblem in format of number\n 2.000000\n"
                                      b"Quaternion divided by zero!\n"
                                      b"\nUnrecognized constant specifier nope\n 3.000000\n")

    def test_input_that_cannot_be_read(self):
        for options in [], ["--strict"], ["-e", "1 #", "-"], ["-i"]:
            for source, reason in ("<.", errno.EISDIR), ("<&-", errno.EBADF):
                with self.subTest(options=options, source=source):
                    done = subprocess.run(["sh", "-c", f'"$0" "$@" {source}', KELCALC, *options],
                                          capture_output=True, check=False, timeout=120)
                    self.assertEqual((done.returncode, done.stderr.decode()),
                                     (1, "kelcalc: cannot read the standard input: "
                                         f"{os.strerror(reason)}\n"))

    def test_input_that_does_not_block(self):
        reading, writing = os.pipe()
        os.set_blocking(reading, False)
        with subprocess.Popen([KELCALC], stdin=reading, stdout=subprocess.PIPE) as process:
            time.sleep(0.1)  # until it has found nothing
            os.write(writing, b"1 2 + # \n")
            os.close(writing)
            self.assertEqual(process.stdout.read(), b" 3.000000\n")
        self.assertEqual(process.returncode, 0)
        os.close(reading)

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


if __name__ == "__main__":
    main()
