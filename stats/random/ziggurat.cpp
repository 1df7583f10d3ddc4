// The ziggurat tables and deviates of the normal and exponential generators (Marsaglia and
// Tsang, "The ziggurat method for generating random variables", J. Stat. Softw. 5, 2000).
// Next keeps the library's own variant: tables from short constants, the held uniform
// returned from layer 1, the negative side of the normal base strip returned uniform, signed
// exponential candidates. NextExact is the published algorithm on tables solved to close.
#include "random/ziggurat.h"

#include <cstdlib>

#include "frame/frame.h"
#include "random/random_stream.h"
#include "vexa/nag.h"

// Constructed in this order, destroyed in the reverse.
int STATS_ZigguratNormalGenerator_MP::gDigits = 0;
VexaFloat STATS_ZigguratNormalGenerator_MP::gD = 3.65415288;
VexaFloat STATS_ZigguratNormalGenerator_MP::gV = 0.00492868;
VexaFloat STATS_ZigguratNormalGenerator_MP::gM = 2147483648.0;
VexaFloat STATS_ZigguratNormalGenerator_MP::gH = -0.5;
int STATS_ZigguratNormalGenerator_MP::gK[256];
VexaFloat STATS_ZigguratNormalGenerator_MP::gF[256];
VexaFloat STATS_ZigguratNormalGenerator_MP::gW[256];
STATS_ZigguratExactTables_MP STATS_ZigguratNormalGenerator_MP::gExact;

int STATS_ZigguratExpGenerator_MP::gDigits = 0;
VexaFloat STATS_ZigguratExpGenerator_MP::gD = 7.69711747;
VexaFloat STATS_ZigguratExpGenerator_MP::gV = 0.003949659823;
VexaFloat STATS_ZigguratExpGenerator_MP::gM = 2147483648.0;
VexaFloat STATS_ZigguratExpGenerator_MP::gH = -0.5;
int STATS_ZigguratExpGenerator_MP::gK[256];
VexaFloat STATS_ZigguratExpGenerator_MP::gF[256];
VexaFloat STATS_ZigguratExpGenerator_MP::gW[256];
STATS_ZigguratExactTables_MP STATS_ZigguratExpGenerator_MP::gExact;

int STATS_ExactSamplingScope_MP::gScoped = -1;

