#!/usr/bin/env python3
"""Writes numlib_discrete.txt: reference values for the binomial, Poisson and hypergeometric
probabilities of the numerical library.

Each line is `op digits args... expected` with op one of bin_le, bin_gt, bin_eq (args n p k),
poi_le, poi_gt, poi_eq (args lambda k), hyp_le, hyp_gt, hyp_eq (args n l m k): P(X <= k),
P(X > k) and P(X = k), correctly rounded to `digits` significant digits (ties to even) and
written with one digit before the point.

Binomial and hypergeometric values of modest size are exact rational sums (Python fractions);
larger binomial and hypergeometric cases sum the masses in mpmath from the far side of the mean
(term ratios, stopped when the geometric bound on the rest is below the working precision);
Poisson values come from mpmath's regularized incomplete gamma function. Every inexact value is
computed at two working precisions, and kept only if both round alike and lie clearly away from
a halfway point.

Usage: python3 make_numlib_discrete_reference.py [output]   (default: next to this file)
"""

import os
import sys
from fractions import Fraction
from math import comb

import mpmath
from mpmath import mp, mpf

from make_numlib_continuous_reference import fmt  # m * 10^e as reference text

if hasattr(sys, "set_int_max_str_digits"):
    sys.set_int_max_str_digits(0)


def decimal_exponent(q):
    """E with 10^E <= q < 10^(E+1), for a positive fraction."""
    e = (q.numerator.bit_length() - q.denominator.bit_length()) * 30103 // 100000
    while Fraction(10) ** e > q:
        e -= 1
    while Fraction(10) ** (e + 1) <= q:
        e += 1
    return e


def round_fraction(q, digits):
    """(mantissa, exponent, distance to the nearest halfway point in units of the last place)."""
    if q == 0:
        return 0, 0, Fraction(1)
    e = decimal_exponent(q) - digits + 1
    scaled = q / Fraction(10) ** e
    m = scaled.numerator // scaled.denominator
    frac = scaled - m
    if frac > Fraction(1, 2) or (frac == Fraction(1, 2) and m % 2 == 1):
        m += 1
    return m, e, abs(frac - Fraction(1, 2))


def exact(q, digits):
    m, e, _ = round_fraction(q, digits)
    return fmt(m, e)


def to_fraction(x):
    sign, man, exp, _ = mpf(x)._mpf_
    v = Fraction(int(man)) * 2**exp if exp >= 0 else Fraction(int(man), 2**-exp)
    return -v if sign else v


def decided(compute, digits):
    """compute(dps) -> mpf; rounded at two precisions that must agree, away from a tie."""
    dps = digits + 30
    while True:
        mp.dps = dps
        a = to_fraction(compute(dps))
        mp.dps = 2 * dps
        b = to_fraction(compute(2 * dps))
        ma, ea, da = round_fraction(a, digits)
        mb, eb, db = round_fraction(b, digits)
        if (ma, ea) == (mb, eb) and db > Fraction(1, 10**12):
            return fmt(ma, ea)
        dps *= 2


# ---- binomial ----


def binomial_exact(n, p, k):
    p = Fraction(p)
    q = 1 - p
    mass = [comb(n, j) * p**j * q ** (n - j) for j in range(n + 1)] if n <= 3000 else None
    le = sum(mass[: k + 1])
    return le, sum(mass[k + 1 :]), mass[k]


def walk(first, ratio, start, stop, step, dps):
    """first + first r(start) + ... toward stop; ratios shrink, stop when the rest is negligible."""
    total = term = first
    j = start
    eps = mpf(10) ** (-dps - 5)
    while j != stop:
        r = ratio(j)
        if r < 1 and term * r / (1 - r) < total * eps:
            break
        term *= r
        total += term
        j += step
    return total


