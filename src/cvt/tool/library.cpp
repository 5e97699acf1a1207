#include "library.h"

#include <filesystem>
#include <set>
#include <system_error>

#include "log.h"

namespace tool {
namespace {

constexpr size_t kNamesInError = 20;

std::string listed(const std::set<std::string> &names) {
  std::string out;
  size_t count = 0;
  for (const std::string &name : names) {
    if (count == kNamesInError) return out + ", ... (" + std::to_string(names.size()) + " in all)";
    out += (count++ == 0 ? "" : ", ") + name;
  }
  return out.empty() ? "none" : out;
}

bool isNamed(const char *known, const std::string &name) {
  return known != nullptr && name == known;
}

const IdFunc *parseChain(const FormatInfo &info) {
  return info.ptParseFunc;
}
const IdFunc *generateChain(const FormatInfo &info) {
  return info.ptGenFunc;
}

// The pipeline of that id, if it has the chain in question.
const FormatInfo &pipeline(const std::string &formatId, const IdFunc *chain(const FormatInfo &),
                           const std::string &purpose) {
  std::set<std::string> known;
  for (const FormatInfo *info = gptFormatInfo; info != nullptr; info = info->ptNext) {
    if (info->psFormatId == nullptr || chain(*info) == nullptr) continue;
    if (isNamed(info->psFormatId, formatId)) return *info;
    known.insert(info->psFormatId);
  }
  throw Failure(Exit::usage, purpose + " format '" + formatId + "'; known: " + listed(known));
}

[[noreturn]] void unusable(const std::string &config, const std::string &why) {
  throw Failure(Exit::config, "configuration " + config + why);
}

bool isDirectory(const std::string &config) {
  using Type = std::filesystem::file_type;
  std::error_code error;
  const Type type = std::filesystem::status(config, error).type();
  if (type == Type::not_found) unusable(config, " does not exist; check -c or CVT2_CONFIG");
  if (type == Type::none) unusable(config, ": " + error.message() + "; check -c or CVT2_CONFIG");
  return type == Type::directory;
}

// The start-up unit takes a root file apart at its last two slashes: its directory is written without links and
// dots. The last name stays what it is, a link too, which may lead elsewhere at the next reload.
std::string absolute(const std::filesystem::path &config) {
  namespace fs = std::filesystem;
  const fs::path name = config.filename();
  const bool bNamed = !name.empty() && name != "." && name != "..";
  std::error_code error;
  const fs::path directory = fs::canonical(bNamed ? "." / config.parent_path() : config, error);
  if (error) unusable(config, ": " + error.message() + "; check -c or CVT2_CONFIG");
  return bNamed ? directory / name : directory;
}

std::string rootOf(const std::string &config) {
  if (config.empty()) {
    throw Failure(Exit::config,
                  "no configuration: give a directory or a root file with -c, or set CVT2_CONFIG");
  }
  if (!isDirectory(config) && !config.ends_with(".xml")) {
    unusable(config, ": expected a directory or a file ending in .xml");
  }
  return absolute(config);
}

}  // namespace

Library::Library(const std::string &config) {
  std::string root = rootOf(config);
  log::begin();
  const int result = cvtInit(root.data());
  if (result == 0 && gptAllInfo != nullptr) {
    for (const std::string &notice : log::trail()) log::say("warning: " + notice);
    log::begin();
    return;
  }
  const std::string cause = log::cause();
  for (const std::string &notice : log::notices()) log::say("warning: " + notice);
  cvtEnd();
  if (result == 0) {
    unusable(config, ": expected one root file ending in .xml in " + root + "/All, found none");
  }
  unusable(config, " does not load: " + cause);
}

const FormatInfo &parsePipeline(const std::string &formatId) {
  return pipeline(formatId, parseChain, "-f: the configuration has no pipeline that parses");
}

const FormatInfo &generatePipeline(const std::string &formatId) {
  return pipeline(formatId, generateChain, "-t: the configuration has no pipeline that generates");
}

std::string knownMessages() {
  std::set<std::string> known;
  const StringList *list = gptFmtGlobalInfo == nullptr ? nullptr : gptFmtGlobalInfo->ptMsgList;
  for (; list != nullptr; list = list->ptNext) known.insert(list->psString);
  return listed(known);
}

void checkMessageName(const std::string &name) {
  std::string writable = name;
  if (gptFmtGlobalInfo != nullptr && cvtGetMsg(writable.data()) != nullptr) return;
  throw Failure(Exit::usage,
                "-m: the configuration has no message type '" + name + "'; known: " + knownMessages());
}

IdFunc *convertStep(const FormatInfo &pipeline) {
  for (IdFunc *step = pipeline.ptGenFunc; step != nullptr; step = step->ptNext) {
    if (isNamed(step->psFunctName, "pubConvert")) return step;
  }
  return nullptr;
}

std::string convertingFormats() {
  std::set<std::string> known;
  for (const FormatInfo *info = gptFormatInfo; info != nullptr; info = info->ptNext) {
    if (info->psFormatId != nullptr && convertStep(*info) != nullptr) known.insert(info->psFormatId);
  }
  return listed(known);
}

std::string knownTargets(const Msg &msg) {
  std::set<std::string> known;
  for (const auto *pair = static_cast<const IdCvtInfo *>(msg.pIdInfo); pair != nullptr; pair = pair->ptNext) {
    if (pair->psFormatId != nullptr) known.insert(*pair->psFormatId == 0 ? "any" : pair->psFormatId);
  }
  return listed(known);
}

void refuse(const std::string &otherwise, const std::string &advice) {
  const std::string cause = log::cause();
  if (log::has("AutoReload err!! Please Check Config File!!")) {
    throw Failure(Exit::config, "the configuration was changed and does not load any more: " + cause);
  }
  const std::string rule = log::rule();
  throw DataError((cause.empty() ? otherwise : cause) + (rule.empty() ? "" : " (" + rule + ")") +
                  (advice.empty() ? "" : " " + advice));
}

}  // namespace tool
