# SPDX-License-Identifier: MIT
"""Sees every file that gets its name in a folder, at the moment when it gets it."""
import ctypes
import os
import select
import struct
import threading

IN_CREATE, IN_MOVED_TO, IN_ONLYDIR, IN_ISDIR, IN_Q_OVERFLOW = 0x100, 0x80, 0x01000000, 0x40000000, 0x4000
LIMIT = 900  # seconds; nothing that works takes nearly as long

libc = ctypes.CDLL(None, use_errno=True)


class FolderWatch:
    """Names and contents of the results that appear in a folder and those in it, which must be there already.

    `expected(path)` gives a result's bytes. What is unfinished has a name of its own: hidden, or with the ending of
    kestrel's temporary files.
    """

    def __init__(self, folder, expected):
        self.folder, self.expected = str(folder), expected
        self.appeared, self.faults = {}, []
        self.changed = threading.Condition()
        self.queue = libc.inotify_init1(os.O_CLOEXEC | os.O_NONBLOCK)
        self.folders = {}
        for path, _, _ in os.walk(self.folder):
            if "/." in path[len(self.folder):]:
                continue
            number = libc.inotify_add_watch(self.queue, os.fsencode(path), IN_CREATE | IN_MOVED_TO | IN_ONLYDIR)
            if number < 0:
                raise RuntimeError("%s cannot be watched: %s" % (path, os.strerror(ctypes.get_errno())))
            self.folders[number] = path
        self.stop_end, self.stop_begin = os.pipe()
        self.thread = threading.Thread(target=self._run)
        self.thread.start()

    def close(self):
        """Returns when everything that appeared before has been looked at."""
        os.close(self.stop_begin)
        self.thread.join()
        os.close(self.stop_end)
        os.close(self.queue)

    def wait_for(self, count):
        """Until so many results have appeared."""
        with self.changed:
            if not self.changed.wait_for(lambda: len(self.appeared) >= count, LIMIT):
                raise RuntimeError("only %d results appeared, not %d" % (len(self.appeared), count))

    def pause(self):
        """Until another result appears, or for a moment."""
        with self.changed:
            self.changed.wait(0.2)

    def _run(self):
        stopped = False
        while True:
            readable, _, _ = select.select([self.queue] + ([] if stopped else [self.stop_end]), [], [],
                                           0 if stopped else None)
            stopped = stopped or self.stop_end in readable
            if self.queue in readable:
                self._read_events()
            elif stopped:
                return

    def _read_events(self):
        events = os.read(self.queue, 1 << 16)
        place = 0
        while place < len(events):
            number, mask, _, size = struct.unpack_from("iIII", events, place)
            name = os.fsdecode(events[place + 16:place + 16 + size].rstrip(b"\0"))
            place += 16 + size
            with self.changed:
                if mask & IN_Q_OVERFLOW:
                    self.faults.append("too many files appeared at once to be seen")
                elif not mask & IN_ISDIR and not name.startswith(".") and ".kestrel-part" not in name:
                    self._note(os.path.join(self.folders[number], name), mask)
                self.changed.notify_all()

    def _note(self, path, mask):
        self.appeared[path] = self.appeared.get(path, 0) + 1
        if not mask & IN_MOVED_TO:
            self.faults.append("%s was made under its own name" % path)
        with open(path, "rb") as file:
            if file.read() != self.expected(path):
                self.faults.append("%s was not whole when it appeared" % path)
