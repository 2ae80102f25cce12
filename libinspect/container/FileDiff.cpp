#include <libinspect/container/FileDiff.h>

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>
#include <libinspect/container/Secrets.h>

namespace Inspect {
namespace {

/// A part of one of the files.
struct Stretch {
  const ByteSource& source;
  uint64_t offset;
  uint64_t size;
};

bool isSame(const Stretch& a, const Stretch& b) {
  return a.size == b.size && haveSameBytes(a.source, a.offset, b.source, b.offset, a.size);
}

/// "5 bytes, CRC 0x01234567"; null for none.
Json::Value described(const Stretch& stretch) {
  if (stretch.size == 0) return {};
  return fmt::format("{}, CRC 0x{:08x}", counted(stretch.size, "byte"),
                     crcOf(stretch.source, stretch.offset, stretch.size));
}

Stretch stretchOf(const ByteSource& source, const SectionInfo& section) {
  const uint64_t size = uint64_t{PFile::Header::BYTES} + section.header.dataSize;
  return {source, section.offset, std::min(size, source.size() - section.offset)};
}

/// An empty object or array is a value like any other.
bool isDeep(const Json::Value* value) {
  return value != nullptr && (value->isObject() || value->isArray()) && !value->empty();
}

class FileDiff {
 public:
  FileDiff(const ByteSource& a, const ByteSource& b, const FieldsOf& fieldsOf, bool reveal,
           const OnDifference& onDifference)
      : _a(a), _b(b), _fieldsOf(fieldsOf), _reveal(reveal), _onDifference(onDifference) {}

  Comparison run() {
    SectionWalk walkA(_a, WalkDepth::HEADERS_AND_CRCS), walkB(_b, WalkDepth::HEADERS_AND_CRCS);
    SectionInfo a, b;
    for (int number = 0;; ++number) {
      const bool isInA = walkA.next(a), isInB = walkB.next(b);
      if (!isInA && !isInB) break;
      _path = fmt::format("section[{}]", number);
      _sectionPath = _path.size();
      _isFileHeader = number == 0;
      compareSections(isInA ? &a : nullptr, isInB ? &b : nullptr);
    }
    _path = "after the sections";
    _sectionPath = _path.size();
    _isOnlyInOne = false;
    compareBytes({_a, walkA.end(), _a.size() - walkA.end()}, {_b, walkB.end(), _b.size() - walkB.end()});
    return {walkA.report(), walkB.report(), _differences};
  }

 private:
  /// What is compared of one section, in the order of the names; null without one.
  Json::Value membersOf(const ByteSource& source, const SectionInfo* section) const {
    if (section == nullptr) return {};
    const PFile::Header& header = section->header;
    Json::Value members;
    members["crc"] = toString(section->verdict);
    members["data"] = dataOf(source, *section);
    members["flags"] = flagWords(header.flags);
    members["magic"] = fmt::format("0x{:04x}", header.magic);
    members["type"] = header.type;
    members["version"] = header.version;
    return members;
  }

  Json::Value dataOf(const ByteSource& source, const SectionInfo& section) const {
    std::vector<uint8_t> bytes;
    std::string error;
    const bool isLoaded = section.verdict == DataVerdict::OK && loadPayload(source, section, bytes, error);
    if (isLoaded) {
      if (std::optional<Json::Value> fields = _fieldsOf(section.header.type, bytes)) return std::move(*fields);
    }
    const auto size = static_cast<uint32_t>(bytes.size());
    Json::Value data;
    data["crc"] = fmt::format("0x{:08x}", isLoaded ? PFile::crc32Of(bytes.data(), size) : section.header.dataCrc);
    data["size"] = isLoaded ? size : section.header.dataSize;
    return data;
  }

  void compareSections(const SectionInfo* a, const SectionInfo* b) {
    const bool isInBoth = a != nullptr && b != nullptr;
    _isOnlyInOne = !isInBoth;
    if (isInBoth && isSame(stretchOf(_a, *a), stretchOf(_b, *b))) return;
    const uint64_t before = _differences;
    const Json::Value membersA = membersOf(_a, a), membersB = membersOf(_b, b);
    compare(&membersA, &membersB, false);
    if (!isInBoth || _differences != before) return;
    const bool isOk = a->verdict == DataVerdict::OK && b->verdict == DataVerdict::OK;
    _path += isOk ? ": same values, other bytes" : ": other bytes";
    compareBytes(stretchOf(_a, *a), stretchOf(_b, *b));
  }

