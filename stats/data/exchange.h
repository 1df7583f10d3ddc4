// Element exchanges shared by the sorting and selection kernels: each moves a parallel array
// of weights along when the kernel carries weights.
#ifndef STATS_DATA_EXCHANGE_H
#define STATS_DATA_EXCHANGE_H

#include <utility>

#include "data/data.h"

namespace data_exchange {

// Swaps elements i and j of a, and of w when the kernel carries weights.
template <bool kWeighted>
inline void Swap(VexaFloat* a, VexaFloat* w, int i, int j) {
  std::swap(a[i], a[j]);
  if (kWeighted) std::swap(w[i], w[j]);
}

// Puts elements i and j in the data order.
template <bool kWeighted>
inline void CompareExchange(VexaFloat* a, VexaFloat* w, int i, int j) {
  if (STATS_DataGreater_MP(a[i], a[j])) Swap<kWeighted>(a, w, i, j);
}

}  // namespace data_exchange

#endif
