#!/usr/bin/env python3
"""Python's decimal peer of bench/arrange_bench.cpp: sorted() of 10^6 Decimals of 20 digits at
a context precision of 20. The data are made outside the timing; prints the median of five
runs, in milliseconds of CPU time (the benchmarks' CPU column)."""
import decimal
import random
import statistics
import time

decimal.getcontext().prec = 20
rng = random.Random(20)
data = [decimal.Decimal("0." + "".join(rng.choice("0123456789") for _ in range(20)))
        for _ in range(10 ** 6)]

times = []
for _ in range(5):
    start = time.process_time()
    sorted(data)
    times.append((time.process_time() - start) * 1000)
print("python decimal sorted  %8.1f ms" % statistics.median(times))
