#!/usr/bin/env python3
"""Writes numlib_large_shapes.txt: gamma and chi-square probabilities and deviates at shapes
from just above 10^6 to 10^40, near the mean and far out. Every probability is computed two
independent ways in mpmath, which must agree to 40 digits before it is written:
  1. quadrature: P(a, x) and Q(a, x) as integrals of e^(-a (m - 1 - log m)) / m over m below
     or above lambda = x / a, divided by the whole integral (which is sqrt(2 pi / a) Gamma*(a));
  2. the asymptotic expansion: Temme's erfc form with coefficients from exact rationals
     near the mean, and the tails' own series (summed until negligible) far from it.
Deviates are solved on the expansion and their rounding decided as in
make_numlib_deviate_reference.py. Same line format as the other numlib references.

Usage: python3 make_numlib_large_shape_reference.py [output]   (a few minutes)
"""

import os
import sys
from fractions import Fraction

import mpmath
from mpmath import mp, mpf

from make_numlib_continuous_reference import fmt, round_sig
from make_numlib_deviate_reference import confirm

AGREE = 40

# ---- 1. quadrature ----


def quad_tail(a, lam, upper):
    """The integral of e^(-a L(m)) / m, L = m - 1 - log m, over m > lam (or 0 < m < lam),
    with nodes packed at lam on the scale on which the integrand falls there."""
    L = lambda m: m - 1 - mpmath.log(m)
    # scaled to 1 at lam: the quadrature's tolerance is absolute
    top = L(lam)
    g = lambda m: mpmath.exp(-a * (L(m) - top)) / m
    slope = abs(a * (1 - 1 / lam))
    h = min(1 / slope if slope > 0 else mpf(1), 1 / mpmath.sqrt(a))
    steps = [0] + [2 ** k for k in range(0, 12)]
    if upper:
        pts = [lam + s * h for s in steps] + [mpmath.inf]
    else:
        pts = [lam - s * h for s in steps if lam - s * h > 0] + [mpf(0)]
        pts.reverse()
    return mpmath.quad(g, pts) * mpmath.exp(-a * top)


def quad_total(a):
    r = 1 / mpmath.sqrt(a)
    pts = [max(mpf(0), 1 + k * r) for k in range(-80, 81, 4)] + [mpmath.inf]
    pts = sorted(set(pts))
    L = lambda m: m - 1 - mpmath.log(m)
    return mpmath.quad(lambda m: mpmath.exp(-a * L(m)) / m, pts)


def by_quadrature(a, x):
    lam = x / a
    total = quad_total(a)
    small_upper = lam > 1
    small = quad_tail(a, lam, small_upper) / total
    return (1 - small, small) if small_upper else (small, 1 - small)


# ---- 2. the asymptotic expansion ----


def w_coefficients(m):
    """c_1..c_m of w = mu - 1 = sum c_k z^k with w - log(1 + w) = z^2/2, exactly."""
    c = [Fraction(0), Fraction(1)]
    for n in range(2, m + 1):
        s = sum((c[k] * c[n + 1 - k] for k in range(2, n)), Fraction(0))
        c.append(c[n - 1] / (n + 1) - s / 2)
    return c


def f_coefficients(m):
    """Taylor coefficients of z / w(z) (the reciprocal of w / z), exactly."""
    c = w_coefficients(m + 1)
    g = c[1:]
    f = [Fraction(1)]
    for n in range(1, m):
        f.append(-sum(g[k] * f[n - k] for k in range(1, n + 1)))
    return f


F_COEFF = f_coefficients(260)


def temme_sum(eta, a):
    """sum_k a^-k d_k(eta), d_k = sum_n f_(n+1+2k) (n+2)...(n+2k) eta^n."""
    f = [mpf(c.numerator) / c.denominator for c in F_COEFF]
    total, k = mpf(0), 0
    while True:
        level = mpf(0)
        for n in range(0, len(f) - 2 * k - 1):
            p = 1
            for j in range(1, k + 1):
                p *= n + 2 * j
            level += f[n + 1 + 2 * k] * p * eta ** n
        term = level / a ** k
        total += term
        if abs(term) < mpf(10) ** (-mp.dps - 5) and k > 0:
            return total
        k += 1


def log_gamma_star(a):
    s, k = mpf(0), 1
    while True:
        t = mpmath.bernoulli(2 * k) / (2 * k * (2 * k - 1) * a ** (2 * k - 1))
        s += t
        if abs(t) < mpf(10) ** (-mp.dps - 5):
            return s
        k += 1


