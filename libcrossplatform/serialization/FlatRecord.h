#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <limits>
#include <string>

#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/FieldEncoder.h>
#include <libcrossplatform/serialization/FixedFields.h>
#include <libcrossplatform/serialization/Header.h>

/// Flat records (RecordShape.h) in the library's own streams: one look at the room for all of a record, then its fields
/// one after the other.
namespace Marshal {

/// Bytes of a flat record with its header.
template <class Record>
VELTRA_ALWAYS_INLINE std::size_t flatBytes(Record& record) {
  FieldCounter counter(Record::CLASS_VERSION);
  FieldAccess::walk(record, counter);
  return Header::BYTES + counter.size();
}

/// Stores a flat record of `size` bytes where there is room for all of them: no field is compared with what is left.
template <class Record>
VELTRA_ALWAYS_INLINE void storeFlat(Record& record, uint8_t* to, std::size_t size) {
  storeBig(to, Header::beginning(Record::SERIAL_TYPE_ID, Record::CLASS_VERSION));
  storeBig(to + sizeof(uint64_t), static_cast<uint32_t>(size - Header::BYTES));
  FieldEncoder<FixedOut> f(Record::CLASS_VERSION, to + Header::BYTES);
  FieldAccess::walk(record, f);
}

template <class Record>
VELTRA_ALWAYS_INLINE bool StreamOut::flat(Record& nested) {
  if (_window.cursor == nullptr || exactly<ByteStreamBuilder>(_stream) == nullptr) return false;
  const std::size_t size = flatBytes(nested);
  if (static_cast<std::size_t>(_window.end - _window.cursor) < size) {
    if (size > std::numeric_limits<uint32_t>::max()) return false;
    _window = refilled(_stream, _window, static_cast<uint32_t>(size));
    if (_window.cursor == nullptr) return false;
  }
  storeFlat(nested, _window.cursor, size);
  _window.cursor += size;
  return true;
}

template <class Record>
VELTRA_ALWAYS_INLINE bool CountOut::flat(Record& nested) {
  _texts += flatBytes(nested);
  return true;
}

/// Loads the fields of a flat record from bytes that hold all its fixed-width ones: a text is compared with what is
/// left of the bytes of texts, a nested version with the newest known. What is wrong is noticed and not named: a
/// FieldReader then reads the record again and says what it is.
class FlatReader : public FixedFields<FlatReader> {
 public:
  /// @param texts  bytes of the texts together
  FlatReader(const uint8_t* cursor, std::size_t texts, uint8_t classVersion)
      : _cursor(cursor), _texts(texts), _version(classVersion) {}

  uint8_t version() const { return _version; }  ///< class version being read
  /// Whether the fields were all there and nothing else.
  bool isWhole() const { return _wellFormed && _texts == 0; }

  ///@{
  /// The verbs of FieldReader.
  template <class T>
  VELTRA_ALWAYS_INLINE bool get(const char*, T& v) {
    v = loadBig<T>(_cursor);
    _cursor += sizeof(T);
    return true;
  }
  VELTRA_ALWAYS_INLINE void text(const char*, std::string& v) {
    const auto size = loadBig<uint32_t>(_cursor);
    _cursor += sizeof size;
    if (size > _texts) {
      _wellFormed = false;
      return;
    }
    v.assign(reinterpret_cast<const char*>(_cursor), size);
    _cursor += size;
    _texts -= size;
  }
  template <class Record>
  VELTRA_ALWAYS_INLINE void record(const char*, Record& nested) {
    static_assert(IsWalkedInline<Record>::value, "the record that holds this one is not flat");
    if (*_cursor++ > Record::CLASS_VERSION) _wellFormed = false;
    FieldAccess::walk(nested, *this);
  }
  ///@}

 private:
  const uint8_t* _cursor;
  std::size_t _texts;
  uint8_t _version;
  bool _wellFormed = true;
};

/// Reads a flat record, header and all, and moves the window past it. False where anything is wrong with it, or its
/// class version another one: the window is then as it was, the record changed only if its header is right.
template <class Record>
VELTRA_ALWAYS_INLINE bool loadFlat(Record& record, ReadWindow& window) {
  FieldCounter counter(Record::CLASS_VERSION);
  FieldAccess::walk(record, counter);
  const std::size_t least = counter.fixed();
  const auto left = static_cast<std::size_t>(window.end - window.cursor);
  if (left < Header::BYTES + least) return false;
  constexpr uint64_t BEGINNING = Header::beginning(Record::SERIAL_TYPE_ID, Record::CLASS_VERSION);
  if (loadBig<uint64_t>(window.cursor) != BEGINNING) return false;
  const std::size_t length = loadBig<uint32_t>(window.cursor + sizeof(uint64_t));
  if (length < least || length > left - Header::BYTES) return false;
  FlatReader f(window.cursor + Header::BYTES, length - least, Record::CLASS_VERSION);
  try {
    FieldAccess::walk(record, f);
  } catch (...) {  // no memory for a text
    record.clear();
    throw;
  }
  if (!f.isWhole()) return false;
  window.cursor += Header::BYTES + length;
  return true;
}

}  // namespace Marshal
