// Kernel density estimates: the direct sum and Silverman's rule against mpmath, the binned
// estimate against the direct sum within its grid error and integrating to 1, samples by
// goodness of fit, and the failures of the entry points.
#include "stats/random/kernel_density.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "data/support.h"
#include "reference.h"

namespace {

using Floats = std::vector<VexaFloat>;

Floats Split(const std::string& text) {
  Floats v;
  for (size_t at = 0; at <= text.size();) {
    size_t end = text.find(',', at);
    if (end == std::string::npos) end = text.size();
    v.push_back(VexaFloatFromString(text.substr(at, end - at)));
    at = end + 1;
  }
  return v;
}

ALGEB Call(ALGEB (*entry)(VexaKernelVector, ALGEB), const std::vector<ALGEB>& args) {
  return entry(Kv(), vexa::NewExpseq(args));
}

Floats Values(ALGEB rtable) {
  auto* block = static_cast<VexaFloat*>(RTableDataBlock(Kv(), rtable));
  return Floats(block, block + RTableNumElements(Kv(), rtable));
}

TEST(KernelDensity, DirectSumAndSilvermanMatchMpmath) {
  const auto cases = vexa_test::ReadCases("kernel_density.txt");
  ASSERT_GT(cases.size(), 150u);
  for (const auto& c : cases) {
    SCOPED_TRACE("line " + std::to_string(c.line));
    VexaDigitsScope digits(c.digits);
    Floats x = Split(c.args[0]), w;
    if (c.args[1] != "-") w = Split(c.args[1]);
    const VexaFloat* wp = w.empty() ? nullptr : w.data();
    const int n = static_cast<int>(x.size());
    VexaFloat got;
    double tolerance = 1;
    if (c.op == "silverman") {
      got = STATS_SilvermanBandwidth_MP(Kv(), x.data(), wp, n);
      tolerance = 4;  // a chain of roundings at Digits
    } else {
      const auto kernel = static_cast<STATS_KERNEL_TYPE_MP>(c.op[3] - '0');
      const VexaFloat point = VexaFloatFromString(c.args[3]);
      STATS_KernelDensity_MP(&got, x.data(), wp, n, kernel, VexaFloatFromString(c.args[2]), &point,
                             1);
    }
    const VexaFloat want = VexaFloatFromString(c.expected);
    EXPECT_LE(vexa_test::UlpError(c, got, want), tolerance) << Text(got) << " vs " << c.expected;
  }
}

// Binned on a grid that holds every datum and the kernel's reach: the estimate is within the
// binning error C (delta / h)^2 / h of the direct sum at each grid point (the rectangular
// kernel's jumps allow only an L1 error of order delta / h), and its trapezoid sum is 1.
TEST(KernelDensity, BinnedEstimateWithinItsGridErrorOfTheDirectSum) {
  VexaDigitsScope digits(20);
  const Floats x = Split("1.2,2.5,2.7,3.1,4,5.5,-0.75,3.3"), w = Split("1,2,0.5,1,1,3,0.25,1");
  const VexaFloat h(0.6), lo(-6), hi(12);
  for (int kernel = 1; kernel <= 5; ++kernel) {
    for (int m : {257, 1000}) {
      SCOPED_TRACE("kernel " + std::to_string(kernel) + ", m " + std::to_string(m));
      const auto k = static_cast<STATS_KERNEL_TYPE_MP>(kernel);
      Floats binned(m), direct(m), points(m);
      const VexaFloat delta = (hi - lo) / (m - 1);
      for (int j = 0; j < m; ++j) points[j] = lo + delta * j;
      STATS_KernelDensityBinned_MP(Kv(), binned.data(), x.data(), w.data(), 8, k, h, lo, hi, m);
      STATS_KernelDensity_MP(direct.data(), x.data(), w.data(), 8, k, h, points.data(), m);
      const VexaFloat ratio = delta / h;
      VexaFloat worst, l1, sum;
      for (int j = 0; j < m; ++j) {
        const VexaFloat error = fabs(binned[j] - direct[j]);
        if (error > worst) worst = error;
        l1 += error * delta;
        EXPECT_GE(binned[j], 0);
        sum += binned[j] * delta;
      }
      if (kernel == 5)
        EXPECT_LE(l1, 2 * ratio) << Text(l1);
      else
        EXPECT_LE(worst, 4 * ratio * ratio / h) << Text(worst);
      EXPECT_LE(fabs(sum - 1), VexaFloatFromString("1e-15")) << Text(sum);
    }
  }
}

TEST(KernelDensity, GaussianBinnedEstimateIsSpectrallyAccurateOnAFineGrid) {
  // With delta / h small the sampled gaussian kernel sums to 1 to all digits, so only the
  // binning error remains, and at points far from the data it is far below delta^2.
  VexaDigitsScope digits(30);
  const Floats x = Split("0,1");
  const int m = 4001;
  Floats binned(m);
  STATS_KernelDensityBinned_MP(Kv(), binned.data(), x.data(), nullptr, 2, STATS_KERNEL_GAUSSIAN_MP,
                               VexaFloat(1), VexaFloat(-20), VexaFloat(20), m);
  VexaFloat sum;
  for (const VexaFloat& f : binned) sum += f;
  // data on grid points: binning is exact, and the trapezoid sum of a gaussian is exact
  EXPECT_LE(fabs(sum / 100 - 1), VexaFloatFromString("1e-25")) << Text(sum / 100);
}

TEST(KernelDensity, SampleFollowsTheEstimateAndRepeatsUnderOneSeed) {
  VexaDigitsScope digits(15);
  ALGEB data = SfloatRTable({"1.2", "2.5", "2.7", "3.1", "4", "5.5", "U"});
  const std::vector<ALGEB> args = {vexa::NewInteger(4000), data, SfloatRTable({}),
                                   vexa::NewInteger(1), F("0.4").Handle()};
  vexa::SeedRandom(5);
  Floats s = Values(Call(STATS_VexaKernelDensityRandomSample_MP, args));
  vexa::SeedRandom(5);
  EXPECT_EQ(Values(Call(STATS_VexaKernelDensityRandomSample_MP, args)), s);
  // Kolmogorov-Smirnov against the estimate's distribution: the mean of the normal laws
  std::sort(s.begin(), s.end());
  const Floats x = Split("1.2,2.5,2.7,3.1,4,5.5");
  VexaFloat d;
  const VexaFloat n(4000), root2 = sqrt(VexaFloat(2));
  for (int i = 0; i < 4000; ++i) {
    VexaFloat cdf;
    for (const VexaFloat& xi : x) cdf += VexaEvalf1("erfc", -(s[i] - xi) / (F("0.4") * root2));
    cdf /= 12;
    const VexaFloat gap = std::max(fabs(cdf - VexaFloat(i) / n), fabs(cdf - VexaFloat(i + 1) / n));
    if (gap > d) d = gap;
  }
  EXPECT_LT(d, 1.63 / std::sqrt(4000.0)) << Text(d);  // the 1% point
}

TEST(KernelDensity, EntryPointsReportUnusableInputAndChangeNothing) {
  VexaDigitsScope digits(10);
  ALGEB none = SfloatRTable({}), data = SfloatRTable({"1", "2", "4"});
  ALGEB flat = SfloatRTable({"3", "3", "3"}), missing = SfloatRTable({"1", "U", "2"});
  ALGEB yes = vexa::True(), no = vexa::False();
  auto num = [](const char* t) { return F(t).Handle(); };
  auto i = [](int v) { return vexa::NewInteger(v); };
  const struct {
    ALGEB (*entry)(VexaKernelVector, ALGEB);
    std::vector<ALGEB> args;
    std::string message;
  } rows[] = {
      {STATS_VexaKernelDensity_MP,
       {data, none, yes, i(1), num("1")},
       "VexaKernelDensity expects 6 arguments, received: "},
      {STATS_VexaKernelDensity_MP,
       {none, none, yes, i(1), num("1"), i(0)},
       "expected a sample with data that are not missing, received "},
      {STATS_VexaKernelDensity_MP,
       {SfloatRTable({"U", "U"}), none, yes, i(1), num("1"), i(0)},
       "expected a sample with data that are not missing, received "},
      {STATS_VexaKernelDensity_MP,
       {missing, none, no, i(1), num("1"), i(0)},
       "the sample holds missing data; set the ignore flag to discard it, received "},
      {STATS_VexaKernelDensity_MP,
       {flat, none, yes, i(1), num("0"), i(0)},
       "the data have no spread, so Silverman's rule gives bandwidth 0; give a positive "
       "bandwidth"},
      {STATS_VexaKernelDensity_MP,
       {SfloatRTable({"1"}), none, yes, i(1), num("0"), i(0)},
       "Silverman's rule needs at least two data points; give a positive bandwidth"},
      {STATS_VexaKernelDensity_MP,
       {data, none, yes, i(6), num("1"), i(0)},
       "expected a kernel 1 to 5 (gaussian, epanechnikov, biweight, triangular, rectangular), "
       "received 6"},
      {STATS_VexaKernelDensity_MP,
       {data, none, yes, i(1), num("-1"), i(0)},
       "expected a positive bandwidth, or 0 for Silverman's rule, received -1."},
      {STATS_VexaKernelDensity_MP,
       {data, SfloatRTable({"1", "-1", "1"}), yes, i(1), num("1"), i(0)},
       "expected finite nonnegative weights, received -1."},
      {STATS_VexaKernelDensity_MP,
       {data, SfloatRTable({"0", "0", "0"}), yes, i(1), num("1"), i(0)},
       "expected weights with a positive sum, received "},
      {STATS_VexaKernelDensityBinned_MP,
       {data, none, yes, i(1), num("1"), i(2), i(2), i(64)},
       "expected finite grid ends lo < hi, received 2, 2"},
      {STATS_VexaKernelDensityBinned_MP,
       {data, none, yes, i(1), num("1"), i(0), i(5), i(1)},
       "expected a grid size from 2 to 1048576, received 1"},
      {STATS_VexaKernelDensityBinned_MP,
       {data, none, yes, i(1), num("1e6"), i(0), i(5), i(64)},
       "the bandwidth 1000000. is too wide for the grid: the kernel would span more than 2^20 "
       "grid steps"},
      {STATS_VexaKernelDensityRandomSample_MP,
       {i(-1), data, none, i(1), num("1")},
       "expected a nonnegative sample size, received -1"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    const std::string error = ErrorOf([&] { Call(row.entry, row.args); });
    EXPECT_EQ(error.rfind(row.message, 0), 0u) << error;
    EXPECT_EQ(VexaDigits(), 10);
  }
  // the caller's data are as they were
  EXPECT_EQ(Texts(Values(missing).data(), 3), "[1., U, 2.]");
}

}  // namespace
