// barrier.h: the end of every exception: what an entry point of a plug-in runs its code behind.
#pragma once

#include <exception>
#include <new>

#include "fault.h"

namespace cvt::kit {

// Runs body(); whatever it throws is answered with -1 and told in one line: a Fault by log(fault), anything
// else here, as "KIND[NAME] ...".
template <class Body, class Log>
int guarded(const char *kind, const char *name, Body body, Log log) noexcept {
  try {
    try {
      body();
      return 0;
    } catch (const Fault &fault) {
      log(fault);
    } catch (const Misconfigured &error) {
      KIT_ERR("%s[%s] %s", kind, name, error.text().c_str());
    }
  } catch (const std::bad_alloc &) {
    KIT_ERR("%s[%s]: out of memory.", kind, name);
  } catch (const std::exception &error) {
    KIT_ERR("%s[%s]: internal error: %s.", kind, name, error.what());
  } catch (...) {
    KIT_ERR("%s[%s]: internal error.", kind, name);
  }
  return -1;
}

}  // namespace cvt::kit
