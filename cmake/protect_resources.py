# SPDX-License-Identifier: MIT
"""protect_resources.py FILE: makes the resources of a Windows program or library read-only.

This toolchain's linker and objcopy mark the section .rsrc writable and offer no way round it. Its flag is taken
out of the section's header, and the file's checksum is made anew.
"""
import struct
import sys

WRITABLE = 0x80000000
SECTION_HEADER = 40


def checksum(data, field):
    """The file's sum of 16-bit words with carries, its own field at that offset left out, plus its size."""
    words = bytes(data[:field]) + bytes(4) + bytes(data[field + 4:]) + bytes(len(data) % 2)
    total = sum(struct.unpack(f"<{len(words) // 2}H", words))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return total + len(data)


def protect(data):
    header = struct.unpack_from("<I", data, 0x3C)[0]
    if data[header:header + 4] != b"PE\0\0":
        sys.exit("This is no Windows program or library.")
    sections, optional_header = struct.unpack_from("<6xH12xH", data, header)
    first = header + 24 + optional_header
    for at in range(first, first + sections * SECTION_HEADER, SECTION_HEADER):
        if data[at:at + 8].rstrip(b"\0") == b".rsrc":
            flags = struct.unpack_from("<I", data, at + 36)[0]
            struct.pack_into("<I", data, at + 36, flags & ~WRITABLE)
    field = header + 24 + 64
    struct.pack_into("<I", data, field, checksum(data, field))


def main():
    with open(sys.argv[1], "r+b") as file:
        data = bytearray(file.read())
        protect(data)
        file.seek(0)
        file.write(data)


main()