namespace {

using Normal = STATS_ZigguratNormalGenerator_MP;
using Exponential = STATS_ZigguratExpGenerator_MP;
using Stream = STATS_VexaRandomStream_MP;

// |h| as a signed 32-bit value: the absolute value of -2^31 stays negative.
int32_t Abs32(int32_t h) {
  return h < 0 ? static_cast<int32_t>(0u - static_cast<uint32_t>(h)) : h;
}

// ---- The library's tables and deviates. ----

VexaFloat NormalDensity(const VexaFloat& x) {  // exp(-x^2/2)
  return exp(Normal::gH * x * x);
}

void BuildNormal() {
  VexaFloat x = Normal::gD, t = Normal::gD, v = Normal::gV, m = Normal::gM;
  VexaFloat q = v / NormalDensity(Normal::gD);
  Normal::gK[0] = STATS_DoubleToInteger_MP(floor((Normal::gD / q) * m));
  Normal::gK[1] = 0;
  Normal::gW[0] = q / m;
  Normal::gW[255] = Normal::gD / m;
  Normal::gF[255] = NormalDensity(Normal::gD);
  for (int i = 254; i >= 1; --i) {
    x = sqrt(VexaFloat(-2.0) * log(v / x + exp(-0.5 * x * x)));
    Normal::gK[i + 1] = STATS_DoubleToInteger_MP((x / t) * m);
    t = x;
    Normal::gF[i] = NormalDensity(x);
    Normal::gW[i] = x / m;
  }
  VexaFloat x1 = Normal::gW[1] * m;
  Normal::gF[0] = v / x1 + NormalDensity(x1);
}

void BuildExponential() {
  VexaFloat x = Exponential::gD, t = Exponential::gD, v = Exponential::gV, m = Exponential::gM;
  VexaFloat q = v / exp(-Exponential::gD);
  Exponential::gK[0] = STATS_DoubleToInteger_MP((Exponential::gD / q) * m);
  Exponential::gK[1] = 0;
  Exponential::gW[0] = q / m;
  Exponential::gW[255] = Exponential::gD / m;
  Exponential::gF[255] = exp(-Exponential::gD);
  for (int i = 254; i >= 1; --i) {
    x = -log(v / x + exp(-x));
    Exponential::gK[i + 1] = STATS_DoubleToInteger_MP((x / t) * m);
    t = x;
    Exponential::gF[i] = exp(-x);
    Exponential::gW[i] = x / m;
  }
  VexaFloat x1 = Exponential::gW[1] * m;
  Exponential::gF[0] = v / x1 + exp(-x1);
}

// Marsaglia's normal tail beyond r, on the side given by h.
VexaFloat NormalTail(const VexaFloat& r, int32_t h) {
  VexaFloat a, b;
  do {
    a = -log(Stream::NextDouble()) / r;
    b = -log(Stream::NextDouble());
  } while (2 * b < a * a);
  return h > 0 ? r + a : -r - a;
}

// ---- The published algorithm on closing tables. ----

// The shape of one ziggurat: f decreasing from f(0) = 1, its inverse, and the mass of the
// tail beyond r.
struct Shape {
  VexaFloat (*f)(const VexaFloat& x);
  VexaFloat (*inverse)(const VexaFloat& y);
  VexaFloat (*tail)(const VexaFloat& r);
  double scale;  // the integer scale of the candidates: 2^31 signed, 2^32 unsigned
};

VexaFloat GaussF(const VexaFloat& x) {
  return exp(-0.5 * x * x);
}
VexaFloat GaussInverse(const VexaFloat& y) {
  return sqrt(-2 * log(y));
}
VexaFloat GaussTail(const VexaFloat& r) {  // sqrt(2 pi) Q(r)
  NagError fail;
  return sqrt(2 * VexaFloatPi()) * VexaMP_g01eac(Nag_UpperTail, r, &fail);
}
VexaFloat ExpF(const VexaFloat& x) {
  return exp(-x);
}
VexaFloat ExpInverse(const VexaFloat& y) {
  return -log(y);
}

const Shape kGauss = {GaussF, GaussInverse, GaussTail, 2147483648.0};
const Shape kExp = {ExpF, ExpInverse, ExpF, 4294967296.0};

// The area of every layer when the tail starts at r: the base strip r f(r) plus the tail.
VexaFloat LayerArea(const Shape& s, const VexaFloat& r) {
  return r * s.f(r) + s.tail(r);
}

// How far the 256 layers of area v(r), stacked from r, miss the top f = 1: positive when r is
// too small (the layers overshoot), negative when too large.
VexaFloat Closure(const Shape& s, const VexaFloat& r) {
  VexaFloat v = LayerArea(s, r), x = r;
  for (int i = 255; i >= 2; --i) {
    VexaFloat y = v / x + s.f(x);
    if (y >= 1) return VexaFloat(i);  // past the top with layers to spare
    x = s.inverse(y);
  }
  return v / x + s.f(x) - 1;
}

// r by the secant method from the published constant, to a few digits beyond Digits.
VexaFloat SolveTailStart(const Shape& s, const VexaFloat& start) {
  const VexaFloat tolerance = pow(10.0, -VexaFloat(VexaDigits() - 2));
  VexaFloat r0 = start, r1 = start * (1 + VexaFloatFromString("1e-7"));
  VexaFloat g0 = Closure(s, r0), g1 = Closure(s, r1);
  for (int i = 0; i < 100 && g1 != g0; ++i) {
    VexaFloat r2 = r1 - g1 * (r1 - r0) / (g1 - g0);
    r0 = r1;
    g0 = g1;
    r1 = r2;
    g1 = Closure(s, r1);
    if (fabs(r1 - r0) <= tolerance * r1 || g1 == 0) break;
  }
  return r1;
}

// Solves r at Digits + 10 and stores the tables rounded to Digits: layer i >= 1 spans
// [0, x_i] between f(x_i) and f(x_{i-1}), the base strip has width q = v / f(r).
void BuildExact(STATS_ZigguratExactTables_MP& t, const Shape& s, double start) {
  const int digits = VexaDigits();
  VexaFloat x[256], q;
  {
    VexaDigitsScope working(digits + 10);
    t.r = SolveTailStart(s, start);
    t.v = LayerArea(s, t.r);
    q = t.v / s.f(t.r);
    x[255] = t.r;
    for (int i = 254; i >= 1; --i) x[i] = s.inverse(t.v / x[i + 1] + s.f(x[i + 1]));
  }
  const VexaFloat m = s.scale;
  t.w[0] = VexaFloatRound(q / m, digits);
  for (int i = 1; i < 256; ++i) {
    t.w[i] = VexaFloatRound(x[i] / m, digits);
    t.f[i] = VexaFloatRound(s.f(x[i]), digits);
  }
  // ceil(edge / width): an integer |h| (or h) times the stored width lies below the edge
  // exactly when it lies below this. FloatToInt saturates at the int range, so it converts
  // the value less 2^31.
  auto threshold = [&](const VexaFloat& edge, const VexaFloat& width) {
    VexaDigitsScope working(digits + 10);
    return static_cast<int64_t>(FloatToInt(ceil(edge / width - 2147483648.0))) + 2147483648LL;
  };
  t.k[0] = threshold(x[255], t.w[0]);
  t.k[1] = 0;
  for (int i = 2; i < 256; ++i) t.k[i] = threshold(x[i - 1], t.w[i]);
  t.f[0] = 1;
  t.r = VexaFloatRound(t.r, digits);
  t.v = VexaFloatRound(t.v, digits);
  t.digits = digits;
}

// A uniform on (0, 1], for logarithms.
VexaFloat PositiveUniform() {
  return 1 - Stream::NextDouble();
}

// Layer i >= 1: the candidate, accepted inside the next layer up or under f in the wedge.
bool AcceptInLayer(const STATS_ZigguratExactTables_MP& t, const Shape& s, int i, int64_t a,
                   const VexaFloat& x) {
  if (a < t.k[i]) return true;
  VexaFloat u = Stream::NextDouble();
  return t.f[i] + u * (t.f[i - 1] - t.f[i]) < s.f(x);
}

}  // namespace

