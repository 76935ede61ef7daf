# SPDX-License-Identifier: MIT
"""The cases of check_package.py."""
import dataclasses
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import tarfile
import time
import zipfile

PROGRAMS = ("kestrel.exe", "kestrel-stage.exe", "kfxplug1.dll")
LIMIT = 900  # seconds, for one program on a loaded machine
INSTALLED = "drive_c/Program Files/Kestrel FX"
UNINSTALL_KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\KestrelFX"


class Failed(Exception):
    pass


@dataclasses.dataclass
class Context:
    root: pathlib.Path
    first: pathlib.Path
    second: pathlib.Path
    folder: pathlib.Path

    def file(self, pattern):
        found = sorted(self.first.glob(pattern))
        check(len(found) == 1, "%s: %d files, not one" % (pattern, len(found)))
        return found[0]

    def wine(self, *arguments, may_fail=False):
        return run(self.root / "cmake" / "wine", *arguments, may_fail=may_fail)


def check(condition, message):
    if not condition:
        raise Failed(message)


def run(*arguments, may_fail=False, **options):
    done = subprocess.run([str(argument) for argument in arguments], capture_output=True, text=True, errors="replace",
                          timeout=LIMIT, **options)
    check(may_fail or done.returncode == 0,
          "%s: exit code %d: %s%s" % (" ".join(map(str, arguments)), done.returncode, done.stdout, done.stderr))
    return done


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def files_below(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


def unpacked_zip(context, pattern):
    with zipfile.ZipFile(context.file(pattern)) as archive:
        archive.extractall(context.folder)
    tops = list(context.folder.iterdir())
    check(len(tops) == 1, "the archive holds more than one folder")
    return tops[0]


def two_runs_make_the_same_bytes(context):
    names = sorted(path.name for path in context.first.iterdir())
    check(len(names) == 6, "there are %s" % names)
    check(names == sorted(path.name for path in context.second.iterdir()), "the second run made other files")
    for name in names:
        check(digest(context.first / name) == digest(context.second / name), "%s differs" % name)
    run("sha256sum", "--check", "--strict", "SHA256SUMS", cwd=context.first)


def windows_archive_is_whole(context):
    folder = unpacked_zip(context, "*-windows.zip")
    there = files_below(folder)
    for name in PROGRAMS + ("KFXPLUG1.HTML", "LICENSE.txt", "THIRD-PARTY.txt", "READ-ME.txt", "SBOM.spdx.json"):
        check(name in there, "%s is missing" % name)
    rows = [line.split("|")[0].strip() for line in (context.root / "package/presets.txt").read_text().splitlines()
            if line and not line.startswith("#")]
    check(len(set(rows)) == 20 and min(map(rows.count, rows)) >= 2, "an effect has fewer than two presets")
    documents = [name for name in there if name.endswith(".kx1")]
    check(len(documents) == len(rows), "%d presets, and the table has %d" % (len(documents), len(rows)))
    for name in documents:
        check(name[:-4] + ".png" in there, "%s has no picture" % name)
        content = (folder / name).read_bytes()
        check(content.count(b"\r\n") == content.count(b"\n") > 3, "%s has no Windows line ends" % name)
    listed = json.loads((folder / "SBOM.spdx.json").read_text())
    check({"giflib", "libwebp", "zlib, unpacking"} <= {part["name"] for part in listed["packages"]},
          "the list of parts lacks a library")


def a_preset_is_what_its_picture_shows(context):
    """On Windows, as its users have it: the same pixels as the native program's picture."""
    folder = unpacked_zip(context, "*-windows.zip")
    program = folder / "kestrel.exe"
    context.wine(program, "sample", "-o", context.folder / "sample.gif")
    for name in ("Swirl - Whirlpool", "Neon - Gray lines", "Water Drops - Frosted glass"):
        made = context.folder / (name + ".gif")
        picture = context.folder / (name + ".png")
        context.wine(program, "apply", context.folder / "sample.gif", "-o", made, "--settings",
                     folder / "presets" / (name + ".kx1"), "--frames", "8", "--seed", "1")
        context.wine(program, "apply", made, "-o", picture, "--format", "png", "--no-recipe")
        check(picture.read_bytes() == (folder / "presets" / (name + ".png")).read_bytes(), "%s differs" % name)


def windows_programs_are_those_that_were_tested(context):
    """How they are protected is read from the files by shipped_files_test, in the side windows."""
    folder = unpacked_zip(context, "*-windows.zip")
    for name in PROGRAMS:
        check(digest(folder / name) == digest(context.root / ".work/build/windows/bin" / name), "%s differs" % name)


def linux_program_is_hardened(context):
    with tarfile.open(context.file("*-linux.tar.xz")) as archive:
        archive.extractall(context.folder)
    program = next(context.folder.iterdir()) / "bin/kestrel"
    said = run("readelf", "--wide", "--file-header", "--program-headers", "--dynamic", program).stdout
    check("Position-Independent Executable" in said, "it is always loaded at the same address")
    check("GNU_RELRO" in said and re.search(r"\bNOW\b", said), "tables of functions can be written")
    segments = re.findall(r"^ +(?:LOAD|GNU_STACK) +(?:0x\S+ +){5}([RWE ]{3})", said, re.MULTILINE)
    # Code, data and the stack at least.
    check(len(segments) >= 3, "only %d segments were understood of what readelf says" % len(segments))
    for flags in segments:
        check(not ("W" in flags and "E" in flags), "memory may be written and run")
    called = run("readelf", "--wide", "--dyn-syms", program).stdout
    check("__stack_chk_fail" in called, "functions do not look after their arrays")
    check(re.search(r"__\w+_chk\b", called), "sizes of buffers are not looked after")
    check(" .symtab " not in run("readelf", "--wide", "--sections", program).stdout, "it has symbols")


def symbols_belong_to_the_programs(context):
    symbols = unpacked_zip(context, "*-symbols.zip")
    for name in PROGRAMS:
        found = run("x86_64-w64-mingw32-nm", symbols / (name + ".debug")).stdout
        check(" T " in found, "%s has no symbols" % name)


def version_resources_are_right(context):
    folder = unpacked_zip(context, "*-windows.zip")
    version = re.search(r"kestrel-fx-(.*)-windows", context.file("*-windows.zip").name).group(1)
    said = context.wine(folder / "kestrel.exe", "--version").stdout.strip()
    check(said == "Kestrel " + version, "kestrel.exe says %s" % said)
    for path in [folder / name for name in PROGRAMS] + [context.file("*-setup.exe")]:
        text = path.read_bytes().decode("utf-16-le", errors="replace") + \
            path.read_bytes()[1:].decode("utf-16-le", errors="replace")
        found = re.search("FileVersion\0+([0-9a-z. ]+)", text)
        check(found is not None, "%s has no version" % path.name)
        check(found.group(1).replace(" ", "").startswith(version), "%s says %s" % (path.name, found.group(1)))


def help_is_valid_and_stands_alone(context):
    help_file = unpacked_zip(context, "*-windows.zip") / "KFXPLUG1.HTML"
    text = help_file.read_text(encoding="utf-8")
    check(not re.search(r'src="(?!data:)', text), "it needs another file")
    check("<script" not in text, "it has a script")
    names = re.findall(r' id="([^"]*)"', text)
    check(len(names) == len(set(names)) > 20, "two places have the same name")
    for topic in ("PREFACE", "ABOUT"):
        check(topic in names, "it lacks " + topic)
    said = run("tidy", "-quiet", "-errors", help_file, may_fail=True)
    check(said.returncode == 0, said.stderr)


def is_loaded(program):
    """Waits until Wine runs the program."""
    end = time.monotonic() + LIMIT
    while time.monotonic() < end:
        for maps in pathlib.Path("/proc").glob("[0-9]*/maps"):
            try:
                if INSTALLED + "/" + program in maps.read_text():
                    return True
            except OSError:
                pass  # it has ended
        time.sleep(0.05)
    return False


def registered(context):
    return context.wine("reg", "query", UNINSTALL_KEY, may_fail=True).returncode == 0


def installer_installs_upgrades_and_removes(context):
    prefix = pathlib.Path(os.environ["WINEPREFIX"])
    place = prefix / INSTALLED
    check(not place.exists(), "%s is there already" % place)
    expected = files_below(unpacked_zip(context, "*-windows.zip"))
    setup = context.file("*-setup.exe")
    try:
        context.wine(setup, "/S")
        check(files_below(place) == sorted(expected + ["uninstall.exe"]), "it installs %s" % files_below(place))
        check(registered(context), "it is not registered")
        context.wine(place / "kestrel.exe", "sample", "-o", context.folder / "sample.gif")
        context.wine(place / "kestrel.exe", "apply", context.folder / "sample.gif", "-o", context.folder / "made.gif",
                     "--effect", "Bump", "--through-plugin", "--frames", "1-2")
        menu = list(prefix.glob("drive_c/ProgramData/Microsoft/Windows/Start Menu/Programs/Kestrel FX/*.lnk"))
        check(len(menu) == 2, "the start menu has %s" % menu)

        # A program that runs: nothing is changed.
        (place / "READ-ME.txt").write_text("an older one")
        running = subprocess.Popen([context.root / "cmake" / "wine", place / "kestrel.exe", "apply", "-", "-o",
                                    context.folder / "never.gif", "--effect", "Neon"], stdin=subprocess.PIPE,
                                   stderr=subprocess.PIPE, stdout=subprocess.DEVNULL)
        try:
            refused = context.wine(setup, "/S", may_fail=True) if is_loaded("kestrel.exe") else None
        finally:
            running.communicate()
        check(refused is not None, "kestrel.exe did not start")
        check(refused.returncode == 2, "a program in use gives exit code %d" % refused.returncode)
        check((place / "READ-ME.txt").read_text() == "an older one", "a file was replaced beside a program in use")

        (place / "mine.txt").write_text("of the user")
        (place / "kestrel.exe").write_bytes(b"an older one")
        context.wine(setup, "/S")
        check(files_below(place) == sorted(expected + ["mine.txt", "uninstall.exe"]), "after the second installation")
        context.wine(place / "kestrel.exe", "--version")

        # The uninstaller copies itself to another place and goes on there, unless it is told where it is.
        context.wine(place / "uninstall.exe", "/S", "_?=C:\\Program Files\\Kestrel FX")
        left = [name for name in files_below(place) if name != "uninstall.exe"]
        check(left == ["mine.txt"], "it leaves %s" % left)
        check(not registered(context), "it is still registered")
        check(not any(path.exists() for path in menu), "the start menu still has it")
    finally:
        shutil.rmtree(place, ignore_errors=True)
        context.wine("reg", "delete", UNINSTALL_KEY, "/f", may_fail=True)


def linux_archive_runs(context):
    with tarfile.open(context.file("*-linux.tar.xz")) as archive:
        archive.extractall(context.folder)
    folder = next(context.folder.iterdir())
    program = folder / "bin/kestrel"
    run(program, "sample", "-o", context.folder / "sample.gif")
    run(program, "apply", context.folder / "sample.gif", "-o", context.folder / "made.gif", "--effect", "Neon")
    for name in ("share/man/man1/kestrel.1.gz", "share/bash-completion/completions/kestrel",
                 "share/zsh/vendor-completions/_kestrel", "share/fish/vendor_completions.d/kestrel.fish",
                 "share/doc/kestrel-fx/copyright"):
        check((folder / name).stat().st_size > 0, "%s is empty" % name)


def debian_package_has_no_fault(context):
    said = run("lintian", "--info", "--fail-on", "error,warning", context.file("*.deb"), may_fail=True)
    check(said.returncode == 0, said.stdout)


def debian_package_installs_and_removes(context):
    """In a root of its own that has nothing but Debian's smallest system."""
    check(os.geteuid() == 0, "only root can make a root of its own")
    mirror = re.search(r"^(?:URIs:|deb(?: \[.*\])?) +(\S+)", "\n".join(
        path.read_text() for pattern in ("sources.list", "sources.list.d/*")
        for path in sorted(pathlib.Path("/etc/apt").glob(pattern)) if path.is_file()), re.MULTILINE)
    check(mirror is not None, "apt has no source")
    base = context.root / ".work" / "debian-root"
    if not (base / "complete").exists():
        shutil.rmtree(base, ignore_errors=True)
        base.mkdir(parents=True)
        run("debootstrap", "--variant=minbase", "bookworm", base / "root", mirror.group(1))
        (base / "complete").touch()
    root = context.folder / "root"
    run("cp", "-a", base / "root", root)
    before = files_below(root / "usr")
    shutil.copy(context.file("*.deb"), root / "tmp/kestrel.deb")
    run("chroot", root, "dpkg", "--install", "/tmp/kestrel.deb")
    run("chroot", root, "kestrel", "sample", "-o", "/tmp/sample.gif")
    run("chroot", root, "kestrel", "apply", "/tmp/sample.gif", "-o", "/tmp/made.webp", "--effect", "Swirl")
    check(len(files_below(root / "usr")) > len(before), "nothing was installed")
    run("chroot", root, "dpkg", "--purge", "kestrel-fx")
    check(files_below(root / "usr") == before, "files are left behind")


CASES = [
    two_runs_make_the_same_bytes,
    windows_archive_is_whole,
    a_preset_is_what_its_picture_shows,
    windows_programs_are_those_that_were_tested,
    linux_program_is_hardened,
    symbols_belong_to_the_programs,
    version_resources_are_right,
    help_is_valid_and_stands_alone,
    installer_installs_upgrades_and_removes,
    linux_archive_runs,
    debian_package_has_no_fault,
    debian_package_installs_and_removes,
]
