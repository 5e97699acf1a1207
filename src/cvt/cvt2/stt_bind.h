// stt_bind.h: makes the four functions of a bound record from its field table. Private.
//
// The table is a macro STT_TABLE_<T>(F) with one line a field, in declared order:
//
//   #define STT_TABLE_Plug(F) F(STRING,  psName)
//                             F(STRING,  psPath)
//                             F(STRING,  psFunction)
//                             F(VOID_BY, ptInfo, GetPlug(psName, psPath, psFunction, ptXmlNode))
//                             F(NEXT,    ptNext, Plug)
//   STT_BIND(Plug)
//
//   STRING, INT, CHAR, VOID       name
//   STRUCT                        name, record type
//   NEXT                          name, record type: the next record of a list. No field is read behind it
//   LAST                          name, record type: a STRUCT behind which no field is read
//   VOID_OF, VOID_FOR             name, expression: the record type that is wanted; null: any. A record of another
//                                 type is left out, or kept and marked: see isMisfit
//   STRING_BY, VOID_BY            name, custom parse step: an expression that may use ptXmlNode and the fields
//                                 read so far
//   STRUCT_BY                     name, record type, type as declared, custom parse step
//   SECTION                       name, element name, section initialiser, section writer
//   DERIVED                       name, expression over the other fields: set by the Make step, never in XML
//   FOUND                         name, expression: DERIVED, and null is a failure
//   DERIVED_NULL                  name: set to NULL by the Make step, never in XML
//
// Every step is a statement that is compiled and, when it fails, logged as it is written: STT_TRY.
#pragma once

#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "cvt_heap.h"
#include "cvt_log.h"
#include "cvt_memory.h"
#include "cvt_string.h"
#include "stt.h"

namespace cvt::bind {

// Clears the error flag before a step.
void begin();

// After a failing step: logs the statement as the unit that binds the record, and the place in the configuration
// when the element is known.
void failed(const char *psFile, int nLine, const char *psFunction, const char *psStatement, void *ptXmlNode);

// Logs file, line and element, once for each failure: the innermost element that is known wins.
void place(void *ptXmlNode);

// Whether a record may be read or written one level further down: nesting that is too deep, and a list that is
// written by recursion, are refused, with nGRet -1 (logged), before the stack ends.
bool mayDescend(void *ptXmlNode);

// Whether a Void field's record is of the type that its users take it for: its element is named psType, or psType is
// null. One that is not is logged.
bool isWanted(void *ptXmlNode, const char *psName, const void *ptRecord, const char *psType);

// Records that are kept where another type is wanted; forgotten with the registry.
void markMisfit(const void *ptRecord);
bool isMisfit(const void *ptRecord);
extern bool g_bMisfits;  // whether there are any

// A record pointer of whatever type the statement declares.
struct AnyRecord {
  void *p;
  template <class T>
  operator T *() const {
    return static_cast<T *>(p);
  }
};

// Releases a string that was read, also when a later step fails: the record keeps its own interned copy.
class Text {
 public:
  explicit Text(char *ps = nullptr) : m_ps(ps) {}
  ~Text() { sttFreeXmlString(m_ps); }
  Text(const Text &) = delete;
  Text &operator=(const Text &) = delete;

  char *get() const { return m_ps; }
  void take(Text &from) { std::swap(m_ps, from.m_ps); }

 private:
  char *m_ps;
};

// A record that is being read. It waits for the record that its NEXT or LAST field refers to, which waits for
// another: a list takes heap, not stack.
class Reading {
 public:
  explicit Reading(void *ptXmlNode) : m_ptXmlNode(ptXmlNode) {}
  virtual ~Reading() = default;
  Reading(const Reading &) = delete;
  Reading &operator=(const Reading &) = delete;

  // Reads the fields in front of the link; false, with nGRet -1 (logged), when one cannot be read.
  virtual bool fields() = 0;
  // The reading of the record that the link refers to; null when there is none.
  virtual std::unique_ptr<Reading> link() = 0;
  // Logs that the link could not be read. Returns null.
  virtual void *linkFailed() = 0;
  // Makes the record; null when that fails.
  virtual void *make(void *ptLinked) = 0;

