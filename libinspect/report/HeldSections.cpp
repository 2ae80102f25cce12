#include <libinspect/report/HeldSections.h>

#include <algorithm>
#include <new>
#include <string_view>

#include <fmt/format.h>

#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libinspect/container/ContainerWalk.h>
#include <libinspect/container/JsonFaults.h>
#include <libinspect/container/Secrets.h>
#include <libinspect/records/KnownPayload.h>
#include <libinspect/report/PageText.h>

namespace Inspect {
namespace {

using Veltra::EquipmentInformation;

bool isSettings(const DecodedRecord& record) {
  return record.id == Veltra::InstrumentSettings::SERIAL_TYPE_ID || record.id == Veltra::OrbelSettings::SERIAL_TYPE_ID;
}

/// A name of many values.
std::string shortened(const std::string& text, std::size_t most) {
  return text.size() <= most ? text : text.substr(0, cutAt(text, most)) + "...";
}
constexpr std::size_t MOST_NAME = 100;  ///< bytes
constexpr std::size_t MOST_PATH = 200;  ///< bytes of the names of all that a value is in, which each value repeats
constexpr std::size_t MOST_TEXT_SHOWN = 1000;

std::string textOf(const Json::Value& value) {
  if (value.isNull()) return "-";
  if (value.isObject() || value.isArray()) return "none";
  return shortenedTo(MOST_TEXT_SHOWN, value.asString());
}

/// What stands in a cell; a measurement counts as one value.
bool isValue(const Json::Value& value) {
  return isMeasurement(value) || !(value.isObject() || value.isArray()) || value.empty();
}

/// Whether these are several objects with values of the same names.
bool isTable(const Json::Value& value) {
  constexpr std::size_t MOST_COLUMNS = 10;
  if (!(value.isObject() || value.isArray()) || value.size() < 2) return false;
  const Json::Value& first = *value.begin();
  return std::all_of(value.begin(), value.end(), [&first](const Json::Value& line) {
    return line.isObject() && !isMeasurement(line) && !line.empty() && line.size() <= MOST_COLUMNS &&
           std::all_of(line.begin(), line.end(), isValue) && line.getMemberNames() == first.getMemberNames();
  });
}

/// Takes a document apart into values, named by the way to them, "pairs[0].length", and tables.
class ValueList {
 public:
  ValueList(HeldSection& section, std::size_t& left) : _section(section), _left(left) {}

  void add(const Json::Value& value, const std::string& name) {
    if (isMeasurement(value)) return add(value["text"], name);
    if (isValue(value)) {
      if (take(1)) _section.values.push_back({name, textOf(value)});
    } else if (isTable(value)) {
      addTable(value, name);
    } else {
      for (auto child = value.begin(); child != value.end(); ++child) {
        add(*child, _left == 0 ? std::string() : nameOf(child, value, name));  // what is only counted needs no name
      }
    }
  }

  std::size_t leftOut() const { return _leftOut; }

 private:
  static std::string nameOf(const Json::Value::const_iterator& child, const Json::Value& parent,
                            const std::string& parentName) {
    if (parent.isArray()) return shortened(fmt::format("{}[{}]", parentName, child.index()), MOST_PATH);
    return shortened(parentName + (parentName.empty() ? "" : ".") + shortened(child.name(), MOST_NAME), MOST_PATH);
  }

  bool take(std::size_t count) {
    if (count > _left) {
      _leftOut += count;
      return false;
    }
    _left -= count;
    return true;
  }

  /// Lines for which there is no room are left out at the end.
  void addTable(const Json::Value& value, const std::string& name) {
    if (value.begin()->size() > _left) {
      (void)take(std::size_t{value.size()} * value.begin()->size());
      return;
    }
    HeldTable& table = _section.tables.emplace_back();
    table.name = name;
    for (const std::string& column : value.begin()->getMemberNames()) {
      table.columns.push_back(shortened(column, MOST_NAME));
    }
    for (auto child = value.begin(); child != value.end(); ++child) {
      if (!take(child->size())) continue;
      std::vector<std::string>& line = table.lines.emplace_back();
      line.push_back(value.isArray() ? std::to_string(child.index()) : shortened(child.name(), MOST_NAME));
      for (const Json::Value& cell : *child) line.push_back(textOf(isMeasurement(cell) ? cell["text"] : cell));
    }
  }

