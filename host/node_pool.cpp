// Refilling the per-thread pools of pointer-free nodes. GC_generic_malloc_many hands over
// a list of free objects of one size linked through their first words; the list is moved
// into the pool's scanned array before anything else can allocate.
#include "host/node_pool.h"

#include <gc/gc.h>
#include <gc/gc_inline.h>

namespace vexa {

__thread AtomicPools* tAtomicPools __attribute__((tls_model("initial-exec"))) = nullptr;

namespace {

__thread bool tPoolsReleased = false;

// Returns the thread's pools to the collector when the thread ends; nodes still listed
// then become garbage, and nodes made later in the thread's exit come unpooled.
struct PoolsRelease {
  AtomicPools* pools = nullptr;
  ~PoolsRelease() {
    tAtomicPools = nullptr;
    tPoolsReleased = true;
    GC_FREE(pools);
  }
};

AtomicPools* CreatePools() {
  InitCollector();
  if (tPoolsReleased) return nullptr;
  auto* pools = static_cast<AtomicPools*>(GC_MALLOC_UNCOLLECTABLE(sizeof(AtomicPools)));
  if (pools == nullptr) return nullptr;
  static thread_local PoolsRelease release;
  release.pools = pools;
  tAtomicPools = pools;
  return pools;
}

}  // namespace

void InitCollector() {
  static bool started = false;
  if (started) return;
  started = true;
  GC_INIT();
  GC_expand_hp(kInitialHeapBytes);
}

void* AllocAtomicRefill(size_t bytes) {
  size_t granules = (bytes + kPoolGranuleBytes) / kPoolGranuleBytes;
  if (granules > kPooledGranules) return GC_MALLOC_ATOMIC(bytes);
  AtomicPools* pools = tAtomicPools != nullptr ? tAtomicPools : CreatePools();
  if (pools == nullptr) return GC_MALLOC_ATOMIC(bytes);
  AtomicPools::Pool& pool = pools->bySize[granules];
  void* list = nullptr;
  // whole granules: the size is taken as it is, with no end byte added
  GC_generic_malloc_many(granules * kPoolGranuleBytes, GC_I_PTRFREE, &list);
  while (list != nullptr) {
    void* next = *static_cast<void**>(list);
    if (pool.count < kPoolCapacity)
      pool.nodes[pool.count++] = list;
    else
      GC_FREE(list);
    list = next;
  }
  if (pool.count == 0) return GC_MALLOC_ATOMIC(bytes);
  int i = --pool.count;
  void* p = pool.nodes[i];
  pool.nodes[i] = nullptr;
  return p;
}

}  // namespace vexa
