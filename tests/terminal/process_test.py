"""The options of kelcalc that help people, from outside."""

import json
import os
import pathlib
import random
import struct
import subprocess

import jsonschema

from process import KELCALC, ROOT, ProcessTest, main, run
from terminal import Terminal


class OptionsTest(ProcessTest):
    def where(self, text, *arguments):
        """The lines that --where adds to what `text` writes to standard error without it."""
        status, output, errors = run(*arguments, text=text)
        shown = run("--where", *arguments, text=text)
        self.assertEqual(shown[:2], (status, output))
        plain = errors.splitlines() + [None]
        added = [line for line in shown[2].splitlines() if line != plain[0] or plain.pop(0) is None]
        self.assertEqual(plain, [None])
        return added

    def test_where(self):
        rows = [
            ('1 2 + # ', []),
            ('"a" 1 + ', ["1:7: + on (string, real): no rule; it takes real+real, or "
                          "vector+vector, or point+vector, or vector+point, or "
                          "quaternion+quaternion"]),
            ('\n[ two\nlines ] 1 -  ', ["3:11: - on (real): too few entries; it takes real-real, or "
                                        "vector-vector, or point-vector, or point-point, or "
                                        "quaternion-quaternion"]),
            ('"a" p(1,2,3) * ', ["1:14: * on (string, point): no rule; it takes matrix*point, "
                                 "or rotation*point, or real*real, or vector*real, or "
                                 "quaternion*real, or rotation*real, ..."]),
            ('1 2 ;m ', ["1:5: ;m on (real, real): too few entries; it takes 12 reals, or "
                         "3 vectors and a point, or matrix, or quaternion, or rotation, or scale"]),
            ('5 sum : smu 1 ^ ', ["1:15: ^ on (nothing, real): smu has no value: did you mean sum; "
                                  "no rule; it takes real^real"]),
            (';abs #! += ', ["1:1: ;abs is no operator or function: did you mean $, the stack "
                             "holds 0 ()",
                             "1:6: #! is passed over only in the first line of a file named on "
                             "the command line, the stack holds 0 ()",
                             "1:9: += is no operator or function: did you mean + =, the stack "
                             "holds 0 ()"]),
            (';nope ;  1 -- ', ["1:1: ;nope is no operator or function, the stack holds 0 ()",
                                "1:7: ; is no operator or function, the stack holds 0 ()",
                                "1:12: -- is no operator or function: did you mean - -, the stack "
                                "holds 1 (real)"]),
            ('. 1e+ ', ["1:1: . is no number, the stack holds 0 ()",
                        "1:3: 1e+ is no number, the stack holds 0 ()"]),
            ('v(1,\n2) ', ["1:1: v(1, 2 is no constant v(...), the stack holds 0 ()"]),
            ('V(1) ', ["1:1: V( begins no constant; v( p( m( q( r( s( do, the stack holds 0 ()"]),
            ('"a" 2 ;v ', ["1:7: ;v on (string, real): no rule; it takes 3 reals, or vector, or "
                           "point, or matrix, or quaternion, or rotation"]),
            ('5 7 : ', ["1:5: : on (real, real): no rule; it takes anything and a variable"]),
            ('1 2 9 \'\' ', ["1:7: '' on (real, real): the index that was on top is no position"]),
            ('"a" 1 < ', ["1:7: < on (string, real): no rule; it takes real<real"]),
        ]
        for text, lines in rows:
            with self.subTest(text=text):
                self.assertEqual(self.where(text), ["<stdin>:" + line for line in lines])

    def test_where_names_the_file_that_failed(self):
        pathlib.Path("inner.3dc").write_text("\n  1 * \n")
        pathlib.Path("outer.3dc").write_text('"inner" ;read \n"x" ;sin \n')
        self.assertEqual([line.split(" on ")[0] for line in self.where("", "outer.3dc")],
                         ["inner.3dc:2:5: *", "outer.3dc:2:5: ;sin"])
        self.assertEqual(self.where("", "-e", "1 ;x")[0].split(" on ")[0], "-e:1:3: ;x")
        self.assertEqual([line.split(" ")[0] for line in self.where("", "-e;y ", "-e;z")],
                         ["-e(1):1:1:", "-e(2):1:1:"])

    def test_strict_and_stop(self):
        rows = [
            # options, program, status, output
            ([], "1 - 7 # ", 0, " 7.000000\n"),
            (["--strict"], "7 # ", 0, " 7.000000\n"),
            (["--strict"], "1 - 7 # ", 1, " 7.000000\n"),
            (["--strict"], "nope( 7 # ", 1, " 7.000000\n"),
            (["--strict"], "q(1,2,3,4) 0 / \\ 7 # ", 1, " 7.000000\n"),
            (["--strict"], "2 1 < { 1 - } 7 # ", 0, " 7.000000\n"),
            (["--stop"], "7 # ", 0, " 7.000000\n"),
            (["--stop"], "6 # 1 - 7 # ", 1, " 6.000000\n"),
        ]
        for options, text, status, output in rows:
            with self.subTest(options=options, text=text):
                self.assertEqual(run(*options, text=text)[:2], (status, output))
                self.assertEqual(run(*options, "-e", text)[:2], (status, output))

    def test_digits_change_what_is_shown_and_nothing_else(self):
        program = ('1 3 / x : x # x ? "out" ;write ## v(1,2,0.1) # nothing # -0 # 1e999 # 1e300 # '
                   "p(1,2,3) # s(1,2,3) # q(1,2,3,4) # r(0,0,1,90.126) # 9.9999 # 123456 # "
                   "m(1,2,3,4,5,6,7,8,9,10,11,12) #")
        status, output, errors = run("--digits", "3", text=program + " ")
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual(output, " 0.333\n 0.333\n 0.333\n v(1, 2, 0.1)\n -0\n inf\n 1e+300\n"
                                 " p(1, 2, 3)\n s(1, 2, 3)\n q(1, 2, 3, 4)\n r(0, 0, 1, 90.1)\n"
                                 " 10\n 1.23e+05\n"
                                 " m( 1,  2,  3,  4\n   5,  6,  7,  8\n   9, 10, 11, 12)\n")
        self.assertEqual(pathlib.Path("out.3dc").read_text(), " 0.333333\nx : \n")

    def state(self, *arguments):
        """What --json tells of a run, as the schema allows it."""
        done = subprocess.run([KELCALC, *arguments, "--json", "-"], stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=120, check=True)
        state = json.loads(done.stdout)
        jsonschema.validate(state, json.loads((ROOT / "docs/state.schema.json").read_text()))
        return state

    def test_json_tells_types_and_every_digit(self):
        program = ('0.1 x : 1e999 -1e999 1e999 1e999 - nope "a\\"\u00e9" v(1,2,1e999) x p(-0,1e-320,3) '
                   "s(1,1,1) q(1,2,3,4) r(0,0,1,90) m(1,2,3,4,5,6,7,8,9,10,11,12)")
        rows = [
            ("real", "inf"), ("real", "-inf"), ("real", "nan"), ("nothing", None, "nope"),
            ("string", 'a"\u00e9'), ("vector", [1, 2, "inf"]), ("real", 0.1, "x"),
            ("point", [-0.0, 1e-320, 3]), ("scale", [1, 1, 1]), ("quaternion", [1, 2, 3, 4]),
            ("rotation", [0, 0, 1, 90]), ("matrix", [[1, 2, 3, 4], [5, 6, 7, 8], [9, 10, 11, 12]]),
        ]
        stack = [dict(zip(("type", "value", "name"), row)) for row in rows]
        state = {"stack": stack, "variables": [{"name": "x", "type": "real", "value": 0.1}]}
        self.assertEqual(repr(self.state("-e", program)["stack"][7]["value"][0]), "-0.0")
        self.assertEqual(self.state("-e", program), state)
        pathlib.Path("bytes.3dc").write_bytes(b'"\xe9" ')
        self.assertEqual(self.state("bytes.3dc")["stack"][0]["value"], [0xe9])
        self.assertEqual(run("--json", "out.json", text="1 # 2 "), (0, " 1.000000\n", ""))
        self.assertEqual(json.loads(pathlib.Path("out.json").read_text())["stack"][0]["value"], 2)
        self.assertEqual(run("-i", "--json", "out.json", text="3\n")[0], 0)
        self.assertEqual(json.loads(pathlib.Path("out.json").read_text())["stack"][0]["value"], 3)
        os.remove("out.json")
        for stopped in ["missing"], ["-e", "1 -"]:
            self.assertEqual(run("--stop", "--json", "out.json", *stopped)[0], 1)
            self.assertFalse(os.path.exists("out.json"))
        self.assertEqual(run("--json", "no/file", text=""),
                         (1, "", "kelcalc: cannot write no/file: No such file or directory\n"))

    def test_what_was_saved_comes_back_whole(self):
        source = random.Random(5)
        numbers = [struct.unpack("d", source.randbytes(8))[0] for _ in range(999)]
        numbers = ["1e999 1e999 -" if x != x else repr(x) for x in numbers]
        names = [f"n{i} :" for i in range(len(numbers))]
        program = " ".join(map(" ".join, zip(numbers, names))) + (
            ' 1e999 1e999 - -1e999 -0 ;v odd : nope nothing : "' + "x" * 1022 + '\\\\\\" long : "" empty :'
            ' 5 old : old 6 old : nope nope \' s(1e22,5e-324,0.1) m(1,2,3,4,5,6,7,8,9,10,11,-0)')
        pathlib.Path("program.3dc").write_text(program + "\n")
        whole = self.state("program.3dc")
        run("program.3dc", "-i", text=":save kept\n")
        self.assertEqual(self.state("kept.3dc"), whole)
        run("--exact", "program.3dc", "-e", '"written" ;write')
        backwards = self.state("written.3dc")["variables"][::-1]  # ;write turns the order round
        self.assertEqual(backwards, whole["variables"])

    def test_list_and_explain(self):
        status, listed, errors = run("--list")
        self.assertEqual((status, errors), (0, ""))
        names = [line.split()[0] for line in listed.splitlines() if line[:2] == "  " != line[1:3]]
        self.assertEqual(len(names), 32 + 27)
        for name in names:
            status, text, errors = run("--explain", name)
            self.assertEqual((status, errors), (0, ""))
            self.assertTrue(text.startswith(name + "  "), name)
        for name, told in ("rotation", "r(x, y, z, angle)"), ("stack", "copies the top"):
            self.assertIn(told, run("--explain", name)[1])
        self.assertEqual(run("--explain", "sqrt")[1], ";sqrt  square root\n\n  real  ->  real\n\n"
                                                      "Example:  2 ;sqrt #\n 1.414214\n")
        self.assertEqual(run("--explain", "nope"),
                         (2, "", "kelcalc: no operator, function, type or topic is called nope\n"
                                 "Try 'kelcalc --help'.\n"))

    def test_a_session_may_be_asked_for(self):
        self.assertEqual(run("-i", "-e", "5 x :", text="1 x\n+ #\n")[:2],
                         (0, "0>   1  real       1\n  0  real       5  x\n2>  6.000000\n0> \n"))

    def test_shells_complete_options_and_names(self):
        here = f'source "{ROOT}/tools/kelcalc/kelcalc.'
        folder = os.path.dirname(KELCALC)
        environment = {**os.environ, "PATH": f"{folder}:{os.environ['PATH']}", "HOME": os.getcwd()}

        def bash(line):
            script = (here + 'bash"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kelcalc; '
                      'printf "%s\\n" "${COMPREPLY[@]}"')
            return ["bash", "-c", script, "bash", *line.split(" ")]

        def fish(line):
            return ["fish", "-c", here + 'fish"; complete -C "$argv[1]"', line]

        for name in "a.3dc", "b.txt":
            pathlib.Path(name).touch()
        rows = [
            ("kelcalc --st", ["--stop", "--strict"]),
            ("kelcalc --explain sq", ["sqrt"]),
            ("kelcalc --digits 9", ["9"]),
            ("kelcalc a", ["a.3dc"]),
        ]
        rows = [(make, *row) for row in rows for make in (bash, fish)] + [
            (bash, "kelcalc --explain \\;sq", ["\\;sqrt"]),
            (bash, "kelcalc --explain ';sq", [";sqrt"]),
            (bash, "kelcalc --explain ~==", ["\\~=="]),
        ]
        for make, line, words in rows:
            with self.subTest(make=make, line=line):
                done = subprocess.run(make(line), env=environment, capture_output=True, text=True,
                                      check=True)
                self.assertEqual(sorted(shown.split("\t")[0] for shown in done.stdout.splitlines()),
                                 words)
        os.symlink(ROOT / "tools/kelcalc/kelcalc.zsh", "_kelcalc")
        zsh = Terminal(["/bin/zsh", "-f"], environment)
        self.addCleanup(zsh.close)
        zsh.send("fpath=($PWD $fpath); autoload -Uz compinit; compinit -D -u; PS1=READY\r")
        zsh.until("PS1=READY")
        zsh.until("READY")
        zsh.send("kelcalc --str\t")
        zsh.until("--strict ")
        zsh.send("--explain sq\t")
        zsh.until("sqrt")


if __name__ == "__main__":
    main()