  HeldSection& _section;
  std::size_t& _left;
  std::size_t _leftOut = 0;
};

class SectionReader {
 public:
  SectionReader(const TimeZone& zone, HeldBudget& left, HeldSections& held) : _zone(zone), _left(left), _held(held) {}

  void read(const ByteSource& source, const SectionInfo& info) {
    if (_left.sections == 0) {
      ++_held.leftOut;
      return;
    }
    --_left.sections;
    HeldSection& section = _held.sections.emplace_back();
    section.name = typeName(info.header.type);
    constexpr uint32_t MOST_SECTION = 8 * 1024 * 1024;
    std::vector<uint8_t> bytes;
    std::string error;
    if (info.header.dataSize <= MOST_SECTION) {
      if (loadPayload(source, info, bytes, error)) {
        take(info.header.type, bytes, section);
      } else if (crcOf(source, info.payloadOffset(), info.header.dataSize) != info.header.dataCrc) {
        _isChanged = true;
      }
    }
    if (!section.words.empty() || section.isShown()) return;
    section.kind = HeldKind::OPAQUE;
    section.words =
        fmt::format("{}{}, CRC-32 {:08x}", counted(info.header.dataSize, "byte"),
                    info.originalSize ? fmt::format(", {} uncompressed", *info.originalSize) : "", info.header.dataCrc);
  }

  /// A section was intact before, and is not any more.
  bool isChanged() const { return _isChanged; }

