// The generator base, the table-driven default generator and the envelope generator's
// placeholder.
#include "random/generators.h"

#include "distributions/distributions.h"
#include "frame/frame.h"

// The noncentral beta and t variates live with the noncentral distributions; until they are
// in the build their codes fail initialize like the unassigned ones.
VexaFloat STATS_NonCentralBetaRandomVariate_MP(VexaKernelVector, const VexaFloat*)
    __attribute__((weak));
VexaFloat STATS_NonCentralStudentTRandomVariate_MP(VexaKernelVector, const VexaFloat*)
    __attribute__((weak));

namespace {

using Variate = STATS_DefaultGenerator_MP::VariateFunction;
using Arrayed = VexaFloat (*)(VexaKernelVector, const VexaFloat*);

// The array-parameter overload of a variate worker.
constexpr Arrayed A(Arrayed f) {
  return f;
}

// Indexed by type code; null: no variate (0, 7, 32).
const Variate kVariates[34] = {
    nullptr,
    A(STATS_BernoulliRandomVariate_MP),
    A(STATS_BetaRandomVariate_MP),
    A(STATS_BinomialRandomVariate_MP),
    A(STATS_CauchyRandomVariate_MP),
    A(STATS_ChiSquareRandomVariate_MP),
    A(STATS_DiscreteUniformRandomVariate_MP),
    nullptr,
    A(STATS_ErrorRandomVariate_MP),
    A(STATS_ExponentialRandomVariate_MP),
    A(STATS_FRatioRandomVariate_MP),
    A(STATS_GammaRandomVariate_MP),
    A(STATS_GeometricRandomVariate_MP),
    A(STATS_GumbelRandomVariate_MP),
    A(STATS_HypergeometricRandomVariate_MP),
    A(STATS_InverseGaussianRandomVariate_MP),
    A(STATS_LaplaceRandomVariate_MP),
    A(STATS_LogisticRandomVariate_MP),
    A(STATS_LogNormalRandomVariate_MP),
    A(STATS_MaxwellRandomVariate_MP),
    A(STATS_MoyalRandomVariate_MP),
    A(STATS_NegativeBinomialRandomVariate_MP),
    STATS_NonCentralBetaRandomVariate_MP,
    STATS_NonCentralStudentTRandomVariate_MP,
    A(STATS_NormalRandomVariate_MP),
    A(STATS_ParetoRandomVariate_MP),
    A(STATS_PoissonRandomVariate_MP),
    A(STATS_PowerRandomVariate_MP),
    A(STATS_RayleighRandomVariate_MP),
    A(STATS_StudentTRandomVariate_MP),
    A(STATS_TriangularRandomVariate_MP),
    A(STATS_UniformRandomVariate_MP),
    nullptr,
    A(STATS_WeibullRandomVariate_MP),
};

}  // namespace

int STATS_RandomVariateGenerator_MP::initialize(VexaKernelVector, ALGEB) {
  return 1;
}

VexaFloat STATS_RandomVariateGenerator_MP::next(VexaKernelVector) {
  return VexaFloat(0.0);
}

STATS_DefaultGenerator_MP::STATS_DefaultGenerator_MP(VexaKernelVector kv)
    : STATS_RandomVariateGenerator_MP(kv), m_variate(nullptr), m_count(0), m_parameters(nullptr) {}

STATS_DefaultGenerator_MP::~STATS_DefaultGenerator_MP() {
  delete[] m_parameters;
}

int STATS_DefaultGenerator_MP::initialize(VexaKernelVector kv, ALGEB d) {
  if (!IsVexaList(kv, d)) VexaRaiseError1(kv, "expected: list, received: %1", d);
  if (VexaListLength(kv, d) != 2) VexaRaiseError1(kv, "expected: list of size 2, received: %1", d);
  ALGEB type = VexaListSelect(kv, d, 1);
  if (!IsVexaInteger8(kv, type))
    VexaRaiseError1(kv, "invalid random variate type, expected: integer, received: %1", type);
  ALGEB list = VexaListSelect(kv, d, 2);
  if (!IsVexaList(kv, list))
    VexaRaiseError1(kv, "expected: list of coefficients, received: %1", list);
  m_count = static_cast<int>(VexaListLength(kv, list));
  if (m_count > kMaxParameters) VexaRaiseError1(kv, "invalid number of parameters: %1", list);
  delete[] m_parameters;
  m_parameters = new VexaFloat[kMaxParameters];

  // The code goes through the host's boolean conversion, which gives an integer its value.
  const unsigned code = static_cast<unsigned>(VexaToM_BOOL(kv, type));
  if (code > 33 || kVariates[code] == nullptr) return 0;
  m_variate = kVariates[code];
  for (int i = 0; i < m_count; ++i)
    m_parameters[i] = STATS_VexaUtils_MP::VexaDAGToDouble(VexaListSelect(kv, list, i + 1));
  return 1;
}

VexaFloat STATS_DefaultGenerator_MP::next(VexaKernelVector kv) {
  return m_variate(kv, m_parameters);
}

int STATS_EnvelopeGenerator_MP::initialize(VexaKernelVector, ALGEB) {
  return 0;
}

VexaFloat STATS_EnvelopeGenerator_MP::next(VexaKernelVector kv) {
  return STATS_RandomVariateGenerator_MP::next(kv);
}