def binomial_mp(n, text, k, which, dps):
    pf = Fraction(text)
    p = mpf(pf.numerator) / pf.denominator
    q = mpf(pf.denominator - pf.numerator) / pf.denominator

    def mass(j):
        return mp.exp(mp.loggamma(n + 1) - mp.loggamma(j + 1) - mp.loggamma(n - j + 1)
                      + j * mp.log(p) + (n - j) * mp.log(q))

    if which == "eq":
        return mass(k)
    lower = k < n * p
    if lower:
        far = walk(mass(k), lambda j: j * q / ((n - j + 1) * p), k, 0, -1, dps)
    else:
        far = walk(mass(k + 1), lambda j: (n - j) * p / ((j + 1) * q), k + 1, n, 1, dps)
    if (which == "le") == lower:
        return far
    return 1 - far


def binomial_cases(digits, cases, out):
    for n, p, k in cases:
        if n <= 3000:
            le, gt, eq = binomial_exact(n, p, k)
            values = {"le": exact(le, digits), "gt": exact(gt, digits), "eq": exact(eq, digits)}
        else:
            values = {w: decided(lambda dps, w=w: binomial_mp(n, p, k, w, dps), digits)
                      for w in ("le", "gt", "eq")}
        for w in ("le", "gt", "eq"):
            out.append("bin_%s %d %d %s %d %s" % (w, digits, n, p, k, values[w]))


# ---- Poisson ----


def poisson_mp(text, k, which, dps):
    lam = mpf(Fraction(text).numerator) / Fraction(text).denominator

    def mass(j):
        return mp.exp(j * mp.log(lam) - lam - mp.loggamma(j + 1))

    if which == "eq":
        return mass(k)
    try:
        if which == "le":
            return mp.gammainc(k + 1, lam, mp.inf, regularized=True)
        return mp.gammainc(k + 1, 0, lam, regularized=True)
    except mpmath.libmp.NoConvergence:  # large lambda: sum the far tail instead
        lower = k < lam
        if lower:
            far = walk(mass(k), lambda j: j / lam, k, 0, -1, dps)
        else:
            far = walk(mass(k + 1), lambda j: lam / (j + 1), k + 1, -1, 1, dps)
        return far if (which == "le") == lower else 1 - far


def poisson_cases(digits, cases, out):
    for lam, k in cases:
        for w in ("le", "gt", "eq"):
            v = decided(lambda dps, w=w: poisson_mp(lam, k, w, dps), digits)
            out.append("poi_%s %d %s %d %s" % (w, digits, lam, k, v))


# ---- hypergeometric ----


def falling(a, j):
    r = 1
    for i in range(j):
        r *= a - i
    return r


def hyper_mass(n, l, m, j):
    """C(l, j) C(n-l, m-j) / C(n, m), exactly; symmetric in l and m, so m is the smaller."""
    if j < max(0, l + m - n) or j > min(l, m):
        return Fraction(0)
    l, m = max(l, m), min(l, m)
    return Fraction(comb(m, j) * falling(l, j) * falling(n - l, m - j), falling(n, m))


def hyper_cases(digits, cases, out):
    for n, l, m, k in cases:
        lo, hi = max(0, l + m - n), min(l, m)
        mass = {j: hyper_mass(n, l, m, j) for j in range(lo, hi + 1)}
        le = sum((v for j, v in mass.items() if j <= k), Fraction(0))
        gt = sum((v for j, v in mass.items() if j > k), Fraction(0))
        eq = mass.get(k, Fraction(0))
        assert le + gt == 1
        for w, v in (("le", le), ("gt", gt), ("eq", eq)):
            out.append("hyp_%s %d %d %d %d %d %s" % (w, digits, n, l, m, k, exact(v, digits)))


def hyper_mp(n, l, m, k, which, dps):
    def lf(x):
        return mp.loggamma(x + 1)

    def mass(j):
        return mp.exp(lf(l) - lf(j) - lf(l - j) + lf(n - l) - lf(m - j) - lf(n - l - m + j)
                      - lf(n) + lf(m) + lf(n - m))

    if which == "eq":
        return mass(k)
    lo, hi = max(0, l + m - n), min(l, m)
    lower = k * n < l * m
    if lower:
        far = walk(mass(k), lambda j: mpf(j) * (n - l - m + j) / ((l - j + 1) * (m - j + 1)),
                   k, lo, -1, dps)
    else:
        far = walk(mass(k + 1), lambda j: mpf(l - j) * (m - j) / ((j + 1) * (n - l - m + j + 1)),
                   k + 1, hi, 1, dps)
    return far if (which == "le") == lower else 1 - far


