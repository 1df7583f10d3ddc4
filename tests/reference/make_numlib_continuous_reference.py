#!/usr/bin/env python3
"""Writes numlib_continuous.txt: reference values for the continuous probability routines
(normal, Student t, chi-square, F, beta, gamma).

Each line is `op digits args... expected`: op is the routine's name (g01eac ... g01efc; the
beta routine g01eec appears as g01eec_p, g01eec_q and g01eec_pdf), a tail where the routine
takes one (lower, upper, signif, confid), the real arguments as decimal text, and the value
correctly rounded to `digits` significant digits.

Probabilities are evaluated with mpmath at 3*digits+50 decimal digits and again 25 digits
higher; a rounding is written only when both agree. Each tail is computed directly (the
upper tail of a beta law as I_(1-x)(b, a), never as 1 - P). The deviate routines' values are
written by make_numlib_deviate_reference.py, which uses the tails defined here.

Usage: python3 make_numlib_continuous_reference.py [output]
"""

import os
import sys

import mpmath
from mpmath import mp, mpf

TAILS = ["lower", "upper", "signif", "confid"]


# ---- rounding ----

def round_sig(v, d):
    """(m, e) with m * 10^e the value v rounded to d significant digits, or None if v = 0."""
    if v == 0:
        return None
    s = -1 if v < 0 else 1
    v = abs(v)
    e = int(mpmath.floor(mpmath.log10(v))) - d + 1
    m = v / mpf(10) ** e
    while m >= mpf(10) ** d:
        e += 1
        m = v / mpf(10) ** e
    while m < mpf(10) ** (d - 1):
        e -= 1
        m = v / mpf(10) ** e
    n = int(mpmath.nint(m))
    if n == 10 ** d:
        n //= 10
        e += 1
    return s * n, e


def fmt(m, e):
    if m == 0:
        return "0"
    while m % 10 == 0:
        m //= 10
        e += 1
    s = str(abs(m))
    lead = e + len(s) - 1
    text = ("-" if m < 0 else "") + s[0] + ("." + s[1:] if len(s) > 1 else "")
    return text + ("e%d" % lead if lead != 0 else "")


def decided(f, d):
    """f() evaluated at two precisions; the rounding to d digits when they agree."""
    base = 3 * d + 50
    for extra in range(0, 2000, 300):
        with mp.workdps(base + extra):
            a = f()
        with mp.workdps(base + extra + 25):
            b = f()
            ra, rb = round_sig(a, d), round_sig(b, d)
        if ra == rb:
            return "0" if ra is None else fmt(*ra)
    raise RuntimeError("undecided")


# ---- tails: each returns (lower, upper) evaluated directly ----

def normal_tails(x):
    s = mpmath.sqrt(2)
    return mpmath.erfc(-x / s) / 2, mpmath.erfc(x / s) / 2


def normal_two(x):
    s = mpmath.sqrt(2)
    return mpmath.erfc(abs(x) / s), mpmath.erf(abs(x) / s)


def betainc(a, b, z, zc):
    """Regularized I_z(a, b), with zc = 1 - z given separately."""
    if z <= 0:
        return mpf(0)
    if zc <= 0:
        return mpf(1)
    if z <= a / (a + b):
        return mpmath.betainc(a, b, 0, z, regularized=True)
    return 1 - mpmath.betainc(b, a, 0, zc, regularized=True)


def beta_pair(a, b, z, zc):
    """(I_z(a, b), I_zc(b, a)), the smaller computed directly."""
    if z <= a / (a + b):
        lo = mpmath.betainc(a, b, 0, z, regularized=True) if z > 0 else mpf(0)
        return lo, 1 - lo
    up = mpmath.betainc(b, a, 0, zc, regularized=True) if zc > 0 else mpf(0)
    return 1 - up, up


def t_two(x, nu):
    """(P(|T| >= |x|), P(|T| <= |x|))."""
    x2 = x * x
    s, c = beta_pair(nu / 2, mpf(1) / 2, nu / (nu + x2), x2 / (nu + x2))
    return s, c


def t_tails(x, nu):
    s, c = t_two(x, nu)
    if x < 0:
        return s / 2, (1 + c) / 2
    return (1 + c) / 2, s / 2


def gamma_tails(x, a):
    if x == 0:
        return mpf(0), mpf(1)
    return (mpmath.gammainc(a, 0, x, regularized=True),
            mpmath.gammainc(a, x, mpmath.inf, regularized=True))


def f_tails(f, d1, d2):
    return beta_pair(d1 / 2, d2 / 2, d1 * f / (d1 * f + d2), d2 / (d1 * f + d2))


def pick(tail, lower, upper):
    if tail == "lower":
        return lower
    if tail == "upper":
        return upper
    if tail == "signif":
        return 2 * min(lower, upper)
    return abs(lower - upper)


# ---- cases ----

