// Per-thread free lists of small pointer-free nodes, refilled a batch at a time from the
// collector (GC_generic_malloc_many). A list's links live inside its atomic nodes, where the
// collector does not look, so a list is valid only until the next collection: each
// collection advances an epoch, and a list from an earlier epoch is dropped (its nodes are
// garbage then) instead of used. Taking a node is a load, a compare and a pop. The host
// runs one thread; a second thread collecting during another's pop is not provided for.
#ifndef VEXA_HOST_NODE_POOL_H
#define VEXA_HOST_NODE_POOL_H

#include <stddef.h>

namespace vexa {

constexpr size_t kPoolGranuleBytes = 16;  // the collector's allocation unit
constexpr size_t kPooledGranules = 8;     // nodes of up to 127 bytes are pooled

struct AtomicFreeList {
  void* head;
  unsigned long epoch;
};

// Starts the collector (once) with a heap of kInitialHeapBytes: a collection costs a scan
// of the roots whatever the heap's size, so a heap of a few megabytes would spend most of
// the time of small temporaries collecting. The heap still has a fixed bound under churn.
constexpr size_t kInitialHeapBytes = size_t(32) << 20;
void InitCollector();

// Collections so far (advanced at the start of each); written by the collecting thread.
extern volatile unsigned long gCollectionEpoch;

// initial-exec: one load from the thread pointer, no call (the library is linked, not opened)
extern __thread AtomicFreeList tAtomicFreeLists[kPooledGranules + 1]
    __attribute__((tls_model("initial-exec")));

// Refills the list of that size and takes a node; larger nodes come from the collector
// directly. Null when memory is exhausted.
void* AllocAtomicRefill(size_t bytes);

// Pointer-free collected memory of `bytes` bytes, not cleared. Null when memory is exhausted.
inline void* AllocAtomicPooled(size_t bytes) {
  size_t granules = (bytes + kPoolGranuleBytes) / kPoolGranuleBytes;  // end byte included
  if (__builtin_expect(granules <= kPooledGranules, 1)) {
    AtomicFreeList& list = tAtomicFreeLists[granules];
    void* p = list.head;
    if (__builtin_expect(p != nullptr && list.epoch == gCollectionEpoch, 1)) {
      void* next = *static_cast<void**>(p);
      list.head = next;
      __builtin_prefetch(next, 1);
      return p;
    }
  }
  return AllocAtomicRefill(bytes);
}

}  // namespace vexa

#endif
