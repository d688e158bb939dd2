#!/usr/bin/env python3
"""Draws the pictures of the algorithms, one SVG file for each.

usage: make_drawings.py FOLDER

The places of contacts, feet and centres are computed here from the corners, so that a picture shows what its
corners say. Blue is what moves or what is asked, orange is what is met, and red is the result.
"""

import math
import pathlib
import sys

INK, PALE, BLUE, ORANGE, RED = "#333", "#999", "#2b6cb0", "#c05621", "#c53030"
SCALE = 34.0


def flat(point):
    """Places a point of space on the paper: x to the right, y into the depth, z upwards."""
    if len(point) == 2:
        return point[0], -point[1]
    x, y, z = point
    return x + 0.50 * y, -(z + 0.32 * y)


def add(a, b, factor=1.0):
    return tuple(p + factor * q for p, q in zip(a, b))


def subtract(a, b):
    return add(a, b, -1.0)


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def cross(a, b):
    return a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]


def unit(a):
    return tuple(p / math.sqrt(dot(a, a)) for p in a)


def along(a, b, t):
    return add(a, subtract(b, a), t)


def middle(*points):
    return tuple(sum(values) / len(points) for values in zip(*points))


class Drawing:
    """Panels side by side; each has its own origin, which is given on the paper."""

    def __init__(self, width, height):
        self.width, self.height = width, height
        self.origin = (0.0, 0.0)
        self.items = []

    def panel(self, x, y, title="", left=0.0):
        self.origin = (x, y)
        if title:
            self.items.append(f'<text x="{x + left:.1f}" y="22" class="title">{title}</text>')

    def place(self, point):
        x, y = flat(point)
        return self.origin[0] + SCALE * x, self.origin[1] + SCALE * y

    def line(self, a, b, colour=INK, dashed=False, width=1.6, head=False):
        (x1, y1), (x2, y2) = self.place(a), self.place(b)
        dash = ' stroke-dasharray="5 4"' if dashed else ""
        self.items.append(f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" '
                          f'stroke-width="{width}"{dash}/>')
        if head:
            angle = math.atan2(y2 - y1, x2 - x1)
            corners = [(x2, y2)] + [(x2 - 10 * math.cos(angle + turn), y2 - 10 * math.sin(angle + turn))
                                    for turn in (0.35, -0.35)]
            self.items.append('<polygon points="' + " ".join(f"{x:.1f},{y:.1f}" for x, y in corners) +
                              f'" fill="{colour}"/>')

    def arrow(self, a, b, colour=INK, dashed=False):
        self.line(a, b, colour, dashed, head=True)

    def polygon(self, points, colour, dashed=False, opacity=0.18):
        corners = " ".join("{:.1f},{:.1f}".format(*self.place(p)) for p in points)
        dash = ' stroke-dasharray="5 4"' if dashed else ""
        self.items.append(f'<polygon points="{corners}" fill="{colour}" fill-opacity="{opacity}" stroke="{colour}" '
                          f'stroke-width="1.6" stroke-linejoin="round"{dash}/>')

    def dot(self, point, colour=RED):
        x, y = self.place(point)
        self.items.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="4" fill="{colour}"/>')

    def circle(self, points, colour):
        corners = " ".join("{:.1f},{:.1f}".format(*self.place(p)) for p in points)
        self.items.append(f'<polygon points="{corners}" fill="none" stroke="{colour}" stroke-width="1.4"/>')

    def text(self, point, words, dx=0.0, dy=0.0, colour=INK, anchor="start", style="label"):
        x, y = self.place(point)
        self.items.append(f'<text x="{x + dx:.1f}" y="{y + dy:.1f}" class="{style}" text-anchor="{anchor}" '
                          f'fill="{colour}">{words}</text>')

    def svg(self):
        style = ("text{font-family:'DejaVu Sans',Helvetica,Arial,sans-serif}.title{font-size:14px;font-weight:bold;"
                 "fill:#333}.label{font-size:14px}.note{font-size:12px}")
        return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{self.width}" height="{self.height}" '
                f'viewBox="0 0 {self.width} {self.height}">\n<style>{style}</style>\n'
                f'<rect width="{self.width}" height="{self.height}" fill="white"/>\n' + "\n".join(self.items) +
                "\n</svg>\n")


