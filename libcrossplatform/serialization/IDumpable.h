#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <libcrossplatform/logging/Export.h>
#include <libcrossplatform/serialization/DumpFlags.h>
#include <libcrossplatform/serialization/IFormatter.h>

namespace Dump {

/// A record that can show itself as text.
class VELTRA_EXPORT IDumpable {
 public:
  /// Hands the record to a formatter, field by field or as one text. Never changes the record.
  /// @param flags  how much of it; records pass them on to those they hold
  virtual void dump(IFormatter& formatter, const DumpFlags& flags) const = 0;
  virtual ~IDumpable() = default;
};

}  // namespace Dump
