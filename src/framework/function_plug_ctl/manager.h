// manager.h: the modules that are loaded and the interfaces that are registered.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "plug_mgr.h"
#include "shared_object.h"

namespace plug {

// Failures are thrown as Error. Whatever a module does while it is called from here may come back in: every
// function may be called from within a module.
class Manager {
 public:
  // Returns the id of the module.
  int load(const std::string &file, T_RTCORE_CONTEXT *context);

  // Returns what the handler returned.
  int deliver(int id, int event, void *in, void *out);

  void unload(int id);

  void add(const std::string &kind, const std::string &name, void *table);

  // The table, or null.
  void *find(const std::string &kind, const std::string &name) const;

 private:
  struct Module {
    std::string file;
    SharedObject object;
    T_PLUG_MGR_PLUG_VAR record;
  };
  struct Interface {
    std::string kind;
    std::string name;
    void *table;
    int owner;  // id of a module, or kHost
  };
  class Running;

  static constexpr int kHost = 0;

  void open(int id, const std::string &file, T_RTCORE_CONTEXT *context);
  void start(int id);
  void close(int id);
  void expectNotLoaded(const std::string &file, const SharedObject &object) const;
  Module &module(int id);
  bool isRunning(int id) const;
  int ownerOf(const void *table) const;

  std::map<int, Module> m_modules;
  std::vector<Interface> m_interfaces;  // in the order of their registration
  std::vector<int> m_running;           // ids of the modules whose code runs, outermost first
  int m_lastId = kHost;
};

}  // namespace plug
