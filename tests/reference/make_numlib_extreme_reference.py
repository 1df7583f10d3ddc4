#!/usr/bin/env python3
"""Writes numlib_extremes.txt: reference values at the far ends of the float's range, where
probabilities and their exponents run to 10^15 and beyond (normal and Student t deviates of
such probabilities, gamma deviates of tiny shapes, beta and F probabilities of tiny shapes,
the beta probability of a tiny argument). Same line format and the same
root finding and boundary test as make_numlib_deviate_reference.py; mpmath alone.

Usage: python3 make_numlib_extreme_reference.py [output]   (a minute or two)
"""

import os
import sys
from decimal import getcontext

import mpmath
from mpmath import mp, mpf

from make_numlib_continuous_reference import decided, fmt, t_two
from make_numlib_deviate_reference import param, solve

FAR = ["1e-1000", "1e-100000000", "1e-4000000000000000"]


def guarded(T):
    """T, with 0 where mpmath's series cannot take the argument (far past the root)."""
    def g(x):
        try:
            return T(x)
        except OverflowError:
            return mpf(0)
    return g


def normal_value(tail, p, d):
    """The deviate of a tiny p: the bracket starts at the root of the tail's leading term."""
    u0 = mpmath.log(mpmath.sqrt(-2 * mpmath.log(mpf(p))))
    m, e = solve(guarded(lambda x: mpmath.erfc(x / mpmath.sqrt(2)) / 2), p, False, d, u0=u0)
    return fmt(m if tail == "upper" else -m, e)


def t_value(p, nu, d):
    """The lower-tail deviate of a tiny p (or of any p < 1/2 for a tiny nu), from
    P(T <= -x) ~ c x^-nu."""
    n = param(nu, d)
    u0 = -mpmath.log(mpf(p)) / n
    m, e = solve(guarded(lambda x: t_two(x, n)[0] / 2), p, False, d, u0=u0)
    return fmt(-m, e)


def gamma_value(p, a, d):
    """The deviate of a tiny shape: P(a, x) ~ x^a / Gamma(a + 1) puts it at a tiny x."""
    aa = param(a, d)
    u0 = (mpmath.log(mpf(p)) + mpmath.loggamma(1 + aa)) / aa
    T = guarded(lambda x: mpmath.gammainc(aa, 0, x, regularized=True))
    m, e = solve(T, p, True, d, u0=u0)
    return fmt(m, e)


def cases():
    getcontext().prec = 200
    for d in (10, 30):
        for p in FAR:
            for tail in ("lower", "upper"):
                yield ("g01fac %d %s %s" % (d, tail, p), lambda d=d, t=tail, p=p: normal_value(t, p, d))
        for p, nu in [("1e-100000000", "3"), ("1e-4000000000000000", "3"), ("1e-1000", "30"),
                      ("0.3", "2e-5"), ("0.2", "2e-5")]:
            yield ("g01fbc %d lower %s %s" % (d, p, nu), lambda d=d, p=p, nu=nu: t_value(p, nu, d))
        for p, a in [("0.835", "1e-5"), ("0.835", "1.73e-6"), ("0.1", "1e-6")]:
            yield ("g01ffc %d %s %s 1" % (d, p, a), lambda d=d, p=p, a=a: gamma_value(p, a, d))
        # a tiny second shape: the mass lies at 1 and its complement is carried at 1000
        # extra digits (I_z(a, b) = 1 - I_(1-z)(b, a)), z exactly as the routine forms it
        tiny = [("g01eec_p %d 0.3 2 1e-30", "2", "1e-30", lambda: mpf("0.3")),
                ("g01eec_p %d 0.999 2 1e-7", "2", "1e-7", lambda: mpf("0.999")),
                ("g01edc %d lower 2 5 1e-400", "2.5", "5e-401", lambda: mpf(10) / (10 + mpf("1e-400")))]
        for text, a, b, z in tiny:
            def f(a=a, b=b, z=z):
                with mp.workdps(mp.dps + 1000):
                    zc = 1 - z()
                    return 1 - mpmath.betainc(mpf(b), mpf(a), 0, zc, regularized=True)
            yield (text % d, lambda d=d, f=f: decided(f, d))
        # shapes so small that the root lies near 10^-(5e15): P(a, x) = x^a / Gamma(a + 1) times
        # 1 - a x / (a + 1) + ..., so the leading term alone gives x to every digit asked
        for p, a in [("0.3", "1e-16"), ("0.3", "1e-17")]:
            def g(p=p, a=a):
                aa = mpf(a)
                return mpmath.exp((mpmath.log(mpf(p)) + mpmath.loggamma(1 + aa)) / aa)
            yield ("g01ffc %d %s %s 1" % (d, p, a), lambda d=d, g=g: decided(g, d))
        for x in ["1e-100000000", "1e-4000000000000000"]:
            def f(x=x):
                return mpmath.betainc(mpf("2.5"), mpf("3.5"), 0, mpf(x), regularized=True)
            yield ("g01eec_p %d %s 2.5 3.5" % (d, x), lambda d=d, f=f: decided(f, d))


def main():
    mp.dps = 100
    here = os.path.dirname(os.path.abspath(__file__))
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "numlib_extremes.txt")
    with open(path, "w") as f:
        f.write("# op digits [tail] args... expected: correctly rounded to digits digits.\n"
                "# Written by make_numlib_extreme_reference.py; do not edit.\n")
        for line, value in cases():
            f.write("%s %s\n" % (line, value()))
            f.flush()


if __name__ == "__main__":
    main()
