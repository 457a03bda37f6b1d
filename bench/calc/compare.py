#!/usr/bin/env python3
"""kelcalc beside the interpreters that are installed, and beside the limit.

    compare.py KELCALC LIMIT [--times] [--only WORKLOAD]

Every workload is a program of n lines; each peer gets a program of as many lines that does the same
work, so that all have to read and execute every line. Counted are instructions (callgrind), as the
difference of two sizes divided by the lines between them: start-up drops out. With --times the
processor time of a larger difference is taken as well. Peers that are not installed are left out.
"""

import argparse
import os
import re
import resource
import shutil
import string
import subprocess
import sys
import tempfile

BLOCK = 1000  # lines that are made one by one; every size is a multiple of it
SMALL, LARGE = 1000, 3000
TIMED_SMALL, TIMED_LARGE = 20_000, 120_000
VARIABLES = 10  # in rotation, times two

MATRIX = (1, 0.25, 0, 5, 0, 0.5, 0, 6, 0, 0, 2, 7)
POINT = (1.5, 2.5, 3.5)
ROWS = [MATRIX[i:i + 4] for i in (0, 4, 8)]


# --- The programs. Each function gives line i of a workload in every language. -------------------

def arithmetic(_):
    step_by_step = "{v}x=1.5;{v}x={v}x+2.25;{v}x={v}x*3;{v}x={v}x-4"
    plain, perl = step_by_step.format(v=""), step_by_step.format(v="$") + ";"
    return {
        "kelcalc": "1.5 2.25 + 3 * 4 - \\",
        "gforth": "1.5e 2.25e f+ 3e f* 4e f- fdrop",
        "gs": "1.5 2.25 add 3 mul 4 sub pop",
        "dc": "1.5 2.25+3*4-sx", "bc": "x=1.5+2.25;x=x*3;x=x-4",
        "lua": plain, "mawk": plain, "perl": perl, "python": plain,
    }


def geometry(_):
    def sums(name, times="*", plus="+"):
        return [plus.join(f"{m}{times}{name(axis)}" for m, axis in zip(row, "xyz")) + f"{plus}{row[3]}"
                for row in ROWS]
    plain, perl = sums(str), sums(lambda axis: "$" + axis)
    x, y, z = POINT
    assign = f"x={x};y={y};z={z};"
    shown = " p(%f, %f, %f)"

    def postfix(number, load, multiply, add, show):
        return " ".join(
            f"{number(row[0])} {load('x')} {multiply} {number(row[1])} {load('y')} {multiply} {add} "
            f"{number(row[2])} {load('z')} {multiply} {add} {number(row[3])} {add} {show}"
            for row in ROWS)
    return {
        "kelcalc": f"m({','.join(map(str, MATRIX))}) p({x},{y},{z}) * #",
        "gforth": f"{x}e px f! {y}e py f! {z}e pz f! "
                  + postfix(lambda n: f"{n}e", lambda a: f"p{a} f@", "f*", "f+", "f.") + " cr",
        "gs": f"/x {x} def /y {y} def /z {z} def " + postfix(str, str, "mul", "add", "="),
        "dc": f"{x}sx{y}sy{z}sz " + postfix(str, lambda a: "l" + a, "*", "+", "p"),
        "bc": assign + ";".join(plain),
        "lua": assign + f'io.write(string.format("{shown}\\n",{",".join(plain)}))',
        "mawk": assign + f'printf "{shown}\\n",{",".join(plain)}',
        "perl": assign.replace("x=", "$x=").replace("y=", "$y=").replace("z=", "$z=")
                + f'printf "{shown}\\n",{",".join(perl)};',
        "python": assign + f'print("{shown}"%({",".join(plain)}))',
    }


def printing(i):
    number = f"{1000 + i % 997}.{i % 89 + 10}"
    return {
        "kelcalc": f"{number} #", "gforth": f"{number}e f. cr", "gs": f"{number} =",
        "dc": f"{number}p", "bc": number, "lua": f'io.write(string.format(" %f\\n",{number}))',
        "mawk": f'printf " %f\\n",{number}', "perl": f'printf " %f\\n",{number};',
        "python": f'print(" %f"%{number})',
    }


def variables(i):
    n = i % VARIABLES
    plain = f"a{n}=1.5;b{n}=2.25;x=a{n}+b{n}"
    return {
        "kelcalc": f"1.5 a{n} : 2.25 b{n} : a{n} b{n} + \\",
        "gforth": f"1.5e a{n} f! 2.25e b{n} f! a{n} f@ b{n} f@ f+ fdrop",
        "gs": f"/a{n} 1.5 def /b{n} 2.25 def a{n} b{n} add pop",
        "dc": f"1.5 {n}:a 2.25 {n}:b {n};a {n};b+sx", "bc": plain, "lua": plain, "mawk": plain,
        "perl": f"$a{n}=1.5;$b{n}=2.25;$x=$a{n}+$b{n};", "python": plain,
    }


