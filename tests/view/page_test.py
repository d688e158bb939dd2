#!/usr/bin/env python3
"""Uses pages of gsl-sweep --view in a browser as people do.

usage: page_test.py GSL_SWEEP EXAMPLE_MESHES PICTURES

PICTURES is a folder for pictures of the pages. GSL_MESH_DIR names a folder of real meshes, if there is one.
"""

import json
import math
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import chromium

SWEEP, MESHES, PICTURES = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
REAL = [
    ("pump", "nist_pump_base.stl nist_insert.stl --offset 0.1,0.05,0.5 -d 0.1,0,-1"),
    ("sword", "sword.obj koala.obj --offset 0,6,0 -d -y"),
    ("koala", "koala.obj nefertiti_lowres.obj --offset 0,300,0 -d -y"),
    ("gear", "cycloidal.ply featuretype.stl idler_riser.stl --offset 0,0,40 -d -z"),
]


def write_box(path, low, high, more=""):
    corners = [[(low, high)[k >> axis & 1][axis] for axis in range(3)] for k in range(8)]
    faces = [(1, 3, 4, 2), (5, 6, 8, 7), (1, 2, 6, 5), (3, 7, 8, 4), (1, 5, 7, 3), (2, 4, 8, 6)]
    with open(path, "w") as file:
        file.writelines(f"v {x!r} {y!r} {z!r}\n" for x, y, z in corners)
        file.writelines("f {} {} {} {}\n".format(*face) for face in faces)
        file.write(more)


def is_moving(pixel):
    return pixel[0] - pixel[2] > 60


