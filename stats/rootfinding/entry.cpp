// The entry points of the real root finders share one frame: arguments fetched in order, the
// tolerance formed from tol digits and the caller's Digits, the worker run at Digits + 3.
#include <cmath>

#include "rootfinding/rootfinding.h"

namespace rootfinding {

ALGEB RunEntry(VexaKernelVector kv, ALGEB args, const EntryForm& form,
               VexaFloat (*solve)(VexaKernelVector kv, const EntryValues& v)) {
  STATS_VexaEntry_MP entry(kv, args, form.name, form.count);
  EntryValues v;
  v.y = entry.Float(1);
  const char* procedureName = form.procedureName ? form.procedureName : form.name;
  STATS_VexaProcAdapter_MP f(
      kv, entry.Procedure(2, STATS_VexaEntry_MP::ProcedureMessage(procedureName, 2)));
  STATS_VexaProcAdapter_MP df(kv, nullptr);
  v.f = &f;
  v.df = nullptr;
  if (form.procedures == 2) {
    df.Reset(entry.Procedure(3, STATS_VexaEntry_MP::ProcedureMessage(procedureName, 3)));
    v.df = &df;
  }
  const int tolPosition = form.count - 1;
  for (int i = 2 + form.procedures; i < tolPosition; ++i)
    v.point[i - 2 - form.procedures] = entry.Float(i);
  const int tolDigits = entry.Integer(tolPosition);
  const int digits = entry.Digits();
  v.tol = VexaFloat(tolDigits) * VexaFloat(std::pow(10.0, -digits));
  v.maxIter = entry.Integer(form.count);
  VexaFloat root;
  {
    STATS_VexaRaisedDigits_MP raised(entry, digits + 3);
    root = solve(kv, v);
  }
  return form.rounded ? entry.Result(root, digits) : entry.Result(root);
}

}  // namespace rootfinding
