// shared_object.h: an open shared object, closed with its owner.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

namespace plug {

struct Error : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class SharedObject {
 public:
  // Throws an Error with the loader's text.
  explicit SharedObject(const std::string &file);

  // Address of a symbol that this object defines itself, not one of the libraries that it links; or null.
  void *own(const char *symbol) const;

  // Whether the address lies in this object.
  bool holds(const void *address) const;

  // Whether both are the same object, opened twice.
  bool operator==(const SharedObject &other) const { return m_handle == other.m_handle; }

 private:
  struct Close {
    void operator()(void *handle) const;
  };
  std::unique_ptr<void, Close> m_handle;
};

}  // namespace plug
