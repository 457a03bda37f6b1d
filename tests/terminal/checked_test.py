"""What kelcalc tells of programs that end early, inputs that cannot be read, files, and warnings.

A third argument is the library to be loaded first.
"""

import os
import pathlib
import subprocess
import sys

from process import KELCALC, ProcessTest, main, run

FAILING_READ = os.path.abspath(sys.argv[3])


class CheckedTest(ProcessTest):
    def test_a_program_that_ends_within_something(self):
        rows = [
            # program, where that began, what is told; None for a program that is whole
            ("1 #", "1:3", "directly behind #,"),
            ("1 ;sin", "1:3", "directly behind ;sin,"),
            ('1 "abc', "1:3", "within this string"),
            ("1 [ a [ b ] ", "1:3", "within this comment"),
            ("1 v(1, [ x", "1:3", "within this constant"),
            ("1 2 1 < { 3 { 4 } ", "1:7", "within a block that this condition skips"),
            ("1 2 1 < { 3 { 4 }} ", None, None),
            ("1 2 1 < ", None, None),
            ("1 1 2 < { 3 ", None, None),
        ]
        for text, place, told in rows:
            pathlib.Path("cut.3dc").write_text(text)
            for arguments, name, given in ((["cut.3dc"], "cut.3dc", ""), (["-"], "<stdin>", text),
                                           (["-e", '"cut" ;read'], "cut.3dc", "")):
                with self.subTest(text=text, name=name):
                    status, output, errors = run(*arguments, text=given)
                    self.assertEqual((status, errors), (0, ""))
                    failed = 0 if place is None else 1
                    self.assertEqual(run("--strict", *arguments, text=given), (failed, output, ""))
                    shown = run("--where", *arguments, text=given)
                    self.assertEqual(shown[:2], (0, output))
                    if failed:
                        self.assertRegex(shown[2], rf"\A{name}:{place}: the text ends {told}.*\n\Z")
                        self.assertEqual(run("--stop", *arguments, "-e", "7 #", text=given),
                                         (1, output, ""))
                    else:
                        self.assertEqual(shown[2], "")
        self.assertEqual(run("--where", "-e", '2 1 < { "', "-e", "1 # ")[2].count("block"), 1)

    def test_a_read_that_fails_is_not_the_end(self):
        path = os.path.abspath("broken.3dc")
        pathlib.Path(path).write_text("1 # 2 # 3 # 4 # ")
        told = f"kelcalc: cannot read {{}}: {os.strerror(5)}\n"
        rows = [
            # arguments, what is called broken, what is printed
            (["broken.3dc", "-e", "5 #"], "broken.3dc", " 1.000000\n 2.000000\n 5.000000\n"),
            (["-e", '"broken" ;read 5 #'], "broken.3dc", " 1.000000\n 2.000000\n 5.000000\n"),
            (["--strict", "broken.3dc"], "broken.3dc", " 1.000000\n 2.000000\n"),
            (["--stop", "broken.3dc", "-e", "5 #"], "broken.3dc", " 1.000000\n 2.000000\n"),
            ([], "the standard input", " 1.000000\n 2.000000\n"),
        ]
        checks = os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0:detect_leaks=0"
        for arguments, name, output in rows:
            with self.subTest(arguments=arguments), open(path, "rb") as broken:
                done = subprocess.run(
                    [KELCALC, *arguments], stdin=broken, capture_output=True, text=True,
                    check=False, timeout=120, env={**os.environ, "LD_PRELOAD": FAILING_READ,
                                                   "FAILING_READ": path, "ASAN_OPTIONS": checks})
                self.assertEqual((done.returncode, done.stdout, done.stderr),
                                 (1, output, told.format(name)))

    def test_failures_say_why(self):
        os.mkdir("folder.d")
        os.symlink("/dev/full", "full.x")
        pathlib.Path("self.3dc").write_text('"self" ;read ')
        rows = [
            ('"no" ;read ', "no.3dc: No such file or directory"),
            ('"folder.d" ;read ', "folder.d: Is a directory"),
            ('"folder.d" ;write ', "folder.d: Is a directory"),
            ('"folder.d/x/y" ;write ', "folder.d/x/y: No such file or directory"),
            ('1 x : "full.x" ;write ', "full.x: No space left on device"),
            ('"self" ;read ', "self.3dc: nested too deep"),
            ("q(1,2,3,4) 0 / ", "<stdin>:1:14: /: Quaternion divided by zero!"),
        ]
        for text, told in rows:
            with self.subTest(text=text):
                self.assertIn(told + "\n", run("--where", text=text)[2])

    def test_warnings(self):
        rows = [
            # program, places and texts
            ("5 side : side # ", []),
            ("5 side : sied 1 \\ #  ", ["1:10: sied has no value: did you mean side"]),
            ("sin # ", ["1:1: sin has no value: did you mean ;sin"]),
            ("qqqq\n: qqqq \\ ", ["2:3: qqqq has no value"]),
            ("1 0 / ' 2 * 3 | | # # ", ["1:5: the result of / is not finite: inf"]),
            ("1e999 ;sqrt v(0,1e999,0) # # ", ["1:1: 1e999: too large", "1:13: v(0,1e999,0): too"]),
            ("s(1,1,0) ;m ~ m(1,0,0,0,0,-1,0,0,0,0,1,0) ~ q(0,0,0,0) ~ q(1,0,0,0) ~ ",
             ["1:13: this matrix has no inverse", "1:56: this quaternion has no inverse"]),
            ("5 – 3 [ – ] \"–\" # × ÷ \xa0", ["1:3: – is passed over: did you mean -",
                                            "1:25: × is passed over: did you mean *",
                                            "1:28: ÷ is passed over: did you mean /",
                                            "1:31: \xa0 is passed over: did you mean a blank"]),
            (b"1 \xe9 # ", ["1:3: the byte E9 is passed over"]),
            (b"5 \x96 3 [ \x96 ] v(1\x962 3) ", ["1:3: the byte 96 is passed over"]),
            ("0.5 a : 1 3 / b : \"f\" ;write 1e-7 c : \"f\" ;write ",
             ["1:23: not every digit of b was written; --exact keeps them"]),
            ("m(0.0005,0,0,0,0,1,0,0,0,0,1,0) b : \"f\" ;write ", ["1:41: not every digit of b"]),
            ("0.25 b : \"a\" c : \"f\" ;write ", []),
            ("2 1 < { nope # 1 0 / } ", []),
        ]
        for text, warnings in rows:
            with self.subTest(text=text):
                status, output, errors = run(text=text)
                told = run("--warn", text=text)
                self.assertEqual(told[:2], (status, output))
                lines = [line for line in told[2].splitlines() if " warning: " in line]
                self.assertEqual(len(lines), len(warnings), lines)
                for line, warning in zip(lines, warnings):
                    place, said = warning.split(": ", 1)
                    self.assertIn(f"<stdin>:{place}: warning: {said}", line)
                self.assertEqual(errors.splitlines(), [line for line in told[2].splitlines()
                                                       if " warning: " not in line])


if __name__ == "__main__":
    main()
