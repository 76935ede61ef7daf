# SPDX-License-Identifier: MIT
"""Random animations, a source file that keeps all of them, and comparisons."""
import dataclasses
import struct
import zlib

from PIL import Image, ImageCms

FOREVER = 0


@dataclasses.dataclass
class Animation:
    """What a file shows. Frames are the whole pictures, RGBA rows from the top; times are milliseconds, None where
    the file has none; plays counts the showings, None where the file does not say."""
    width: int
    height: int
    frames: list
    times: list = None
    plays: int = None
    comment: str = None
    icc: bytes = None
    exif: bytes = None
    xmp: bytes = None


class Different(Exception):
    """A comparison failed; the text says where first."""


DELAYS = ((33, 33, 17, 250), (100,), (40, 20, 70), (20,), (500, 30, 1000), (33,))


def random_animation(random, frame_count, transparency, colors=60):
    """transparency: "opaque", "holes" (pixels are shown or hidden) or "half" (every alpha). Each frame changes a part
    of the one before, now and then nothing or everything."""
    width, height = random.choice(((37, 29), (16, 16), (1, 1), (53, 7), (3, 41), (64, 48), (17, 33)))
    alphas = {"opaque": (255,), "holes": (0, 255), "half": (0, 1, 64, 127, 128, 200, 254, 255)}[transparency]
    choices = []
    for index in range(random.choice((2, 5, 16, colors))):
        alpha = alphas[index % len(alphas)]
        choices.append(bytes(random.randrange(256) for _ in range(3)) + bytes([alpha]) if alpha else bytes(4))
    if random.random() < 0.15:  # greys
        choices = [bytes([c[0], c[0], c[0], c[3]]) for c in choices]

    def paint(pixels, left, top, right, bottom):
        noisy = random.random() < 0.5
        for y in range(top, bottom):
            color = random.choice(choices)
            for x in range(left, right):
                if noisy or random.random() < 0.1:
                    color = random.choice(choices)
                pixels[y * width + x] = color

    pixels = [choices[0]] * (width * height)
    paint(pixels, 0, 0, width, height)
    frames = [b"".join(pixels)]
    while len(frames) < frame_count:
        kind = random.random()
        if kind < 0.15:
            paint(pixels, 0, 0, width, height)
        elif kind > 0.3:
            left, top = random.randrange(width), random.randrange(height)
            paint(pixels, left, top, random.randint(left + 1, width), random.randint(top + 1, height))
        frames.append(b"".join(pixels))
    delays = random.choice(DELAYS)
    return Animation(width, height, frames, [delays[i % len(delays)] for i in range(frame_count)],
                     random.choice((FOREVER, 1, 3)))


def add_metadata(random, animation):
    animation.comment = "Made for a test, %d" % random.randrange(1000)
    profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
    animation.icc = profile[:24] + bytes(12) + profile[36:]  # without the date of today
    exif = Image.Exif()
    exif[0x010E] = "picture %d" % random.randrange(1000)
    animation.exif = exif.tobytes().removeprefix(b"Exif\0\0")
    animation.xmp = b'<x:xmpmeta xmlns:x="adobe:ns:meta/"><!-- %d --></x:xmpmeta>' % random.randrange(1000)


