#include "host.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>
#include <ctime>
#include <stdexcept>

#include "vel_dbs.h"

namespace faults {

namespace {

// The library takes names as char *; it does not write to them.
char *cs(const char *ps) {
  return const_cast<char *>(ps);
}

constexpr const char *kTables[] = {
    "create table kinds (kind text, terms text)",
    "insert into kinds values ('A', 'net 30'), ('B', 'net 10')",
    "create table audit (orders integer, cents integer)",
    "insert into audit values (0, 0)",
};

// An amount without its point.
long centsOf(const Value *pt) {
  long n = 0;
  for (int i = 0; i < pt->nLen; ++i) {
    if (pt->psValue[i] != '.') n = n * 10 + (pt->psValue[i] - '0');
  }
  return n;
}

}  // namespace

// --- What there is to work with
// ------------------------------------------------------------------------------

Work::Work() : m_sRoot(m_config.path()), m_sRootFile(m_config.path("All/root.xml")) {
  for (const int n : {6, 8, 7}) {  // with a look-up, with lots inside items, without a row
    const life::Order order = life::order(n);
    m_samples.push_back({life::fixBytes(order), life::invoiceBytes(order, 0), order.cents()});
  }
}

void Work::touch(int n) const {
  const std::time_t t = 1700000000 + n;
  const timespec times[] = {{t, 0}, {t, 0}};
  if (utimensat(AT_FDCWD, m_sRootFile.c_str(), times, 0) != 0) throw std::runtime_error("utimensat failed");
}

// --- What a call may do
// --------------------------------------------------------------------------------------

bool Host::went(const char *psWhat, bool bSuccess, bool bDocumented) {
  const bool bSaid = m_report.nLines > m_nLines;
  m_nLines = m_report.nLines;
  if (bSuccess) return true;
  m_report.bRefused = true;
  if (!bDocumented) m_report.wrong("%s: failed otherwise than documented", psWhat);
  if (!bSaid) m_report.wrong("%s: failed without a line", psWhat);
  return false;
}

bool Host::right(const char *psWhat, bool bRight) {
  if (!bRight) m_report.wrong("%s: a success with a wrong result", psWhat);
  return bRight;
}

// --- A life
// --------------------------------------------------------------------------------------------------

void Host::live() {
  everything();
  cvtEnd();
  if (gnMsgNum != 0) m_report.wrong("%d messages are still counted", gnMsgNum);
}

void Host::liveAgain() {
  const bool bRefused = m_report.bRefused;
  m_report.bRefused = false;
  live();
  if (m_report.bRefused) m_report.wrong("does not work afterwards: %s", m_report.sLine);
  m_report.bRefused = bRefused;
}

bool Host::everything() {
  m_work.touch(0);
  if (!database() || !start()) return false;
  for (const Work::Sample &sample : m_work.samples()) {
    if (!convert(sample)) return false;
  }
  if (!compose() || !refuse(m_work.samples()[0])) return false;
  m_work.touch(1);  // the next message reads the configuration again
  return convert(m_work.samples()[0]);
}

// The database reports by its own means.
bool Host::database() {
  int nResult = dbsConnect(cs("sqlite::memory:"));
  for (const char *psSql : kTables) {
    if (nResult == 0) nResult = dbsExecute(cs(psSql));
  }
  if (nResult == 0) return true;
  m_report.bRefused = true;
  if (nResult != -1 || *dbsErrStr() == '\0') m_report.wrong("the database failed without a text");
  return false;
}

bool Host::start() {
  const int nResult = cvtInit(m_work.root());
  return went("cvtInit", nResult == 0, nResult == -1);
}

Host::Handle Host::parse(const char *psName, const char *psFormat, std::string_view bytes) {
  return Handle(cvtInitMessasge(cs(psName), cs(psFormat), const_cast<char *>(bytes.data()),
                                static_cast<int>(bytes.size()), &m_nError));
}

bool Host::convert(const Work::Sample &sample) {
  const Handle order = parse("Order", "fix", sample.sOrder);
  if (!went("cvtInitMessasge", order != nullptr, m_nError == -1)) return false;
  return invoice(order, sample) && written("an order", order, sample.sOrder);
}

bool Host::invoice(const Handle &order, const Work::Sample &sample) {
  m_nLen = kRoom;
  const Handle made(cvtGenerateMessasge(order.get(), cs("xml"), m_sRoom, &m_nLen, &m_nError));
  if (!went("cvtGenerateMessasge", made != nullptr, m_nError == -1)) return false;
  const std::string_view bytes(m_sRoom, static_cast<size_t>(m_nLen));
  if (bytes != sample.sInvoice) m_report.wrong("an invoice that is another: %.*s", m_nLen, m_sRoom);
  if (bytes != sample.sInvoice || !fields(made, sample.nCents)) return false;
  const Handle back = parse("Invoice", "xml", bytes);
  if (!went("cvtInitMessasge", back != nullptr, m_nError == -1)) return false;
  return written("an invoice", back, bytes);
}

bool Host::fields(const Handle &invoice, long nCents) {
  const int nLines = cvtGetLoopTime(invoice.get(), cs("Lines"));
  if (!went("cvtGetLoopTime", nLines >= 0, nLines == -14)) return false;
  long nSum = 0;
  for (int i = 0; i < nLines; ++i) {
    const int nSet = cvtSetLoopTime(invoice.get(), cs("Lines"), i);
    if (!went("cvtSetLoopTime", nSet == 0, nSet < 0)) return false;
    const Value *const pt = cvtGetNameValue(invoice.get(), cs("Lines.LineAmount"), &m_nError);
    if (!went("cvtGetNameValue", pt != nullptr, m_nError < 0)) return false;
    nSum += centsOf(pt);
  }
  return right("cvtGetNameValue", nSum == nCents);
}

bool Host::written(const char *psWhat, const Handle &message, std::string_view wanted) {
  int nLen = kRoom;
  const int nResult = cvtGenMessage(message.get(), m_sAgain, &nLen);
  if (!went("cvtGenMessage", nResult == 0, nResult < 0)) return false;
  return right(psWhat, std::string_view(m_sAgain, static_cast<size_t>(nLen)) == wanted);
}

// An invoice made by hand.
bool Host::compose() {
  const Handle invoice(cvtNewMessage(cs("Invoice"), cs("02"), &m_nError));
  if (!went("cvtNewMessage", invoice != nullptr, true)) return false;
  const auto set = [&](const char *psName, const char *psValue) {
    const int nSet =
        cvtSetNameValue(invoice.get(), cs(psName), cs(psValue), static_cast<int>(std::strlen(psValue)));
    return went("cvtSetNameValue", nSet == 0, nSet < 0);
  };
  if (!set("Id", "7") || !set("Buyer", "a buyer")) return false;
  const int nAdded = cvtAddLoopTime(invoice.get(), cs("Lines"));
  if (!went("cvtAddLoopTime", nAdded == 0, nAdded < 0)) return false;
  if (!set("Lines.LineArticle", "nut") || !set("Lines.LineAmount", "0.01")) return false;
  return written("a message by hand", invoice,
                 "<invoice id=\"7\"><customer>a buyer</customer><line article=\"nut\"><amount>0.01</amount>"
                 "</line></invoice>");
}

// A record without its end is refused at all times.
bool Host::refuse(const Work::Sample &sample) {
  const bool bBefore = m_report.bRefused;
  const Handle order =
      parse("Order", "fix", std::string_view(sample.sOrder).substr(0, sample.sOrder.size() - 1));
  if (went("a record without its end", order != nullptr, m_nError == -1)) return right("a cut record", false);
  m_report.bRefused = bBefore;
  return true;
}

}  // namespace faults
