#!/usr/bin/env python3
"""Python's decimal peer of bench/descriptive_bench.cpp: statistics.median and the nine
deciles (statistics.quantiles, n=10, method 'inclusive': linear interpolation at
1 + (n - 1) p) of 10^6 Decimals of 20 digits at a context precision of 20. The data are made
outside the timing; prints the median of five runs of each, in milliseconds."""
import decimal
import random
import statistics
import time

decimal.getcontext().prec = 20
rng = random.Random(20)
data = [decimal.Decimal("0." + "".join(rng.choice("0123456789") for _ in range(20)))
        for _ in range(10 ** 6)]


def median_ms(f, runs=5):
    times = []
    for _ in range(runs):
        start = time.perf_counter()
        f()
        times.append((time.perf_counter() - start) * 1000)
    return statistics.median(times)


print("python decimal statistics.median     %8.1f ms" % median_ms(lambda: statistics.median(data)))
print("python decimal statistics.quantiles  %8.1f ms" %
      median_ms(lambda: statistics.quantiles(data, n=10, method="inclusive")))
