#!/usr/bin/env python3
"""Writes roots.txt: roots of smooth monotone functions, to more digits than any test uses.

Each line is `op digits y expected`: the x with f(x) = y, rounded to `digits` significant
digits, where op names f:
  cube    f(x) = x^3, the root is y^(1/3)
  exp     f(x) = exp(x), the root is ln(y)
  normal  f(x) = (1 + erf(x / sqrt(2))) / 2, the standard normal distribution function

Computed with mpmath at twice the written digits plus 30.

Usage: python3 make_roots_reference.py [output]   (default: roots.txt next to this file)
"""

import os
import sys

import mpmath

DIGITS = 320


def root(op, y):
    y = mpmath.mpf(y)
    if op == "cube":
        return mpmath.cbrt(y)
    if op == "exp":
        return mpmath.log(y)
    if op == "normal":
        return mpmath.findroot(lambda x: mpmath.ncdf(x) - y, mpmath.sqrt(2) * mpmath.erfinv(2 * y - 1))
    raise ValueError(op)


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "roots.txt")
    mpmath.mp.dps = 2 * DIGITS + 30
    lines = ["# op digits y expected: the root x of f(x) = y (cube: x^3, exp: exp(x), normal: the",
             "# standard normal distribution function). Written by make_roots_reference.py."]
    for op, y in [("cube", "2"), ("exp", "10"), ("normal", "0.975"), ("normal", "0.025")]:
        x = root(op, y)
        lines.append("%s %d %s %s" % (op, DIGITS, y, mpmath.nstr(x, DIGITS, min_fixed=1, max_fixed=0)))
    with open(out, "w") as f:
        f.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
