#include <cstdio>
#include <memory>

#include <fmt/format.h>

#include <libinspect/container/ContainerWalk.h>

#include "Commands.h"

namespace Command {
namespace {

struct Arguments {
  std::string file;
  int section = 1;
  std::string output;
  bool raw = false;
  bool force = false;
};

int extract(const Arguments& args, const Options& options) {
  std::string error;
  Inspect::ByteSource source;
  std::vector<uint8_t> bytes;
  if (!openInput(source, args.file, options)) return EXIT_COULD_NOT;
  int code = EXIT_DONE;
  std::optional<Inspect::SectionInfo> section = sectionOf(source, args.section, code);
  if (!section) return code;
  // Taken as it is stored, whatever the flag says.
  if (args.raw) section->header.flags = static_cast<uint16_t>(section->header.flags & ~PFile::SECTION_FLAG_COMPRESS);
  if (!loadPayload(source, *section, bytes, error)) {
    complain(fmt::format("{}: {}", source.name(), error));
    return answerAfter(source, EXIT_NO);
  }
  if (args.output.empty()) {
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() ? EXIT_DONE : EXIT_COULD_NOT;
  }
  if (refusesToReplace(args.output, args.force)) return EXIT_COULD_NOT;
  return saveOutput(args.output, bytes.data(), bytes.size()) ? EXIT_DONE : EXIT_COULD_NOT;
}

}  // namespace

void addExtract(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("extract", "The bytes of one section");
  const auto args = std::make_shared<Arguments>();
  command->add_option("FILE", args->file, "the file; - reads standard input")->required()->type_name("FILE");
  command->add_option("-s,--section", args->section, "its number as list shows it")->required()->type_name("N");
  command->add_option("-o,--output", args->output, "the file to write; standard output without")->type_name("OUT");
  command->add_flag("--raw", args->raw, "as stored, still compressed");
  command->add_flag("--force", args->force, "replace an existing file");
  command->callback([args, &options, &run] { run = [args, &options] { return extract(*args, options); }; });
}

}  // namespace Command
