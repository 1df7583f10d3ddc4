// Refilling the per-thread free lists of pointer-free nodes, and the collection epoch that
// invalidates them: a collection does not see the links inside atomic nodes, so it may
// reclaim a listed node; every list made before it is dropped, never popped again.
#include "host/node_pool.h"

#include <gc/gc.h>
#include <gc/gc_inline.h>

namespace vexa {

volatile unsigned long gCollectionEpoch = 0;
__thread AtomicFreeList tAtomicFreeLists[kPooledGranules + 1]
    __attribute__((tls_model("initial-exec"))) = {};

namespace {

GC_on_collection_event_proc gPreviousEventHandler = nullptr;

// Advanced before marking and again before reclaiming, so that no path into a reclaim
// (whole or incremental collection) finds a list of the old epoch still valid.
void OnCollectionEvent(GC_EventType event) {
  if (event == GC_EVENT_START || event == GC_EVENT_MARK_START || event == GC_EVENT_RECLAIM_START)
    gCollectionEpoch = gCollectionEpoch + 1;
  if (gPreviousEventHandler != nullptr) gPreviousEventHandler(event);
}

}  // namespace

void InitCollector() {
  static bool started = false;
  if (started) return;
  started = true;
  GC_INIT();
  gPreviousEventHandler = GC_get_on_collection_event();
  GC_set_on_collection_event(OnCollectionEvent);
  GC_expand_hp(kInitialHeapBytes);
}

void* AllocAtomicRefill(size_t bytes) {
  size_t granules = (bytes + kPoolGranuleBytes) / kPoolGranuleBytes;
  if (granules > kPooledGranules) return GC_MALLOC_ATOMIC(bytes);
  InitCollector();
  AtomicFreeList& list = tAtomicFreeLists[granules];
  void* head = nullptr;
  // whole granules: the size is taken as it is, with no end byte added
  GC_generic_malloc_many(granules * kPoolGranuleBytes, GC_I_PTRFREE, &head);
  if (head == nullptr) return GC_MALLOC_ATOMIC(bytes);
  // the list was made after any collection inside the call: it belongs to this epoch
  list.epoch = gCollectionEpoch;
  list.head = *static_cast<void**>(head);
  return head;
}

}  // namespace vexa
