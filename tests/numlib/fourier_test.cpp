// Fourier transforms against the direct sum computed with many more digits, at powers of two
// and at lengths that take Bluestein's path; the inverse and the conjugate.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vexa/nag.h"

namespace {

using Floats = std::vector<VexaFloat>;

// The Hermitian storage of sum_j x_j exp(-2 pi i jk/n) / sqrt(n), summed directly with 25
// extra digits and rounded to Digits.
Floats DirectTransform(const Floats& x) {
  const int n = static_cast<int>(x.size()), digits = VexaDigits();
  Floats re(n), im(n);
  {
    VexaDigitsScope wide(digits + 25);
    const VexaFloat twoPi = 2 * VexaFloatPi(), scale = 1 / sqrt(VexaFloat(n));
    for (int k = 0; k < n; ++k) {
      for (int j = 0; j < n; ++j) {
        const VexaFloat a = twoPi * VexaFloat((static_cast<long>(j) * k) % n) / n;
        re[k] += x[j] * VexaEvalf1("cos", a);
        im[k] -= x[j] * VexaEvalf1("sin", a);
      }
      re[k] *= scale;
      im[k] *= scale;
    }
  }
  Floats z(n);
  for (int k = 0; 2 * k <= n; ++k) z[k] = VexaFloatRound(re[k], digits);
  for (int k = 1; 2 * k < n; ++k) z[n - k] = VexaFloatRound(im[k], digits);
  return z;
}

// Largest |a - b| over the sequences, in units of 10^(1 - Digits) times the largest |b|.
double Error(const Floats& a, const Floats& b) {
  VexaFloat big, worst;
  for (size_t i = 0; i < a.size(); ++i) {
    if (fabs(b[i]) > big) big = fabs(b[i]);
    if (fabs(a[i] - b[i]) > worst) worst = fabs(a[i] - b[i]);
  }
  const VexaFloat unit = big * pow(VexaFloat(10), VexaFloat(1 - VexaDigits()));
  return std::stod(VexaFloatToString(worst / unit));
}

TEST(Fourier, RealTransformMatchesTheDirectSumAndInverts) {
  for (int digits : {10, 30}) {
    VexaDigitsScope scope(digits);
    for (int n : {1, 2, 3, 8, 12, 17, 64, 100}) {
      SCOPED_TRACE("Digits " + std::to_string(digits) + ", n " + std::to_string(n));
      Floats x(n);
      for (int j = 0; j < n; ++j) x[j] = VexaEvalf1("sin", VexaFloat(j + 1)) + VexaFloat(j) / 7;
      Floats z = x, work(n);
      int ifail = -1;
      VexaMP_c06faf_(z.data(), &n, work.data(), &ifail);
      EXPECT_EQ(ifail, 0);
      EXPECT_LE(Error(z, DirectTransform(x)), 1.0);
      Floats back = z;
      VexaMP_c06fbf_(back.data(), &n, work.data(), &ifail);
      EXPECT_LE(Error(back, x), 2.0);
      // the conjugate negates exactly the imaginary parts
      Floats conj = z;
      VexaMP_c06gbf_(conj.data(), &n, &ifail);
      for (int k = 0; k < n; ++k) EXPECT_EQ(conj[k], (k > 0 && 2 * k > n) ? -z[k] : z[k]);
    }
  }
}

TEST(Fourier, LengthBelowOneFailsAndLeavesTheData) {
  Floats x = {VexaFloat(3)};
  int n = 0, ifail = 0;
  VexaMP_c06faf_(x.data(), &n, x.data(), &ifail);
  EXPECT_EQ(ifail, 1);
  ifail = 0;
  VexaMP_c06fbf_(x.data(), &n, x.data(), &ifail);
  EXPECT_EQ(ifail, 1);
  ifail = 0;
  VexaMP_c06gbf_(x.data(), &n, &ifail);
  EXPECT_EQ(ifail, 1);
  EXPECT_EQ(x[0], 3);
}

}  // namespace