def lines_probabilities(out):
    for d in [10, 30, 100]:
        for x in ["-40", "-9.5", "-1.5", "-0.3", "0", "0.7", "2.5", "37.5"]:
            for tail in TAILS:
                def f(x=x, tail=tail):
                    xx = mpf(x)
                    if tail in ("signif", "confid"):
                        s, c = normal_two(xx)
                        return s if tail == "signif" else c
                    return pick(tail, *normal_tails(xx))
                out.append("g01eac %d %s %s %s" % (d, tail, x, decided(f, d)))
    for x in ["-40", "1.25"]:
        out.append("g01eac 1000 lower %s %s" % (x, decided(lambda x=x: normal_tails(mpf(x))[0],
                                                           1000)))
    # far tails whose exponents run to -1e17, the edge of the float's range
    for d in [10, 30]:
        for x in ["-1e7", "-3e7", "-6.7e8"]:
            for tail in ["lower", "signif"]:
                def f(x=x, tail=tail):
                    lo = normal_tails(mpf(x))[0]
                    return lo if tail == "lower" else 2 * lo
                out.append("g01eac %d %s %s %s" % (d, tail, x, decided(f, d)))
    def t_line(d, tail, x, nu):
        def f():
            xx, n = mpf(x), mpf(nu)
            if tail in ("signif", "confid"):
                s, c = t_two(xx, n)
                return s if tail == "signif" else c
            return pick(tail, *t_tails(xx, n))
        return "g01ebc %d %s %s %s %s" % (d, tail, x, nu, decided(f, d))
    for d in [10, 30, 100]:
        for nu in ["0.001", "1", "2.5", "30", "2000"]:
            for x in ["-50", "-2.1", "0.35", "4"]:
                for tail in TAILS if d < 100 else ["lower", "upper"]:
                    out.append(t_line(d, tail, x, nu))
    # arguments with more digits than Digits are taken exactly
    for x, nu in [("1.28870330691452449339450313685", "3"), ("-12.8870330691452449339450313685", "74")]:
        for tail in TAILS:
            out.append(t_line(15, tail, x, nu))
    for d in [10, 30, 100]:
        for nu, xs in [("0.001", ["1e-300", "0.5", "8"]), ("1", ["0.01", "3.84"]),
                       ("7.5", ["0.2", "7", "60"]), ("200", ["150", "260", "900"]),
                       ("2000000", ["1990000", "2004000"])]:
            for x in xs:
                for tail in TAILS if d < 100 else ["lower", "upper"]:
                    def f(x=x, nu=nu, tail=tail):
                        return pick(tail, *gamma_tails(mpf(x) / 2, mpf(nu) / 2))
                    out.append("g01ecc %d %s %s %s %s" % (d, tail, x, nu, decided(f, d)))
    for d in [10, 30, 100]:
        for a, b, xs in [("0.001", "1", ["1e-50", "2"]), ("2.5", "0.5", ["0.1", "3", "40"]),
                         ("100", "3", ["240", "330"]), ("100000", "1", ["99000", "101500"]),
                         ("1000000", "2", ["1996000", "2001000"])]:
            for x in xs:
                for tail in TAILS if d < 100 else ["lower", "upper"]:
                    def f(x=x, a=a, b=b, tail=tail):
                        return pick(tail, *gamma_tails(mpf(x) / mpf(b), mpf(a)))
                    out.append("g01efc %d %s %s %s %s %s" % (d, tail, x, a, b, decided(f, d)))
    for d in [10, 30, 100]:
        for d1, d2, xs in [("1", "1", ["0.02", "161"]), ("0.001", "5", ["1e-20", "3"]),
                           ("4.5", "12", ["0.3", "2.2", "40"]), ("200", "3000", ["0.8", "1.3"]),
                           ("300", "800", ["0.7", "1.25"])]:
            for x in xs:
                for tail in TAILS if d < 100 else ["lower", "upper"]:
                    def f(x=x, d1=d1, d2=d2, tail=tail):
                        return pick(tail, *f_tails(mpf(x), mpf(d1), mpf(d2)))
                    out.append("g01edc %d %s %s %s %s %s" % (d, tail, x, d1, d2,
                                                             decided(f, d)))
    for d in [10, 30, 100]:
        for a, b, xs in [("0.001", "1000000", ["1e-200", "1e-6"]), ("0.5", "0.5", ["0.01", "0.999"]),
                         ("2", "3.5", ["0.05", "0.4", "0.97"]), ("1000", "50", ["0.93", "0.99"]),
                         ("300", "200", ["0.56", "0.64"])]:
            for x in xs:
                def pq(x=x, a=a, b=b):
                    from decimal import Decimal
                    return beta_pair(mpf(a), mpf(b), mpf(x), mpf(str(1 - Decimal(x))))
                out.append("g01eec_p %d %s %s %s %s" % (d, x, a, b, decided(lambda: pq()[0], d)))
                out.append("g01eec_q %d %s %s %s %s" % (d, x, a, b, decided(lambda: pq()[1], d)))

                def pdf(x=x, a=a, b=b):
                    xx, aa, bb = mpf(x), mpf(a), mpf(b)
                    return mpmath.exp((aa - 1) * mpmath.log(xx) + (bb - 1) * mpmath.log1p(-xx) -
                                      mpmath.log(mpmath.beta(aa, bb)))
                out.append("g01eec_pdf %d %s %s %s %s" % (d, x, a, b, decided(pdf, d)))


def main():
    sys.setrecursionlimit(10000)
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(
        os.path.abspath(__file__)), "numlib_continuous.txt")
    out = ["# op digits [tail] args... expected: correctly rounded to digits digits.",
           "# Written by make_numlib_continuous_reference.py; do not edit."]
    lines_probabilities(out)
    with open(path, "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
