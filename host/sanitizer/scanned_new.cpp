// Under AddressSanitizer the runtime's operator new comes before libgccpp's, so memory from
// new would no longer be scanned by the collector. This executable restores the host's rule
// (new gives uncollectable, scanned memory) by defining the operators itself.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEXA_ADDRESS_SANITIZER 1  // clang spells it this way
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(VEXA_ADDRESS_SANITIZER)
#include <gc/gc.h>

#include <new>

void* operator new(size_t n) {
  void* p = GC_MALLOC_UNCOLLECTABLE(n ? n : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void* operator new[](size_t n) {
  return operator new(n);
}
void operator delete(void* p) noexcept {
  GC_FREE(p);
}
void operator delete[](void* p) noexcept {
  GC_FREE(p);
}
void operator delete(void* p, size_t) noexcept {
  GC_FREE(p);
}
void operator delete[](void* p, size_t) noexcept {
  GC_FREE(p);
}
#endif
