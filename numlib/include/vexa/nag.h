// The multiprecision numerical library: routines with the argument lists of their published
// namesakes (g01 chapter: probabilities, deviates, discrete distributions, summaries), every
// real a VexaFloat computed at the current Digits. A routine reports failure by setting
// fail->code to a non-zero value and fail->message to a text naming the argument at fault
// and its value; its return value is then 0.
#ifndef VEXA_NAG_H
#define VEXA_NAG_H

#include <stddef.h>

#include "vexa/float.h"

enum Nag_TailProbability {
  Nag_LowerTail = 1329,     // P(X <= x)
  Nag_UpperTail = 1330,     // P(X >= x)
  Nag_TwoTailSignif = 1331,  // P(|X| >= |x|)
  Nag_TwoTailConfid = 1332,  // P(|X| <= |x|)
};

// Failure codes.
enum {
  NE_NOERROR = 0,
  NE_BAD_PARAM = 1,      // an enumeration argument out of range
  NE_REAL_ARG_LT = 2,    // a real argument below its range
  NE_REAL_ARG_GT = 3,    // above its range
  NE_REAL_ARG_LE = 4,    // at or below a bound it must exceed
  NE_REAL_ARG_GE = 5,    // at or above a bound it must stay under
  NE_REAL_ARG_CONS = 6,  // real arguments inconsistent with each other
  NE_INT_ARG_CONS = 7,   // integer arguments inconsistent with each other
  NE_INT_ARG_LT = 11,    // an integer argument below its range
  NE_REAL_ARG = 12,      // a real argument not a finite number
  NE_CONV = 13,          // an iteration failed to converge
};

struct NagError {
  int code = NE_NOERROR;
  bool print = false;  // print the message to stderr on failure
  void (*handler)(const char* message, int code, const char* routine) = nullptr;
  char message[512] = "";
};

// ---- Probabilities (tail as above; one-sided distributions take the two-tailed kinds as
// twice the smaller tail and its complement). ----
// Every result is correctly rounded to Digits, tails included (the upper tail is computed
// directly, never as 1 - P). Arguments: finite; x, f, g >= 0 for chi-square, F and gamma
// (P(X <= 0) = 0); shapes 0 < a, b <= 10^6 and degrees of freedom 0 < df <= 2 * 10^6;
// scales b > 0. For the t and normal deviates the tail says which probability p is
// (two-tailed kinds give x >= 0); the other deviates take the lower tail. 0 < p < 1.
VexaFloat VexaMP_g01eac(Nag_TailProbability tail, VexaFloat x, NagError* fail);  // normal
VexaFloat VexaMP_g01ebc(Nag_TailProbability tail, VexaFloat t, VexaFloat df,
                        NagError* fail);  // Student t
VexaFloat VexaMP_g01ecc(Nag_TailProbability tail, VexaFloat x, VexaFloat df,
                        NagError* fail);  // chi-square
VexaFloat VexaMP_g01edc(Nag_TailProbability tail, VexaFloat f, VexaFloat df1, VexaFloat df2,
                        NagError* fail);  // F
// Beta(a, b): *p = P(X <= x), *q = P(X > x), *pdf the density at x. tol is ignored (the
// results are correctly rounded).
void VexaMP_g01eec(VexaFloat x, VexaFloat a, VexaFloat b, VexaFloat tol, VexaFloat* p,
                   VexaFloat* q, VexaFloat* pdf, NagError* fail);
// Gamma with shape a and scale b.
VexaFloat VexaMP_g01efc(Nag_TailProbability tail, VexaFloat g, VexaFloat a, VexaFloat b,
                        NagError* fail);

// ---- Deviates (quantiles): the x with the given tail probability p. ----
VexaFloat VexaMP_g01fac(Nag_TailProbability tail, VexaFloat p, NagError* fail);  // normal
VexaFloat VexaMP_g01fbc(Nag_TailProbability tail, VexaFloat p, VexaFloat df,
                        NagError* fail);                                      // Student t
