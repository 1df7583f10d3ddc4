#!/usr/bin/env python3
"""Writes numlib_noncentral.txt: reference lower-tail probabilities of the noncentral
Student t (g01gbc: t df delta), chi-square (g01gcc: x df lambda), F (g01gdc: f df1 df2
lambda) and beta (g01gec: x a b lambda) routines at 10, 30 and 100 digits (10 only for
lambda = 10^4).

mpmath sums the Poisson mixtures from j = 0 with its own incomplete gamma and beta functions,
at 3*digits+50 decimal digits and again 25 higher (plus the digits a t sum cancels); a rounding
is written only when both agree. Above the mean the upper tail is summed and subtracted from 1.
The t series is checked against a quadrature of E[Phi(t sqrt(V/df) - delta)] to 25 digits
(for df >= 2).

Usage: python3 make_numlib_noncentral_reference.py [output]
"""

import os
import sys

import mpmath
from mpmath import mp, mpf

from make_numlib_continuous_reference import decided


def mixture(mu, term, s=0):
    """sum_j mu^j / Gamma(j+1+s) term(j), from j = 0 until past the mode and negligible. For
    mu above 1000 the sum starts where the Poisson weights fall below 10^-(dps+20) of their
    mode (the cases with such mu are central, with values near 1/2)."""
    j = int(mu - mpmath.sqrt(2 * mu * (mp.dps + 20) * mpmath.log(10))) if mu > 1000 else 0
    total = mpf(0)
    logmu = mpmath.log(mu) if mu > 0 else None
    while True:
        if mu == 0:
            w = 1 / mpmath.gamma(1 + s) if j == 0 else mpf(0)
        else:
            w = mpmath.exp(j * logmu - mpmath.loggamma(j + 1 + s))
        t = w * term(j)
        total += t
        if mu == 0 or (j > mu + 10 and abs(t) < abs(total) * mpf(10) ** (-mp.dps - 5)):
            return total
        j += 1


def chi2_lower(x, df, lam):
    x, df, lam = mpf(x), mpf(df), mpf(lam)
    mu, y = lam / 2, x / 2
    e = mpmath.exp(-mu)
    if x <= df + lam:
        return e * mixture(mu, lambda j: mpmath.gammainc(df / 2 + j, 0, y, regularized=True))
    return 1 - e * mixture(mu, lambda j: mpmath.gammainc(df / 2 + j, y, mpmath.inf,
                                                         regularized=True))


def beta_lower(z, zc, a, b, lam):
    mu = lam / 2
    e = mpmath.exp(-mu)
    if z <= (a + mu) / (a + mu + b):
        return e * mixture(mu, lambda j: mpmath.betainc(a + j, b, 0, z, regularized=True))
    return 1 - e * mixture(mu, lambda j: mpmath.betainc(b, a + j, 0, zc, regularized=True))


def ncbeta(x, a, b, lam):
    x = mpf(x)
    return beta_lower(x, 1 - x, mpf(a), mpf(b), mpf(lam))


def ncf(f, df1, df2, lam):
    f, df1, df2 = mpf(f), mpf(df1), mpf(df2)
    s = df1 * f + df2
    return beta_lower(df1 * f / s, df2 / s, df1 / 2, df2 / 2, mpf(lam))


def nct_nonnegative(t, df, delta):
    """P(T <= t) for t >= 0 by the series in incomplete beta functions."""
    x = t * t / (t * t + df)
    mu = delta * delta / 2
    e = mpmath.exp(-mu)
    phi = mpmath.ncdf(-delta)
    if x == 0:
        return phi
    even = mixture(mu, lambda j: mpmath.betainc(j + mpf(1) / 2, df / 2, 0, x, regularized=True))
    odd = mixture(mu, lambda j: mpmath.betainc(j + 1, df / 2, 0, x, regularized=True), s=0.5)
    return phi + e * (even + delta / mpmath.sqrt(2) * odd) / 2


def nct(t, df, delta):
    t, df, delta = mpf(t), mpf(df), mpf(delta)
    # P(T <= t; delta) = 1 - P(T <= -t; -delta): the subtraction cancels up to delta^2 / 2
    extra = int(delta * delta / 2 / mpmath.log(10)) + 20
    with mp.extradps(extra):
        r = nct_nonnegative(t, df, delta) if t >= 0 else 1 - nct_nonnegative(-t, df, -delta)
    return +r


def nct_quad(t, df, delta):
    t, df, delta = mpf(t), mpf(df), mpf(delta)
    k = df / 2
    dens = lambda v: mpmath.exp((k - 1) * mpmath.log(v) - v / 2 - k * mpmath.log(2)
                                - mpmath.loggamma(k))
    return mpmath.quad(lambda v: dens(v) * mpmath.ncdf(t * mpmath.sqrt(v / df) - delta),
                       [0, df, 4 * df + 40, mpmath.inf])


T_CASES = [("1.5", "5", "1"), ("-1.5", "5", "1"), ("-1.5", "5", "-1"), ("30", "5", "1"),
           ("-1", "10", "5"), ("0.5", "0.5", "2"), ("3", "100", "3"), ("-3", "4", "-2"),
           ("20", "3", "10"), ("0", "7", "2.5"), ("2", "1000000", "1.5"), ("-40", "2", "4"),
           ("12", "20", "12"), ("1e-3", "0.01", "0.5")]
# The cases with lambda = 10^4 are tabulated at 10 digits only (mpmath's incomplete gamma
# functions of shape 5000 are slow).
BIG = {("10200", "3", "10000"), ("9500", "3", "10000")}
CHI_CASES = [("3", "2", "1.5"), ("0.01", "2", "1.5"), ("1e-5", "0.5", "4"), ("100", "2", "1.5"),
             ("40", "4", "3"), ("0.5", "10", "20"), ("150", "10", "100"), ("1", "0.01", "0.01"),
             ("10200", "3", "10000"), ("9500", "3", "10000"), ("25", "1000", "0.5"),
             ("2.5", "3", "0")]
BETA_CASES = [("0.3", "2", "3", "4"), ("0.01", "0.5", "0.5", "1"), ("0.999", "2", "5", "10"),
              ("0.5", "10", "10", "50"), ("1e-8", "3", "2", "2"), ("0.9", "0.01", "3", "200"),
              ("0.2", "50", "0.5", "6")]
F_CASES = [("2", "3", "7", "5"), ("0.1", "1", "1", "1"), ("50", "4", "10", "3"),
           ("1.5", "20", "30", "100"), ("1e-4", "2", "2", "40"), ("300", "1", "5", "0.1")]


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__),
                                                              "numlib_noncentral.txt")
    with mp.workdps(40):
        for t, df, delta in T_CASES[:10]:
            if mpf(df) < 2:
                continue  # the chi density's pole at 0 defeats the quadrature
            a, b = nct(t, df, delta), nct_quad(t, df, delta)
            assert abs(a - b) <= mpf(10) ** -25 * abs(a), (t, df, delta, a, b)
    lines = ["# op digits args... expected: the lower tail correctly rounded to digits digits.",
             "# Written by make_numlib_noncentral_reference.py; do not edit."]
    for op, cases, f in [("g01gbc", T_CASES, nct), ("g01gcc", CHI_CASES, chi2_lower),
                         ("g01gdc", F_CASES, ncf), ("g01gec", BETA_CASES, ncbeta)]:
        for args in cases:
            for d in ((10,) if args in BIG else (10, 30, 100)):
                value = decided(lambda: f(*args), d)
                lines.append(" ".join([op, str(d)] + list(args) + [value]))
                print(lines[-1], flush=True)
    with open(out, "w") as fh:
        fh.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
