#include "mutation.h"

#include <algorithm>
#include <random>

#include "markup.h"

namespace hostile {

namespace {

// What a kind of damage works on, and what it did.
class Workshop {
 public:
  Workshop(const std::string &sText, const std::vector<std::string> &donors, unsigned nNumber)
      : m_text(sText), m_donors(donors), m_random(nNumber), m_elements(elementsOf(sText)) {}

  size_t any(size_t nCount) { return nCount == 0 ? 0 : m_random() % nCount; }
  template <class T>
  const T &one(const std::vector<T> &all) {
    return all[any(all.size())];
  }

  const std::string &text() const { return m_text; }
  const std::vector<ElementAt> &elements() const { return m_elements; }
  const std::string &donor() { return one(m_donors); }
  char byte() { return static_cast<char>(m_random()); }

  const ElementAt &element() { return one(m_elements); }
  // An element below the root.
  const ElementAt &inner() { return m_elements[1 + any(m_elements.size() - 1)]; }
  const ElementAt &withAttributes() {
    for (;;) {
      const ElementAt &found = element();
      if (!found.attributes.empty()) return found;
    }
  }
  const AttributeAt &attribute() { return one(withAttributes().attributes); }

  void put(Range range, const std::string &sNew) {
    note(cut(m_text, range), sNew);
    m_text.replace(range.from, range.size(), sNew);
  }
  void note(const std::string &sOld, const std::string &sNew) {
    m_what += (m_what.empty() ? "" : "; ") + shortened(sOld) + " -> " + shortened(sNew);
  }
  const std::string &what() const { return m_what; }

 private:
  static std::string shortened(const std::string &s) {
    std::string out;
    for (const char c : s.substr(0, 120)) out += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    return s.size() > 120 ? out + "..." : out;
  }

