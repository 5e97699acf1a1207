// table.cpp: code tables: files of keys and values, read when the configuration is loaded.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "cvt.h"
#include "kit/utf8.h"
#include "settings.h"
#include "topics.h"

namespace cvt::functions {

namespace {

namespace fs = std::filesystem;

constexpr size_t kWhole = kit::Fault::kHere;
constexpr const char *kExtension = ".txt";

struct Entry {
  std::string_view value;
  size_t line = 0;
};

// One file: lines of a key, a separator and a value. The views are into its text.
class Table {
 public:
  Table(std::string file, std::string text) : m_file(std::move(file)), m_text(std::move(text)) {}
  Table(const Table &) = delete;
  Table &operator=(const Table &) = delete;

  // Reads the lines; false (logged) when one cannot be read.
  bool read(std::string_view separator) {
    std::string_view rest = m_text;
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
    for (m_line = 1; !rest.empty(); ++m_line) {
      const size_t end = std::min(rest.find('\n'), rest.size());
      std::string_view row = rest.substr(0, end);
      rest.remove_prefix(std::min(end + 1, rest.size()));
      if (row.ends_with('\r')) row.remove_suffix(1);
      if (const size_t at = row.find('\r'); at != row.npos) {
        return refuse("LF or CR LF between lines", "a CR alone at column " + std::to_string(at + 1),
                      "Write the file with LF");
      }
      if (!row.empty() && row[0] != '#' && !add(row, separator)) return false;
    }
    return true;
  }

  // Null when the table has no such key.
  const std::string_view *find(std::string_view key) const {
    const auto entry = m_entries.find(key);
    return entry == m_entries.end() ? nullptr : &entry->second.value;
  }

 private:
  bool refuse(const std::string &expected, const std::string &found, const char *advice) const {
    KIT_ERR("File[%s:%zu]: %s", m_file.c_str(), m_line,
            kit::Fault(kWhole, expected, found, advice).text().c_str());
    return false;
  }

  bool add(std::string_view row, std::string_view separator) {
    for (size_t at = 0; at < row.size();) {
      const kit::Utf8Char c = kit::utf8Char(row.data() + at, row.size() - at);
      if (c.length <= 0) {
        return refuse("UTF-8", "a byte that is none at column " + std::to_string(at + 1),
                      "Write the file in UTF-8");
      }
      at += static_cast<size_t>(c.length);
    }
    const size_t end = row.find(separator);
    if (end == row.npos) {
      return refuse("a key, " + kit::quoted(std::string(separator)) + " and a value", "no separator",
                    "A comment begins with #");
    }
    Entry added;
    added.value = row.substr(end + separator.size());
    added.line = m_line;
    const auto [entry, isNew] = m_entries.try_emplace(row.substr(0, end), added);
    if (isNew) return true;
    return refuse("a key that no line before has", "the one of line " + std::to_string(entry->second.line),
                  "Remove one of them");
  }

  std::string m_file;
  std::string m_text;
  size_t m_line = 0;
  std::unordered_map<std::string_view, Entry> m_entries;
};

// The tables of a directory, by name.
class Tables {
 public:
  // False (logged) when one of them cannot be read.
  bool read(const fs::path &directory, std::string_view separator, size_t most) {
    size_t left = most;
    for (const fs::path &file : filesOf(directory)) {
      std::string text;
      if (!load(file, left, text)) {
        const bool tooLong = text.size() > left;
        KIT_ERR("File[%s]: expected %zu bytes in all tables at most, found %s. %s.", file.c_str(), most,
                tooLong ? "more" : "a file that cannot be read",
                tooLong ? "Shorten them, or raise nTableBytes" : "Look at its permissions");
        return false;
      }
      left -= text.size();
      auto table = std::make_unique<Table>(file.string(), std::move(text));
      if (!table->read(separator)) return false;
      m_tables.emplace(file.stem().string(), std::move(table));
    }
    return true;
  }

  const Table *find(std::string_view name) const {
    const auto table = m_tables.find(name);
    return table == m_tables.end() ? nullptr : table->second.get();
  }