def triangle_sweep():
    """Three cases of the sweep of triangle A down onto triangle B."""
    d = Drawing(860, 330)
    # Neither is edge-on: a corner of A meets the face of B.
    d.panel(30, 250, "neither is edge-on")
    a = [(0.6, 1.2, 3.4), (3.8, 0.8, 4.4), (2.2, 3.2, 4.6)]
    b = [(0.0, 0.0, 0.0), (5.0, 0.4, 0.4), (1.6, 4.4, 0.6)]
    normal = cross(subtract(b[1], b[0]), subtract(b[2], b[0]))
    met = add(a[0], (0.0, 0.0, -dot(subtract(a[0], b[0]), normal) / normal[2]))
    d.polygon(b, ORANGE)
    d.text(b[1], "B", 6, 4, ORANGE)
    for corner in a:
        foot = add(corner, (0.0, 0.0, -dot(subtract(corner, b[0]), normal) / normal[2]))
        d.line(corner, foot, PALE, dashed=True, width=1.0)
    d.polygon(a, BLUE)
    d.text(a[2], "A", 6, -6, BLUE)
    d.arrow(a[0], met, RED)
    d.dot(a[0])
    d.dot(met)
    d.text(along(a[0], met, 0.5), "distance", -8, 0, RED, "end", "note")
    d.text((0, 0), "a corner over a face,", 0, 50, style="note")
    d.text((0, 0), "or an edge across an edge", 0, 66, style="note")

    # One is edge-on: A is a blade that stands in the direction.
    d.panel(320, 250, "one is edge-on")
    b = [(0.0, 0.0, 0.0), (5.0, 0.4, 0.4), (1.6, 4.4, 0.6)]
    normal = cross(subtract(b[1], b[0]), subtract(b[2], b[0]))
    a = [(1.2, 0.6, 4.4), (3.2, 2.2, 4.2), (1.9, 1.16, 2.4)]
    met = add(a[2], (0.0, 0.0, -dot(subtract(a[2], b[0]), normal) / normal[2]))
    d.polygon(b, ORANGE)
    d.text(b[1], "B", 6, 4, ORANGE)
    d.polygon(a, BLUE)
    d.text(a[1], "A", 6, -4, BLUE)
    d.arrow(a[2], met, RED)
    d.dot(a[2])
    d.dot(met)
    d.text(along(a[2], met, 0.5), "distance", -8, 0, RED, "end", "note")
    d.text((0, 0), "its corners over the face,", 0, 50, style="note")
    d.text((0, 0), "and its edges across the edges", 0, 66, style="note")

    # Both are edge-on, in one plane.
    d.panel(600, 250, "both are edge-on, in one plane")
    a = [(0.6, 4.6), (3.4, 5.0), (1.6, 3.0)]
    b = [(0.2, 0.0), (4.6, 0.2), (2.4, 1.4)]
    slope = (b[2][1] - b[0][1]) / (b[2][0] - b[0][0])
    met = (a[2][0], b[0][1] + slope * (a[2][0] - b[0][0]))
    d.polygon(b, ORANGE)
    d.text(b[1], "B", 6, 4, ORANGE)
    d.polygon(a, BLUE)
    d.text(a[1], "A", 6, -2, BLUE)
    d.arrow(a[2], met, RED)
    d.dot(a[2])
    d.dot(met)
    d.text(along(a[2], met, 0.5), "distance", 8, 0, RED, "start", "note")
    d.text((0, 0), "corner i against edge i, here 2;", 0, 50, style="note")
    d.text((0, 0), "none in two parallel planes", 0, 66, style="note")
    d.panel(530, 90)
    d.arrow((0.6, 1.4), (0.6, -0.4), INK)
    d.text((0.6, 0.5), "d", 8, 0)
    return d


def edge(d, centre, turned, colour, name, facing, length=1.3):
    """Draws a segment across the direction with its side normal; `turned` runs it the other way."""
    half = -length if turned else length
    first, second = add(centre, (0.0, -half)), add(centre, (0.0, half))
    d.arrow(first, second, colour)
    d.text(first, f"{name}0", 0, -8 if turned else 18, colour, "middle", "note")
    d.text(second, f"{name}1", 0, 18 if turned else -8, colour, "middle", "note")
    d.arrow(centre, add(centre, (1.1 if facing > 0 else -1.1, 0.0)), PALE)


