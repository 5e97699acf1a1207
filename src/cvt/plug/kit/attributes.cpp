#include "attributes.h"

#include <libxml/tree.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "cvt_string.h"
#include "log.h"
#include "stt.h"

namespace cvt::kit {

namespace {

// No text that XML can carry begins with these bytes, so a "String" is never taken for a record.
constexpr char kMagic[8] = {1, 2, 'k', 'i', 't', 4, 5, 6};
constexpr const char *kBindingId = "__ID";

bool f_rememberTypes = false;

const char *text(const xmlChar *s) {
  return reinterpret_cast<const char *>(s);
}
const xmlChar *xml(const char *s) {
  return reinterpret_cast<const xmlChar *>(s);
}

template <class T>
T member(const void *record, const Attribute &row) {
  T value;
  std::memcpy(&value, static_cast<const char *>(record) + row.offset, sizeof value);
  return value;
}

template <class T>
void setMember(void *record, const Attribute &row, T value) {
  std::memcpy(static_cast<char *>(record) + row.offset, &value, sizeof value);
}

char *intern(const char *s) {
  return s == nullptr ? nullptr : cvtStrDup(const_cast<char *>(s));
}

std::vector<const char *> names(const RecordType &type) {
  std::vector<const char *> all;
  for (const Attribute &row : type.attributes) all.push_back(row.name);
  return all;
}

std::string joined(std::span<const char *const> words) {
  std::string all;
  for (const char *word : words) all += (all.empty() ? "" : ", ") + std::string(word);
  return all;
}

// What may stand in the attribute, for messages and the manual.
std::string allowed(const Attribute &row) {
  switch (row.kind) {
    case AttributeKind::Int:
      return "a number from " + std::to_string(row.min) + " to " + std::to_string(row.max);
    case AttributeKind::Flag:
      return "0 or 1";
    case AttributeKind::Text:
      return "text";
    case AttributeKind::Word:
      return "one of " + joined(row.words);
    case AttributeKind::Byte:
      return "one ASCII character, or 0xNN";
  }
  return {};
}

// "expected X, found Y. ADVICE" at a place of the configuration file.
bool refuse(const xmlNode *element, const char *attribute, const std::string &expected,
            const std::string &found, const std::string &advice) {
  const char *file = element->doc == nullptr ? nullptr : text(element->doc->URL);
  const std::string where = attribute == nullptr ? "" : " Attribute[" + std::string(attribute) + "]";
  KIT_ERR("File[%s:%ld] Element[%s]%s: expected %s, found %s.%s%s", file == nullptr ? "" : file,
          xmlGetLineNo(element), text(element->name), where.c_str(), expected.c_str(), found.c_str(),
          advice.empty() ? "" : " ", advice.c_str());
  return false;
}

bool parseInt(const std::string &value, int base, int &number) {
  const char *end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, number, base);
  return error == std::errc() && stop == end;
}

bool parseWord(const Attribute &row, const std::string &value, int &position) {
  for (size_t i = 0; i < row.words.size(); ++i) {
    if (value == row.words[i]) {
      position = static_cast<int>(i);
      return true;
    }
  }
  return false;
}

bool parseByte(const std::string &value, int &byte) {
  if (value.size() == 1 && value[0] >= 0x20 && value[0] < 0x7F) {
    byte = static_cast<unsigned char>(value[0]);
    return true;
  }
  if (value.size() != 4 || !value.starts_with("0x") || value[2] == '-') return false;
  if (!parseInt(value.substr(2), 16, byte)) return false;
  byte += kRawByte;
  return true;
}

// Puts the attribute's text into the record; false when it may not stand there.
bool store(void *record, const Attribute &row, const std::string &value) {
  int number = 0;
  switch (row.kind) {
    case AttributeKind::Int:
    case AttributeKind::Flag:
      if (!parseInt(value, 10, number) || number < row.min || number > row.max) return false;
      break;
    case AttributeKind::Word:
      if (!parseWord(row, value, number)) return false;
      break;
    case AttributeKind::Byte:
      if (!parseByte(value, number)) return false;
      break;
    case AttributeKind::Text:
      setMember(record, row, intern(value.c_str()));
      return true;
  }
  setMember(record, row, number);
  return true;
}

std::string shown(const Attribute &row, const void *record) {
  if (row.kind == AttributeKind::Text) {
    const char *value = member<const char *>(record, row);
    return value == nullptr ? "" : value;
  }
  const int number = member<int>(record, row);
  if (row.kind == AttributeKind::Word) return row.words[static_cast<size_t>(number)];
  if (row.kind != AttributeKind::Byte) return std::to_string(number);
  if (number < kRawByte) return {static_cast<char>(number)};
  static constexpr char kHex[] = "0123456789ABCDEF";
  return {'0', 'x', kHex[(number >> 4) & 15], kHex[number & 15]};
}

bool isDefault(const Attribute &row, const void *record) {
  if (row.kind != AttributeKind::Text) return member<int>(record, row) == row.fallback;
  const char *value = member<const char *>(record, row);
  if (value == nullptr || row.fallbackText == nullptr) return value == row.fallbackText;
  return std::strcmp(value, row.fallbackText) == 0;
}

std::string shownDefault(const Attribute &row) {
  if (row.required) return "required";
  if (row.kind == AttributeKind::Text) return row.fallbackText == nullptr ? "" : row.fallbackText;
  const bool given = row.kind == AttributeKind::Word ? row.fallback >= 0 : row.fallback >= row.min;
  if (!given) return "";
  if (row.kind == AttributeKind::Word) return row.words[static_cast<size_t>(row.fallback)];
  if (row.kind == AttributeKind::Byte && row.fallback == ' ') return "blank";
  if (row.kind == AttributeKind::Byte) return {static_cast<char>(row.fallback)};
  return std::to_string(row.fallback);
}

bool refuseUnknown(const RecordType &type, const xmlNode *element, const char *found) {
  const std::vector<const char *> known = names(type);
  const char *near = nearest(found, known);
  return refuse(element, found, "one of " + joined(known), found,
                near == nullptr ? "Remove it" : "Write " + std::string(near));
}

// The text of an attribute that is there.
std::string textOf(const xmlNode *element, const char *attribute) {
  const std::unique_ptr<char, decltype(&xmlFreeString)> value(
      xmlGetNodeAttr(const_cast<xmlNode *>(element), const_cast<char *>(attribute)), xmlFreeString);
  if (value == nullptr) throw std::bad_alloc();
  return value.get();
}

bool readAttribute(const RecordType &type, void *record, const xmlNode *element, const xmlAttr *attribute) {
  const char *name = text(attribute->name);
  for (const Attribute &row : type.attributes) {
    if (attribute->ns != nullptr || std::strcmp(row.name, name) != 0) continue;
    const std::string value = textOf(element, row.name);
    if (store(record, row, value)) return true;
    const char *near = nearest(value.c_str(), row.words);
    return refuse(element, name, allowed(row), quoted(value),
                  near == nullptr ? "" : "Write " + std::string(near));
  }
  return refuseUnknown(type, element, name);
}

bool readAttributes(const RecordType &type, void *record, const xmlNode *element) {
  for (const xmlAttr *attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
    if (std::strcmp(text(attribute->name), kBindingId) == 0) continue;
    if (!readAttribute(type, record, element, attribute)) return false;
  }
  for (const Attribute &row : type.attributes) {
    if (row.required && xmlHasProp(const_cast<xmlNode *>(element), xml(row.name)) == nullptr) {
      return refuse(element, row.name, allowed(row), "no such attribute", std::string("It is ") + row.help);
    }
  }
  for (const xmlNode *child = element->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) {
      return refuse(child, nullptr, "nothing inside " + std::string(type.name), text(child->name),
                    "Write it behind that element");
    }
  }
  return true;
}

