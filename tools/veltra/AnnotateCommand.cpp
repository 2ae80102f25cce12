#include <memory>
#include <optional>

#include <fmt/format.h>

#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/WireBytes.h>
#include <libinspect/container/FieldTrace.h>
#include <libinspect/records/FileSummary.h>

#include "Commands.h"

namespace Command {
namespace {

struct Arguments {
  std::string file;
  std::optional<int> section;
};

std::string valueText(const Json::Value& value) {
  if (value.isString()) return "\"" + printable(value.asString()) + "\"";
  return value.isNull() ? "-" : jsonText(value, "");
}

/// Prints rows of offset, bytes, kind, field and value as they come.
class Annotation {
 public:
  explicit Annotation(const Options& options)
      : _format(options.format), _rows(options, "fields", {"offset", "size", "kind", "field", "value"}) {
    if (_format == FORMAT_TABLE)
      fmt::print("{}", painted(line("Offset", "Bytes", "Kind", "Field", "Value"), Tone::HEADING));
  }
  /// @param base  what field offsets count from in the file
  void add(const std::vector<Inspect::TracedField>& fields, const std::vector<uint8_t>& bytes, uint64_t base,
           const std::string& prefix) {
    for (const Inspect::TracedField& field : fields) {
      add(base + field.offset, bytes, field.offset, field.size, field.kind,
          prefix + fmt::format("{}", fmt::join(field.path, ".")), field.value);
    }
  }
  void add(uint64_t offset, const std::vector<uint8_t>& bytes, std::size_t at, std::size_t size, const char* kind,
           const std::string& name, const Json::Value& value) {
    const std::string text = _format == FORMAT_TABLE ? lines(offset, &bytes[at], size, kind, name, value) : "";
    print(text, offset, size, kind, name, value);
  }
  /// A stretch that is not taken apart.
  void addUntaken(uint64_t offset, uint64_t size, const std::string& name) {
    print(line(std::to_string(offset), fmt::format("({} bytes)", size), "", name, ""), offset, size, "data", name,
          Json::Value());
  }
  void finish() const { _rows.finish(); }

 private:
  static std::string line(const std::string& offset, const std::string& bytes, const std::string& kind,
                          const std::string& field, const std::string& value) {
    std::string text = fmt::format("{:>8} {:<23} {:<6} {:<54} {}", offset, bytes, kind, field, value);
    text.erase(text.find_last_not_of(' ') + 1);
    return text + "\n";
  }

  /// A long field goes on below its first line.
  static std::string lines(uint64_t offset, const uint8_t* bytes, std::size_t size, const char* kind,
                           const std::string& name, const Json::Value& value) {
    constexpr std::size_t BYTES_A_LINE = 8;
    std::string text;
    std::size_t at = 0;
    do {
      const std::size_t end = std::min(at + BYTES_A_LINE, size);
      const std::string hex = fmt::format("{:02x}", fmt::join(bytes + at, bytes + end, " "));
      text += at == 0 ? line(std::to_string(offset), hex, kind, printable(name), valueText(value))
                      : line(std::to_string(offset + at), hex, "", "", "");
      at = end;
    } while (at < size);
    return text;
  }

  void print(const std::string& text, uint64_t offset, uint64_t size, const char* kind, const std::string& name,
             const Json::Value& value) {
    if (_format == FORMAT_TABLE) return _rows.print(text, Json::Value(), {});
    Json::Value row(Json::objectValue);
    row["offset"] = static_cast<Json::UInt64>(offset);
    row["size"] = static_cast<Json::UInt64>(size);
    row["kind"] = kind;
    row["field"] = name;
    row["value"] = value;
    _rows.print(text, row, {row});
  }

  Format _format;
  AnswerStream _rows;
};

void annotateHeader(const Inspect::ByteSource& source, const Inspect::SectionInfo& section, Annotation& out) {
  std::vector<uint8_t> bytes(PFile::Header::BYTES);
  source.readAt(section.offset, bytes.data(), bytes.size());
  Marshal::ByteStreamReader in(bytes.data(), PFile::Header::BYTES);
  Inspect::TracingReader tracing(in);
  PFile::Header header;
  header.deserialize(tracing);
  out.add(tracing.trace(), bytes, section.offset, fmt::format("section[{}].", section.number));
}

void annotatePayload(const Inspect::ByteSource& source, const Inspect::SectionInfo& section, Annotation& out) {
  const std::string prefix = fmt::format("section[{}].data.", section.number);
  const uint64_t present = std::min<uint64_t>(section.header.dataSize, source.size() - section.payloadOffset());
  std::vector<uint8_t> bytes;
  std::string error;
  if (!loadPayload(source, section, bytes, error)) {
    return out.addUntaken(section.payloadOffset(), present, prefix + error);
  }
  if (section.number == 0 && bytes.size() == 4) {
    const uint32_t total = Marshal::loadLittle32(bytes.data());
    return out.add(section.payloadOffset(), bytes, 0, 4, "u32le", prefix + "totalLength", total);
  }
  const bool isCompressed = section.originalSize.has_value();
  if (isCompressed) {
    std::vector<uint8_t> word(4);
    source.readAt(section.payloadOffset(), word.data(), word.size());
    out.add(section.payloadOffset(), word, 0, 4, "u32le", prefix + "originalSize", *section.originalSize);
    out.addUntaken(section.payloadOffset() + 4, present - 4, prefix + "zlibStream");
  }
  std::vector<Inspect::TracedField> trace;
  const Inspect::DecodedRecord record = decodeRecord(bytes, Inspect::RecordForm::VERDICT_ALONE, &trace);
  // Fields of a compressed record are counted from the beginning of its uncompressed bytes.
  const uint64_t base = isCompressed ? 0 : section.payloadOffset();
  out.add(trace, bytes, base, prefix + (record.name.empty() ? "" : record.name + "."));
  const std::size_t taken = trace.empty() ? 0 : trace.back().offset + trace.back().size;
  if (taken < bytes.size() && !(isCompressed && trace.empty())) {
    out.addUntaken(base + taken, bytes.size() - taken, prefix + "rest");
  }
}

int annotate(const Arguments& args, const Options& options) {
  Inspect::ByteSource source;
  if (!openInput(source, args.file, options)) return EXIT_COULD_NOT;
  Annotation out(options);
  bool isThere = !args.section.has_value();
  const auto annotateSection = [&](const Inspect::SectionInfo& section, Inspect::Findings&) {
    if (args.section && section.number != *args.section) return;
    isThere = true;
    annotateHeader(source, section, out);
    annotatePayload(source, section, out);
  };
  const Inspect::ContainerReport report = walk(source, Inspect::WalkDepth::HEADERS_AND_CRCS, annotateSection);
  out.finish();
  if (!options.quiet) complainOfEach(source.name(), report.findings);
  if (!isThere) return complainOfNoSection(source, report, *args.section);
  return answerAfter(source, report.damaged() ? EXIT_NO : report.findings.empty() ? EXIT_DONE : EXIT_WITH_LOSS);
}

}  // namespace

void addAnnotate(CLI::App& app, const Options& options, Run& run) {
  CLI::App* const command = app.add_subcommand("annotate", "Every byte of headers and records beside its field");
  const auto args = std::make_shared<Arguments>();
  command->add_option("FILE", args->file, "the file; - reads standard input")->required()->type_name("FILE");
  command->add_option("-s,--section", args->section, "one section alone, as list numbers them")->type_name("N");
  command->callback([args, &options, &run] { run = [args, &options] { return annotate(*args, options); }; });
}

}  // namespace Command
