# SPDX-License-Identifier: MIT
"""OpenCV's side of the timing harness: the nearest operations to each effect, 8 bits a channel in and out. Maps of
coordinates are computed with NumPy."""
import math

import cv2
import numpy

from peer_child import add, serve

cv2.setNumThreads(1)
GRAY = (127, 127, 127)


def read_frames(raw, width, height, count):
    return list(numpy.frombuffer(raw, numpy.uint8).reshape(count, height, width, 3).copy())


def both(job, operation, prepare):
    """`prepare` gets the first frame and whether the settings are the heavy ones."""
    for variant, heavy in (("default", False), ("heavy", True)):
        add(job, variant, operation, lambda frames, heavy=heavy: prepare(frames[0], heavy))


def emboss(image, heavy):
    side, spread = (51, 4.5) if heavy else (15, 0.5)
    y, x = numpy.mgrid[0:side, 0:side] - side // 2
    matrix = numpy.exp(-(x * x + y * y) / spread ** 2) * numpy.where((x >= 0) & (y >= 0), 8, -8)
    matrix[x == -y] = 0
    matrix = (matrix / matrix.sum()).astype(numpy.float32)
    return lambda: cv2.filter2D(image, cv2.CV_8U, matrix)


def smear(image, heavy):
    taps, spread = (601, 50) if heavy else (11, 25)
    step = math.sqrt(0.5)
    side = int((taps - 1) * step) + 1
    matrix = numpy.zeros((side, side), numpy.float32)
    for i in range(taps):
        matrix[side - 1 - int(i * step), int(i * step)] += math.exp(-i * i / (2 * spread ** 2))
    matrix /= matrix.sum()
    return lambda: cv2.filter2D(image, cv2.CV_8U, matrix, anchor=(0, side - 1), borderType=cv2.BORDER_REPLICATE)


def mean_of_warps(image, matrices, border):
    height, width = image.shape[:2]

    def run():
        total = numpy.zeros(image.shape, numpy.uint16)
        for matrix in matrices:
            warped = cv2.warpAffine(image, matrix, (width, height), flags=cv2.INTER_NEAREST | cv2.WARP_INVERSE_MAP,
                                    borderMode=border, borderValue=GRAY)
            cv2.add(total, warped, total, dtype=cv2.CV_16U)
        cv2.convertScaleAbs(total, alpha=1 / len(matrices))
    return run


def radial_blur(image, heavy):
    height, width = image.shape[:2]
    angle = 45 if heavy else 5
    count = int(math.sqrt(math.hypot(width / 2, height / 2)) * math.radians(angle) * 4 + 2)
    turns = numpy.linspace(-angle / 2, angle / 2, count)
    matrices = [cv2.getRotationMatrix2D((width / 2, height / 2), turn, 1) for turn in turns]
    return mean_of_warps(image, matrices, cv2.BORDER_CONSTANT)


def zoom_blur(image, heavy):
    height, width = image.shape[:2]
    shares = 1 - 0.024 * numpy.arange(40 if heavy else 8)
    matrices = [numpy.float64([[s, 0, width / 2 * (1 - s)], [0, s, height / 2 * (1 - s)]]) for s in shares]
    return mean_of_warps(image, matrices, cv2.BORDER_REPLICATE)


def from_middle(image):
    height, width = image.shape[:2]
    x = numpy.arange(width, dtype=numpy.float64)[None, :] - width / 2
    y = numpy.arange(height, dtype=numpy.float64)[:, None] - height / 2
    return x, y, width, height


def ripple_map(image, heavy):
    x, y, width, height = from_middle(image)
    amplitude, length = (80, 4) if heavy else (25, 12)
    distance = numpy.sqrt(x * x + y * y)
    shift = numpy.sin(distance / length * (2 * math.pi) + 1.8) * amplitude
    if not heavy:
        shift *= (1 - distance / math.hypot(width / 2, height / 2)) * 0.15
    column = numpy.clip(x + width / 2 + shift, 0, width - 1)
    row = numpy.clip(y + height / 2 + shift, 0, height - 1)
    return column.astype(numpy.float32), row.astype(numpy.float32)


