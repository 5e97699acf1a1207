#include "shared_object.h"

#include <dlfcn.h>
#include <link.h>

namespace plug {

SharedObject::SharedObject(const std::string &file) {
  if (file.empty()) throw Error("the name of a module's file is empty; name a shared object");
  m_handle.reset(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (m_handle != nullptr) return;
  const char *const why = dlerror();
  throw Error(
      "module [" + file + "] cannot be opened: " + (why == nullptr ? "unknown reason" : why) +
      "; name a shared object, with its path or beside this library, whose own libraries are found too");
}

void SharedObject::Close::operator()(void *handle) const {
  dlclose(handle);
}

void *SharedObject::own(const char *symbol) const {
  void *const address = dlsym(m_handle.get(), symbol);
  return address != nullptr && holds(address) ? address : nullptr;
}

bool SharedObject::holds(const void *address) const {
  Dl_info info{};
  void *object = nullptr;
  link_map *self = nullptr;
  return dladdr1(address, &info, &object, RTLD_DL_LINKMAP) != 0 &&
         dlinfo(m_handle.get(), RTLD_DI_LINKMAP, &self) == 0 && object == self;
}

}  // namespace plug
