#pragma once

#include <zlib.h>

namespace PFile {

/// What zlib's uncompress() does, with its codes and sizes, in a single step. uncompress() tells zlib that more may
/// follow, so zlib allocates a window of 32 KiB for every call and copies the last bytes into it.
/// @param to    `size` bytes, may be null if that is 0
/// @param size  in: room in `to`, below 4 GiB; out: bytes written there
/// @param from  `length` bytes, below 4 GiB, not null
/// @return Z_OK; Z_MEM_ERROR; Z_BUF_ERROR: more than `size` bytes; Z_DATA_ERROR: damaged, cut short, or a dictionary
///         is wanted
[[nodiscard]] inline int inflateWhole(Bytef* to, uLongf& size, const Bytef* from, uLong length) {
  z_stream stream{};
  stream.next_in = const_cast<Bytef*>(from);
  stream.avail_in = static_cast<uInt>(length);
  if (const int code = inflateInit(&stream); code != Z_OK) return code;

  const bool hasRoom = size != 0;
  Bytef beyond = 0;  // shows whether a stream is empty where there is no room
  stream.next_out = hasRoom ? to : &beyond;
  stream.avail_out = hasRoom ? static_cast<uInt>(size) : 1;
  const int code = inflate(&stream, Z_FINISH);
  const bool isCutShort = code == Z_BUF_ERROR && (stream.avail_out != 0 || (!hasRoom && stream.total_out != 0));
  if (hasRoom) size = stream.total_out;
  inflateEnd(&stream);
  if (code == Z_STREAM_END) return Z_OK;
  return code == Z_NEED_DICT || isCutShort ? Z_DATA_ERROR : code;
}

}  // namespace PFile
