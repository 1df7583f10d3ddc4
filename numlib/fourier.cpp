// Discrete Fourier transforms of real and Hermitian sequences, scaled by 1/sqrt(n), with the
// Hermitian sequence stored in n reals: x[0] = Re z0, x[k] = Re zk (1 <= k <= n/2),
// x[n-k] = Im zk (1 <= k <= (n-1)/2). Radix-2 Cooley-Tukey for powers of two, Bluestein's
// chirp transform for every other length; computed with guard digits and rounded once.
#include <cstdint>
#include <string>
#include <vector>

#include "vexa/nag.h"

namespace vexa {
namespace {

using Floats = std::vector<VexaFloat>;

bool IsPowerOfTwo(int64_t m) {
  return m > 0 && (m & (m - 1)) == 0;
}

// cos and sin of pi * num / den.
void CosSinPi(int64_t num, int64_t den, VexaFloat* c, VexaFloat* s) {
  const VexaFloat angle = VexaFloatPi() * VexaFloat(num) / VexaFloat(den);
  *c = VexaEvalf1("cos", angle);
  *s = VexaEvalf1("sin", angle);
}

// cos and sin of 2 pi k / m for k < m / 2 (m a power of two), from the first octant by the
// reflections of the circle.
void Twiddles(int64_t m, Floats& c, Floats& s) {
  const int64_t half = m / 2;
  c.assign(half > 0 ? half : 1, VexaFloat(1));
  s.assign(c.size(), VexaFloat());
  if (m < 4) return;
  const int64_t quarter = m / 4, eighth = m / 8;
  for (int64_t k = 1; k <= eighth; ++k) CosSinPi(2 * k, m, &c[k], &s[k]);
  for (int64_t k = eighth + 1; k <= quarter && k < half; ++k) {
    c[k] = s[quarter - k];
    s[k] = c[quarter - k];
  }
  for (int64_t k = quarter + 1; k < half; ++k) {
    c[k] = -s[k - quarter];
    s[k] = c[k - quarter];
  }
}

// In place, unscaled: z_k = sum_j z_j exp(sign 2 pi i jk / m), m a power of two.
void Radix2(Floats& re, Floats& im, int64_t m, int sign) {
  for (int64_t i = 1, j = 0; i < m; ++i) {
    int64_t bit = m >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) {
      std::swap(re[i], re[j]);
      std::swap(im[i], im[j]);
    }
  }
  Floats c, s;
  Twiddles(m, c, s);
  for (int64_t len = 2; len <= m; len <<= 1) {
    const int64_t half = len / 2, stride = m / len;
    for (int64_t start = 0; start < m; start += len) {
      for (int64_t k = 0; k < half; ++k) {
        const VexaFloat& wr = c[k * stride];
        const VexaFloat wi = sign < 0 ? -s[k * stride] : s[k * stride];
        const int64_t a = start + k, b = a + half;
        const VexaFloat tr = re[b] * wr - im[b] * wi;
        const VexaFloat ti = re[b] * wi + im[b] * wr;
        re[b] = re[a] - tr;
        im[b] = im[a] - ti;
        re[a] += tr;
        im[a] += ti;
      }
    }
  }
}

// Bluestein: with jk = (j^2 + k^2 - (k - j)^2) / 2 the transform is a convolution with the
// chirp exp(sign pi i j^2 / n), done by power-of-two transforms of length >= 2n - 1.
void Bluestein(Floats& re, Floats& im, int64_t n, int sign) {
  int64_t m = 1;
  while (m < 2 * n - 1) m <<= 1;
  Floats cr(n), ci(n);
  for (int64_t j = 0; j < n; ++j) {
    CosSinPi((j * j) % (2 * n), n, &cr[j], &ci[j]);
    if (sign < 0) ci[j] = -ci[j];
  }
  Floats ar(m), ai(m), br(m), bi(m);
  for (int64_t j = 0; j < n; ++j) {
    ar[j] = re[j] * cr[j] - im[j] * ci[j];
    ai[j] = re[j] * ci[j] + im[j] * cr[j];
    br[j] = cr[j];
    bi[j] = -ci[j];
    if (j > 0) {
      br[m - j] = cr[j];
      bi[m - j] = -ci[j];
    }
  }
  Radix2(ar, ai, m, -1);
  Radix2(br, bi, m, -1);
  for (int64_t k = 0; k < m; ++k) {
    const VexaFloat r = ar[k] * br[k] - ai[k] * bi[k];
    ai[k] = ar[k] * bi[k] + ai[k] * br[k];
    ar[k] = r;
  }
  Radix2(ar, ai, m, 1);
  const VexaFloat scale = VexaFloat(1) / VexaFloat(m);
  for (int64_t k = 0; k < n; ++k) {
    const VexaFloat r = ar[k] * scale, i = ai[k] * scale;
    re[k] = r * cr[k] - i * ci[k];
    im[k] = r * ci[k] + i * cr[k];
  }
}

void Transform(Floats& re, Floats& im, int64_t n, int sign) {
  if (IsPowerOfTwo(n))
    Radix2(re, im, n, sign);
  else
    Bluestein(re, im, n, sign);
}

// Guard digits for a transform of length n: rounding errors grow like log n.
int GuardDigits(int64_t n) {
  return 5 + static_cast<int>(std::to_string(n).size());
}

}  // namespace
}  // namespace vexa

void VexaMP_c06faf_(VexaFloat* x, const int* n, VexaFloat* work, int* ifail) {
  using namespace vexa;
  (void)work;
  if (*n < 1) {
    *ifail = 1;
    return;
  }
  *ifail = 0;
  const int64_t len = *n;
  const int digits = VexaDigits();
  Floats re(x, x + len), im(len);
  VexaFloat scale;
  {
    VexaDigitsScope guard(digits + GuardDigits(len));
    Transform(re, im, len, -1);
    scale = VexaFloat(1) / sqrt(VexaFloat(len));
  }
  x[0] = re[0] * scale;
  for (int64_t k = 1; 2 * k <= len; ++k) x[k] = re[k] * scale;
  for (int64_t k = 1; 2 * k < len; ++k) x[len - k] = im[k] * scale;
}

void VexaMP_c06fbf_(VexaFloat* x, const int* n, VexaFloat* work, int* ifail) {
  using namespace vexa;
  (void)work;
  if (*n < 1) {
    *ifail = 1;
    return;
  }
  *ifail = 0;
  const int64_t len = *n;
  const int digits = VexaDigits();
  Floats re(len), im(len);
  re[0] = x[0];
  for (int64_t k = 1; 2 * k <= len; ++k) {
    re[k] = re[len - k] = x[k];
    if (2 * k < len) {
      im[k] = x[len - k];
      im[len - k] = -x[len - k];
    }
  }
  VexaFloat scale;
  {
    VexaDigitsScope guard(digits + GuardDigits(len));
    Transform(re, im, len, 1);
    scale = VexaFloat(1) / sqrt(VexaFloat(len));
  }
  for (int64_t j = 0; j < len; ++j) x[j] = re[j] * scale;
}

void VexaMP_c06gbf_(VexaFloat* x, const int* n, int* ifail) {
  if (*n < 1) {
    *ifail = 1;
    return;
  }
  *ifail = 0;
  for (int64_t k = 1; 2 * k < *n; ++k) x[*n - k] = -x[*n - k];
}
