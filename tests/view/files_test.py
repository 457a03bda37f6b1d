#!/usr/bin/env python3
"""Pictures as files: when they are written, when not, and what stays.

Arguments: the program kelcalc, the source folder.
"""

import os
import pathlib
import resource
import signal
import subprocess
import sys
import xml.etree.ElementTree

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "terminal"))
import process
from process import KELCALC, ROOT

PROGRAM = "p(1,2,3) a : v(1,0,1) b : r(0,0,1,30) c : \"<&>\xe4\x01\" d : 5 "


def run(*arguments, text=PROGRAM, **options):
    return process.run(*arguments, text=text.encode("latin-1"), **options)


def small_files():
    """Lets a file grow to 4096 bytes and no more."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))


class FilesTest(process.ProcessTest):
    def test_the_same_values_give_the_same_bytes_in_every_form(self):
        for name in "a.svg", "a.html", "a.glb":
            self.assertEqual(run("--view", name, "--view=" + name.upper().lower(), "-"),
                             (0, "", ""))
            first = pathlib.Path(name).read_bytes()
            self.assertGreater(len(first), 3000)
            self.assertEqual(run("--view", name, "-e", PROGRAM.replace("\xe4\x01", "ä?")),
                             (0, "", ""))
            self.assertEqual(pathlib.Path(name).read_bytes(), first)
        text = xml.etree.ElementTree.parse("a.svg").getroot().itertext()
        self.assertIn('"<&>ä?"', "".join(text))
        self.assertEqual(sorted(os.listdir()), ["a.glb", "a.html", "a.svg"])

    def test_a_file_that_cannot_be_written_stays_as_it_was(self):
        os.mkdir("folder.svg")
        pathlib.Path("old.svg").write_text("old")
        os.symlink("real.svg", "link.svg")
        pathlib.Path("real.svg").write_text("old")
        self.assertEqual(run("--view", "link.svg"), (0, "", ""))
        self.assertTrue(os.path.islink("link.svg"))
        self.assertIn("<svg", pathlib.Path("real.svg").read_text())
        before = sorted(os.listdir())
        rows = [
            ("missing/x.svg", {}, "No such file or directory"),
            ("folder.svg", {}, "Is a directory"),
            ("old.svg", {"preexec_fn": small_files}, "File too large"),
        ]
        for name, options, reason in rows:
            with self.subTest(name=name):
                self.assertEqual(run("--view", name, **options),
                                 (1, "", f"kelcalc: cannot write {name}: {reason}\n"))
                self.assertEqual(sorted(os.listdir()), before)
        self.assertEqual(pathlib.Path("old.svg").read_text(), "old")
        # One that fails does not keep the others from being written.
        self.assertEqual(run("--view", "missing/x.svg", "--view", "y.svg")[0], 1)
        self.assertTrue(os.path.exists("y.svg"))

    def test_names_that_say_nothing(self):
        for arguments, status, complaint in (
                (["--view", "x.png"], 2, "ends in .svg, .html or .glb, not 'x.png'"),
                (["--view", ".svg"], 2, "ends in"),
                (["--view-from", "b", "--view", "x.svg"], 1, "no point is called b")):
            ended, output, errors = run(*arguments)
            self.assertEqual((ended, output), (status, ""))
            self.assertIn(complaint, errors)
        self.assertEqual(os.listdir(), [])

    def test_a_session_shows_pictures(self):
        os.mkfifo("opened")
        os.mkdir("bin")
        pathlib.Path("bin/xdg-open").write_text('#!/bin/sh\necho "$1" >opened\n')
        os.chmod("bin/xdg-open", 0o755)
        settings = {"HOME": ".", "TMPDIR": os.getcwd(), "PATH": os.getcwd() + "/bin:/usr/bin:/bin"}
        text = "p(1,2,3) here :\n:view a.svg\n:view a.png\n:view no/a.svg\n:view\n"
        for desktop, said in ({"DISPLAY": ":7"}, "showing"), ({}, "the picture is in"), (
                {"DISPLAY": ":7", "PATH": "/nothing"}, "the picture is in"):
            status, output, _ = run("-i", "--view", "end.glb", text=text, env=settings | desktop)
            self.assertEqual(status, 0)
            self.assertRegex(output, "a.png: its name does not end in .*\n(.*\n)*"
                             ".*cannot write no/a.svg: No such file or directory\n(.*\n)*")
            self.assertRegex(output, said + " (.*)/picture.html\n")
            path = output.split(said + " ")[1].split("\n")[0]
            self.assertIn('"name":"here"', pathlib.Path(path).read_text())
            self.assertEqual(os.stat(os.path.dirname(path)).st_mode & 0o77, 0)
            if said == "showing":
                self.assertEqual(pathlib.Path("opened").read_text(), path + "\n")
            for name in "a.svg", "end.glb":
                self.assertIn(b"here", pathlib.Path(name).read_bytes())
                os.remove(name)

    def test_the_pictures_of_the_examples(self):
        subprocess.run([ROOT / "script/pictures", KELCALC, "."], check=True, timeout=120)
        made = {path.name: path.read_bytes() for path in pathlib.Path().glob("*.svg")}
        kept = {path.name: path.read_bytes() for path in (ROOT / "docs").glob("*.svg")}
        self.assertGreaterEqual(len(kept), 3)
        self.assertEqual(sorted(made), sorted(kept))
        for name, content in kept.items():
            self.assertEqual(made[name], content, f"{name}: script/pictures makes it anew")


if __name__ == "__main__":
    process.main()
