#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the animated logo, a kestrel hovering over a hill, and writes logo.bin beside this script.

File: width, height, frames, colours (16 bits each), then the colours as blue, green, red, 0, then each frame
as rows of one byte a pixel, bottom-up, padded to 4 bytes. With an argument, the frames are also written there
as PPM files.
"""
import math
import pathlib
import struct
import sys

WIDTH, HEIGHT, FRAMES, COLORS = 130, 174, 16, 248
SLICES = 4  # lines drawn for each pixel row; across, coverage is exact

# Everything is drawn in units of one pixel, y downwards.


def mix(a, b, t):
    t = min(1.0, max(0.0, t))
    return tuple(a[i] + (b[i] - a[i]) * t for i in range(3))


def coverage(polygon, width=WIDTH, height=HEIGHT):
    """The covered part of each pixel, {row: [parts]}, even-odd."""
    rows = {}
    top = max(0, int(min(y for _, y in polygon)))
    bottom = min(height, int(max(y for _, y in polygon)) + 1)
    for row in range(top, bottom):
        parts = [0.0] * width
        for slice_number in range(SLICES):
            y = row + (slice_number + 0.5) / SLICES
            crossings = []
            for (x0, y0), (x1, y1) in zip(polygon, polygon[1:] + polygon[:1]):
                if (y0 <= y) != (y1 <= y):
                    crossings.append(x0 + (y - y0) * (x1 - x0) / (y1 - y0))
            crossings.sort()
            for left, right in zip(crossings[::2], crossings[1::2]):
                left, right = max(0.0, left), min(float(width), right)
                for column in range(int(left), min(width, int(right) + 1)):
                    part = min(right, column + 1) - max(left, column)
                    if part > 0:
                        parts[column] += part / SLICES
        rows[row] = parts
    return rows


def fill(picture, polygon, color, opacity=1.0):
    for row, parts in coverage(polygon).items():
        line = picture[row]
        for column, part in enumerate(parts):
            if part > 0:
                line[column] = mix(line[column], color, part * opacity)


def smooth(points, steps=6):
    """A closed curve through the points."""
    curve = []
    count = len(points)
    for i in range(count):
        p0, p1, p2, p3 = (points[(i + k - 1) % count] for k in range(4))
        for step in range(steps):
            t = step / steps
            curve.append(tuple(
                0.5 * (2 * p1[d] + (p2[d] - p0[d]) * t + (2 * p0[d] - 5 * p1[d] + 4 * p2[d] - p3[d]) * t * t
                       + (3 * p1[d] - p0[d] - 3 * p2[d] + p3[d]) * t ** 3) for d in (0, 1)))
    return curve


def ellipse(x, y, a, b, turn=0.0):
    c, s = math.cos(turn), math.sin(turn)
    angles = [2 * math.pi * i / 40 for i in range(40)]
    return [(x + a * math.cos(t) * c - b * math.sin(t) * s, y + a * math.cos(t) * s + b * math.sin(t) * c)
            for t in angles]


def landscape():
    """What does not move."""
    top, middle, low = (58, 96, 158), (138, 176, 214), (250, 222, 178)
    picture = []
    for y in range(HEIGHT):
        t = y / (HEIGHT * 0.78)
        sky = mix(top, middle, t / 0.6) if t < 0.6 else mix(middle, low, (t - 0.6) / 0.4)
        line = []
        for x in range(WIDTH):
            glow = math.exp(-((x - 96) ** 2 + (y - 118) ** 2) / 1500.0)
            line.append(mix(sky, (255, 244, 214), 0.75 * glow))
        picture.append(line)
    fill(picture, ellipse(96, 118, 9, 9), (255, 250, 232), 0.9)
    for cloud, opacity in (((22, 40, 19, 3.4), 0.42), ((34, 43.5, 17, 2.8), 0.36), ((108, 62, 20, 3.0), 0.36),
                           ((96, 65, 15, 2.2), 0.30)):
        fill(picture, ellipse(*cloud), (255, 255, 255), opacity)
    hills = (
        ((128, 150, 184), 128, 5, 0.052, 0.4), ((98, 128, 142), 136, 6, 0.041, 2.1),
        ((72, 104, 84), 146, 5, 0.060, 4.0), ((52, 80, 52), 156, 4, 0.047, 0.9))
    for color, base, swell, pace, start in hills:
        ridge = [(x, base - swell * math.sin(x * pace + start) - 1.6 * math.sin(x * pace * 2.7 + start))
                 for x in range(-2, WIDTH + 4, 2)]
        fill(picture, [(-2, HEIGHT + 2)] + ridge + [(WIDTH + 2, HEIGHT + 2)], color)
    return picture


def grass(picture, phase):
    """Blades in the wind that the bird stands against."""
    for i in range(46):
        x = -4 + i * 3.05
        length = 12 + 7 * math.sin(i * 1.7) ** 2
        bend = 3.0 + 2.4 * math.sin(phase + i * 0.55)
        foot = HEIGHT + 1
        shade = mix((30, 54, 32), (78, 112, 52), 0.5 + 0.5 * math.sin(i * 2.3))
        fill(picture, [(x - 1.1, foot), (x - bend * 0.4, foot - length * 0.6), (x - bend, foot - length),
                       (x - bend * 0.4 + 1.1, foot - length * 0.6), (x + 1.1, foot)], shade)


def place(points, shoulder, angle, span, chord):
    """Wing coordinates (along the span, forward) turned to `angle` degrees above the horizon to the left."""
    a = math.radians(angle)
    along, forward = (-math.cos(a), -math.sin(a)), (math.sin(a), -math.cos(a))
    return [(shoulder[0] + u * span * along[0] + v * chord * forward[0],
             shoulder[1] + u * span * along[1] + v * chord * forward[1]) for u, v in points]


WING = [(0.0, 0.42), (0.22, 0.60), (0.42, 0.66), (0.68, 0.46), (1.0, -0.10), (0.86, -0.20), (0.78, -0.36),
        (0.66, -0.44), (0.50, -0.56), (0.34, -0.58), (0.16, -0.56), (0.0, -0.50)]
WING_TIP = [(0.56, 0.56), (0.68, 0.46), (1.0, -0.10), (0.86, -0.20), (0.78, -0.36), (0.66, -0.44), (0.56, -0.50),
            (0.60, 0.0)]
WING_EDGE = [(0.0, 0.42), (0.22, 0.60), (0.42, 0.66), (0.68, 0.46), (1.0, -0.10), (0.70, 0.34), (0.42, 0.52),
             (0.2, 0.46), (0.0, 0.30)]


def wing(picture, shoulder, angle, span, chord, near):
    light, dark, edge = ((186, 106, 58), (62, 46, 44), (216, 150, 96)) if near else \
        ((132, 78, 52), (48, 38, 40), (150, 98, 68))
    fill(picture, smooth(place(WING, shoulder, angle, span, chord)), light)
    if near:
        for u in (0.16, 0.30, 0.44):
            for v in (0.26, -0.02, -0.30):
                x, y = place([(u + 0.03 * v, v)], shoulder, angle, span, chord)[0]
                fill(picture, ellipse(x, y, 1.5, 0.9, math.radians(angle)), (104, 58, 38), 0.8)
    fill(picture, smooth(place(WING_TIP, shoulder, angle, span, chord)), dark)
    fill(picture, smooth(place(WING_EDGE, shoulder, angle, span, chord)), edge, 0.55)
    for u in (0.66, 0.76, 0.86):
        feather = place([(u, 0.30 - (u - 0.6)), (u + 0.03, -0.30 + (u - 0.6) * 0.4), (u + 0.05, -0.28)], shoulder, angle,
                        span, chord)
        fill(picture, feather, (126, 104, 92) if near else (84, 68, 62), 0.7)


def tail(picture, x, y, spread):
    """A fan pointing down to the left: slate blue, a black band, a white edge."""
    def fan(near, far, color, width=1.0):
        points = []
        for radius, order in ((near, range(9)), (far, range(8, -1, -1))):
            for i in order:
                angle = math.radians(140 + (i - 4) / 4 * spread * width)
                reach = radius * (1 - 0.06 * abs(i - 4) / 4)
                points.append((x + reach * math.cos(angle), y + reach * math.sin(angle)))
        fill(picture, points, color)
    fan(2, 36, (240, 234, 224))
    fan(2, 33.5, (38, 36, 44))
    fan(2, 28, (126, 140, 160))
    for i in range(-3, 4):
        angle = math.radians(140 + i / 4 * spread)
        end = (x + 27 * math.cos(angle), y + 27 * math.sin(angle))
        fill(picture, [(x, y), (end[0] - 0.5, end[1]), (end[0] + 0.5, end[1])], (92, 104, 124), 0.6)


def bird(picture, frame):
    beat = 2 * math.pi * frame / (FRAMES / 2)
    drift = 2 * math.pi * frame / FRAMES
    x, y = 68 + 0.8 * math.sin(drift), 80 + 1.8 * math.sin(drift + 0.6) - 1.2 * math.sin(beat)
    raised = 48 + 27 * math.sin(beat)
    wing(picture, (x + 5, y - 7), raised + 24, 52 - 5 * math.cos(beat), 22, near=False)
    tail(picture, x - 13, y + 13, 17 + 3 * math.sin(beat + 1))
    fill(picture, smooth([(x + 15, y - 17), (x + 21, y - 8), (x + 18, y + 3), (x + 7, y + 13), (x - 8, y + 19),
                          (x - 19, y + 20), (x - 14, y + 10), (x - 5, y - 1), (x + 4, y - 12)]), (226, 190, 140))
    fill(picture, smooth([(x + 15, y - 17), (x + 10, y - 8), (x + 2, y + 3), (x - 8, y + 13), (x - 20, y + 20),
                          (x - 16, y + 10), (x - 7, y - 2), (x + 3, y - 13)]), (178, 98, 54))
    for i in range(11):
        t = i / 10
        fill(picture, ellipse(x + 17 - 20 * t + 2.2 * (i % 2), y - 6 + 21 * t - 1.4 * (i % 3), 0.8, 1.7, 0.5),
             (104, 66, 44), 0.8)
    for dx in (0.0, 4.5):  # tucked feet
        fill(picture, smooth([(x - 3 + dx, y + 16), (x - 1 + dx, y + 20), (x - 5 + dx, y + 22), (x - 6 + dx, y + 18)]),
             (226, 178, 62))
    # The head stays still while the body works: that is what hovering is for.
    hx, hy = 68 + 19, 80 - 19
    fill(picture, smooth([(hx - 9, hy + 2), (hx - 6, hy - 6), (hx + 1, hy - 8.5), (hx + 7, hy - 4.5), (hx + 8, hy + 1),
                          (hx + 4, hy + 7), (hx - 4, hy + 10), (hx - 9, hy + 8)]), (136, 146, 164))
    fill(picture, smooth([(hx + 3, hy + 1.5), (hx + 7.5, hy + 1), (hx + 5, hy + 7), (hx - 1, hy + 10), (hx - 2, hy + 5)]),
         (242, 228, 204))
    fill(picture, smooth([(hx + 3.0, hy + 0.5), (hx + 4.8, hy + 1), (hx + 4.0, hy + 6.5), (hx + 2.3, hy + 6)]),
         (60, 60, 74))
    fill(picture, smooth([(hx + 6.6, hy - 3), (hx + 10, hy - 2.2), (hx + 12, hy + 0.6), (hx + 11.2, hy + 3.4),
                          (hx + 9.6, hy + 1.6), (hx + 7, hy + 1.4)]), (66, 70, 84))
    fill(picture, ellipse(hx + 7.4, hy - 1.2, 1.5, 1.5), (238, 196, 66))
    fill(picture, ellipse(hx + 3.2, hy - 2.2, 2.3, 2.2), (238, 196, 66))
    fill(picture, ellipse(hx + 3.4, hy - 2.1, 1.75, 1.7), (24, 20, 22))
    fill(picture, ellipse(hx + 4.0, hy - 2.8, 0.6, 0.6), (255, 255, 255))
    wing(picture, (x + 1, y - 4), raised, 58 - 5 * math.cos(beat), 25, near=True)


def draw(frame, ground):
    picture = [list(line) for line in ground]
    bird(picture, frame)
    grass(picture, 2 * math.pi * frame / FRAMES)
    return [[tuple(int(channel + 0.5) for channel in pixel) for pixel in line] for line in picture]


def choose_colors(pictures):
    """Median cut over all frames."""
    counts = {}
    for picture in pictures:
        for line in picture:
            for pixel in line:
                counts[pixel] = counts.get(pixel, 0) + 1
    boxes = [list(counts.items())]

    def widest(box):
        return max((max(p[c] for p, _ in box) - min(p[c] for p, _ in box), c) for c in range(3))

    while len(boxes) < COLORS:
        index = max(range(len(boxes)), key=lambda i: widest(boxes[i])[0] * math.sqrt(sum(n for _, n in boxes[i])) ** 0.5)
        box = boxes.pop(index)
        channel = widest(box)[1]
        box.sort(key=lambda item: item[0][channel])
        half, passed = sum(n for _, n in box) / 2, 0
        for cut, (_, n) in enumerate(box):
            passed += n
            if passed >= half:
                break
        cut = min(max(cut, 1), len(box) - 1)
        boxes += [box[:cut], box[cut:]]
    colors = []
    for box in boxes:
        total = sum(n for _, n in box)
        colors.append(tuple(round(sum(p[c] * n for p, n in box) / total) for c in range(3)))
    return sorted(set(colors), key=sum)


def index_picture(picture, colors, known):
    rows = []
    for line in reversed(picture):
        row = bytearray()
        for pixel in line:
            if pixel not in known:
                known[pixel] = min(range(len(colors)),
                                   key=lambda i: sum((colors[i][c] - pixel[c]) ** 2 for c in range(3)))
            row.append(known[pixel])
        rows.append(bytes(row).ljust((WIDTH + 3) // 4 * 4, b"\0"))
    return b"".join(rows)


def main():
    ground = landscape()
    pictures = [draw(frame, ground) for frame in range(FRAMES)]
    if len(sys.argv) > 1:
        for number, picture in enumerate(pictures):
            data = bytes(channel for line in picture for pixel in line for channel in pixel)
            pathlib.Path(sys.argv[1], f"logo-{number:02}.ppm").write_bytes(b"P6 %d %d 255\n" % (WIDTH, HEIGHT) + data)
    colors = choose_colors(pictures)
    known = {}
    data = struct.pack("<4H", WIDTH, HEIGHT, FRAMES, len(colors))
    data += b"".join(bytes((b, g, r, 0)) for r, g, b in colors)
    data += b"".join(index_picture(picture, colors, known) for picture in pictures)
    pathlib.Path(__file__).with_name("logo.bin").write_bytes(data)


main()
