// Adaptive rejection sampling (Gilks and Wild 1992, Applied Statistics 41, 337-348) from a
// log-concave density known through its log h and the derivative dh. The tangents of h at the
// hull abscissae bound h from above (the envelope, exponential on each piece); the chords
// between them bound it from below (the squeeze). A candidate drawn from the envelope is
// accepted by the squeeze without evaluating h, otherwise by h itself, and each point where h
// was evaluated joins the hull, so that the envelope closes in on the density.
#include <string>
#include <vector>

#include "frame/frame.h"
#include "random/generators.h"
#include "random/random_stream.h"

namespace {

using Floats = std::vector<VexaFloat>;

constexpr size_t kMaxHull = 64;
constexpr int kGuardDigits = 10;
constexpr int kMaxTrials = 10000;
constexpr const char* kNotLogConcave = "the density is not log-concave";

// How many more digits exp(t) - 1 or log(1 + t) need to lose none to cancellation; more than
// Digits means t itself is the answer.
int LeadingZeros(const VexaFloat& t) {
  if (t == 0) return VexaDigits() + 1;
  const VexaFloat zeros = -log(fabs(t)) / log(VexaFloat(10));
  if (!(zeros > 0)) return 0;
  return zeros > VexaDigits() ? VexaDigits() + 1 : FloatToInt(ceil(zeros));
}

VexaFloat Expm1(const VexaFloat& t) {
  const int digits = VexaDigits(), extra = LeadingZeros(t);
  if (extra > digits) return t;
  VexaFloat r;
  {
    VexaDigitsScope wide(digits + extra);
    r = exp(t) - 1;
  }
  return VexaFloatRound(r, digits);
}

VexaFloat Log1p(const VexaFloat& t) {
  const int digits = VexaDigits(), extra = LeadingZeros(t);
  if (extra > digits) return t;
  VexaFloat r;
  {
    VexaDigitsScope wide(digits + extra);
    r = log(1 + t);
  }
  return VexaFloatRound(r, digits);
}

bool IsMinusInfinity(const VexaFloat& x) {
  return IsVexaFloatNegativeInfinity(x);
}

}  // namespace

// The hull: abscissae in increasing order with h and dh there; the envelope's piece ends
// z[0] = a, z[j] the meeting point of the tangents j - 1 and j, z[k] = b; and the pieces'
// cumulative masses, relative to exp(top) with top the envelope's highest log.
struct STATS_EnvelopeGenerator_MP::Hull {
  VexaKernelVector kv;
  STATS_VexaGuardedProcAdapter_MP h, dh;
  VexaFloat a, b;
  int digits;  // of the caller; the work runs with kGuardDigits more
  long evaluations = 0;
  Floats x, hx, dhx, z, cumulative;
  VexaFloat top;

  Hull(VexaKernelVector k, ALGEB hProc, ALGEB dhProc) : kv(k), h(k, hProc), dh(k, dhProc) {}

  size_t Size() const { return x.size(); }
  // Rounding noise of a value v at the working precision, with a wide margin.
  VexaFloat Tolerance(const VexaFloat& v) const {
    return pow(VexaFloat(10), VexaFloat(-digits - kGuardDigits / 2)) * (1 + fabs(v));
  }
  VexaFloat Tangent(size_t j, const VexaFloat& at) const { return hx[j] + (at - x[j]) * dhx[j]; }

  void Evaluate(const VexaFloat& at, VexaFloat* hv, VexaFloat* dv) {
    *hv = h.Call(at);
    *dv = dh.Call(at);
    ++evaluations;
  }

  // h between the tangents and above the chords, derivatives nonincreasing.
  void CheckConcave() const {
    for (size_t j = 0; j + 1 < Size(); ++j) {
      if (dhx[j + 1] > dhx[j] + Tolerance(dhx[j]) ||
          hx[j + 1] > Tangent(j, x[j + 1]) + Tolerance(hx[j + 1]) ||
          hx[j] > Tangent(j + 1, x[j]) + Tolerance(hx[j]))
        VexaRaiseError(kv, kNotLogConcave);
    }
  }

  VexaFloat Meeting(size_t j) const {
    const VexaFloat slopes = dhx[j] - dhx[j + 1];
    VexaFloat m = (x[j] + x[j + 1]) / 2;
    if (slopes > Tolerance(dhx[j]))
      m = (hx[j + 1] - hx[j] - x[j + 1] * dhx[j + 1] + x[j] * dhx[j]) / slopes;
    if (m < x[j]) return x[j];
    return m > x[j + 1] ? x[j + 1] : m;
  }

