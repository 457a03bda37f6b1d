#!/usr/bin/env python3
"""The page in a browser: it draws, it moves, and everything is where it should be."""

import pathlib
import sys

from selenium.webdriver import Keys

from browser import Browser

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "terminal"))
import process

ONE_OF_EACH = """p(0,0,0) here : p(4,0,0) east : p(0,2,0) north : p(4,2,3) high : v(1,1,1) wind :
r(0,0,1,90) spin : m(1,0,0,2, 0,1,0,1, 0,0,-1,1) frame : s(1,1,1) size :
42 answer : "<b>&</script>" words : p(1e99,0,0) far : """

CHOSEN = "return document.querySelector('tr.selected button').textContent;"

# A copy of the canvas, because reading the page's own would make the browser say something.
COPY = """
    const canvas = document.createElement("canvas");
    const drawn = document.getElementById("canvas");
    [canvas.width, canvas.height] = [drawn.width, drawn.height];
    const context = canvas.getContext("2d", {willReadFrequently: true});
    context.drawImage(drawn, 0, 0);"""

# The part of the canvas' pixels that is not paper, and a number that changes with any of them.
PIXELS = COPY + """
    const data = context.getImageData(0, 0, canvas.width, canvas.height).data;
    let inked = 0, sum = 0;
    for (let i = 0; i < data.length; i += 4) {
      if (data[i] !== data[0] || data[i + 1] !== data[1] || data[i + 2] !== data[2]) ++inked;
      sum = (sum * 31 + data[i] + 7 * data[i + 1] + 13 * data[i + 2]) % 1000000007;
    }
    return [inked / (canvas.width * canvas.height), sum, [...data.slice(0, 3)]];"""