def orientation():
    """Which way A and B must face, and what a two-sided flag allows."""
    d = Drawing(860, 260)
    # The side normal of a segment is its edge turned clockwise: an edge upwards has its normal to the right.
    for x, title, rows, words in (
            (40, "accepted", ((False, 1), (True, -1)), ("A faces along d, B against it", "(grey: the normals)")),
            (330, "A faces backwards", ((True, -1), (True, -1)), ("refused, before B is looked at,", "unless twoSided[0]")),
            (620, "B faces away", ((False, 1), (False, 1)), ("refused,", "unless twoSided[1]"))):
        d.panel(x, 130, title)
        d.arrow((0.0, 2.3), (5.2, 2.3))
        d.text((5.2, 2.3), "d", 6, 5)
        edge(d, (1.4, 0.0), rows[0][0], BLUE, "A", rows[0][1])
        edge(d, (4.2, 0.0), rows[1][0], ORANGE, "B", rows[1][1])
        d.text((0.0, -3.0), words[0], 0, 0, style="note")
        d.text((0.0, -3.0), words[1], 0, 17, style="note")
    return d


def closest_segments():
    """The shortest connection of two segments, by what lies nearest."""
    d = Drawing(860, 250)

    def case(x, title, first, second, connection, words):
        d.panel(x, 150, title)
        for ends, colour in ((first, BLUE), (second, ORANGE)):
            d.line(*ends, colour, width=2.4)
        if connection[0] == connection[1]:
            d.dot(connection[0])
        else:
            d.line(*connection, RED, dashed=True)
            d.dot(connection[0])
            d.dot(connection[1])
        d.text((0, 0), words[0], 0, 58, style="note")
        d.text((0, 0), words[1], 0, 74, style="note")

    case(30, "they cross", ((0.0, 0.0), (4.0, 2.0)), ((0.6, 2.4), (3.4, -0.4)), ((2.0, 1.0), (2.0, 1.0)),
         ("distance 0, and one new", "identity for both points"))
    # The foot of the end (2, 1.6) on the first segment, which lies along X.
    case(240, "an end and an inside", ((0.0, 0.0), (4.0, 0.0)), ((2.0, 1.2), (3.4, 2.8)), ((2.0, 0.0), (2.0, 1.2)),
         ("the end keeps its identity,", "the foot has a new one"))
    case(450, "two ends", ((0.0, 0.0), (2.0, 0.8)), ((3.2, 1.8), (4.2, 0.2)),
         min((((p, q)) for p in ((0.0, 0.0), (2.0, 0.8)) for q in ((3.2, 1.8), (4.2, 0.2))),
             key=lambda ends: math.dist(*ends)), ("both keep their identities", ""))
    d.panel(660, 150, "in space")
    first, second = ((0.0, 1.0, 0.0), (4.0, 1.0, 0.0)), ((2.0, -0.6, 2.2), (2.0, 3.6, 2.2))
    d.line(*first, BLUE, width=2.4)
    d.line(*second, ORANGE, width=2.4)
    d.line((2.0, 1.0, 0.0), (2.0, 1.0, 2.2), RED, dashed=True)
    d.dot((2.0, 1.0, 0.0))
    d.dot((2.0, 1.0, 2.2))
    d.text((0, 0), "both insides, along the", 0, 58, style="note")
    d.text((0, 0), "common normal", 0, 74, style="note")
    return d