  std::string m_text;
  const std::vector<std::string> &m_donors;
  std::mt19937 m_random;
  std::vector<ElementAt> m_elements;
  std::string m_what;
};

// --- Bytes ------------------------------------------------------------------------------------------------

void bytesChanged(Workshop &shop) {
  for (size_t n = 1 + shop.any(4); n > 0; --n) {
    const size_t nAt = shop.any(shop.text().size());
    shop.put({nAt, nAt + 1}, std::string(1, shop.byte()));
  }
}

void bytesPutIn(Workshop &shop) {
  const size_t nAt = shop.any(shop.text().size());
  const char sMarkup[] = {'<', '>', '"', '&', '/', '\0', '=', ' '};
  shop.put({nAt, nAt}, std::string(1 + shop.any(3), sMarkup[shop.any(sizeof sMarkup)]));
}

void bytesTakenOut(Workshop &shop) {
  const size_t nAt = shop.any(shop.text().size());
  shop.put({nAt, std::min(nAt + 1 + shop.any(8), shop.text().size())}, "");
}

void fileCut(Workshop &shop) {
  shop.put({shop.any(shop.text().size()), shop.text().size()}, "");
}

// --- Elements ---------------------------------------------------------------------------------------------

void elementRemoved(Workshop &shop) {
  shop.put(shop.inner().whole, "");
}

void elementDoubled(Workshop &shop) {
  const Range whole = shop.inner().whole;
  shop.put({whole.to, whole.to}, cut(shop.text(), whole));
}

void rename(Workshop &shop, const ElementAt &element, const std::string &sName) {
  if (element.endTag.size() > 0) shop.put({element.endTag.from + 2, element.endTag.to - 1}, sName);
  shop.put(element.name, sName);
}

void elementRenamed(Workshop &shop) {
  const ElementAt element = shop.element();
  rename(shop, element, cut(shop.text(), element.name) + (shop.any(2) == 0 ? "s" : "X"));
}

void elementRenamedLikeAnother(Workshop &shop) {
  const ElementAt element = shop.element();
  rename(shop, element, cut(shop.text(), shop.element().name));
}

void siblingsSwapped(Workshop &shop) {
  for (int nTry = 0; nTry < 100; ++nTry) {
    const Range first = shop.inner().whole;
    for (const ElementAt &next : shop.elements()) {
      const size_t nFrom = next.whole.from;
      if (nFrom < first.to || shop.text().find_first_not_of(" \t\r\n", first.to) != nFrom) continue;
      shop.put({first.from, next.whole.to}, cut(shop.text(), next.whole) + cut(shop.text(), first));
      return;
    }
  }
}

void elementMovedElsewhere(Workshop &shop) {
  const Range from = shop.inner().whole;
  const std::string sMoved = cut(shop.text(), from);
  const size_t nTo = shop.element().startTag.to;
  if (nTo > from.from && nTo < from.to) return;
  shop.put({nTo, nTo}, sMoved);
  shop.put(nTo <= from.from ? Range{from.from + sMoved.size(), from.to + sMoved.size()} : from, "");
}

void elementFromAnotherFile(Workshop &shop) {
  const std::string &sDonor = shop.donor();
  const std::vector<ElementAt> given = elementsOf(sDonor);
  shop.put(shop.inner().whole, cut(sDonor, given[shop.any(given.size())].whole));
}

void tagsCrossed(Workshop &shop) {
  for (int nTry = 0; nTry < 100; ++nTry) {
    const ElementAt &element = shop.inner();
    if (element.endTag.size() == 0) continue;
    shop.put(element.endTag, shop.any(2) == 0 ? "" : "</X>");
    return;
  }
}

void commentPutIn(Workshop &shop) {
  const ElementAt &element = shop.element();
  const size_t nAt = shop.any(2) == 0 ? element.startTag.to : element.whole.from;
  shop.put({nAt, nAt}, shop.any(2) == 0 ? "<!-- c -->" : "text");
}

// --- Attributes -------------------------------------------------------------------------------------------

void attributeRemoved(Workshop &shop) {
  shop.put(shop.attribute().whole, "");
}

void attributeDoubled(Workshop &shop) {
  const Range whole = shop.attribute().whole;
  shop.put({whole.to, whole.to}, " " + cut(shop.text(), whole));
}

void attributeRenamed(Workshop &shop) {
  const Range name = shop.attribute().name;
  const std::string sName = cut(shop.text(), name);
  const std::string sNames[] = {sName + "s", sName.substr(0, sName.size() - 1), "x" + sName,
                                cut(shop.text(), shop.attribute().name)};
  shop.put(name, sNames[shop.any(4)]);
}

void attributeAdded(Workshop &shop) {
  const size_t nAt = shop.element().name.to;
  shop.put({nAt, nAt}, " " + cut(shop.text(), shop.attribute().whole));
}

void valueEmptied(Workshop &shop) {
  shop.put(shop.attribute().value, "");
}

void valueChanged(Workshop &shop) {
  const Range value = shop.attribute().value;
  const std::string sValue = cut(shop.text(), value);
  const std::string sValues[] = {sValue + "x", "x" + sValue, sValue.substr(0, sValue.size() / 2),
                                 " " + sValue, sValue + " ", sValue + sValue};
  shop.put(value, sValues[shop.any(6)]);
}

void numberChanged(Workshop &shop) {
  static const std::string kNumbers[] = {
      "0",   "1",       "2",          "3",          "4",           "5",          "6",
      "7",   "8",       "9",          "10",         "11",          "12",         "-1",
      "-2",  "1000000", "2147483647", "2147483648", "-2147483648", "4294967297", "99999999999999999999",
      "1e3", "0x10",    "1x",         "one",        "+1",          " 1",         "1.5"};
  for (int nTry = 0; nTry < 200; ++nTry) {
    const AttributeAt &attribute = shop.attribute();
    const char cKind = shop.text()[attribute.name.from];
    if (cKind != 'n' && cKind != 'g') continue;
    shop.put(attribute.value, kNumbers[shop.any(std::size(kNumbers))]);
    return;
  }
  valueChanged(shop);
}

void valueGrown(Workshop &shop) {
  const size_t nSizes[] = {60, 61, 1024, 2048, 5000, 70000};
  shop.put(shop.attribute().value, std::string(nSizes[shop.any(6)], 'A'));
}

void valuesSwapped(Workshop &shop) {
  Range a = shop.attribute().value;
  Range b = shop.attribute().value;
  if (a.from > b.from) std::swap(a, b);
  if (a.from == b.from) return;
  const std::string sA = cut(shop.text(), a);
  const std::string sB = cut(shop.text(), b);
  shop.put(b, sA);
  shop.put(a, sB);
}

void valueFromAnotherFile(Workshop &shop) {
  const std::string &sDonor = shop.donor();
  const std::vector<ElementAt> given = elementsOf(sDonor);
  const Range value = shop.attribute().value;
  for (int nTry = 0; nTry < 100; ++nTry) {
    const ElementAt &element = given[shop.any(given.size())];
    if (element.attributes.empty()) continue;
    shop.put(value, cut(sDonor, element.attributes[shop.any(element.attributes.size())].value));
    return;
  }
}

struct Kind {
  const char *psName;
  void (*damage)(Workshop &);
};

constexpr Kind kKinds[] = {
    {"bytes changed", bytesChanged},
    {"bytes put in", bytesPutIn},
    {"bytes taken out", bytesTakenOut},
    {"file cut", fileCut},
    {"element removed", elementRemoved},
    {"element doubled", elementDoubled},
    {"element renamed", elementRenamed},
    {"element renamed like another", elementRenamedLikeAnother},
    {"siblings swapped", siblingsSwapped},
    {"element moved elsewhere", elementMovedElsewhere},
    {"element from another file", elementFromAnotherFile},
    {"tags crossed", tagsCrossed},
    {"comment or text put in", commentPutIn},
    {"attribute removed", attributeRemoved},
    {"attribute doubled", attributeDoubled},
    {"attribute renamed", attributeRenamed},
    {"attribute added", attributeAdded},
    {"value emptied", valueEmptied},
    {"value changed", valueChanged},
    {"number changed", numberChanged},
    {"value grown", valueGrown},
    {"values swapped", valuesSwapped},
    {"value from another file", valueFromAnotherFile},
};

}  // namespace

std::vector<std::string> mutationKinds() {
  std::vector<std::string> all;
  for (const Kind &kind : kKinds) all.emplace_back(kind.psName);
  return all;
}

Mutant mutate(const std::string &sText, const std::vector<std::string> &donors, unsigned nNumber) {
  Workshop shop(sText, donors, nNumber);
  const Kind &kind = kKinds[shop.any(std::size(kKinds))];
  kind.damage(shop);
  return {shop.text(), kind.psName, shop.what()};
}

}  // namespace hostile
