// host.h: a host's whole life with the library, every call of which may fail, but not go wrong.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "child.h"
#include "cvt.h"
#include "life_config.h"
#include "order.h"

namespace faults {

// What the host works with, made before anything fails: it asks the heap for nothing itself.
class Work {
 public:
  Work();

  struct Sample {
    std::string sOrder;    // the record
    std::string sInvoice;  // what it must become
    long nCents;           // the sum of the invoice's lines
  };
  const std::vector<Sample> &samples() const { return m_samples; }

  char *root() { return m_sRoot.data(); }
  // Gives the root file the time of generation n.
  void touch(int n) const;

 private:
  life::LifeConfig m_config;
  std::string m_sRoot;
  std::string m_sRootFile;
  std::vector<Sample> m_samples;
};

class Host {
 public:
  Host(Work &work, Report &report) : m_work(work), m_report(report) {}

  // Connects, starts, converts, writes messages of its own, reloads, converts, ends. Stops at the first call
  // that fails; the report says whether it failed as documented.
  void live();

  // The same once more, now that nothing fails: whatever came before, all must be right.
  void liveAgain();

 private:
  struct Free {
    void operator()(InnerMessage *pt) const { cvtFreeMessage(pt); }
  };
  using Handle = std::unique_ptr<InnerMessage, Free>;

  bool everything();
  bool database();
  bool start();
  bool convert(const Work::Sample &sample);
  bool invoice(const Handle &order, const Work::Sample &sample);
  bool fields(const Handle &invoice, long nCents);
  bool written(const char *psWhat, const Handle &message, std::string_view wanted);
  bool compose();
  bool refuse(const Work::Sample &sample);

  Handle parse(const char *psName, const char *psFormat, std::string_view bytes);
  // Whether a call succeeded. If not: whether it failed as documented, with lines that say why.
  bool went(const char *psWhat, bool bSuccess, bool bDocumented);
  bool right(const char *psWhat, bool bRight);

  static constexpr int kRoom = 1 << 12;
  Work &m_work;
  Report &m_report;
  int m_nLines = 0;  // logged before the call
  int m_nError = 0;
  int m_nLen = 0;
  char m_sRoom[kRoom];
  char m_sAgain[kRoom];
};

}  // namespace faults
