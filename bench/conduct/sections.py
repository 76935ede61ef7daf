# SPDX-License-Identifier: MIT
"""The parts of a document that a program writes: each stands between two comments that name it."""
import os
import tempfile


class NoSection(Exception):
    """The document has no place for the part, or more than one; the text says what to do."""


def markers(name):
    return f"<!-- ./run bench writes {name} from here -->", f"<!-- ./run bench writes {name} up to here -->"


def replaced(text, name, body):
    """The text with a new body between the two comments, whatever stood there before."""
    begin, end = markers(name)
    if text.count(begin) != 1 or text.count(end) != 1 or text.index(begin) > text.index(end):
        raise NoSection(f'Put the lines "{begin}" and "{end}" into the document once, in this order.')
    before, rest = text.split(begin)
    return before + begin + "\n\n" + body.strip("\n") + "\n\n" + end + rest.split(end)[1]


def write(path, name, body):
    """Replaces a section of the file, which holds the old text or the whole new one at any time."""
    with open(path, encoding="utf-8", newline="") as file:
        text = replaced(file.read(), name, body)
    handle, temporary = tempfile.mkstemp(dir=os.path.dirname(os.path.abspath(path)))
    try:
        with open(handle, "w", encoding="utf-8", newline="") as file:
            file.write(text)
        os.chmod(temporary, os.stat(path).st_mode & 0o777)
        os.replace(temporary, path)
    except BaseException:
        os.unlink(temporary)
        raise
