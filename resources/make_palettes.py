#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the two palette resources beside this script."""
import pathlib
import struct

FOUR_LEVELS = [0, 85, 170, 255]


def safe_216():
    levels = [0, 51, 102, 153, 204, 255]
    return [(r, g, b) for g in levels for r in levels for b in levels]


def gray_256():
    reds = [int(255 * k / 6 + 0.5) for k in range(7)]
    greens = [int(255 * k / 7 + 0.5) for k in range(8)]
    cube = [(r, g, b) for r in reds for g in greens for b in FOUR_LEVELS]
    grays = [(v, v, v) for v in [1] + [255 * j // 31 for j in range(1, 31)] + [254]]
    return cube[:112] + grays + cube[112:]


def resource(entries):
    colors = b"".join(bytes(entry) for entry in entries).ljust(768, b"\0")
    head = b"QRVNRSRC" + b"256 colour palette".ljust(64, b"\0")
    return head + struct.pack("<BH4sIH", 0, 1, b"CMAP", 1, len(colors)) + colors


folder = pathlib.Path(__file__).parent
for name, entries in (("palette_216.bin", safe_216()), ("palette_256_gray.bin", gray_256())):
    data = resource(entries)
    assert len(data) == 853
    (folder / name).write_bytes(data)
