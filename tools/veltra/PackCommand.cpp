#include <memory>

#include <fmt/format.h>

#include <libinspect/container/ByteSource.h>
#include <libinspect/describe/ResultDescription.h>

#include "Commands.h"

namespace Command {
namespace {

constexpr uint64_t MAX_DESCRIPTION = uint64_t{16} * 1024 * 1024;

struct Arguments {
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

int pack(const Arguments& args, const Options& options) {
  std::string text, error;
  Inspect::ResultDescription description;
  if (!Inspect::readText(args.description, MAX_DESCRIPTION, text, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  const std::string payloads = args.payloads.empty() ? directoryOf(args.description) : args.payloads;
  if (!Inspect::parseDescription(text, payloads, description, error)) {
    complain(fmt::format("{}: {}", args.description == "-" ? "standard input" : args.description, error));
    return EXIT_COULD_NOT;
  }
  if (refusesToReplace(args.output, args.force)) return EXIT_COULD_NOT;
  Inspect::PackedFile packed;
  if (!Inspect::packResult(description, args.output, args.level, packed, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  Json::Value json(Json::objectValue);
  json["file"] = args.output;
  json["bytes"] = static_cast<Json::UInt64>(packed.bytes);
  json["sections"] = packed.sections;
  printDocument({fmt::format("{}: {} sections, {} bytes\n", args.output, packed.sections, packed.bytes), json, {}, {}},
                options);
  return EXIT_DONE;
}

}  // namespace

void addPack(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("pack", "Write a result file from a description in JSON");
  const auto args = std::make_shared<Arguments>();
  command->add_option("DESCRIPTION", args->description, "the description; - reads standard input")
      ->required()
      ->type_name("RESULT.json");
  command->add_option("-o,--output", args->output, "the file to write")->required()->type_name("FILE");
  command->add_option("--payloads", args->payloads, "directory of the payload files, instead of the description's own")
      ->type_name("DIR");
  command->add_option("--level", args->level, "zlib level of compressed sections")
      ->check(CLI::Range(0, 9).description(""))
      ->type_name("0|1|2|3|4|5|6|7|8|9")
      ->capture_default_str();
  command->add_flag("--force", args->force, "replace an existing file");
  command->callback([args, &options, &run] { run = [args, &options] { return pack(*args, options); }; });
}

}  // namespace Command
