// Per-thread pools of small pointer-free nodes, refilled a batch at a time from the
// collector. A node waiting in a pool is listed in uncollectable scanned memory, so a
// collection keeps it; once handed out it is an ordinary collected object. Taking a node
// is a few instructions instead of a call into the collector's allocator. The host runs
// one thread; a second thread collecting during another's refill is not provided for.
#ifndef VEXA_HOST_NODE_POOL_H
#define VEXA_HOST_NODE_POOL_H

#include <stddef.h>

namespace vexa {

constexpr size_t kPoolGranuleBytes = 16;  // the collector's allocation unit
constexpr size_t kPooledGranules = 8;     // nodes of up to 127 bytes are pooled
constexpr int kPoolCapacity = 256;

struct AtomicPools {
  struct Pool {
    int count;
    void* nodes[kPoolCapacity];
  } bySize[kPooledGranules + 1];  // by granules, the collector's extra end byte included
};

// initial-exec: one load from the thread pointer, no call (the library is linked, not opened)
// Starts the collector (once) with a heap of kInitialHeapBytes: a collection costs a scan
// of the roots whatever the heap's size, so a heap of a few megabytes would spend most of
// the time of small temporaries collecting. The heap still has a fixed bound under churn.
constexpr size_t kInitialHeapBytes = size_t(32) << 20;
void InitCollector();

extern __thread AtomicPools* tAtomicPools __attribute__((tls_model("initial-exec")));

// Refills the pool of that size (creating the thread's pools first) and takes a node;
// larger nodes come from the collector directly. Null when memory is exhausted.
void* AllocAtomicRefill(size_t bytes);

// Pointer-free collected memory of `bytes` bytes, not cleared. Null when memory is exhausted.
inline void* AllocAtomicPooled(size_t bytes) {
  size_t granules = (bytes + kPoolGranuleBytes) / kPoolGranuleBytes;
  AtomicPools* pools = tAtomicPools;
  if (__builtin_expect(pools != nullptr && granules <= kPooledGranules, 1)) {
    AtomicPools::Pool& pool = pools->bySize[granules];
    if (__builtin_expect(pool.count > 0, 1)) {
      int i = --pool.count;
      void* p = pool.nodes[i];
      pool.nodes[i] = nullptr;  // the pool no longer keeps it alive
      return p;
    }
  }
  return AllocAtomicRefill(bytes);
}

}  // namespace vexa

#endif
