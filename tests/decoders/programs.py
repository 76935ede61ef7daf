# SPDX-License-Identifier: MIT
"""What other programs see in a file."""
import base64
import io
import json
import re
import shutil
import subprocess

from PIL import GifImagePlugin, Image, ImageSequence

from animations import Animation

# Without this, palettes and transparent colours of later frames are mixed up in files with several palettes.
GifImagePlugin.LOADING_STRATEGY = GifImagePlugin.LoadingStrategy.RGB_ALWAYS

RECIPE_START = ";This is a document created by Kestrel FX #1 Plugin"


def run(*command, data=None):
    result = subprocess.run([str(part) for part in command], input=data, capture_output=True)
    if result.returncode != 0:
        raise RuntimeError("%s\nended with %d: %s" % (" ".join(str(part) for part in command), result.returncode,
                                                     result.stderr.decode("utf-8", "replace")[-2000:]))
    return result.stdout


def chunks_of_png(path):
    data = path.read_bytes()
    at = 8
    while at + 8 <= len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        yield data[at + 4:at + 8], data[at + 8:at + 8 + size]
        at += 12 + size


def is_rgb_with_transparent_color(path):
    chunks = dict(chunks_of_png(path))
    return chunks[b"IHDR"][9] == 2 and b"tRNS" in chunks


def is_lossy_webp(path):
    return b"VP8 " in path.read_bytes()


def draws_half_transparent_parts(path):
    chunks = list(chunks_of_png(path))
    return dict(chunks)[b"IHDR"][9] in (4, 6) and any(kind == b"fcTL" and data[25] == 1 for kind, data in chunks)


def flags_of_gif(path):
    """The flags of each image: disposal, and whether a colour is transparent."""
    return [flags[0] for flags in re.findall(rb"\x21\xf9\x04(.)...\x00\x2c", path.read_bytes(), re.DOTALL)]


def clears_opaque_images(path):
    return any(flags >> 2 & 7 == 2 and not flags & 1 for flags in flags_of_gif(path))


def stops_saying_disposals(path):
    disposals = [flags >> 2 & 7 for flags in flags_of_gif(path)]
    return any(before and not disposal for before, disposal in zip(disposals, disposals[1:]))


# Faults of a decoder: (decoder, which files, what it does). Another decoder takes its place there.
KNOWN_FAULTS = (
    ("pillow", is_rgb_with_transparent_color, ".apng",
     "Pillow 9.4 draws the parts of an APNG that are RGB with a transparent colour as opaque."),
    ("pillow", draws_half_transparent_parts, ".apng",
     "Pillow 9.4 multiplies the alpha of parts that are drawn over the canvas with itself."),
    ("pillow", clears_opaque_images, ".gif",
     "Pillow clears an image without a transparent colour to the background colour; browsers make it transparent."),
    ("pillow", stops_saying_disposals, ".gif",
     "Pillow 9.4 disposes of an image whose disposal is unspecified as of the one before."),
    ("ffmpeg", clears_opaque_images, ".gif", "ffmpeg does the same."),
    ("gifsicle", clears_opaque_images, ".gif", "gifsicle does the same."),
    ("ffmpeg", is_lossy_webp, ".webp",
     "ffmpeg makes RGB of lossy pictures with plain instead of interpolated colour differences."),
)


def has_known_fault(decoder, path):
    return any(name == decoder and path.suffix == ending and concerns(path)
               for name, concerns, ending, _ in KNOWN_FAULTS)


def pillow(path):
    """Any still or animation. Times and loops only of animations."""
    with Image.open(path) as image:
        form = image.format
        frames, times = [], []
        for frame in ImageSequence.Iterator(image):
            frames.append(frame.convert("RGBA").tobytes())
            times.append(frame.info.get("duration"))
        result = Animation(image.width, image.height, frames, times)
        info = image.info
        if len(frames) == 1 or None in times:
            result.times = None
        elif form == "GIF":
            # The number of repeats; without it the animation is shown once.
            result.plays = 1 if "loop" not in info else info["loop"] and info["loop"] + 1
        else:
            result.plays = info["loop"]
        comment = info.get("comment", info.get("Comment"))
        result.comment = comment.decode("latin-1") if isinstance(comment, bytes) else comment
        result.icc = info.get("icc_profile")
        result.exif = info["exif"].removeprefix(b"Exif\0\0") if "exif" in info else None
        xmp = info.get("xmp", info.get("XML:com.adobe.xmp"))
        result.xmp = xmp.encode() if isinstance(xmp, str) else xmp
        return result