def segment_sweep():
    """The four cases of the sweep of segment A onto segment B in a plane."""
    d = Drawing(860, 265)

    def case(x, title, a, b, travel, words):
        d.panel(x, 170, title)
        d.line(*a, BLUE, width=2.4)
        d.line(*b, ORANGE, width=2.4)
        d.text(a[0], "A", -6, 16, BLUE, "end")
        d.text(b[0], "B", 6, 16, ORANGE)
        d.arrow(*travel, RED)
        d.dot(travel[0])
        d.dot(travel[1])
        for k, line in enumerate(words):
            d.text((0, 0), line, 0, 62 + 16 * k, style="note")

    # B is the line through (3.2, 2.6) and (4.2, -0.6); A's upper end meets it at its own height.
    a, b = ((0.4, -0.4), (1.4, 1.4)), ((4.2, -0.6), (3.2, 2.6))
    t = (a[1][1] - b[0][1]) / (b[1][1] - b[0][1])
    case(30, "both across", a, b, (a[1], along(*b, t)), ("each end of A onto B,", "then each end of B onto A"))
    a, b = ((0.4, -0.6), (1.2, 2.4)), ((2.8, 0.8), (4.4, 0.8))
    t = (b[0][1] - a[0][1]) / (a[1][1] - a[0][1])
    case(240, "B along d", a, b, (along(*a, t), b[0]), ("the ends of B onto A,", "backwards too"))
    a, b = ((0.2, 0.8), (1.8, 0.8)), ((4.0, -0.6), (3.2, 2.4))
    t = (a[0][1] - b[0][1]) / (b[1][1] - b[0][1])
    case(450, "A along d", a, b, (a[1], along(*b, t)), ("the ends of A onto B,", "backwards too"))
    case(660, "both along d", ((0.0, 0.8), (1.6, 0.8)), ((3.2, 0.8), (4.8, 0.8)), ((1.6, 0.8), (3.2, 0.8)),
         ("the least of four gaps,", "if they are on one line"))
    d.panel(30, 60)
    d.arrow((0.0, 0.0), (1.6, 0.0))
    d.text((1.6, 0.0), "d", 6, 5)
    return d


def closest_on_triangle():
    """The parts of the plane, and what is nearest on the triangle from each."""
    d = Drawing(860, 360)
    d.panel(130, 300, "seen along the normal", -110)
    t = [(0.8, 0.6), (7.2, 1.6), (3.2, 5.6)]
    centre = middle(*t)
    for k in range(3):
        p, q = t[k], t[(k + 1) % 3]
        out = unit((q[1] - p[1], p[0] - q[0]))
        if dot(out, subtract(centre, p)) > 0:
            out = (-out[0], -out[1])
        for corner in (p, q):
            d.line(corner, add(corner, out, 1.5), PALE, dashed=True, width=1.0)
        start = add(along(p, q, 0.5), out, 1.3)
        d.arrow(start, along(p, q, 0.5), BLUE)
        d.dot(along(p, q, 0.5))
        d.text(start, "foot on the edge", (10, 8, -8)[k], (14, 0, 0)[k], BLUE, ("start", "start", "end")[k], "note")
    d.polygon(t, ORANGE)
    for k, name in enumerate(("p1", "p2", "p3")):
        away = unit(subtract(t[k], centre))
        start = add(t[k], away, 1.2)
        d.arrow(start, t[k], BLUE)
        d.dot(t[k])
        d.text(start, f"corner {name}", (0, 6, 0)[k], (16, 6, -6)[k], BLUE, ("middle", "start", "middle")[k], "note")
    d.text(centre, "foot on", 0, 2, anchor="middle", style="note")
    d.text(centre, "the face", 0, 18, anchor="middle", style="note")

    d.panel(540, 270, "in space")
    t = [(0.0, 0.0, 0.0), (5.0, 0.4, 0.0), (1.4, 6.0, 0.0)]
    d.polygon(t, ORANGE)
    for k, name in enumerate(("p1", "p2", "p3")):
        d.text(t[k], name, (-6, 6, 6)[k], (16, 14, -4)[k], ORANGE, ("end", "start", "start")[k], "note")
    inside = middle(*t)
    d.arrow(add(inside, (0.0, 0.0, 2.6)), inside, BLUE)
    d.dot(inside)
    d.text(add(inside, (0.0, 0.0, 2.6)), "over the face", 0, -8, BLUE, "middle", "note")
    outside = (5.6, 4.2, 1.6)
    direction = subtract(t[2], t[1])
    foot = along(t[1], t[2], dot(subtract(outside, t[1]), direction) / dot(direction, direction))
    d.arrow(outside, foot, BLUE)
    d.dot(foot)
    d.text(outside, "beside it", 0, -8, BLUE, "middle", "note")
    return d


