#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <libcrossplatform/serialization/ISerializable.h>

namespace Veltra {

/// One folder of stored results. A plain value; default no name, no path, no sub-folders.
/// On the wire: plain inline record, docs/format.md#foldermetadata; written only inside a list.
class VELTRA_EXPORT FolderMetadata : public Marshal::IDumpSerializable {
 public:
  FolderMetadata() = default;
  FolderMetadata(std::string name, std::string dirPath, bool hasSubdir);

  bool operator==(const FolderMetadata& other) const;
  bool operator!=(const FolderMetadata& other) const { return !(*this == other); }
  void clear() { *this = FolderMetadata(); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -1 a text of length 0; -3 the stream ran out. On failure: partly filled, discard it.
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// At the full level "_name", "_dirPath" and "_hasSubdir", an empty text as "NULL"; otherwise only the name, as text.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

  std::string _name;        ///< as shown; read up to its first zero byte, as the path
  std::string _dirPath;     ///< where the folder is
  bool _hasSubdir = false;  ///< it has folders of its own

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

/// The folders of a listing, in its order. On the wire: headed record with a 16-bit count, which is not range-checked:
/// a longer list writes the count modulo 65536 and all its elements. docs/format.md#foldermetadatalist.
class VELTRA_EXPORT FolderMetadataList : public Marshal::IDumpSerializable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x510006;

  ///@{
  /// How many folders there are.
  std::size_t size() const { return _folders.size(); }
  bool empty() const { return _folders.empty(); }
  ///@}
  /// @param i  below size()
  FolderMetadata& operator[](std::size_t i) { return _folders[i]; }
  /// @param i  below size()
  const FolderMetadata& operator[](std::size_t i) const { return _folders[i]; }
  ///@{
  /// Iterate over FolderMetadata; adding ends every iterator.
  auto begin() const { return _folders.begin(); }
  auto end() const { return _folders.end(); }
  ///@}
  /// Appends; more than 65535 can be written but not read back.
  void add(FolderMetadata folder) { _folders.push_back(std::move(folder)); }
  void clear() { _folders.clear(); }
  bool operator==(const FolderMetadataList& other) const { return _folders == other._folders; }
  bool operator!=(const FolderMetadataList& other) const { return !(*this == other); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -1 the stream ran out inside an element, those before it stay; -3 it ran out before the first; header
  ///         codes unchanged. The list is always emptied first.
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// A group of the folders' own dumps.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
  std::vector<FolderMetadata> _folders;
};

/// True for the name of a custom object, which is not a folder: it begins and ends with "*". The name "*" is one too.
/// @param name  null counts as empty, which is not one
VELTRA_EXPORT bool isCustomObject(const char* name);

}  // namespace Veltra
