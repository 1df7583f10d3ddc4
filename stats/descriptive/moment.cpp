// Raw moments about an origin, expected values of a function over the sample and mean
// absolute deviations about a centre, simple and weighted: sums in data order divided by the
// count or by the total weight.
#include "descriptive/descriptive.h"
#include "vexa/accumulator.h"

namespace {

// d^k for the order k (also given as a float). The first two orders are one exact or one
// correctly rounded operation, the same value pow gives, without its cost.
VexaFloat Power(const VexaFloat& d, int k, const VexaFloat& order) {
  if (k == 1) return d;
  if (k == 2) return d * d;
  return pow(d, order);
}

}  // namespace

void STATS_SimpleMoment_MP(VexaFloat* out, VexaFloat* data, int n, int* orders, int m,
                           VexaFloat origin) {
  const VexaFloat count(static_cast<double>(n));
  for (int j = 0; j < m; ++j) {
    const VexaFloat order(static_cast<double>(orders[j]));
    VexaFloatAccumulator sum;
    for (int i = 0; i < n; ++i) sum += Power(data[i] - origin, orders[j], order);
    out[j] = sum.Value() / count;
  }
}

void STATS_WeightedMoment_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights, int n,
                             int* orders, int m, VexaFloat origin) {
  VexaFloatAccumulator total;
  for (int j = 0; j < m; ++j) {
    const VexaFloat order(static_cast<double>(orders[j]));
    VexaFloatAccumulator sum;
    for (int i = 0; i < n; ++i) {
      if (j == 0) total += weights[i];
      sum += weights[i] * Power(data[i] - origin, orders[j], order);
    }
    out[j] = sum.Value() / total.Value();
  }
}

void STATS_Moment_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights, int n, int* orders, int m,
                     VexaFloat origin) {
  if (weights != nullptr)
    STATS_WeightedMoment_MP(out, data, weights, n, orders, m, origin);
  else
    STATS_SimpleMoment_MP(out, data, n, orders, m, origin);
}

VexaFloat STATS_SimpleExpectedValue_MP(VexaFloat (*f)(VexaFloat), VexaFloat* data, int n) {
  VexaFloat sum;
  for (int i = 0; i < n; ++i) sum += f(data[i]);
  return sum / VexaFloat(static_cast<double>(n));
}

VexaFloat STATS_WeightedExpectedValue_MP(VexaFloat (*f)(VexaFloat), VexaFloat* data,
                                         VexaFloat* weights, int n) {
  VexaFloat sum, total;
  for (int i = 0; i < n; ++i) {
    sum += weights[i] * f(data[i]);
    total += weights[i];
  }
  return sum / total;
}

VexaFloat STATS_ExpectedValue_MP(VexaFloat (*f)(VexaFloat), VexaFloat* data, VexaFloat* weights,
                                 int n) {
  return weights != nullptr ? STATS_WeightedExpectedValue_MP(f, data, weights, n)
                            : STATS_SimpleExpectedValue_MP(f, data, n);
}

VexaFloat STATS_SimpleAbsoluteDeviation_MP(VexaFloat* data, int n, VexaFloat centre) {
  VexaFloatAccumulator sum;
  for (int i = 0; i < n; ++i) sum += fabs(data[i] - centre);
  return sum.Value() / VexaFloat(static_cast<double>(n));
}

VexaFloat STATS_WeightedAbsoluteDeviation_MP(VexaFloat* data, VexaFloat* weights, int n,
                                             VexaFloat centre) {
  VexaFloatAccumulator sum, total;
  for (int i = 0; i < n; ++i) {
    sum += weights[i] * fabs(data[i] - centre);
    total += weights[i];
  }
  return sum.Value() / total.Value();
}

VexaFloat STATS_AbsoluteDeviation_MP(VexaFloat* data, VexaFloat* weights, int n, VexaFloat centre) {
  return weights != nullptr ? STATS_WeightedAbsoluteDeviation_MP(data, weights, n, centre)
                            : STATS_SimpleAbsoluteDeviation_MP(data, n, centre);
}
