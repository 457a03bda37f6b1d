#!/usr/bin/env python3
"""The examples and the language reference keep their word.

In docs/language.md a fence marked 3dc holds a program; the fences that follow it hold what it
writes: `output` on the standard output, `errors` on the standard error stream (BEL written as a
picture of it, blanks at the ends of lines left out). The programs of one section run in the same
folder, so one may read what another wrote. Beside examples/NAME.3dc stands NAME.out.
"""

import os
import re

from process import ROOT, ProcessTest, main, run

FENCE = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def trimmed(text):
    return [line.rstrip() for line in text.replace("\a", "␇").splitlines()]


class DocumentsTest(ProcessTest):
    def setUp(self):
        super().setUp()
        os.makedirs("examples/written")

    def test_the_programs_of_the_language_reference(self):
        programs = []
        for kind, text in FENCE.findall((ROOT / "docs/language.md").read_text()):
            if kind == "3dc":
                programs.append({"3dc": text, "output": "", "errors": ""})
            elif kind in ("output", "errors"):
                programs[-1][kind] = text
        self.assertGreaterEqual(len(programs), 15)
        for program in programs:
            with self.subTest(program=program["3dc"]):
                status, output, errors = run(text=program["3dc"])
                self.assertEqual(status, 0)
                self.assertEqual(trimmed(output), trimmed(program["output"]))
                self.assertEqual(trimmed(errors), trimmed(program["errors"]))

    def test_the_manual_page_names_every_operation(self):
        manual = (ROOT / "man/kelcalc.1").read_text()
        for escaped, character in ("\\e", "\\"), ("\\-", "-"), ("\\(aq", "'"), ("\\(ti", "~"), (
                "\\(ha", "^"):
            manual = manual.replace(escaped, character)
        for name in re.findall(r"^  (;\w+|[^\s\w]+) ", run("--list")[1], re.MULTILINE):
            self.assertIn(name, manual)

    def test_the_examples(self):
        examples = sorted((ROOT / "examples").glob("*.3dc"))
        self.assertGreaterEqual(len(examples), 4)
        for example in examples:
            with self.subTest(example=example.name):
                expected = example.with_suffix(".out").read_text()
                self.assertEqual(run(str(example)), (0, expected, ""))


if __name__ == "__main__":
    main()