 private:
  void take(uint16_t type, const std::vector<uint8_t>& bytes, HeldSection& section) {
    KnownPayload payload = knownPayload(type, bytes);
    section.kind = HeldKind::DETAILS;
    if (payload.image) {
      section.kind = HeldKind::PICTURE;
      takePicture(*payload.image, bytes, section);
    } else if (payload.kind == PayloadKind::RECORD && isSettings(payload.record)) {
      section.kind = HeldKind::SETTINGS;
      section.words = "settings, not shown";
    } else if (const auto* const equipment = payload.record.as<EquipmentInformation>()) {
      section.kind = HeldKind::EQUIPMENT;
      section.values = equipmentValues(*equipment, _zone);
      if (section.values.empty()) section.words = "nothing named";
    } else if (payload.kind == PayloadKind::RECORD) {
      takeTable(payload.record.toJson(false), section);
    } else if (payload.kind == PayloadKind::JSON) {
      Json::Value shown = withoutSecrets(std::move(payload.document));
      useDigits(shown, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
      takeTable(shown, section);
      section.oversights = oversightsIn({bytes.begin(), bytes.end()}).kept;
    }
  }

  void takeTable(const Json::Value& json, HeldSection& section) {
    if (json.isNull()) return;
    ValueList list(section, _left.values);
    list.add(json, "");
    if (list.leftOut() > 0) section.words = fmt::format("and {} not shown", counted(list.leftOut(), "value"));
  }

  void takePicture(const ImageInfo& info, const std::vector<uint8_t>& bytes, HeldSection& section) {
    section.words = toString(info);
    constexpr char TOO_MUCH[] = "this link has larger pictures than a page can hold";
    Picture picture;
    const bool isDecoded = pixelsOf(info) <= Picture::MOST_PIXELS &&
                           (std::string_view(info.format) == "PGM" || bytes.size() <= Picture::MOST_BYTES);
    const uint64_t pixels = isDecoded ? pixelsOf(info) : 0;
    if (pixels > _left.pixels) {
      section.fault = TOO_MUCH;
      return;
    }
    _left.pixels -= pixels;
    if (!makePicture(bytes, Picture::MOST_BYTES, "", picture, section.fault)) return;
    if (picture.uri.size() > _left.pictures) {
      section.fault = TOO_MUCH;
    } else {
      _left.pictures -= picture.uri.size();
      section.picture = std::move(picture);
    }
  }

  const TimeZone& _zone;
  HeldBudget& _left;
  HeldSections& _held;
  bool _isChanged = false;
};

/// Calls `take` for each section after the summary.
/// @return false if the file could not be read to its end, or is damaged
template <class Take>
bool eachSection(const ByteSource& source, Take take) {
  SectionWalk walk(source, WalkDepth::HEADERS);
  SectionInfo section;
  while (walk.next(section)) {
    if (section.number > 0 && section.header.type != PFile::SECTION_RESULT_SUMMARY) take(section);
  }
  return !source.hasFailed() && !walk.report().damaged();
}

std::string line(const EquipmentInformation& equipment) {
  std::string text;
  const auto add = [&text](const char* separator, const char* words, const std::string& what) {
    if (!what.empty()) text += (text.empty() ? "" : separator) + std::string(words) + what;
  };
  add("", "", equipment.getModelIdStr());
  add(", ", "serial number ", equipment.getModelSerialNumber());
  add(", ", "software ", equipment.getSoftwareVersion());
  add("; ", "module ", equipment.getModuleIdStr());
  add(", ", "module serial number ", equipment.getModuleSerialNumber());
  return shortenedTo(MOST_TEXT_SHOWN, text);
}

}  // namespace

HeldSections heldSections(const std::string& file, const TimeZone& zone, HeldBudget& left) {
  HeldSections held;
  ByteSource source;
  if (file == inputName("-")) {
    held.error = file + ": can be read only once";
    return held;
  }
  if (!source.openFile(file, held.error)) return held;
  SectionReader reader(zone, left, held);
  const bool isIntact = eachSection(source, [&](const SectionInfo& section) { reader.read(source, section); });
  if (source.hasFailed()) {
    held.error = file + ": read error";
  } else if (!isIntact || reader.isChanged()) {
    held.error = file + ": changed while the page was made";
  }
  return held;
}

std::vector<HeldValue> equipmentValues(const EquipmentInformation& equipment, const TimeZone& zone) {
  const auto dayOf = [&zone](long time) { return time > 0 ? zone.day(static_cast<time_t>(time)) : std::string(); };
  const auto numberOf = [](int number) { return number != 0 ? std::to_string(number) : std::string(); };
  const Json::Value json = equipment.toJson(Dump::DumpFlags());
  std::vector<HeldValue> values = {{"Model", equipment.getModelIdStr()},
                                   {"Serial number", equipment.getModelSerialNumber()},
                                   {"Hardware revision", numberOf(equipment.getModelHardwareRevision())},
                                   {"Software", equipment.getSoftwareVersion()},
                                   {"Module", equipment.getModuleIdStr()},
                                   {"Module serial number", equipment.getModuleSerialNumber()},
                                   {"Module hardware revision", numberOf(equipment.getModuleHardwareRevision())},
                                   {"Module calibrated", dayOf(equipment.getModuleCalibrationTime())},
                                   {"Module first used", dayOf(equipment.getModuleFirstUseDate())},
                                   {"Adapter", json["liaId"].asString()},
                                   {"Adapter serial number", equipment.getLiaSerialNumber()},
                                   {"Adapter calibrated", dayOf(equipment.getLiaCalibrationTime())}};
  values.erase(std::remove_if(values.begin(), values.end(), [](const HeldValue& value) { return value.text.empty(); }),
               values.end());
  for (HeldValue& value : values) value.text = shortenedTo(MOST_TEXT_SHOWN, value.text);
  return values;
}

std::vector<std::string> instrumentsOf(const std::vector<std::string>& files, const ReadingOptions& options) {
  constexpr std::size_t MOST = 100;       // of a file, and in all
  constexpr uint32_t MOST_RECORD = 4096;  // stored bytes; the record has seven numbers and five short texts
  using Lines = std::vector<std::string>;
  const auto ask = [](const ByteSource& source) {
    Lines lines;
    (void)eachSection(source, [&](const SectionInfo& section) {
      std::vector<uint8_t> bytes;
      std::string error;
      if (section.header.dataSize > MOST_RECORD || lines.size() == MOST || !loadPayload(source, section, bytes, error))
        return;
      const DecodedRecord record = decodeRecord(bytes);
      const auto* const equipment = record.as<EquipmentInformation>();
      if (equipment != nullptr) lines.push_back(line(*equipment));
    });
    return lines;
  };
  Lines known;
  askEach<Lines>(
      files, options, ask, [&](const std::string&, const ReadOutcome& outcome, const std::optional<Lines>& lines) {
        if (outcome.state == ReadOutcome::OUT_OF_MEMORY) throw std::bad_alloc();
        if (!lines) return;
        for (const std::string& each : *lines) {
          if (!each.empty() && std::find(known.begin(), known.end(), each) == known.end() && known.size() < MOST)
            known.push_back(each);
        }
      });
  return known;
}

}  // namespace Inspect
