# SPDX-License-Identifier: MIT
"""Folders of pictures, and the results that kestrel makes of each by a command of its own."""
import pathlib
import shutil
import subprocess

OPTIONS = ["--effect", "Emboss", "--set", "Radius=9", "--palette", "216-color safe"]
STILL_OPTIONS = ["--effect", "Emboss", "--set", "Radius=9"]
ODD_NAMES = ["two words.gif", "gr\u00fc\u00df Gott \u2014 \u00e9t\u00e9.webp", "it's $HOME & (more);.gif", "100% {2} \"x\".png",
             "-dash.gif", "UPPER.GIF"]


def run(kestrel, *words):
    subprocess.run([kestrel] + [str(word) for word in words], check=True, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL)


def make_bases(kestrel, folder):
    """Small animations that all differ, in three formats; a map from each to its result by a single command."""
    folder.mkdir(parents=True)
    sample, results = folder / "sample.gif", {}
    run(kestrel, "sample", sample)
    for number in range(18):
        base = folder / ("%02d.%s" % (number, ("gif", "webp", "apng")[number % 3]))
        run(kestrel, "apply", sample, "-o", base, "--resize", "%dx20" % (24 + number),
            "--frames", "%d-%d" % (number, number + 1 + number % 3), "--no-recipe", "--quiet")
        result = folder / "results" / base.name
        result.parent.mkdir(exist_ok=True)
        run(kestrel, "apply", base, "-o", result, "--quiet", *OPTIONS)
        results[base] = result.read_bytes()
    return results


class Work:
    """A folder of `count` pictures, and what is to become of each."""

    def __init__(self, bases, folder, count, odd_names=True):
        self.pictures, self.results = folder / "pictures", folder / "embossed"
        self.expected = {}
        bases = sorted(bases.items())
        names = ODD_NAMES if odd_names else []
        for number in range(count):
            base, result = bases[number % len(bases)]
            name = "%04d%s" % (number, base.suffix)
            if number < len(names):
                # A base of the same format: results keep the names of their pictures.
                name = names[number]
                ending = pathlib.Path(name).suffix.lower().replace("png", "apng").replace("aapng", "apng")
                base, result = [pair for pair in bases if pair[0].suffix == ending][number % 6]
            place = pathlib.Path("set %d" % (number % 10) if odd_names else "set-%d" % (number % 10), name)
            (self.pictures / place).parent.mkdir(parents=True, exist_ok=True)
            (self.results / place).parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(base, self.pictures / place)
            self.expected[str(self.results / place)] = result

    def made(self):
        """The results that there are, each with what tells whether it was made again."""
        there = [pathlib.Path(path) for path in self.expected if pathlib.Path(path).exists()]
        return {str(path): (path.stat().st_ino, path.stat().st_mtime_ns) for path in there}

    def check(self):
        """Everything that there should be, and nothing else; a list of sentences."""
        faults = []
        found = {str(path) for path in self.results.rglob("*")
                 if path.is_file() and ".farm" not in path.parts and path.name != ".options"}
        faults += ["%s is missing" % path for path in sorted(set(self.expected) - found)[:3]]
        faults += ["%s should not be there" % path for path in sorted(found - set(self.expected))[:3]]
        for path in sorted(found & set(self.expected)):
            if pathlib.Path(path).read_bytes() != self.expected[path]:
                faults.append("%s is not what kestrel apply makes" % path)
        return faults
