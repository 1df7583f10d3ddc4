#!/usr/bin/env python3
"""Writes numlib_deviates.txt: reference values for the deviate routines g01fac ... g01ffc
(normal, Student t, chi-square, gamma, F, beta) at 10, 30 and 100 digits, and for a few
moderate cases at 1000 digits. Lines are `op digits [tail] args... expected`, the expected
deviate correctly rounded to `digits` significant digits, computed with mpmath alone.

Each root of T(x) = t (T a monotone distribution function) is found in u = log x: a bracket
grown from a rough centre and bisected at 30 digits, then secant steps at digits+40 digits.
Its rounding is confirmed by a boundary test: T at the two midpoints between the rounded value
and its decimal neighbours, each evaluated at two precisions (digits+40 and 2*digits+60, then
2*digits+60 and 4*digits+120), must lie on opposite sides of t, both evaluations on the same
side and their difference far below the distance to t. A rounding off by a unit is moved.

A case is left out, and named on stderr with the reason, when it runs past its time (the
seconds argument, ten times that at 1000 digits), when mpmath's series do not converge, or when
the boundary test does not settle.

Usage: nice python3 make_numlib_deviate_reference.py [output] [max digits] [seconds per case]
  (default: numlib_deviates.txt beside this script, 1000, 60). One process, a single core:
  the full table takes about a minute, the cases up to 100 digits about 25 seconds.
"""

import os
import signal
import sys
from decimal import Decimal, getcontext

import mpmath
from mpmath import mp, mpf

from make_numlib_continuous_reference import TAILS, beta_pair, f_tails, fmt, round_sig, t_two


class Unsettled(Exception):
    pass


def g_of(T, t, increasing):
    """u -> log T(e^u) - log t, increasing in u (sign flipped for a decreasing T)."""
    lt = mpmath.log(mpf(t))

    def g(u):
        v = T(mpmath.exp(u))
        if v <= 0:
            return -mpf(10) ** 9 if increasing else mpf(10) ** 9
        return (mpmath.log(v) - lt) if increasing else (lt - mpmath.log(v))

    return g


def reach(g, u0, sign, umax):
    """A point u0 + sign * h with sign * g >= 0 there: h doubles from 1/8, and where mpmath's
    series do not converge it is halved back toward the last point that was evaluated."""
    last, h = mpf(0), mpf(1) / 8
    for _ in range(200):
        u = u0 + sign * h if umax is None else min(u0 + sign * h, mpf(umax))
        try:
            v = g(u)
        except mpmath.libmp.NoConvergence:
            h = (last + h) / 2
            continue
        if sign * v >= 0:
            return u
        last, h = h, 2 * h
    raise mpmath.libmp.NoConvergence("no bracket")


def root(T, t, increasing, d, u0=0, umax=None):
    """u = log x of the root of T(x) = t, to about d + 30 digits (at working precision d + 40).

    The bracket grows geometrically from u0 (a point near the bulk of the law, where mpmath's
    series converge); umax bounds u from above where T reaches t there (x <= 1 for beta)."""
    with mp.workdps(30):
        g = g_of(T, t, increasing)
        lo, hi = reach(g, mpf(u0), -1, None), reach(g, mpf(u0), 1, umax)
        while hi - lo > mpf(10) ** -12 * max(1, abs(lo)):
            mid = (lo + hi) / 2
            if g(mid) < 0:
                lo = mid
            else:
                hi = mid
    with mp.workdps(d + 40):
        g = g_of(T, t, increasing)
        u0, u1 = mpf(lo), mpf(hi)
        g0, g1 = g(u0), g(u1)
        for _ in range(60):
            if g1 == g0:
                break
            u2 = u1 - g1 * (u1 - u0) / (g1 - g0)
            u0, g0 = u1, g1
            u1, g1 = u2, g(u2)
            if abs(u1 - u0) < mpf(10) ** (-d - 30) * max(1, abs(u1)):
                break
        return +u1


