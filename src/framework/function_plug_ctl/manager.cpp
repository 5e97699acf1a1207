#include "manager.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace plug {
namespace {

using Entry = int (*)(T_PLUG_MGR_PLUG_VAR *);

// Calls a module's function; an exception that it lets out becomes an Error.
template <class Call>
int guarded(const std::string &what, Call call) {
  try {
    return call();
  } catch (const std::exception &e) {
    throw Error(what + " let an exception out: " + e.what() + "; catch it in the module and return a number");
  } catch (...) {
    throw Error(what + " let an exception out; catch it in the module and return a number");
  }
}

}  // namespace

// Says, as long as it lives, that the module's code runs.
class Manager::Running {
 public:
  Running(Manager &manager, int id) : m_ids(manager.m_running) { m_ids.push_back(id); }
  ~Running() { m_ids.pop_back(); }
  Running(const Running &) = delete;
  Running &operator=(const Running &) = delete;

 private:
  std::vector<int> &m_ids;
};

int Manager::load(const std::string &file, T_RTCORE_CONTEXT *context) {
  const int id = ++m_lastId;
  try {
    open(id, file, context);
    start(id);
  } catch (...) {
    close(id);
    throw;
  }
  return id;
}

// What a module registers from its first constructor on is its own.
void Manager::open(int id, const std::string &file, T_RTCORE_CONTEXT *context) {
  const Running running(*this, id);
  SharedObject object(file);
  expectNotLoaded(file, object);
  m_modules.emplace(id, Module{file, std::move(object), {id, nullptr, context}});
}

void Manager::expectNotLoaded(const std::string &file, const SharedObject &object) const {
  for (const auto &[id, loaded] : m_modules) {
    if (loaded.object == object) {
      throw Error("module [" + file + "] is loaded already, with the id " + std::to_string(id) +
                  "; use that, or unload it first");
    }
  }
}

void Manager::start(int id) {
  Module &loaded = module(id);
  const auto entry = reinterpret_cast<Entry>(loaded.object.own("cvtPlugLoad"));
  if (entry == nullptr) {
    throw Error("module [" + loaded.file +
                "] does not define cvtPlugLoad; export from it: int cvtPlugLoad(T_PLUG_MGR_PLUG_VAR "
                "*ptPlugVar), in C++ as extern \"C\"");
  }
  const std::string what = "module [" + loaded.file + "]: cvtPlugLoad";
  const Running running(*this, id);
  const int result = guarded(what, [&] { return entry(&loaded.record); });
  if (result != 0) throw Error(what + " returned " + std::to_string(result) + ", expected 0; not loaded");
  const int answer = deliver(id, EVENT_MGR_INIT, nullptr, nullptr);
  if (answer != 0) {
    throw Error("module [" + loaded.file + "]: the initialisation event was answered with " +
                std::to_string(answer) + ", expected 0; not loaded");
  }
}

int Manager::deliver(int id, int event, void *in, void *out) {
  Module &receiver = module(id);
  const std::string where = "module [" + receiver.file + "]: ";
  const PFN_EVENT_MGR_EHDL handler = receiver.record.pfnEventHdl;
  if (handler == nullptr) {
    throw Error(where + "no event handler; cvtPlugLoad must set ptPlugVar->pfnEventHdl");
  }
  const Running running(*this, id);
  return guarded(where + "the handler of event " + std::to_string(event),
                 [&] { return handler(id, event, in, out); });
}

void Manager::unload(int id) {
  const Module &leaving = module(id);
  if (isRunning(id)) {
    throw Error("module [" + leaving.file +
                "] cannot be unloaded while its own code runs; unload it after its handler has returned");
  }
  close(id);
}

// Its interfaces go first, so that nobody finds them while it is closed, and those that its destructors
// register go after.
void Manager::close(int id) {
  const auto withdraw = [this, id] {
    std::erase_if(m_interfaces, [id](const Interface &i) { return i.owner == id; });
  };
  withdraw();
  {
    const Running running(*this, id);
    const auto leaving = m_modules.extract(id);
  }
  withdraw();
}

void Manager::add(const std::string &kind, const std::string &name, void *table) {
  Interface added{kind, name, table, ownerOf(table)};
  std::erase_if(m_interfaces, [&added](const Interface &i) {
    return i.owner == added.owner && i.kind == added.kind && i.name == added.name;
  });
  m_interfaces.push_back(std::move(added));
}

void *Manager::find(const std::string &kind, const std::string &name) const {
  const auto newest = std::find_if(m_interfaces.rbegin(), m_interfaces.rend(),
                                   [&](const Interface &i) { return i.kind == kind && i.name == name; });
  return newest == m_interfaces.rend() ? nullptr : newest->table;
}

Manager::Module &Manager::module(int id) {
  const auto found = m_modules.find(id);
  if (found == m_modules.end()) {
    throw Error("no module has the id " + std::to_string(id) +
                "; use an id that plugLoad returned and that is not unloaded");
  }
  return found->second;
}

bool Manager::isRunning(int id) const {
  return std::find(m_running.begin(), m_running.end(), id) != m_running.end();
}

int Manager::ownerOf(const void *table) const {
  for (const auto &[id, loaded] : m_modules) {
    if (loaded.object.holds(table)) return id;
  }
  return m_running.empty() ? kHost : m_running.back();
}

}  // namespace plug
