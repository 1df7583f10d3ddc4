#!/usr/bin/env python3
"""Times the peer cases in mpmath at mp.dps 50 and 200, as a typical user would write them:
ncdf and erfinv for the normal, gammainc and betainc for the others (the binomial and Poisson
distribution functions included), and the other quantiles
by findroot (secant) on the cdf from the distribution's mean. Inputs are made before timing.
Prints one JSON object per run: impl, case, digits, seconds per call, value."""

import argparse
import json
import re
import statistics
import sys
import time

import mpmath
from mpmath import mp, mpf


def normal_cdf(x, mu, sigma):
    return mp.ncdf(x, mu, sigma)


def normal_quantile(p, mu, sigma):
    return mu + sigma * mp.sqrt(2) * mp.erfinv(2 * p - 1)


def gamma_cdf(x, a, b):
    return mp.gammainc(a, 0, x / b, regularized=True)


def chisq_cdf(x, nu):
    return mp.gammainc(nu / 2, 0, x / 2, regularized=True)


def beta_cdf(x, a, b):
    return mp.betainc(a, b, 0, x, regularized=True)


def t_cdf(x, nu):
    tail = mp.betainc(nu / 2, mpf(1) / 2, 0, nu / (nu + x * x), regularized=True) / 2
    return 1 - tail if x > 0 else tail


def f_cdf(x, nu1, nu2):
    return mp.betainc(nu1 / 2, nu2 / 2, 0, nu1 * x / (nu1 * x + nu2), regularized=True)


def binomial_cdf(n, p, k):
    return mp.betainc(n - k, k + 1, 0, 1 - p, regularized=True)


def poisson_cdf(lam, k):
    return mp.gammainc(k + 1, lam, mp.inf, regularized=True)


def by_root(cdf, start):
    """The quantile p -> x with cdf(x, *params) = p, by findroot from start(*params)."""
    return lambda p, *params: mp.findroot(lambda x: cdf(x, *params) - p, start(*params))


def binomial_quantile(p, n, q):
    """The smallest k with P(X <= k) >= p, summing the masses from 0."""
    n = int(n)
    k, mass = 0, (1 - q) ** n
    total = mass
    while total < p and k < n:
        mass *= (n - k) * q / ((k + 1) * (1 - q))
        k += 1
        total += mass
    return mpf(k)


def poisson_quantile(p, lam):
    k, mass = 0, mp.exp(-lam)
    total = mass
    while total < p:
        k += 1
        mass *= lam / k
        total += mass
    return mpf(k)


def poisson_mixture(mu, term, s=0):
    """sum_j e^-mu mu^j / Gamma(j+1+s) term(j) from j = 0, until past mu and negligible."""
    total, j = mpf(0), 0
    while True:
        t = mp.exp(j * mp.log(mu) - mu - mp.loggamma(j + 1 + s)) * term(j)
        total += t
        if j > mu + 10 and abs(t) < abs(total) * mpf(10) ** (-mp.dps - 5):
            return total
        j += 1


def ncchisq_cdf(x, nu, lam):
    return poisson_mixture(lam / 2, lambda j: mp.gammainc(nu / 2 + j, 0, x / 2, regularized=True))


def ncbeta_cdf(x, a, b, lam):
    return poisson_mixture(lam / 2, lambda j: mp.betainc(a + j, b, 0, x, regularized=True))


def ncf_cdf(x, nu1, nu2, lam):
    return ncbeta_cdf(nu1 * x / (nu1 * x + nu2), nu1 / 2, nu2 / 2, lam)


def nct_cdf(x, nu, delta):
    """The series in incomplete beta functions; for x < 0 the reflection, with the digits that
    its subtraction cancels."""
    def nonnegative(x, delta):
        z = x * x / (x * x + nu)
        mu = delta * delta / 2
        even = poisson_mixture(mu, lambda j: mp.betainc(j + mpf(1) / 2, nu / 2, 0, z, regularized=True))
        odd = poisson_mixture(mu, lambda j: mp.betainc(j + 1, nu / 2, 0, z, regularized=True), 0.5)
        return mp.ncdf(-delta) + (even + delta / mp.sqrt(2) * odd) / 2
    with mp.extradps(int(delta * delta / 5) + 10):
        r = nonnegative(x, delta) if x >= 0 else 1 - nonnegative(-x, -delta)
    return +r


