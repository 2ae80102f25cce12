#include <libcrossplatform/common/PFileTypes.h>

#include <libcrossplatform/common/EnumText.h>

namespace PFile {
namespace {

constexpr Veltra::EnumText<PFileReaderStatus> STATUS_TEXTS[] = {
    {READER_OK, "ok"},
    {READER_WRONG_FILE_TYPE, "wrong file type"},
    {READER_VERSION_TOO_NEW, "version too new"},
    {READER_CORRUPT, "corrupt"},
    {READER_ERROR_OPENING_FILE, "error opening file"},
};
static_assert(Veltra::isOneToOne(STATUS_TEXTS));

}  // namespace

char const* toString(PFileReaderStatus status) {
  return Veltra::textOf(STATUS_TEXTS, status, "error");
}

PFileReaderStatus streamOpToReaderStatus(Marshal::StreamOpStatus status) {
  switch (status) {
    case Marshal::STREAM_OK:
      return READER_OK;
    case Marshal::STREAM_TOO_NEW:
    case Marshal::STREAM_INLINE_TOO_NEW:
      return READER_VERSION_TOO_NEW;
    default:
      return READER_CORRUPT;
  }
}

}  // namespace PFile
