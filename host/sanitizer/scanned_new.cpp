// Under AddressSanitizer the runtime's operator new comes before libgccpp's, so memory from
// new would no longer be scanned by the collector. This executable restores the host's rule
// (new gives uncollectable, scanned memory) by defining the operators itself.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) && !defined(__SANITIZE_ADDRESS__)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#include <gc/gc.h>

#include <cstdlib>
#include <new>

// Memory the collector does not own (allocated before these operators took over, as a
// fuzzing driver may) goes back to malloc's free.
static void Release(void* p) {
  if (p == nullptr) return;
  if (GC_is_init_called() && GC_base(p) != nullptr)
    Release(p);
  else
    std::free(p);
}

void* operator new(size_t n) {
  void* p = GC_MALLOC_UNCOLLECTABLE(n ? n : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void* operator new[](size_t n) {
  return operator new(n);
}
void operator delete(void* p) noexcept {
  Release(p);
}
void operator delete[](void* p) noexcept {
  Release(p);
}
void operator delete(void* p, size_t) noexcept {
  Release(p);
}
void operator delete[](void* p, size_t) noexcept {
  Release(p);
}
#endif