def written_file(i):
    """Four records of a file that ;write made: a matrix, a point, a vector, a real."""
    n = i % VARIABLES
    numbers = {"m": MATRIX, "p": POINT, "v": (0.125, -2.5, 30.75)}
    real = "-1234.500000"
    six = {name: [f"{v:.6f}" for v in values] for name, values in numbers.items()}
    m = [f"{v:10.3f}" for v in MATRIX]

    def each(form, join=" ", records=six):
        return join.join(form(name, values) for name, values in records.items())

    def elements(form):
        return each(lambda name, values: " ".join(
            form(name, k, v) for k, v in enumerate(values)))
    listed = each(lambda name, values: f"{name}{n}=[{','.join(values)}]", ";") + f";r{n}={real}"
    return {
        "kelcalc": f" m({','.join(m[:4])}\n   {','.join(m[4:8])}\n   {','.join(m[8:])})\nm{n} : \n"
                   + "\n".join(f" {name}({', '.join(six[name])})\n{name}{n} : " for name in "pv")
                   + f"\n {real}\nr{n} : ",
        "gforth": elements(lambda name, k, v: f"{v}e {name} {k} floats + f!") + f" {real}e r f!",
        "gs": each(lambda name, values: f"/{name}{n} [{' '.join(values)}] def")
              + f" /r{n} {real} def",
        "dc": elements(lambda name, k, v: f"{v.replace('-', '_')} {k}:{name}")
              + f" {real.replace('-', '_')}sr",
        "bc": elements(lambda name, k, v: f"{name}[{k}]={v};") + f"r{n}={real}",
        "lua": listed.replace("[", "{").replace("]", "}"),
        "mawk": elements(lambda name, k, v: f'{name}{n}[{k}]={v};') + f"r{n}={real}",
        "perl": each(lambda name, values: f"${name}{n}=[{','.join(values)}];") + f"$r{n}={real};",
        "python": listed,
    }


# name: (lines, numbers that the limit prints a line; a written record has seven lines, all silent)
WORKLOADS = {"arithmetic": (arithmetic, 0), "geometry": (geometry, 3), "printing": (printing, 1),
             "variables": (variables, 0), "written file": (written_file, 0)}

# name: (executable, language, arguments before the file, text before the program, text after it)
FLOATS = "\n".join(f"fvariable {v}" for v in
                   ["px", "py", "pz", "r"] + [f"{c}{n}" for c in "ab" for n in range(VARIABLES)])
GFORTH_HEAD = FLOATS + "\n" + "\n".join(f"create {c} 12 floats allot" for c in "mpv") + "\n"
PEERS = {
    "gforth": ("gforth-itc", "gforth", [], GFORTH_HEAD, "bye\n"),
    "gforth-fast": ("gforth-fast", "gforth", [], GFORTH_HEAD, "bye\n"),
    "Ghostscript": ("gs", "gs", ["-q", "-dNODISPLAY", "-dBATCH", "-dNOPAUSE"], "", "quit\n"),
    "dc": ("dc", "dc", ["-f"], "6k\n", ""),
    "bc": ("bc", "bc", ["-q"], "scale=6\n", "quit\n"),
    "Lua": ("lua5.4", "lua", [], "", ""),
    "LuaJIT": ("luajit", "lua", [], "", ""),
    "mawk": ("mawk", "mawk", ["-f"], "BEGIN {\n", "}\n"),
    "Perl": ("perl", "perl", [], "", ""),
    "Python": ("python3", "python", ["-S", "-E"], "", ""),
}


def program(lines, language, count, head="", tail=""):
    """The text of `count` lines in `language`, in chunks where a compiler has limits."""
    text = [lines(i)[language] for i in range(BLOCK)] * (count // BLOCK)
    if language == "lua":  # a function has room for so many constants
        text = ["(function()\n" + "\n".join(text[i:i + 1000]) + "\nend)();"
                for i in range(0, count, 1000)]
    return head + "\n".join(text) + "\n" + tail


# --- Measuring -----------------------------------------------------------------------------------

def write(name, text):
    with open(name, "w", encoding="ascii") as file:
        file.write(text)
    return name


def execute(command):
    """Runs a command in silence; a failure ends the comparison, because its numbers would lie."""
    with open("output", "wb") as output, open("errors", "w+b") as errors:
        status = subprocess.run(command, stdout=output, stderr=errors, check=False,
                                stdin=subprocess.DEVNULL).returncode
        errors.seek(0)
        text = errors.read().decode(errors="replace")
    if status != 0:
        sys.exit(f"{' '.join(command)} failed with status {status}:\n{text[-500:]}")
    return text


def instructions(command):
    text = execute(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *command])
    return int(re.search(r"Collected : (\d+)", text).group(1))


