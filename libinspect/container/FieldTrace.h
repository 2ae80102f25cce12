#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/serialization/IObjectReader.h>

namespace Inspect {

/// One field as read by a record.
struct TracedField {
  std::string path;  ///< names of the enclosing records and its own, with dots between them, list elements numbered
  const char* kind;  ///< wire kind: "u8", "string", "bytes", ...
  uint32_t offset;
  uint32_t size;  ///< bytes, a string's length word included
  Json::Value value;
};

using OnField = std::function<void(const TracedField&)>;

/// A stream that tells of every field that is read: name, wire kind, place and value. It offers no window, so that the
/// field lists pass it their names.
class TracingReader final : public Marshal::IObjectReader {
 public:
  /// @param in       the stream to read from; borrowed, like `onField`
  /// @param path     of every field begins with it, unless it is empty
  /// @param onField  may be empty
  TracingReader(Marshal::IObjectReader& in, const std::string& path, const OnField& onField)
      : _in(in), _onField(onField), _paths{path} {}
  /// From now on a run of bytes that does not end in zero reads as a failure, for records that would stop the program
  /// there.
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
  const OnField& _onField;
  std::vector<std::string> _paths;       ///< of the enclosing records, the innermost last
  std::map<std::string, int> _elements;  ///< how many elements each list has begun so far
  TracedField _field;
  std::string _name;
  bool _refusesOpenRuns = false;
  bool _failed = false;
};

}  // namespace Inspect
