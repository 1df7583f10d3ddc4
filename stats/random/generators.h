// Random variate generators driven by the random sample entry point: the abstract generator,
// the table-driven default generator that reaches the distributions' variate workers by a
// type code, and the envelope generator of kind 1.
#ifndef STATS_RANDOM_GENERATORS_H
#define STATS_RANDOM_GENERATORS_H

#include "vexa/external.h"
#include "vexa/float.h"

// Made with new, initialised once, drawn from, destroyed through a base pointer.
class STATS_RandomVariateGenerator_MP {
 public:
  explicit STATS_RandomVariateGenerator_MP(VexaKernelVector) {}
  virtual ~STATS_RandomVariateGenerator_MP() {}
  // Non-zero on success; 0 when the description is not usable.
  virtual int initialize(VexaKernelVector kv, ALGEB description) = 0;
  virtual VexaFloat next(VexaKernelVector kv) = 0;
};

// Description [type, [p1, ..., pk]] with k <= 5: the variate worker of type code 1 to 33
// (alphabetical by distribution; 7 and 32 unassigned) applied to the parameters, the ones
// not given left at 0.
class STATS_DefaultGenerator_MP : public STATS_RandomVariateGenerator_MP {
 public:
  using VariateFunction = VexaFloat (*)(VexaKernelVector kv, const VexaFloat* parameters);
  static constexpr int kMaxParameters = 5;

  explicit STATS_DefaultGenerator_MP(VexaKernelVector kv);
  ~STATS_DefaultGenerator_MP() override;
  int initialize(VexaKernelVector kv, ALGEB description) override;
  VexaFloat next(VexaKernelVector kv) override;

 private:
  VariateFunction m_variate;
  int m_count;
  VexaFloat* m_parameters;
};

// The adaptive rejection envelope generator. Its sampler is not part of this build, so every
// description fails initialize (returns 0).
class STATS_EnvelopeGenerator_MP : public STATS_RandomVariateGenerator_MP {
 public:
  explicit STATS_EnvelopeGenerator_MP(VexaKernelVector kv) : STATS_RandomVariateGenerator_MP(kv) {}
  int initialize(VexaKernelVector kv, ALGEB description) override;
  VexaFloat next(VexaKernelVector kv) override;
};

extern "C" {
// VexaRandomSample(A, P, G, flag): fills the rtable A (rectangular, sfloat) in storage order,
// each element with P applied to one draw of every generator described in the list G (in
// order), or with a draw of the first generator when P is NULL. Returns A.
ALGEB STATS_VexaRandomSample_MP(VexaKernelVector kv, ALGEB args);
}

#endif
