// Powers of ten that fit a machine word, and division by them with a precomputed reciprocal:
// the shared kernels of decimal rounding and of the sum accumulator.
#ifndef VEXA_FLOAT_POW10_H
#define VEXA_FLOAT_POW10_H

#include <array>
#include <cstdint>

namespace vexa {

inline constexpr uint64_t kPow10[20] = {1ULL,
                                 10ULL,
                                 100ULL,
                                 1000ULL,
                                 10000ULL,
                                 100000ULL,
                                 1000000ULL,
                                 10000000ULL,
                                 100000000ULL,
                                 1000000000ULL,
                                 10000000000ULL,
                                 100000000000ULL,
                                 1000000000000ULL,
                                 10000000000000ULL,
                                 100000000000000ULL,
                                 1000000000000000ULL,
                                 10000000000000000ULL,
                                 100000000000000000ULL,
                                 1000000000000000000ULL,
                                 10000000000000000000ULL};

using u128 = unsigned __int128;

// 10^k shifted to a set top bit, with its reciprocal floor((2^128 - 1) / d) - 2^64, to divide
// by 10^k with two multiplications instead of a divide instruction (Möller and Granlund,
// "Improved division by invariant integers", 2011, Algorithm 4).
struct Reciprocal {
  uint64_t d;
  int shift;
  uint64_t v;
};
constexpr std::array<Reciprocal, 20> MakeReciprocals() {
  std::array<Reciprocal, 20> t{};
  for (int k = 1; k < 20; ++k) {
    uint64_t d = kPow10[k];
    int shift = 0;
    while ((d >> 63) == 0) {
      d <<= 1;
      ++shift;
    }
    t[k] = {d, shift, static_cast<uint64_t>(~u128(0) / d - (u128(1) << 64))};
  }
  return t;
}
inline constexpr std::array<Reciprocal, 20> kReciprocals = MakeReciprocals();

// floor(n / 10^k) and the remainder, for 1 <= k <= 19 and n < 10^k 2^64.
inline uint64_t DivRemPow10(u128 n, int k, uint64_t* rem) {
  const Reciprocal& c = kReciprocals[k];
  u128 u = n << c.shift;
  uint64_t u1 = static_cast<uint64_t>(u >> 64), u0 = static_cast<uint64_t>(u);
  u128 p = static_cast<u128>(c.v) * u1 + u;
  uint64_t q = static_cast<uint64_t>(p >> 64) + 1, low = static_cast<uint64_t>(p);
  uint64_t r = u0 - q * c.d;
  if (r > low) {
    --q;
    r += c.d;
  }
  if (__builtin_expect(r >= c.d, 0)) {
    ++q;
    r -= c.d;
  }
  *rem = r >> c.shift;
  return q;
}

}  // namespace vexa

#endif