  void compareBytes(const Stretch& a, const Stretch& b) {
    if (isSame(a, b)) return;
    tell(described(a), described(b), false);
  }

  /// @param isMasked  what differs is not told
  void compare(const Json::Value* a, const Json::Value* b, bool isMasked) {
    const bool isDeepA = isDeep(a), isDeepB = isDeep(b);
    if (isMasked || (!isDeepA && !isDeepB)) {
      const Json::Value null;
      const Json::Value &valueA = a != nullptr ? *a : null, &valueB = b != nullptr ? *b : null;
      if (valueA != valueB) tell(valueA, valueB, isMasked);
    } else if (a != nullptr && b != nullptr && a->type() != b->type()) {
      if (!a->isNull()) compare(a, nullptr, false);
      if (!b->isNull()) compare(nullptr, b, false);
    } else if ((isDeepA ? a : b)->isArray()) {
      const Json::ArrayIndex sizeA = a != nullptr ? a->size() : 0, sizeB = b != nullptr ? b->size() : 0;
      for (Json::ArrayIndex i = 0; i < std::max(sizeA, sizeB); ++i) {
        compareChild(fmt::format("[{}]", i), i < sizeA ? &(*a)[i] : nullptr, i < sizeB ? &(*b)[i] : nullptr, false);
      }
    } else {
      compareMembers(a, b);
    }
  }

  void compareMembers(const Json::Value* a, const Json::Value* b) {
    Json::Value names(Json::objectValue);  // of both, in order
    for (const Json::Value* const value : {a, b}) {
      if (value == nullptr) continue;
      for (const std::string& name : value->getMemberNames()) names[name];
    }
    for (const std::string& name : names.getMemberNames()) {
      const auto in = [&name](const Json::Value* value) {
        return value != nullptr ? value->find(name.data(), name.data() + name.size()) : nullptr;
      };
      const Json::Value *const inA = in(a), *const inB = in(b);
      const auto isMasked = [&](const Json::Value* value) {
        return !_reveal && value != nullptr && isSecret(name, *value);
      };
      const std::string shown = _reveal || !namesSecret(name) ? name : masked(name).asString();
      compareChild("." + shown, inA, inB, isMasked(inA) || isMasked(inB));
    }
  }

  void compareChild(const std::string& name, const Json::Value* a, const Json::Value* b, bool isMasked) {
    const std::size_t size = _path.size();
    _path += name;
    compare(a, b, isMasked);
    _path.resize(size);
  }

  void tell(const Json::Value& a, const Json::Value& b, bool isMasked) {
    const auto shown = [&](const Json::Value& value) {
      return _reveal ? value : isMasked ? masked(value) : withoutSecrets(value);
    };
    ++_differences;
    _onDifference({shortened(_path), shown(a), shown(b), isValue()});
  }

  /// Whether the place is one of values. The file header holds the length of the file, which follows from the sections.
  bool isValue() const {
    const auto isBelow = [this](std::string_view name) { return _path.compare(_sectionPath, name.size(), name) == 0; };
    return _isOnlyInOne || (!_isFileHeader && (isBelow(".data") || isBelow(".type")));
  }

  const ByteSource& _a;
  const ByteSource& _b;
  const FieldsOf& _fieldsOf;
  bool _reveal;
  const OnDifference& _onDifference;
  std::string _path;
  std::size_t _sectionPath = 0;  ///< how much of it names the section
  bool _isFileHeader = false;
  bool _isOnlyInOne = false;  ///< the section is
  uint64_t _differences = 0;
};

}  // namespace

Comparison differencesOf(const ByteSource& a, const ByteSource& b, const FieldsOf& fieldsOf, bool reveal,
                         const OnDifference& onDifference) {
  return FileDiff(a, b, fieldsOf, reveal, onDifference).run();
}

}  // namespace Inspect
