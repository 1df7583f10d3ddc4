// Moving mean and moving median against a brute-force window loop in doubles: offsets,
// weights, mean types, dropped missing values and the running mode; and the frame's checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "descriptive/support.h"
#include "stats/smoothing/smoothing.h"

namespace {

const std::vector<std::string> kData = {"3.1", "4.1", "5.9", "2.6", "U",
                                        "5.3", "5.8", "9.7", "9.3", "2.3"};

using Statistic = std::function<double(const double* x, const std::vector<double>& w, int n)>;

double Mean(const double* x, const std::vector<double>& w, int n, int type) {
  double s = 0, total = 0;
  for (int i = 0; i < n; ++i) {
    const double wi = w.empty() ? 1.0 : w[i];
    const double v = type == 1   ? std::log(x[i])
                     : type == 2 ? 1 / x[i]
                     : type == 3 ? x[i] * x[i]
                                 : x[i];
    s += wi * v;
    total += wi;
  }
  s /= total;
  return type == 1 ? std::exp(s) : type == 2 ? 1 / s : type == 3 ? std::sqrt(s) : s;
}

// Unweighted: the middle value or the mean of the two. Weighted, the library's method-1
// weighted quantile at 1/2: with k one before the first value whose running weight exceeds
// half the total (at least 0), the value after k.
double Median(const double* x, const std::vector<double>& w, int n) {
  std::vector<std::pair<double, double>> v;
  for (int i = 0; i < n; ++i) v.push_back({x[i], w.empty() ? 1.0 : w[i]});
  std::sort(v.begin(), v.end());
  if (w.empty()) return n % 2 ? v[n / 2].first : (v[n / 2 - 1].first + v[n / 2].first) / 2;
  double total = 0, running = 0;
  for (const auto& p : v) total += p.second;
  int k = n - 1;
  for (int i = 0; i < n; ++i)
    if ((running += v[i].second) > total / 2) {
      k = i > 0 ? i - 1 : 0;
      break;
    }
  return v[std::min(k + 1, n - 1)].first;
}

// The window loop itself: o values pass through, then one statistic per window; in the
// running mode each result is written back before the next window.
std::vector<double> Brute(std::vector<double> x, int w, int o, bool running,
                          const std::vector<double>& weights, const Statistic& stat) {
  const int n = static_cast<int>(x.size()), L = n - w + o + 1;
  x.resize(std::max(n, L));
  std::vector<double> out(x.begin(), x.begin() + o);
  for (int t = 0; t + o < L; ++t) {
    const double r = stat(&x[t], weights, w);
    if (running) x[o + t] = r;
    out.push_back(r);
  }
  return out;
}

std::vector<double> Doubles(const std::vector<std::string>& texts, bool dropMissing) {
  std::vector<double> v;
  for (const auto& t : texts)
    if (t != "U" || !dropMissing) v.push_back(t == "U" ? NAN : std::stod(t));
  return v;
}

ALGEB Integer(int v) {
  return vexa::NewInteger(v);
}

TEST(MovingWindow, MeansAndMediansMatchBruteForce) {
  const std::vector<std::string> clean(kData.begin(), kData.begin() + 4);  // no missing value
  struct Case {
    bool median;
    std::vector<std::string> data;
    int w, o;
    std::vector<std::string> weights;
    bool ignore;
    int type;  // mean type
    bool running;
  } cases[] = {
      {false, kData, 3, 0, {}, true, 0, false},
      {false, kData, 3, 2, {}, true, 0, false},
      {false, kData, 3, 2, {}, true, 0, true},   // recursive: later windows see the results
      {false, kData, 3, 0, {}, true, 0, true},   // the same as without the running flag
      {false, kData, 1, 3, {}, true, 0, false},  // the data back, after 3 passed through
      {false, kData, 9, 0, {}, true, 0, false},  // all that is left: one value
      {false, kData, 2, 5, {}, true, 0, true},   // results beyond the data's own length
      {false, kData, 3, 1, {"1", "2", "0.5"}, true, 0, false},
      {false, kData, 3, 1, {"1", "2", "0.5"}, true, 0, true},
      {false, kData, 4, 0, {}, true, 1, false},
      {false, kData, 4, 0, {"3", "1", "1", "2"}, true, 2, false},
      {false, kData, 2, 1, {}, true, 3, true},
      {false, clean, 2, 1, {}, false, 0, false},  // in place
      {true, kData, 4, 0, {}, true, 0, false},
      {true, kData, 3, 2, {}, true, 0, true},
      {true, kData, 3, 0, {"1", "2", "4"}, true, 0, false},
      {true, kData, 3, 1, {"1", "2", "4"}, true, 0, true},
      {true, clean, 1, 2, {}, false, 0, false},
  };
  for (const auto& c : cases) {
    const std::string what = (c.median ? "median w=" : "mean w=") + std::to_string(c.w) +
                             " o=" + std::to_string(c.o) + (c.running ? " running" : "") +
                             " type=" + std::to_string(c.type);
    ALGEB A = SfloatRTable(c.data);
    const int n = static_cast<int>(c.data.size());
    const std::string before = Texts(static_cast<VexaFloat*>(RTableDataBlock(Kv(), A)), n);
    ALGEB W = SfloatRTable(c.weights);
    ALGEB out =
        c.median ? Call(STATS_VexaMovingMedian_MP,
                        {A, Integer(c.w), Integer(c.o), W, Bool(c.ignore), Bool(c.running)})
                 : Call(STATS_VexaMovingMean_MP, {A, Integer(c.w), Integer(c.o), W, Bool(c.ignore),
                                                  Integer(c.type), Bool(c.running)});
    const int type = c.type;
    const Statistic stat = c.median ? Statistic(Median)
                                    : [type](const double* x, const std::vector<double>& w, int n) {
                                        return Mean(x, w, n, type);
                                      };
    const std::vector<double> expected =
        Brute(Doubles(c.data, c.ignore), c.w, c.o, c.running, Doubles(c.weights, false), stat);
    RTableSettings s;
    RTableGetSettings(Kv(), &s, out);
    EXPECT_EQ(s.element_type, ToVexaName(Kv(), "sfloat", 1));
    ASSERT_EQ(RTableNumElements(Kv(), out), static_cast<M_INT>(expected.size())) << what;
    const auto* got = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), out));
    for (size_t i = 0; i < expected.size(); ++i)
      EXPECT_NEAR(std::stod(Text(got[i])), expected[i], 1e-8 * std::fabs(expected[i]))
          << what << " at " << i;
    EXPECT_EQ(Texts(static_cast<VexaFloat*>(RTableDataBlock(Kv(), A)), n), before) << what;
  }
}

