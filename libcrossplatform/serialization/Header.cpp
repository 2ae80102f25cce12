#include <libcrossplatform/serialization/Header.h>

#include <libcrossplatform/serialization/FieldReader.h>

namespace Marshal {

unsigned Header::serialize(IObjectWriter& out) {
  const uint32_t start = out.position();
  {
    FieldWriter f(_classVersion, out);
    fields(f);
  }
  _bodyAt = start == IObjectWriter::NO_POSITION ? start : start + BYTES;
  return BYTES;
}

unsigned Header::serializeLength(IObjectWriter& out) {
  if (_bodyAt != IObjectWriter::NO_POSITION) {
    _length = out.position() - _bodyAt;
    out.rewriteUInt32(_bodyAt - static_cast<uint32_t>(sizeof _length), _length);
  }
  return BYTES + _length;
}

StreamOpStatus Header::deserialize(IObjectReader& in) {
  in.beginRecord("header");
  {
    FieldReader f(in, 0);
    fields(f);
    if (f.streamStatus() != STREAM_OK) return STREAM_SHORT;
  }
  in.endRecord();
  _bodyAt = in.position();
  if (_marker != MARKER || _format == 0) return STREAM_NOT_A_HEADER;
  return _format > FORMAT ? STREAM_TOO_NEW : STREAM_OK;
}

StreamOpStatus Header::check(uint8_t classVersion, uint32_t combinedId) const {
  if (_id.combined() != combinedId) return STREAM_WRONG_ELEMENT;
  return _classVersion > classVersion ? STREAM_TOO_NEW : STREAM_OK;
}

StreamOpStatus Header::checkLength(IObjectReader& in, StreamOpStatus status) const {
  if (status != STREAM_OK) return status;
  if (in.status() != STREAM_OK) return STREAM_SHORT;
  if (_bodyAt == IObjectReader::NO_POSITION) return STREAM_OK;
  return in.position() - _bodyAt == _length ? STREAM_OK : STREAM_WRONG_LENGTH;
}

StreamOpStatus peekHeaderSerialTypeID(IObjectReader& in, uint32_t& id) {
  const uint32_t start = in.position();
  if (start == IObjectReader::NO_POSITION) return STREAM_SHORT;
  Header header;
  const StreamOpStatus status = header.deserialize(in);
  if (in.status() == STREAM_OK && !in.seekTo(start)) return STREAM_SHORT;
  if (status == STREAM_OK) id = header.serialTypeId().combined();
  return status;
}

}  // namespace Marshal
