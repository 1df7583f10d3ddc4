// VexaRandomSample: an array filled from generator descriptions, with draws interleaved one
// per generator for each element when a procedure combines them.
#include <memory>
#include <vector>

#include "frame/frame.h"
#include "random/generators.h"

namespace {

using Generator = STATS_RandomVariateGenerator_MP;

// The generators of one call, destroyed however the call ends.
class Generators {
 public:
  explicit Generators(size_t n) { m_items.reserve(n); }
  void Add(Generator* g) { m_items.emplace_back(g); }
  void Clear() { m_items.clear(); }
  Generator& operator[](size_t i) const { return *m_items[i]; }

 private:
  std::vector<std::unique_ptr<Generator>> m_items;
};

void CheckOutputArray(VexaKernelVector kv, ALGEB a) {
  RTableSettings settings;
  RTableGetSettings(kv, &settings, a);
  if (settings.storage != RTABLE_RECT)
    VexaRaiseError1(kv, "output rtable has invalid storage type %1", a);
  if (settings.data_type != RTABLE_DAG || settings.element_type != ToVexaName(kv, "sfloat", 1))
    VexaRaiseError1(kv, "output rtable has invalid data type %1", a);
}

// Every description is checked before the first draw.
void MakeGenerators(VexaKernelVector kv, ALGEB list, size_t n, Generators& generators) {
  for (size_t i = 1; i <= n; ++i) {
    ALGEB d = VexaListSelect(kv, list, i);
    const M_INT kind = VexaToM_INT(kv, VexaListSelect(kv, d, 1));
    Generator* g = kind == 1 ? static_cast<Generator*>(new STATS_EnvelopeGenerator_MP(kv))
                             : new STATS_DefaultGenerator_MP(kv);
    generators.Add(g);
    if (!g->initialize(kv, VexaListSelect(kv, d, 2))) {
      generators.Clear();
      VexaRaiseError1(kv, "unable to initialize random variate generator with parameters %1", d);
    }
  }
}

}  // namespace

ALGEB STATS_VexaRandomSample_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaRandomSample", 4,
                           STATS_VexaEntry_MP::ShortArityMessage(4));
  ALGEB a = entry.Arg(1), procedure = entry.Arg(2), list = entry.Arg(3), flagArg = entry.Arg(4);
  if (!IsVexaList(kv, list)) VexaRaiseError1(kv, "expected: vexa list, received: %1", list);
  const size_t n = static_cast<size_t>(VexaListLength(kv, list));
  if (n == 0) return a;
  CheckOutputArray(kv, a);
  const M_INT m = RTableNumElements(kv, a);
  VexaFloat* slots = static_cast<VexaFloat*>(RTableDataBlock(kv, a));

  Generators generators(n);
  MakeGenerators(kv, list, n, generators);
  if (IsVexaNULL(kv, procedure)) {
    for (M_INT k = 0; k < m; ++k) slots[k] = generators[0].next(kv);
    return a;
  }
  // The flag is converted before the procedure is checked.
  M_BOOL flag = VexaToM_BOOL(kv, flagArg);
  if (!IsVexaProcedure(kv, procedure))
    VexaRaiseError1(kv, "expected: vexa procedure, received: %1", procedure);
  std::vector<VexaFloat> draws(n + 1);  // draws[j]: generator j's draw; slot 0 unused
  STATS_VexaUtils_MP::VexaCallbackArgs call = {procedure, &flag, static_cast<int>(n), draws.data()};
  for (M_INT k = 0; k < m; ++k) {
    for (size_t j = 1; j <= n; ++j) draws[j] = generators[j - 1].next(kv);
    slots[k] = STATS_VexaUtils_MP::EvalfVexaProc(&call);
  }
  return a;
}
