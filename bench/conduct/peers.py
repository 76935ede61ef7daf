# SPDX-License-Identifier: MIT
"""Programs that do similar work, where they are installed. A command has a name and a function: run(item, shot) answers
the milliseconds for all frames of the shot, or None when it has no such work."""
import os
import re
import shlex
import shutil
import subprocess
import sys
import time

# ffmpeg's filters that do the same work on the same samples; of a palette, the picture is the filter's second input.
FFMPEG_FILTERS = {
    ("bump", "default"): ("gbrp", "convolution=" + ":".join(["-1 -1 0 -1 1 1 0 1 1"] * 3)),
    ("solarize", "default"): ("bgr24", "lutrgb=" + ":".join(f"{c}='if(lt(val,128),255-val,val)'" for c in "rgb")),
    ("obscure", "default"): ("gbrp", "pixelize=w=8:h=8"),
    ("obscure", "heavy"): ("gbrp", "pixelize=w=64:h=64"),
    ("normalize", "default"): ("bgr24", "normalize=smoothing=0"),
    ("remap", "default"): ("bgra", "paletteuse=dither=none"),
    ("dither", "default"): ("bgra", "paletteuse=dither=floyd_steinberg"),
}
FFMPEG_RUNS = 12  # of a picture in one call


def time_of(command):
    """Milliseconds on the clock; None when the program fails."""
    start = time.perf_counter()
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return (time.perf_counter() - start) * 1e3 if done.returncode == 0 else None


def ffmpeg_command(shot, filters, loops):
    return ["ffmpeg", "-nostdin", "-v", "info", "-threads", "1", "-filter_threads", "1", "-filter_complex_threads", "1",
            "-stream_loop", str(loops), "-f", "rawvideo", "-pixel_format", "bgr24",
            "-video_size", f"{shot.width}x{shot.height}", "-framerate", "25", "-i", shot.path, *filters]


def ffmpeg_palette(shot):
    """A file with the palette of the shot; None when ffmpeg finds none."""
    path = shot.path + ".palette.png"
    if not os.path.exists(path):
        time_of(ffmpeg_command(shot, ["-vf", "palettegen", "-y", path], 0))
    return path if os.path.exists(path) else None


def run_ffmpeg(item, shot):
    """ffmpeg's filter `bench` tells the least time that a frame has taken between its two calls."""
    if (item.job, item.variant) not in FFMPEG_FILTERS:
        return None
    layout, chain = FFMPEG_FILTERS[item.job, item.variant]
    timed = f"format={layout},bench=start,{chain},bench=stop"
    given = ["-vf", timed]
    if "paletteuse" in chain:
        palette = ffmpeg_palette(shot)
        if not palette:
            return None
        given = ["-i", palette, "-lavfi", f"[0]format={layout},bench=start[a];[a][1]{chain},bench=stop"]
    loops = max(FFMPEG_RUNS // shot.frames, 1) - 1
    done = subprocess.run(ffmpeg_command(shot, [*given, "-f", "null", "-"], loops), stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    times = re.findall(r" min:([0-9.]+)", done.stderr)
    return float(times[-1]) * 1e3 * shot.frames if done.returncode == 0 and times else None


def run_gifsicle(item, shot):
    """A whole program, from file to file; what starting it and rewriting the file cost stays in."""
    if item.job != "diff-file" or not os.path.exists(shot.gif):
        return None
    return time_of(["gifsicle", "-w", "-O2", shot.gif, "-o", shot.gif + ".out"])


def has_module(python, module):
    return subprocess.run([python, "-c", f"import {module}"], stderr=subprocess.DEVNULL).returncode == 0


def installed_commands():
    """The commands of peers, by name."""
    return {name: run for name, run in (("ffmpeg", run_ffmpeg), ("gifsicle", run_gifsicle)) if shutil.which(name)}


def installed_children():
    """The commands of peers that speak the children's protocol, by name."""
    folder = os.path.dirname(os.path.abspath(__file__))
    python = sys.executable
    known = (("Pillow", "PIL", "pillow_child.py"), ("OpenCV", "cv2", "opencv_child.py"))
    return {name: shlex.join([python, "-B", os.path.join(folder, script)])
            for name, module, script in known if has_module(python, module)}
