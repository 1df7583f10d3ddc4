#!/usr/bin/env python3
"""Reference values for the closed-form continuous distributions.

Writes closed_form.txt: lines "<worker> <digits> <args...> <expected>", expected the exact
function value correctly rounded to <digits> significant digits (mpmath at 120 digits).
The cases are chosen where the formulas are well conditioned: no cancellation in 1 - exp(-y)
or log(1 - p) beyond a factor of a few, no steep tangent, no far normal tail, no large
exponent of a rounded normal quantile.
"""
import os
from mpmath import mp, mpf, exp, log, sqrt, atan, tan, pi, ncdf, erfinv

HERE = os.path.dirname(os.path.abspath(__file__))


def rnd(x, d):
    """x rounded to d significant digits (half to even), as decimal text d.ddd[e<lead>]."""
    if x == 0:
        return "0."
    s = mp.nstr(x, d, min_fixed=1, max_fixed=0, strip_zeros=False)
    mant, _, e = s.partition("e")
    return mant + ("e" + str(int(e)) if e else "")


def triangular_cdf(x, a, b, c):
    if x < a:
        return mpf(0)
    if x < c:
        return (x - a) ** 2 / ((b - a) * (c - a))
    if x < b:
        return 1 - (b - x) ** 2 / ((b - a) * (b - c))
    return mpf(1)


def triangular_quantile(p, a, b, c):
    if p < (c - a) / (b - a):
        return a + sqrt(p * (b - a) * (c - a))
    return b - sqrt((1 - p) * (b - a) * (b - c))


def normal_quantile(p):
    return -sqrt(2) * erfinv(1 - 2 * p)


LAWS = {
    "Weibull": (lambda x, b, c: 1 - exp(-(x / b) ** c),
                lambda p, b, c: b * (-log(1 - p)) ** (1 / c)),
    "Triangular": (triangular_cdf, triangular_quantile),
    "Rayleigh": (lambda x, b: 1 - exp(-x * x / (2 * b * b)),
                 lambda p, b: sqrt(-2 * b * b * log(1 - p))),
    "Power": (lambda x, b, c: (x / b) ** c if x <= b else mpf(1),
              lambda p, b, c: b * p ** (1 / c)),
    "Pareto": (lambda x, a, c: 1 - (a / x) ** c, lambda p, a, c: a * (1 - p) ** (-1 / c)),
    "Logistic": (lambda x, a, b: 1 / (1 + exp(-(x - a) / b)),
                 lambda p, a, b: a + b * log(p / (1 - p))),
    "Laplace": (lambda x, a, b: exp(-(a - x) / b) / 2 if x < a else 1 - exp(-(x - a) / b) / 2,
                lambda p, a, b: a + b * log(2 * p) if p < 0.5 else a - b * log(2 * (1 - p))),
    "Gumbel": (lambda x, a, b: exp(-exp(-(x - a) / b)), lambda p, a, b: a - b * log(-log(p))),
    "Cauchy": (lambda x, a, b: mpf(1) / 2 + atan((x - a) / b) / pi,
               lambda p, a, b: a + b * tan(pi * (p - mpf(1) / 2))),
    "Exponential": (lambda x, b: 1 - exp(-x / b), lambda p, b: -b * log(1 - p)),
    "LogNormal": (lambda x, mu, s: ncdf((log(x) - mu) / s),
                  lambda p, mu, s: exp(mu + s * normal_quantile(p))),
}

# (probability cases, deviate cases), parameters after x or p.
CASES = {
    "Weibull": ([("1.3", "2", "1.5"), ("5", "2", "0.7")], [("0.3", "2", "1.5"), ("0.9", "0.5", "3")]),
    "Triangular": ([("0.5", "0", "3", "1"), ("2", "0", "3", "1")],
                   [("0.2", "0", "3", "1"), ("0.8", "-1", "3", "1")]),
    "Rayleigh": ([("1.5", "1"), ("4", "1.5")], [("0.5", "1"), ("0.95", "2")]),
    "Power": ([("0.6", "2", "2.5"), ("1.5", "2", "0.3")], [("0.4", "2", "2.5"), ("0.9", "3", "0.5")]),
    "Pareto": ([("3", "1", "2"), ("10", "2", "1.5")], [("0.5", "1", "2"), ("0.99", "2", "1.5")]),
    "Logistic": ([("1", "0", "1"), ("-2", "1", "0.5")], [("0.3", "0", "1"), ("0.9", "1", "2")]),
    "Laplace": ([("-1", "0", "1"), ("2", "0.5", "1.5")], [("0.2", "0", "1"), ("0.7", "1", "2")]),
    "Gumbel": ([("0", "0", "1"), ("2", "1", "0.5")], [("0.5", "0", "1"), ("0.9", "1", "2")]),
    "Cauchy": ([("1", "0", "1"), ("-3", "1", "2")], [("0.75", "0", "1"), ("0.3", "0", "2")]),
    "Exponential": ([("2", "1"), ("5", "3")], [("0.5", "1"), ("0.9", "2.5")]),
    "LogNormal": ([("2", "0", "1"), ("3", "0.5", "1")], [("0.6", "0", "1"), ("0.3", "1", "0.5")]),
}


def main():
    mp.dps = 120
    out = ["# made by make_closed_form_reference.py (mpmath); do not edit"]
    for d in (10, 50):
        for name, (cdf, quantile) in LAWS.items():
            probabilities, deviates = CASES[name]
            for op, f, cases in (("Probability", cdf, probabilities), ("Deviate", quantile, deviates)):
                for args in cases:
                    v = f(*[mpf(a) for a in args])
                    out.append(f"{name}{op} {d} {' '.join(args)} {rnd(v, d)}")
    with open(os.path.join(HERE, "closed_form.txt"), "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
