# SPDX-License-Identifier: MIT
"""Files that kestrel writes, as other programs see them."""
import dataclasses

import programs
from animations import Different, add_metadata, compare, compare_frame, compare_metadata, random_animation, write_apng

# A plain effect, one that moves pixels, one that draws beyond the outline, a slow one and one that keeps palettes.
EFFECTS = ("Emboss", "Swirl", "Neon", "Gaussian Blur", "HSB and Channels", "Solarize", "Oil Painting", "Ripple")
SHARED_DELAY = 100


def random_source(random, folder, frame_counts):
    animation = random_animation(random, random.choice(frame_counts), random.choice(("opaque", "holes", "half")))
    if random.random() < 0.6:
        add_metadata(random, animation)
    path = folder / "source.apng"
    write_apng(path, animation)
    return animation, path


def frames_of_kestrel(kestrel, source, animation, *options):
    """The result as plain RGBA: with one time for all frames, each comes once."""
    data = programs.run(kestrel, "apply", source, "-o", "-", "--format", "rgba", "--fps", 1000 // SHARED_DELAY, "--quiet",
                        *options)
    return dataclasses.replace(animation, frames=programs.raw_frames(data, animation.width, animation.height))


def check_each(animation, path, decoders, **tolerances):
    """At least two programs must be left when those with a known fault are not asked."""
    asked = [decoder for decoder in decoders if not programs.has_known_fault(decoder.__name__, path)]
    if len(asked) < 2:
        raise RuntimeError("%s: fewer than two decoders without a fault" % path.name)
    for decoder in asked:
        try:
            compare(animation, decoder(path), **tolerances)
        except Different as difference:
            raise Different("%s, read by %s: %s" % (path.name, decoder.__name__, difference)) from None


def check_metadata(animation, path, readers, names):
    for name, found in readers:
        try:
            compare_metadata(animation, found, names)
            if found.plays is not None and len(animation.frames) > 1 and found.plays != animation.plays:
                raise Different("plays %d times, expected %d" % (found.plays, animation.plays))
        except Different as difference:
            raise Different("%s, read by %s: %s" % (path.name, name, difference)) from None


def map_pixels(animation, change):
    """change: from a pixel's four bytes to another pixel's, called once for each that occurs."""
    known = {}
    frames = []
    for frame in animation.frames:
        parts = []
        for at in range(0, len(frame), 4):
            pixel = frame[at:at + 4]
            if pixel not in known:
                known[pixel] = bytes(change(pixel))
            parts.append(known[pixel])
        frames.append(b"".join(parts))
    return dataclasses.replace(animation, frames=frames)


def opaque_or_hidden(animation):
    return map_pixels(animation, lambda p: (*p[:3], 255) if p[3] >= 128 else (0, 0, 0, 0))