def hyper_large_cases(digits, cases, out):
    for n, l, m, k in cases:
        for w in ("le", "gt", "eq"):
            v = decided(lambda dps, w=w: hyper_mp(n, l, m, k, w, dps), digits)
            out.append("hyp_%s %d %d %d %d %d %s" % (w, digits, n, l, m, k, v))


BINOMIAL = [
    (10, "0.3", 0), (10, "0.3", 3), (10, "0.3", 9), (20, "0.5", 10), (1, "0.5", 0),
    (50, "0.01", 0), (50, "0.01", 12), (100, "0.999", 99), (100, "0.999", 80),
    (1000, "0.5", 100), (1000, "0.5", 900), (1000, "1e-6", 0), (1000, "1e-6", 3),
    (30, "0.123456789", 4), (2000, "0.3", 600), (2000, "0.3", 599), (7, "0.9999999999", 6),
    (200, "1e-30", 1),
]
BINOMIAL_LARGE = [
    (10**6, "0.5", 500000), (10**6, "0.5", 400000), (10**6, "0.25", 251000),
    (123456789, "1e-8", 0), (123456789, "1e-8", 5),
]
BINOMIAL_HUGE = [  # n about 1e9: summed only at the lower precisions
    (10**9, "0.5", 500000000), (10**9, "0.5", 499900000), (10**9, "1e-9", 3),
    (999999999, "0.3", 300050000),
]
POISSON = [
    ("0.5", 0), ("2.5", 3), ("10", 10), ("10", 30), ("1", 100), ("1000", 100), ("1000", 1000),
    ("1e-5", 0), ("1e-5", 2), ("123.456", 100), ("123.456", 150), ("0.999999", 1),
]
POISSON_LARGE = [(1000000, 1000000), (1000000, 990000), (1000000, 1005000), (1000000, 0)]
HYPER = [
    (20, 7, 5, 2), (20, 7, 5, 0), (20, 7, 5, 4), (10, 5, 7, 2), (10, 5, 7, 4), (50, 25, 25, 3),
    (50, 25, 25, 22), (1000, 10, 500, 5), (1000, 500, 500, 150), (1000, 500, 500, 350),
    (1000, 999, 998, 997), (1, 1, 1, 0), (100000, 60000, 30, 10),
    (10**9, 5 * 10**8, 100, 50), (10**9, 3, 10**8, 0), (10**9, 10**8, 40, 30),
]
HYPER_LARGE = [(10**9, 5 * 10**8, 5 * 10**8, 250000000), (10**7, 3 * 10**6, 4 * 10**6, 1190000)]


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(
        os.path.dirname(os.path.abspath(__file__)), "numlib_discrete.txt")
    out = ["# op digits args... expected: P(X <= k) (le), P(X > k) (gt), P(X = k) (eq),",
           "# correctly rounded. Written by make_numlib_discrete_reference.py; do not edit."]
    for digits in (10, 30, 100):
        binomial_cases(digits, BINOMIAL + BINOMIAL_LARGE, out)
        if digits < 100:
            binomial_cases(digits, BINOMIAL_HUGE, out)
        poisson_cases(digits, POISSON + POISSON_LARGE, out)
        hyper_cases(digits, HYPER, out)
        if digits < 100:
            hyper_large_cases(digits, HYPER_LARGE, out)
    binomial_cases(1000, [(10, "0.3", 3), (1000, "0.5", 100), (1000, "0.5", 499)], out)
    poisson_cases(1000, [("2.5", 3), ("1000", 900), ("1", 200)], out)
    hyper_cases(1000, [(1000, 500, 500, 150), (50, 25, 25, 12)], out)
    with open(path, "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
