#include "decimal.h"

#include <algorithm>
#include <cstdint>

namespace cvt::functions {

namespace {

constexpr int kDigitsOfLimb = 19;

constexpr mp_limb_t powerOfTen(int n) {
  mp_limb_t power = 1;
  while (n-- > 0) power *= 10;
  return power;
}

}  // namespace

// A coefficient on its way. The widest is a dividend: 100 digits, shifted by 200 more.
struct Decimal::Wide {
  static constexpr int kRoom = 18;

  mp_limb_t limbs[kRoom];
  mp_size_t size = 0;

  Wide() = default;
  explicit Wide(const Decimal &number) : size(number.m_size) {
    std::copy_n(number.m_limbs, number.m_size, limbs);
  }

  static Wide one() {
    Wide number;
    number.limbs[number.size++] = 1;
    return number;
  }

  void trim() {
    while (size > 0 && limbs[size - 1] == 0) --size;
  }

  // Times a factor, plus an addend.
  void extend(mp_limb_t factor, mp_limb_t addend) {
    mp_limb_t carry = addend;
    if (size > 0) {
      carry = mpn_mul_1(limbs, limbs, size, factor);
      carry += mpn_add_1(limbs, limbs, size, addend);
    }
    if (carry != 0) limbs[size++] = carry;
  }

  // Times a power of ten.
  void shift(int digits) {
    for (; digits > 0; digits -= kDigitsOfLimb) extend(powerOfTen(std::min(digits, kDigitsOfLimb)), 0);
  }

  void append(std::string_view digits) {
    while (!digits.empty()) {
      const std::string_view part = digits.substr(0, kDigitsOfLimb);
      mp_limb_t value = 0;
      for (const char digit : part) value = value * 10 + static_cast<mp_limb_t>(digit - '0');
      extend(powerOfTen(static_cast<int>(part.size())), value);
      digits.remove_prefix(part.size());
    }
  }

  int compare(const Wide &other) const {
    if (size != other.size) return size < other.size ? -1 : 1;
    const int order = size == 0 ? 0 : mpn_cmp(limbs, other.limbs, size);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
  }

  // Takes the quotient out, and leaves the rest. REQUIRES: the divisor is not zero.
  Wide divide(const Wide &divisor) {
    Wide quotient;
    if (size < divisor.size) return quotient;
    mp_limb_t rest[kRoom];
    quotient.size = size - divisor.size + 1;
    mpn_tdiv_qr(quotient.limbs, rest, 0, limbs, size, divisor.limbs, divisor.size);
    quotient.trim();
    size = divisor.size;
    std::copy_n(rest, size, limbs);
    trim();
    return quotient;
  }
};

namespace {

// Whether a quotient with a rest goes up. half: the rest against half of the divisor, -1, 0 or 1.
bool goesUp(Rounding rounding, bool negative, bool odd, int half) {
  switch (rounding) {
    case Rounding::None:
    case Rounding::Down:
      return false;
    case Rounding::Up:
      return true;
    case Rounding::Ceiling:
      return !negative;
    case Rounding::Floor:
      return negative;
    case Rounding::HalfUp:
      return half >= 0;
    case Rounding::HalfDown:
      return half > 0;
    case Rounding::HalfEven:
      return half > 0 || (half == 0 && odd);
  }
  return false;
}

}  // namespace

Decimal::Decimal(bool negative, std::string_view digits, int decimals) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  Wide coefficient;
  coefficient.append(digits);
  set(negative, coefficient, decimals);
}

Trouble Decimal::set(bool negative, const Wide &coefficient, int decimals) {
  static const Wide s_tooMuch = [] {
    Wide power = Wide::one();
    power.shift(kMaxDigits);
    return power;
  }();
  if (coefficient.compare(s_tooMuch) >= 0 || decimals > kMaxDigits) return Trouble::TooManyDigits;
  m_size = static_cast<int>(coefficient.size);
  std::copy_n(coefficient.limbs, m_size, m_limbs);
  m_decimals = decimals;
  m_negative = negative;
  return Trouble::None;
}

