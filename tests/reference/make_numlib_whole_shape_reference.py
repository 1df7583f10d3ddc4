#!/usr/bin/env python3
"""Writes numlib_whole_shapes.txt: reference values for the gamma, chi-square, beta and F
probabilities at whole shapes (and the first shapes past the finite sums' limit of 1000),
where the library sums finite series. Same line format as numlib_continuous.txt.

Beta and F values are exact: I_z(a, b) is the binomial sum over j >= a of
C(m, j) z^j (1-z)^(m-j), m = a + b - 1, taken in rationals from the decimal z, and rounded
exactly. Gamma values use Q(n, x) = e^-x sum_{k<n} x^k / k! with its rational sum in exact
arithmetic; every value is checked against mpmath's gammainc / betainc to 40 digits.

Usage: python3 make_numlib_whole_shape_reference.py [output]
"""

import functools
import os
import sys
from fractions import Fraction

import mpmath
from mpmath import mp, mpf

from make_numlib_continuous_reference import decided, fmt, pick

TAILS = ["lower", "upper", "signif", "confid"]


def round_fraction(v, d):
    """fmt of the positive rational v rounded to d significant digits, ties to even."""
    if v == 0:
        return "0"
    e = int((v.numerator.bit_length() - v.denominator.bit_length()) * 0.30103) - d
    while v / Fraction(10) ** e >= 10 ** d:
        e += 1
    while v / Fraction(10) ** e < 10 ** (d - 1):
        e -= 1
    q = v / Fraction(10) ** e
    n, r = divmod(q.numerator, q.denominator)
    if 2 * r > q.denominator or (2 * r == q.denominator and n % 2 == 1):
        n += 1
    if n == 10 ** d:
        n, e = n // 10, e + 1
    return fmt(n, e)


def check(exact, other):
    """Stops when an mpmath value disagrees with the exact one in the first 40 digits."""
    with mp.workdps(60):
        x, y = mpf(exact.numerator) / exact.denominator, mpf(other)
        if x != y and abs(x - y) > abs(x) * mpf(10) ** -40:
            raise RuntimeError("mpmath disagrees: %s %s" % (x, y))


@functools.lru_cache(maxsize=None)
def beta_exact(a, b, z):
    """(I_z(a, b), I_(1-z)(b, a), density) as rationals for whole a, b and rational z = u / v:
    integer sums over the common denominator v^m."""
    m = a + b - 1
    u, v = z.numerator, z.denominator
    terms = [binom(m, j) * u ** j * (v - u) ** (m - j) for j in range(m + 1)]
    lower, upper = Fraction(sum(terms[a:]), v ** m), Fraction(sum(terms[:a]), v ** m)
    density = Fraction(m * binom(m - 1, a - 1) * u ** (a - 1) * (v - u) ** (b - 1), v ** (m - 1))
    with mp.workdps(60):
        check(lower, mpmath.betainc(a, b, 0, mpf(u) / v, regularized=True))
        check(upper, mpmath.betainc(b, a, 0, mpf(v - u) / v, regularized=True))
    return lower, upper, density


def binom(m, j):
    r = 1
    for i in range(j):
        r = r * (m - i) // (i + 1)
    return r


def gamma_tails(n, x):
    """(P(n, x), Q(n, x)) with Q's finite sum in exact rationals; P as 1 - Q above x = n,
    else from its own series e^-x x^n / n! sum_j x^j / ((n+1)...(n+j))."""
    s = sum(x ** k / Fraction(binom_fact(k)) for k in range(n))
    xm = mpf(x.numerator) / x.denominator
    q = mpmath.exp(-xm) * (mpf(s.numerator) / s.denominator)
    if xm >= n:
        return 1 - q, q
    term, total, j = mpf(1), mpf(0), n
    while term > total * mpf(10) ** -(mp.dps + 10):
        total += term
        j += 1
        term *= xm / j
    return mpmath.exp(-xm + n * mpmath.log(xm) - mpmath.loggamma(n + 1)) * total, q


def binom_fact(k):
    r = 1
    for i in range(2, k + 1):
        r *= i
    return r


def gamma_checked(n, x):
    p, q = gamma_tails(n, x)
    with mp.workdps(60):
        xm = mpf(x.numerator) / x.denominator
        for mine, other in ((p, mpmath.gammainc(n, 0, xm, regularized=True)),
                            (q, mpmath.gammainc(n, xm, mpmath.inf, regularized=True))):
            if abs(mine - other) > abs(mine) * mpf(10) ** -40:
                raise RuntimeError("gammainc disagrees at %s %s" % (n, x))
    return p, q


def lines(out):
    for d in [10, 50]:
        for a, b in [(1, 1), (12, 8), (3, 1000), (300, 700), (1000, 1000)]:
            for x in ["1e-20", "0.3", "0.7", "0.999999"]:
                lower, upper, density = beta_exact(a, b, Fraction(x))
                for op, v in (("p", lower), ("q", upper), ("pdf", density)):
                    out.append("g01eec_%s %d %s %d %d %s" % (op, d, x, a, b, round_fraction(v, d)))
        for d1, d2, f in [(4, 10, "2.5"), (2, 2000, "0.5"), (24, 6, "1.75")]:
            fr = Fraction(f)
            z = Fraction(d1) * fr / (d1 * fr + d2)
            lower, upper, _ = beta_exact(d1 // 2, d2 // 2, z)
            for tail in TAILS:
                v = pick(tail, lower, upper)
                out.append("g01edc %d %s %s %d %d %s" % (d, tail, f, d1, d2, round_fraction(v, d)))
        for g, a, scale in [("7", 12, "0.5"), ("1e-30", 2, "1"), ("0.25", 1, "1"),
                            ("15", 57, "0.5"), ("390.5", 400, "1"), ("700", 400, "1"),
                            ("1000", 1000, "1"), ("2400", 1000, "1"), ("990", 1001, "1")]:
            x = Fraction(g) / Fraction(scale)
            for tail in TAILS:
                f = lambda: pick(tail, *gamma_checked(a, x))
                out.append("g01efc %d %s %s %d %s %s" % (d, tail, g, a, scale, decided(f, d)))
        for x, df in [("9", 24), ("1.5", 2), ("1990", 2000)]:
            for tail in ("lower", "upper"):
                f = lambda: pick(tail, *gamma_checked(df // 2, Fraction(x) / 2))
                out.append("g01ecc %d %s %s %d %s" % (d, tail, x, df, decided(f, d)))


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(
        os.path.abspath(__file__)), "numlib_whole_shapes.txt")
    out = ["# op digits [tail] args... expected: correctly rounded to digits digits.",
           "# Written by make_numlib_whole_shape_reference.py; do not edit."]
    lines(out)
    with open(path, "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
