#include <memory>

#include <fmt/format.h>

#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libinspect/container/Doctor.h>
#include <libinspect/describe/PackageDescription.h>
#include <libinspect/records/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

struct Arguments {
  std::string input;
  std::string output;
  bool cable = false;
  bool force = false;
};

int newManifest(const Arguments& args) {
  constexpr uint64_t MAX_DESCRIPTION = uint64_t{16} * 1024 * 1024;
  std::string text, error;
  Veltra::DatabasePackageManifest manifest;
  if (!Inspect::readText(args.input, MAX_DESCRIPTION, text, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  if (!Inspect::parsePackage(text, manifest, error)) {
    complain(fmt::format("{}: {}", args.input == "-" ? "standard input" : args.input, error));
    return EXIT_COULD_NOT;
  }
  if (refusesToReplace(args.output, args.force)) return EXIT_COULD_NOT;
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
  Table table({{"Type", true}, {"Version"}, {"Firmware"}, {"Path"}});
  for (const auto& database : manifest.descriptors) {
    const Veltra::DatabaseVersion& v = database->version;
    table.add({std::to_string(database->dbType), fmt::format("{}.{}.{}.{}", v.schema, v.content, v.object, v.build),
               database->minReqFirmwareVersion, database->filePath});
  }
  return text + table.text();
}

int showManifest(const Arguments& args, const Options& options) {
  Inspect::ByteSource source;
  if (!openInput(source, args.input, options)) return EXIT_COULD_NOT;
  const Inspect::FileSummary file = Inspect::summarize(source);
  Inspect::Findings findings = file.report.findings;
  const std::optional<Inspect::SectionInfo>& first = file.report.first;
  const bool isPackage = first && (first->header.type == PFile::SECTION_LIMIT_MANIFEST ||
                                   first->header.type == PFile::SECTION_CABLE_MANIFEST);
  std::vector<uint8_t> bytes;
  Inspect::DecodedRecord record;
  if (isPackage && first->verdict == Inspect::DataVerdict::OK) record = examineRecord(source, *first, bytes, findings);
  if (!options.quiet) complainOfEach(source.name(), findings);
  if (record.outcome != Inspect::DecodedRecord::DECODED ||
      record.id != Veltra::DatabasePackageManifest::SERIAL_TYPE_ID) {
    complain(fmt::format("{}: no database package that can be read", source.name()));
    return answerAfter(source, EXIT_NO);
  }
  // It decoded just now, so nothing in it stops the program.
  Veltra::DatabasePackageManifest manifest;
  Marshal::ByteStreamReader in(bytes.data(), static_cast<uint32_t>(bytes.size()));
  manifest.deserialize(in);
  printDocument({textOf(manifest, file.kind), Inspect::packageJson(manifest), {}, {}}, options);
  return findings.hasDamage() ? EXIT_NO : findings.empty() ? EXIT_DONE : EXIT_WITH_LOSS;
}

}  // namespace

void addManifest(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("manifest", "Write and show database packages");
  const auto args = std::make_shared<Arguments>();
  command->require_subcommand(1);
  command->fallthrough();

  CLI::App* const creating = command->add_subcommand("new", "Write a package from a description in JSON");
  creating->add_option("DESCRIPTION", args->input, "the description; - reads standard input")
      ->required()
      ->type_name("PACKAGE.json");
  creating->add_option("-o,--output", args->output, "the file to write")->required()->type_name("FILE");
  creating->add_flag("--cable", args->cable, "a cable database package instead of a limit database package");
  creating->add_flag("--force", args->force, "replace an existing file");
  creating->callback([args, &run] { run = [args] { return newManifest(*args); }; });

  CLI::App* const showing = command->add_subcommand("show", "What a package holds");
  showing->add_option("FILE", args->input, "the package; - reads standard input")->required()->type_name("FILE");
  showing->callback([args, &options, &run] { run = [args, &options] { return showManifest(*args, options); }; });
}

}  // namespace Command
