// Walker's alias urn (indices with given weights in constant time per draw) and bootstrap
// resampling of host arrays, with their host entry points.
#ifndef STATS_RANDOM_RESAMPLING_H
#define STATS_RANDOM_RESAMPLING_H

#include "vexa/external.h"
#include "vexa/float.h"

// Indices 0 .. N-1; the first M carry the weights, positions M .. N-1 have probability 0.
// Walker (1977), with the tables paired through a small and a large stack.
class STATS_AliasUrnGenerator_MP {
 public:
  STATS_AliasUrnGenerator_MP(int N, int M, VexaFloat* weights);
  ~STATS_AliasUrnGenerator_MP();
  STATS_AliasUrnGenerator_MP(const STATS_AliasUrnGenerator_MP&) = delete;
  STATS_AliasUrnGenerator_MP& operator=(const STATS_AliasUrnGenerator_MP&) = delete;

  // Rebuilds the tables from weights[0 .. M-1]. Negative weights are not rejected; a zero
  // total weight follows the float's own rules. N = 0 leaves no tables (nothing to draw).
  void Reset(int N, int M, VexaFloat* weights);
  // An index in 0 .. N-1 (N >= 1). The bucket comes from the top bits of one host word with
  // one bit more than N - 1 needs, redrawn until below N; then one uniform decides between
  // the bucket and its alias.
  int Next();

  int Size() const { return m_N; }
  int Alias(int j) const { return m_alias[j]; }
  const VexaFloat& Probability(int j) const { return m_probability[j]; }

 private:
  int m_M;
  int m_N;
  int* m_alias;
  VexaFloat* m_probability;
};

extern "C" {
// (L, W): an integer[4] Array 1 .. L of 0-based indices into W drawn with the weights W.
ALGEB STATS_VexaAliasUrnSample_MP(VexaKernelVector kv, ALGEB args);
// (A, r, c, W): an r x c array of elements of A drawn with replacement, uniformly or with
// the weights W (empty for none); A's element type is kept, whole elements are copied.
ALGEB STATS_VexaBootstrapSample_MP(VexaKernelVector kv, ALGEB args);
// (X, W, P, s, R): R values of P applied to resamples of size s of X (weighted by W when W
// is not empty). Unweighted draws range over 0 .. s-1, so s is at most the size of X.
ALGEB STATS_VexaBootstrapStatistic_MP(VexaKernelVector kv, ALGEB args);
// (G, P, a, R): R values of P(G(a)).
ALGEB STATS_VexaBootstrapStatisticRV_MP(VexaKernelVector kv, ALGEB args);
}

#endif
