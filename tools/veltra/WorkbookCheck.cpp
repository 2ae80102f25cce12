#include "WorkbookCheck.h"

#include <zlib.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include <libinspect/container/ByteSource.h>

namespace Command {
namespace {

/// One header of a ZIP file, little-endian.
class ZipHeader {
 public:
  ZipHeader(const Inspect::ByteSource& source, uint64_t at, std::size_t size) : _bytes(size) {
    _isThere = source.readAside(at, _bytes.data(), size) == size;
  }
  explicit operator bool() const { return _isThere; }
  uint32_t u16(std::size_t at) const { return static_cast<uint32_t>(_bytes[at] | _bytes[at + 1] << 8); }
  uint32_t u32(std::size_t at) const { return u16(at) | u16(at + 2) << 16; }

 private:
  std::vector<uint8_t> _bytes;
  bool _isThere;
};

/// What is kept of a text: its beginning and its end, its size and its CRC, and how many rows of a sheet are in it.
struct TextFacts {
  static constexpr std::size_t BEGIN_BYTES = 256, END_BYTES = 64;
  static constexpr std::string_view ROW = "<row ";

  void add(const uint8_t* bytes, uInt count) {
    crc = crc32(crc, bytes, count);
    size += count;
    begin.append(bytes, bytes + std::min<std::size_t>(count, BEGIN_BYTES - begin.size()));
    const std::size_t seen = end.size() - std::min(end.size(), ROW.size() - 1);  // a row that begins there is new
    end.append(bytes, bytes + count);
    for (std::size_t at = seen; (at = end.find(ROW, at)) != std::string::npos; at += ROW.size()) ++rows;
    if (end.size() > END_BYTES) end.erase(0, end.size() - END_BYTES);
  }

  /// "<?xml ...?>", then one element.
  bool isElement() const {
    constexpr std::string_view AFTER_DECLARATION = "?>\n<";
    const std::size_t at = begin.find(AFTER_DECLARATION);
    if (at == std::string::npos) return false;
    const std::size_t name = at + AFTER_DECLARATION.size();
    const std::string closing = "</" + begin.substr(name, begin.find_first_of(" >", name) - name) + ">";
    const std::size_t last = end.find_last_not_of("\r\n");
    return last != std::string::npos && last + 1 >= closing.size() &&
           end.compare(last + 1 - closing.size(), closing.size(), closing) == 0;
  }

  std::string begin, end;
  uint64_t size = 0, rows = 0;
  uLong crc = 0;
};

/// Inflates what begins at `at`. @return false if it does not end well
bool inflateFrom(const Inspect::ByteSource& source, uint64_t at, TextFacts& text) {
  constexpr uInt PIECE = 65536;
  std::vector<uint8_t> piece(PIECE);
  z_stream inflating{};
  if (inflateInit2(&inflating, -MAX_WBITS) != Z_OK) return false;
  int result = Z_OK;
  while (result == Z_OK) {
    if (inflating.avail_in == 0) {
      const uint8_t* bytes = nullptr;
      inflating.avail_in = static_cast<uInt>(source.view(at, bytes));
      inflating.next_in = const_cast<uint8_t*>(bytes);  // zlib only reads it
      at += inflating.avail_in;
    }
    inflating.next_out = piece.data();
    inflating.avail_out = PIECE;
    result = inflate(&inflating, Z_NO_FLUSH);  // Z_BUF_ERROR at the end of the file
    text.add(piece.data(), PIECE - inflating.avail_out);
  }
  inflateEnd(&inflating);
  return result == Z_STREAM_END;
}

}  // namespace

bool isWholeWorkbook(const std::string& path, const std::map<std::string, uint64_t>& rows) {
  constexpr std::size_t END_BYTES = 22, ENTRY_BYTES = 46, MEMBER_BYTES = 30;  // headers without names
  Inspect::ByteSource source;
  std::string error;
  if (!source.openFile(path, error) || source.size() < END_BYTES) return false;
  const ZipHeader end(source, source.size() - END_BYTES, END_BYTES);
  if (!end) return false;
  std::size_t found = 0;
  uint64_t at = end.u32(16);
  for (uint32_t left = end.u16(10); left > 0; --left) {
    const ZipHeader entry(source, at, ENTRY_BYTES);
    if (!entry) return false;
    const uint64_t memberAt = entry.u32(42);
    const ZipHeader member(source, memberAt, MEMBER_BYTES);
    std::string name(entry.u16(28), '\0');
    if (!member || source.readAside(at + ENTRY_BYTES, name.data(), name.size()) != name.size()) return false;
    TextFacts text;
    const uint64_t textAt = memberAt + MEMBER_BYTES + member.u16(26) + member.u16(28);
    if (!inflateFrom(source, textAt, text) || !text.isElement()) return false;
    if (text.crc != entry.u32(16) || text.size != entry.u32(24)) return false;
    if (const auto known = rows.find(name); known != rows.end()) found += text.rows == known->second ? 1 : 0;
    at += ENTRY_BYTES + name.size() + entry.u16(30) + entry.u16(32);
  }
  return found == rows.size() && !source.hasFailed();
}

}  // namespace Command