 protected:
  void *const m_ptXmlNode;
};
using ReadingPtr = std::unique_ptr<Reading>;

template <class T>
ReadingPtr newReading(void *ptXmlNode) {
  if (ptXmlNode == nullptr) return nullptr;
  auto *const pt = new (std::nothrow) T(ptXmlNode);
  if (pt == nullptr) heapExhausted(sizeof(T));
  return ReadingPtr(pt);
}

// Reads a record and those behind it, as if each were read by the one before it: fields from the first record to
// the last, records made from the last to the first.
void *readChain(Reading &first);

inline char *name(const char *ps) {
  return const_cast<char *>(ps);
}

// The element from which a Struct or Next field is read; null when there is none.
void *structElement(void *ptXmlNode, const char *psType, const char *psName);
void *nextElement(void *ptXmlNode, const char *psType, const char *psName);

// A new element for a Struct or Next field; null, with nGRet -1, when there is no room for one.
void *newStructElement(void *ptXmlNode, char *psName, char *psTypeName);
void *newNextElement(void *ptXmlNode, char *psName, char *psTypeName);

// The field readers and writers under their own names, for literal names. Functions of records are called by
// their own type here.
inline char *sttParseXmlString(void *ptXmlNode, const char *psName) {
  return ::sttParseXmlString(ptXmlNode, name(psName));
}
inline int sttParseXmlInt(void *ptXmlNode, const char *psName) {
  return ::sttParseXmlInt(ptXmlNode, name(psName));
}
inline char sttParseXmlChar(void *ptXmlNode, const char *psName) {
  return ::sttParseXmlChar(ptXmlNode, name(psName));
}
inline void *sttParseXmlVoid(void *ptXmlNode, const char *psName) {
  return ::sttParseXmlVoid(ptXmlNode, name(psName));
}
template <class T>
AnyRecord readRecord(void *ptElement, const char *psType, T *(*fFunc)(void *, char *)) {
  if (ptElement == nullptr || !mayDescend(ptElement)) return {nullptr};
  return {fFunc(ptElement, name(psType))};
}
template <class T>
AnyRecord sttParseXmlStruct(void *ptXmlNode, const char *psType, const char *psName,
                            T *(*fFunc)(void *, char *)) {
  return readRecord(structElement(ptXmlNode, psType, psName), psType, fFunc);
}
inline void sttGenerateXmlString(void *ptXmlNode, char *psString, const char *psName) {
  ::sttGenerateXmlString(ptXmlNode, psString, name(psName));
}
inline void sttGenerateXmlInt(void *ptXmlNode, int nInt, const char *psName) {
  ::sttGenerateXmlInt(ptXmlNode, nInt, name(psName));
}
inline void sttGenerateXmlChar(void *ptXmlNode, char caChar, const char *psName) {
  ::sttGenerateXmlChar(ptXmlNode, caChar, name(psName));
}
inline void sttGenerateXmlVoid(void *ptXmlNode, void *ptVoid, const char *psName) {
  ::sttGenerateXmlVoid(ptXmlNode, ptVoid, name(psName));
}
template <class T>
void sttGenerateXmlStruct(void *ptXmlNode, T *ptStruct, const char *psName, const char *psTypeName,
                          void *(*fFunc)(T *, void *, char *)) {
  if (ptStruct == nullptr) return;
  void *const ptElement = newStructElement(ptXmlNode, name(psName), name(psTypeName));
  if (ptElement != nullptr) fFunc(ptStruct, ptElement, name(psTypeName));
}
inline void sttGenerateXmlStruct(void *ptXmlNode, void *ptStruct, const char *psName, const char *psTypeName,
                                 void *(*fFunc)(void *, void *, char *, char *)) {
  ::sttGenerateXmlStruct(ptXmlNode, ptStruct, name(psName), name(psTypeName),
                         reinterpret_cast<void *>(fFunc));
}
template <class T>
void sttGenerateXmlNext(void *ptXmlNode, T *ptStruct, const char *psName, const char *psTypeName,
                        void *(*fFunc)(T *, void *, char *)) {
  if (ptStruct == nullptr) return;
  void *const ptElement = newNextElement(ptXmlNode, name(psName), name(psTypeName));
  if (ptElement != nullptr) fFunc(ptStruct, ptElement, name(psTypeName));
}

// One row of a module's dispatcher pair.
struct Type {
  const char *psName;
  void *(*fParse)(void *ptXmlNode, char *psStructType);
  void *(*fGen)(void *ptStruct, void *ptXmlNode, char *psStructType);
};

template <size_t N>
const Type *find(const Type (&types)[N], const char *psStructType) {
  if (psStructType == nullptr) return nullptr;
  for (const Type &type : types) {
    if (std::strcmp(type.psName, psStructType) == 0) return &type;
  }
  return nullptr;
}

}  // namespace cvt::bind

