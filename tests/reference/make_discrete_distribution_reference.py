#!/usr/bin/env python3
"""Writes discrete_distributions.txt: reference values for the cumulative probabilities of
the binomial, hypergeometric, Poisson and negative binomial distributions as the statistics
library defines them (P(X <= floor(x)), x possibly fractional).

Each line is `op digits args... expected`, op the worker's name less STATS_ and _MP:
BinomialProbability (x n q), HypergeometricProbability (x N L M), PoissonProbability
(x lambda), NegativeBinomialProbability (x r q). Binomial and hypergeometric values are exact
rational sums; Poisson values come from mpmath's regularized upper incomplete gamma function
and negative binomial values from its regularized incomplete beta function I_q(r, k + 1),
each at two working precisions that must round alike.

Usage: python3 make_discrete_distribution_reference.py [output]   (default: next to this file)
"""

import math
import os
import sys
from fractions import Fraction
from math import comb

import mpmath
from mpmath import mpf

from make_numlib_discrete_reference import decided, exact


def binomial(k, n, q):
    q = Fraction(q)
    return sum(comb(n, j) * q**j * (1 - q) ** (n - j) for j in range(0, min(k, n) + 1))


def hypergeometric(k, N, L, M):
    return Fraction(sum(comb(L, j) * comb(N - L, M - j) for j in range(0, k + 1)), comb(N, M))


def poisson(k, lam):
    return lambda dps: mpmath.gammainc(k + 1, mpf(lam), regularized=True)


def negative_binomial(k, r, q):
    return lambda dps: mpmath.betainc(mpf(r), k + 1, 0, mpf(q), regularized=True)


def cases():
    for digits in (10, 50):
        for x, n, q in [("2.7", 10, "0.3"), ("0", 10, "0.3"), ("5", 20, "0.5"),
                        ("37", 100, "0.41"), ("3", 1000, "0.001"), ("95", 100, "0.9"),
                        ("10", 10, "0.3"), ("499.5", 1000, "0.5")]:
            k = math.floor(Fraction(x))
            yield "BinomialProbability", digits, (x, n, q), exact(binomial(k, n, q), digits)
        for x, N, L, M in [("2", 20, 7, 5), ("0", 20, 7, 5), ("3.5", 50, 10, 20),
                           ("40", 200, 80, 100), ("1", 10, 9, 3)]:
            k = math.floor(Fraction(x))
            yield ("HypergeometricProbability", digits, (x, N, L, M),
                   exact(hypergeometric(k, N, L, M), digits))
        for x, lam in [("0", "0.4"), ("2", "0.4"), ("7", "3.5"), ("3.9", "3.5"),
                       ("120", "100"), ("80", "100"), ("1", "0.001")]:
            k = int(Fraction(x))  # toward zero, no floor
            yield "PoissonProbability", digits, (x, lam), decided(poisson(k, lam), digits)
        for x, r, q in [("0", "3", "0.5"), ("4", "3", "0.5"), ("4.5", "2.5", "0.3"),
                        ("20", "10", "0.6"), ("100", "1.5", "0.02")]:
            k = math.floor(Fraction(x))
            yield ("NegativeBinomialProbability", digits, (x, r, q),
                   decided(negative_binomial(k, r, q), digits))


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(
        os.path.dirname(os.path.abspath(__file__)), "discrete_distributions.txt")
    with open(out, "w") as f:
        f.write("# op digits args... expected: P(X <= x), correctly rounded.\n")
        f.write("# Written by make_discrete_distribution_reference.py; do not edit.\n")
        for op, digits, args, value in cases():
            f.write(" ".join([op, str(digits)] + [str(a) for a in args] + [value]) + "\n")


if __name__ == "__main__":
    main()