def exact(n, k):
    """The decimal n * 10^k at working precision (one rounding)."""
    return mpf(n) * mpf(10) ** k if k >= 0 else mpf(n) / mpf(10 ** -k)


def side(T, t, n, k, d):
    """The sign of T(n * 10^k) - t, accepted only when two precisions agree on it by far."""
    levels = [d + 40, 2 * d + 60, 4 * d + 120]
    for lo, hi in zip(levels, levels[1:]):
        with mp.workdps(lo):
            a = T(exact(n, k)) - mpf(t)
        with mp.workdps(hi):
            b = T(exact(n, k)) - mpf(t)
            if a * b > 0 and abs(b) > 1000 * abs(a - b):
                return 1 if b > 0 else -1
    raise Unsettled("boundary test does not settle at %s" % fmt(n, k))


def confirm(T, t, increasing, d, m, e):
    """m * 10^e (d digits) moved until T at its two neighbouring midpoints brackets t."""
    sign = 1 if increasing else -1
    for _ in range(6):
        # midpoints (10m +- 5) * 10^(e-1); below a power of ten the neighbour is a tenth closer
        if sign * side(T, t, 10 * m + 5, e - 1, d) < 0:
            m += 1
        elif m == 10 ** (d - 1) and sign * side(T, t, 100 * m - 5, e - 2, d) > 0:
            m, e = 10 ** d - 1, e - 1
        elif m != 10 ** (d - 1) and sign * side(T, t, 10 * m - 5, e - 1, d) > 0:
            m -= 1
        else:
            return m, e
        if m == 10 ** d:
            m, e = m // 10, e + 1
    raise Unsettled("rounding moved six times")


def solve(T, t, increasing, d, u0=0, umax=None):
    """The x > 0 with T(x) = t, correctly rounded to d digits, as (m, e): x = m * 10^e."""
    u = root(T, t, increasing, d, u0, umax)
    with mp.workdps(d + 40):
        m, e = round_sig(mpmath.exp(u), d)
    return confirm(T, t, increasing, d, m, e)


def dec_sub1(p):
    """1 - p as exact decimal text (p given as decimal text)."""
    return str(Decimal(1) - Decimal(p))


# ---- the deviates of each law, as decimal text ----

def upper_target(tail, p):
    """(t, sign): the x >= 0 with P(X >= x) = t, then x times sign (symmetric laws)."""
    P = Decimal(p)
    if tail == "lower":
        q = 1 - P
    elif tail == "upper":
        q = P
    elif tail == "signif":
        q = P / 2
    else:
        q = (1 - P) / 2
    if q > Decimal("0.5"):
        return str(1 - q), -1
    return str(q), 1


def normal_value(tail, p, d):
    q, sign = upper_target(tail, p)
    if Decimal(q) == Decimal("0.5"):
        return "0"
    if Decimal(q) <= Decimal("0.25"):
        m, e = solve(lambda x: mpmath.erfc(x / mpmath.sqrt(2)) / 2, q, False, d)
    else:  # near the centre: P(|X| <= x) = 1 - 2q keeps every digit
        m, e = solve(lambda x: mpmath.erf(x / mpmath.sqrt(2)), str(1 - 2 * Decimal(q)), True, d)
    return fmt(sign * m, e)


def t_value(tail, p, nu, d):
    q, sign = upper_target(tail, p)
    n = param(nu, d)
    if Decimal(q) <= Decimal("0.25"):
        m, e = solve(lambda x: t_two(x, n)[0] / 2, q, False, d)
    else:
        m, e = solve(lambda x: t_two(x, n)[1], str(1 - 2 * Decimal(q)), True, d)
    return fmt(sign * m, e)


def by_tail(pair, p):
    """(T, t, increasing) for the root of lower(x) = p: the tail of pair(x) = (lower, upper)
    that mpmath computes directly near the root, against p or 1 - p, whichever is smaller."""
    if Decimal(p) <= Decimal("0.5"):
        return (lambda x: pair(x)[0]), p, True
    return (lambda x: pair(x)[1]), dec_sub1(p), False