def is_fixed(pixel):
    return pixel[2] - pixel[0] > 40


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.work = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.work.name)
        cls.browser = chromium.Browser()
        cls.browser.size(1280, 800)
        cls.browser.prefer("light")
        PICTURES.mkdir(parents=True, exist_ok=True)

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.work.cleanup()

    def sweep(self, arguments, folder=MESHES, name="page"):
        """Writes the page of a question and opens it; it must open without a complaint."""
        page = self.folder / f"{name}.html"
        words = arguments if isinstance(arguments, list) else arguments.split()
        done = subprocess.run([SWEEP, *words, "--view", page, "--force", "--quiet"], cwd=folder, capture_output=True)
        self.assertIn(done.returncode, (0, 1), done.stderr)
        self.browser.open(page)
        self.assert_silent()
        return page

    def assert_silent(self):
        self.assertEqual(self.browser.problems, [])
        self.assertEqual(len(self.browser.requests), 1)  # the page itself

    def tearDown(self):
        self.assert_silent()

    def text(self, element):
        return self.browser.run(f"document.getElementById('{element}').textContent")

    def travel(self):
        return float(self.browser.run("document.getElementById('travel').getAttribute('aria-valuetext')"))

    def focus(self, element):
        self.browser.run(f"document.getElementById('{element}').focus()")

    def press(self, element):
        self.browser.run(f"document.getElementById('{element}').click()")
        self.browser.settle()

    def canvas(self):
        """Returns the rows of pixels of the picture, four times smaller."""
        box = self.browser.run("(({x, y, width, height}) => ({x, y, width, height}))"
                               "(document.getElementById('canvas').getBoundingClientRect())")
        return chromium.pixels(self.browser.picture(**box, scale=0.25))[1]

    def row_of_moving(self):
        """Returns the mean row of the pixels of the moving body."""
        rows = [k for k, row in enumerate(self.canvas()) for pixel in row if is_moving(pixel)]
        self.assertGreater(len(rows), 20)
        return sum(rows) / len(rows)

    def assert_both_bodies(self, rows=None):
        pixels = [pixel for row in rows or self.canvas() for pixel in row]
        self.assertGreater(sum(map(is_moving, pixels)), 20)
        self.assertGreater(sum(map(is_fixed, pixels)), 20)

    def test_the_slider_moves_the_body(self):
        self.sweep("bolt.stl bracket.stl -d -z")
        self.assertEqual(self.text("headline"), "Contact after 30")
        self.assertEqual(self.travel(), 30)
        end = self.row_of_moving()
        self.focus("travel")
        self.browser.key("Home")
        self.assertEqual(self.travel(), 0)
        start = self.row_of_moving()
        self.assertLess(start, end - 10)  # it travels down
        for key, shift, travel in (("ArrowRight", False, 0.3), ("ArrowRight", True, 0.33), ("ArrowLeft", False, 0.03),
                                   ("PageUp", False, 3.03), ("PageDown", False, 0.03), ("Home", False, 0)):
            self.browser.key(key, shift=shift)
            self.assertAlmostEqual(self.travel(), travel)
        self.browser.run("(s => { s.value = 500; s.dispatchEvent(new Event('input')); })"
                         "(document.getElementById('travel'))")
        self.browser.settle()
        self.assertEqual(self.travel(), 15)
        self.assertEqual(self.text("travel-text"), "15")
        self.assertTrue(start < self.row_of_moving() < end)
        self.browser.key("End")
        self.assertEqual(self.travel(), 30)
        self.assertAlmostEqual(self.row_of_moving(), end, delta=0.5)

    def test_it_plays_to_the_contact(self):
        self.sweep("bolt.stl bracket.stl -d -z")
        self.focus("canvas")
        self.browser.key(" ", "Space")
        self.assertEqual(self.text("play"), "Pause")
        self.browser.wait("document.getElementById('travel').value < 900")
        self.browser.wait("document.getElementById('play').textContent === 'Play'")
        self.assertEqual(self.travel(), 30)

    def test_keys_mouse_and_touch_turn_the_view(self):
        self.sweep("bolt.stl bracket.stl -d -z")
        before = self.canvas()
        self.focus("canvas")
        for key in ("ArrowLeft", "ArrowUp", "+"):
            self.browser.key(key)
            self.assertNotEqual(after := self.canvas(), before, key)
            before = after
        self.browser.drag(400, 400, 120, 40)
        self.assertNotEqual(after := self.canvas(), before)
        before = after
        for kind, x in (("touchStart", 400), ("touchMove", 450), ("touchMove", 500)):
            self.browser.call("Input.dispatchTouchEvent", type=kind, touchPoints=[{"x": x, "y": 400}])
        self.browser.call("Input.dispatchTouchEvent", type="touchEnd", touchPoints=[])
        self.browser.settle()
        self.assertNotEqual(after := self.canvas(), before)
        before = after
        self.browser.call("Input.dispatchMouseEvent", type="mouseWheel", x=400, y=400, deltaX=0, deltaY=-300)
        self.browser.settle()
        self.assertNotEqual(self.canvas(), before)
        self.press("view-all")
        seen = [self.canvas()]
        for view in ("c", "s", "d", "x"):
            self.browser.key(view)
            self.assertNotIn(self.canvas(), seen)
            seen.append(self.canvas())

    def test_bodies_can_be_hidden(self):
        self.sweep("bolt.stl bracket.stl -d -z")
        self.browser.run("document.querySelector('#legend input').click()")
        self.browser.settle()
        self.assertEqual(sum(is_moving(pixel) for row in self.canvas() for pixel in row), 0)

    def test_the_numbers_are_copied(self):
        self.browser.call("Browser.grantPermissions", permissions=["clipboardReadWrite", "clipboardSanitizedWrite"])
        self.sweep("bolt.stl bracket.stl -d -z --patch")
        self.press("copy")
        self.browser.wait("document.getElementById('copied').textContent === 'Copied.'")
        lines = self.browser.run("navigator.clipboard.readText()").splitlines()
        for line in ("Contact after 30", "Lengths are in the units of the files.", "status: contact", "travel: 30",
                     "direction: (0, 0, -1)", "kind: vertex-face", "normal: (0, 0, 1)", "rule: touch",
                     "moving: bolt.stl, triangle 120 of 288, at (6.5, 1.7417000532150269, 30)",
                     "fixed: bracket.stl, triangle 0 of 252, at (6.5, 1.7417000532150269, 0)",
                     "patch: 364 pairs of triangles"):
            self.assertIn(line, lines)
        self.assertTrue(any(line.startswith("version: ") for line in lines))

    def answers(self, arguments, folder=MESHES):
        """Returns the document of the same question, as the program writes it."""
        done = subprocess.run([SWEEP, *arguments.split(), "--json", "-"], cwd=folder, capture_output=True)
        return json.loads(done.stdout)

    def chosen(self):
        return int(self.browser.run("document.documentElement.dataset.direction"))

    def place_of(self, direction):
        """Returns where a direction is on the sphere, in the page, and whether it is on the front."""
        return self.browser.run(
            f"(([right, up, front]) => {{ const canvas = document.getElementById('sphere');"
            f" const box = canvas.getBoundingClientRect(); const radius = 0.5 * (box.width - 36);"
            f" return [box.x + box.width / 2 + radius * right, box.y + box.height / 2 - radius * up, front]; }})"
            f"(document.getElementById('sphere').dataset.axes.split(';').map((axis) => axis.split(',').map(Number))"
            f".map((axis) => axis.reduce((sum, number, k) => sum + number * {list(direction)}[k], 0)))")

    def click(self, x, y):
        for kind in ("mousePressed", "mouseReleased"):
            self.browser.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left", buttons=1, clickCount=1)
        self.browser.settle()

    def sphere_pixels(self):
        """Returns the pixels of the sphere as the canvas has them."""
        return self.browser.run("(c => [...c.getContext('2d').getImageData(0, 0, c.width, c.height).data])"
                                "(document.getElementById('sphere'))")

    def assert_shows(self, answer, number, count):
        """Checks that the page shows an answer: its number, its travel, the slider and the table."""
        self.assertEqual(self.chosen(), number)
        touches = answer["status"] != "none"
        rows = dict(self.browser.run(
            "[...document.querySelectorAll('#numbers tr')].map((row) => [row.firstChild.textContent, "
            "[...row.lastChild.children].map((line) => line.textContent)])"))
        self.assertEqual(rows["status"], [answer["status"]])
        self.assertEqual(float(rows["travel"][0]) if touches else rows["travel"][0],
                         answer["travel"] if touches else "none")
        self.assertEqual([float(number) for number in rows["direction"][0].strip("()").split(", ")],
                         answer["direction"])
        self.assertEqual("kind" in rows, touches)
        if touches:
            self.assertEqual(rows["kind"], [answer["kind"]])
            self.assertIn(f"triangle {answer['moving']['triangle']} of ", rows["moving"][1])
            self.assertIn(f"triangle {answer['fixed']['triangle']} of ", rows["fixed"][1])
            self.assertEqual(self.travel(), answer["travel"])
        else:
            self.assertEqual(self.travel(), 0)
        about = self.browser.run("(c => [c.getAttribute('aria-valuenow'), c.getAttribute('aria-valuetext')])"
                                 "(document.getElementById('sphere'))")
        self.assertEqual(about[0], str(number + 1))
        self.assertTrue(about[1].startswith(f"direction {number + 1} of {count}, ("), about)

    def test_a_click_on_the_sphere_chooses_the_direction(self):
        question = "bolt.stl bracket.stl --sphere 400"
        told = self.answers(question)
        self.sweep(question, name="sphere")
        answers = told["answers"]
        self.assert_shows(answers[told["greatest"]], told["greatest"], 400)
        (PICTURES / "sphere.png").write_bytes(self.browser.picture())
        # Directions of both kinds, well on the front.
        front = [k for k, answer in enumerate(answers) if self.place_of(answer["direction"])[2] > 0.4]
        touching = [k for k in front if answers[k]["status"] == "contact" and k != told["greatest"]]
        free = [k for k in front if answers[k]["status"] == "none"]
        self.assertTrue(touching and free)
        before, sphere = self.canvas(), self.sphere_pixels()
        for number in (touching[0], free[0], touching[-1]):
            x, y, _ = self.place_of(answers[number]["direction"])
            self.click(x, y)
            self.assert_shows(answers[number], number, 400)
            self.assertNotEqual(after := self.canvas(), before)
            self.assertNotEqual(ring := self.sphere_pixels(), sphere)
            self.assert_both_bodies(after)
            before, sphere = after, ring
        # Beside the sphere nothing is chosen.
        box = self.browser.run("(({x, y}) => [x, y])(document.getElementById('sphere').getBoundingClientRect())")
        self.click(box[0] + 6, box[1] + 6)
        self.assertEqual(self.chosen(), touching[-1])

    def test_the_body_is_at_the_contact_of_the_chosen_direction(self):
        # The small box is 4 above a wide plate.
        write_box(self.folder / "above.obj", (0.0, 0.0, 5.0), (1.0, 1.0, 6.0))
        write_box(self.folder / "below.obj", (-9.0, -9.0, 0.0), (9.0, 9.0, 1.0))
        self.sweep(f"{self.folder / 'above.obj'} {self.folder / 'below.obj'} --sphere 20", name="boxes")
        self.focus("sphere")
        self.browser.key("Home")  # the last direction, nearly down
        self.assertEqual(self.chosen(), 19)
        self.assertAlmostEqual(self.travel(), 4 / 0.95)
        end = self.row_of_moving()
        self.focus("travel")
        self.browser.key("Home")
        self.assertLess(start := self.row_of_moving(), end - 10)
        self.browser.key("End")
        self.assertAlmostEqual(self.row_of_moving(), end, delta=0.5)
        self.focus("sphere")
        self.browser.key("PageDown")  # another direction down: it is at that contact
        self.assertGreater(self.travel(), 4 / 0.95)
        self.assertEqual(self.text("play"), "Play")
        self.assertEqual(self.browser.run("document.getElementById('travel').value"), "1000")
        self.browser.key("Home")
        self.browser.key("PageUp")  # the first direction, up: it is free, and starts where it is
        self.assertEqual((self.chosen(), self.travel()), (0, 0))
        self.assertGreater(start, 0)

    def test_keys_choose_directions_on_the_sphere(self):
        question = "bolt.stl bracket.stl --sphere 400"
        told = self.answers(question)
        answers = told["answers"]
        self.sweep(question)
        self.focus("sphere")
        for key in ("ArrowLeft", "ArrowUp", "ArrowRight", "ArrowDown"):
            before = self.chosen()
            from_x, from_y, _ = self.place_of(answers[before]["direction"])
            self.browser.key(key)
            number = self.chosen()
            self.assert_shows(answers[number], number, 400)
            near = sum(a * b for a, b in zip(answers[before]["direction"], answers[number]["direction"]))
            self.assertGreater(near, 0.95, key)  # a neighbour: 400 directions are about 0.18 apart
            self.assertLess(near, 0.999)
        for key, number in (("Home", told["least"]), ("PageUp", told["least"] + 1), ("PageDown", told["least"]),
                            ("End", told["greatest"])):
            self.browser.key(key)
            self.assert_shows(answers[number], number, 400)
            self.assertGreater(self.place_of(answers[number]["direction"])[2], 0, "its half is shown")
        # Many steps up end at the pole, and the half with the direction is always shown.
        halves = set()
        for _ in range(40):
            self.browser.key("ArrowUp")
            self.assertGreater(self.place_of(answers[self.chosen()]["direction"])[2], 0)
            halves.add(self.text("half"))
        self.assertEqual(len(halves), 2)
        self.assertLess(self.chosen(), 30)  # the highest of all are the first

    def test_arrow_keys_go_where_they_point(self):
        self.sweep("bolt.stl bracket.stl --sphere 400")
        answers = self.answers("bolt.stl bracket.stl --sphere 400")["answers"]
        for _ in range(2):
            # Near the middle of either half, left is left.
            middle = max(range(400), key=lambda k: self.place_of(answers[k]["direction"])[2])
            x, y, _ = self.place_of(answers[middle]["direction"])
            for key, right, up in (("ArrowLeft", -1, 0), ("ArrowRight", 1, 0), ("ArrowUp", 0, 1), ("ArrowDown", 0, -1)):
                self.click(x, y)
                self.assertEqual(self.chosen(), middle)
                self.focus("sphere")
                self.browser.key(key)
                to_x, to_y, _ = self.place_of(answers[self.chosen()]["direction"])
                self.assertGreater((to_x - x) * right + (y - to_y) * up, 5, key)
            self.press("turn-over")

    def test_the_other_half_has_the_other_directions(self):
        self.sweep("bolt.stl bracket.stl --sphere 400")
        answers = self.answers("bolt.stl bracket.stl --sphere 400")["answers"]
        chosen, camera, sphere = self.chosen(), self.canvas(), self.sphere_pixels()
        front = [self.place_of(answer["direction"])[2] for answer in answers[::7]]
        self.focus("sphere")
        for press in (lambda: self.press("turn-over"), lambda: self.browser.key("o")):
            press()
            self.assertEqual(self.chosen(), chosen)
            self.assertNotEqual(seen := self.sphere_pixels(), sphere)
            sphere = seen
            self.assertEqual(self.canvas(), camera)
            turned = [self.place_of(answer["direction"])[2] for answer in answers[::7]]
            self.assertEqual(turned, [-number for number in front])
            front = turned
        self.press("turn-over")
        number = max(range(400), key=lambda k: self.place_of(answers[k]["direction"])[2])
        x, y, _ = self.place_of(answers[number]["direction"])
        self.click(x, y)
        self.assertEqual(self.chosen(), number)

    def test_dragging_the_sphere_turns_it_with_the_picture(self):
        self.sweep("bolt.stl bracket.stl --sphere 400")
        chosen = self.chosen()
        before, sphere = self.canvas(), self.sphere_pixels()
        x, y, _ = self.place_of([0, 0, 1])
        self.browser.drag(x, y + 60, 50, -20)
        self.assertEqual(self.chosen(), chosen)
        self.assertNotEqual(self.canvas(), before)
        self.assertNotEqual(turned := self.sphere_pixels(), sphere)
        self.focus("canvas")
        self.browser.key("ArrowLeft")
        self.assertNotEqual(self.sphere_pixels(), turned)

    def test_the_sphere_has_the_colours_of_its_answers(self):
        # Seated: in contact from the start below, and after a travel above.
        question = "bolt.stl bracket.stl --offset 0,0,-30 --leaving --sphere 200"
        answers = self.answers(question)["answers"]
        for preferred in ("dark", "light"):
            self.browser.prefer(preferred)
            self.sweep(question, name="seated")
            (PICTURES / f"sphere-{preferred}.png").write_bytes(self.browser.picture())
            data = self.sphere_pixels()
            width = self.browser.run("document.getElementById('sphere').width")
            box = self.browser.run("(({x, y}) => [x, y])(document.getElementById('sphere').getBoundingClientRect())")
            counts = {"start": 0, "contact": 0}
            for answer in answers:
                x, y, front = self.place_of(answer["direction"])
                if front < 0.5:
                    continue
                near = []  # the dots of the start are bright
                for dx in range(-3, 4):
                    at = 4 * (int(y - box[1]) * width + int(x - box[0]) + dx)
                    near.append(sum(data[at:at + 3]))
                dark = sum(light < 60 for light in near)
                counts[answer["status"]] += (dark >= 3) == (answer["status"] == "start")
            total = {s: sum(a["status"] == s and self.place_of(a["direction"])[2] >= 0.5 for a in answers)
                     for s in counts}
            for status in counts:
                self.assertGreater(total[status], 5)
                self.assertGreaterEqual(counts[status], 0.8 * total[status], status)  # some have a name on them
            self.assertEqual(self.text("count-start"), f"{sum(a['status'] == 'start' for a in answers)} of 200")
            self.assertIn("logarithmic", self.text("scale-name"))
            self.expect_ticks()
        self.browser.prefer("light")

    def expect_ticks(self):
        """Round travels are marked on the bar where they belong, and no number covers another."""
        low, high = (float(self.text(name).removeprefix("\u2264 ")) for name in ("scale-low", "scale-high"))
        marks = self.browser.run("[...document.querySelectorAll('#scale-bar i')].map((i) => parseFloat(i.style.left))")
        self.assertGreater(len(marks), 2)
        self.assertEqual(marks, sorted(marks))
        labels = self.browser.run("[...document.querySelectorAll('.tick')].map((i) => [i.textContent, i.style.left])")
        self.assertGreater(len(labels), 0)
        for text, left in labels:
            part = math.log(float(text) / low) / math.log(high / low)
            self.assertAlmostEqual(float(left.removesuffix("%")), 100 * part, delta=0.01)
            self.assertIn(float(left.removesuffix("%")), marks)
        edges = self.browser.run("[...document.querySelectorAll('#scale-numbers span')].map((i) => "
                                 "[i.getBoundingClientRect().left, i.getBoundingClientRect().right])")
        edges.sort()
        for one, next_one in zip(edges, edges[1:]):
            self.assertLess(one[1], next_one[0])

    def test_spheres_of_every_question_open(self):
        for options in ("--sphere 1", "--sphere 2", "--sphere 50 --last", "--sphere 50 --solid",
                        "--sphere 50 --clearance 2", "--sphere 50 --max-distance 12",
                        "--sphere 50 --offset 0,0,-31", "--sphere 5000"):
            with self.subTest(options):
                told = self.answers(f"bolt.stl bracket.stl {options}")
                self.sweep(f"bolt.stl bracket.stl {options}")
                self.assertEqual(self.chosen(), told["greatest"] or 0)
                self.assertEqual(self.browser.run("document.getElementById('directions').hidden"), False)
                self.focus("sphere")
                self.browser.key("PageUp")
                self.assertEqual(self.chosen(), ((told["greatest"] or 0) + 1) % told["directions"])

    def test_triangles_that_are_left_out_do_not_shift_the_marks(self):
        write_box(self.folder / "plate.obj", (-9.0, -9.0, 0.0), (9.0, 9.0, 1.0))
        faces = "f 1 2 3\nf 1 4 2\nf 1 3 4\nf 2 4 3\n"
        corners = "v 0 0 9\nv 4 0 9\nv 0 4 9\nv 1 1 5\n"
        (self.folder / "whole.obj").write_text(corners + faces)
        (self.folder / "broken.obj").write_text(corners + "v nan 0 0\nf 1 2 5\nf 1 3 5\n" + faces)
        for question in ("-d -z", "--sphere 30"):
            seen = []
            for name in ("whole", "broken"):
                self.sweep([f"{self.folder}/{name}.obj", f"{self.folder}/plate.obj", *question.split()])
                if question != "-d -z":
                    self.focus("sphere")
                    self.browser.key("Home")
                seen.append(self.canvas())
                self.assertIn(f"triangle {1 if name == 'whole' else 3} of ", self.text("numbers"))
            self.assertEqual(*seen)

    def test_one_direction_has_no_sphere(self):
        self.sweep("bolt.stl bracket.stl -d -z")
        self.assertEqual(self.browser.run("document.getElementById('directions').hidden"), True)

    def test_light_and_dark(self):
        for preferred, other in (("dark", "light"), ("light", "dark")):
            self.browser.prefer(preferred)
            self.sweep("bolt.stl bracket.stl -d -z")
            for theme in (preferred, other):
                self.assertEqual(self.browser.run("document.documentElement.dataset.theme"), theme)
                corner = self.canvas()[0][0]
                self.assertEqual(sum(corner) > 3 * 128, theme == "light", corner)
                self.assert_both_bodies()
                self.press("theme")
        self.browser.prefer("light")

    def test_controls_have_names(self):
        self.sweep("bolt.stl bracket.stl --sphere 100")
        nodes = self.browser.call("Accessibility.getFullAXTree")["nodes"]
        controls = [node for node in nodes if node.get("role", {}).get("value") in
                    ("button", "slider", "checkbox", "application")]
        self.assertGreaterEqual(len(controls), 15)
        for node in controls:
            self.assertTrue(node.get("name", {}).get("value"), node)

    def test_a_phone_shows_everything_in_its_width(self):
        self.browser.size(390, 844, mobile=True)
        try:
            for question in ("-d -z", "--sphere 100"):
                self.sweep(f"bolt.stl bracket.stl {question}")
                self.assertEqual(self.browser.run("document.documentElement.scrollWidth"), 390)
                self.assert_both_bodies()
        finally:
            self.browser.size(1280, 800)

    def test_every_state_is_shown(self):
        write_box(self.folder / "big.obj", (0.0, 0.0, 0.0), (10.0, 10.0, 10.0))
        write_box(self.folder / "small.obj", (4.0, 4.0, 4.0), (5.0, 5.0, 5.0), "v nan 0 0\nf 1 2 9\n")
        write_box(self.folder / "huge.obj", (0.0, 0.0, 3e150), (1e150, 1e150, 4e150))
        write_box(self.folder / "huge2.obj", (0.0, 0.0, 0.0), (1e150, 1e150, 1e150))
        write_box(self.folder / "far.obj", (1.0, 1.0, 1e7), (2.0, 2.0, 1e7 + 1.0))
        for arguments, headline, row in (
            ("bolt.stl bracket.stl -d z", "No contact", "travel: none"),
            ("bolt.stl bracket.stl -d z --max-distance 9", "No contact up to a travel of 9", "greatest travel: 9"),
            ("bolt.stl bolt.stl -d z", "In contact from the start", "travel: 0"),
            ("bolt.stl bracket.stl -d -z --last", "Last contact after 43.29999923706055", "rule: touch, last"),
            ("bolt.stl bracket.stl -d -z --clearance 2", "Within 2 after 8.463259847906674", "clearance: 2"),
            ("small.obj big.obj -d -z --solid", "In contact from the start", "kind: inside"),
            ("small.obj big.obj -d -z", "Contact after 4",
             "moving: small.obj, triangle 0 of 13, at (4, 4, 4), 1 triangle with a NaN or infinite corner is left out"),
            ("huge.obj huge2.obj -d -z", f"Contact after {3e150 - 1e150!r}", "status: contact"),
            ("far.obj small.obj big.obj -d -z", "Contact after 9999990", "fixed 0: small.obj, 13 triangles"),
        ):
            with self.subTest(arguments):
                paths = [str(self.folder / word if (self.folder / word).exists() else word) for word in arguments.split()]
                self.sweep(paths)
                self.assertEqual(self.text("headline"), headline)
                rows = self.browser.run(
                    "[...document.querySelectorAll('#numbers tr')].map((row) => row.firstChild.textContent + ': ' + "
                    "[...row.lastChild.children].map((line) => line.textContent.split('/').pop()).join(', '))")
                self.assertTrue(any(row in found for found in rows), rows)
                self.assertEqual(any("not exact" in found for found in rows), "--clearance" in arguments)
                # The outer body hides the inner one.
                if arguments.startswith(("bolt.stl bracket.stl", "huge", "far")):
                    self.assert_both_bodies()

    def test_names_are_shown_as_they_are(self):
        name = "a</script><!--<script>\"'&<b>.stl"
        (self.folder / "a<").mkdir(exist_ok=True)
        (self.folder / name).write_bytes((MESHES / "bolt.stl").read_bytes())
        self.sweep([name, str(MESHES / "bracket.stl"), "-d", "-z"], self.folder)
        self.assertIn(name, self.text("numbers"))

    def test_nothing_can_be_fetched_or_run(self):
        self.sweep("bolt.stl bracket.stl -d -z")
        self.assertEqual(self.browser.run("fetch('data:,x').then(() => 'fetched', () => 'refused')"), "refused")
        self.browser.run("document.body.append(Object.assign(document.createElement('script'), "
                         "{textContent: 'window.wasRun = true'}))")
        self.assertTrue(self.browser.run("window.wasRun === undefined"))
        self.assertGreater(len(self.browser.problems), 0)
        self.browser.problems.clear()
        self.browser.requests[1:] = []

    def test_real_meshes(self):
        folder = os.environ.get("GSL_MESH_DIR")
        if not folder:
            self.skipTest("GSL_MESH_DIR is not set")
        for name, arguments in REAL:
            with self.subTest(name):
                self.sweep(arguments, folder, name)
                self.assertTrue(self.text("headline").startswith("Contact after "))
                (PICTURES / f"{name}.png").write_bytes(self.browser.picture())
                rows = self.canvas()
                self.press("view-contact")
                (PICTURES / f"{name}-contact.png").write_bytes(self.browser.picture())
                self.assert_both_bodies(rows + self.canvas())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
