// w3_json.cpp: CSV as one JSON object a row, written by hand. Cells are quoted as RFC 4180 says; one that begins with a
// quote ends with one, and two inside stand for one.
#include <vector>

#include "text.h"

namespace {

using namespace bench;

class Rows {
 public:
  explicit Rows(std::string_view input) : m_input(input) { m_unquoted.reserve(input.size()); }

  bool atEnd() const { return m_input.empty(); }

  // The cells of the next row; those with doubled quotes are valid until the row after.
  void next(std::vector<std::string_view> &cells) {
    cells.clear();
    m_unquoted.clear();
    while (true) {
      cells.push_back(cell());
      if (m_input.empty()) throw Failure("the last row has no end");
      const char end = m_input.front();
      m_input.remove_prefix(1);
      if (end == '\n') return;
    }
  }

 private:
  std::string_view cell() {
    if (!m_input.empty() && m_input.front() == '"') return quoted();
    size_t size = 0;
    while (size < m_input.size() && m_input[size] != ',' && m_input[size] != '\n') {
      if (m_input[size] == '"') throw Failure("a quote inside a cell without quotes");
      ++size;
    }
    return taken(size);
  }

  std::string_view quoted() {
    m_input.remove_prefix(1);
    const std::string_view plain = upToQuote();
    if (!startsWithQuote()) return ended(plain);
    const size_t from = m_unquoted.size();
    m_unquoted += plain;
    while (startsWithQuote()) {
      m_unquoted += '"';
      m_input.remove_prefix(1);
      m_unquoted += upToQuote();
    }
    return ended(std::string_view(m_unquoted).substr(from));
  }

  bool startsWithQuote() const { return !m_input.empty() && m_input.front() == '"'; }

  // Takes the quote, too.
  std::string_view upToQuote() {
    const size_t size = m_input.find('"');
    if (size == std::string_view::npos) throw Failure("a quote is not closed");
    const std::string_view text = taken(size);
    m_input.remove_prefix(1);
    return text;
  }

  std::string_view ended(std::string_view text) const {
    if (!m_input.empty() && m_input.front() != ',' && m_input.front() != '\n') {
      throw Failure("text behind the quotes of a cell");
    }
    return text;
  }

  std::string_view taken(size_t size) {
    const std::string_view text = m_input.substr(0, size);
    m_input.remove_prefix(size);
    return text;
  }

  std::string_view m_input;
  std::string m_unquoted;  // never grows: cells look into it
};

// `{"name":` or `,"name":`, made once for each column.
std::vector<std::string> members(const std::vector<std::string_view> &names) {
  std::vector<std::string> out;
  for (const std::string_view name : names) {
    std::string text(2 * name.size() + 2, ' ');
    text.resize(static_cast<size_t>(putJson(text.data(), name) - text.data()));
    out.push_back((out.empty() ? "{" : ",") + text + ":");
  }
  return out;
}

size_t sizeOf(const std::vector<std::string> &texts) {
  size_t size = 0;
  for (const std::string &text : texts) size += text.size();
  return size;
}

char *putRow(char *to, const std::vector<std::string> &names, const std::vector<std::string_view> &cells) {
  for (size_t i = 0; i < cells.size(); ++i) to = putJson(put(to, names[i]), cells[i]);
  return put(to, "}\n");
}

void convert(std::string_view input, Output &output) {
  Rows rows(input);
  std::vector<std::string_view> cells;
  rows.next(cells);
  const std::vector<std::string> names = members(cells);
  const size_t fixed = sizeOf(names) + 2 * names.size() + 2;
  while (!rows.atEnd()) {
    rows.next(cells);
    if (cells.size() != names.size()) throw Failure("a row of " + std::to_string(cells.size()) + " cells");
    size_t size = fixed;
    for (const std::string_view cell : cells) size += 2 * cell.size();
    output.stop(putRow(output.room(size), names, cells));
  }
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 5, convert); });
}
