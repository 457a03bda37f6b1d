#!/usr/bin/env python3
"""Drawings as pixels and models as the format's own validator sees them.

A third argument is the folder that holds node_modules.
"""

import json
import pathlib
import struct
import subprocess
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "terminal"))
import process

MODULES = pathlib.Path(sys.argv[3]).resolve()
VALIDATE = """
const {readFileSync} = require("fs");
require(process.argv[1]).validateBytes(new Uint8Array(readFileSync(process.argv[2])))
  .then(report => console.log(JSON.stringify(report)));"""
ONE_OF_EACH = """p(3,1,2) corner : v(2,0,1) wind : r(0,0,1,120) spin : q(2,0,0,1) long :
m(1,0,0,-3, 0,1,0,-2, 0,0,1,1) frame : m(1.5,0,0,3, 0,1,0,-3, 0,0,-1,0) mirror : s(2,3,1) size :
42 answer : """

PAPER, DOT, AMBER, RED, BLUE = ((255,) * 3, (26,) * 3, (217, 140, 0), (209, 52, 27), (0, 98, 176))


def picture(name, program):
    assert process.run("--view", name, text=program) == (0, "", "")
    return pathlib.Path(name)


class Pixels:
    def __init__(self, drawing):
        png = subprocess.run(["rsvg-convert", drawing], check=True, capture_output=True).stdout
        ppm = subprocess.run(["pngtopnm"], input=png, check=True, capture_output=True).stdout
        header, self.data = ppm.split(b"\n255\n", 1)
        self.width, self.height = (int(number) for number in header.split()[1:3])

    def at(self, x, y):
        start = 3 * (round(y) * self.width + round(x))
        return tuple(self.data[start:start + 3])

    def like(self, colour, left, right):
        """The pixels of `colour` between two columns: how many, and the middle of them."""
        spots = [(x, y) for y in range(self.height) for x in range(left, right)
                 if max(abs(a - b) for a, b in zip(self.at(x, y), colour)) < 24]
        middle = [sum(c) / max(1, len(spots)) for c in zip(*spots)]
        return len(spots), middle


class RenderTest(process.ProcessTest):
    def test_a_drawing_in_pixels(self):
        pixels = Pixels(picture("a.svg", "v(0,0,4) up : v(3,0,0) side : p(0,0,-1) low : "))
        self.assertEqual(pixels.at(1, 1), PAPER)
        count, [dot_x, dot_y] = pixels.like(DOT, 0, 690)
        self.assertGreater(count, 40)
        count, [arrow_x, arrow_y] = pixels.like(AMBER, 0, 690)
        self.assertGreater(count, 800)
        count, [z_x, _] = pixels.like(BLUE, 0, 690)
        self.assertAlmostEqual(z_x, dot_x, delta=30)
        self.assertLess(arrow_y, dot_y - 40)
        self.assertGreater(arrow_x, dot_x + 10)
        for colour in RED, BLUE:  # the axes with their letters
            self.assertGreater(pixels.like(colour, 0, 690)[0], 30)
        self.assertGreater(pixels.like(DOT, 710, pixels.width)[0], 100, "the table")

    def test_an_empty_drawing_says_so(self):
        for program in "", "1 2 \"a\" ":
            drawing = picture("a.svg", program)
            self.assertIn("Nothing to draw", drawing.read_text())
            self.assertGreater(Pixels(drawing).like(DOT, 100, 600)[0], 100)

    def test_models_are_valid(self):
        rows = [
            ONE_OF_EACH, "", "1 ", "p(0,0,0) ", "v(1e-300,0,2e-300) ", "p(1e300,0,0) v(0,-1e300,0) ",
            "p(1e6,1e6,1e6) p(1000001,1e6,1e6) ", "s(0,0,2) ", "s(1e-9,1,1) ", "r(0,0,1,1e-9) ",
            "m(0,0,0,1, 0,0,0,1, 0,0,0,1) ", "m(1,0,0,0, 0,1,0,0, 0,0,-1e-9,0) ",
            "v(1,0,0) v(1e-12,0,0) ", "p(1,2,3) " * 600,
        ]
        for program in rows:
            with self.subTest(program=program):
                model = picture("a.glb", program)
                done = subprocess.run(["node", "-e", VALIDATE, MODULES / "gltf-validator", model],
                                      check=True, capture_output=True, timeout=120)
                issues = json.loads(done.stdout)["issues"]
                self.assertEqual((issues["numErrors"], issues["numWarnings"]), (0, 0), issues)

    def test_a_model_names_its_things_and_puts_them_in_the_world(self):
        data = picture("a.glb", ONE_OF_EACH.replace("p(3,1,2)", "p(30,10,20)")).read_bytes()
        length, = struct.unpack_from("<I", data, 12)
        model = json.loads(data[20:20 + length])
        nodes = {node["name"]: node for node in model["nodes"]}
        self.assertEqual(list(nodes), ["picture", "grid and axes", "corner", "wind", "spin", "long",
                                       "frame", "mirror", "size"])
        root = nodes["picture"]
        place = [root["scale"][0] * c for c in nodes["corner"]["translation"]]
        for found, expected in zip(place, (30, 10, 20)):
            self.assertAlmostEqual(found, expected, places=3)
        turned = [place[0], place[2], -place[1]]  # what the root's rotation makes of it
        self.assertAlmostEqual(root["rotation"][0], -0.5 ** 0.5)
        self.assertEqual(turned[1], place[2], "z becomes y, which is up")
        wind = model["meshes"][nodes["wind"]["mesh"]]["primitives"][0]["attributes"]["POSITION"]
        reach = [c * root["scale"][0] for c in model["accessors"][wind]["max"]]
        self.assertAlmostEqual(reach[2], 1.0, delta=0.35)
        self.assertEqual(nodes["mirror"]["extras"]["note"], "axes 1.5, 1, 1; mirrored")
        self.assertEqual(model["scenes"][0]["extras"]["notDrawn"][0]["name"], "answer")


if __name__ == "__main__":
    process.main()