int Decimal::compare(const Decimal &other) const {
  if (isNegative() != other.isNegative()) return isNegative() ? -1 : 1;
  Wide left(*this);
  Wide right(other);
  left.shift(other.m_decimals - m_decimals);
  right.shift(m_decimals - other.m_decimals);
  return isNegative() ? right.compare(left) : left.compare(right);
}

size_t Decimal::digits(char *out) const {
  Wide rest(*this);
  char reversed[kTextRoom + kDigitsOfLimb];
  size_t count = 0;
  while (rest.size > 0) {
    mp_limb_t part = mpn_divrem_1(rest.limbs, 0, rest.limbs, rest.size, powerOfTen(kDigitsOfLimb));
    rest.trim();
    for (int i = 0; i < kDigitsOfLimb && (part != 0 || rest.size > 0); ++i, part /= 10) {
      reversed[count++] = static_cast<char>('0' + part % 10);
    }
  }
  while (count <= static_cast<size_t>(m_decimals)) reversed[count++] = '0';
  std::reverse_copy(reversed, reversed + count, out);
  return count;
}

Decimal Decimal::negated() const {
  Decimal result = *this;
  result.m_negative = !m_negative;
  return result;
}

Decimal Decimal::absolute() const {
  Decimal result = *this;
  result.m_negative = false;
  return result;
}

Trouble Decimal::add(const Decimal &a, const Decimal &b, Decimal &result) {
  const int decimals = std::max(a.m_decimals, b.m_decimals);
  Wide large(a);
  Wide small(b);
  large.shift(decimals - a.m_decimals);
  small.shift(decimals - b.m_decimals);
  const bool swap = large.compare(small) < 0;
  if (swap) std::swap(large, small);
  const bool negative = swap ? b.m_negative : a.m_negative;
  if (small.size == 0) return result.set(negative, large, decimals);
  if (a.m_negative == b.m_negative) {
    const mp_limb_t carry = mpn_add(large.limbs, large.limbs, large.size, small.limbs, small.size);
    if (carry != 0) large.limbs[large.size++] = carry;
  } else {
    mpn_sub(large.limbs, large.limbs, large.size, small.limbs, small.size);
    large.trim();
  }
  return result.set(negative, large, decimals);
}

Trouble Decimal::multiply(const Decimal &a, const Decimal &b, Decimal &result) {
  const Decimal &large = a.m_size < b.m_size ? b : a;
  const Decimal &small = a.m_size < b.m_size ? a : b;
  Wide product;
  if (small.m_size > 0) {
    mpn_mul(product.limbs, large.m_limbs, large.m_size, small.m_limbs, small.m_size);
    product.size = large.m_size + small.m_size;
    product.trim();
  }
  return result.set(a.m_negative != b.m_negative, product, a.m_decimals + b.m_decimals);
}

Trouble Decimal::divide(const Decimal &a, const Decimal &b, int decimals, Rounding rounding,
                        Decimal &result) {
  if (b.isZero()) return Trouble::DivisionByZero;
  const bool negative = a.m_negative != b.m_negative;
  Wide rest(a);
  Wide divisor(b);
  rest.shift(decimals + b.m_decimals);
  divisor.shift(a.m_decimals);
  Wide quotient = rest.divide(divisor);
  if (rest.size > 0) {
    if (rounding == Rounding::None) return Trouble::NotExact;
    rest.extend(2, 0);
    const bool odd = quotient.size > 0 && quotient.limbs[0] % 2 != 0;
    if (goesUp(rounding, negative, odd, rest.compare(divisor))) quotient.extend(1, 1);
  }
  return result.set(negative, quotient, decimals);
}

Trouble Decimal::remainder(const Decimal &a, const Decimal &b, Decimal &result) {
  if (b.isZero()) return Trouble::DivisionByZero;
  const int decimals = std::max(a.m_decimals, b.m_decimals);
  Wide rest(a);
  Wide divisor(b);
  rest.shift(decimals - a.m_decimals);
  divisor.shift(decimals - b.m_decimals);
  rest.divide(divisor);
  return result.set(a.m_negative, rest, decimals);
}

Trouble Decimal::round(const Decimal &a, int decimals, Rounding rounding, Decimal &result) {
  static const Decimal s_one(false, "1", 0);
  return divide(a, s_one, decimals, rounding, result);
}

}  // namespace cvt::functions