class PageTest(process.ProcessTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = cls.enterClassContext(Browser())

    def setUp(self):
        super().setUp()
        self.addCleanup(lambda: self.assertEqual(self.browser.get_log("browser"), []))

    def open(self, program):
        self.assertEqual(process.run("--view", "picture.html", text=program), (0, "", ""))
        self.browser.open(pathlib.Path("picture.html").resolve())
        return self.browser.run("return [kelview.camera.width, kelview.camera.height];")

    def camera(self, field):
        return self.browser.run(f"return kelview.camera.{field};")

    def spot(self, x, y, z):
        """Where a place of the world, which has its origin and unit in the picture, is seen."""
        return self.browser.run(f"return kelview.camera.project({x}, {y}, {z});")[:2]

    def names(self):
        return {name["text"]: name for name in self.browser.run("return kelview.scene.names;")}

    def near(self, name, spot, reach=45):
        self.assertLess(abs(name["x"] - spot[0]) - name["width"] / 2, reach)
        self.assertLess(abs(name["y"] - spot[1]), reach)
        box = [name["x"] - name["width"] / 2, name["y"] - name["height"] / 2, name["width"],
               name["height"]]
        written = self.browser.run(COPY + f"""
            const data = context.getImageData(...{box}.map(c => c * devicePixelRatio)).data;
            return data.filter((c, i) => i % 4 === 2 && c < 90).length;""")
        self.assertGreater(written, 20, "nothing is written there")

    def test_things_and_names_are_where_they_should_be(self):
        width, height = self.open(ONE_OF_EACH)
        self.assertGreater(self.browser.run(PIXELS)[0], 0.01)
        self.browser.press("z")  # from above: x runs to the right, y upwards, both alike
        here, east, north, high = (self.spot(*at) for at in
                                   ((0, 0, 0), (4, 0, 0), (0, 2, 0), (4, 2, 3)))
        scale = (east[0] - here[0]) / 4
        self.assertGreater(scale, height / 20)
        for spot, x, y in (east, 4, 0), (north, 0, 2), (high, 4, 2):
            self.assertAlmostEqual(spot[0], here[0] + scale * x, delta=0.01)
            self.assertAlmostEqual(spot[1], here[1] - scale * y, delta=0.01)
            self.assertEqual(self.browser.run(COPY + f"""
                const at = [{spot[0]}, {spot[1]}].map(c => Math.round(c * devicePixelRatio));
                return [...context.getImageData(...at, 1, 1).data];"""), [26, 26, 26, 255])
        names = self.names()
        for name, spot in (("east", east), ("north", north), ("high", high),
                           ("wind", [here[0] + scale, here[1] - scale])):
            self.near(names[name], spot)
        self.assertNotIn("far", names)
        self.browser.press("x")  # along x, from its positive end: y runs to the right, z upwards
        here, high = self.spot(0, 0, 0), self.spot(4, 2, 3)
        self.assertAlmostEqual((high[0] - here[0]) / 2, (here[1] - high[1]) / 3, delta=0.01)
        self.assertGreater(high[0], here[0])
        self.near(self.names()["high"], high)

    def test_it_turns_pans_and_zooms(self):
        width, height = self.open(ONE_OF_EACH)
        middle = (int(width / 2), int(height / 2))
        aside = (middle[0] + 80, middle[1] + 20)
        browser = self.browser
        fingers = [((middle[0] + side * 40, middle[1]), (middle[0] + side * 90, middle[1]))
                   for side in (-1, 1)]
        rows = [
            # what a person does, what it changes, what it leaves
            (lambda: browser.drag((middle, aside)), "around", "target"),
            (lambda: browser.drag((middle, aside), kind="touch"), "above", "zoom"),
            (lambda: browser.drag((middle, aside), shift=True), "target", "around"),
            (lambda: browser.scroll(middle, -300), "zoom", "around"),
            (lambda: browser.drag(*fingers, kind="touch"), "zoom", "above"),
            (lambda: browser.press(Keys.ARROW_LEFT), "around", "target"),
            (lambda: browser.press("+"), "zoom", "around"),
            (lambda: browser.press("p"), "perspective", "target"),
        ]
        for number, (act, changed, left) in enumerate(rows):
            with self.subTest(row=number, changed=changed):
                before = self.camera(changed), self.camera(left), browser.run(PIXELS)[1]
                act()
                self.assertNotEqual(self.camera(changed), before[0])
                self.assertEqual(self.camera(left), before[1])
                self.assertNotEqual(browser.run(PIXELS)[1], before[2], "nothing moved")
        browser.press("p", "0")
        self.assertEqual([self.camera("zoom"), self.camera("around")], [1, -60])

    def test_names_find_things_and_things_find_names(self):
        width, height = self.open(ONE_OF_EACH)
        rows = self.browser.run("""return [...document.querySelectorAll("#values tr")].map(row =>
            [row.querySelector("button").textContent, row.innerText.includes("not drawn")]);""")
        self.assertEqual([name for name, _ in rows], "here east north high wind spin frame size "
                         "answer words far".split())
        self.assertEqual([name for name, told in rows if told], ["answer", "words", "far"])
        self.browser.run("document.querySelectorAll('#values button')[3].click();")
        self.browser.settle()
        spot = self.spot(4, 2, 3)
        self.assertAlmostEqual(spot[0], width / 2, delta=0.5)
        self.assertAlmostEqual(spot[1], height / 2, delta=0.5)
        self.assertEqual(self.browser.run(CHOSEN), "high")
        self.browser.press("0")
        east = [int(c) for c in self.spot(4, 0, 0)]
        self.browser.drag((east, east))
        self.assertEqual(self.browser.run(CHOSEN), "east")
        self.browser.run("""const search = document.getElementById("search");
            search.value = "o"; search.dispatchEvent(new Event("input"));""")
        self.assertEqual(self.browser.run("""return [...document.querySelectorAll(
            "#values tr:not([hidden]) button")].map(button => button.textContent);"""),
                         ["north", "words"])

    def test_light_dark_and_empty(self):
        self.open("1 2 ")
        drawn, _, light = self.browser.run(PIXELS)
        self.assertEqual(drawn, 0)
        self.assertIn("none of the 2 values",
                      self.browser.run("return document.getElementById('message').innerText;"))
        self.browser.press("t")
        dark = self.browser.run(PIXELS)[2]
        self.assertGreater(sum(light), 700)
        self.assertLess(sum(dark), 100)

    def test_ten_thousand_points(self):
        self.open("".join(f"p({i % 100},{i // 100},{i % 7}) " for i in range(10000)))
        self.assertEqual(self.browser.run("return kelview.picture.dots.length;"), 10000)
        names = list(self.names().values())
        self.assertGreater(len(names), 10)
        for number, a in enumerate(names):
            for b in names[:number]:
                self.assertTrue(abs(a["x"] - b["x"]) * 2 >= a["width"] + b["width"] or
                                abs(a["y"] - b["y"]) * 2 >= a["height"] + b["height"])
        self.browser.run("kelview.find(5050);")  # in the thick of them
        self.browser.settle()
        self.assertIn("stack 4949", self.names())
        self.assertEqual(self.browser.run(CHOSEN), "stack 4949")


if __name__ == "__main__":
    process.main()