void STATS_ZigguratNormalGenerator_MP::Reset() {
  int digits = STATS_GetVexaDigits_MP();
  if (digits <= gDigits) return;
  BuildNormal();
  gDigits = digits;
}

VexaFloat STATS_ZigguratNormalGenerator_MP::Next() {
  VexaFloat u;
  for (;;) {
    int32_t h = static_cast<int32_t>(Stream::NextInteger());
    int i = h & 255;
    if (i >= 2) {
      VexaFloat x = VexaFloat(h) * gW[i];
      if (Abs32(h) < gK[i]) return x;
      u = Stream::NextDouble();
      if (gF[i] + u * (gF[i - 1] - gF[i]) < NormalDensity(x)) return x;
    } else if (i == 1) {
      VexaFloat s = gF[1] + Stream::NextDouble() * (gF[0] - gF[1]);
      if (!(s <= 1.0)) continue;
      VexaFloat x = (gM * gW[1]) * Stream::NextDouble();
      if (s < NormalDensity(x)) return u;  // the held uniform, not x
    } else {
      // Signed test: every negative h returns its candidate in [-q, 0).
      if (h < gK[0]) return VexaFloat(h) * gW[0];
      return NormalTail(gD, h);
    }
  }
}

void STATS_ZigguratNormalGenerator_MP::ResetExact() {
  if (STATS_GetVexaDigits_MP() > gExact.digits) BuildExact(gExact, kGauss, 3.6541528853610088);
}

VexaFloat STATS_ZigguratNormalGenerator_MP::NextExact() {
  const STATS_ZigguratExactTables_MP& t = gExact;
  for (;;) {
    int32_t h = static_cast<int32_t>(Stream::NextInteger());
    int i = h & 255;
    int64_t a = std::llabs(static_cast<int64_t>(h));
    if (i == 0) {
      if (a < t.k[0]) return VexaFloat(h) * t.w[0];
      VexaFloat e, b;
      do {
        e = -log(PositiveUniform()) / t.r;
        b = -log(PositiveUniform());
      } while (2 * b < e * e);
      return h > 0 ? t.r + e : -t.r - e;
    }
    VexaFloat x = VexaFloat(h) * t.w[i];
    if (AcceptInLayer(t, kGauss, i, a, x)) return x;
  }
}

