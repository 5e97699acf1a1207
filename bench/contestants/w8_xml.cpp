// w8_xml.cpp: a NACHA file of PPD batches as a payment document in XML, written by hand.
#include "text.h"

namespace {

using namespace bench;

constexpr size_t kRecord = 94, kLine = kRecord + 1;

// The records of the file, each 94 characters and a line feed.
class Records {
 public:
  explicit Records(std::string_view input) : m_input(input), m_count(input.size() / kLine) {
    if (input.size() % kLine != 0) throw Failure("expected lines of 94 characters");
    while (m_count > 0 && at(m_count - 1).find_first_not_of('9') == std::string_view::npos) --m_count;
    if (m_count < 2) throw Failure("no file header or control");
  }

  size_t count() const { return m_count; }
  std::string_view at(size_t i) const {
    if (m_input[i * kLine + kRecord] != '\n') throw Failure("expected lines of 94 characters");
    return m_input.substr(i * kLine, kRecord);
  }
  char typeOf(size_t i) const { return m_input[i * kLine]; }

 private:
  std::string_view m_input;
  size_t m_count;
};

void needType(std::string_view record, char type) {
  if (record.front() != type) throw Failure("expected a record of type " + std::string(1, type));
}

std::string_view field(std::string_view record, size_t from, size_t size) {
  std::string_view text = trimmed(record.substr(from, size));
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return text;
}

// `before`, the text, `after`; nothing without a text.
char *putLeaf(char *to, std::string_view before, std::string_view text, std::string_view after) {
  return text.empty() ? to : put(putXml(put(to, before), text), after);
}

// An element with one or two inside; nothing without a text in any.
char *putPair(char *to, std::string_view start, std::string_view first, std::string_view firstStart,
              std::string_view firstEnd, std::string_view second, std::string_view secondStart,
              std::string_view secondEnd, std::string_view end) {
  if (first.empty() && second.empty()) return to;
  to = putLeaf(put(to, start), firstStart, first, firstEnd);
  return put(putLeaf(to, secondStart, second, secondEnd), end);
}

char *putHeader(char *to, std::string_view head, std::string_view control) {
  needType(head, '1');
  needType(control, '9');
  const std::string_view origin = field(head, 13, 10);
  to = put(to, "    <GrpHdr>\n");
  to = putLeaf(to, "      <MsgId>", origin, "</MsgId>\n");
  to = putLeaf(to, "      <CreDt>", field(head, 23, 6), "</CreDt>\n");
  to = putLeaf(to, "      <CreTm>", field(head, 29, 4), "</CreTm>\n");
  to = putNumber(put(to, "      <NbOfPmtInf>"), control.substr(1, 6), 0);
  to = putNumber(put(to, "</NbOfPmtInf>\n      <TtlDbt>"), control.substr(31, 12), 2);
  to = putNumber(put(to, "</TtlDbt>\n      <TtlCdt>"), control.substr(43, 12), 2);
  to = put(to, "</TtlCdt>\n");
  to = putPair(to, "      <InitgPty>\n", field(head, 63, 23), "        <Nm>", "</Nm>\n", origin,
               "        <Id>", "</Id>\n", "      </InitgPty>\n");
  to = putPair(to, "      <FwdgAgt>\n", field(head, 40, 23), "        <Nm>", "</Nm>\n", field(head, 3, 10),
               "        <Id>", "</Id>\n", "      </FwdgAgt>\n");
  return put(to, "    </GrpHdr>\n");
}

std::string_view methodOf(std::string_view serviceClass) {
  if (serviceClass == "200") return "MIX";
  if (serviceClass == "220") return "TRF";
  if (serviceClass == "225") return "DD";
  return "OTHR";
}

// Of two digits: the first says which account, the second which direction.
bool isCredit(std::string_view code) {
  return code[0] >= '2' && code[0] <= '5' && code[1] >= '1' && code[1] <= '4';
}

std::string_view accountOf(std::string_view code) {
  if (code == "22" || code == "27") return "CACC";
  if (code == "32" || code == "37") return "SVGS";
  if (code == "52" || code == "55") return "LOAN";
  return "";
}

char *putBatchHead(char *to, std::string_view head, std::string_view control, size_t entries) {
  if (head.substr(50, 3) != "PPD") throw Failure("expected a PPD batch");
  needType(control, '8');
  to = putNumber(put(to, "    <PmtInf>\n      <PmtInfId>"), head.substr(87, 7), 0);
  to = put(put(to, "</PmtInfId>\n      <PmtMtd>"), methodOf(head.substr(1, 3)));
  to = putInteger(put(to, "</PmtMtd>\n      <NbOfTxs>"), entries);
  to = put(to, "</NbOfTxs>\n");
  to = putPair(to, "      <PmtTpInf>\n", field(head, 50, 3), "        <LclInstrm>", "</LclInstrm>\n",
               field(head, 53, 10), "        <CtgyPurp>", "</CtgyPurp>\n", "      </PmtTpInf>\n");
  to = putLeaf(to, "      <ReqdExctnDt>", field(head, 69, 6), "</ReqdExctnDt>\n");
  to = putPair(to, "      <Dbtr>\n", field(head, 4, 16), "        <Nm>", "</Nm>\n", field(head, 40, 10),
               "        <Id>", "</Id>\n", "      </Dbtr>\n");
  to = putPair(to, "      <DbtrAgt>\n", field(head, 79, 8), "        <MmbId>", "</MmbId>\n", "", "", "",
               "      </DbtrAgt>\n");
  to = putNumber(put(to, "      <BtchDbt>"), control.substr(20, 12), 2);
  to = putNumber(put(to, "</BtchDbt>\n      <BtchCdt>"), control.substr(32, 12), 2);
  return put(to, "</BtchCdt>\n");
}

char *putEntry(char *to, std::string_view record) {
  const std::string_view code = record.substr(1, 2);
  to = putPair(put(to, "      <CdtTrfTxInf>\n"), "        <PmtId>\n", field(record, 79, 15),
               "          <InstrId>", "</InstrId>\n", field(record, 39, 15), "          <EndToEndId>",
               "</EndToEndId>\n", "        </PmtId>\n");
  to = put(
      to, isCredit(code) ? "        <CdtDbtInd>CRDT</CdtDbtInd>\n" : "        <CdtDbtInd>DBIT</CdtDbtInd>\n");
  to = putNumber(put(to, "        <Amt>\n          <InstdAmt Ccy=\"USD\">"), record.substr(29, 10), 2);
  to = put(to, "</InstdAmt>\n        </Amt>\n");
  to = putPair(to, "        <CdtrAgt>\n", field(record, 3, 8), "          <MmbId>", "</MmbId>\n", "", "", "",
               "        </CdtrAgt>\n");
  to = putPair(to, "        <Cdtr>\n", field(record, 54, 22), "          <Nm>", "</Nm>\n", "", "", "",
               "        </Cdtr>\n");
  return putPair(to, "        <CdtrAcct>\n", field(record, 12, 17), "          <Id>", "</Id>\n",
                 accountOf(code), "          <Tp>", "</Tp>\n", "        </CdtrAcct>\n");
}

// The addenda from record `i` on; returns the record behind them.
size_t putAddenda(Output &output, const Records &records, size_t i) {
  if (records.typeOf(i) != '7') return i;
  output.stop(put(output.room(64), "        <RmtInf>\n"));
  for (; records.typeOf(i) == '7'; ++i) {
    char *to = output.room(1024);
    output.stop(putLeaf(to, "          <Ustrd>", field(records.at(i), 3, 80), "</Ustrd>\n"));
  }
  output.stop(put(output.room(64), "        </RmtInf>\n"));
  return i;
}

// The batch whose header is record `i`; returns the record behind it.
size_t putBatch(Output &output, const Records &records, size_t i) {
  const std::string_view head = records.at(i++);
  needType(head, '5');
  size_t control = i, entries = 0;
  for (; records.typeOf(control) == '6' || records.typeOf(control) == '7'; ++control) {
    entries += records.typeOf(control) == '6';
  }
  output.stop(putBatchHead(output.room(4096), head, records.at(control), entries));
  while (i < control) {
    const std::string_view record = records.at(i);
    needType(record, '6');
    output.stop(putEntry(output.room(4096), record));
    i = putAddenda(output, records, i + 1);
    output.stop(put(output.room(64), "      </CdtTrfTxInf>\n"));
  }
  output.stop(put(output.room(64), "    </PmtInf>\n"));
  return control + 1;
}

void convert(std::string_view input, Output &output) {
  const Records records(input);
  const size_t last = records.count() - 1;
  output.stop(
      put(output.room(256),
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
          "<Document xmlns=\"urn:iso:std:iso:20022:tech:xsd:pain.001.001.09\">\n  <CstmrCdtTrfInitn>\n"));
  output.stop(putHeader(output.room(4096), records.at(0), records.at(last)));
  for (size_t i = 1; i < last;) i = putBatch(output, records, i);
  output.stop(put(output.room(64), "  </CstmrCdtTrfInitn>\n</Document>\n"));
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 8, convert); });
}
