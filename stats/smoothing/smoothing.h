// Smoothing: moving-window statistics of a one-dimensional data sample. Each window of w
// consecutive values is replaced by its mean (of any kind, optionally weighted) or its
// (weighted) median; the first o values pass through unchanged, and in the running mode each
// result replaces the data as the window moves on, so that later windows see it.
#ifndef STATS_SMOOTHING_SMOOTHING_H
#define STATS_SMOOTHING_SMOOTHING_H

#include "vexa/external.h"

extern "C" {
// (data, w, o, weights, ignore, mean type, running): an sfloat Array 1 .. n - w + o + 1.
ALGEB STATS_VexaMovingMean_MP(VexaKernelVector kv, ALGEB args);
// (data, w, o, weights, ignore, running): an sfloat Array 1 .. n - w + o + 1.
ALGEB STATS_VexaMovingMedian_MP(VexaKernelVector kv, ALGEB args);
}

#endif