def raw_frames(data, width, height):
    size = width * height * 4
    if len(data) % size:
        raise RuntimeError("%d bytes are no whole frames of %dx%d" % (len(data), width, height))
    return [data[at:at + size] for at in range(0, len(data), size)]


def ffmpeg_frames(source, *options, data=None):
    return run("ffmpeg", "-nostdin", "-v", "error", *options, "-i", source, "-vsync", "passthrough", "-pix_fmt", "rgba",
               "-f", "rawvideo", "-", data=data)


def ffmpeg(path):
    """GIF, APNG, Y4M and stills; WebP files are divided by webpmux first."""
    if path.suffix == ".webp":
        return divided_webp(path, ffmpeg_frames)
    options = {".gif": ("-ignore_loop", "1", "-min_delay", "0"), ".apng": ("-f", "apng", "-ignore_loop", "1")}.get(path.suffix, ())
    report = json.loads(run("ffprobe", "-v", "error", *options, "-show_entries",
                            "stream=width,height:packet=duration_time", "-of", "json", path))
    stream = report["streams"][0]
    frames = raw_frames(ffmpeg_frames(path, *options), stream["width"], stream["height"])
    times = None
    if path.suffix == ".y4m" or path.suffix in (".gif", ".apng") and len(frames) > 1:
        times = [float(packet["duration_time"]) * 1000 for packet in report["packets"]]
    return Animation(stream["width"], stream["height"], frames, times)


def divided_webp(path, decode_still):
    """webpmux takes the parts out of the file, decode_still makes RGBA of each, and they are drawn here."""
    text = run("webpmux", "-info", path).decode()
    width, height = map(int, re.search(r"Canvas size: (\d+) x (\d+)", text).groups())
    rows = re.findall(r"^ *(\d+): +(\d+) +(\d+) +\w+ +(\d+) +(\d+) +(\d+) +(\w+) +(\w+)", text, re.MULTILINE)
    if not rows:
        return Animation(width, height, [decode_still(path)])
    result = Animation(width, height, [], [], int(re.search(r"Loop Count : (\d+)", text).group(1)))
    canvas = Image.new("RGBA", (width, height))
    for row in rows:
        number, part_width, part_height, left, top, time = map(int, row[:6])
        dispose, blend = row[6:]
        still = path.with_name("part.webp")
        run("webpmux", "-get", "frame", number, path, "-o", still)
        part = Image.frombytes("RGBA", (part_width, part_height), decode_still(still))
        if blend == "yes":
            canvas.alpha_composite(part, (left, top))
        else:
            canvas.paste(part, (left, top))
        result.frames.append(canvas.tobytes())
        result.times.append(time)
        if dispose == "background":
            canvas.paste((0, 0, 0, 0), (left, top, left + part_width, top + part_height))
    return result


