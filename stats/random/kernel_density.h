// Kernel density estimation: five kernels, Silverman's rule of thumb for the bandwidth, the
// estimate as a direct sum at given points, the estimate on a grid by linear binning and an
// FFT convolution (Silverman 1982), and samples drawn by inverting the binned estimate.
#ifndef STATS_RANDOM_KERNEL_DENSITY_H
#define STATS_RANDOM_KERNEL_DENSITY_H

#include <cstdint>

#include "vexa/external.h"
#include "vexa/float.h"

// Kernels K(u), each a density of mean 0; the bandwidth h scales them: K((x - xi) / h) / h.
enum STATS_KERNEL_TYPE_MP : int32_t {
  STATS_KERNEL_GAUSSIAN_MP = 1,      // exp(-u^2 / 2) / sqrt(2 pi)
  STATS_KERNEL_EPANECHNIKOV_MP = 2,  // 3/4 (1 - u^2) on |u| <= 1
  STATS_KERNEL_BIWEIGHT_MP = 3,      // 15/16 (1 - u^2)^2 on |u| <= 1
  STATS_KERNEL_TRIANGULAR_MP = 4,    // 1 - |u| on |u| <= 1
  STATS_KERNEL_RECTANGULAR_MP = 5,   // 1/2 on |u| <= 1
};

VexaFloat STATS_Kernel_MP(STATS_KERNEL_TYPE_MP kernel, const VexaFloat& u);
// The u beyond which the kernel is 0: 1, or for the gaussian where it falls below
// 10^-(Digits + 3) of its peak.
VexaFloat STATS_KernelSupport_MP(STATS_KERNEL_TYPE_MP kernel);

// Silverman's rule 0.9 min(sd, IQR / 1.34) n^(-1/5): sd with the divisor n - 1 (weighted:
// the weighted second central moment times n / (n - 1)), the IQR of the sample quantiles of
// method 6 (linear at 1 + (n - 1) p); an IQR of 0 falls back on sd. Raises for n < 2 and
// for data without spread. The data are not changed.
VexaFloat STATS_SilvermanBandwidth_MP(VexaKernelVector kv, const VexaFloat* data,
                                      const VexaFloat* weights, int n);

// out[j] = sum_i w_i K((points[j] - x_i) / h) / (h sum_i w_i), each summed directly with
// guard digits and rounded once; weights may be null (all 1).
void STATS_KernelDensity_MP(VexaFloat* out, const VexaFloat* data, const VexaFloat* weights, int n,
                            STATS_KERNEL_TYPE_MP kernel, const VexaFloat& h,
                            const VexaFloat* points, int m);

// The estimate at the m >= 2 grid points lo + j (hi - lo) / (m - 1): the data (also those
// outside [lo, hi]) binned linearly onto the grid extended by the kernel's reach, convolved
// with the sampled kernel by the numerical library's Fourier transforms. Off by the binning
// error, of order ((hi - lo) / ((m - 1) h))^2 of the density's scale; values below the
// transforms' rounding noise are 0. Raises when the kernel spans more than 2^20 grid steps.
void STATS_KernelDensityBinned_MP(VexaKernelVector kv, VexaFloat* out, const VexaFloat* data,
                                  const VexaFloat* weights, int n, STATS_KERNEL_TYPE_MP kernel,
                                  const VexaFloat& h, const VexaFloat& lo, const VexaFloat& hi,
                                  int m);

extern "C" {
// (data, weights, ignore, kernel, bandwidth, points): the estimate at a point, a list or an
// Array of points; bandwidth 0 means Silverman's rule.
ALGEB STATS_VexaKernelDensity_MP(VexaKernelVector kv, ALGEB args);
// (data, weights, ignore, kernel, bandwidth, lo, hi, grid size): Array(1 .. m) on the grid.
ALGEB STATS_VexaKernelDensityBinned_MP(VexaKernelVector kv, ALGEB args);
// (n, data, weights, kernel, bandwidth): n draws from the estimate, missing data dropped.
ALGEB STATS_VexaKernelDensityRandomSample_MP(VexaKernelVector kv, ALGEB args);
}

#endif
