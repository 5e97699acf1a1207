#include "catalogue.h"

#include "utf8.h"

namespace cvt::kit {

namespace {

constexpr size_t kWidth = 118;

// A text in double quotes: characters as they are, \\xNN for control characters and bytes that are none.
std::string shown(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string quoted = "\"";
  while (!text.empty()) {
    const Utf8Char c = utf8Char(text.data(), text.size());
    const auto length = static_cast<size_t>(c.length > 0 ? c.length : 1);
    const auto byte = static_cast<unsigned char>(text[0]);
    if (c.length <= 0 || c.code < 0x20 || c.code == 0x7F) {
      quoted += {'\\', 'x', kHex[byte >> 4], kHex[byte & 15]};
    } else {
      if (c.code == '"' || c.code == '\\') quoted += '\\';
      quoted += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return quoted + '"';
}

// A cell of code: a bar would end the cell, a backtick the code.
std::string code(const std::string &text) {
  std::string cell;
  for (const char c : text) {
    if (c == '|') cell += '\\';
    cell += c;
  }
  return text.find('`') == text.npos ? "`" + cell + "`" : "`` " + cell + " ``";
}

std::string row(const std::string &left, const std::string &right) {
  return "| " + left + " | " + right + " |\n";
}

std::string head(const char *left, const char *right) {
  return "\n" + row(left, right) + "|---|---|\n";
}

std::string wrapped(std::string_view text) {
  std::string lines;
  while (text.size() > kWidth) {
    const size_t blank = text.rfind(' ', kWidth);
    if (blank == text.npos) break;
    lines.append(text.substr(0, blank)).append("\n");
    text.remove_prefix(blank + 1);
  }
  return lines.append(text).append("\n");
}

std::string chapter(const FunctionRow &function) {
  std::string text =
      "\n### " + signature(function) + "\n\n" + wrapped("Result: " + std::string(function.help) + ".");
  if (function.parameters.size() > 0) text += head("argument", "meaning");
  for (const Parameter &parameter : function.parameters) {
    text += row(code(parameter.name), parameter.meaning);
  }
  text += head("example", "result");
  for (const Example &example : function.examples) {
    text += row(code(shownCall(function, example.arguments)),
                (example.match == Match::Shape ? "like " : "") + code(shown(example.result)));
  }
  if (function.refusals.size() > 0) text += head("refused", "error");
  for (const Example &refusal : function.refusals) {
    text += row(code(shownCall(function, refusal.arguments)), code(std::string(refusal.result)));
  }
  return text;
}

}  // namespace

std::string shownCall(const FunctionRow &function, const Arguments &arguments) {
  std::string list;
  for (const std::string_view argument : arguments) list += (list.empty() ? "" : ", ") + shown(argument);
  return std::string(function.name) + "(" + list + ")";
}

std::string catalogue(std::span<const Topic *const> topics) {
  std::string text;
  for (const Topic *topic : topics) {
    text += "\n## " + std::string(topic->title) + "\n\n" + wrapped(topic->about);
    for (const FunctionRow &function : topic->functions) text += chapter(function);
  }
  return text;
}

}  // namespace cvt::kit