def swirl_map(image, heavy):
    x, y, width, height = from_middle(image)
    stretch = width / height
    y = y * stretch
    share = 1 - numpy.sqrt(x * x + y * y) / (width / 2)
    turn = numpy.where(share > 0, share * share, 0) * math.radians(1440 if heavy else 45)
    sine, cosine = numpy.sin(turn), numpy.cos(turn)
    column = cosine * x - sine * y + width / 2
    row = (sine * x + cosine * y) / stretch + height / 2
    return column.astype(numpy.float32), row.astype(numpy.float32)


def implosion_map(image, power):
    x, y, width, height = from_middle(image)
    stretch = width / height
    wide = y * stretch
    share = numpy.minimum(numpy.sqrt(x * x + wide * wide) / (width / 2), 1)
    factor = numpy.power(numpy.maximum(numpy.sin(share * (math.pi / 2)), 1e-9), -power)
    return (factor * x + width / 2).astype(numpy.float32), (factor * y + height / 2).astype(numpy.float32)


def distortion(job, make_map):
    def move(image, maps):
        cv2.remap(image, *maps, cv2.INTER_LINEAR, borderMode=cv2.BORDER_CONSTANT, borderValue=GRAY)

    both(job, "map, remap", lambda image, heavy: lambda: move(image, make_map(image, heavy)))

    def keep(frames):
        maps = make_map(frames[0], False)
        return lambda: move(frames[0], maps)
    add(job, "default", "^remap", keep)


def water_drops(image, heavy):
    height, width = image.shape[:2]
    reach = 12 if heavy else 5
    random = numpy.random.default_rng(1)

    def run():
        shifts = random.integers(0, reach, (2, height, width), numpy.uint8).astype(numpy.float32) - reach // 2
        shifts[0] += numpy.arange(width, dtype=numpy.float32)
        shifts[1] += numpy.arange(height, dtype=numpy.float32)[:, None]
        cv2.remap(image, shifts[0], shifts[1], cv2.INTER_NEAREST, borderMode=cv2.BORDER_REPLICATE)
    return run


def glass_block(image, heavy):
    height, width = image.shape[:2]
    size = 64 if heavy else 20

    def places(side):
        place = numpy.arange(side, dtype=numpy.float32)
        start = (place + size) // (2 * size) * (2 * size)
        return numpy.minimum(start + 2 * (place - start), side - 1)

    def run():
        columns, rows = numpy.meshgrid(places(width), places(height))
        cv2.remap(image, columns, rows, cv2.INTER_NEAREST)
    return run


