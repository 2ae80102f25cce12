#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <libcrossplatform/serialization/ISerializable.h>
#include <libcrossplatform/serialization/WireBytes.h>

namespace Marshal {

/// The 12 bytes before a headed record: its id, version and length.
class VELTRA_EXPORT Header {
 public:
  static constexpr uint16_t MARKER = 0xABCD;                ///< the first two bytes of every header
  static constexpr uint8_t FORMAT = 1;                      ///< version of the header itself
  static constexpr uint32_t BYTES = 2 + 1 + 1 + 2 + 2 + 4;  ///< marker, format, class version, system, class, length

  /// The eight bytes before the length, as one number: what fields() writes for this format.
  static constexpr uint64_t beginning(uint32_t combinedId, uint8_t classVersion) {
    return uint64_t{MARKER} << 48 | uint64_t{FORMAT} << 40 | uint64_t{classVersion} << 32 | combinedId;
  }

  /// For reading: class version and id 0.
  Header() = default;
  ///@{
  /// For writing.
  Header(SerialTypeID id, uint8_t classVersion) : _id(id), _classVersion(classVersion) {}
  Header(uint32_t combinedId, uint8_t classVersion) : Header(SerialTypeID::fromCombined(combinedId), classVersion) {}
  ///@}

  SerialTypeID serialTypeId() const { return _id; }       ///< whose record follows
  uint8_t classVersion() const { return _classVersion; }  ///< of the fields that follow, as read or to be written
  uint32_t length() const { return _length; }             ///< bytes of the record after the header

  /// Writes the header with the length known so far: 0 unless setLength() was called.
  unsigned serialize(IObjectWriter& out);
  /// The length of the body, for a stream that cannot rewrite a word.
  void setLength(uint32_t length) { _length = length; }
  /// After the body: puts its length into the header already written, where the stream can rewrite.
  /// @return length of header and body in bytes
  unsigned serializeLength(IObjectWriter& out) {
    if (_bodyAt != IObjectWriter::NO_POSITION) {
      _length = out.position() - _bodyAt;
      out.rewriteUInt32(_bodyAt - static_cast<uint32_t>(sizeof _length), _length);
    }
    return BYTES + _length;
  }

  /// @return 0; -3 the stream ran out; -2 another marker, or format 0; -5 a newer header format
  [[nodiscard]] StreamOpStatus deserialize(IObjectReader& in);
  /// Compares what was read with what the record can read.
  /// @return 0; -1 another record's id; -5 a newer class version
  [[nodiscard]] StreamOpStatus check(uint8_t classVersion, uint32_t combinedId) const {
    // One half after the other: a joined load would have to wait for both of the stores just made.
    const SerialTypeID wanted = SerialTypeID::fromCombined(combinedId);
    if (_id.systemId != wanted.systemId || _id.classId != wanted.classId) return STREAM_WRONG_ELEMENT;
    return _classVersion > classVersion ? STREAM_TOO_NEW : STREAM_OK;
  }
  /// @param status  how far the record itself got
  /// @return `status` if not 0; -3 the stream has failed; -4 the body was not `length()` bytes; otherwise 0. For a
  ///         stream without positions the length is not compared.
  [[nodiscard]] StreamOpStatus checkLength(IObjectReader& in, StreamOpStatus status) const {
    if (status != STREAM_OK) return status;
    if (in.status() != STREAM_OK) return STREAM_SHORT;
    if (_bodyAt == IObjectReader::NO_POSITION) return STREAM_OK;
    return in.position() - _bodyAt == _length ? STREAM_OK : STREAM_WRONG_LENGTH;
  }

  ///@{
  /// serialize() and deserialize() through the walker that goes on to the body.
  /// @param at  position of the header in the stream, if it has positions
  template <class Fields>
  VELTRA_ALWAYS_INLINE void write(Fields& f, uint32_t at) {
    fields(f);
    setBodyAfter(at);
  }
  template <class Fields>
  [[nodiscard]] VELTRA_ALWAYS_INLINE StreamOpStatus read(Fields& f, uint32_t at) {
    f.group("header", *this);
    if (f.streamStatus() != STREAM_OK) return STREAM_SHORT;
    setBodyAfter(at);
    if (_marker != MARKER || _format == 0) return STREAM_NOT_A_HEADER;
    return _format > FORMAT ? STREAM_TOO_NEW : STREAM_OK;
  }
  ///@}

 private:
  friend class FieldAccess;
  template <class Fields>
  void fields(Fields& f) {
    f.u16("marker", _marker);
    f.u8("format", _format);
    f.u8("classVersion", _classVersion);
    f.u16("systemId", _id.systemId);
    f.u16("classId", _id.classId);
    f.u32("length", _length);
  }
  void setBodyAfter(uint32_t at) { _bodyAt = at == IObjectWriter::NO_POSITION ? at : at + BYTES; }

  SerialTypeID _id;
  uint32_t _length = 0;
  uint32_t _bodyAt = IObjectWriter::NO_POSITION;
  uint16_t _marker = MARKER;
  uint8_t _format = FORMAT;
  uint8_t _classVersion = 0;
};

/// Reads the combined id of the headed record that comes next, without consuming it.
/// @return 0; -3 the stream ran out or has no positions; otherwise the code of Header::deserialize. On failure `id` is
///         unchanged.
[[nodiscard]] VELTRA_EXPORT StreamOpStatus peekHeaderSerialTypeID(IObjectReader& in, uint32_t& id);

}  // namespace Marshal
