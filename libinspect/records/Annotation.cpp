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
        _name(fmt::format("section[{}].", section.number)),
        _data(_name + "data.") {}

  void tellHeader() const {
    std::vector<uint8_t> bytes(PFile::Header::BYTES);
    _source.readAt(_section.offset, bytes.data(), bytes.size());
    Marshal::ByteStreamReader in(bytes.data(), PFile::Header::BYTES);
    TracingReader tracing(in);
    PFile::Header header;
    (void)header.deserialize(tracing);  // its bytes are there
    tellFields(tracing.trace(), bytes, _section.offset, _name);
  }

  void tellData() const {
    const uint64_t at = _section.payloadOffset();
    const uint64_t present = std::min<uint64_t>(_section.header.dataSize, _source.size() - at);
    std::vector<uint8_t> bytes;
    std::string error;
    if (!loadPayload(_source, _section, bytes, error)) return tellUntaken(at, present, error);
    if (_section.number == 0 && bytes.size() == WORD) return tellWord(bytes, "totalLength");
    if (!_reveal) bytes = withoutSecrets(bytes);
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
        {_section.payloadOffset(), WORD, "u32le", _data + name, Marshal::loadLittle32(bytes.data()), bytes.data()});
  }

  void tellUntaken(uint64_t offset, uint64_t size, const std::string& name) const {
    _onStretch({offset, size, "data", _data + name, Json::Value(), nullptr});
  }

  /// @param base  what the offsets of fields count from
  void tellFields(const std::vector<TracedField>& fields, const std::vector<uint8_t>& bytes, uint64_t base,
                  const std::string& prefix) const {
    for (const TracedField& field : fields) {
      _onStretch({base + field.offset, field.size, field.kind, prefix + fmt::format("{}", fmt::join(field.path, ".")),
                  field.value, bytes.data() + field.offset});
    }
  }

  void tellRecord(const std::vector<uint8_t>& bytes, uint64_t base) const {
    std::vector<TracedField> trace;
    const DecodedRecord record = decodeRecord(bytes, &trace);
    tellFields(trace, bytes, base, _data + (record.name.empty() ? "" : record.name + "."));
    const bool isCompressed = _section.originalSize.has_value();
    const std::size_t taken = trace.empty() ? 0 : trace.back().offset + trace.back().size;
    if (taken < bytes.size() && !(isCompressed && trace.empty()))
      tellUntaken(base + taken, bytes.size() - taken, "rest");
  }

  const ByteSource& _source;
  const SectionInfo& _section;
  bool _reveal;
  const OnStretch& _onStretch;
  std::string _name;
  std::string _data;
};

}  // namespace

void annotate(const ByteSource& source, const SectionInfo& section, bool reveal, const OnStretch& onStretch) {
  const SectionAnnotation annotation(source, section, reveal, onStretch);
  annotation.tellHeader();
  annotation.tellData();
}

}  // namespace Inspect
