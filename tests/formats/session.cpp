#include "session.h"

#include <gtest/gtest.h>

#include "json.h"
#include "log_capture.h"
#include "toy_config.h"

namespace formats {

namespace {

constexpr char kGuard = '\x5A';
constexpr size_t kGuards = 64;

void dropFilledIn(Json &value) {
  if (value.is_array()) {
    for (Json &each : value) dropFilledIn(each);
  }
  if (!value.is_object()) return;
  for (auto it = value.begin(); it != value.end();) {
    dropFilledIn(*it);
    it = it.key().ends_with("Count") || it.key() == "Type" ? value.erase(it) : std::next(it);
  }
}

}  // namespace

void Session::define(const std::string &message, const Items &items, const std::string &charset) {
  defineText(message, m_format.definition(message, items, charset));
}

void Session::defineText(const std::string &message, const std::string &file) {
  m_tree.file("msg/" + message + ".xml", file);
}

int Session::start() {
  m_layouts = {};  // they belong to the definitions that go
  test::RootFile root;
  root.sPlug = test::plugSection({"psName=\"" + m_format.name() + "\""});
  root.sMessage = test::messageSection({"msg"});
  root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
  m_tree.file("All/root.xml", root.text());
  m_tree.file("id/pipelines.xml",
              test::pipelines({{"f", {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  return cvtInit(m_tree.arg());
}

Handle Session::create(const std::string &message) {
  int error = 0;
  return Handle(cvtNewMessage(test::cs(message.c_str()), test::cs("f"), &error));
}

Handle Session::fill(const std::string &message, const Json &fields) {
  Handle handle = create(message);
  const tool::JsonMessage json(Json{{"message", message}, {"fields", fields}}.dump());
  json.fill(m_layouts.of(*handle->ptMsgInfo), handle->tValueListInfo);
  return handle;
}

Handle Session::read(const std::string &message, const std::string &bytes, int *used) {
  m_kept.emplace_back(new char[bytes.size()]);
  char *const copy = m_kept.back().get();
  std::copy(bytes.begin(), bytes.end(), copy);
  Handle handle = create(message);
  int position = 0;
  const int length = static_cast<int>(bytes.size());
  if (handle->ptMsgInfo->fParse(nullptr, &handle->tValueListInfo, handle->ptMsgInfo, copy, &position,
                                length) != 0) {
    EXPECT_EQ(position, 0) << "the position moved though the message was refused";
    return nullptr;
  }
  EXPECT_LE(position, length);
  if (used != nullptr) *used = position;
  return handle;
}

std::optional<std::string> Session::write(const Handle &handle, size_t room) {
  std::string buffer(room + kGuards, kGuard);
  int length = static_cast<int>(room);
  const bool done = cvtGenMessage(handle.get(), buffer.data(), &length) == 0;
  EXPECT_EQ(buffer.substr(room), std::string(kGuards, kGuard)) << "written behind the buffer";
  if (!done) return std::nullopt;
  EXPECT_LE(length, static_cast<int>(room));
  return buffer.substr(0, static_cast<size_t>(length));
}

Json Session::values(const Handle &handle) {
  std::string line;
  tool::appendJson(line, *handle->ptMsgInfo, m_layouts.of(*handle->ptMsgInfo),
                   handle->tValueListInfo.ptValueList, false);
  Json fields = Json::parse(line)["fields"];
  dropFilledIn(fields);
  return fields;
}

}  // namespace formats
