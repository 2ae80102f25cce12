#include <algorithm>
#include <memory>
#include <optional>

#include <fmt/format.h>

#include <libinspect/records/Annotation.h>

#include "Commands.h"

namespace Command {
namespace {

struct AnnotateArguments {
  std::string file;
  std::optional<int> section;
  bool reveal = false;
};

std::string valueText(const Inspect::AnnotatedStretch& stretch) {
  const Json::Value& value = stretch.value;
  if (value.isString()) return "\"" + printable(value.asString()) + "\"";
  const std::string text = value.isNull() ? "-" : jsonText(value, "");
  return stretch.words.empty() ? text : fmt::format("{} ({})", text, stretch.words);
}

/// Prints rows of offset, bytes, kind, field and value as they come.
class Annotation {
 public:
  explicit Annotation(const Options& options)
      : _format(options.format), _rows(options, "fields", Inspect::stretchColumns()) {
    if (_format == FORMAT_TABLE)
      fmt::print("{}", painted(line("Offset", "Bytes", "Kind", "Field", "Value"), Tone::HEADING));
  }
  void add(const Inspect::AnnotatedStretch& stretch) {
    if (_format == FORMAT_TABLE) return _rows.print(textOf(stretch), Json::Value(), {});
    Json::Value row = toJson(stretch);
    std::vector<Json::Value> rows;
    if (_format != FORMAT_JSON) rows.emplace_back().swap(row);
    _rows.print("", row, rows);
  }
  void finish() const { _rows.finish(); }

 private:
  /// "0a ff"
  static std::string hexOf(const uint8_t* bytes, std::size_t size) {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += {DIGITS[bytes[i] >> 4], DIGITS[bytes[i] & 0x0F], ' '};
    if (!text.empty()) text.pop_back();
    return text;
  }

  static std::string line(const std::string& offset, const std::string& bytes, const std::string& kind,
                          const std::string& field, const std::string& value) {
    constexpr std::size_t OFFSET = 8, BYTES = 23, KIND = 6, FIELD = 54;
    std::string text(OFFSET - std::min(OFFSET, offset.size()), ' ');
    text += offset;
    const auto add = [&text](const std::string& cell, std::size_t width) {
      text += ' ';
      text += cell;
      text.append(width - std::min(width, cell.size()), ' ');
    };
    add(bytes, BYTES);
    add(kind, KIND);
    add(field, FIELD);
    add(value, 0);
    text.erase(text.find_last_not_of(' ') + 1);
    return text + "\n";
  }

  /// A long field continues below its first line.
  static std::string textOf(const Inspect::AnnotatedStretch& stretch) {
    constexpr std::size_t BYTES_A_LINE = 8;
    if (stretch.bytes == nullptr) {
      return line(std::to_string(stretch.offset), "(" + counted(stretch.size, "byte") + ")", "", stretch.field, "");
    }
    std::string text;
    std::size_t at = 0;
    do {
      const std::size_t end = std::min<std::size_t>(at + BYTES_A_LINE, stretch.size);
      const std::string offset = std::to_string(stretch.offset + at);
      const std::string hex = hexOf(stretch.bytes + at, end - at);
      text += at == 0 ? line(offset, hex, stretch.kind, printable(stretch.field), valueText(stretch))
                      : line(offset, hex, "", "", "");
      at = end;
    } while (at < stretch.size);
    return text;
  }

  Format _format;
  AnswerStream _rows;
};

int annotate(const AnnotateArguments& args, const Options& options) {
  Inspect::ByteSource source;
  if (!openInput(source, args.file, options)) return EXIT_COULD_NOT;
  if (complainsOfOther(source)) return answerAfter(source, EXIT_COULD_NOT);
  Annotation out(options);
  bool isThere = !args.section.has_value();
  const auto annotateSection = [&](const Inspect::SectionInfo& section, Inspect::Findings&) {
    if (args.section && section.number != *args.section) return;
    isThere = true;
    Inspect::annotate(source, section, args.reveal,
                      [&out](const Inspect::AnnotatedStretch& stretch) { out.add(stretch); });
  };
  const Inspect::ContainerReport report = walk(source, Inspect::WalkDepth::HEADERS_AND_CRCS, annotateSection);
  out.finish();
  if (!options.quiet) complainOfEach(source.name(), report.findings);
  if (!isThere) return complainOfNoSection(source, report, *args.section);
  return answerAfter(source, report.damaged() ? EXIT_NO : report.findings.empty() ? EXIT_DONE : EXIT_WITH_LOSS);
}

}  // namespace

Subcommand annotateCommand(const Options& options) {
  const auto args = std::make_shared<AnnotateArguments>();
  Subcommand command("annotate", "Every byte of headers and records with the field it belongs to");
  command.place("FILE", "FILE", &args->file, "the file; - reads standard input").required();
  command.option("-s,--section", "N", &args->section, "only this section, numbered as in list");
  command.flag("--reveal", args->reveal, REVEAL_HELP);
  command.run = [args, &options] { return annotate(*args, options); };
  return command;
}

}  // namespace Command
