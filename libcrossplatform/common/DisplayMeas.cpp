#include <libcrossplatform/common/DisplayMeas.h>

#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

constexpr char NOT_AVAILABLE_TEXT[] = "N/A";
constexpr char NOT_APPLICABLE_TEXT[] = "---";

/// Keeps the value `pick` chooses. A bound on the side that merging looks for stays one (`kept`); the other bound is
/// replaced only by it.
void merge(DisplayMeas& merged, const DisplayMeas& other, ScaledInt (*pick)(const ScaledInt&, const ScaledInt&),
           DisplayType kept) {
  if (other.type == DISPLAY_TYPE_NOT_APPLICABLE) {
    merged.type = DISPLAY_TYPE_NOT_APPLICABLE;
    return;
  }
  if (other.type == DISPLAY_TYPE_NOT_AVAILABLE) return;
  switch (merged.type) {
    case DISPLAY_TYPE_NOT_AVAILABLE:
      merged = other;
      break;
    case DISPLAY_TYPE_VALUE:
      merged.value = pick(merged.value, other.value);
      merged.type = other.type;
      break;
    case DISPLAY_TYPE_GREATER_THAN:
    case DISPLAY_TYPE_LESS_THAN:
      merged.value = pick(merged.value, other.value);
      if (other.type == kept) merged.type = kept;
      break;
    default:
      break;
  }
}

}  // namespace

std::string DisplayMeas::toString() const {
  switch (type) {
    case DISPLAY_TYPE_NOT_AVAILABLE:
      return NOT_AVAILABLE_TEXT;
    case DISPLAY_TYPE_VALUE:
      return value.toString();
    case DISPLAY_TYPE_GREATER_THAN:
      return "> " + value.toString();
    case DISPLAY_TYPE_LESS_THAN:
      return "< " + value.toString();
    case DISPLAY_TYPE_NOT_APPLICABLE:
      return NOT_APPLICABLE_TEXT;
    default:
      return {};
  }
}

bool DisplayMeas::fromString(std::string text) {
  clear();
  DisplayType read = DISPLAY_TYPE_VALUE;
  if (text.empty() || text == NOT_AVAILABLE_TEXT) return true;
  if (text == NOT_APPLICABLE_TEXT) {
    type = DISPLAY_TYPE_NOT_APPLICABLE;
    return true;
  }
  if (text[0] == '>' || text[0] == '<') {
    read = text[0] == '>' ? DISPLAY_TYPE_GREATER_THAN : DISPLAY_TYPE_LESS_THAN;
    text.erase(0, 1);
  }
  if (!value.fromString(text)) return false;
  type = read;
  return true;
}

void DisplayMeas::mergeLowest(const DisplayMeas& other) {
  merge(*this, other, min, DISPLAY_TYPE_LESS_THAN);
}

void DisplayMeas::mergeHighest(const DisplayMeas& other) {
  merge(*this, other, max, DISPLAY_TYPE_GREATER_THAN);
}

unsigned DisplayMeas::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeInline(*this, out);
}

Marshal::StreamOpStatus DisplayMeas::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readInline(*this, in);
}

void DisplayMeas::dump(Dump::IFormatter& formatter, const Dump::DumpFlags&) const {
  formatter.field("DisplayMeas", toString().c_str());
}

}  // namespace Veltra
