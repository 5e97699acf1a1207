// decimal.h: exact decimal numbers.
//
// A number is a coefficient of binary limbs, a count of decimals and a sign: "12.50" is 1250 with two decimals,
// and stays apart from "12.5". GMP's low-level functions compute on limbs that lie on the stack: no heap
// memory is taken, and there is no floating point.
#pragma once

#include <gmp.h>

#include <cstddef>
#include <string_view>

namespace cvt::functions {

// What is done about digits that a result has no room for.
enum class Rounding { None, HalfUp, HalfEven, HalfDown, Up, Down, Ceiling, Floor };

enum class Trouble {
  None,
  TooManyDigits,
  NotExact,  // digits would be lost, and no rounding was named
  DivisionByZero,
};

class Decimal {
 public:
  static constexpr int kMaxDigits = 100;  // leading zeros do not count; decimals do, whatever they are
  static constexpr size_t kTextRoom = kMaxDigits + 3;  // sign, a zero before the point, point

  Decimal() = default;  // 0

  // REQUIRES: only digits, behind leading zeros not more than kMaxDigits; nor more decimals.
  Decimal(bool negative, std::string_view digits, int decimals);

  bool isZero() const { return m_size == 0; }
  bool isNegative() const { return m_negative && !isZero(); }
  int decimals() const { return m_decimals; }
  int compare(const Decimal &other) const;  // -1, 0, 1

  // The digits without sign and point, one before the point at least: "005" is 0.05. Returns their number;
  // `out` has room for kTextRoom.
  size_t digits(char *out) const;

  Decimal negated() const;
  Decimal absolute() const;

  // The result counts when there is no Trouble. It may be one of the operands.
  static Trouble add(const Decimal &a, const Decimal &b, Decimal &result);
  static Trouble multiply(const Decimal &a, const Decimal &b, Decimal &result);
  static Trouble divide(const Decimal &a, const Decimal &b, int decimals, Rounding rounding, Decimal &result);
  static Trouble remainder(const Decimal &a, const Decimal &b, Decimal &result);  // has the sign of a
  static Trouble round(const Decimal &a, int decimals, Rounding rounding, Decimal &result);

 private:
  struct Wide;
  Trouble set(bool negative, const Wide &coefficient, int decimals);

  static_assert(GMP_NUMB_BITS == 64);
  static constexpr int kLimbs = 6;  // 384 bits hold 115 digits

  mp_limb_t m_limbs[kLimbs];
  int m_size = 0;  // limbs in use, the highest is not zero; none: the number is zero
  int m_decimals = 0;
  bool m_negative = false;
};

}  // namespace cvt::functions
