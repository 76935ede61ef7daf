#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Computes the constants of framework/math with whole numbers and writes the *_table.cpp files beside this script.

Every value is a whole number over a power of two with many more bits than are printed; Python's division of
whole numbers rounds to the nearest double.
"""
import math
import pathlib

BITS = 3200  # of the working fractions
ONE = 1 << BITS
HERE = pathlib.Path(__file__).parent

HEAD = """// SPDX-License-Identifier: MIT
// Written by make_tables.py: do not edit.
#include "framework/math/tables.h"

namespace kfx::math {{

// clang-format off
{body}
// clang-format on

}}  // namespace kfx::math
"""


def arctan_of_inverse(n):
    total = term = ONE // n
    k = 1
    while term:
        term //= n * n
        k += 2
        total += -(term // k) if k % 4 == 3 else term // k
    return total


def artanh_of_ratio(p, q):
    """The inverse hyperbolic tangent of p / q."""
    total = 0
    term = ONE * p // q
    k = 1
    while term:
        total += term // k
        term = term * p * p // (q * q)
        k += 2
    return total


PI = 4 * (4 * arctan_of_inverse(5) - arctan_of_inverse(239))  # Machin
LN2 = 2 * artanh_of_ratio(1, 3)


def exponential(x):
    total = term = ONE
    k = 1
    while term:
        term = (term * x >> BITS) // k
        total += term
        k += 1
    return total


def sine(x):
    total, term, k = 0, x, 1
    while term:
        total += term
        term = -((term * x >> BITS) * x >> BITS) // ((k + 1) * (k + 2))
        k += 2
        if abs(term) <= 1:
            break
    return total


def as_double(value):
    return value / ONE


def as_fixed(number):
    """A double as a fraction; all doubles used here have fewer bits than the fractions."""
    top, bottom = number.as_integer_ratio()
    return top * ONE // bottom


def pair(value):
    high = as_double(value)
    return high, as_double(value - as_fixed(high))


def literal(number):
    if number == 0:
        return "0"
    sign, text = ("-", number.hex()[1:]) if number < 0 else ("", number.hex())
    digits, power = text.split("p")
    digits = digits.rstrip("0").rstrip(".")
    return f"{sign}{digits}p{int(power):+d}"


def lines(cells, per_line):
    rows = [cells[i:i + per_line] for i in range(0, len(cells), per_line)]
    return "\n".join("    " + ", ".join(row) + "," for row in rows)


def cut(value, unit):
    """The value rounded to a multiple of 2^unit, as a fraction of ONE."""
    step = ONE >> -unit
    return (value + step // 2) // step * step


def split(value, first, second):
    """Three doubles that add up to the value: multiples of 2^first, of 2^second, and the rest."""
    a = cut(value, first)
    b = cut(value - a, second)
    return as_double(a), as_double(b), as_double(value - a - b)


def write(name, body):
    (HERE / name).write_text(HEAD.format(body=body))


def write_exponential():
    cells = [", ".join(map(literal, pair(exponential(LN2 * j // 256)))) for j in range(256)]
    parts = ", ".join(map(literal, split(LN2 // 256, -41, -74)))
    write("exponential_table.cpp",
          f"const double kLn2Over256[3] = {{{parts}}};\n\n"
          f"const double kPowersOfTwo[2 * 256] = {{\n{lines(cells, 2)}\n}};")


def write_sine():
    cells = [", ".join(map(literal, pair(sine(PI * j // 512)))) for j in range(256)] + ["1, 0"]
    parts = ", ".join(map(literal, split(PI // 512, -37, -67)))
    both = ", ".join(map(literal, pair(PI // 512)))
    write("sine_table.cpp",
          f"const double kPiOver512[3] = {{{parts}}};\nconst double kPiOver512Pair[2] = {{{both}}};\n\n"
          f"const double kSines[2 * 257] = {{\n{lines(cells, 2)}\n}};")


def write_logarithm():
    cells = []
    for i in range(512):
        # The bits 0x3FE6A00000000000 + i * 2^43 are the lower end of significands that share an entry.
        place = (0x3FE6A << 44) + (i << 43)
        below_one = place < 0x3FF << 52
        low = (place & (1 << 52) - 1) / 2**52 + 1
        middle = (low + 2**-10) / (2 if below_one else 1)
        factor = 1.0 if place in (0x3FF << 52, (0x3FF << 52) - (1 << 43)) else round(1024 / middle) / 1024
        top, bottom = factor.as_integer_ratio()
        minus_log = 2 * artanh_of_ratio(abs(top - bottom), top + bottom)
        minus_log = minus_log if factor < 1 else -minus_log
        high = cut(minus_log, -42)
        cells.append(", ".join(map(literal, (factor, as_double(high), as_double(minus_log - high)))))
    high = cut(LN2, -42)
    both = literal(as_double(high)) + ", " + literal(as_double(LN2 - high))
    write("logarithm_table.cpp",
          f"const double kLn2[2] = {{{both}}};\n\n"
          f"const double kLogarithms[3 * 512] = {{\n{lines(cells, 2)}\n}};")


def words(value, count):
    """The first `count` words of 32 bits behind the point."""
    return [f"0x{value >> (BITS - 32 * (k + 1)) & 0xFFFFFFFF:08X}" for k in range(count)]


def write_wide():
    two_over_pi = 2 * ONE * ONE // PI
    body = []
    for name, value, count in (("kWideLn2", LN2, 48), ("kWideQuarterPi", PI // 4, 48), ("kTwoOverPi", two_over_pi, 86)):
        body.append(f"const uint32_t {name}[{count}] = {{\n{lines(words(value, count), 8)}\n}};")
    write("wide_table.cpp", "\n\n".join(body))


write_exponential()
write_sine()
write_logarithm()
write_wide()
