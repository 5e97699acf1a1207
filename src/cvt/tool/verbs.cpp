#include "verbs.h"

#include "bench_report.h"
#include "json.h"
#include "layout.h"
#include "message.h"
#include "run.h"
#include "tree.h"

namespace tool {
namespace {

void writeFramed(const Framing &framing, std::string_view bytes, OutputFile &output) {
  const Wrapping wrapping = wrap(framing, bytes);
  output.write(wrapping.head);
  output.write(bytes);
  output.write(wrapping.tail);
}

MessageHandle filled(const Options &options, const Frame &frame, Layouts &layouts) {
  const JsonMessage json({frame.data, frame.size});
  std::string name = json.message().empty() ? options.message : json.message();
  if (name.empty()) throw DataError("expected \"message\" in the JSON text, found none; write it, or -m");
  std::string format = options.to;
  int error = 0;
  MessageHandle message(cvtNewMessage(name.data(), format.data(), &error));
  if (message == nullptr) refuse("the message cannot be made", "(known: " + knownMessages() + ")");
  const ValueListInfo values = message->tValueListInfo;
  json.fill(layouts.of(*message->ptMsgInfo), values);
  return message;
}

[[noreturn]] void nothingToMeasure(const Progress &progress) {
  if (progress.refusals() == 0) {
    throw Failure(Exit::noInput, "nothing to measure: no message in the input; check INPUT and --framing");
  }
  throw Failure(Exit::data, "nothing to measure: every message was refused");
}

}  // namespace

Exit convert(const Options &options) {
  Parser parser(options);
  Generator generator(options);
  return run(options, [&](const Frame &frame, OutputFile &output) {
    const MessageHandle source = parser.parsed(frame);
    writeFramed(options.outFraming, generator.converted(*source).bytes, output);
  });
}

Exit parse(const Options &options) {
  Parser parser(options);
  Layouts layouts;
  std::string text;
  return run(options, [&](const Frame &frame, OutputFile &output) {
    const MessageHandle message = parser.parsed(frame);
    const Msg &msg = *message->ptMsgInfo;
    const Fields &fields = layouts.of(msg);
    ValueList *const values = message->tValueListInfo.ptValueList;
    text.clear();
    if (options.bJson) {
      appendJson(text, msg, fields, values, options.bAll);
      text += '\n';
    } else {
      text.append(msg.psMsgName).append("\n");
      appendTree(text, fields, values, options.bAll);
    }
    output.write(text);
  });
}

Exit generate(const Options &options) {
  Generator generator(options);
  if (!options.message.empty()) checkMessageName(options.message);
  const bool bConverts = convertStep(generatePipeline(options.to)) != nullptr;
  Layouts layouts;
  return run(options, [&](const Frame &frame, OutputFile &output) {
    const MessageHandle message = filled(options, frame, layouts);
    writeFramed(options.outFraming,
                bConverts ? generator.converted(*message).bytes : generator.asIs(*message), output);
  });
}

Exit bench(const Options &options) {
  Bench bench(options);
  Progress progress;
  const Exit read = run(options, progress, [&](const Frame &frame, OutputFile &) { bench.take(frame); });
  if (read != Exit::ok && !options.bKeepGoing) return read;
  if (bench.held() == 0) nothingToMeasure(progress);
  const BenchResult result = bench.measure();
  const uint64_t refused = progress.refusals() + result.refused;
  const BenchReport report{result, progress.messages(), refused, bench.heldBytes(), peakMemory()};
  OutputFile output(options.output);
  output.write(options.bJson ? benchJson(report) : benchTable(report));
  output.commit();
  return refused == 0 ? Exit::ok : Exit::data;
}

}  // namespace tool
