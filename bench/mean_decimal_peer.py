#!/usr/bin/env python3
"""Python's decimal peer of bench/mean_bench.cpp: the mean (sum of 10^6 Decimals, divided by
the count) and the second moment about 1/2 at context precisions 20 and 50, on random
decimals of as many digits. The data are made outside the timing; prints the median CPU
time of five runs of each, in milliseconds (Google Benchmark's CPU column is the peer)."""
import decimal
import random
import statistics
import time


def median_ms(f, runs=5):
    times = []
    for _ in range(runs):
        start = time.process_time()
        f()
        times.append((time.process_time() - start) * 1000)
    return statistics.median(times)


for digits in (20, 50):
    decimal.getcontext().prec = digits
    rng = random.Random(digits)
    data = [decimal.Decimal("0." + "".join(rng.choice("0123456789") for _ in range(digits)))
            for _ in range(10 ** 6)]
    half = decimal.Decimal("0.5")
    n = decimal.Decimal(len(data))
    mean = median_ms(lambda: sum(data, decimal.Decimal(0)) / n)
    moment = median_ms(lambda: sum(((x - half) ** 2 for x in data), decimal.Decimal(0)) / n)
    print("python decimal mean,   Digits %d  %8.1f ms" % (digits, mean))
    print("python decimal moment, Digits %d  %8.1f ms" % (digits, moment))
