#include <libinspect/records/Annotation.h>

#include <algorithm>

#include <fmt/format.h>

#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/WireBytes.h>
#include <libinspect/records/RecordView.h>

namespace Inspect {
namespace {

constexpr uint32_t WORD = 4;  ///< bytes of the lengths before or instead of a record

class SectionAnnotation {
 public:
  SectionAnnotation(const ByteSource& source, const SectionInfo& section, bool reveal, const OnStretch& onStretch)
      : _source(source),
        _section(section),
        _reveal(reveal),
        _onStretch(onStretch),
        _name(fmt::format("section[{}]", section.number)),
        _data(_name + ".data.") {}

  void tellHeader() const {
    std::vector<uint8_t> bytes(PFile::Header::BYTES);
    _source.readAt(_section.offset, bytes.data(), bytes.size());
    Marshal::ByteStreamReader in(bytes.data(), PFile::Header::BYTES);
    const OnField onField = [&](const TracedField& field) {
      const bool isFlags = field.path == _name + ".flags";
      tellField(field, bytes, _section.offset, "", isFlags ? flagWords(_section.header.flags) : "");
    };
    TracingReader tracing(in, _name, onField);
    PFile::Header header;
    (void)header.deserialize(tracing);  // its bytes are there
  }

  void tellData() const {
    const uint64_t at = _section.payloadOffset();
    const uint64_t present = std::min<uint64_t>(_section.header.dataSize, _source.size() - at);
    std::vector<uint8_t> bytes;
    std::string error;
    if (!loadPayload(_source, _section, bytes, error)) return tellUntaken(at, present, error);
    if (_section.number == 0 && bytes.size() == WORD) return tellWord(bytes, "totalLength");
    if (!_reveal) maskSecrets(bytes, decodeRecord(bytes));
    if (!_section.originalSize) return tellRecord(bytes, at);
    std::vector<uint8_t> word(WORD);
    _source.readAt(at, word.data(), word.size());
    tellWord(word, "originalSize");
    tellUntaken(at + WORD, present - WORD, "zlibStream");
    tellRecord(bytes, 0);
  }

 private:
  void tellWord(const std::vector<uint8_t>& bytes, const char* name) const {
    _onStretch(
        {_section.payloadOffset(), WORD, "u32le", _data + name, Marshal::loadLittle32(bytes.data()), bytes.data(), {}});
  }

  void tellUntaken(uint64_t offset, uint64_t size, const std::string& name) const {
    _onStretch({offset, size, "data", _data + name, Json::Value(), nullptr, {}});
  }

  /// @param base  what the offset of the field counts from
  void tellField(const TracedField& field, const std::vector<uint8_t>& bytes, uint64_t base, const std::string& prefix,
                 const std::string& words = {}) const {
    _onStretch({base + field.offset, field.size, field.kind, prefix + field.path, field.value,
                bytes.data() + field.offset, words});
  }

  void tellRecord(const std::vector<uint8_t>& bytes, uint64_t base) const {
    std::size_t taken = 0;
    decodeRecord(bytes, [&](const TracedField& field) {
      taken = field.offset + field.size;
      tellField(field, bytes, base, _data);
    });
    const bool isCompressed = _section.originalSize.has_value();
    if (taken < bytes.size() && !(isCompressed && taken == 0)) tellUntaken(base + taken, bytes.size() - taken, "rest");
  }

  const ByteSource& _source;
  const SectionInfo& _section;
  bool _reveal;
  const OnStretch& _onStretch;
  std::string _name;
  std::string _data;
};

}  // namespace

Json::Value toJson(const AnnotatedStretch& stretch) {
  Json::Value json(Json::objectValue);
  json["offset"] = static_cast<Json::UInt64>(stretch.offset);
  json["size"] = static_cast<Json::UInt64>(stretch.size);
  json["kind"] = stretch.kind;
  json["field"] = stretch.field;
  json["value"] = stretch.value;
  return json;
}

const std::vector<std::string>& stretchColumns() {
  static const std::vector<std::string> COLUMNS = {"offset", "size", "kind", "field", "value"};
  return COLUMNS;
}

void annotate(const ByteSource& source, const SectionInfo& section, bool reveal, const OnStretch& onStretch) {
  const SectionAnnotation annotation(source, section, reveal, onStretch);
  annotation.tellHeader();
  annotation.tellData();
}

}  // namespace Inspect
