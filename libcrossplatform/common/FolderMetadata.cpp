#include <libcrossplatform/common/FolderMetadata.h>

#include <string_view>

#include <libcrossplatform/serialization/FieldCodec.h>

namespace Veltra {
namespace {

const char* textOrNull(const std::string& text) {
  return text.empty() ? "NULL" : text.c_str();
}

/// A folder as the list reads it: only a failed stream ends the list, with -1. The folder's own code is ignored, so
/// one with a text of length 0 counts as an element and the list continues with the bytes after that length. Readers
/// in the field do the same; a stricter one would see other folders than they do.
struct ListedFolder {
  FolderMetadata& folder;

  Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) {
    (void)folder.deserialize(in);
    return in.status() == Marshal::STREAM_OK ? Marshal::STREAM_OK : Marshal::STREAM_WRONG_ELEMENT;
  }
};

}  // namespace

FolderMetadata::FolderMetadata(std::string name, std::string dirPath, bool hasSubdir)
    : _name(std::move(name)), _dirPath(std::move(dirPath)), _hasSubdir(hasSubdir) {}

bool FolderMetadata::operator==(const FolderMetadata& other) const {
  return _name == other._name && _dirPath == other._dirPath && _hasSubdir == other._hasSubdir;
}

template <class Fields>
void FolderMetadata::fields(Fields& f) {
  f.terminatedText("name", _name);
  f.terminatedText("dirPath", _dirPath);
  f.boolean("hasSubdir", _hasSubdir);
}

unsigned FolderMetadata::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writePlain(*this, out);
}

Marshal::StreamOpStatus FolderMetadata::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readPlain(*this, in);
}

void FolderMetadata::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  if (flags.level != Dump::DumpFlags::FULL_LEVEL) {
    formatter.text(_name.c_str(), flags.level);
    return;
  }
  formatter.field("_name", textOrNull(_name));
  formatter.field("_dirPath", textOrNull(_dirPath));
  formatter.field("_hasSubdir", _hasSubdir);
}

template <class Fields>
void FolderMetadataList::fields(Fields& f) {
  auto count = static_cast<uint16_t>(_folders.size());
  f.u16("count", count);
  if constexpr (Fields::READING) {
    for (uint16_t i = 0; i < count && f.ok(); ++i) {
      FolderMetadata folder;
      ListedFolder listed{folder};
      f.record(Marshal::ELEMENT_NAME, listed);
      if (f.ok()) _folders.push_back(std::move(folder));
    }
  } else {
    for (FolderMetadata& folder : _folders) f.record(Marshal::ELEMENT_NAME, folder);
  }
}

unsigned FolderMetadataList::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus FolderMetadataList::deserialize(Marshal::IObjectReader& in) {
  clear();  // before the header, unlike other records: a failed read must not leave an old listing to be shown
  return Marshal::readHeaded(*this, in);
}

void FolderMetadataList::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  formatter.beginObject("FolderMetadataList");
  for (const FolderMetadata& folder : _folders) folder.dump(formatter, flags);
  formatter.endObject();
}

bool isCustomObject(const char* name) {
  const std::string_view text = name != nullptr ? name : "";
  return !text.empty() && text.front() == '*' && text.back() == '*';
}

}  // namespace Veltra