def gamma_pair(a, z):
    """(P(a, z), Q(a, z)), the one on z's side of the shape computed directly (mpmath's
    series for P do not converge far above a, and Q is very slow for tiny z)."""
    if z <= a:
        lower = mpmath.gammainc(a, 0, z, regularized=True)
        return lower, 1 - lower
    upper = mpmath.gammainc(a, z, mpmath.inf, regularized=True)
    return 1 - upper, upper


def gamma_value(p, a, scale, d):
    """The deviate of the gamma law of shape a and the given scale."""
    m, e = solve(*by_tail(lambda x: gamma_pair(a, x / scale), p), d, u0=mpmath.log(a * scale))
    return fmt(m, e)


def f_value(p, d1, d2, d):
    a1, a2 = param(d1, d), param(d2, d)
    m, e = solve(*by_tail(lambda x: f_tails(x, a1, a2), p), d)
    return fmt(m, e)


def beta_value(p, a, b, d):
    aa, bb = param(a, d), param(b, d)
    with mp.workdps(40):
        below_half = Decimal(p) <= Decimal(str(beta_pair(aa, bb, mpf("0.5"), mpf("0.5"))[0]))
    pair = lambda x: beta_pair(aa, bb, x, 1 - x)
    if below_half:
        m, e = solve(*by_tail(pair, p), d, u0=mpmath.log(aa / (aa + bb)), umax=0)
        return fmt(m, e)
    # above 1/2, solve in y = 1 - x (the law of y is beta(b, a)) to d + 60 digits, then
    # confirm the rounding of x = 1 - y on x
    T, t, increasing = by_tail(lambda y: beta_pair(bb, aa, y, 1 - y)[::-1], p)
    u = root(T, t, not increasing, d + 60, u0=mpmath.log(bb / (aa + bb)), umax=0)
    with mp.workdps(d + 100):
        m, e = round_sig(1 - mpmath.exp(u), d)
    m, e = confirm(*by_tail(pair, p), d, m, e)
    return fmt(m, e)


def param(text, d, divisor=1):
    """A parameter such as 0.001 (over divisor), read far more precisely than the case needs
    (read at a working precision, it would be rounded there and give a wrong root)."""
    with mp.workdps(5 * d + 200):
        return mpf(text) / divisor


NEAR1 = "0.99999999999999999999"