bool passesCheck(const RecordType &type, const void *record, const xmlNode *element) {
  const char *complaint = type.check == nullptr ? nullptr : type.check(record);
  if (complaint == nullptr) return true;
  KIT_ERR("File[%s] Element[%s]: %s", recordPlace(record).c_str(), text(element->name), complaint);
  return false;
}

RecordHead headOf(const void *record) {
  RecordHead head;
  std::memcpy(&head, record, sizeof head);
  return head;
}

// The magic is compared byte by byte up to the first difference: a shorter text ends in a zero byte, which is
// one.
bool hasMagic(const void *record) {
  return record != nullptr && std::strncmp(static_cast<const char *>(record), kMagic, sizeof kMagic) == 0;
}

size_t distance(const std::string &a, const std::string &b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j < row.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const bool same = std::tolower(static_cast<unsigned char>(a[i - 1])) ==
                        std::tolower(static_cast<unsigned char>(b[j - 1]));
      const size_t best = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (same ? 0U : 1U)});
      diagonal = row[j];
      row[j] = best;
    }
  }
  return row[b.size()];
}

}  // namespace

void rememberTypes(bool on) {
  f_rememberTypes = on;
}

void *newRecord(const RecordType &type) {
  void *record = cvtMemMalloc(static_cast<int>(type.size));
  RecordHead head{};
  std::memcpy(head.caMagic, kMagic, sizeof kMagic);
  head.ptType = &type;
  std::memcpy(record, &head, sizeof head);
  for (const Attribute &row : type.attributes) {
    if (row.kind == AttributeKind::Text) {
      setMember(record, row, intern(row.fallbackText));
    } else {
      setMember(record, row, row.fallback);
    }
  }
  return record;
}

