#include "library.h"

#include <dlfcn.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "target.h"
#include "toy_config.h"

namespace fuzz {
namespace {

namespace fs = std::filesystem;

void keepPlugins(const std::vector<std::string> &names) {
  for (const std::string &name : names) {
    const std::string file = CVT2_PLUGIN_DIR "/libcvt_plug_" + name + ".so";
    require(dlopen(file.c_str(), RTLD_NOW | RTLD_NODELETE) != nullptr, file + " can be opened");
  }
}

std::string rootFile(const std::vector<std::string> &names) {
  std::vector<std::string> plugins;
  plugins.reserve(names.size());
  for (const std::string &name : names) plugins.push_back("psName=\"" + name + "\"");
  test::RootFile root;
  root.sPlug = test::plugSection(plugins);
  root.sMessage = test::messageSection({"Message"});
  root.sConvert = "<Convert __ID=\"ptConvert\" psCvtPath=\"Convert\"/>";
  root.sId = "<Id __ID=\"ptId\" psIdPath=\"Id\" psIdInfoPath=\"IdInfo\"/>";
  return root.text();
}

fs::path inProject(const std::string &name) {
  return fs::path(CVT2_SOURCE_DIR) / name;
}

// The FormatInfo elements of a file of pipelines.
std::string pipelinesIn(const std::string &file) {
  const size_t start = file.find("<FormatInfo ");
  return start == file.npos ? "" : file.substr(start, file.rfind("</Id>") - start);
}

}  // namespace

const std::vector<std::string> &allPlugins() {
  static const std::vector<std::string> names = {"csv", "example", "fix", "iso8583", "json", "xml", "std"};
  return names;
}

Configuration::Configuration(const std::vector<std::string> &folders,
                             const std::vector<std::string> &plugins) {
  keepPlugins(plugins);
  file("All/root.xml", rootFile(plugins));
  m_pipelines =
      pipelinesIn(test::pipelines({{"fuzz", {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  addPipelines("");
  for (const std::string &folder : folders) {
    add(folder + "/Message", "Message").add(folder + "/Convert", "Convert");
    if (fs::exists(inProject(folder + "/IdInfo"))) {
      file("IdInfo/" + inProject(folder).filename().string() + ".xml",
           contentOf(folder + "/IdInfo/choice.xml"));
    }
    addPipelines(folder);
  }
}

// Of several files of pipelines the last one counts: all of them stand in one here.
void Configuration::addPipelines(const std::string &folder) {
  constexpr std::string_view kElement = "<FormatInfo ";
  std::string more = folder.empty() ? "" : pipelinesIn(contentOf(folder + "/Id/pipelines.xml"));
  if (!more.empty()) more.insert(kElement.size(), "__ID=\"ptNext\" ");
  m_pipelines += more;
  file("Id/pipelines.xml", "<Id>" + m_pipelines + "</Id>");
}

Configuration &Configuration::add(const std::string &from, const std::string &to) {
  const fs::path source = inProject(from);
  if (!fs::exists(source)) return *this;
  fs::create_directories(path(to));
  fs::copy(source, path(to), fs::copy_options::recursive | fs::copy_options::overwrite_existing);
  return *this;
}

Configuration &Configuration::clear(const std::string &folder) {
  fs::remove_all(path(folder));
  return *this;
}

std::string contentOf(const std::string &file) {
  std::ifstream in(inProject(file), std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<std::string> definitions() {
  std::vector<std::string> names;
  for (const StringList *pt = gptFmtGlobalInfo->ptMsgList; pt != nullptr; pt = pt->ptNext) {
    names.emplace_back(pt->psString);
  }
  return names;
}

Message parse(std::string name, std::string format, std::string &bytes) {
  int error = 0;
  return Message(
      cvtInitMessasge(name.data(), format.data(), bytes.data(), static_cast<int>(bytes.size()), &error));
}

std::optional<std::string> generate(InnerMessage &message, size_t room) {
  // One block of exactly that size for all messages: to make a new one takes longer than to write into it.
  static std::unique_ptr<char[]> buffer;
  static size_t size = 0;
  if (size != room) {
    buffer = std::make_unique<char[]>(room);
    size = room;
  }
  int length = static_cast<int>(room);
  if (cvtGenMessage(&message, buffer.get(), &length) != 0) return std::nullopt;
  return std::string(buffer.get(), static_cast<size_t>(length));
}

Message create(std::string name) {
  int error = 0;
  char format[] = "02";
  return Message(cvtNewMessage(name.data(), format, &error));
}

namespace {

std::string_view bytesOf(const Value &value) {
  return value.nLen <= 0 ? std::string_view()
                         : std::string_view(value.psValue, static_cast<size_t>(value.nLen));
}

bool equalLoops(ValueList *one, ValueList *other, int slot) {
  const int count = cvtGetLoopValueListNum(one, slot);
  if (count != cvtGetLoopValueListNum(other, slot)) return false;
  for (int i = 0; i < count; ++i) {
    if (!equal(cvtGetLoopValueList(one, slot, i), cvtGetLoopValueList(other, slot, i))) return false;
  }
  return true;
}

}  // namespace

bool equal(ValueList *one, ValueList *other) {
  if (one->nNow != other->nNow) return false;
  for (int slot = 0; slot < one->nNow; ++slot) {
    const Value *const a = cvtGetListValue(one, slot);
    const Value *const b = cvtGetListValue(other, slot);
    const bool loop = a->nLen < 0 || b->nLen < 0;
    if (loop ? !equalLoops(one, other, slot) : bytesOf(*a) != bytesOf(*b)) return false;
  }
  return true;
}

void expectRoundTrip(const std::string &name, std::string_view bytes) {
  std::string input(bytes);
  const Message first = parse(name, "fuzz", input);
  if (first == nullptr) return;
  std::optional<std::string> written = generate(*first);
  require(written.has_value(), name + " writes what it has read");
  const Message second = parse(name, "fuzz", *written);
  require(second != nullptr, name + " reads what it has written:\n" + *written);
  require(equal(first->tValueListInfo.ptValueList, second->tValueListInfo.ptValueList),
          name + " reads the same values from what it has written:\n" + *written);
}

void useDefinitions() {
  for (const std::string &name : definitions()) {
    if (const Message message = create(name)) generate(*message, 4096);
    std::string bytes = "<a b=\"1\">2</a>";
    if (const Message message = parse(name, "fuzz", bytes)) generate(*message, 4096);
  }
}

}  // namespace fuzz