def cases():
    """(line without its value, function computing the value) for every case, in file order:
    each routine at 10, 30 and 100 digits over its parameter groups, then a few at 1000."""
    getcontext().prec = 200
    ends = ["1e-100", "0.05", "0.5", "0.95", NEAR1]

    ps = ["1e-100", "1e-20", "0.001", "0.025", "0.3", "0.5", "0.7", "0.975", NEAR1]
    groups = [(d, TAILS, ps) for d in (10, 30, 100)]
    groups += [(1000, ["lower"], ["1e-100", "0.975"]), (1000, ["upper"], ["1e-20"]),
               (1000, ["signif"], ["0.001"]), (1000, ["confid"], ["0.3", NEAR1])]
    for d, tails, probs in groups:
        for p in probs:
            for tail in tails:
                yield ("g01fac %d %s %s" % (d, tail, p),
                       lambda d=d, t=tail, p=p: normal_value(t, p, d))

    ps = ["1e-100", "0.01", "0.4", "0.8", NEAR1]
    groups = [(d, ["0.001", "1", "2.5", "30", "2000"], ps) for d in (10, 30, 100)]
    groups += [(1000, ["2.5"], ["1e-100", "0.01", "0.8"]), (1000, ["30"], ["0.01", "0.8"])]
    for d, nus, probs in groups:
        for nu in nus:
            for p in probs:
                for tail in TAILS if d <= 100 else ["lower"]:
                    yield ("g01fbc %d %s %s %s" % (d, tail, p, nu),
                           lambda d=d, t=tail, p=p, nu=nu: t_value(t, p, nu, d))

    groups = [(d, ["0.001", "1", "7.5", "200", "2000000"], ends) for d in (10, 30, 100)]
    groups += [(1000, ["1", "200"], ["0.05", "0.95"]), (1000, ["7.5"], ends)]
    for d, nus, probs in groups:
        for nu in nus:
            for p in probs:
                yield ("g01fcc %d %s %s" % (d, p, nu),
                       lambda d=d, p=p, nu=nu: gamma_value(p, param(nu, d, 2), 2, d))

    shapes = [("0.001", "1"), ("2.5", "0.5"), ("100", "3"), ("100000", "1"), ("1000000", "2")]
    groups = [(d, shapes, ends) for d in (10, 30, 100)]
    groups += [(1000, [("2.5", "0.5"), ("100", "3")], ["0.05", "0.5"]),
               (1000, [("0.001", "1")], ["0.05", "0.95"])]
    for d, pairs, probs in groups:
        for a, b in pairs:
            for p in probs:
                yield ("g01ffc %d %s %s %s" % (d, p, a, b),
                       lambda d=d, p=p, a=a, b=b: gamma_value(p, param(a, d), param(b, d), d))

    dfs = [("1", "1"), ("0.001", "5"), ("4.5", "12"), ("200", "3000"), ("300", "800")]
    groups = [(d, dfs, ends) for d in (10, 30, 100)]
    groups += [(1000, [("4.5", "12"), ("200", "3000")], ["0.05", "0.95"])]
    for d, pairs, probs in groups:
        for d1, d2 in pairs:
            for p in probs:
                yield ("g01fdc %d %s %s %s" % (d, p, d1, d2),
                       lambda d=d, p=p, d1=d1, d2=d2: f_value(p, d1, d2, d))

    shapes = [("0.001", "1000000"), ("0.5", "0.5"), ("2", "3.5"), ("1000", "50"), ("300", "200")]
    groups = [(d, shapes, ends) for d in (10, 30, 100)]
    groups += [(1000, [("2", "3.5"), ("300", "200"), ("0.5", "0.5")], ["0.05", "0.95"]),
               (1000, [("1000", "50")], ["1e-100"])]
    for d, pairs, probs in groups:
        for a, b in pairs:
            for p in probs:
                yield ("g01fec %d %s %s %s" % (d, p, a, b),
                       lambda d=d, p=p, a=a, b=b: beta_value(p, a, b, d))


class TimedOut(Exception):
    pass


def on_alarm(signum, frame):
    raise TimedOut()


def main():
    sys.setrecursionlimit(10000)
    mp.dps = 400
    here = os.path.dirname(os.path.abspath(__file__))
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "numlib_deviates.txt")
    top = int(sys.argv[2]) if len(sys.argv) > 2 else 1000
    seconds = int(sys.argv[3]) if len(sys.argv) > 3 else 60
    signal.signal(signal.SIGALRM, on_alarm)
    with open(path, "w") as f:
        f.write("# op digits [tail] args... expected: correctly rounded to digits digits.\n"
                "# Written by make_numlib_deviate_reference.py; do not edit.\n")
        for line, value in cases():
            d = int(line.split()[1])
            if d > top:
                continue
            signal.alarm(seconds if d <= 100 else 10 * seconds)
            try:
                f.write("%s %s\n" % (line, value()))
                f.flush()
            except TimedOut:
                sys.stderr.write("left out (timed out): %s\n" % line)
            except mpmath.libmp.NoConvergence:
                sys.stderr.write("left out (mpmath's series do not converge): %s\n" % line)
            except Unsettled as err:
                sys.stderr.write("left out (%s): %s\n" % (err, line))
            finally:
                signal.alarm(0)


if __name__ == "__main__":
    main()
