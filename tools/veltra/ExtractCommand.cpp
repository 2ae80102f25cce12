#include <cstdio>
#include <memory>

#include <fmt/format.h>

#include <libinspect/container/ContainerWalk.h>

#include "Commands.h"

namespace Command {
namespace {

struct ExtractArguments {
  std::string file;
  int section = 1;
  std::string output;
  bool raw = false;
  bool force = false;
};

int extract(const ExtractArguments& args, const Options& options) {
  if (args.output.empty() && isOutputTerminal()) {
    complain("binary data is not written to a terminal; use -o FILE or a pipe");
    return EXIT_COULD_NOT;
  }
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
  if (refusesToReplace(args.output, args.force, {args.file})) return EXIT_COULD_NOT;
  return saveOutput(args.output, bytes.data(), bytes.size()) ? EXIT_DONE : EXIT_COULD_NOT;
}

}  // namespace

Subcommand extractCommand(const Options& options) {
  const auto args = std::make_shared<ExtractArguments>();
  Subcommand command("extract", "The bytes of one section");
  command.place("FILE", "FILE", &args->file, "the file; - reads standard input").required();
  command.option("-s,--section", "N", &args->section, "its number as list shows it").required();
  command.option("-o,--output", "OUT", &args->output, "the file to write (default: standard output)");
  command.flag("--raw", args->raw, "as stored, still compressed");
  command.flag("--force", args->force, FORCE_HELP);
  command.run = [args, &options] { return extract(*args, options); };
  return command;
}

}  // namespace Command
