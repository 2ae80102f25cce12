#include <libcrossplatform/common/DatabaseManifestFile.h>

#include <libcrossplatform/common/PFileReader.h>
#include <libcrossplatform/common/PFileWriter.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>

namespace Veltra {

int writeManifestFile(DatabasePackageManifest& manifest, uint16_t sectionType, char const* path) {
  Marshal::ByteStreamBuilder bytes;
  manifest.serialize(bytes);
  if (bytes.failed()) return PFile::PFILE_FAILED;

  PFile::Section section;
  const int made = section.set(sectionType, MANIFEST_SECTION_VERSION, 0, bytes.data(), bytes.size(), false, 0);
  PFile::FileWriter file;
  // Every step runs even if the previous one failed: what can be written is written, and the file is closed.
  const int opened = file.open(path);
  const int written = file.write(section);
  const int closed = file.close(false);
  for (const int code : {made, opened, written, closed}) {
    if (code != PFile::PFILE_OK) return PFile::PFILE_FAILED;
  }
  return PFile::PFILE_OK;
}

PFile::PFileReaderStatus readManifestFile(DatabasePackageManifest& manifest, char const* path) {
  PFile::FileReader file;
  if (file.open(path) != PFile::PFILE_OK) return PFile::READER_ERROR_OPENING_FILE;

  PFile::Section section;
  if (file.read(section, true) != PFile::PFILE_OK) return PFile::READER_WRONG_FILE_TYPE;
  const uint16_t type = section.header.type;
  if (!PFile::isManifestSection(type)) {
    return PFile::READER_WRONG_FILE_TYPE;
  }
  Marshal::ByteStreamReader in(section.payload.data(), section.payload.size());
  return PFile::streamOpToReaderStatus(manifest.deserialize(in));
}

}  // namespace Veltra