  // Their names, for an error.
  std::string names() const {
    constexpr size_t kEnough = 200;
    std::string all;
    for (const auto &[name, table] : m_tables) {
      if (all.size() + name.size() > kEnough) return all + ", ...";
      all += (all.empty() ? "" : ", ") + name;
    }
    return all;
  }

 private:
  static std::vector<fs::path> filesOf(const fs::path &directory) {
    std::vector<fs::path> files;
    for (const fs::directory_entry &entry : fs::directory_iterator(directory)) {
      if (entry.path().extension() == kExtension) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
  }

  static bool load(const fs::path &file, size_t most, std::string &text) {
    std::ifstream in(file, std::ios::binary);
    char piece[4096];
    while (in.read(piece, sizeof piece), in.gcount() > 0) {
      text.append(piece, static_cast<size_t>(in.gcount()));
      if (text.size() > most) return false;
    }
    return in.eof();
  }

  std::map<std::string, std::unique_ptr<Table>, std::less<>> m_tables;
};

Tables f_tables;

void lookUp(kit::Call &call) {
  const Table *table = f_tables.find(call.text(0));
  if (table == nullptr) {
    const std::string names = f_tables.names();
    call.refuse(0, kWhole, names.empty() ? "a table" : "one of the tables " + names, "none of that name",
                "A table is a file NAME.txt in the directory psTablePath of the plug-in");
  }
  const std::string_view *value = table->find(call.text(1));
  if (value == nullptr && !call.has(2)) {
    call.refuse(1, kWhole, "a key of the table", "none",
                "Add it to the table, or give a default behind the key");
  }
  call.answer(value == nullptr ? call.text(2) : *value);
}

// clang-format off
constexpr kit::FunctionRow kFunctions[] = {
    {"lookUp",
     {{"table", "name of a table: of its file, without `.txt`"}, {"key", "a key of the table, byte by byte"},
      {"default", "the result for a key that the table does not have; without it such a key is refused"}},
     2, 3, lookUp,
     "the value of the key",
     {{{"Country", "DE"}, "Germany"},
      {{"Country", "XX", "unknown"}, "unknown"},
      {{"Country", "CI"}, "Côte d'Ivoire"},
      {{"Country", "ZZ"}, ""}},
     {{{"Country", "de"}, "Arg[2] Len[2]: expected a key of the table, found none. Add it to the table, or give a "
                          "default behind the key."},
      {{"Currency", "EUR"}, "Arg[1] Len[8]: expected one of the tables Country, found none of that name. A table is a "
                            "file NAME.txt in the directory psTablePath of the plug-in."}}},
};
// clang-format on

}  // namespace

constinit const kit::Topic kTable = kit::topic<kFunctions>(
    "Code tables",
    "Tables are files that are read when the configuration is loaded; "
    "[the plug-in's manual](../src/cvt/plug/std/README.md#code-tables) says how they look.");

void configureTables(const Settings &settings) {
  f_tables = Tables();
  if (settings.psTablePath == nullptr) return;
  const char *separator = settings.psTableSeparator == nullptr ? "\t" : settings.psTableSeparator;
  if (*separator == 0) {
    throw kit::Misconfigured("", &settings, "at least one character in psTableSeparator", "none",
                             "Without the attribute it is a tab");
  }
  const fs::path root = gpsRootPath == nullptr ? "" : gpsRootPath;
  const fs::path directory = root / settings.psTablePath;
  std::error_code error;
  if (!fs::is_directory(directory, error)) {
    throw kit::Misconfigured("", &settings, "a directory in psTablePath", "none at " + directory.string(),
                             "A path that is not absolute counts from the configuration root");
  }
  try {
    if (f_tables.read(directory, separator, static_cast<size_t>(settings.nTableBytes))) return;
  } catch (const fs::filesystem_error &failure) {
    throw kit::Misconfigured("", &settings, "a directory in psTablePath that can be read",
                             failure.code().message());
  }
  throw kit::Misconfigured("", &settings, "code tables that can be read", "one that cannot",
                           "The line before says which");
}

}  // namespace cvt::functions
