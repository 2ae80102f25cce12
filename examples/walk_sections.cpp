// walk_sections FILE: one line for every section of a container, whatever it holds and however far it is intact.
// Exit status: 0 done, 1 damaged or not readable, 2 usage.
#include <climits>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <libcrossplatform/common/PFile.h>

namespace {

char const* nameOf(uint16_t type) {
  if (type == PFile::FILE_HEADER_TYPE) return "(file header)";
  char const* name = PFile::sectionIdToString(type);
  return name != nullptr ? name : "(no name)";
}

/// Prints the sections from the reader's position on. @return true when all of them are intact
bool walk(PFile::MemReader& reader) {
  bool intact = true;
  std::printf("%10s %5s %-26s %7s %10s %s\n", "offset", "type", "name", "version", "size", "CRC");
  for (;;) {
    const int offset = reader.seek(0, Marshal::STREAM_FROM_CURRENT);
    PFile::Header header;
    const int code = reader.peek(header);
    if (code == PFile::PFILE_END_OF_DATA) return intact;
    if (code != PFile::PFILE_OK) {
      std::printf("%10d no intact section header; nothing after it can be found\n", offset);
      return false;
    }
    PFile::Section section;
    const bool good = reader.read(section, false) == PFile::PFILE_OK;
    // A section that is cut short is answered with success too, but without its payload.
    const bool whole = section.payload.size() == header.dataSize;
    std::printf("%10d %5u %-26s %7u %10u %s\n", offset, unsigned{header.type}, nameOf(header.type),
                unsigned{header.version}, header.dataSize,
                !whole ? "cut short"
                : good ? "ok"
                       : "WRONG");
    if (!whole) return false;
    intact = intact && good;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FILE\n", argv[0]);
    return 2;
  }
  std::ostringstream bytes;
  bytes << std::ifstream(argv[1], std::ios::binary).rdbuf();
  const std::string file = bytes.str();
  if (file.empty() || file.size() > INT_MAX) {
    std::fprintf(stderr, "%s: cannot be read, is empty, or is larger than 2 GiB\n", argv[1]);
    return 1;
  }
  const auto* image = reinterpret_cast<const unsigned char*>(file.data());
  const auto size = static_cast<unsigned>(file.size());

  PFile::MemReader reader;
  // A file that was never closed has no valid file header, but its sections are there: go on from the first byte.
  bool intact = reader.quickOpen(image, size) == PFile::PFILE_OK;
  if (!intact) std::printf("%s does not begin with an intact file header\n", argv[1]);
  reader.seek(0, Marshal::STREAM_FROM_BEGIN);
  intact = walk(reader) && intact;

  // A file cut between two sections differs from a whole one only in the length it records.
  reader.close();
  if (intact && reader.open(image, size) != PFile::PFILE_OK) {
    std::printf("%10u bytes are fewer than the file header records\n", size);
    intact = false;
  }
  return intact ? 0 : 1;
}
