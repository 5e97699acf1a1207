#include "order.h"

#include <cstdio>

namespace life {

namespace {

std::string decimal(long nCents) {
  char s[32];
  std::snprintf(s, sizeof s, "%ld.%02ld", nCents / 100, nCents % 100);
  return s;
}

std::string right(const std::string &s, size_t nLen, char cPad) {
  return std::string(nLen - s.size(), cPad) + s;
}
std::string left(const std::string &s, size_t nLen) {
  return s + std::string(nLen - s.size(), ' ');
}

std::string element(const std::string &sName, const std::string &sText) {
  return sText.empty() ? "" : "<" + sName + ">" + sText + "</" + sName + ">";
}

std::string kindText(char cKind, int nGeneration) {
  switch (cKind) {
    case 'A':
      return "standard";
    case 'B':
      return "express " + std::to_string(nGeneration);
    case 'C':
    case 'D':
      return "special";
    default:
      return "";
  }
}

}  // namespace

long Order::cents() const {
  long nSum = 0;
  for (const Item &item : items) nSum += item.nCents;
  return nSum;
}

std::string terms(char cKind) {
  return cKind == 'A' ? "net 30" : cKind == 'B' ? "net 10" : "";
}

Order order(int n) {
  n %= kOrders;
  Order order;
  order.nId = 1000 + n;
  order.sCustomer = "Customer " + std::to_string(n * 7 % 101);
  order.cKind = static_cast<char>('A' + n % 5);
  const int nItems = n == kOrders - 1 ? 200 : n % 7;
  for (int i = 0; i < nItems; ++i) {
    Item item{"ART" + std::to_string(n * 31 % 997 + i), (n * 37L + i * 101L) % 100000, {}};
    for (int j = 0; j < (n + i) % 4; ++j) item.lots.push_back("L" + std::to_string(100 + (n + i + j) % 900));
    order.items.push_back(item);
  }
  return order;
}

std::string fixBytes(const Order &order) {
  std::string s =
      "H" + right(std::to_string(order.nId), 8, '0') + left(order.sCustomer, 20) + order.cKind + "\n";
  for (const Item &item : order.items) {
    s += "I" + left(item.sArticle, 8) + right(decimal(item.nCents), 10, ' ') +
         std::to_string(item.lots.size());
    for (const std::string &sLot : item.lots) s += sLot;
    s += "\n";
  }
  return s + "T" + right(decimal(order.cents()), 12, ' ') + "\n";
}

std::string invoiceBytes(const Order &order, int nGeneration) {
  std::string s = "<invoice id=\"" + std::to_string(order.nId) + "\">" +
                  element("customer", order.sCustomer) + element("kind", kindText(order.cKind, nGeneration)) +
                  element("label", std::to_string(order.nId) + "/" + order.sCustomer) +
                  element("terms", terms(order.cKind)) + element("count", std::to_string(order.items.size()));
  for (const Item &item : order.items) {
    s += "<line article=\"" + item.sArticle + "\">" + element("amount", decimal(item.nCents));
    for (const std::string &sLot : item.lots) s += "<lot no=\"" + sLot + "\"/>";
    s += "</line>";
  }
  return s + element("total", decimal(order.cents())) + "</invoice>";
}

}  // namespace life
