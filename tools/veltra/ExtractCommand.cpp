#include <cstdio>
#include <memory>

#include <fmt/format.h>

#include <tools/inspect/ContainerWalk.h>
#include <tools/inspect/SafeFile.h>

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

int extract(const Arguments& args) {
  std::string error;
  Inspect::ByteSource source;
  std::vector<uint8_t> bytes;
  if (!source.open(args.file, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  const Inspect::ContainerReport report = walk(source, Inspect::WalkDepth::HEADERS);
  if (args.section < 0 || static_cast<std::size_t>(args.section) >= report.sections.size()) {
    complain(fmt::format("{}: no section {}", source.name(), args.section));
    return EXIT_COULD_NOT;
  }
  Inspect::SectionInfo section = report.sections[static_cast<std::size_t>(args.section)];
  // Taken as it is stored, whatever the flag says.
  if (args.raw) section.header.flags = static_cast<uint16_t>(section.header.flags & ~PFile::SECTION_FLAG_COMPRESS);
  if (!loadPayload(source, section, bytes, error)) {
    complain(fmt::format("{}: {}", source.name(), error));
    return EXIT_NO;
  }
  if (args.output.empty()) {
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() ? EXIT_DONE : EXIT_COULD_NOT;
  }
  if (refusesToReplace(args.output, args.force)) return EXIT_COULD_NOT;
  if (Inspect::writeSafely(args.output, bytes.data(), bytes.size(), error)) return EXIT_DONE;
  complain(error);
  return EXIT_COULD_NOT;
}

}  // namespace

void addExtract(CLI::App& app, const Options&, Run& run) {
  CLI::App* const command = app.add_subcommand("extract", "The bytes of one section");
  const auto args = std::make_shared<Arguments>();
  command->add_option("file", args->file, "the file; - reads standard input")->required()->type_name("FILE");
  command->add_option("-s,--section", args->section, "its number as list shows it")->required()->type_name("N");
  command->add_option("-o,--output", args->output, "the file to write; standard output without")->type_name("OUT");
  command->add_flag("--raw", args->raw, "as stored, still compressed");
  command->add_flag("--force", args->force, "replace an existing file");
  command->callback([args, &run] { run = [args] { return extract(*args); }; });
}

}  // namespace Command
