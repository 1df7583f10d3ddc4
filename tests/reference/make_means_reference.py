#!/usr/bin/env python3
"""Writes means.txt: means of four kinds, moments and mean absolute deviations of a few fixed
samples, simple and weighted, to the digits of each line.

Each line is `op digits data weights expected`, with data and weights comma-separated
decimals (weights `-` for none):
  mean0 .. mean3  arithmetic, geometric, harmonic and quadratic means, as the worker's kind
                  (0 arithmetic, 1 geometric, 2 harmonic, 3 quadratic)
  momentK         the raw moment of order K about 1/2
  absdev          the mean absolute deviation about 3
The weighted forms put the weights in place of the count. Computed with mpmath at 120
digits, then rounded.

Usage: python3 make_means_reference.py [output]   (default: means.txt next to this file)
"""

import os
import sys

import mpmath

SAMPLES = [
    ("1,2,4", "-"),
    ("0.125,7.5,3.25,9.875,1.001,6.5", "-"),
    ("0.125,7.5,3.25,9.875,1.001,6.5", "1,0.5,2,3.25,0.125,4"),
    ("12345.678,0.0009,314.159,2.71828,1e-5", "3,1,4,1,5"),
]


def value(op, xs, ws):
    w_total = mpmath.fsum(ws)
    if op == "mean0":
        return mpmath.fsum(w * x for x, w in zip(xs, ws)) / w_total
    if op == "mean1":
        return mpmath.exp(mpmath.fsum(w * mpmath.log(x) for x, w in zip(xs, ws)) / w_total)
    if op == "mean2":
        return w_total / mpmath.fsum(w / x for x, w in zip(xs, ws))
    if op == "mean3":
        return mpmath.sqrt(mpmath.fsum(w * x * x for x, w in zip(xs, ws)) / w_total)
    if op.startswith("moment"):
        k = int(op[6:])
        return mpmath.fsum(w * (x - mpmath.mpf("0.5")) ** k for x, w in zip(xs, ws)) / w_total
    if op == "absdev":
        return mpmath.fsum(w * abs(x - 3) for x, w in zip(xs, ws)) / w_total
    raise ValueError(op)


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "means.txt")
    mpmath.mp.dps = 120
    lines = ["# op digits data weights expected: means of four kinds, raw moments about 1/2 and",
             "# mean absolute deviations about 3. Written by make_means_reference.py."]
    for data, weights in SAMPLES:
        xs = [mpmath.mpf(t) for t in data.split(",")]
        ws = [mpmath.mpf(1)] * len(xs) if weights == "-" else [mpmath.mpf(t) for t in weights.split(",")]
        for op in ["mean0", "mean1", "mean2", "mean3", "moment1", "moment2", "moment3", "absdev"]:
            v = value(op, xs, ws)
            for digits in (10, 30, 50):
                lines.append("%s %d %s %s %s" % (op, digits, data, weights,
                                                 mpmath.nstr(v, digits, min_fixed=1, max_fixed=0,
                                                             strip_zeros=False)))
    with open(out, "w") as f:
        f.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
