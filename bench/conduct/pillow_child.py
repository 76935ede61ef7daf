# SPDX-License-Identifier: MIT
"""Pillow's side of the timing harness."""
from PIL import Image, ImageFilter, ImageOps

from peer_child import add, serve


def read_frames(raw, width, height, count):
    size = 3 * width * height
    return [Image.frombytes("RGB", (width, height), raw[i * size:(i + 1) * size], "raw", "BGR") for i in range(count)]


def first(work):
    return lambda frames: lambda: work(frames[0])


def each(work):
    return lambda frames: lambda: [work(frame) for frame in frames]


def sheet(frames):
    """All frames below each other, so that one palette serves them all."""
    width, height = frames[0].size
    whole = Image.new("RGB", (width, height * len(frames)))
    for number, frame in enumerate(frames):
        whole.paste(frame, (0, number * height))
    return whole


def quantize(method):
    def prepare(frames):
        whole = sheet(frames)
        return lambda: whole.quantize(256, method=method, dither=Image.Dither.NONE)
    return prepare


def remap(dither):
    def prepare(frames):
        colors = sheet(frames).quantize(256, method=Image.Quantize.MEDIANCUT).getpalette()

        def run():
            palette = Image.new("P", (1, 1))  # a new one each time: it keeps what was looked up
            palette.putpalette(colors)
            for frame in frames:
                frame.quantize(palette=palette, dither=dither)
        return run
    return prepare


BUMP = ImageFilter.Kernel((3, 3), (-1, -1, 0, -1, 1, 1, 0, 1, 1), 1)
add("bump", "default", "Kernel 3 x 3", first(lambda image: image.filter(BUMP)))
for variant, threshold in (("default", 128), ("heavy", 255)):
    table = [255 - c if c < threshold else c for c in range(256)] * 3
    add("solarize", variant, "point", first(lambda image, table=table: image.point(table)))
for variant, side in (("default", 8), ("heavy", 64)):
    add("obscure", variant, "reduce, resize",
        first(lambda image, side=side: image.reduce(side).resize(image.size, Image.Resampling.NEAREST)))
for variant, distance in (("default", 5), ("heavy", 12)):
    add("water-drops", variant, "effect_spread",
        first(lambda image, distance=distance: image.effect_spread(distance)))
add("normalize", "default", "autocontrast", first(lambda image: ImageOps.autocontrast(image, cutoff=1)))
IDENTITY = list(range(256)) * 3
add("hsb-channels", "heavy", "HSV, point, RGB",
    first(lambda image: image.convert("HSV").point(IDENTITY).convert("RGB")))
add("scaler", "default", "resize, Lanczos",
    first(lambda image: image.resize((424, image.height * 424 // image.width), Image.Resampling.LANCZOS)))
add("quantize", "default", "FASTOCTREE", quantize(Image.Quantize.FASTOCTREE))
add("quantize", "default", "MEDIANCUT", quantize(Image.Quantize.MEDIANCUT))
add("remap-fast", "default", "quantize(palette)", remap(Image.Dither.NONE))
add("dither-fast", "default", "quantize(palette), dithered", remap(Image.Dither.FLOYDSTEINBERG))
serve(read_frames)
