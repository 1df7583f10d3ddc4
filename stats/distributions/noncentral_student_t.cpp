// The noncentral Student t distribution with nu degrees of freedom and noncentrality delta:
// the distribution function from the numerical library.
#include "distributions/distributions.h"

VexaFloat STATS_NonCentralStudentTProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu,
                                                 VexaFloat delta) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01gbc(x, nu, delta, VexaFloat(0.0), STATS_NONCENTRAL_ITERATIONS_MP, fail);
  });
}
