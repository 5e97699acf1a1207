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
//   STRUCT, NEXT                  name, record type
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
#include <type_traits>

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

// Whether a record may be read or written one level further down. Lists are worked off by recursion, a level for
// each record, so a very long one is refused, with nGRet -1 (logged), before the stack ends.
bool mayDescend(void *ptXmlNode);

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
  explicit Text(char *ps) : m_ps(ps) {}
  ~Text() { sttFreeXmlString(m_ps); }
  Text(const Text &) = delete;
  Text &operator=(const Text &) = delete;

 private:
  char *m_ps;
};

inline char *name(const char *ps) { return const_cast<char *>(ps); }

// The element from which a Struct or Next field is read; null when there is none.
void *structElement(void *ptXmlNode, char *psType, char *psName);
void *nextElement(void *ptXmlNode, char *psType, char *psName);

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
AnyRecord sttParseXmlStruct(void *ptXmlNode, const char *psType, const char *psName, T *(*fFunc)(void *, char *)) {
  return readRecord(structElement(ptXmlNode, name(psType), name(psName)), psType, fFunc);
}
template <class T>
AnyRecord sttParseXmlNext(void *ptXmlNode, const char *psType, const char *psName, T *(*fFunc)(void *, char *)) {
  return readRecord(nextElement(ptXmlNode, name(psType), name(psName)), psType, fFunc);
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
  ::sttGenerateXmlStruct(ptXmlNode, ptStruct, name(psName), name(psTypeName), reinterpret_cast<void *>(fFunc));
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
  cvt::bind::failed(__FILE_NAME__, __LINE__, static_cast<const char *>(__func__), psStatement, ptPlace)

// Runs a statement; if it leaves nGRet at -1, logs its own text followed by " is Err!!" and returns null.
// ptPlace is the element whose place in the configuration is logged, too, or null.
#define STT_TRY(...)                                                                     \
  cvt::bind::begin();                                                                    \
  __VA_ARGS__;                                                                           \
  if (nGRet == -1) {                                                                     \
    STT_FAILED(#__VA_ARGS__);                                                            \
    return nullptr;                                                                      \
  }

// The same for an assignment that fails by yielding null.
#define STT_TRY_FOUND(...)                                                               \
  cvt::bind::begin();                                                                    \
  if ((__VA_ARGS__) == nullptr) {                                                        \
    nGRet = -1;                                                                          \
    STT_FAILED(#__VA_ARGS__);                                                            \
    return nullptr;                                                                      \
  }

// The text that a read step has just put into `name` goes with the end of the parse function.
#define STT_OWN(name) const cvt::bind::Text name##_owner(name);

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

#define STT_CLASS_NEXT PLAIN
#define STT_TYPE_NEXT(U) U *
#define STT_READ_NEXT(name, U) STT_TRY(struct U * name = sttParseXmlNext(ptXmlNode, #U, #name, sttParseXml##U))
#define STT_WRITE_NEXT(name, U) STT_TRY(sttGenerateXmlNext(ptXmlNode, p->name, #name, #U, sttGenXml##U))

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
#define STT_PARAM_DERIVED(...)
#define STT_ARG_TEXT(kind, name, ...) , name
#define STT_ARG_PLAIN(kind, name, ...) , name
#define STT_ARG_DERIVED(...)
#define STT_INTERN_TEXT(kind, name, ...) p->name = name == nullptr ? nullptr : cvtStrDup(name);
#define STT_INTERN_PLAIN(...)
#define STT_INTERN_DERIVED(...)
#define STT_DERIVE_TEXT(...)
#define STT_DERIVE_PLAIN(...)
#define STT_DERIVE_DERIVED(kind, ...) STT_SET_##kind(__VA_ARGS__)
#define STT_STORE_TEXT(...)
#define STT_STORE_PLAIN(kind, name, ...) p->name = name;
#define STT_STORE_DERIVED(...)

#define STT_CAT_(a, b) a##b
#define STT_CAT(a, b) STT_CAT_(a, b)
#define STT_PARAM(kind, ...) STT_CAT(STT_PARAM_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_ARG(kind, ...) STT_CAT(STT_ARG_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_INTERN(kind, ...) STT_CAT(STT_INTERN_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_DERIVE(kind, ...) STT_CAT(STT_DERIVE_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_STORE(kind, ...) STT_CAT(STT_STORE_, STT_CLASS_##kind)(kind, __VA_ARGS__)
#define STT_READ(kind, ...) STT_READ_##kind(__VA_ARGS__)
#define STT_WRITE(kind, ...) STT_WRITE_##kind(__VA_ARGS__)

#define STT_TAIL_(first, ...) __VA_ARGS__
#define STT_TAIL(...) STT_TAIL_(__VA_ARGS__)

// The four functions of T; the parse function makes the record with `create`.
#define STT_BIND_WITH(T, create)                                                          \
  struct T *sttMake##T(struct T *p STT_TABLE_##T(STT_PARAM)) {                            \
    if (p == nullptr) return nullptr;                                                     \
    [[maybe_unused]] void *const ptPlace = nullptr;                                       \
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
    STT_TABLE_##T(STT_WRITE)                                                              \
    return ptXmlNode;                                                                     \
  }                                                                                       \
  struct T *sttParseXml##T(void *ptXmlNode, char *) {                                     \
    using namespace cvt::bind;                                                            \
    if (ptXmlNode == nullptr) return nullptr;                                             \
    void *const ptPlace = ptXmlNode;                                                      \
    STT_TABLE_##T(STT_READ)                                                               \
    struct T *p = create(STT_TAIL(STT_TABLE_##T(STT_ARG)));                               \
    if (p == nullptr && nGRet == -1) cvt::bind::place(ptXmlNode);                         \
    return p;                                                                             \
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

// clang-format on
