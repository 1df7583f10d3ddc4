#!/usr/bin/env python3
"""Writes numlib_deviates.txt: reference values for the deviate routines g01fac ... g01ffc,
for the cases that make_numlib_continuous_reference.py lists, in the same line format.

The root finding there (bisection and secant steps at 3*digits+50 digits) is sound but takes
hours; this script finds the same roots faster and checks them as strictly. The root is
bracketed and bisected in u = log x at 30 digits, refined by secant steps at digits+40 digits,
and its rounding to `digits` digits is then confirmed by the same boundary test as there: the
distribution function at the two midpoints between the rounded value and its neighbours,
evaluated at 3*digits+80 digits, must bracket the target probability.

A case whose root is not confirmed within a minute (or the given time), or where mpmath's series do not
converge, or whose boundary test does not settle, is left out (and named on stderr).

Usage: python3 make_numlib_deviate_reference.py [output] [max digits] [seconds per case]
"""

import os
import signal
import sys

import mpmath
from mpmath import mp, mpf

import make_numlib_continuous_reference as ref


def solve(T, t, increasing, d, lo=-60.0, hi=60.0, umax=None):
    with mp.workdps(30):
        g = ref.g_of(T, t, increasing)
        lo, hi = mpf(lo), mpf(hi)
        if umax is not None:
            hi = min(hi, mpf(umax))
        while g(lo) > 0:
            lo = 2 * lo if lo < 0 else lo - 10
        while g(hi) < 0:
            hi = 2 * hi if hi > 0 else hi + 10
        while hi - lo > mpf(10) ** -12 * max(1, abs(lo)):
            mid = (lo + hi) / 2
            if g(mid) < 0:
                lo = mid
            else:
                hi = mid
    with mp.workdps(d + 40):
        g = ref.g_of(T, t, increasing)
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
        m, e = ref.round_sig(mpmath.exp(u1), d)
    return ref.confirm(T, t, increasing, d, m, e)


class TimedOut(Exception):
    pass


def on_alarm(signum, frame):
    raise TimedOut()


def main():
    sys.setrecursionlimit(10000)
    # parameters such as 0.001 are read where the cases are listed, outside any working
    # precision: read them far more precisely than any case needs
    mp.dps = 400
    here = os.path.dirname(os.path.abspath(__file__))
    path = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "numlib_deviates.txt")
    top = int(sys.argv[2]) if len(sys.argv) > 2 else 1000
    seconds = int(sys.argv[3]) if len(sys.argv) > 3 else 60
    signal.signal(signal.SIGALRM, on_alarm)

    skipped = [False]  # the current case timed out: its line is not written

    def timed_solve(T, t, increasing, d, *args, **kwargs):
        if skipped[0] or d > top + 60:  # the beta routine solves its complement at d + 60
            skipped[0] = True
            return 0, 0
        signal.alarm(seconds)
        try:
            return solve(T, t, increasing, d, *args, **kwargs)
        except (TimedOut, mpmath.libmp.NoConvergence, RuntimeError):
            skipped[0] = True
            return 0, 0
        finally:
            signal.alarm(0)

    confirm = ref.confirm

    def timed_confirm(T, t, increasing, d, m, e):
        return (m, e) if skipped[0] else confirm(T, t, increasing, d, m, e)

    ref.solve = timed_solve
    ref.confirm = timed_confirm
    with open(path, "w") as f:
        f.write("# op digits [tail] args... expected: correctly rounded to digits digits.\n"
                "# Written by make_numlib_deviate_reference.py; do not edit.\n")

        class Lines(list):
            """Writes each case as it is found; a case that times out is skipped."""

            def append(self, line):
                if skipped[0]:
                    sys.stderr.write("timed out: " + line.rsplit(" ", 1)[0] + "\n")
                else:
                    f.write(line + "\n")
                    f.flush()
                skipped[0] = False

        out = Lines()
        ref.lines_deviates(out)


if __name__ == "__main__":
    main()