def apngdis(path):
    """apngdis writes each whole frame and its time into the file's folder."""
    folder = path.parent / (path.stem + "-apngdis")
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    copy = folder / "copy.png"
    copy.write_bytes(path.read_bytes())
    run("apngdis", copy, "frame")
    frames, times = [], []
    for picture in sorted(folder.glob("frame*.png")):
        with Image.open(picture) as image:
            size = image.size
            frames.append(image.convert("RGBA").tobytes())
        delay = picture.with_suffix(".txt")
        if delay.exists():
            parts = re.search(r"delay=(\d+)/(\d+)", delay.read_text())
            times.append(int(parts.group(1)) * 1000 // int(parts.group(2)))
    return Animation(*size, frames, times if len(times) == len(frames) and len(frames) > 1 else None)


def gifsicle(path):
    """gifsicle makes every image a whole one, which leaves ffmpeg little to compose."""
    whole = path.with_name("whole.gif")
    run("gifsicle", "-w", "--unoptimize", path, "-o", whole)
    return ffmpeg(whole)


def gifsicle_information(path):
    """Plays, comment, colour profile and XMP as gifsicle lists them."""
    text = run("gifsicle", "--info", "--extension-info", path).decode("latin-1")
    result = Animation(0, 0, [])
    loop = re.search(r"loop count (\d+)", text)
    result.plays = 0 if "loop forever" in text else int(loop.group(1)) + 1 if loop else 1
    comment = re.search(r"^ *(?:end )?comment (.*)$", text, re.MULTILINE)
    result.comment = without_recipe(comment.group(1)) if comment else None
    for name, dump in re.findall(r"extension \d+: app '([^']*)'[^\n]*\n((?: +[0-9a-f]{8}: [^\n]*\n)*)", text):
        data = bytes.fromhex("".join(line.split(": ")[1][:39] for line in dump.splitlines()))
        if name.startswith("ICCRGBG1"):
            result.icc = without_block_sizes(data)
        elif name.startswith("XMP Data"):
            result.xmp = without_xmp_trailer(data)
    return result


def without_recipe(comment):
    """A recipe is a comment of its own in GIF files. Programs that show one comment show it where there is no other."""
    return None if comment and comment.startswith(RECIPE_START) else comment


def without_block_sizes(data):
    parts, at = [], 0
    while at < len(data) and data[at]:
        parts.append(data[at + 1:at + 1 + data[at]])
        at += 1 + data[at]
    return b"".join(parts)


def without_xmp_trailer(data):
    """In GIF files XMP stands without block sizes; falling bytes behind it lead readers of blocks to the end."""
    return data.split(b"\x01\xff\xfe")[0]


def exiftool(path):
    names = {"icc": "ICC_Profile", "exif": "EXIF", "xmp": "XMP", "comment": "Comment"}
    entry = json.loads(run("exiftool", "-j", "-b", *("-" + name for name in names.values()), "-AnimationIterations",
                           "-AnimationPlays", "-AnimationLoopCount", path))[0]
    result = Animation(0, 0, [])
    for name, tag in names.items():
        value = entry.get(tag)
        if isinstance(value, str) and value.startswith("base64:"):
            value = base64.b64decode(value[7:])
        elif isinstance(value, str) and name != "comment":
            value = value.encode("utf-8")
        setattr(result, name, value)
    if path.suffix == ".gif":
        result.comment = without_recipe(result.comment)
        result.xmp = result.xmp and without_xmp_trailer(result.xmp)
        plays = entry.get("AnimationIterations", 0)
        result.plays = 0 if plays == "Infinite" else plays + 1
    else:
        plays = entry.get("AnimationPlays", entry.get("AnimationLoopCount"))
        result.plays = 0 if plays == "inf" else plays
    return result


def y4m_by_definition(path):
    """4:4:4 or grey, 8 bits, by BT.601, in floating point."""
    data = path.read_bytes()
    line, at = data[:data.index(b"\n")].decode(), data.index(b"\n") + 1
    fields = {field[0]: field[1:] for field in line.split(" ")[1:]}
    width, height = int(fields["W"]), int(fields["H"])
    over, under = map(int, fields["F"].split(":"))
    if fields["C"] not in ("444", "mono"):
        raise RuntimeError("%s is neither 4:4:4 nor grey" % path)
    planes_count = 3 if fields["C"] == "444" else 1
    full = "XCOLORRANGE=FULL" in line
    known, frames, size = {}, {}, width * height
    result = Animation(width, height, [], [])

    def color(sample):
        y = sample[0] / 255 if full else (sample[0] - 16) / 219
        b, r = ((s - 128) / (255 if full else 224) for s in sample[1:])
        red, blue = y + 1.402 * r, y + 1.772 * b
        green = (y - 0.299 * red - 0.114 * blue) / 0.587
        return bytes(min(255, max(0, round(255 * c))) for c in (red, green, blue)) + b"\xff"

    while at < len(data):
        at = data.index(b"\n", at) + 1
        planes = data[at:at + planes_count * size]
        at += planes_count * size
        if planes not in frames:
            differences = planes[size:] or bytes([128]) * (2 * size)
            samples = list(zip(planes[:size], differences[:size], differences[size:]))
            for sample in set(samples) - known.keys():
                known[sample] = color(sample)
            frames[planes] = b"".join(known[sample] for sample in samples)
        result.frames.append(frames[planes])
        result.times.append(1000 * under / over)
    return result


def webpmux_and_dwebp(path):
    return divided_webp(path, dwebp_still)


def dwebp_still(path):
    with Image.open(io.BytesIO(run("dwebp", "-quiet", path, "-o", "-"))) as image:
        return image.convert("RGBA").tobytes()


def djpeg(path):
    with Image.open(io.BytesIO(run("djpeg", "-pnm", path))) as image:
        return Animation(image.width, image.height, [image.convert("RGBA").tobytes()])
