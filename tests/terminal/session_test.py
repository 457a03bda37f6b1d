"""kelcalc at a terminal: editing, history, completion, interrupts, the end of the input.

A third argument is 1 when it was built with line editing.
"""

import contextlib
import os
import pathlib
import re
import signal
import stat
import sys
import time
import unittest

from process import KELCALC, ROOT, ProcessTest, main
from terminal import Terminal

TAB, UP, CTRL_C, CTRL_D, CTRL_U = "\t", "\x1b[A", "\x03", "\x04", "\x15"

needs_editing = unittest.skipUnless(sys.argv[3] == "1", "built without line editing")


class Session(ProcessTest):
    def setUp(self):
        super().setUp()
        self.home = pathlib.Path.cwd()

    @contextlib.contextmanager
    def start(self, *options, term="xterm", **variables):
        """A session that is ended by Ctrl-D."""
        terminal = Terminal([KELCALC, *options], {"HOME": str(self.home), **variables}, term)
        self.addCleanup(terminal.close)
        terminal.until("0> ")
        yield terminal
        terminal.send(CTRL_D)
        self.assertEqual(terminal.finish(), 0)

    # The prompt and the stack

    def test_shows_the_stack_and_where_a_line_failed(self):
        with self.start() as terminal:
            shown = terminal.line('1.5 "text" v(1,2,3)', "3> ")
            self.assertRegex(shown, r"2 +real +1\.5\n +1 +string +\"text\"\n"
                                    r" +0 +vector +v\(1, 2, 3\)")
            self.assertIn(" 1.500000\n", terminal.line("\\ \\ #", "0> "))
            shown = terminal.line('"a" 1 +', "2> ")
            self.assertIn("Type mismatch for operator +", shown)
            self.assertIn("<terminal>:3:7: + on (string, real): no rule; it takes real+real", shown)

    # The words of a session

    def test_words(self):
        file = self.home / "kept"
        rows = [
            # typed, prompt, what is shown
            (":help", "0> ", r":undo .*\n(.*\n)*Topics: stack "),
            (":help ;sqrt", "0> ", r"square root\n"),
            (":help rotation", "0> ", r"r\(x, y, z, angle\)(.*\n)*Taken by:.*  ;a\n"),
            (":help stack", "0> ", r"copies the top"),
            (":help nope", "0> ", r"is called nope\n"),
            (":list", "0> ", r"  \+ +add; move a point by a vector\n"),
            ('0.1 7 3 / "a\\"b" text : v(1e-300,-0,2) v :', "2> ", r"1  real +0\.1\n +0"),
            ("1e999 nope text", "5> ", r"text\n"),
            (f":save {file}", "5> ", r"kept\n\Z"),
            ("\\\\ 5 text :", "0> ", r":\n\Z"),
            (":undo", "5> ", r"0  string"),
            (":undo", "2> ", r"0  real"),
            (":vars", "2> ", r'text  string     "a"b"\n +v  vector +v\(1e-300, -0, 2\)\n'),
            (":undo", "0> ", r"\A.*\n\Z"),
            (":undo", "0> ", r"nothing to undo"),
            ("2 1 < {", "0{ ", r"{\n\Z"),
            (":undo", "0> ", r":undo"),
            (f':load "{file}"', "5> ", r"4  real +0\.1\n(.*\n)* +0  string +\"a\"b\"  text\n"),
            (":vars", "5> ", r"text  string(.*\n) +v  vector"),
            (":undo", "0> ", r"\A.*\n\Z"),
            (f":save {self.home}/no/file.x", "0> ", r"cannot write .*: No such file"),
            (":save", "0> ", r"needs the name of a file"),
            ("help", "1> ", r":help"),
            ("quit", "2> ", r":quit"),
            ("7 quit :", "2> ", r"\A[^:]*:\n.*quit has no value\n(  \d.*\n)*\Z"),
            ("quit", "3> ", r"0  real +7  quit"),
            (":qiut", "2> ", r":qiut is no word of a session"),
        ]
        with self.start() as terminal:
            for typed, prompt, shown in rows:
                with self.subTest(typed=typed):
                    self.assertRegex(terminal.line(typed, prompt), shown)
        kept = file.with_suffix(".3dc").read_text()
        self.assertEqual(kept.splitlines()[-2:], ['"a\\"b" text :', "v(1e-300, -0, 2) v :"])
        self.assertIn("2.3333333333333335\n", kept)
        terminal = Terminal([KELCALC], {"HOME": str(self.home)})
        terminal.until("0> ")
        terminal.send(":quit\r")
        self.assertEqual(terminal.finish(), 0)

    def test_a_pasted_program_is_one_step(self):
        for term in "xterm", "dumb":
            with self.start(term=term) as terminal:
                terminal.line("5", "1> ")
                terminal.send("#!/usr/bin/env kelcalc\r1 [ a\r] 2\r+\r9\r")
                self.assertEqual(terminal.until("  0  real       9").count("  real "), 2)
                terminal.until("\n3> ")
                self.assertRegex(terminal.line(":undo", "1> "), r"0  real +5\n")

    def test_the_stack_follows_the_width_of_the_terminal(self):
        with self.start() as terminal:
            terminal.line('"' + "é" * 90 + '"', "1> ")
            for columns in 40, 200, 60:
                terminal.setwinsize(25, columns)
                shown = terminal.line("1 \\", "1> ").split("\n")[-2]
                self.assertEqual(len(shown), min(columns, 16 + 92), shown)

    @needs_editing
    def test_every_byte_that_is_typed_is_kept(self):
        typed = '"é–\udcff\udce9\udc80"'
        for variables in {}, {"LC_ALL": "C.UTF-8"}:
            with self.start(**variables) as terminal:
                for keys in typed + " #\r", UP + "\r":
                    terminal.send(keys)
                    terminal.until("\n0> ")
            self.assertEqual(terminal.raw.count(f"\n {typed}\r\n"), 2)

    # Interrupts

    def test_interrupt_at_the_first_prompt(self):
        for term in "xterm", "dumb":
            with self.start(term=term) as terminal:
                terminal.send(CTRL_C)
                terminal.until("0> ")
                self.assertIn(" 7.000000\n", terminal.line("7 #", "0> "))

    def test_interrupt_drops_the_line_and_what_is_open(self):
        with self.start() as terminal:
            terminal.line("5", "1> ")
            for opening, prompt in ("", "1> "), ('"one', '1" '), ("[ a", "1[ "), ("2 1 < {", "1{ "):
                terminal.line(opening, prompt)
                terminal.send("1 2 3" + CTRL_C)
                terminal.until("1> ")
                self.assertIn(" 7.000000\n", terminal.line("7 #", "1> "))
            self.assertIn(" 5.000000\n", terminal.line("#", "0> "))

    def test_interrupt_stops_a_long_read(self):
        os.mkfifo("endless.x")
        os.symlink("/dev/zero", "zero.x")  # has no tokens
        with self.start("--no-stack") as terminal:
            for name, prompt in ("endless.x", "1> "), ("zero.x", "2> "):
                # The rest of the line is dropped, too.
                terminal.send(f'"reading" # "{name}" ;read 8 9\r')
                terminal.until(' "reading"\n')
                with open(name, "r+b", buffering=0):
                    time.sleep(0.1)  # until it waits for more
                    terminal.kill(signal.SIGINT)
                    terminal.until(prompt)
            shown = terminal.line("7 #", prompt).split("\n", 1)[1]
            self.assertEqual(shown, " 7.000000\n", "and no stack")

    def test_interrupt_stops_output_that_nobody_takes(self):
        (self.home / "much.3dc").write_text("1 #\n" * 1000000)
        with self.start("--no-stack") as terminal:
            terminal.send(f'"{self.home}/much.3dc" ;read\r')
            for _ in range(3):  # the first may meet a line that is half out
                time.sleep(0.1)  # until the terminal is full
                terminal.kill(signal.SIGINT)
            terminal.until("\n1> ")
            terminal.send("7 #\r")
            terminal.until(" 7.000000\n1> ")

    # The end

    def test_keys_before_the_prompt_count(self):
        with self.start("--no-stack") as terminal:
            terminal.send('1 2 + #\r"one\r')  # and the input ends in the middle of a string
        self.assertIn(" 3.000000\n", terminal.seen)

    # Editing, history, completion

    @needs_editing
    def test_history_outlives_the_session_and_is_private(self):
        with self.start() as terminal:
            terminal.line("123.5 #", "0> ")
        file = self.home / ".local/state/kelcalc/history"
        self.assertEqual(file.read_text(), "123.5 #\n")
        self.assertEqual(stat.S_IMODE(file.stat().st_mode), 0o600)
        self.assertEqual(stat.S_IMODE(file.parent.stat().st_mode), 0o700)
        with self.start() as terminal:
            self.assertIn(" 123.500000\n", terminal.line(UP, "0> "))

    def test_history_follows_the_state_folder(self):
        with self.start(XDG_STATE_HOME=str(self.home / "state")) as terminal:
            terminal.line("1 #", "0> ")
        self.assertEqual((self.home / "state/kelcalc/history").read_text(), "1 #\n")

    def test_history_that_cannot_be_written_is_silent(self):
        (self.home / ".local").write_text("a file where a folder should be")
        missing = self.home / "missing"
        for home in self.home, missing:
            with self.start(HOME=str(home)) as terminal:
                self.assertEqual(terminal.line("1 #", "0> ").split("\n", 1)[1], " 1.000000\n")
        self.assertFalse(missing.exists())

    @needs_editing
    def test_completion_of_functions_variables_and_operators(self):
        with self.start("--no-stack") as terminal:
            self.assertIn(" 3.000000\n", terminal.line("9 ;sqr" + TAB + "#", "0> "))
            terminal.line("4 sideLength :", "0> ")
            self.assertIn(" 4.000000\n", terminal.line("sid" + TAB + "#", "0> "))
            terminal.send("1 ;at" + TAB + TAB)  # certain so far: "atan"; two names go on from there
            terminal.until("atan   atan2\n0> 1 ;atan")
            terminal.send(CTRL_C)
            terminal.until("\n0> ")
            (self.home / "some folder").mkdir()
            (self.home / "some folder/inner.3dc").write_text("8")
            terminal.send(f'"{self.home}/so' + TAB + "in" + TAB + " ;read" + CTRL_U)
            terminal.until('inner.3dc" ;read')
            self.assertIn("Topics", terminal.line(":he" + TAB, "0> "))
            terminal.send(TAB)
            terminal.until(":undo")
            terminal.send("1 ~=" + TAB)
            terminal.until("~=   ~==")
            terminal.send(CTRL_C)

    # Terminals and pipes

    def test_colours_only_where_they_are_wanted(self):
        for term, variables, coloured in (("xterm", {}, True), ("xterm", {"NO_COLOR": "1"}, False),
                                          ("dumb", {}, False)):
            with self.start(term=term, **variables) as terminal:
                terminal.line("1", "1> ")
            self.assertEqual("\x1b[2m" in terminal.raw, coloured, (term, variables))
            self.assertFalse(term == "dumb" and "\x1b" in terminal.raw)

    # What the documents show

    def test_the_session_in_the_readme(self):
        readme = (ROOT / "README.md").read_text()
        shown = re.search(r"```console\n\$ kelcalc\n(.*?)```", readme, re.DOTALL)[1]
        prompts = re.findall(r"^(\d+[>{\"\[]) ?(.*)$", shown, re.MULTILINE)
        with self.start(term="dumb") as terminal:
            for (_, typed), (prompt, _) in zip(prompts, prompts[1:]):
                terminal.line(typed, prompt + " ")
        seen = "\n".join(line.rstrip() for line in terminal.seen.replace("\a", "␇").split("\n"))
        self.assertEqual(seen.rstrip(), shown.rstrip())


if __name__ == "__main__":
    main()