# name, function, inputs: the same cases, names and inputs as the C++ side.
CASES = [
    ("normal.cdf(1.96)", normal_cdf, ("1.96", "0", "1")),
    ("normal.quantile(0.975)", normal_quantile, ("0.975", "0", "1")),
    ("gamma(2.5,1.5).cdf(3)", gamma_cdf, ("3", "2.5", "1.5")),
    ("gamma(12,0.5).cdf(7)", gamma_cdf, ("7", "12", "0.5")),
    ("gamma(2.5,1.5).quantile(0.9)", by_root(gamma_cdf, lambda a, b: a * b), ("0.9", "2.5", "1.5")),
    ("gamma(12,0.5).quantile(0.05)", by_root(gamma_cdf, lambda a, b: a * b), ("0.05", "12", "0.5")),
    ("chisq(5).cdf(9)", chisq_cdf, ("9", "5")),
    ("chisq(5).quantile(0.95)", by_root(chisq_cdf, lambda nu: nu), ("0.95", "5")),
    ("beta(2.5,3.5).cdf(0.4)", beta_cdf, ("0.4", "2.5", "3.5")),
    ("beta(12,8).cdf(0.7)", beta_cdf, ("0.7", "12", "8")),
    ("beta(2.5,3.5).quantile(0.9)", by_root(beta_cdf, lambda a, b: a / (a + b)), ("0.9", "2.5", "3.5")),
    ("beta(12,8).quantile(0.05)", by_root(beta_cdf, lambda a, b: a / (a + b)), ("0.05", "12", "8")),
    ("t(10).cdf(2)", t_cdf, ("2", "10")),
    ("t(10).quantile(0.975)", by_root(t_cdf, lambda nu: mpf(0)), ("0.975", "10")),
    ("F(5,10).cdf(2.5)", f_cdf, ("2.5", "5", "10")),
    ("F(5,10).quantile(0.95)", by_root(f_cdf, lambda nu1, nu2: nu2 / (nu2 - 2)), ("0.95", "5", "10")),
    ("binomial(20,0.3).cdf(6)", binomial_cdf, ("20", "0.3", "6")),
    ("binomial(1e9,0.5).cdf(5e8)", binomial_cdf, ("1000000000", "0.5", "500000000")),
    ("poisson(2.5).cdf(3)", poisson_cdf, ("2.5", "3")),
    ("poisson(1e6).cdf(1e6)", poisson_cdf, ("1000000", "1000000")),
    ("binomial(1000,0.3).quantile(0.9)", binomial_quantile, ("0.9", "1000", "0.3")),
    ("binomial(40,0.3).quantile(0.05)", binomial_quantile, ("0.05", "40", "0.3")),
    ("poisson(3.5).quantile(0.9)", poisson_quantile, ("0.9", "3.5")),
    ("poisson(250).quantile(0.05)", poisson_quantile, ("0.05", "250")),
    ("ncchisq(4,3).cdf(5)", ncchisq_cdf, ("5", "4", "3")),
    ("ncchisq(10,1000).cdf(1000)", ncchisq_cdf, ("1000", "10", "1000")),
    ("ncchisq(4,3).quantile(0.9)", by_root(ncchisq_cdf, lambda nu, lam: nu + lam), ("0.9", "4", "3")),
    ("ncF(3,7,5).cdf(2)", ncf_cdf, ("2", "3", "7", "5")),
    ("ncF(3,7,5).quantile(0.9)", by_root(ncf_cdf, lambda a, b, lam: (a + lam) / a), ("0.9", "3", "7", "5")),
    ("ncbeta(2,3,4).cdf(0.3)", ncbeta_cdf, ("0.3", "2", "3", "4")),
    ("ncbeta(2,3,4).quantile(0.9)", by_root(ncbeta_cdf, lambda a, b, lam: mpf("0.5")), ("0.9", "2", "3", "4")),
    ("nct(5,1).cdf(1.5)", nct_cdf, ("1.5", "5", "1")),
    ("nct(5,1).cdf(-1.5)", nct_cdf, ("-1.5", "5", "1")),
    ("nct(10,5).cdf(-1)", nct_cdf, ("-1", "10", "5")),
]


def time_case(function, args, repetitions, min_time):
    """Median CPU seconds per call over repetitions, each long enough to last min_time."""
    calls = 1
    while True:
        start = time.process_time()
        for _ in range(calls):
            function(*args)
        elapsed = time.process_time() - start
        if elapsed >= min_time or calls >= 1 << 20:
            break
        calls *= 2 if elapsed <= 0 else max(2, min(10, int(1.5 * min_time / elapsed) + 1))
    times = [elapsed / calls]
    for _ in range(repetitions - 1):
        start = time.process_time()
        for _ in range(calls):
            function(*args)
        times.append((time.process_time() - start) / calls)
    return statistics.median(times)


def main(argv):
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--digits", type=int, nargs="+", default=[50, 200])
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--min-time", type=float, default=0.5, help="seconds per repetition")
    parser.add_argument("--filter", default="", help="regular expression on the case name")
    args = parser.parse_args(argv)
    for digits in args.digits:
        for name, function, inputs in CASES:
            if not re.search(args.filter, name):
                continue
            mp.dps = digits
            values = tuple(mpf(s) for s in inputs)
            record = {"impl": "mpmath", "case": name, "digits": digits}
            try:
                record["value"] = mpmath.nstr(function(*values), digits, strip_zeros=False)
                record["seconds"] = time_case(function, values, args.repetitions, args.min_time)
            except (ValueError, ZeroDivisionError, ArithmeticError, mpmath.libmp.NoConvergence) as e:
                record["error"] = str(e)
            print(json.dumps(record), flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
