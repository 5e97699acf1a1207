// plugin.h: a format's registration and its entry points.
//
//   struct FixFormat {                                       // what a format supplies
//     static constexpr const char *kName = "fix";
//     static constexpr const kit::RecordType *kRecords[] = {&kFixMsg, &kFixField};
//     static void compile(Msg &msg);                         // throws Misconfigured
//     static void parse(kit::ParseCall &call);               // throws Fault
//     static void generate(kit::GenerateCall &call);
//   };
//   extern "C" KIT_EXPORT int fixInit(void *element) { return kit::registerFormat<FixFormat>(element); }
//
// The entry points check their arguments, catch everything (bad_alloc included), log one line and answer -1.
// The position (*pnNowLen) moves only on success.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "attributes.h"
#include "cvt_message.h"
#include "fault.h"
#include "output.h"
#include "path.h"
#include "values.h"

#define KIT_EXPORT __attribute__((visibility("default")))

namespace cvt::kit {

// One call of a definition's parse function.
struct ParseCall {
  const Msg *msg;
  ValueList *values;   // of the message level
  Store store;         // memory for values
  const char *buffer;  // offsets count from here
  size_t from;         // where this message starts
  size_t length;       // of the buffer
  size_t end;          // out: the offset behind the last byte used; starts as `from`
  Path path;
};

// One call of a definition's generate function.
struct GenerateCall {
  const Msg *msg;
  ValueList *values;
  MemPort memory;  // the message's pool node, for a generator that needs room
  Output out;
  Path path;
};

// Objects that belong to definitions: made while a definition is compiled, pointed to by its record, gone
// when the plug-in is unloaded, or initialised again after its definitions have gone.
template <class T>
class Attachments {
 public:
  T *add(std::unique_ptr<T> object) {
    m_objects.push_back(std::move(object));
    return m_objects.back().get();
  }
  // For the initialiser. A load that failed leaves its definitions to the next one, which uses them.
  void clearUnlessLeft() {
    if (gptFmtGlobalInfo == nullptr || gptFmtGlobalInfo->ptMsgList == nullptr) m_objects.clear();
  }

 private:
  std::vector<std::unique_ptr<T>> m_objects;
};

// --- What registerFormat is made of
// ---------------------------------------------------------------------------

void *readAny(std::span<const RecordType *const> types, void *element, const char *typeName);
void *writeAny(std::span<const RecordType *const> types, void *record, void *element, const char *typeName);

// Runs compile(msg) behind the barrier and sets the two functions, and nValueNum to the number of nodes
// unless compile has set it. 0, or -1 (logged).
int initFormat(Msg *msg, void (*compile)(Msg &), FncParse parse, FncGenerate generate);

int runParse(ValueListInfo *values, Msg *msg, const char *buffer, int *position, int length,
             void (*parse)(ParseCall &));
int runGenerate(ValueListInfo *values, Msg *msg, char *buffer, int *position, int length,
                void (*generate)(GenerateCall &));

template <class Format>
struct Entry {
  static void *read(void *element, char *typeName) { return readAny(Format::kRecords, element, typeName); }
  static void *write(void *record, void *element, char *, char *typeName) {
    return writeAny(Format::kRecords, record, element, typeName);
  }
  static int parse(void *, ValueListInfo *values, Msg *msg, char *buffer, int *position, int length) {
    return runParse(values, msg, buffer, position, length, &Format::parse);
  }
  static int generate(void *, ValueListInfo *values, Msg *msg, char *buffer, int *position, int length) {
    return runGenerate(values, msg, buffer, position, length, &Format::generate);
  }
  static int init(Msg *msg) { return initFormat(msg, &Format::compile, &parse, &generate); }
};

// Registers the format with the library. The plug-in's element may carry nWriteBack="1": records then
// remember their type with the binding, so that definitions can be written to XML again; it costs memory that
// a reload does not give back. 0, or -1 (logged).
int addFormat(const char *name, void *element, sttFncParseVoid read, sttFncGenVoid write, FncFotmatInit init);

template <class Format>
int registerFormat(void *element) {
  using E = Entry<Format>;
  return addFormat(Format::kName, element, &E::read, &E::write, &E::init);
}

}  // namespace cvt::kit
