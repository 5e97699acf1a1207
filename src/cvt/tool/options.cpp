#include "options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdlib>

namespace tool {
namespace {

constexpr size_t kDefaultMaxOutput = size_t{1} << 30;
constexpr double kDefaultSeconds = 3;

constexpr const char *kAbout = R"(Parses, converts and generates messages by a configuration of cvt2.

A configuration is a directory (its "All" directory holds the root file) or a root file, given with -c or
in the environment variable CVT2_CONFIG.)";

constexpr const char *kExitCodes = R"(Exit codes:
  0 ok   2 usage   65 data   66 no input   70 internal   74 input/output   78 configuration

'cvt2 VERB --help' shows the options of a verb, with examples.)";

constexpr const char *kConvertNotes = R"(Framings:
  whole      the input is one message; for the output: none, nothing between messages
  line       a line feed ends each message
  len2 len4  two, four bytes of length, big-endian, before each message
  lenascii4  four digits of length before each message
  rec=N      every message has N bytes; the output then has none, unless told

Examples:
  cvt2 convert -c conf -m NachaFile -f fix -t xml payroll.ach -o payroll.xml
  cvt2 convert -c conf -m Order -f fix -t xml --framing rec=120 --out-framing line orders.dat
  cvt2 convert -c conf -f any -t xml --framing len4 --keep-going --rejects bad.len4 < feed > out.len4
  (without -m the parse pipeline of the format names the message))";

constexpr const char *kInputFramings = R"(Framings:
  whole      the input is one message
  line       a line feed ends each message
  len2 len4  two, four bytes of length, big-endian, before each message
  lenascii4  four digits of length before each message
  rec=N      every message has N bytes

)";

constexpr const char *kParseExamples = R"(Examples:
  cvt2 parse -c conf -m Order -f fix order.dat
  cvt2 parse -c conf -m Order -f fix --framing line --json orders.txt | jq .fields.Total
  cvt2 parse -c conf -m Order -f fix --all order.dat            (empty fields too))";

constexpr const char *kGenerateNotes = R"(Output framings:
  none       nothing between messages
  line       a line feed ends each message
  len2 len4  two, four bytes of length, big-endian, before each message
  lenascii4  four digits of length before each message
  rec=N      every message must have N bytes

Examples:
  echo '{"message":"Order","fields":{"Id":"7","Items":[{"Code":"A"}]}}' | cvt2 generate -c conf -t fix
  cvt2 parse -c conf -m Order -f fix --json order.dat | cvt2 generate -c conf -t fix --out-framing none
  (a generate pipeline with pubConvert converts the message first))";

constexpr const char *kBenchExamples = R"(Examples:
  cvt2 bench -c conf -m NachaFile -f fix -t xml payroll.ach
  cvt2 bench -c conf -m Order -f fix -t xml --framing line --seconds 10 --json orders.txt | jq .messages_per_second)";

// What the parser of the command line fills before it is checked.
struct Raw {
  Options options;
  std::string framing;
  std::string outFraming;
};

void addConfig(CLI::App &verb, Raw &raw) {
  verb.add_option("-c,--config", raw.options.config,
                  "Configuration: a directory, or a root file ending in .xml [CVT2_CONFIG]")
      ->type_name("DIR|FILE");
}

void addFiles(CLI::App &verb, Raw &raw) {
  verb.add_option("-o,--output", raw.options.output, "Output file; it appears when everything went well")
      ->type_name("FILE");
  verb.add_option("--rejects", raw.options.rejects,
                  "File for the bytes of refused messages, framed as the input")
      ->type_name("FILE");
}

void addRun(CLI::App &verb, Raw &raw) {
  Options &options = raw.options;
  verb.add_flag("-k,--keep-going", options.bKeepGoing,
                "Go on after a refused message; the exit code is 65 all the same");
  verb.add_flag("-v,--verbose", options.verbosity,
                "Show the whole trail of an error and the message rate; -vv: the library's trace too");
  verb.add_option("INPUT", options.inputs, "Input files; none or -: standard input")->type_name("");
}

void addCommon(CLI::App &verb, Raw &raw) {
  addConfig(verb, raw);
  addFiles(verb, raw);
  addRun(verb, raw);
}

void addMessage(CLI::App &verb, Raw &raw, const char *description) {
  verb.add_option("-m,--message", raw.options.message, description)->type_name("MESSAGE");
}

void addFraming(CLI::App &verb, Raw &raw, const char *description) {
  verb.add_option("--framing", raw.framing, description)->type_name("KIND");
}

void addTarget(CLI::App &verb, Raw &raw) {
  verb.add_option("-t,--to", raw.options.to, "Format id to generate")->type_name("FORMAT")->required();
}

void addMaxOutput(CLI::App &verb, Raw &raw) {
  verb.add_option("--max-output", raw.options.maxOutput, "Largest message to generate, as 500K or 64M [1G]")
      ->transform(CLI::AsSizeValue(false).description(""))
      ->check(CLI::Range(size_t{1}, size_t{INT_MAX}).description(""))
      ->type_name("BYTES");
}

void addOutput(CLI::App &verb, Raw &raw) {
  addTarget(verb, raw);
  verb.add_option("--out-framing", raw.outFraming,
                  "How messages follow each other in the output, see below [as in the input]")
      ->type_name("KIND");
  addMaxOutput(verb, raw);
}

