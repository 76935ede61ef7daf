# SPDX-License-Identifier: MIT
"""Files of other programs, as kestrel and other programs read them."""
import dataclasses

import programs
from animations import images, random_animation
from writers import check_each, frames_of_kestrel


def animation_and_images(random, frame_count=None):
    animation = random_animation(random, frame_count or random.choice((2, 5, 9, 16)),
                                 random.choice(("opaque", "holes", "half")), random.choice((20, 120)))
    return animation, images(animation)


def save_animated(path, animation, frames, **options):
    frames[0].save(path, save_all=True, append_images=frames[1:], duration=animation.times, **options)
    return path


def gif_by_pillow(random, folder):
    animation, frames = animation_and_images(random)
    # Pillow takes no list where it makes one frame of all.
    disposals = [random.choice((0, 1, 2)) for _ in frames] if len(set(animation.frames)) > 1 else 0
    options = {"interlace": random.randrange(2), "loop": random.choice((0, 2, 5))}
    path = save_animated(folder / "pillow.gif", animation, frames, disposal=disposals, **options)
    if programs.clears_opaque_images(path):  # no other program here does as browsers do
        save_animated(path, animation, frames, disposal=random.randrange(2), **options)
    return path


def gif_by_gifsicle(random, folder):
    source = gif_by_pillow(random, folder)
    path = folder / "gifsicle.gif"
    programs.run("gifsicle", "-w", random.choice(("-O1", "-O2", "-O3")), random.choice(("--interlace", "--no-interlace")),
                 random.choice(("--careful", "--no-warnings")), source, "-o", path)
    return path


def encode_with_ffmpeg(path, animation, *options):
    programs.run("ffmpeg", "-v", "error", "-f", "rawvideo", "-pix_fmt", "rgba", "-s",
                 "%dx%d" % (animation.width, animation.height), "-r", 20, "-i", "-", *options, path,
                 data=b"".join(animation.frames))
    return path


def gif_by_ffmpeg(random, folder):
    animation, _ = animation_and_images(random)
    return encode_with_ffmpeg(folder / "ffmpeg.gif", animation, "-filter_complex",
                              "split[a][b];[a]palettegen[p];[b][p]paletteuse=dither=none", "-loop",
                              random.choice((-1, 0, 3)))


def webp_by_pillow(random, folder):
    animation, frames = animation_and_images(random)
    return save_animated(folder / "pillow.webp", animation, frames, loop=random.choice((0, 1, 3)), method=random.randrange(5),
                         **random.choice(({"lossless": True}, {"quality": 60}, {"allow_mixed": True},
                                          {"lossless": True, "minimize_size": True})))


def webp_by_img2webp(random, folder):
    animation, frames = animation_and_images(random)
    path = folder / "img2webp.webp"
    parts = []
    for index, (frame, time) in enumerate(zip(frames, animation.times)):
        still = folder / ("still-%02d.png" % index)
        frame.save(still)
        parts += ["-d", time, still]
    programs.run("img2webp", "-loop", random.choice((0, 1, 3)), random.choice(("-lossless", "-lossy", "-mixed")), *parts,
                 "-o", path)
    return path


def still_webp(random, folder):
    _, frames = animation_and_images(random, 1)
    path = folder / "still.webp"
    frames[0].save(path, lossless=random.random() < 0.5)
    return path


def apng_by_pillow(random, folder):
    animation, frames = animation_and_images(random)
    if random.random() < 0.3:
        frames = [frame.convert("RGB") for frame in frames]
    return save_animated(folder / "pillow.apng", animation, frames, format="PNG", loop=random.choice((0, 1, 3)),
                         disposal=random.choice((0, 1)), blend=random.choice((0, 1)))


def apng_by_ffmpeg(random, folder):
    animation, _ = animation_and_images(random)
    return encode_with_ffmpeg(folder / "ffmpeg.apng", animation, "-pix_fmt", random.choice(("rgba", "rgb24", "gray", "ya8")),
                              "-plays", random.choice((0, 1, 3)))


def still_png(random, folder):
    _, frames = animation_and_images(random, 1)
    path = folder / "still.png"
    frames[0].convert(random.choice(("1", "L", "LA", "P", "RGB", "RGBA"))).save(path)
    return path


