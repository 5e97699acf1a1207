#include "plugin.h"

#include <cstring>

#include "barrier.h"
#include "stt.h"

namespace cvt::kit {

namespace {

const char *nameOf(const Msg *msg) {
  const char *name = msg == nullptr ? nullptr : msg->psMsgName;
  return name == nullptr ? "" : name;
}

bool readsWriteBack(void *element) {
  if (element == nullptr) return false;
  char name[] = "nWriteBack";
  return sttParseXmlInt(element, name) == 1;
}

// Checks what both directions are handed.
bool usable(const ValueListInfo *values, const Msg *msg, const char *buffer, const int *position,
            int length) {
  const char *missing = values == nullptr     ? "ptValueListInfo"
                        : msg == nullptr      ? "ptMsg"
                        : buffer == nullptr   ? "psBuf"
                        : position == nullptr ? "pnNowLen"
                                              : nullptr;
  if (missing != nullptr) {
    KIT_ERR("[%s] is NULL", missing);
    return false;
  }
  if (*position >= 0 && *position <= length) return true;
  KIT_ERR("Msg[%s]: expected a position from 0 to the buffer's length %d, found %d.", nameOf(msg), length,
          *position);
  return false;
}

void report(const Msg *msg, const Path &path, const Fault &fault, size_t here) {
  const size_t offset = fault.offset() == Fault::kHere ? here : fault.offset();
  KIT_ERR("Msg[%s] Field[%s] Offset[%zu]: %s", nameOf(msg), path.text().c_str(), offset,
          fault.text().c_str());
}

const RecordType *typeNamed(std::span<const RecordType *const> types, const char *typeName) {
  if (typeName == nullptr) return nullptr;
  for (const RecordType *type : types) {
    if (std::strcmp(type->name, typeName) == 0) return type;
  }
  return nullptr;
}

}  // namespace

void *readAny(std::span<const RecordType *const> types, void *element, const char *typeName) {
  const RecordType *type = typeNamed(types, typeName);
  if (type == nullptr) return nullptr;
  void *record = nullptr;
  const int status = guarded(
      "Msg", "", [&] { record = readRecord(*type, element); }, [](const Fault &) {});
  if (status != 0) nGRet = -1;
  return record;
}

void *writeAny(std::span<const RecordType *const> types, void *record, void *element, const char *typeName) {
  const RecordType *type = typeNamed(types, typeName);
  if (type == nullptr) return nullptr;
  void *written = nullptr;
  const int status = guarded(
      "Msg", "", [&] { written = writeRecord(*type, record, element); }, [](const Fault &) {});
  if (status != 0) nGRet = -1;
  return written;
}

int initFormat(Msg *msg, void (*compile)(Msg &), FncParse parse, FncGenerate generate) {
  if (msg == nullptr) {
    KIT_ERR("[ptMsg] is NULL");
    return -1;
  }
  const int status = guarded(
      "Msg", nameOf(msg), [&] { compile(*msg); },
      [&](const Fault &fault) { KIT_ERR("Msg[%s]: %s", nameOf(msg), fault.text().c_str()); });
  if (status != 0) return status;
  if (msg->nValueNum < 0) msg->nValueNum = msg->nFieldNum;
  msg->fParse = parse;
  msg->fGen = generate;
  return 0;
}

int runParse(ValueListInfo *values, Msg *msg, const char *buffer, int *position, int length,
             void (*parse)(ParseCall &)) {
  if (!usable(values, msg, buffer, position, length)) return -1;
  const auto from = static_cast<size_t>(*position);
  ParseCall call{
      msg, values->ptValueList, Store(values->ptMemNode), buffer, from, static_cast<size_t>(length), from,
      {}};
  const int status = guarded(
      "Msg", nameOf(msg), [&] { parse(call); },
      [&](const Fault &fault) { report(msg, call.path, fault, call.end); });
  if (status == 0) *position = static_cast<int>(call.end);
  return status;
}

int runGenerate(ValueListInfo *values, Msg *msg, char *buffer, int *position, int length,
                void (*generate)(GenerateCall &)) {
  if (!usable(values, msg, buffer, position, length)) return -1;
  GenerateCall call{msg,
                    values->ptValueList,
                    values->ptMemNode,
                    Output(buffer, static_cast<size_t>(*position), static_cast<size_t>(length)),
                    {}};
  const int status = guarded(
      "Msg", nameOf(msg), [&] { generate(call); },
      [&](const Fault &fault) { report(msg, call.path, fault, call.out.offset()); });
  if (status == 0) *position = static_cast<int>(call.out.offset());
  return status;
}

int addFormat(const char *name, void *element, sttFncParseVoid read, sttFncGenVoid write,
              FncFotmatInit init) {
  rememberTypes(readsWriteBack(element));
  return cvtFmtAddPlug(const_cast<char *>(name), read, write, init);
}

}  // namespace cvt::kit
