// Sorting and ranking: m01cac sorts reals in place and m01dsc ranks elements of any type
// under a caller's three-way comparison. Both are stable merge sorts (equal elements keep
// their order, in either direction); undefined reals come after every number ascending and
// before every number descending.
#include <algorithm>
#include <cstring>
#include <numeric>
#include <vector>

#include "numlib/failure.h"

namespace vexa {
namespace {

bool CheckOrder(Nag_SortOrder order, const char* routine, NagError* fail) {
  if (order == Nag_Ascending || order == Nag_Descending) return true;
  return Fail(fail, NE_BAD_PARAM, routine, Shows("order", static_cast<long>(order)),
              "order = Nag_Ascending or Nag_Descending");
}

// An element of up to 16 bytes copied beside its index.
struct Item {
  size_t index;
  alignas(8) char bytes[16];
};

// x before y ascending: a number before an undefined value, numbers by value.
bool Before(const VexaFloat& x, const VexaFloat& y) {
  if (IsVexaFloatUndefined(x)) return false;
  return IsVexaFloatUndefined(y) || x < y;
}

}  // namespace
}  // namespace vexa

using namespace vexa;

void VexaMP_m01cac(VexaFloat vec[], size_t n, Nag_SortOrder order, NagError* fail) {
  Succeed(fail);
  if (!CheckOrder(order, "VexaMP_m01cac", fail) || n < 2) return;
  if (order == Nag_Ascending)
    std::stable_sort(vec, vec + n, Before);
  else
    std::stable_sort(vec, vec + n,
                     [](const VexaFloat& x, const VexaFloat& y) { return Before(y, x); });
}

void VexaMP_m01dsc(const void* vec, size_t n, ptrdiff_t stride,
                   int (*compare)(const char* a, const char* b), Nag_SortOrder order,
                   size_t ranks[], NagError* fail) {
  Succeed(fail);
  if (!CheckOrder(order, "VexaMP_m01dsc", fail)) return;
  if (stride == 0)
    return static_cast<void>(
        Fail(fail, NE_INT_ARG_CONS, "VexaMP_m01dsc", "stride = 0", "stride != 0"));
  if (compare == nullptr)
    return static_cast<void>(
        Fail(fail, NE_BAD_PARAM, "VexaMP_m01dsc", "compare = NULL", "compare != NULL"));
  const char* base = static_cast<const char*>(vec);
  const size_t width = static_cast<size_t>(stride < 0 ? -stride : stride);
  // Only compare(...) < 0 orders two elements, so a comparison that answers 1 both ways
  // (two missing values) leaves them equal and in their original order.
  auto sortBy = [&](auto& items, auto at) {
    if (order == Nag_Ascending)
      std::stable_sort(items.begin(), items.end(),
                       [&](const auto& i, const auto& j) { return compare(at(i), at(j)) < 0; });
    else
      std::stable_sort(items.begin(), items.end(),
                       [&](const auto& i, const auto& j) { return compare(at(j), at(i)) < 0; });
  };
  if (width <= sizeof(Item::bytes)) {
    // Short elements travel with their index, so the sort reads them in sequence.
    std::vector<Item> items(n);
    for (size_t i = 0; i < n; ++i) {
      items[i].index = i;
      std::memcpy(items[i].bytes, base + static_cast<ptrdiff_t>(i) * stride, width);
    }
    sortBy(items, [](const Item& item) { return static_cast<const char*>(item.bytes); });
    for (size_t r = 0; r < n; ++r) ranks[items[r].index] = r;
    return;
  }
  std::vector<size_t> sorted(n);
  std::iota(sorted.begin(), sorted.end(), size_t{0});
  sortBy(sorted, [&](size_t i) { return base + static_cast<ptrdiff_t>(i) * stride; });
  for (size_t r = 0; r < n; ++r) ranks[sorted[r]] = r;
}