def bmp_by_pillow(random, folder):
    _, frames = animation_and_images(random, 1)
    path = folder / "pillow.bmp"
    frames[0].convert(random.choice(("1", "L", "P", "RGB"))).save(path)
    return path


def bmp_by_ffmpeg(random, folder):
    animation, _ = animation_and_images(random, 1)
    return encode_with_ffmpeg(folder / "ffmpeg.bmp", animation, "-frames:v", 1, "-pix_fmt",
                              random.choice(("bgr24", "rgb565le", "rgb555le", "gray")))


def y4m_by_ffmpeg(random, folder):
    animation, _ = animation_and_images(random)
    return encode_with_ffmpeg(folder / "ffmpeg.y4m", animation, "-pix_fmt", random.choice(("yuv444p", "gray")))


def jpeg_by_pillow(random, folder):
    _, frames = animation_and_images(random, 1)
    path = folder / "pillow.jpg"
    frames[0].convert(random.choice(("L", "RGB", "CMYK"))).save(
        path, quality=random.choice((20, 75, 95)), progressive=random.random() < 0.5, optimize=True,
        subsampling=random.choice((0, 1, 2)))
    return path


def jpeg_by_cjpeg(random, folder):
    _, frames = animation_and_images(random, 1)
    source, path = folder / "source.ppm", folder / "cjpeg.jpg"
    frames[0].convert("RGB").save(source)
    programs.run("cjpeg", "-quality", random.choice((20, 75, 95)),
                 *random.choice((("-progressive",), ("-arithmetic",), ("-restart", "1B"), ("-rgb",), ("-grayscale",))),
                 "-sample", random.choice(("1x1", "2x1", "2x2", "1x2")), "-outfile", path, source)
    return path


# How files are made, who reads them, and by how much a channel may differ.
GIF_DECODERS = (programs.pillow, programs.ffmpeg, programs.gifsicle)
WEBP_DECODERS = (programs.pillow, programs.ffmpeg, programs.webpmux_and_dwebp)
STILL_DECODERS = (programs.pillow, programs.ffmpeg)
APNG_DECODERS = (programs.ffmpeg, programs.apngdis, programs.pillow)
KINDS = (
    (gif_by_pillow, GIF_DECODERS, 0, 5),
    (gif_by_gifsicle, GIF_DECODERS, 0, 5),
    (gif_by_ffmpeg, GIF_DECODERS, 0, 3),
    (webp_by_pillow, WEBP_DECODERS, 0, 4),
    (webp_by_img2webp, WEBP_DECODERS, 0, 4),
    (still_webp, WEBP_DECODERS, 0, 2),
    (apng_by_pillow, APNG_DECODERS, 0, 5),
    (apng_by_ffmpeg, APNG_DECODERS, 0, 4),
    (still_png, STILL_DECODERS, 0, 4),
    (bmp_by_pillow, STILL_DECODERS, 0, 3),
    # Pillow cuts what it makes of samples of 5 and 6 bits, ffmpeg and kestrel round it.
    (bmp_by_ffmpeg, STILL_DECODERS, 1, 3),
    # The frames of ffmpeg are rounded to whole numbers in between.
    (y4m_by_ffmpeg, (programs.y4m_by_definition, programs.ffmpeg), 1, 3),
    (jpeg_by_pillow, (programs.pillow, programs.djpeg), 2, 4),
    (jpeg_by_cjpeg, (programs.pillow, programs.djpeg), 2, 4),
)


def case_of(make, decoders, tolerance):
    def check(kestrel, random, folder):
        path = make(random, folder)
        size = decoders[0](path)
        found = frames_of_kestrel(kestrel, path, dataclasses.replace(size, times=None, plays=None))
        check_each(found, path, decoders, tolerance=tolerance)
        if len(size.frames) < 2 or path.suffix == ".y4m":
            return
        # Times and loops leave kestrel in files only: APNG keeps milliseconds.
        copy = folder / "copy.apng"
        programs.run(kestrel, "apply", path, "-o", copy, "--quiet", "--format", "apng")
        seen = programs.ffmpeg(copy)
        if len(seen.frames) == 1:
            return
        seen.plays = programs.exiftool(copy).plays
        check_each(seen, path, decoders, tolerance=tolerance)
    return check


CASES = [("reads-" + make.__name__.replace("_", "-"), case_of(make, decoders, tolerance))
         for make, decoders, tolerance, count in KINDS for _ in range(count)]