  // The integral of exp(tangent j - top) over the piece j.
  VexaFloat Mass(size_t j) const {
    const VexaFloat& s = dhx[j];
    const size_t last = Size() - 1;
    if (j == 0 && IsMinusInfinity(a)) return exp(Tangent(0, z[1]) - top) / s;
    if (j == last && IsVexaFloatInfinity(b)) return exp(Tangent(last, z[last]) - top) / -s;
    // from the piece's higher end, so that nothing overflows
    const VexaFloat width = z[j + 1] - z[j];
    if (s == 0) return exp(Tangent(j, z[j]) - top) * width;
    if (s > 0) return -exp(Tangent(j, z[j + 1]) - top) * Expm1(-s * width) / s;
    return exp(Tangent(j, z[j]) - top) * Expm1(s * width) / s;
  }

  void Build() {
    const size_t k = Size();
    z.assign(k + 1, a);
    z[k] = b;
    for (size_t j = 1; j < k; ++j) z[j] = Meeting(j - 1);
    // the envelope's highest point is at a meeting point or a finite end
    top = Tangent(0, z[1]);
    for (size_t j = 0; j < k; ++j) {
      for (const VexaFloat& end : {z[j], z[j + 1]}) {
        if (!STATS_IsFinite_MP(end)) continue;
        const VexaFloat t = Tangent(j, end);
        if (t > top) top = t;
      }
    }
    cumulative.assign(k, VexaFloat());
    VexaFloat sum;
    for (size_t j = 0; j < k; ++j) cumulative[j] = sum += Mass(j);
  }

  // A uniform on (0, 1].
  static VexaFloat Positive() {
    for (;;) {
      const VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
      if (u > 0) return u;
    }
  }

  // A draw from the envelope, and the piece it fell in.
  VexaFloat Candidate(size_t* piece) const {
    const size_t last = Size() - 1;
    const VexaFloat target = STATS_VexaRandomStream_MP::NextDouble() * cumulative[last];
    size_t j = 0;
    while (j < last && !(cumulative[j] > target)) ++j;
    *piece = j;
    const VexaFloat& s = dhx[j];
    const VexaFloat v = Positive();
    if (j == 0 && IsMinusInfinity(a)) return z[1] + log(v) / s;
    if (j == last && IsVexaFloatInfinity(b)) return z[last] + log(v) / s;
    // inverted from the piece's higher end
    const VexaFloat width = z[j + 1] - z[j];
    VexaFloat c = z[j] + v * width;
    if (s > 0) c = z[j + 1] + Log1p(v * Expm1(-s * width)) / s;
    if (s < 0) c = z[j] + Log1p(v * Expm1(s * width)) / s;
    if (c < z[j]) c = z[j];
    return c > z[j + 1] ? z[j + 1] : c;
  }

  // The squeeze at c: the chord over the hull interval holding c (c within the hull), else
  // -infinity. *at receives the index of the first abscissa beyond c.
  VexaFloat Squeeze(const VexaFloat& c, size_t* at) const {
    size_t i = 0;
    while (i < Size() && x[i] < c) ++i;
    *at = i;
    if (i < Size() && x[i] == c) return hx[i];
    if (i == 0 || i == Size()) return VexaFloatInfinity(-1);
    return hx[i - 1] + (c - x[i - 1]) * (hx[i] - hx[i - 1]) / (x[i] - x[i - 1]);
  }

  void Insert(size_t at, const VexaFloat& c, const VexaFloat& hv, const VexaFloat& dv) {
    if (Size() >= kMaxHull || (at < Size() && x[at] == c)) return;
    x.insert(x.begin() + at, c);
    hx.insert(hx.begin() + at, hv);
    dhx.insert(dhx.begin() + at, dv);
    CheckConcave();
    Build();
  }
};

STATS_EnvelopeGenerator_MP::STATS_EnvelopeGenerator_MP(VexaKernelVector kv)
    : STATS_RandomVariateGenerator_MP(kv), m_hull(nullptr) {}

STATS_EnvelopeGenerator_MP::~STATS_EnvelopeGenerator_MP() {
  delete m_hull;
}

long STATS_EnvelopeGenerator_MP::Evaluations() const {
  return m_hull ? m_hull->evaluations : 0;
}

