#include <memory>

#include <fmt/format.h>

#include <libinspect/describe/PackageDescription.h>
#include <libinspect/records/FileJudge.h>
#include <libinspect/records/RecordCheck.h>

#include "Commands.h"

namespace Command {
namespace {

struct ManifestArguments {
  std::string input;
  std::string output;
  bool cable = false;
  bool force = false;
};

int newManifest(const ManifestArguments& args) {
  std::string text, error;
  Veltra::DatabasePackageManifest manifest;
  if (!Inspect::readText(args.input, Inspect::MOST_TEXT, text, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  if (!Inspect::parsePackage(text, manifest, error)) {
    complain(fmt::format("{}: {}", Inspect::inputName(args.input), error));
    return EXIT_COULD_NOT;
  }
  if (refusesToReplace(args.output, args.force, {args.input})) return EXIT_COULD_NOT;
  const uint16_t type = args.cable ? PFile::SECTION_CABLE_MANIFEST : PFile::SECTION_LIMIT_MANIFEST;
  if (Inspect::writePackage(manifest, type, args.output, error)) return EXIT_DONE;
  complain(error);
  return EXIT_COULD_NOT;
}

std::string textOf(const Veltra::DatabasePackageManifest& manifest, const std::string& kind) {
  const Veltra::DatabasePackageManifestSummary& summary = manifest.summary;
  std::string text = fmt::format("{} {}, release type {}, type {}, firmware {} or newer\n", kind,
                                 printable(summary.getFullVersionString()), summary.releaseType, summary.type,
                                 printable(summary.minReqFirmwareVersion));
  Table table({{"Type", true}, {"Version"}, {"Firmware"}, {"Path"}}, "database");
  for (const auto& database : manifest.descriptors) {
    const Veltra::DatabaseVersion& v = database->version;
    table.add({std::to_string(database->dbType), fmt::format("{}.{}.{}.{}", v.schema, v.content, v.object, v.build),
               database->minReqFirmwareVersion, database->filePath});
  }
  return text + table.text();
}

int showManifest(const ManifestArguments& args, const Options& options) {
  Inspect::ByteSource source;
  if (!openInput(source, args.input, options)) return EXIT_COULD_NOT;
  const Inspect::JudgedFile file = Inspect::judge(source);
  Inspect::Findings findings = file.report.findings;
  const std::optional<Inspect::SectionInfo>& first = file.report.first;
  const bool isPackage = first && PFile::isManifestSection(first->header.type);
  std::vector<uint8_t> bytes;
  Inspect::DecodedRecord record;
  if (isPackage && first->verdict == Inspect::DataVerdict::OK) record = examineRecord(source, *first, bytes, findings);
  if (!options.quiet) complainOfEach(source.name(), findings);
  const auto* const manifest = record.as<Veltra::DatabasePackageManifest>();
  if (manifest == nullptr) {
    complain(fmt::format("{}: not a readable database package", source.name()));
    return answerAfter(source, EXIT_NO);
  }
  printDocument({[&] { return textOf(*manifest, file.kind); }, [&] { return Inspect::packageJson(*manifest); }, {}, {}},
                options);
  return codeOf(findings);
}

}  // namespace

Subcommand manifestCommand(const Options& options) {
  const auto args = std::make_shared<ManifestArguments>();
  Subcommand command("manifest", "Write and show database packages");

  Subcommand& creating = command.commands.emplace_back("new", "Write a package from a description in JSON");
  creating.place("DESCRIPTION", "PACKAGE.json", &args->input, "the description; - reads standard input").required();
  creating.option("-o,--output", "FILE", &args->output, "the file to write").required();
  creating.flag("--cable", args->cable, "a cable database package instead of a limit database package");
  creating.flag("--force", args->force, FORCE_HELP);
  creating.run = [args] { return newManifest(*args); };

  Subcommand& showing = command.commands.emplace_back("show", "What a package holds");
  showing.place("FILE", "FILE", &args->input, "the package; - reads standard input").required();
  showing.run = [args, &options] { return showManifest(*args, options); };
  return command;
}

}  // namespace Command
