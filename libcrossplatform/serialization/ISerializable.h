#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/logging/Export.h>
#include <libcrossplatform/serialization/IDumpable.h>
#include <libcrossplatform/serialization/IObjectReader.h>
#include <libcrossplatform/serialization/IObjectWriter.h>

namespace Marshal {

class FieldAccess;  // FieldEncoder.h: a friend of every record with a field list

/// A record that writes itself to a stream and reads itself back.
class VELTRA_EXPORT ISerializable {
 public:
  /// Never changes the record. @return bytes written; 0 from an inline record on a stream without positions
  virtual unsigned serialize(IObjectWriter& out) = 0;
  /// @return 0, or a negative code (MarshalTypes.h); the record may then be partly filled: clear() or discard it
  [[nodiscard]] virtual StreamOpStatus deserialize(IObjectReader& in) = 0;
  virtual ~ISerializable() = default;
};

/// A record that can also be dumped: most of them.
class VELTRA_EXPORT IDumpSerializable : public ISerializable, public Dump::IDumpable {
 public:
  ~IDumpSerializable() override = default;
};

}  // namespace Marshal
