#!/usr/bin/env python3
"""Writes sharpen.txt: data sharpening (Choi and Hall, 1999) of a few fixed samples, one line
per moved point.

Each line is `sharpen digits data weights bandwidth index expected`, data and weights
comma-separated decimals (weights `-` for none), index 0-based. The moved point is
sum w_j x_j K((x_i - x_j) / h) / sum w_j K(...) with K(u) = exp(-u^2 / 2). Bandwidth 0 means
Silverman's rule 0.9 min(s, IQR / 1.34) n^(-1/5): s the sample deviation (n - 1), IQR from
the quantiles at 1 + (n - 1) p of the sorted data (linear interpolation). Computed with
mpmath at 120 digits, then rounded.

Usage: python3 make_sharpen_reference.py [output]   (default: sharpen.txt next to this file)
"""

import os
import sys

import mpmath

SAMPLES = [
    ("0.3,1.7,2.2,-0.4,5,2.9", "-", "0.8"),
    ("0.3,1.7,2.2,-0.4,5,2.9", "1,2,0.5,1,3,1.5", "1.3"),
    ("0.3,1.7,2.2,-0.4,5,2.9", "-", "0"),
    ("12.5,12.25,100,13,99.5,12.75,101", "-", "0"),
]


def quantile(s, p):
    h = 1 + (len(s) - 1) * p
    j = int(mpmath.floor(h))
    if j >= len(s):
        return s[-1]
    return s[j - 1] + (h - j) * (s[j] - s[j - 1])


def silverman(xs):
    n = len(xs)
    mean = mpmath.fsum(xs) / n
    sd = mpmath.sqrt(mpmath.fsum((x - mean) ** 2 for x in xs) / (n - 1))
    s = sorted(xs)
    iqr = (quantile(s, mpmath.mpf(3) / 4) - quantile(s, mpmath.mpf(1) / 4)) / mpmath.mpf("1.34")
    spread = min(sd, iqr) if min(sd, iqr) > 0 else max(sd, iqr)
    return mpmath.mpf(9) / 10 * spread * mpmath.mpf(n) ** (mpmath.mpf(-1) / 5)


def sharpen(xs, ws, h):
    out = []
    for xi in xs:
        k = [mpmath.exp(-((xi - xj) / h) ** 2 / 2) for xj in xs]
        out.append(mpmath.fsum(w * x * kk for x, w, kk in zip(xs, ws, k)) /
                   mpmath.fsum(w * kk for w, kk in zip(ws, k)))
    return out


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "sharpen.txt")
    mpmath.mp.dps = 120
    lines = ["# op digits data weights bandwidth index expected: data sharpening.",
             "# Written by make_sharpen_reference.py."]
    for data, weights, bandwidth in SAMPLES:
        xs = [mpmath.mpf(t) for t in data.split(",")]
        ws = [mpmath.mpf(1)] * len(xs) if weights == "-" else [mpmath.mpf(t) for t in weights.split(",")]
        h = mpmath.mpf(bandwidth)
        moved = sharpen(xs, ws, silverman(xs) if h == 0 else h)
        for i, v in enumerate(moved):
            for digits in (10, 30):
                lines.append("sharpen %d %s %s %s %d %s" % (
                    digits, data, weights, bandwidth, i,
                    mpmath.nstr(v, digits, min_fixed=1, max_fixed=0, strip_zeros=False)))
    with open(out, "w") as f:
        f.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
