#include "options.h"

#include <CLI/CLI.hpp>
#include <climits>

namespace tool {
namespace {

constexpr size_t kDefaultMaxOutput = size_t{1} << 30;

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

constexpr const char *kParseNotes = R"(Framings:
  whole      the input is one message
  line       a line feed ends each message
  len2 len4  two, four bytes of length, big-endian, before each message
  lenascii4  four digits of length before each message
  rec=N      every message has N bytes

Examples:
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

// What the parser of the command line fills before it is checked.
struct Raw {
  Options options;
  std::string framing;
  std::string outFraming;
};

void addCommon(CLI::App &verb, Raw &raw) {
  Options &options = raw.options;
  verb.add_option("-c,--config", options.config, "Configuration: a directory, or a root file ending in .xml")
      ->envname("CVT2_CONFIG")
      ->type_name("DIR|FILE");
  verb.add_option("-o,--output", options.output, "Output file; it appears when everything went well")
      ->type_name("FILE");
  verb.add_option("--rejects", options.rejects, "File for the bytes of refused messages, framed as the input")
      ->type_name("FILE");
  verb.add_flag("-k,--keep-going", options.bKeepGoing,
                "Go on after a refused message; the exit code is 65 all the same");
  verb.add_flag("-v,--verbose", options.verbosity,
                "Show the whole trail of an error and the message rate; -vv: the library's trace too");
  verb.add_option("INPUT", options.inputs, "Input files; none or -: standard input")->type_name("");
}

void addMessage(CLI::App &verb, Raw &raw, const char *description) {
  verb.add_option("-m,--message", raw.options.message, description)->type_name("MESSAGE");
}

void addFraming(CLI::App &verb, Raw &raw, const char *description) {
  verb.add_option("--framing", raw.framing, description)->type_name("KIND");
}

void addOutput(CLI::App &verb, Raw &raw) {
  verb.add_option("-t,--to", raw.options.to, "Format id to generate")->type_name("FORMAT")->required();
  verb.add_option("--out-framing", raw.outFraming,
                  "How messages follow each other in the output, see below [as in the input]")
      ->type_name("KIND");
  verb.add_option("--max-output", raw.options.maxOutput, "Largest message to generate, as 500K or 64M [1G]")
      ->transform(CLI::AsSizeValue(false).description(""))
      ->check(CLI::Range(size_t{1}, size_t{INT_MAX}).description(""))
      ->type_name("BYTES");
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
  parse->footer(kParseNotes);

  CLI::App *generate =
      app.add_subcommand("generate", "JSON lines, as 'parse --json' writes them, into messages");
  addMessage(*generate, raw, "Type of the messages whose JSON names none");
  addFraming(*generate, raw, "How the JSON texts follow each other: line, or whole (one text) [line]");
  addOutput(*generate, raw);
  addCommon(*generate, raw);
  generate->footer(kGenerateNotes);
}

Framing outFraming(const Raw &raw) {
  if (!raw.outFraming.empty()) return parseFraming("--out-framing", raw.outFraming, "none");
  return raw.options.framing.kind == Framing::Kind::record ? Framing{} : raw.options.framing;
}

Options checked(const CLI::App &app, Raw raw) {
  Options &options = raw.options;
  options.verb = app.got_subcommand("parse")      ? Verb::parse
                 : app.got_subcommand("generate") ? Verb::generate
                                                  : Verb::convert;
  if (raw.framing.empty()) raw.framing = options.verb == Verb::generate ? "line" : "whole";
  options.framing = parseFraming("--framing", raw.framing);
  options.outFraming = outFraming(raw);
  if (options.maxOutput == 0) options.maxOutput = kDefaultMaxOutput;
  if (options.inputs.empty()) options.inputs.emplace_back("-");
  return options;
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
  addVerbs(app, raw);
  try {
    app.parse(argc, argv);
    return checked(app, std::move(raw));
  } catch (const CLI::ParseError &error) {
    if (error.get_exit_code() == 0) std::exit(app.exit(error));
    std::string text = error.what();
    if (app.get_subcommands().empty()) text = "expected convert, parse or generate" + found(argc, argv);
    throw Failure(Exit::usage, text + "; 'cvt2 --help' shows the command line");
  }
}

}  // namespace tool
