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

#include <cstdlib>
#include <new>

namespace {
// Memory the runtime allocated before or beside these operators (libFuzzer's own buffers) is
// not the collector's: it goes back where it came from.
void Release(void* p) {
  if (p != nullptr && GC_base(p) == nullptr)
    std::free(p);
  else
    GC_FREE(p);
}
}  // namespace

void* operator new(size_t n) {
  void* p = GC_MALLOC_UNCOLLECTABLE(n ? n : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void* operator new[](size_t n) {
  return operator new(n);
}
void* operator new(size_t n, const std::nothrow_t&) noexcept {
  return GC_MALLOC_UNCOLLECTABLE(n ? n : 1);
}
void* operator new[](size_t n, const std::nothrow_t&) noexcept {
  return GC_MALLOC_UNCOLLECTABLE(n ? n : 1);
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
void operator delete(void* p, const std::nothrow_t&) noexcept {
  Release(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  Release(p);
}
#endif
