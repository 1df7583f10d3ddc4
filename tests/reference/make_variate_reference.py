#!/usr/bin/env python3
"""Reference values for the goodness-of-fit and moment tests of the random variates.

Writes variates.txt: lines "<op> <digits> <args...> <expected>" computed with mpmath at 60
digits, rounded to <digits> significant digits:
  InverseGaussianQuantile 20 mu lambda p  -- the p-quantile of the inverse Gaussian law
  Mean 20 <family> <parameters...>        -- the mean of a family
  Variance 20 <family> <parameters...>    -- its variance
"""
import os
from mpmath import mp, mpf, sqrt, exp, log, pi, gamma, euler, ncdf, findroot

HERE = os.path.dirname(os.path.abspath(__file__))
mp.dps = 60
DIGITS = 20


def rnd(x, d=DIGITS):
    s = mp.nstr(x, d, min_fixed=1, max_fixed=0, strip_zeros=False)
    mant, _, e = s.partition("e")
    return mant + ("e" + str(int(e)) if e else "")


def ig_cdf(x, mu, lam):
    r = sqrt(lam / x)
    return ncdf(r * (x / mu - 1)) + exp(2 * lam / mu) * ncdf(-r * (x / mu + 1))


def ig_quantile(p, mu, lam):
    # bisection on a bracket, then Newton polish by findroot
    lo, hi = mpf("1e-30"), mu
    while ig_cdf(hi, mu, lam) < p:
        hi *= 2
    for _ in range(80):
        mid = (lo + hi) / 2
        if ig_cdf(mid, mu, lam) < p:
            lo = mid
        else:
            hi = mid
    return findroot(lambda x: ig_cdf(x, mu, lam) - p, (lo + hi) / 2)


def moments(family, params):
    P = [mpf(x) for x in params]
    if family == "Gamma":
        a, b = P
        return a * b, a * b * b
    if family == "ChiSquare":
        (nu,) = P
        return nu, 2 * nu
    if family == "Beta":
        a, b = P
        return a / (a + b), a * b / ((a + b) ** 2 * (a + b + 1))
    if family == "StudentT":
        (nu,) = P
        return mpf(0), nu / (nu - 2)
    if family == "FRatio":
        n1, n2 = P
        return n2 / (n2 - 2), 2 * n2**2 * (n1 + n2 - 2) / (n1 * (n2 - 2) ** 2 * (n2 - 4))
    if family == "Error":
        a, b, c = P
        return a, b * b * 2**c * gamma(3 * c / 2) / gamma(c / 2)
    if family == "InverseGaussian":
        mu, lam = P
        return mu, mu**3 / lam
    if family == "Maxwell":
        (a,) = P
        return 2 * a * sqrt(2 / pi), a * a * (3 * pi - 8) / pi
    if family == "Moyal":
        a, b = P
        return a + b * (euler + log(2)), b * b * pi**2 / 2
    raise ValueError(family)


MOMENT_CASES = [
    ("Gamma", ["2.5", "2"]), ("Gamma", ["0.3", "1"]), ("ChiSquare", ["3"]),
    ("Beta", ["0.7", "2.5"]), ("StudentT", ["5"]), ("FRatio", ["3", "20"]),
    ("Error", ["1", "2", "1.5"]), ("InverseGaussian", ["1.5", "2"]), ("Maxwell", ["2"]),
    ("Moyal", ["1", "0.5"]),
]


def main():
    lines = [l.strip() for l in __doc__.splitlines()[2:] if l.strip()]
    out = ["# " + l for l in lines]
    mu, lam, bins = "1.5", "2", 50
    for k in range(1, bins):
        p = mpf(k) / bins
        out.append("InverseGaussianQuantile %d %s %s %s %s" %
                   (DIGITS, mu, lam, rnd(p), rnd(ig_quantile(p, mpf(mu), mpf(lam)))))
    for family, params in MOMENT_CASES:
        m, v = moments(family, params)
        out.append("Mean %d %s %s %s" % (DIGITS, family, " ".join(params), rnd(m)))
        out.append("Variance %d %s %s %s" % (DIGITS, family, " ".join(params), rnd(v)))
    with open(os.path.join(HERE, "variates.txt"), "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