void *readRecord(const RecordType &type, void *xmlElement) {
  if (xmlElement == nullptr) return nullptr;
  const auto *element = static_cast<const xmlNode *>(xmlElement);
  void *record = newRecord(type);
  RecordHead head = headOf(record);
  head.psFile = element->doc == nullptr ? nullptr : intern(text(element->doc->URL));
  head.nLine = static_cast<int>(xmlGetLineNo(element));
  std::memcpy(record, &head, sizeof head);
  if (!readAttributes(type, record, element) || !passesCheck(type, record, element)) {
    nGRet = -1;
    return nullptr;
  }
  if (f_rememberTypes) sttSetVoidType(record, const_cast<char *>(type.name));
  return record;
}

void *writeRecord(const RecordType &type, const void *record, void *xmlElement) {
  if (!isRecord(record, type) || xmlElement == nullptr) {
    nGRet = -1;
    return nullptr;
  }
  auto *element = static_cast<xmlNode *>(xmlElement);
  for (const Attribute &row : type.attributes) {
    if (isDefault(row, record) && !row.required) continue;
    if (xmlSetProp(element, xml(row.name), xml(shown(row, record).c_str())) == nullptr) {
      nGRet = -1;
      return nullptr;
    }
  }
  return xmlElement;
}

bool isRecord(const void *record, const RecordType &type) {
  return hasMagic(record) && headOf(record).ptType == &type;
}

bool isPlugRecord(const void *record) {
  return hasMagic(record);
}

std::string recordName(const void *record) {
  if (record == nullptr) return "nothing";
  return hasMagic(record) ? headOf(record).ptType->name : "a record of another kind";
}

std::string recordPlace(const void *record) {
  if (!hasMagic(record)) return {};
  const RecordHead head = headOf(record);
  if (head.psFile == nullptr) return {};
  return std::string(head.psFile) + ":" + std::to_string(head.nLine);
}

std::string markdownTable(const RecordType &type) {
  std::string table = "| attribute | values | default | meaning |\n|---|---|---|---|\n";
  for (const Attribute &row : type.attributes) {
    table += "| `" + std::string(row.name) + "` | " + allowed(row) + " | " + shownDefault(row) + " | " +
             row.help + " |\n";
  }
  return table;
}

const char *nearest(const char *name, std::span<const char *const> known) {
  const char *best = nullptr;
  const size_t length = std::strlen(name);
  size_t bestDistance = length / 3 + 2;
  for (const char *candidate : known) {
    const size_t other = std::strlen(candidate);
    const size_t least = length > other ? length - other : other - length;
    if (least >= bestDistance) continue;  // names come from messages, too, and may be megabytes long
    const size_t d = distance(name, candidate);
    if (d < bestDistance) {
      bestDistance = d;
      best = candidate;
    }
  }
  return best;
}

}  // namespace cvt::kit
