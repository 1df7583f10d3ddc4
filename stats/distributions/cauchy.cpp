// The Cauchy distribution with location a and scale b: P(X <= x) = 1/2 + arctan((x-a)/b) / pi;
// variates by inversion. Pi is the host's, arctan and tan the host's functions.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"

namespace {

VexaFloat HostPi(VexaKernelVector kv) {
  return STATS_VexaUtils_MP::VexaDAGToDouble(ToVexaName(kv, "Pi", 1));
}

}  // namespace

VexaFloat STATS_CauchyProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b) {
  return 0.5 + (1 / HostPi(kv)) * VexaEvalf1("arctan", (x - a) / b);
}

VexaFloat STATS_CauchyDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b) {
  return a + b * VexaEvalf1("tan", HostPi(kv) * (p - 0.5));
}

VexaFloat STATS_CauchyRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_CauchyDeviate_MP(kv, u, a, b);
}

VexaFloat STATS_CauchyRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_CauchyRandomVariate_MP(kv, parameters[0], parameters[1]);
}
