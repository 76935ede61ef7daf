# SPDX-License-Identifier: MIT
"""Processes of a farm: those of the script's session, and those that name its folder. Ended by their numbers."""
import os
import pathlib
import signal


def of_farm(part, session=None):
    """The numbers of the processes that have this text in their command lines, or are of this session."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        if not entry.name.isdigit() or int(entry.name) == os.getpid():
            continue
        try:
            own = (entry / "stat").read_text(errors="replace").rpartition(")")[2].split()
            if own[0] != "Z" and (own[3] == str(session) or os.fsencode(part) in (entry / "cmdline").read_bytes()):
                found.append(int(entry.name))
        except OSError:
            pass  # it has ended
    return found


def kill(process):
    try:
        os.kill(process, signal.SIGKILL)
    except ProcessLookupError:
        pass


def kill_all(part, session=None):
    """As when the machine is switched off: everything that works on this folder, and what it still starts."""
    if session:
        kill(session)  # it sees none of the others end
    quiet = 0
    while quiet < 3:
        found = of_farm(part, session)
        for process in found:
            kill(process)
        quiet = 0 if found else quiet + 1


def kill_one_worker(part, kestrel):
    """One kestrel at its work. False: none was there just now."""
    for process in of_farm(part):
        try:
            if os.readlink("/proc/%d/exe" % process) == str(kestrel):
                kill(process)
                return True
        except OSError:
            pass
    return False