def frame():
    """The two frames that three points define."""
    d = Drawing(860, 290)
    p = [(0.2, 0.4, 0.0), (5.2, 0.8, 0.0), (1.2, 5.6, 0.4)]
    u, w = subtract(p[1], p[0]), subtract(p[2], p[0])
    normal = unit(cross(u, w))

    def points():
        d.polygon(p, ORANGE, opacity=0.10)
        for k in range(3):
            d.dot(p[k], ORANGE)
            d.text(p[k], f"p{k}", (-8, 8, -8)[k], (14, 12, -8)[k], ORANGE, ("end", "start", "end")[k])

    def axes(origin, x, names):
        z = normal
        y = cross(z, x)
        for axis, name, shift in zip((x, y, z), names, ((6, 12), (6, -4), (8, 4))):
            tip = add(origin, axis, 1.9)
            d.arrow(origin, tip, BLUE)
            d.text(tip, name, *shift, BLUE)
        d.dot(origin)

    d.panel(60, 200, "at the first point", -30)
    points()
    axes(p[0], unit(u), ("X", "Y", "Z"))
    d.text((0, 0), "X leads to p1, Z along p0p1 x p0p2, Y is Z x X", -30, 76, style="note")

    d.panel(490, 200, "at the circumcentre", -30)
    points()
    # The centre is p0 + s u + t w, as far from p0 as from p1 and from p2.
    uu, uw, ww = dot(u, u), dot(u, w), dot(w, w)
    det = 4.0 * (uu * ww - uw * uw)
    s, t = 2.0 * (uu * ww - ww * uw) / det, 2.0 * (uu * ww - uu * uw) / det
    centre = add(add(p[0], u, s), w, t)
    radius = math.dist(centre, p[0])
    x = unit(subtract(p[0], centre))
    y = cross(normal, x)
    d.circle([add(add(centre, x, radius * math.cos(k * math.pi / 60)), y, radius * math.sin(k * math.pi / 60))
              for k in range(120)], PALE)
    d.line(centre, p[0], PALE, dashed=True, width=1.0)
    axes(centre, x, ("X", "Y", "Z"))
    d.text((0, 0), "X leads from the centre to p0, Z and Y as on the left", -30, 76, style="note")
    return d


def matrix():
    """The twelve numbers of the script method, and what they are the images of."""
    d = Drawing(860, 290)
    d.panel(60, 90, "m[row][column]", -10)
    cell_width, cell_height = 1.9, 1.1
    heads = ("X axis", "Y axis", "Z axis", "origin")
    for c in range(4):
        d.text((c * cell_width, 0.55), heads[c], 32, 0, BLUE, "middle", "note")
        for r in range(4):
            x, y = c * cell_width, -r * cell_height
            corners = [(x, y), (x + cell_width, y), (x + cell_width, y - cell_height), (x, y - cell_height)]
            d.polygon(corners, BLUE if r < 3 else PALE, opacity=0.10)
            place = (x + cell_width / 2, y - cell_height / 2)
            if r < 3:
                d.text(place, str(3 * c + r), 0, 5, RED, "middle")
            else:
                d.text(place, "0001"[c], 0, 5, PALE, "middle")
    for r in range(3):
        d.text((-0.25, -r * cell_height - cell_height / 2), "xyz"[r], 0, 5, PALE, "end")
    d.text((0.0, -4 * cell_height), "red: the place in the tuple; the last row is never in it", 0, 24, style="note")

    d.panel(560, 230, "the images of the axes and of the origin", -100)
    for tip, name, shift in (((2.0, 0.0, 0.0), "X", (6, 4)), ((0.0, 2.4, 0.0), "Y", (6, 0)), ((0.0, 0.0, 2.0), "Z", (-6, -6))):
        d.arrow((0.0, 0.0, 0.0), tip, PALE)
        d.text(tip, name, *shift, PALE)
    origin = (3.4, 1.6, 1.2)
    angle = -0.5
    images = ((math.cos(angle), math.sin(angle), 0.0), (-math.sin(angle), math.cos(angle), 0.0), (0.0, 0.0, 1.0))
    for image, name, shift in zip(images, ("0 1 2", "3 4 5", "6 7 8"), ((8, 10), (8, -2), (8, 0))):
        tip = add(origin, image, 2.0)
        d.arrow(origin, tip, BLUE)
        d.text(tip, name, *shift, RED, "start" if shift[0] > 0 else "end", "note")
    d.arrow((0.0, 0.0, 0.0), origin, RED, dashed=True)
    d.dot(origin)
    d.text(origin, "9 10 11", -8, 16, RED, "end", "note")
    return d


DRAWINGS = (triangle_sweep, orientation, closest_segments, segment_sweep, closest_on_triangle, frame, matrix)


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    folder = pathlib.Path(sys.argv[1])
    for draw in DRAWINGS:
        (folder / f"{draw.__name__}.svg").write_text(draw().svg(), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
