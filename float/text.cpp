// Decimal text in and out. Reading keeps every digit as written; printing shows every stored
// digit, so that the text reads back to the same float.
#include <cctype>
#include <stdexcept>
#include <string>

#include "float/decimal.h"
#include "float/float_node.h"

namespace vexa {
namespace {

[[noreturn]] void Malformed(const std::string& text, const char* why) {
  throw std::invalid_argument("malformed float \"" + text + "\": " + why);
}

}  // namespace
}  // namespace vexa

using namespace vexa;

VexaFloat VexaFloatFromString(const std::string& text) {
  if (text == "Float(undefined)") return VexaFloatUndefined();
  if (text == "Float(infinity)") return VexaFloatInfinity(1);
  if (text == "Float(-infinity)") return VexaFloatInfinity(-1);
  size_t i = 0, n = text.size();
  bool negative = false;
  if (i < n && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  std::string digits;
  int64_t exponent = 0;
  bool anyDigit = false;
  while (i < n && std::isdigit(static_cast<unsigned char>(text[i]))) {
    digits += text[i++];
    anyDigit = true;
  }
  if (i < n && text[i] == '.') {
    ++i;
    while (i < n && std::isdigit(static_cast<unsigned char>(text[i]))) {
      digits += text[i++];
      --exponent;
      anyDigit = true;
    }
  }
  if (!anyDigit) Malformed(text, "expected digits");
  if (i < n && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    bool negativeExponent = false;
    if (i < n && (text[i] == '+' || text[i] == '-')) negativeExponent = text[i++] == '-';
    if (i == n || !std::isdigit(static_cast<unsigned char>(text[i])))
      Malformed(text, "expected digits in the exponent");
    int64_t e = 0;
    while (i < n && std::isdigit(static_cast<unsigned char>(text[i]))) {
      e = e * 10 + (text[i++] - '0');
      if (e > kMaxExponent) Malformed(text, "exponent out of range");
    }
    exponent += negativeExponent ? -e : e;
  }
  if (i != n) Malformed(text, "unexpected character");
  size_t first = digits.find_first_not_of('0');
  if (first == std::string::npos) return VexaFloat();
  size_t last = digits.find_last_not_of('0');
  exponent += static_cast<int64_t>(digits.size() - 1 - last);
  digits = digits.substr(first, last - first + 1);
  int64_t top = exponent + static_cast<int64_t>(digits.size());
  if (top > kMaxExponent || top < -kMaxExponent) Malformed(text, "exponent out of range");
  mpz_t m;
  mpz_init_set_str(m, digits.c_str(), 10);
  if (negative) mpz_neg(m, m);
  VexaFloat r = FloatFromMpz(m, exponent, 0);
  mpz_clear(m);
  return r;
}

std::string VexaFloatToString(const VexaFloat& x) {
  const FloatNode* n = AsFloatNode(x.Handle());
  switch (KindOf(n)) {
    case kUndefined:
      return "Float(undefined)";
    case kPlusInfinity:
      return "Float(infinity)";
    case kMinusInfinity:
      return "Float(-infinity)";
    default:
      break;
  }
  if (n->size == 0) return "0.";
  mpz_t m;
  MantissaView(m, n);
  char* raw = mpz_get_str(nullptr, 10, m);
  std::string s = raw;
  void (*freeFunction)(void*, size_t);
  mp_get_memory_functions(nullptr, nullptr, &freeFunction);
  freeFunction(raw, s.size() + 1);
  std::string sign;
  if (s[0] == '-') {
    sign = "-";
    s.erase(0, 1);
  }
  int64_t len = static_cast<int64_t>(s.size());
  int64_t point = len + n->exponent;  // digits before the decimal point
  const int64_t kPlainLimit = 21;
  if (n->exponent >= 0 && point <= kPlainLimit)
    return sign + s + std::string(n->exponent, '0') + ".";
  if (n->exponent < 0 && point > 0) return sign + s.substr(0, point) + "." + s.substr(point);
  if (n->exponent < 0 && point > -6) return sign + "0." + std::string(-point, '0') + s;
  std::string mantissa = s.substr(0, 1);
  if (len > 1) mantissa += "." + s.substr(1);
  return sign + mantissa + "e" + std::to_string(point - 1);
}
