#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <cstdint>

#include <libcrossplatform/common/PFileTypes.h>
#include <libcrossplatform/serialization/IDumpable.h>

namespace PFile {

/// A run of bytes that is either borrowed or owned. It never copies them, and cannot be copied itself.
class VELTRA_EXPORT Payload : public Dump::IDumpable {
 public:
  Payload() = default;
  ~Payload() override { reset(); }
  Payload(const Payload&) = delete;
  Payload& operator=(const Payload&) = delete;

  /// Releases owned bytes; empty and not owned afterwards.
  void reset();
  /// Replaces what was held.
  /// @param owned  true: `data` came from new[] and is released with delete[]; false: borrowed, must stay valid
  void set(unsigned int size, unsigned char const* data, bool owned);

  uint32_t size() const { return _size; }              ///< bytes
  unsigned char const* data() const { return _data; }  ///< valid until set() or reset(); null when empty
  bool owned() const { return _owned; }                ///< released with the payload
  /// True also for a size without data.
  bool empty() const { return _data == nullptr || _size == 0; }

  /// Same size and bytes. Null data equals only null data, whatever the size.
  bool operator==(const Payload& other) const;
  bool operator!=(const Payload& other) const { return !(*this == other); }
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

 private:
  uint32_t _size = 0;
  unsigned char const* _data = nullptr;
  bool _owned = false;
};

}  // namespace PFile