TEST(MovingWindow, ChecksAndTheirMessages) {
  ALGEB A = SfloatRTable(kData);
  ALGEB sparse = SfloatRTable({"1", "U", "U", "4"});
  auto mean = [&](ALGEB data, int w, int o, ALGEB W, bool ignore) {
    Call(STATS_VexaMovingMean_MP,
         {data, Integer(w), Integer(o), W, Bool(ignore), Integer(0), Bool(false)});
  };
  auto median = [&](ALGEB data, int w, int o, ALGEB W, bool ignore) {
    Call(STATS_VexaMovingMedian_MP, {data, Integer(w), Integer(o), W, Bool(ignore), Bool(false)});
  };
  const std::string window = "invalid size of the moving window, expected: integer between 1 and ";
  const std::string offset =
      "invalid offset for the moving window, expected: integer between 0 and ";
  const std::string weights =
      "the number of elements in the weights array must be equal to the size of the moving window";
  const struct {
    std::function<void()> call;
    std::string message;
  } failures[] = {
      {[&] {
         Call(STATS_VexaMovingMean_MP, {A, Integer(2)});
       },
       "VexaMovingMean expects 7 arguments, received: "},
      {[&] { mean(A, 0, 0, NoWeights(), true); }, window + "10, received: 0"},
      {[&] { mean(A, 2, 10, NoWeights(), true); }, offset + "9, received: 10"},
      {[&] { median(A, 2, -1, NoWeights(), false); }, offset + "9, received: -1"},
      {[&] {
         mean(A, 3, 0, SfloatRTable({"1", "1"}), false);
       },
       weights},
      {[&] {
         median(A, 3, 0, SfloatRTable({"1", "U", "1", "1"}), false);
       },
       weights},
      // dropping leaves fewer values than the window, or than the offset
      {[&] { mean(sparse, 3, 0, NoWeights(), true); }, window + "2, received: 3"},
      {[&] { median(sparse, 1, 3, NoWeights(), true); }, offset + "1, received: 3"},
  };
  for (const auto& f : failures) EXPECT_EQ(ErrorOf(f.call).rfind(f.message, 0), 0u) << f.message;
  // the same checks pass at their edges: o = n - 1, and weights whose missing one is dropped
  mean(A, 1, 9, NoWeights(), false);
  median(A, 3, 0, SfloatRTable({"1", "U", "1", "1"}), true);
}

}  // namespace