void STATS_ZigguratExpGenerator_MP::Reset() {
  int digits = STATS_GetVexaDigits_MP();
  if (digits <= gDigits) return;
  BuildExponential();
  gDigits = digits;
}

VexaFloat STATS_ZigguratExpGenerator_MP::Next() {
  VexaFloat u;
  for (;;) {
    int32_t h = static_cast<int32_t>(Stream::NextInteger());
    int i = h & 255;
    if (i >= 2) {
      VexaFloat x = VexaFloat(h) * gW[i];  // negative for negative h
      if (Abs32(h) < gK[i]) return x;
      u = Stream::NextDouble();
      if (gF[i] + u * (gF[i - 1] - gF[i]) < exp(-x)) return x;
    } else if (i == 1) {
      VexaFloat s = gF[1] + Stream::NextDouble() * (gF[0] - gF[1]);
      if (!(s <= 1.0)) continue;
      VexaFloat x = (gM * gW[1]) * Stream::NextDouble();
      if (s < exp(-x)) return u;  // the held uniform, not x
    } else {
      if (h < gK[0]) return VexaFloat(h) * gW[0];
      return gD - log(Stream::NextDouble());
    }
  }
}

void STATS_ZigguratExpGenerator_MP::ResetExact() {
  if (STATS_GetVexaDigits_MP() > gExact.digits) BuildExact(gExact, kExp, 7.69711747013104972);
}

VexaFloat STATS_ZigguratExpGenerator_MP::NextExact() {
  const STATS_ZigguratExactTables_MP& t = gExact;
  for (;;) {
    uint32_t h = Stream::NextInteger();
    int i = h & 255;
    if (i == 0) {
      if (h < t.k[0]) return VexaFloat(h) * t.w[0];
      return t.r - log(PositiveUniform());  // the tail is exponential again
    }
    VexaFloat x = VexaFloat(h) * t.w[i];
    if (AcceptInLayer(t, kExp, i, h, x)) return x;
  }
}

// ---- The switch. ----

STATS_ExactSamplingScope_MP::STATS_ExactSamplingScope_MP() : m_saved(gScoped) {
  gScoped = -2;
}

STATS_ExactSamplingScope_MP::~STATS_ExactSamplingScope_MP() {
  gScoped = m_saved;
}

bool STATS_ExactSamplingScope_MP::Read(VexaKernelVector kv) {
  ALGEB name = ToVexaName(kv, "_EnvStatisticsExactSampling", true);
  ALGEB value = VexaEval(kv, name);
  if (value == ToVexaBoolean(kv, 1)) return true;
  if (value == ToVexaBoolean(kv, 0) || value == name) return false;
  VexaRaiseError1(kv, "_EnvStatisticsExactSampling must be true or false, received: %1", value);
  return false;
}

bool STATS_ExactSamplingScope_MP::Exact(VexaKernelVector kv) {
  if (gScoped == -1) return Read(kv);
  if (gScoped == -2) gScoped = Read(kv) ? 1 : 0;
  return gScoped == 1;
}

VexaFloat STATS_StandardNormalVariate_MP(VexaKernelVector kv) {
  if (STATS_ExactSamplingScope_MP::Exact(kv)) {
    STATS_ZigguratNormalGenerator_MP::ResetExact();
    return STATS_ZigguratNormalGenerator_MP::NextExact();
  }
  STATS_ZigguratNormalGenerator_MP::Reset();
  return STATS_ZigguratNormalGenerator_MP::Next();
}

VexaFloat STATS_StandardExponentialVariate_MP(VexaKernelVector kv) {
  if (STATS_ExactSamplingScope_MP::Exact(kv)) {
    STATS_ZigguratExpGenerator_MP::ResetExact();
    return STATS_ZigguratExpGenerator_MP::NextExact();
  }
  STATS_ZigguratExpGenerator_MP::Reset();
  return STATS_ZigguratExpGenerator_MP::Next();
}
