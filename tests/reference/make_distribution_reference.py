#!/usr/bin/env python3
"""Reference values for the distribution workers computed by the numerical library.

Writes distribution_workers.txt: lines "<worker> <digits> <args...> <expected>", expected
correctly rounded to <digits> significant digits. The normal probability first forms
z = (x - mu) / sigma with each operation rounded to <digits>, as the worker does; every other
worker's value is the exact function value. Quantiles are solved with mpmath at 3 * digits + 60
working digits.
"""
import os
from mpmath import mp, mpf, ncdf, betainc, gammainc, sqrt, findroot, erfc, erfinv, log

HERE = os.path.dirname(os.path.abspath(__file__))


def rnd(x, d):
    """x rounded to d significant digits (half to even), as decimal text d.ddd[e<lead>]."""
    if x == 0:
        return "0."
    s = mp.nstr(x, d, min_fixed=1, max_fixed=0, strip_zeros=False)
    # mp.nstr rounds half-even on the binary value at the working precision, which is far
    # wider than d, so this is the correct rounding of the exact value
    mant, _, exp = s.partition("e")
    return mant + ("e" + str(int(exp)) if exp else "")


def rnum(x, d):
    return mpf(rnd(x, d).replace(".e", "e"))


def student_cdf(t, nu):
    x = nu / (nu + t * t)
    tail = betainc(nu / 2, mpf(1) / 2, 0, x, regularized=True) / 2
    return 1 - tail if t > 0 else tail


CDF = {
    "StudentTProbability": lambda x, nu: student_cdf(x, nu),
    "ChiSquareProbability": lambda x, nu: gammainc(nu / 2, 0, x / 2, regularized=True),
    "FRatioProbability": lambda x, n1, n2: betainc(n1 / 2, n2 / 2, 0, n1 * x / (n1 * x + n2),
                                                    regularized=True),
    "GammaProbability": lambda x, a, b: gammainc(a, 0, x / b, regularized=True),
    "BetaProbability": lambda x, a, b: betainc(a, b, 0, x, regularized=True),
}


def quantile(cdf, p, params, lo, hi):
    f = lambda x: cdf(x, *params) - p
    return findroot(f, (lo, hi), solver="anderson")


CASES = {
    "StudentTProbability": [("-2.5", "3"), ("1.3", "10"), ("0.01", "0.5"), ("40", "2.5")],
    "ChiSquareProbability": [("3.84", "1"), ("0.001", "4"), ("150", "100"), ("2.5", "0.75")],
    "FRatioProbability": [("2.5", "3", "12"), ("0.2", "5", "2"), ("10", "1", "1")],
    "GammaProbability": [("1.5", "2", "0.5"), ("0.01", "0.3", "1"), ("30", "10", "2")],
    "BetaProbability": [("0.3", "2", "5"), ("0.999", "0.5", "0.5"), ("0.001", "3", "1.5")],
}
DEVIATES = {
    "StudentTDeviate": ("StudentTProbability", [("0.975", "3"), ("0.001", "10"), ("0.6", "1.5")], (-1e6, 1e6)),
    "ChiSquareDeviate": ("ChiSquareProbability", [("0.95", "1"), ("0.01", "4"), ("0.5", "100")], (0, 1e6)),
    "FRatioDeviate": ("FRatioProbability", [("0.95", "3", "12"), ("0.1", "5", "2")], (0, 1e8)),
    "GammaDeviate": ("GammaProbability", [("0.5", "2", "0.5"), ("0.001", "0.3", "1"), ("0.99", "10", "2")], (0, 1e6)),
    "BetaDeviate": ("BetaProbability", [("0.5", "2", "5"), ("0.01", "0.5", "0.5"), ("0.999", "3", "1.5")], (0, 1)),
}


def bracketed_quantile(cdf, p, params, lo, hi):
    lo, hi = mpf(lo), mpf(hi)
    for _ in range(mp.prec + 200):  # bisection: slow but sure
        mid = (lo + hi) / 2
        if cdf(mid, *params) < p:
            lo = mid
        else:
            hi = mid
    return (lo + hi) / 2


def main():
    out = ["# made by make_distribution_reference.py (mpmath); do not edit"]
    for d in (10, 30, 100):
        mp.dps = 3 * d + 60
        for x, mu, sigma in [("1.96", "0", "1"), ("-40", "0", "1"), ("3", "1", "3"),
                             ("0.1", "0.2", "0.7"), ("12", "10", "2")]:
            t = rnum(mpf(x) - mpf(mu), d)
            z = rnum(t / mpf(sigma), d)
            out.append(f"NormalProbability {d} {x} {mu} {sigma} {rnd(ncdf(z), d)}")
        for p in ["0.975", "0.5", "1e-30", "0.999999", "0.3"]:
            p_ = mpf(p)
            z = -sqrt(2) * erfinv(1 - 2 * p_) if p_ > mpf("1e-10") else None
            if z is None:
                z = bracketed_quantile(lambda v: ncdf(v), p_, (), -100, 0)
            out.append(f"NormalDeviate {d} {p} 0 1 {rnd(z, d)}")
        for name, cases in CASES.items():
            for args in cases:
                v = CDF[name](*[mpf(a) for a in args])
                out.append(f"{name} {d} {' '.join(args)} {rnd(v, d)}")
        if d > 30:
            continue  # bisection quantiles at 100 digits are slow; the routines' own tables go further
        for name, (cdfname, cases, (lo, hi)) in DEVIATES.items():
            for args in cases:
                p, params = mpf(args[0]), [mpf(a) for a in args[1:]]
                v = bracketed_quantile(CDF[cdfname], p, params, lo, hi)
                out.append(f"{name} {d} {' '.join(args)} {rnd(v, d)}")
    with open(os.path.join(HERE, "distribution_workers.txt"), "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
