// message_calls.cpp: the message interface in any order: handles of several types, fields by name,
// repetitions, conversion, writing, reading, release. Every name is one that exists, or nearly.
#include <array>

#include "support/input.h"
#include "support/library.h"

namespace {

constexpr std::array kTypes = {"Order", "LinePAY", "Accounts", "NachaFile", "Camt053", "Nobody"};
constexpr std::array kFormats = {"pain", "line", "xml", "fuzz", "nobody"};
constexpr std::array kFields = {"Id",
                                "Lines",
                                "Lines.Code",
                                "Lines.Lots.Lot",
                                "Customer",
                                "Batches",
                                "Batches.Entries",
                                "Batches.CompanyName",
                                "Entries.Amount",
                                "Batches.Entries.Addenda",
                                "FileHeader",
                                "",
                                ".",
                                "Lines.",
                                "Stmt",
                                "Stmt.Ntry",
                                "Ntry.Amt",
                                "Phones",
                                "Phones.Number"};

class Calls {
 public:
  explicit Calls(fuzz::Input &input) : m_input(input) {}

  void run() {
    for (int calls = 0; calls < 200 && !m_input.atEnd(); ++calls) one();
    release();
  }

 private:
  static constexpr size_t kHandles = 4;

  fuzz::Message &handle() { return m_handles[m_input.below(kHandles)]; }

  std::string name() {
    const uint8_t choice = m_input.byte();
    if (choice == 255) {
      const std::string loop = m_input.string();
      return loop + "." + m_input.string();
    }
    return m_names.empty() || choice < 40 ? kFields[choice % kFields.size()]
                                          : m_names[choice % m_names.size()];
  }

  void one() {
    fuzz::Message &message = handle();
    switch (m_input.below(10)) {
      case 0:
        create(message);
        return;
      case 1:
        read(message);
        return;
      case 2:
        get(message);
        return;
      case 3:
        set(message);
        return;
      case 4:
        add(message);
        return;
      case 5:
        move(message);
        return;
      case 6:
        count(message);
        return;
      case 7:
        write(message);
        return;
      case 8:
        convert(message);
        return;
      default:
        message.reset();
        return;
    }
  }

  void create(fuzz::Message &message) {
    message = fuzz::create(kTypes[m_input.below(kTypes.size())]);
    learn(message);
  }

  void read(fuzz::Message &message) {
    message.reset();
    m_bytes[static_cast<size_t>(&message - m_handles.data())] = m_input.string();
    std::string &bytes = m_bytes[static_cast<size_t>(&message - m_handles.data())];
    message = fuzz::parse(kTypes[m_input.below(kTypes.size())], "fuzz", bytes);
    learn(message);
  }

  // The names of a definition, for the calls that follow.
  void learn(const fuzz::Message &message) {
    if (message == nullptr) return;
    m_names.clear();
    learn(message->ptMsgInfo->pptMessageIdx, "");
  }

  void learn(::Message **index, const std::string &before) {
    for (int i = 0; ::Message *const node = cvtIdxNode(index, i); ++i) {
      if (node->psNodeName == nullptr || m_names.size() > 200) continue;
      m_names.push_back(before + node->psNodeName);
      if (node->ptStructAttr == nullptr || node->ptStructAttr->nType != CVT_STRUCT_LOOP) continue;
      if (before.empty()) learn(cvtLoopGetIdx(node), node->psNodeName + std::string("."));
    }
  }

  void get(const fuzz::Message &message) {
    std::string path = name();
    int error = 0;
    const Value *const value = cvtGetNameValue(message.get(), path.data(), &error);
    if (value != nullptr && value->nLen > 0) {
      m_sum += static_cast<unsigned char>(value->psValue[0]) +
               static_cast<unsigned char>(value->psValue[value->nLen - 1]);
    }
  }

  void set(const fuzz::Message &message) {
    std::string path = name();
    std::string bytes = m_input.string();
    cvtSetNameValue(message.get(), path.data(), bytes.data(), static_cast<int>(bytes.size()));
  }

  void add(const fuzz::Message &message) {
    std::string path = name();
    cvtAddLoopTime(message.get(), path.data());
  }

  void move(const fuzz::Message &message) {
    std::string path = name();
    cvtSetLoopTime(message.get(), path.data(), m_input.byte() - 2);
  }

  void count(const fuzz::Message &message) {
    if (message == nullptr) return;
    std::string path = name();
    m_sum += static_cast<unsigned>(cvtGetLoopTime(message.get(), path.data()));
  }

  void write(const fuzz::Message &message) {
    if (message != nullptr) fuzz::generate(*message, size_t{16} * m_input.byte());
  }

  // The new message may share bytes with the first, so it goes before it.
  void convert(const fuzz::Message &message) {
    std::string format = kFormats[m_input.below(kFormats.size())];
    std::string buffer(4096, '\0');
    int length = static_cast<int>(buffer.size());
    int error = 0;
    const fuzz::Message target(
        cvtGenerateMessasge(message.get(), format.data(), buffer.data(), &length, &error));
  }

  void release() {
    for (fuzz::Message &message : m_handles) message.reset();
  }

  fuzz::Input &m_input;
  std::array<std::string, kHandles> m_bytes;
  std::array<fuzz::Message, kHandles> m_handles;
  std::vector<std::string> m_names;
  unsigned m_sum = 0;
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config(
      {"examples/nacha", "examples/envelope", "src/cvt/plug/xml/samples/order"});
  static const bool started = [] {
    config.add("src/cvt/plug/fix/samples/Message/Accounts.xml", "Message");
    config.add("src/cvt/plug/xml/samples/definitions/Camt053.xml", "Message");
    return config.start();
  }();
  fuzz::require(started, "the library starts");
  fuzz::Input input(data, size);
  Calls(input).run();
  fuzz::require(gnMsgNum == 0, "no handle is left");
  return 0;
}