def write_apng(path, animation):
    """Every frame whole, RGBA of 8 bits: nothing is lost and nothing merged, unlike in the files of other programs."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    stride = animation.width * 4
    parts = [b"\x89PNG\r\n\x1a\n",
             chunk(b"IHDR", struct.pack(">IIBBBBB", animation.width, animation.height, 8, 6, 0, 0, 0))]
    if animation.icc:
        parts.append(chunk(b"iCCP", b"profile\0\0" + zlib.compress(animation.icc)))
    if animation.exif:
        parts.append(chunk(b"eXIf", animation.exif))
    if animation.comment:
        parts.append(chunk(b"tEXt", b"Comment\0" + animation.comment.encode("latin-1")))
    if animation.xmp:
        parts.append(chunk(b"iTXt", b"XML:com.adobe.xmp\0\0\0\0\0" + animation.xmp))
    parts.append(chunk(b"acTL", struct.pack(">II", len(animation.frames), animation.plays)))
    sequence = 0
    for index, (frame, time) in enumerate(zip(animation.frames, animation.times)):
        parts.append(chunk(b"fcTL", struct.pack(">IIIIIHHBB", sequence, animation.width, animation.height, 0, 0, time,
                                                1000, 0, 0)))
        sequence += 1
        rows = b"".join(b"\0" + frame[i:i + stride] for i in range(0, len(frame), stride))
        if index == 0:
            parts.append(chunk(b"IDAT", zlib.compress(rows)))
        else:
            parts.append(chunk(b"fdAT", struct.pack(">I", sequence) + zlib.compress(rows)))
            sequence += 1
    parts.append(chunk(b"IEND", b""))
    path.write_bytes(b"".join(parts))


def images(animation):
    return [Image.frombytes("RGBA", (animation.width, animation.height), frame) for frame in animation.frames]


def visible(image):
    """The bytes of an RGBA picture with the colours of hidden pixels made 0: not every format keeps those."""
    shown = Image.new("RGBA", image.size)
    shown.paste(image, mask=image.getchannel("A").point(lambda alpha: 255 if alpha else 0))
    return shown.tobytes()


def shown_by(animation):
    """The animation as a viewer shows it: hidden colours are 0, equal neighbours are one frame with both times."""
    frames, times = [], []
    for index, image in enumerate(images(animation)):
        frame = visible(image)
        time = animation.times[index] if animation.times else None
        if frames and frames[-1] == frame:
            if time is not None:
                times[-1] += time
        else:
            frames.append(frame)
            if time is not None:
                times.append(time)
    return dataclasses.replace(animation, frames=frames, times=times or None)


def compare_frame(expected, found, where, width, tolerance=0):
    if len(expected) != len(found):
        raise Different("%s: %d bytes expected, %d found" % (where, len(expected), len(found)))
    if expected == found:
        return
    for index, (a, b) in enumerate(zip(expected, found)):
        if abs(a - b) > tolerance:
            pixel = index // 4
            raise Different("%s, pixel (%d, %d): %s expected, %s found" % (
                where, pixel % width, pixel // width, tuple(expected[pixel * 4:pixel * 4 + 4]),
                tuple(found[pixel * 4:pixel * 4 + 4])))


def compare(expected, found, tolerance=0, time_tolerance=0):
    """Frames, times and plays as far as the file that was found has them. time_tolerance limits by how much a frame
    may end earlier or later, counted from the start of the animation: roundings must not add up."""
    if (expected.width, expected.height) != (found.width, found.height):
        raise Different("%dx%d expected, %dx%d found" % (expected.width, expected.height, found.width, found.height))
    expected, found = shown_by(expected), shown_by(found)
    for index, (a, b) in enumerate(zip(expected.frames, found.frames)):
        compare_frame(a, b, "frame %d" % index, expected.width, tolerance)
    if len(expected.frames) != len(found.frames):
        raise Different("%d different frames expected, %d found" % (len(expected.frames), len(found.frames)))
    if expected.times and found.times:
        ends = [0, 0]
        for index, pair in enumerate(zip(expected.times, found.times)):
            ends = [end + time for end, time in zip(ends, pair)]
            if abs(ends[0] - ends[1]) > time_tolerance:
                raise Different("frame %d ends after %g ms, expected after %g" % (index, ends[1], ends[0]))
    if expected.plays is not None and found.plays is not None and expected.plays != found.plays:
        raise Different("plays %d times, expected %d (0: for ever)" % (found.plays, expected.plays))


def compare_metadata(expected, found, names):
    for name in names:
        if getattr(expected, name) != getattr(found, name):
            raise Different("%s: %r expected, %r found" % (name, getattr(expected, name), getattr(found, name)))