VexaFloat VexaMP_g01fcc(VexaFloat p, VexaFloat df, NagError* fail);           // chi-square
VexaFloat VexaMP_g01fdc(VexaFloat p, VexaFloat df1, VexaFloat df2, NagError* fail);  // F
VexaFloat VexaMP_g01fec(VexaFloat p, VexaFloat a, VexaFloat b, VexaFloat tol,
                        NagError* fail);  // beta
VexaFloat VexaMP_g01ffc(VexaFloat p, VexaFloat a, VexaFloat b, VexaFloat tol,
                        NagError* fail);  // gamma (shape a, scale b)

// ---- Discrete distributions: *plek = P(X <= k), *pgtk = P(X > k), *peqk = P(X = k). ----
// Each output is correctly rounded to Digits, with full relative accuracy in both tails.
// Every k >= 0 is accepted: a k outside the support gives the exact values 0 or 1 there
// (k beyond n gives plek = 1, pgtk = 0, peqk = 0). A failure sets all three outputs to 0.
// The work grows with the standard deviation (about sd sqrt(Digits) terms at worst), which the
// variance limits below keep bounded.
// Binomial with n trials and success probability p: n >= 0, 0 <= p <= 1 (NE_INT_ARG_LT,
// NE_REAL_ARG_LT / _GT, NE_REAL_ARG for undefined), k >= 0 (NE_INT_ARG_LT), and
// n p (1 - p) <= 1e10 (NE_REAL_ARG_CONS).
void VexaMP_g01bjc(long n, VexaFloat p, long k, VexaFloat* plek, VexaFloat* pgtk,
                   VexaFloat* peqk, NagError* fail);
// Poisson with mean rlamda: 0 < rlamda <= 1e10 (NE_REAL_ARG_LE, NE_REAL_ARG_GT, NE_REAL_ARG
// when not finite), k >= 0 (NE_INT_ARG_LT).
void VexaMP_g01bkc(VexaFloat rlamda, long k, VexaFloat* plek, VexaFloat* pgtk, VexaFloat* peqk,
                   NagError* fail);
// Hypergeometric: k of the m drawn out of n items, l of which are marked. n, l, m, k >= 0
// (NE_INT_ARG_LT), l <= n and m <= n (NE_INT_ARG_CONS), and the variance
// l m (n-l) (n-m) / (n^2 (n-1)) <= 1e10 (NE_INT_ARG_CONS). The support is
// max(0, l+m-n) <= k <= min(l, m).
void VexaMP_g01blc(long n, long l, long m, long k, VexaFloat* plek, VexaFloat* pgtk,
                   VexaFloat* peqk, NagError* fail);

// ---- Summaries. ----
// Five-point summary of x[0..n-1] (x is not changed): res = minimum, lower hinge, median,
// upper hinge, maximum. Tukey's hinges: the median at depth (n+1)/2 of the sorted values and
// each hinge at depth (floor((n+1)/2) + 1)/2 from its end; a depth ending in a half is the
// mean of the two neighbours. Results are rounded once to Digits. n < 5 fails with code
// NE_INT_ARG_LT, an undefined x[i] with NE_REAL_ARG; res is then all 0.
void VexaMP_g01alc(long n, const VexaFloat x[], VexaFloat res[], NagError* fail);

// ---- Sorting and ranking (stable: equal elements keep their order). ----
enum Nag_SortOrder { Nag_Ascending = 1, Nag_Descending = 2 };
// Sorts vec[0..n-1] in place; undefined values go last ascending, first descending. A bad
// order fails with NE_BAD_PARAM and leaves vec as it was.
void VexaMP_m01cac(VexaFloat vec[], size_t n, Nag_SortOrder order, NagError* fail);
// ranks[i] (0-based) is the place of element i, the element at vec + i * stride (bytes), in
// the order that compare gives (-1 before, 0 equal, 1 after; only -1 separates two
// elements). stride = 0 fails with NE_INT_ARG_CONS, a null compare or a bad order with
// NE_BAD_PARAM. Errors raised by compare propagate.
void VexaMP_m01dsc(const void* vec, size_t n, ptrdiff_t stride,
                   int (*compare)(const char* a, const char* b), Nag_SortOrder order,
                   size_t ranks[], NagError* fail);

#endif