def seconds(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    execute(command)
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before


def a_line(measure, command_for, small, large):
    """What a line costs: the difference of two sizes, so that the start drops out."""
    return (measure(command_for(large)) - measure(command_for(small))) / (large - small)


def commands(kelcalc, limit, lines, printed):
    """For every installed contestant a function from a size to a command."""
    def ours(count):
        return write("program", program(lines, "kelcalc", count))

    yield "limit", lambda count: [limit, ours(count), str(printed)]
    yield "kelcalc", lambda count: [kelcalc, ours(count)]
    for name, (tool, language, arguments, head, tail) in PEERS.items():
        path = os.path.realpath(shutil.which(tool) or "") if name != "Python" else sys.executable
        if os.path.isfile(path):
            yield name, lambda count, p=path, a=arguments, g=language, h=head, t=tail: [
                p, *a, write("program", program(lines, g, count, h, t))]


def compare(kelcalc, limit, measure, unit, sizes, only):
    for workload, (lines, printed) in WORKLOADS.items():
        if only and only != workload:
            continue
        costs = {name: a_line(measure, command, *sizes)
                 for name, command in commands(kelcalc, limit, lines, printed)}
        peers = {name: cost for name, cost in costs.items() if name not in ("limit", "kelcalc")}
        fastest = min(peers, key=peers.get)
        print(f"\n{workload}: {unit} a line, and as a multiple of kelcalc's")
        for name, cost in sorted(costs.items(), key=lambda item: item[1]):
            print(f"  {name:12} {cost:12,.2f} {cost / costs['kelcalc']:8.2f}")
        print(f"  kelcalc is {costs['kelcalc'] / peers[fastest]:.2f} of the fastest peer ({fastest}), "
              f"{costs['kelcalc'] / costs['limit']:.2f} of the limit", flush=True)


def letters(first, number, length):
    """A name of so many letters, another one for every number."""
    name = first
    while len(name) < length:
        name += string.ascii_letters[number % 52]
        number //= 52
    return name


def names(kelcalc):
    """What names cost, by their length and their number; the limits are goals."""
    print("\nvariables by the length of their names: instructions for a line that defines two, reads "
          "two and adds (at most 1,900), and for the first definition of one (at most 1,500)")
    start = instructions([kelcalc, write("program", "")])
    for length in (4, 8, 12, 20):
        for count in (1000, 100_000):
            pairs = [(letters("a", i, length), letters("b", i, length)) for i in range(count // 2)]
            define = "".join(f"1.5 {a} :\n2.25 {b} :\n" for a, b in pairs)
            used = [pairs[7 * i % len(pairs)] for i in range(2000)]
            lines = "".join(f"1.5 {a} : 2.25 {b} : {a} {b} + \\\n" for a, b in used)
            base, more = [instructions([kelcalc, write("program", text)])
                          for text in (define, define + lines)]
            print(f"  {length:2} letters, {count:7,} names {(more - base) / len(used):8,.0f} "
                  f"{(base - start) / count:8,.0f}", flush=True)


def growth(kelcalc):
    print("\nten times the text: how many times the processor time (10 is linear)")
    for workload, (lines, _) in WORKLOADS.items():
        few = 5_000_000 // len(lines(0)["kelcalc"]) // BLOCK * BLOCK
        spent = [seconds([kelcalc, write("program", program(lines, "kelcalc", count))])
                 for count in (few, 10 * few)]
        print(f"  {workload:12} {spent[0]:7.2f} s {spent[1]:7.2f} s {spent[1] / spent[0]:6.1f}")
    print("\nthe variable table: instructions to define one more variable, to read the oldest, the "
          "latest, to define the oldest again")
    start = instructions([kelcalc, write("program", "")])
    for count in (1000, 10_000, 100_000):
        define = "".join(f"1 v{i} :\n" for i in range(count))
        again = "".join(f"1 v{i} :\n" for i in range(2000 if count > 2000 else count))
        base, *more = [instructions([kelcalc, write("program", define + extra)]) for extra in
                       ("", "v0 \\\n" * 2000, f"v{count - 1} \\\n" * 2000, again)]
        repeats = (2000, 2000, min(2000, count))
        each = " ".join(f"{(m - base) / r:10,.0f}" for m, r in zip(more, repeats))
        print(f"  {count:7,} variables {(base - start) / count:10,.0f} {each}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kelcalc", type=os.path.abspath)
    parser.add_argument("limit", type=os.path.abspath)
    parser.add_argument("--times", action="store_true", help="processor time as well, and growth")
    parser.add_argument("--only", choices=WORKLOADS, help="one workload")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        compare(options.kelcalc, options.limit, instructions, "instructions", (SMALL, LARGE),
                options.only)
        if not options.only:
            names(options.kelcalc)
        if options.times:
            compare(options.kelcalc, options.limit, lambda command: seconds(command) * 1e6,
                    "microseconds", (TIMED_SMALL, TIMED_LARGE), options.only)
            growth(options.kelcalc)
        os.chdir("/")


if __name__ == "__main__":
    main()