// clang-format off

#define STT_FAILED(psStatement) \
  cvt::bind::failed(__FILE_NAME__, __LINE__, psFunc, psStatement, ptPlace)

// The text of a statement is logged as it stands, so what a macro puts into it takes no parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)

// Runs a statement; if it leaves nGRet at -1, logs its own text followed by " is Err!!" and returns null.
// ptPlace is the element whose place in the configuration is logged, too, or null; psFunc the name of the function.
#define STT_TRY(...)                                                                     \
  cvt::bind::begin();                                                                    \
  __VA_ARGS__;                                                                           \
  if (nGRet == -1) {                                                                     \
    STT_FAILED(#__VA_ARGS__);                                                            \
    return {};                                                                      \
  }

// The same for an assignment that fails by yielding null.
#define STT_TRY_FOUND(...)                                                               \
  cvt::bind::begin();                                                                    \
  if ((__VA_ARGS__) == nullptr) {                                                        \
    nGRet = -1;                                                                          \
    STT_FAILED(#__VA_ARGS__);                                                            \
    return {};                                                                      \
  }

// The text that a read step has just put into `name` goes with the end of the parse function.
#define STT_OWN(name) cvt::bind::Text name##_owner(name);

// Each kind: the class that says how a value is kept (TEXT is interned, PLAIN stored, DERIVED computed), its
// C type, the statement that reads it and the one that writes it.
#define STT_CLASS_STRING TEXT
#define STT_TYPE_STRING() char *
#define STT_READ_STRING(name) STT_TRY(char * name = sttParseXmlString(ptXmlNode, #name)) STT_OWN(name)
#define STT_WRITE_STRING(name) STT_TRY(sttGenerateXmlString(ptXmlNode, p->name, #name))

#define STT_CLASS_STRING_BY TEXT
#define STT_TYPE_STRING_BY(...) char *
#define STT_READ_STRING_BY(name, ...) STT_TRY(char * name = __VA_ARGS__) STT_OWN(name)
#define STT_WRITE_STRING_BY(name, ...) STT_WRITE_STRING(name)

#define STT_CLASS_INT PLAIN
#define STT_TYPE_INT() int
#define STT_READ_INT(name) STT_TRY(int name = sttParseXmlInt(ptXmlNode, #name))
#define STT_WRITE_INT(name) STT_TRY(sttGenerateXmlInt(ptXmlNode, p->name, #name))

#define STT_CLASS_CHAR PLAIN
#define STT_TYPE_CHAR() char
#define STT_READ_CHAR(name) STT_TRY(char name = sttParseXmlChar(ptXmlNode, #name))
#define STT_WRITE_CHAR(name) STT_TRY(sttGenerateXmlChar(ptXmlNode, p->name, #name))

#define STT_CLASS_VOID PLAIN
#define STT_TYPE_VOID() void *
#define STT_READ_VOID(name) STT_TRY(void * name = sttParseXmlVoid(ptXmlNode, #name))
#define STT_WRITE_VOID(name) STT_TRY(sttGenerateXmlVoid(ptXmlNode, p->name, #name))

#define STT_CLASS_VOID_OF PLAIN
#define STT_TYPE_VOID_OF(...) void *
#define STT_READ_VOID_OF(name, ...) \
  STT_READ_VOID(name) if (!isWanted(ptXmlNode, #name, name, __VA_ARGS__)) name = nullptr;
#define STT_WRITE_VOID_OF(name, ...) STT_WRITE_VOID(name)

#define STT_CLASS_VOID_FOR PLAIN
#define STT_TYPE_VOID_FOR(...) void *
#define STT_READ_VOID_FOR(name, ...) \
  STT_READ_VOID(name) if (!isWanted(ptXmlNode, #name, name, __VA_ARGS__)) markMisfit(name);
#define STT_WRITE_VOID_FOR(name, ...) STT_WRITE_VOID(name)

#define STT_CLASS_VOID_BY PLAIN
#define STT_TYPE_VOID_BY(...) void *
#define STT_READ_VOID_BY(name, ...) STT_TRY(void * name = __VA_ARGS__)
#define STT_WRITE_VOID_BY(name, ...) STT_WRITE_VOID(name)

#define STT_CLASS_STRUCT PLAIN
#define STT_TYPE_STRUCT(U) U *
#define STT_READ_STRUCT(name, U) STT_TRY(U * name = sttParseXmlStruct(ptXmlNode, #U, #name, sttParseXml##U))
#define STT_WRITE_STRUCT(name, U) STT_TRY(sttGenerateXmlStruct(ptXmlNode, p->name, #name, #U, sttGenXml##U))

#define STT_CLASS_STRUCT_BY PLAIN
#define STT_TYPE_STRUCT_BY(U, ...) U *
#define STT_READ_STRUCT_BY(name, U, decl, ...) STT_TRY(decl name = __VA_ARGS__)
#define STT_WRITE_STRUCT_BY(name, U, ...) STT_WRITE_STRUCT(name, U)

#define STT_CLASS_NEXT LINK
#define STT_TYPE_NEXT(U) U *
#define STT_READ_NEXT(...)
#define STT_LINK_NEXT(name, U) \
  return newReading##U(nextElement(m_ptXmlNode, #U, #name));
#define STT_LINKED_NEXT(name, U) "struct " #U " * " #name " = sttParseXmlNext(ptXmlNode, \"" #U "\", \"" #name "\", sttParseXml" #U ")"
#define STT_WRITE_NEXT(name, U) STT_TRY(sttGenerateXmlNext(ptXmlNode, p->name, #name, #U, sttGenXml##U))

#define STT_CLASS_LAST LINK
#define STT_TYPE_LAST(U) U *
#define STT_READ_LAST(...)
#define STT_LINK_LAST(name, U) \
  return newReading##U(structElement(m_ptXmlNode, #U, #name));
#define STT_LINKED_LAST(name, U) #U " * " #name " = sttParseXmlStruct(ptXmlNode, \"" #U "\", \"" #name "\", sttParseXml" #U ")"
#define STT_WRITE_LAST(name, U) STT_WRITE_STRUCT(name, U)

#define STT_CLASS_SECTION PLAIN
#define STT_TYPE_SECTION(...) void *
#define STT_READ_SECTION(name, U, init, gen) STT_TRY(void * name = sttParseXmlStruct(ptXmlNode, #U, #name, init))
#define STT_WRITE_SECTION(name, U, init, gen) STT_TRY(sttGenerateXmlStruct(ptXmlNode, p->name, #name, #U, gen))

#define STT_CLASS_DERIVED DERIVED
#define STT_READ_DERIVED(...)
#define STT_WRITE_DERIVED(...)
#define STT_SET_DERIVED(name, ...) STT_TRY(p->name = __VA_ARGS__)

#define STT_CLASS_FOUND DERIVED
#define STT_READ_FOUND(...)
#define STT_WRITE_FOUND(...)
#define STT_SET_FOUND(name, ...) STT_TRY_FOUND(p->name = __VA_ARGS__)

#define STT_CLASS_DERIVED_NULL DERIVED
#define STT_READ_DERIVED_NULL(...)
#define STT_WRITE_DERIVED_NULL(...)
#define STT_SET_DERIVED_NULL(name) STT_TRY(p->name = NULL)

// What is done with each field, by class.
#define STT_PARAM_TEXT(kind, name, ...) , STT_TYPE_##kind(__VA_ARGS__) name
#define STT_PARAM_PLAIN(kind, name, ...) , STT_TYPE_##kind(__VA_ARGS__) name
#define STT_PARAM_LINK(kind, name, ...) , STT_TYPE_##kind(__VA_ARGS__) name
#define STT_PARAM_DERIVED(...)
#define STT_ARG_TEXT(kind, name, ...) , name
#define STT_ARG_PLAIN(kind, name, ...) , name
#define STT_ARG_LINK(kind, name, ...) , name
#define STT_ARG_DERIVED(...)
#define STT_INTERN_TEXT(kind, name, ...) p->name = name == nullptr ? nullptr : cvtStrDup(name);
#define STT_INTERN_PLAIN(...)
#define STT_INTERN_LINK(...)
#define STT_INTERN_DERIVED(...)
#define STT_DERIVE_TEXT(...)
#define STT_DERIVE_PLAIN(...)
#define STT_DERIVE_LINK(...)
#define STT_DERIVE_DERIVED(kind, ...) STT_SET_##kind(__VA_ARGS__)
#define STT_STORE_TEXT(...)
#define STT_STORE_PLAIN(kind, name, ...) p->name = name;
#define STT_STORE_LINK(kind, name, ...) p->name = name;
#define STT_STORE_DERIVED(...)
#define STT_MEMBER_TEXT(kind, name, ...) cvt::bind::Text name;
#define STT_MEMBER_PLAIN(kind, name, ...) STT_TYPE_##kind(__VA_ARGS__) name{};
#define STT_MEMBER_LINK(kind, name, ...) STT_TYPE_##kind(__VA_ARGS__) name{};
#define STT_MEMBER_DERIVED(...)
#define STT_KEEP_TEXT(kind, name, ...) kept.name.take(name##_owner);
#define STT_KEEP_PLAIN(kind, name, ...) kept.name = name;
#define STT_KEEP_LINK(...)
#define STT_KEEP_DERIVED(...)
#define STT_KEPT_TEXT(kind, name, ...) , m_kept.name.get()
#define STT_KEPT_PLAIN(kind, name, ...) , m_kept.name
#define STT_KEPT_LINK(kind, name, ...) , m_kept.name
#define STT_KEPT_DERIVED(...)
#define STT_AHEAD_TEXT(...)
#define STT_AHEAD_PLAIN(...)
#define STT_AHEAD_LINK(kind, name, U) static cvt::bind::ReadingPtr newReading##U(void *ptXmlNode);
#define STT_AHEAD_DERIVED(...)
#define STT_FOLLOW_TEXT(...)
#define STT_FOLLOW_PLAIN(...)
#define STT_FOLLOW_LINK(kind, ...) STT_LINK_##kind(__VA_ARGS__)
#define STT_FOLLOW_DERIVED(...)
#define STT_LINKED_TEXT(...)
#define STT_LINKED_PLAIN(...)
#define STT_LINKED_LINK(kind, ...) STT_FAILED(STT_LINKED_##kind(__VA_ARGS__));
#define STT_LINKED_DERIVED(...)
#define STT_SETLINK_TEXT(...)
#define STT_SETLINK_PLAIN(...)
#define STT_SETLINK_LINK(kind, name, U) m_kept.name = static_cast<U *>(ptLinked);
#define STT_SETLINK_DERIVED(...)

#define STT_CAT_(a, b) a##b
#define STT_CAT(a, b) STT_CAT_(a, b)
#define STT_PARAM(kind, ...) STT_CAT(STT_PARAM_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_ARG(kind, ...) STT_CAT(STT_ARG_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_INTERN(kind, ...) STT_CAT(STT_INTERN_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_DERIVE(kind, ...) STT_CAT(STT_DERIVE_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_STORE(kind, ...) STT_CAT(STT_STORE_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_MEMBER(kind, ...) STT_CAT(STT_MEMBER_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_KEEP(kind, ...) STT_CAT(STT_KEEP_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_KEPT(kind, ...) STT_CAT(STT_KEPT_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_AHEAD(kind, ...) STT_CAT(STT_AHEAD_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_FOLLOW(kind, ...) STT_CAT(STT_FOLLOW_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_LINKED(kind, ...) STT_CAT(STT_LINKED_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_SETLINK(kind, ...) STT_CAT(STT_SETLINK_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_READ(kind, ...) STT_READ_##kind(__VA_ARGS__)
#define STT_WRITE(kind, ...) STT_WRITE_##kind(__VA_ARGS__)

#define STT_TAIL_(first, ...) __VA_ARGS__
#define STT_TAIL(...) STT_TAIL_(__VA_ARGS__)

// The four functions of T; the parse function makes the record with `create`.
#define STT_BIND_WITH(T, create)                                                          \
  struct T *sttMake##T(struct T *p STT_TABLE_##T(STT_PARAM)) {                            \
    if (p == nullptr) return nullptr;                                                     \
    [[maybe_unused]] void *const ptPlace = nullptr;                                       \
    [[maybe_unused]] const char *const psFunc = "sttMake" #T;                             \
    STT_TABLE_##T(STT_INTERN)                                                             \
    STT_TABLE_##T(STT_DERIVE)                                                             \
    STT_TABLE_##T(STT_STORE)                                                              \
    return p;                                                                             \
  }                                                                                       \
  struct T *sttNew##T(STT_TAIL(STT_TABLE_##T(STT_PARAM))) {                               \
    auto *p = static_cast<struct T *>(cvtMemMalloc(static_cast<int>(sizeof(struct T))));  \
    return sttMake##T(p STT_TABLE_##T(STT_ARG));                                          \
  }                                                                                       \
  void *sttGenXml##T(struct T *p, void *ptXmlNode, char *) {                              \
    using namespace cvt::bind;                                                            \
    if (p == nullptr || ptXmlNode == nullptr) return nullptr;                             \
    void *const ptPlace = nullptr; /* a failed writer has freed the element */            \
    const char *const psFunc = "sttGenXml" #T;                                            \
    STT_TABLE_##T(STT_WRITE)                                                              \
    return ptXmlNode;                                                                     \
  }                                                                                       \
  namespace {                                                                             \
  struct Kept##T {                                                                        \
    STT_TABLE_##T(STT_MEMBER)                                                             \
  };                                                                                      \
  bool readFields([[maybe_unused]] void *ptXmlNode, Kept##T &kept) {                      \
    using namespace cvt::bind;                                                            \
    void *const ptPlace = ptXmlNode;                                                      \
    const char *const psFunc = "sttParseXml" #T;                                          \
    STT_TABLE_##T(STT_READ)                                                               \
    STT_TABLE_##T(STT_KEEP)                                                               \
    return true;                                                                          \
  }                                                                                       \
  }                                                                                       \
  STT_TABLE_##T(STT_AHEAD)                                                                \
  namespace {                                                                             \
  class Reading##T final : public cvt::bind::Reading {                                    \
   public:                                                                                \
    using Reading::Reading;                                                               \
    bool fields() override { return readFields(m_ptXmlNode, m_kept); }                    \
    cvt::bind::ReadingPtr link() override {                                               \
      using namespace cvt::bind;                                                          \
      STT_TABLE_##T(STT_FOLLOW)                                                           \
      return nullptr;                                                                     \
    }                                                                                     \
    void *linkFailed() override {                                                         \
      [[maybe_unused]] void *const ptPlace = m_ptXmlNode;                                 \
      [[maybe_unused]] const char *const psFunc = "sttParseXml" #T;                       \
      STT_TABLE_##T(STT_LINKED)                                                           \
      return nullptr;                                                                     \
    }                                                                                     \
    void *make([[maybe_unused]] void *ptLinked) override {                                \
      STT_TABLE_##T(STT_SETLINK)                                                          \
      struct T *const p = create(STT_TAIL(STT_TABLE_##T(STT_KEPT)));                      \
      if (p == nullptr && nGRet == -1) cvt::bind::place(m_ptXmlNode);                     \
      return p;                                                                           \
    }                                                                                     \
                                                                                          \
   private:                                                                               \
    Kept##T m_kept;                                                                       \
  };                                                                                      \
  }                                                                                       \
  [[maybe_unused]] static cvt::bind::ReadingPtr newReading##T(void *ptXmlNode) {          \
    return cvt::bind::newReading<Reading##T>(ptXmlNode);                                  \
  }                                                                                       \
  struct T *sttParseXml##T(void *ptXmlNode, char *) {                                     \
    if (ptXmlNode == nullptr) return nullptr;                                             \
    Reading##T first(ptXmlNode);                                                          \
    return static_cast<struct T *>(cvt::bind::readChain(first));                          \
  }

#define STT_BIND(T) STT_BIND_WITH(T, sttNew##T)

// The dispatcher pair of a module, its types in the order in which names are compared.
#define STT_TYPE(T)                                                                                        \
  cvt::bind::Type {                                                                                        \
    #T, [](void *ptXmlNode, char *psType) -> void * { return sttParseXml##T(ptXmlNode, psType); },         \
        [](void *p, void *ptNode, char *psType) { return sttGenXml##T(static_cast<struct T *>(p), ptNode, psType); } \
  }
#define STT_BIND_MODULE(module, ...)                                                                \
  static const cvt::bind::Type f_types_##module[] = {__VA_ARGS__};                                  \
  void *sttParseVoid##module(void *ptXmlNode, char *psStructType) {                                 \
    const auto *type = cvt::bind::find(f_types_##module, psStructType);                             \
    return type == nullptr ? nullptr : type->fParse(ptXmlNode, psStructType);                       \
  }                                                                                                 \
  void *sttGenVoid##module(void *ptSruct, void *ptNode, char *, char *psStructType) {               \
    const auto *type = cvt::bind::find(f_types_##module, psStructType);                             \
    return type == nullptr ? nullptr : type->fGen(ptSruct, ptNode, psStructType);                   \
  }

// NOLINTEND(bugprone-macro-parentheses)
// clang-format on
