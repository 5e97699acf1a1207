// w1_fixed.cpp: the fixed-length order in the layout of w1_fixed.cob, written by hand: packed amounts and
// quantities, edited prices, a binary count, two bytes of record length in front.
#include "order_record.h"

namespace {

using namespace bench;

constexpr size_t kHead = 128, kItem = 49, kPrefix = 2, kMaxItems = 20;

uint8_t digit(char c) {
  return static_cast<uint8_t>(c - '0');
}

// An odd number of digits, two in a byte, the sign behind them; digits in front are filled up with zeros.
char *putPacked(char *to, std::string_view digits, size_t size) {
  needDigits(digits);
  char *at = to + size;
  uint8_t low = 0xC;
  for (size_t i = digits.size();;) {
    const uint8_t high = i > 0 ? digit(digits[--i]) : uint8_t{0};
    *--at = static_cast<char>(high << 4 | low);
    if (at == to) return to + size;
    low = i > 0 ? digit(digits[--i]) : uint8_t{0};
  }
}

// Two decimals behind a point, at least one digit in front of it, blanks instead of other leading zeros.
char *putEdited(char *to, std::string_view digits) {
  needDigits(digits);
  const size_t whole = digits.size() - 2;
  const size_t zeros = std::min(digits.find_first_not_of('0'), whole - 1);
  std::memset(to, ' ', zeros);
  to = put(to + zeros, digits.substr(zeros, whole - zeros));
  *to++ = '.';
  return put(to, digits.substr(whole));
}

char *putBinary(char *to, size_t value) {
  *to++ = static_cast<char>(value >> 8);
  *to++ = static_cast<char>(value);
  return to;
}

char *putOrder(char *to, const OrderRecord &order) {
  needLength(order.customer(), 1, 12);
  to = putBinary(to, kHead + kItem * order.count);
  to = putPadded(to, order.id(), 16);
  to = putPacked(to, order.amount(), 8);
  to = putPadded(to, order.name().substr(0, 30), 30);
  to = putFilled(to, order.customer(), 12);
  to = putPadded(to, order.address(), 60);
  to = putBinary(to, order.count);
  for (size_t i = 0; i < order.count; ++i) {
    to = putPacked(to, order.quantity(i), 4);
    to = putEdited(to, order.price(i));
    to = putPadded(to, order.sku(i), 16);
    to = putPadded(to, order.goods(i), 20);
  }
  return to;
}

void convert(std::string_view input, Output &output) {
  eachLine(input, [&](std::string_view line) {
    const OrderRecord order(line);
    if (order.count > kMaxItems) throw Failure("more than 20 items");
    output.stop(putOrder(output.room(kPrefix + kHead + kItem * order.count), order));
  });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 2, convert); });
}