// A check of a number as CLI11 wants it: its text says what is wrong, and is empty when nothing is.
template <class Number>
CLI::Validator between(Number least, Number most, const std::string &expected) {
  const auto wrong = [=](const std::string &text) {
    Number number{};
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const bool bRight = error == std::errc() && stop == end && number >= least && number <= most;
    return bRight ? std::string() : "expected " + expected + ", found '" + text + "'";
  };
  return {wrong, ""};
}

void addMeasure(CLI::App &verb, Raw &raw) {
  verb.add_option("--seconds", raw.options.seconds,
                  "How long to measure, after a warm-up of a tenth of it [3]")
      ->check(between(0.001, 86400.0, "a number from 0.001 to 86400"))
      ->type_name("N");
  verb.add_option("--messages", raw.options.messages, "How many messages to measure at most [any number]")
      ->check(between<uint64_t>(1, UINT64_MAX, "a number from 1"))
      ->type_name("N");
}

constexpr const char *kFraming = "How messages follow each other in the input, see below [whole]";

void addVerbs(CLI::App &app, Raw &raw) {
  Options &options = raw.options;
  CLI::App *convert = app.add_subcommand("convert", "Messages of one format into messages of another");
  addMessage(*convert, raw, "Type of the messages; may be left out when the pipeline names it");
  convert->add_option("-f,--from", options.from, "Format id of the input")->type_name("FORMAT")->required();
  addFraming(*convert, raw, kFraming);
  addOutput(*convert, raw);
  addCommon(*convert, raw);
  convert->footer(kConvertNotes);

  CLI::App *parse = app.add_subcommand("parse", "Messages into a readable tree or into JSON lines");
  addMessage(*parse, raw, "Type of the messages; may be left out when the pipeline names it");
  parse->add_option("-f,--from", options.from, "Format id of the input")->type_name("FORMAT")->required();
  addFraming(*parse, raw, kFraming);
  parse->add_flag("--json", options.bJson, "One line of JSON a message");
  parse->add_flag("--all", options.bAll, "Show empty fields too");
  addCommon(*parse, raw);
  parse->footer(std::string(kInputFramings) + kParseExamples);

  CLI::App *generate =
      app.add_subcommand("generate", "JSON lines, as 'parse --json' writes them, into messages");
  addMessage(*generate, raw, "Type of the messages whose JSON names none");
  addFraming(*generate, raw, "How the JSON texts follow each other: line, or whole (one text) [line]");
  addOutput(*generate, raw);
  addCommon(*generate, raw);
  generate->footer(kGenerateNotes);

  CLI::App *bench = app.add_subcommand("bench", "How fast messages are converted, and where the time goes");
  addMessage(*bench, raw, "Type of the messages; may be left out when the pipeline names it");
  bench->add_option("-f,--from", options.from, "Format id of the input")->type_name("FORMAT")->required();
  addFraming(*bench, raw, kFraming);
  addTarget(*bench, raw);
  addMaxOutput(*bench, raw);
  addMeasure(*bench, raw);
  bench->add_flag("--json", options.bJson, "One line of JSON in place of the table");
  addConfig(*bench, raw);
  addRun(*bench, raw);
  bench->footer(std::string(kInputFramings) + kBenchExamples);
}

Framing outFraming(const Raw &raw) {
  if (!raw.outFraming.empty()) return parseFraming("--out-framing", raw.outFraming, "none");
  return raw.options.framing.kind == Framing::Kind::record ? Framing{} : raw.options.framing;
}

Options checked(const CLI::App &app, Raw raw) {
  Options &options = raw.options;
  options.verb = app.got_subcommand("parse")      ? Verb::parse
                 : app.got_subcommand("generate") ? Verb::generate
                 : app.got_subcommand("bench")    ? Verb::bench
                                                  : Verb::convert;
  if (raw.framing.empty()) raw.framing = options.verb == Verb::generate ? "line" : "whole";
  options.framing = parseFraming("--framing", raw.framing);
  options.outFraming = outFraming(raw);
  if (options.maxOutput == 0) options.maxOutput = kDefaultMaxOutput;
  if (options.seconds == 0) options.seconds = kDefaultSeconds;
  if (options.inputs.empty()) options.inputs.emplace_back("-");
  return options;
}

// What -c takes the place of. The verbs share it, so none of them may bring it in after the command line is read.
std::string configOfEnvironment() {
  const char *const config = std::getenv("CVT2_CONFIG");
  return config == nullptr ? "" : config;
}

std::string found(int argc, char **argv) {
  return argc < 2 ? ", found nothing" : std::string(", found '") + argv[1] + "'";
}

}  // namespace

Options readOptions(int argc, char **argv) {
  CLI::App app(kAbout, "cvt2");
  app.footer(kExitCodes);
  app.set_version_flag("--version", "cvt2 " CVT2_VERSION);
  app.require_subcommand(1);
  Raw raw;
  raw.options.config = configOfEnvironment();
  addVerbs(app, raw);
  try {
    app.parse(argc, argv);
    return checked(app, std::move(raw));
  } catch (const CLI::ParseError &error) {
    if (error.get_exit_code() == 0) std::exit(app.exit(error));
    std::string text = error.what();
    if (app.get_subcommands().empty())
      text = "expected convert, parse, generate or bench" + found(argc, argv);
    throw Failure(Exit::usage, text + "; 'cvt2 --help' shows the command line");
  }
}

}  // namespace tool
