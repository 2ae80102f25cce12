#include <libinspect/describe/ResultDescription.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include <fmt/format.h>

#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libinspect/container/ByteSource.h>
#include <libinspect/container/ContainerWalk.h>
#include <libinspect/container/JsonFaults.h>
#include <libinspect/describe/ObjectReader.h>
#include <libinspect/records/IsoTime.h>

namespace Inspect {
namespace {

constexpr uint64_t MAX_PAYLOAD = std::numeric_limits<int32_t>::max();  // the most that every reader can address

template <class E>
void enumeration(ObjectReader& in, const char* key, E& out) {
  std::string text = toString(out);
  in.text(key, text);
  if (in.ok() && !Veltra::valueShownAs(text, out))
    in.fail(key, text, "a text the library prints, such as \"" + std::string(toString(out)) + "\"");
}

void timeStamp(ObjectReader& in, const char* key, long& out) {
  const Json::Value* const v = in.take(key);
  if (v == nullptr) return;
  time_t time = 0;
  if (v->isInt64()) {
    time = static_cast<time_t>(v->asInt64());
  } else if (!v->isString() || !fromIsoUtc(v->asString(), time)) {
    in.fail(key, *v, "a time such as \"2024-01-31T09:15:00Z\" or seconds since 1970");
  }
  out = static_cast<long>(time);
}

std::string withoutSpaces(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
  return text;
}

/// A measurement as text, or as the object the commands print, of which the text is used.
void measurement(ObjectReader& in, const char* key, Veltra::DisplayMeas& out) {
  const Json::Value* v = in.take(key);
  if (v == nullptr) return;
  const Json::Value& found = *v;
  if (found.isObject() && found.isMember("text")) v = &found["text"];
  const std::string text = v->isString() ? v->asString() : "";
  Veltra::DisplayMeas read;
  // A text that is printed differently is not a measurement, or one that the record cannot hold exactly.
  const bool ok = v->isString() && read.fromString(text) && read.value.hasPrintableScale() &&
                  (text.empty() || withoutSpaces(read.toString()) == withoutSpaces(text));
  if (!ok) {
    return in.fail(key, found, "a measurement of up to 4 decimals such as \"45.2\", \"> 12.50\", \"N/A\" or \"---\"");
  }
  out = read;
}

void testFlags(ObjectReader& in, const char* key, unsigned& out) {
  const Json::Value* const v = in.take(key);
  if (v == nullptr) return;
  unsigned flags = 0;
  bool ok = v->isArray();
  for (Json::ArrayIndex i = 0; ok && i < v->size(); ++i) {
    // Bit 31 is printed as a signed number.
    const boost::optional<int64_t> flag = Veltra::int64FromJson((*v)[i], nullptr);
    const auto bits = flag ? static_cast<uint32_t>(*flag) : 0u;
    ok = bits != 0 && (bits & (bits - 1)) == 0 && (*flag == bits || *flag == static_cast<int32_t>(bits));
    flags |= bits;
  }
  if (!ok) return in.fail(key, *v, "a list of powers of two");
  out = flags;
}

void count(ObjectReader& in, const char* key, int& out) {
  // One signed byte in the file: a larger count would be read back as another number.
  in.integer(key, out, std::numeric_limits<int8_t>::min(), std::numeric_limits<int8_t>::max());
}

void parseSection(const Json::Value& json, const std::string& text, const std::string& path, DescribedSection& section,
                  std::string& error) {
  ObjectReader in(json, text, path, error);
  if (json.isObject() && json["type"].isString()) {
    std::string name;
    in.text("type", name);
    if (const PFile::SectionType* const known = PFile::findSectionType(std::string_view(name))) {
      section.type = known->id;
    } else {
      in.fail("type", name, "the name or number of a section type");
    }
  } else {
    in.integer("type", section.type, 2, std::numeric_limits<uint16_t>::max());
    if (in.ok() && section.type == 0) in.fail("type", Json::Value(), "the name or number of a section type");
  }
  in.integer("version", section.version, 0, std::numeric_limits<uint16_t>::max());
  in.boolean("compress", section.compress);
  in.text("payload", section.payload);
  if (in.ok() && section.payload.empty()) in.fail("payload", Json::Value(), "the path of a file");
  in.finish();
}

bool writeDataSection(const DescribedSection& described, int level, ResultWriter& file, std::string& error) {
  ByteSource source;
  source.setLimit(described.compress ? PFile::Section::MAX_UNCOMPRESSED : MAX_PAYLOAD);
  const bool isOpen = source.openFile(described.payload, error);
  if (!isOpen && !source.isOverLimit()) return false;
  if (!ResultWriter::isPayload(source.name(), source.size(), described.compress, error) || !isOpen) return false;
  const auto size = static_cast<uint32_t>(source.size());
  const std::unique_ptr<uint8_t[]> bytes(new uint8_t[size]);
  if (source.readAt(0, bytes.get(), size) != size) {
    error = fmt::format("{}: read error", source.name());
    return false;
  }
  return file.write(described, level, bytes.get(), size, error);
}

}  // namespace

bool parseDescription(const std::string& text, const std::string& payloads, ResultDescription& description,
                      std::string& error) {
  Json::Value root;
  error.clear();
  if (!parseWholeJson(text, root, error)) return false;
  ObjectReader in(root, text, "description", error);
  const Json::Value* const summary = in.take("summary");
  if (summary != nullptr) {
    if (!parseSummary(*summary, text, description.summary, error)) return false;
  } else if (in.ok()) {
    in.fail("summary", Json::Value(), "an object");
  }
  const Json::Value* const sections = in.take("sections");
  if (in.ok() && sections != nullptr && !sections->isArray()) in.fail("sections", *sections, "a list");
  for (Json::ArrayIndex i = 0; in.ok() && sections != nullptr && i < sections->size(); ++i) {
    DescribedSection section;
    parseSection((*sections)[i], text, fmt::format("sections[{}]", i), section, error);
    if (section.payload[0] != '/' && !payloads.empty()) section.payload = payloads + "/" + section.payload;
    description.sections.push_back(section);
  }
  in.finish();
  return in.ok();
}

bool parseSummary(const Json::Value& json, const std::string& text, Veltra::ResultSummary& s, std::string& error) {
  namespace Names = Veltra::SummaryNames;
  ObjectReader in(json, text, "summary", error);
  in.text(Names::RESULT_NAME, s.resultName);
  enumeration(in, Names::RESULT_TYPE, s.resultType);
  timeStamp(in, Names::TIME_STAMP, s.timeStamp);
  enumeration(in, Names::STATUS, s.status);
  measurement(in, Names::LENGTH, s.length);
  measurement(in, Names::HEADROOM, s.headroom);
  testFlags(in, Names::TEST_FLAGS, s.testFlags);
  count(in, Names::NUM_PASS_TESTS, s.numPassTests);
  count(in, Names::NUM_PASS_STAR_TESTS, s.numPassStarTests);
  count(in, Names::NUM_FAIL_TESTS, s.numFailTests);
  in.finish();
  return in.ok();
}

bool ResultWriter::open(const std::string& path, std::string& error) {
  _path = path;
  if (_file.open(path.c_str()) == 0) return true;
  error = fmt::format("{}: {}", path, std::strerror(errno));
  return false;
}

bool ResultWriter::writeSummary(Veltra::ResultSummary& summary, std::string& error) {
  Veltra::MemFileWriter writer(&_file.writer());
  if (writer.writeSection(summary, Veltra::RESULT_SUMMARY_SECTION_VERSION, PFile::SECTION_RESULT_SUMMARY, 0, 0) ==
      Veltra::RESULT_WRITER_OK) {
    return true;
  }
  error = fmt::format("{}: the summary could not be written: {}", _path, std::strerror(errno));
  return false;
}

bool ResultWriter::isPayload(const std::string& name, uint64_t size, bool compresses, std::string& error) {
  if (size == 0 || size > MAX_PAYLOAD) {
    error = fmt::format("{}: expected a payload of 1 to {} bytes, found {}", name, MAX_PAYLOAD, size);
    return false;
  }
  if (!compresses || size <= PFile::Section::MAX_UNCOMPRESSED) return true;
  error = fmt::format("{}: expected at most {} bytes to compress, found {}: store it uncompressed", name,
                      PFile::Section::MAX_UNCOMPRESSED, size);
  return false;
}

bool ResultWriter::write(const DescribedSection& described, int level, const uint8_t* bytes, uint32_t size,
                         std::string& error) {
  PFile::Section section;
  const PFile::SECTION_FLAGS flags = described.compress ? PFile::SECTION_FLAG_COMPRESS : PFile::SECTION_FLAGS{0};
  // The section reads the bytes alone. With bytes to compress and a known level zlib lacks nothing but memory.
  if (section.set(described.type, described.version, flags, const_cast<uint8_t*>(bytes), size, false, level) != 0) {
    throw std::bad_alloc();
  }
  const uint64_t total = uint64_t{_file.writer().size()} + PFile::Header::BYTES + section.payload.size();
  if (total > PFile::FileWriter::MAX_BYTES) {
    error = fmt::format("{}: expected a container of at most {} bytes, found {} with it",
                        described.payload.empty() ? _path : described.payload, PFile::FileWriter::MAX_BYTES, total);
    return false;
  }
  if (_file.writer().write(section) == 0) return true;
  error = fmt::format("section {}: {}", typeName(described.type), std::strerror(errno));
  return false;
}

bool ResultWriter::commit(std::string& error) {
  if (_file.commit() == 0) return true;
  error = fmt::format("{}: {}", _path, std::strerror(errno));
  return false;
}

bool packResult(ResultDescription& description, const std::string& path, int level, PackedFile& packed,
                std::string& error) {
  ResultWriter file;
  error.clear();
  if (!file.open(path, error) || !file.writeSummary(description.summary, error)) return false;
  for (const DescribedSection& section : description.sections) {
    if (!writeDataSection(section, level, file, error)) return false;
  }
  packed.bytes = file.bytes();
  if (!file.commit(error)) return false;
  packed.sections = static_cast<int>(description.sections.size()) + 2;
  return true;
}

}  // namespace Inspect
