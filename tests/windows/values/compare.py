#!/usr/bin/env python3
"""Runs the program of values natively and on Windows and compares every line of what they print.

usage: compare.py NATIVE_PROGRAM WINDOWS_COMMAND...
"""
import os
import subprocess
import sys

LEAST_LINES = 5000

# Where Wine does something else than Windows is documented to do: the line's label, and why.
WINE_DIFFERS = {
    "variant 5 0.3333333333333333 as 14": "a double is good for 15 digits of a decimal, Wine takes 16",
    "variant 4 16777216 as 14": "a float is good for 7 digits of a decimal, Wine takes 8",
    "variant 4 16777216 as 7": "Wine makes dates beyond the year 9999 of floats",
    "variant 4 3.4e+38 as 7": "Wine makes dates beyond the year 9999 of floats",
    "variant 14 4294967295:18446744073709551615e-0 as 7": "Wine makes dates beyond the year 9999 of decimals",
    "variant 11 -1 as 14": "Wine's decimal of true is 1",
    "variant 14 5e-28 as 6": "Wine rounds a tiny decimal up",
    "variant 8 '&H1F' as 6": "Wine makes no currency of hexadecimal digits",
    "variant 7 0.999999 as 8": "rounded to the second it is the next day, whose date Wine leaves out",
}


def lines(command):
    """What a program prints, as (label, result) in order."""
    done = subprocess.run(command, stdout=subprocess.PIPE, timeout=300, check=True)
    text = done.stdout.decode("ascii").replace("\r\n", "\n")
    return [tuple(line.split(" = ", 1)) for line in text.splitlines()]


def main():
    assert os.path.exists(sys.argv[1]), f"{sys.argv[1]} is missing: build the dev preset first"
    native, windows = lines(sys.argv[1:2]), lines(sys.argv[2:])
    assert len(native) >= LEAST_LINES, f"only {len(native)} values"
    assert [label for label, _ in native] == [label for label, _ in windows], "other values are printed"
    different = [(label, here, there) for (label, here), (_, there) in zip(native, windows)
                 if here != there and label not in WINE_DIFFERS]
    for label, here, there in different:
        print(f"{label}\n    native:  {here}\n    Windows: {there}")
    print(f"{len(native)} values on both platforms, {len(different)} differ.")
    return 1 if different else 0


sys.exit(main())
