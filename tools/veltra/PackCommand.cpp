#include <memory>

#include <fmt/format.h>

#include <libinspect/container/ByteSource.h>
#include <libinspect/describe/ResultDescription.h>

#include "Commands.h"

namespace Command {
namespace {

struct PackArguments {
  std::string description;
  std::string output;
  std::string payloads;
  int level = 6;
  bool force = false;
};

std::string directoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

int pack(const PackArguments& args, const Options& options) {
  std::string text, error;
  Inspect::ResultDescription description;
  if (!Inspect::readText(args.description, Inspect::MOST_TEXT, text, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  const std::string payloads = args.payloads.empty() ? directoryOf(args.description) : args.payloads;
  if (!Inspect::parseDescription(text, payloads, description, error)) {
    complain(fmt::format("{}: {}", Inspect::inputName(args.description), error));
    return EXIT_COULD_NOT;
  }
  std::vector<std::string> inputs = {args.description};
  for (const Inspect::DescribedSection& section : description.sections) inputs.push_back(section.payload);
  if (refusesToReplace(args.output, args.force, inputs)) return EXIT_COULD_NOT;
  Inspect::PackedFile packed;
  if (!Inspect::packResult(description, args.output, args.level, packed, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  Json::Value json(Json::objectValue);
  json["file"] = args.output;
  json["bytes"] = static_cast<Json::UInt64>(packed.bytes);
  json["sections"] = packed.sections;
  const auto line = [&] {
    return fmt::format("{}: {} sections, {}\n", printable(args.output), packed.sections, counted(packed.bytes, "byte"));
  };
  printDocument({line, [&] { return json; }, {}, {}}, options);
  return EXIT_DONE;
}

}  // namespace

Subcommand packCommand(const Options& options) {
  const auto args = std::make_shared<PackArguments>();
  Subcommand command("pack", "Write a result file from a description in JSON");
  command.place("DESCRIPTION", "RESULT.json", &args->description, "the description; - reads standard input").required();
  command.option("-o,--output", "FILE", &args->output, "the file to write").required();
  command.option("--payloads", "DIR", &args->payloads,
                 "directory of the payload files, instead of the description's own");
  command.option("--level", "0|1|2|3|4|5|6|7|8|9", &args->level, "zlib level of compressed sections").showingPreset();
  command.flag("--force", args->force, FORCE_HELP);
  command.run = [args, &options] { return pack(*args, options); };
  return command;
}

}  // namespace Command