def by_expansion(a, x):
    lam = x / a
    L = lam - 1 - mpmath.log(lam)
    eta = mpmath.sign(lam - 1) * mpmath.sqrt(2 * L)
    pre = mpmath.exp(-a * L - log_gamma_star(a)) / mpmath.sqrt(2 * mpmath.pi * a)
    eps = mpf(10) ** (-mp.dps - 5)
    if abs(eta) <= mpf(1) / 2:
        r = pre * temme_sum(eta, a)
        w = eta * mpmath.sqrt(a / 2)
        return mpmath.erfc(-w) / 2 - r, mpmath.erfc(w) / 2 + r
    s, t, j = mpf(1), mpf(1), 1
    if lam < 1:
        while abs(t) > eps:
            t *= x / (a + j)
            s += t
            j += 1
        p = pre * s
        return p, 1 - p
    while abs(t) > eps:
        t *= (a - j) / x
        s += t
        j += 1
    q = pre * s / lam
    return 1 - q, q


# ---- cases ----

SHAPES = ["1000000.5", "25000000", "1e12", "3.7e20", "1e40"]
OFFSETS = ["-40", "-3", "-0.25", "0", "1", "5", "30"]
FAR = ["0.4", "2.5"]


def points(a_text):
    """x values as exact decimal text: a (1 + z / sqrt(a)) rounded to 12 digits past the
    unit of sqrt(a), and a lambda for the far ratios."""
    a = mpf(a_text)
    out = []
    for z in OFFSETS:
        x = a + mpf(z) * mpmath.sqrt(a)
        out.append(mpmath.nstr(x, int(mpmath.log10(a)) + 14, strip_zeros=True,
                               min_fixed=-mpmath.inf, max_fixed=mpmath.inf))
    for r in FAR:
        out.append(mpmath.nstr(a * mpf(r), int(mpmath.log10(a)) + 14, strip_zeros=True,
                               min_fixed=-mpmath.inf, max_fixed=mpmath.inf))
    return out


def both(a, x):
    """(P, Q) by the two methods, which must agree to AGREE digits."""
    (p1, q1), (p2, q2) = by_quadrature(a, x), by_expansion(a, x)
    for u, v in ((p1, p2), (q1, q2)):
        if u != 0 and abs(u - v) > abs(u) * mpf(10) ** (-AGREE):
            raise SystemExit("the methods disagree at a = %s, x = %s: %s %s" % (a, x, u, v))
    return p2, q2


def rounded(v, d):
    if v < mpf(10) ** (-10 ** 17):  # below the float's range
        return "0"
    m, e = round_sig(v, d)
    return fmt(m, e)


def cases():
    yield "# op digits [tail] args... expected: correctly rounded to digits digits."
    yield "# Written by make_numlib_large_shape_reference.py; do not edit."
    for a_text in SHAPES:
        for x_text in points(a_text):
            mp.dps = int(mpmath.log10(mpf(a_text))) + 80
            a, x = mpf(a_text), mpf(x_text)
            p, q = both(a, x)
            for d in (20, 35):
                yield "g01efc %d lower %s %s 1 %s" % (d, x_text, a_text, rounded(p, d))
                yield "g01efc %d upper %s %s 1 %s" % (d, x_text, a_text, rounded(q, d))
            # chi-square with df = 2a at 2x
            yield "g01ecc 30 upper %s %s %s" % (mpmath.nstr(2 * x, 80, strip_zeros=True,
                min_fixed=-mpmath.inf, max_fixed=mpmath.inf),
                mpmath.nstr(2 * a, 80, strip_zeros=True, min_fixed=-mpmath.inf,
                            max_fixed=mpmath.inf), rounded(q, 30))
        for p_text in ["1e-30", "0.3", "0.99"]:
            for d in (20, 35):
                m, e = deviate(a_text, p_text, d)
                yield "g01ffc %d %s %s 1 %s" % (d, p_text, a_text, fmt(m, e))


def deviate(a_text, p_text, d):
    """The x with P(a, x) = p to d digits: solved for z in x = a + z sqrt(a) (the law's
    width is far below the relative precision of log x for the larger shapes), then
    rounded and its rounding confirmed by the expansion at the neighbouring midpoints."""
    extra = int(mpmath.log10(mpf(a_text))) + 3 * d + 60

    def T(x):
        with mp.workdps(extra):
            return by_expansion(mpf(a_text), mpf(x))[0]

    with mp.workdps(extra):
        a, p = mpf(a_text), mpf(p_text)
        z0 = mpmath.sqrt(2) * mpmath.erfinv(2 * p - 1)
        z = mpmath.findroot(lambda z: T(a + z * mpmath.sqrt(a)) - p, (z0, z0 + mpf(1) / 100),
                            solver="secant", tol=mpf(10) ** (-2 * d - 20))
        m, e = round_sig(a + z * mpmath.sqrt(a), d)
    with mp.workdps(extra):
        return confirm(T, p_text, True, d, m, e)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "numlib_large_shapes.txt")
    lines = list(cases())
    with open(out, "w") as f:
        f.write("\n".join(lines) + "\n")
    print("%d lines" % (len(lines) - 2))


if __name__ == "__main__":
    main()
