#include <libcrossplatform/serialization/Header.h>

#include <libcrossplatform/serialization/FieldReader.h>

namespace Marshal {

unsigned Header::serialize(IObjectWriter& out) {
  const uint32_t start = out.position();
  FieldWriter f(_classVersion, out);
  write(f, start);
  return BYTES;
}

StreamOpStatus Header::deserialize(IObjectReader& in) {
  const uint32_t start = in.position();
  FieldReader f(in, 0);
  return read(f, start);
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
