// order.h: the orders that are converted, and what every step must make of them. Written without the library.
#pragma once

#include <string>
#include <vector>

namespace life {

struct Item {
  std::string sArticle;
  long nCents = 0;
  std::vector<std::string> lots;
};

struct Order {
  long nId = 0;
  std::string sCustomer;
  char cKind = 'A';
  std::vector<Item> items;

  long cents() const;
};

// What the database knows of the kind; empty for those that it does not know.
std::string terms(char cKind);

// Order number n. They come back after kOrders: by then a process has seen the largest.
constexpr int kOrders = 500;
Order order(int n);

// The record of the order.
std::string fixBytes(const Order &order);

// The document that the order becomes; the configuration exists in generations, which differ in a text.
std::string invoiceBytes(const Order &order, int nGeneration);

}  // namespace life
