#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/serialization/IObjectReader.h>

namespace Inspect {

/// One field as read by a record.
struct TracedField {
  std::vector<std::string> path;  ///< names of the enclosing records and its own, list elements numbered
  const char* kind;               ///< wire kind: "u8", "string", "bytes", ...
  uint32_t offset;
  uint32_t size;  ///< bytes, a string's length word included
  Json::Value value;
};

/// A stream that records every field that is read: name, wire kind, place and value. It offers no window, so that the
/// field lists pass it their names.
class TracingReader final : public Marshal::IObjectReader {
 public:
  /// @param in  borrowed; the stream to read from
  explicit TracingReader(Marshal::IObjectReader& in) : _in(in) {}
  const std::vector<TracedField>& trace() const { return _fields; }
  /// From now on a run of bytes that does not end in zero reads as a failure, for records that would stop the program
  /// there; fields are no longer recorded.
  void refuseOpenRuns() { _refusesOpenRuns = true; }

  uint32_t position() const override { return _in.position(); }
  bool seekTo(uint32_t position) override { return _in.seekTo(position); }
  void beginField(const char* name) override;
  void beginRecord(const char* name) override;
  void endRecord() override;
  bool readBool(bool& v) override;
  bool readUInt8(uint8_t& v) override;
  bool readInt8(int8_t& v) override;
  bool readUInt16(uint16_t& v) override;
  bool readInt16(int16_t& v) override;
  bool readUInt32(uint32_t& v) override;
  bool readInt32(int32_t& v) override;
  bool readInt64(int64_t& v) override;
  bool readFloat(float& v) override;
  bool readBytes(uint8_t* data, uint32_t size) override;
  bool readString(std::string& v) override;
  Marshal::StreamOpStatus status() const override { return _failed ? Marshal::STREAM_WRONG_ELEMENT : _in.status(); }

 private:
  template <class T>
  bool noted(bool (Marshal::IObjectReader::*read)(T&), T& v, const char* kind);
  void note(const char* kind, uint32_t start, Json::Value value);

  Marshal::IObjectReader& _in;
  std::vector<TracedField> _fields;
  std::vector<std::string> _path;
  std::map<std::vector<std::string>, int> _elements;  ///< how many elements each list has begun so far
  std::string _name;
  bool _refusesOpenRuns = false;
  bool _failed = false;
};

}  // namespace Inspect