int STATS_EnvelopeGenerator_MP::initialize(VexaKernelVector kv, ALGEB d) {
  if (!IsVexaList(kv, d)) VexaRaiseError1(kv, "expected: list, received: %1", d);
  if (VexaListLength(kv, d) != 5) VexaRaiseError1(kv, "expected: list of size 5, received: %1", d);
  ALGEB hProc = VexaListSelect(kv, d, 1), dhProc = VexaListSelect(kv, d, 2);
  if (!IsVexaProcedure(kv, hProc))
    VexaRaiseError1(kv, "expected: procedure (log-density), received: %1", hProc);
  if (!IsVexaProcedure(kv, dhProc))
    VexaRaiseError1(kv, "expected: procedure (derivative of the log-density), received: %1",
                    dhProc);
  const VexaFloat a = STATS_VexaUtils_MP::VexaDAGToDouble(VexaListSelect(kv, d, 3));
  const VexaFloat b = STATS_VexaUtils_MP::VexaDAGToDouble(VexaListSelect(kv, d, 4));
  if (!(a < b) || IsVexaFloatInfinity(a) || IsMinusInfinity(b))
    VexaRaiseError2(kv, "expected: support a < b, received: %1, %2", VexaListSelect(kv, d, 3),
                    VexaListSelect(kv, d, 4));
  ALGEB list = VexaListSelect(kv, d, 5);
  if (!IsVexaList(kv, list))
    VexaRaiseError1(kv, "expected: list of starting abscissae, received: %1", list);
  const M_INT k = VexaListLength(kv, list);
  if (k < 2) VexaRaiseError1(kv, "expected: at least two starting abscissae, received: %1", list);
  Floats x;
  for (M_INT i = 1; i <= k; ++i) {
    x.push_back(STATS_VexaUtils_MP::VexaDAGToDouble(VexaListSelect(kv, list, i)));
    if (!STATS_IsFinite_MP(x.back()) || x.back() < a || x.back() > b ||
        (i > 1 && !(x[i - 2] < x.back())))
      VexaRaiseError1(
          kv, "expected: increasing starting abscissae inside the support, received: %1", list);
  }

  delete m_hull;
  m_hull = nullptr;
  auto* hull = new Hull(kv, hProc, dhProc);
  hull->a = a;
  hull->b = b;
  hull->digits = VexaDigits();
  hull->x = x;
  VexaDigitsScope guard(hull->digits + kGuardDigits);
  hull->hx.resize(k);
  hull->dhx.resize(k);
  try {
    for (M_INT i = 0; i < k; ++i) hull->Evaluate(x[i], &hull->hx[i], &hull->dhx[i]);
    // the end pieces of the envelope must have finite mass
    if ((IsMinusInfinity(a) && !(hull->dhx.front() > 0)) ||
        (IsVexaFloatInfinity(b) && !(hull->dhx.back() < 0))) {
      delete hull;
      return 0;
    }
    hull->CheckConcave();
    hull->Build();
  } catch (...) {
    delete hull;
    throw;
  }
  m_hull = hull;
  return 1;
}

VexaFloat STATS_EnvelopeGenerator_MP::next(VexaKernelVector kv) {
  if (m_hull == nullptr) return STATS_RandomVariateGenerator_MP::next(kv);
  Hull& hull = *m_hull;
  VexaFloat c;
  {
    VexaDigitsScope guard(hull.digits + kGuardDigits);
    for (int trial = 0;; ++trial) {
      if (trial == kMaxTrials)
        VexaRaiseError(kv,
                       "the envelope sampler made no draw in 10000 trials; start the hull "
                       "nearer the mode");
      size_t piece, at;
      c = hull.Candidate(&piece);
      const VexaFloat w = STATS_VexaRandomStream_MP::NextDouble();
      const VexaFloat upper = hull.Tangent(piece, c), lower = hull.Squeeze(c, &at);
      if (!IsMinusInfinity(lower) && w <= exp(lower - upper)) break;
      VexaFloat hv, dv;
      hull.Evaluate(c, &hv, &dv);
      if (hv > upper + hull.Tolerance(upper) ||
          (!IsMinusInfinity(lower) && hv < lower - hull.Tolerance(lower)))
        VexaRaiseError(kv, kNotLogConcave);
      hull.Insert(at, c, hv, dv);
      if (w <= exp(hv - upper)) break;
    }
  }
  return VexaFloatRound(c, hull.digits);
}