def obscure(image, heavy):
    height, width = image.shape[:2]
    side = 64 if heavy else 8
    few = (-(-width // side), -(-height // side))
    return lambda: cv2.resize(cv2.resize(image, few, interpolation=cv2.INTER_AREA), (width, height),
                              interpolation=cv2.INTER_NEAREST)


def hsb(image, heavy):
    levels = numpy.arange(256)
    shares = (1, 1.4, 1.2) if heavy else (1, 1, 1)
    tables = numpy.stack([numpy.clip(levels * share, 0, 255) for share in shares], axis=-1)
    tables[:, 0] = (levels + (14 if heavy else 0)) % 256
    table = tables.astype(numpy.uint8)[None]
    return lambda: cv2.cvtColor(cv2.LUT(cv2.cvtColor(image, cv2.COLOR_BGR2HSV_FULL), table), cv2.COLOR_HSV2BGR_FULL)


def raster(image, heavy):
    size, density = (8, 255) if heavy else (1, 160)
    rows = image.shape[0] // (2 * size) * (2 * size)

    def run():
        result = image.copy()
        lines = result[:rows].reshape(-1, 2 * size, *image.shape[1:])[:, :size]
        lines[...] = cv2.convertScaleAbs(lines.reshape(-1, image.shape[1] * 3), alpha=(255 - density) / 255,
                                         beta=127 * density / 255).reshape(lines.shape)
    return run


def solarize(image, heavy):
    flat = image.reshape(image.shape[0], -1)
    threshold = 255 if heavy else 128
    return lambda: cv2.bitwise_xor(flat, cv2.compare(flat, threshold, cv2.CMP_LT))


def neon(image):
    line, ones = numpy.float32([[-1, 0, 1]]), numpy.ones((1, 3), numpy.float32)

    def run():
        across = cv2.sepFilter2D(image, cv2.CV_32F, line, ones, borderType=cv2.BORDER_REPLICATE)
        down = cv2.sepFilter2D(image, cv2.CV_32F, ones, line, borderType=cv2.BORDER_REPLICATE)
        cv2.convertScaleAbs(cv2.magnitude(across, down), alpha=1 / 1.8)
    return run


def normalize(image):
    def run():
        counts = numpy.cumsum(cv2.calcHist([cv2.cvtColor(image, cv2.COLOR_BGR2GRAY)], [0], None, [256], [0, 256]))
        low, high = numpy.searchsorted(counts, [counts[-1] * 0.01, counts[-1] * 0.99])
        table = numpy.clip((numpy.arange(256) - low) * 255 / max(high - low, 1), 0, 255).astype(numpy.uint8)
        cv2.LUT(image, table)
    return run


def supercompression(frames):
    def run():
        shown = frames[0].copy()
        for frame in frames[1:]:
            differs = cv2.compare(shown.reshape(len(shown), -1), frame.reshape(len(frame), -1), cv2.CMP_NE)
            mask = cv2.transform(differs.reshape(shown.shape), numpy.ones((1, 3), numpy.float32))
            cv2.copyTo(frame, mask, shown)
    return run


both("emboss", "filter2D", emboss)
both("motion-blur", "filter2D", smear)
both("gaussian-blur", "GaussianBlur, fixed point",
     lambda image, heavy: lambda: cv2.GaussianBlur(image, (11, 11) if heavy else (5, 5), 4.5 if heavy else 0.5))
both("radial-blur", "warpAffine, add", radial_blur)
both("zoom-blur", "warpAffine, add", zoom_blur)
both("water-drops", "random map, remap", water_drops)
both("glass-block", "map, remap", glass_block)
both("obscure", "resize twice", obscure)
both("hsb-channels", "HSV, LUT, BGR", hsb)
both("raster", "copy, convertScaleAbs", raster)
both("solarize", "compare, xor", solarize)
distortion("ripple", ripple_map)
distortion("swirl", swirl_map)
distortion("implode", lambda image, heavy: implosion_map(image, 1.0 if heavy else 0.5))
distortion("explode", lambda image, heavy: implosion_map(image, -1.0 if heavy else -0.5))
BUMP = numpy.float32([[-1, -1, 0], [-1, 1, 1], [0, 1, 1]])
add("bump", "default", "filter2D",
    lambda frames: lambda: cv2.filter2D(frames[0], cv2.CV_8U, BUMP, borderType=cv2.BORDER_REPLICATE))
add("neon", "default", "sepFilter2D, magnitude", lambda frames: neon(frames[0]))
add("normalize", "default", "calcHist, LUT", lambda frames: normalize(frames[0]))
add("scaler", "default", "resize, area",
    lambda frames: lambda: cv2.resize(frames[0], (424, frames[0].shape[0] * 424 // frames[0].shape[1]),
                                      interpolation=cv2.INTER_AREA))
add("diff", "default", "compare, copyTo", supercompression)
if hasattr(cv2, "xphoto"):
    both("oil-painting", "xphoto.oilPainting",
         lambda image, heavy: lambda: cv2.xphoto.oilPainting(image, 6 if heavy else 5, 1))
serve(read_frames)
