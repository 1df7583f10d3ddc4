#!/usr/bin/env python3
"""Writes kernel_density.txt: kernel density estimates summed directly, and Silverman's
bandwidth of a few fixed samples, to the digits of each line.

Each line is `op digits data weights [h x] expected`, data and weights comma-separated
decimals (weights `-` for none):
  kde1 .. kde5  sum w K((x - xi) / h) / (h sum w) with the gaussian, Epanechnikov, biweight,
                triangular and rectangular kernel
  silverman     0.9 min(sd, IQR / 1.34) n^(-1/5): sd with divisor n - 1, quartiles linear at
                1 + (n - 1) p of the sorted data
Computed with mpmath at 120 digits, then rounded.

Usage: python3 make_kernel_density_reference.py [output]   (default: next to this file)
"""

import os
import sys

import mpmath

SAMPLES = [
    ("1.2,2.5,2.7,3.1,4,5.5", "-"),
    ("0.125,7.5,3.25,9.875,1.001,6.5", "1,0.5,2,3.25,0.125,4"),
]
POINTS = ["0", "2.6", "3.3", "6.2"]
BANDWIDTHS = ["0.5", "1.75"]


def kernel(k, u):
    if k == 1:
        return mpmath.exp(-u * u / 2) / mpmath.sqrt(2 * mpmath.pi)
    if abs(u) > 1:
        return mpmath.mpf(0)
    return {2: mpmath.mpf(3) / 4 * (1 - u * u), 3: mpmath.mpf(15) / 16 * (1 - u * u) ** 2,
            4: 1 - abs(u), 5: mpmath.mpf(1) / 2}[k]


def quartile(sorted_xs, p):
    pos = 1 + (len(sorted_xs) - 1) * p
    j = int(mpmath.floor(pos))
    frac = pos - j
    if j >= len(sorted_xs):
        return sorted_xs[-1]
    return sorted_xs[j - 1] + frac * (sorted_xs[j] - sorted_xs[j - 1])


def silverman(xs):
    n = len(xs)
    mean = mpmath.fsum(xs) / n
    sd = mpmath.sqrt(mpmath.fsum((x - mean) ** 2 for x in xs) / (n - 1))
    s = sorted(xs)
    iqr = (quartile(s, mpmath.mpf("0.75")) - quartile(s, mpmath.mpf("0.25"))) / mpmath.mpf("1.34")
    spread = iqr if 0 < iqr < sd else sd
    return mpmath.mpf("0.9") * spread * mpmath.power(n, mpmath.mpf("-0.2"))


def fmt(v, digits):
    return mpmath.nstr(v, digits, min_fixed=1, max_fixed=0, strip_zeros=False)


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__),
                                                             "kernel_density.txt")
    mpmath.mp.dps = 120
    lines = ["# op digits data weights [h x] expected: direct kernel density sums and Silverman's",
             "# bandwidth. Written by make_kernel_density_reference.py."]
    for data, weights in SAMPLES:
        xs = [mpmath.mpf(t) for t in data.split(",")]
        ws = [mpmath.mpf(1)] * len(xs) if weights == "-" else [mpmath.mpf(t) for t in weights.split(",")]
        for k in range(1, 6):
            for h in BANDWIDTHS:
                for x in POINTS:
                    hh, xx = mpmath.mpf(h), mpmath.mpf(x)
                    v = mpmath.fsum(w * kernel(k, (xx - xi) / hh) for xi, w in zip(xs, ws))
                    v /= hh * mpmath.fsum(ws)
                    for digits in (10, 30):
                        lines.append("kde%d %d %s %s %s %s %s" % (k, digits, data, weights, h, x,
                                                                  fmt(v, digits)))
        if weights == "-":
            for digits in (10, 30):
                lines.append("silverman %d %s - %s" % (digits, data, fmt(silverman(xs), digits)))
    with open(out, "w") as f:
        f.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