def mixed_onto(animation, ground, keep_hidden):
    def mix(p):
        if p[3] == 0 and keep_hidden:
            return 0, 0, 0, 0
        return *((c * p[3] + g * (255 - p[3]) + 127) // 255 for c, g in zip(p, ground)), 255
    return map_pixels(animation, mix)


def check_gif(kestrel, source, shown, folder, name, options, tolerance=0):
    path = folder / name
    programs.run(kestrel, "apply", source, "-o", path, "--quiet", *options)
    # Hundredths of a second: the end of a frame is rounded.
    check_each(shown, path, (programs.pillow, programs.ffmpeg), tolerance=tolerance, time_tolerance=10)
    check_metadata(shown, path, (("gifsicle", programs.gifsicle_information(path)),
                                 ("exiftool", programs.exiftool(path))), ("comment", "icc", "xmp"))


def check_webp(kestrel, source, shown, folder, name, options):
    path = folder / name
    programs.run(kestrel, "apply", source, "-o", path, "--quiet", *options)
    check_each(shown, path, (programs.pillow, programs.ffmpeg))
    check_metadata(shown, path, (("pillow", programs.pillow(path)), ("exiftool", programs.exiftool(path))),
                   ("icc", "exif", "xmp"))


def check_apng(kestrel, source, shown, folder, name, options):
    path = folder / name
    programs.run(kestrel, "apply", source, "-o", path, "--quiet", *options)
    check_each(shown, path, (programs.pillow, programs.ffmpeg, programs.apngdis))
    check_metadata(shown, path, (("pillow", programs.pillow(path)), ("exiftool", programs.exiftool(path))),
                   ("comment", "icc", "exif", "xmp"))


def check_png_series(kestrel, source, shown, folder, name, options):
    programs.run(kestrel, "apply", source, "-o", folder / name, "--format", "png", "--quiet", *options)
    stem = name.removesuffix(".png")
    paths = sorted(folder.glob(stem + "-*.png")) or [folder / name]
    if len(paths) != len(shown.frames):
        raise Different("%s: %d files for %d frames" % (name, len(paths), len(shown.frames)))
    for path, frame in zip(paths, shown.frames):
        check_each(dataclasses.replace(shown, frames=[frame]), path, (programs.pillow, programs.ffmpeg))
    check_metadata(dataclasses.replace(shown, frames=[]), paths[-1],
                   (("pillow", programs.pillow(paths[-1])), ("exiftool", programs.exiftool(paths[-1]))),
                   ("comment", "icc", "exif", "xmp"))


def check_y4m(kestrel, source, shown, folder, name, options):
    """A colour comes back within 1 of red and green and 2 of blue; ffmpeg rounds once more."""
    path = folder / name
    programs.run(kestrel, "apply", source, "-o", path, "--quiet", *options)
    shown = mixed_onto(shown, (255, 255, 255), keep_hidden=False)
    for decoder, tolerance in ((programs.y4m_by_definition, 2), (programs.ffmpeg, 3)):
        found = decoder(path)
        # A rate of at most 100 frames a second: near a change, either frame may be shown.
        slack = 10 if len(shown.frames) > 1 else 0
        ends = [sum(shown.times[:i + 1]) for i in range(len(shown.frames))]
        at = 0
        for index, (frame, time) in enumerate(zip(found.frames, found.times)):
            middle = at + time / 2
            candidates = [f for f, end, length in zip(shown.frames, ends, shown.times)
                          if end + slack > middle >= end - length - slack] or [shown.frames[-1]]
            problem = None
            for candidate in candidates:
                try:
                    compare_frame(candidate, frame, "%s, read by %s, frame %d" % (name, decoder.__name__, index),
                                  shown.width, tolerance)
                    problem = None
                    break
                except Different as difference:
                    problem = problem or difference
            if problem:
                raise problem
            at += time
        if len(shown.frames) > 1 and abs(at - ends[-1]) > slack:
            raise Different("%s, read by %s, ends after %g ms, expected after %g" % (name, decoder.__name__, at, ends[-1]))


def check_unchanged(kestrel, random, folder):
    """A source that is only written in another format."""
    animation, source = random_source(random, folder, (1, 2, 5, 9, 24))
    compare(dataclasses.replace(animation, times=None), frames_of_kestrel(kestrel, source, animation))
    plain = "--format",
    check_gif(kestrel, source, opaque_or_hidden(animation), folder, "plain.gif", (*plain, "gif"))
    ground = (200, 30, 90)
    check_gif(kestrel, source, mixed_onto(animation, ground, True), folder, "matte.gif",
              (*plain, "gif", "--matte", "%02x%02x%02x" % ground), tolerance=1)
    check_webp(kestrel, source, animation, folder, "plain.webp", (*plain, "webp", "--effort", random.randrange(7)))
    check_apng(kestrel, source, animation, folder, "plain.apng", (*plain, "apng"))
    if len(animation.frames) < 10:
        check_png_series(kestrel, source, animation, folder, "plain.png", ())
    check_y4m(kestrel, source, animation, folder, "plain.y4m", (*plain, "y4m"))
    plays = random.choice((0, 1, 7))
    looped = dataclasses.replace(animation, plays=plays)
    check_webp(kestrel, source, looped, folder, "looped.webp", ("--loop", plays or "forever"))
    check_apng(kestrel, source, looped, folder, "looped.apng", ("--loop", plays or "forever"))
    check_gif(kestrel, source, opaque_or_hidden(looped), folder, "looped.gif", ("--loop", plays or "forever"))


def check_effect(kestrel, random, folder):
    """An effect's result must be the same in every format. The plain frames are what it is."""
    animation, source = random_source(random, folder, (2, 3, 5))
    effect = ("--effect", random.choice(EFFECTS))
    result = frames_of_kestrel(kestrel, source, animation, *effect)
    check_webp(kestrel, source, result, folder, "effect.webp", effect)
    check_apng(kestrel, source, result, folder, "effect.apng", effect)
    options = (*effect, *random.choice((("--palette", "custom"), ("--palette", "216-color safe"),
                                        ("--palette", "custom", "--dither"))))
    shown = palette_frames(kestrel, source, result, folder / "palette.png", options)
    check_apng(kestrel, source, shown, folder, "palette.apng", options)
    check_gif(kestrel, source, opaque_or_hidden(shown), folder, "palette.gif", (*options, "--lossy", 0))
    options += "--supercompress",
    shown = palette_frames(kestrel, source, result, folder / "super.png", options)
    check_gif(kestrel, source, opaque_or_hidden(shown), folder, "super.gif", (*options, "--lossy", 0))


def palette_frames(kestrel, source, animation, path, options):
    programs.run(kestrel, "apply", source, "-o", path, "--quiet", *options)
    paths = sorted(path.parent.glob(path.stem + "*.png"))
    return dataclasses.replace(animation, frames=[programs.pillow(part).frames[0] for part in paths])


CASES = [("unchanged", check_unchanged)] * 7 + [("effect", check_effect)] * 4
