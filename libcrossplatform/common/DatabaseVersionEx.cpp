#include <libcrossplatform/common/DatabaseVersionEx.h>

#include <climits>
#include <cstring>
#include <new>
#include <sstream>
#include <string>

#include <json/value.h>

#include <libcrossplatform/common/DatabaseManifestFile.h>
#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/serialization/SimpleFormatter.h>

using namespace Veltra;

namespace {

constexpr char SOURCE[] = "libcrossplatform/common/DatabaseVersionEx";

/// The result of `call`, or `otherwise` when memory runs out. Nothing else is caught: an assertion handler may throw an
/// exception of its own.
template <class Result, class Call>
Result unlessOutOfMemory(Result otherwise, Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return otherwise;
  } catch (const Json::Exception&) {  // how JsonCpp reports the same
    return otherwise;
  }
}

template <class Call>
void* created(Call call) {
  return unlessOutOfMemory<void*>(nullptr, call);
}

/// A required handle.
template <class Record, class Handle>
Record& recordOf(Handle* handle, char const* expression, int line) {
  if (handle == nullptr) assertFatal(expression, SOURCE, line);
  return *static_cast<Record*>(handle);
}

uint16_t narrowed(int number) {
  return static_cast<uint16_t>(number);
}

char const* orEmpty(char const* text) {
  return text != nullptr ? text : "";
}

template <class Record>
int dumpToBuffer(void const* handle, char* buffer, int length) {
  if (handle == nullptr) return -1;
  return unlessOutOfMemory(-1, [&] {
    std::ostringstream out;
    Dump::SimpleFormatter formatter(out);
    Dump::DumpFlags flags;
    flags.level = Dump::DumpFlags::FULL_LEVEL;
    static_cast<Record const*>(handle)->dump(formatter, flags);
    const std::string text = out.str();
    // A stream swallows the exception and drops the text.
    if (!out.good() || text.size() > INT_MAX) return -1;
    if (buffer == nullptr || length <= 0) return static_cast<int>(text.size());
    text.copy(buffer, static_cast<std::size_t>(length));
    return 0;
  });
}

void copyText(std::string const& text, char* dst, int len) {
  if (dst == nullptr) assertFatal("dst != nullptr", SOURCE, __LINE__);
  if (len < 1) assertFatal("len > 0", SOURCE, __LINE__);
  std::strncpy(dst, text.c_str(), static_cast<std::size_t>(len));
  dst[len - 1] = '\0';
}

}  // namespace

void* databaseVersionExDatabaseVersion(int schema, int content, int object, int build) {
  return created(
      [&] { return new DatabaseVersion(narrowed(schema), narrowed(content), narrowed(object), narrowed(build)); });
}

void databaseVersionExDeDatabaseVersion(void* version) {
  delete static_cast<DatabaseVersion*>(version);
}

void* databaseVersionExDatabaseDescriptor(void const* version, int dbType, char const* filePath,
                                          char const* minReqFirmwareVersion) {
  auto& number = recordOf<DatabaseVersion const>(version, "version != nullptr", __LINE__);
  return created([&] {
    return new DatabaseDescriptor(number, static_cast<DATABASE_TYPE>(dbType), orEmpty(filePath),
                                  orEmpty(minReqFirmwareVersion));
  });
}

void databaseVersionExDeDatabaseDescriptor(void* descriptor) {
  delete static_cast<DatabaseDescriptor*>(descriptor);
}

void* databaseVersionExDatabaseDescriptorList() {
  return created([] { return new DatabaseDescriptorList; });
}

void databaseVersionExDatabaseDescriptorListAdd(void* list, void* descriptor) {
  auto& target = recordOf<DatabaseDescriptorList>(list, "list != nullptr", __LINE__);
  auto& pdd = recordOf<DatabaseDescriptor>(descriptor, "pdd != nullptr", __LINE__);
  std::unique_ptr<DatabaseDescriptor> owned(&pdd);
  unlessOutOfMemory(false, [&] {
    target.add(std::move(owned));
    return true;
  });
}

void databaseVersionExDeDatabaseDescriptorList(void* list) {
  delete static_cast<DatabaseDescriptorList*>(list);
}

void* databaseVersionExDatabasePackageManifestSummary(int major, int minor, char const* suffix, int releaseType,
                                                      int build, int type, char const* minReqFirmwareVersion) {
  return created([&] {
    const CustomerDatabaseVersion version(narrowed(major), narrowed(minor), orEmpty(suffix));
    return new DatabasePackageManifestSummary(version, narrowed(releaseType), narrowed(build), narrowed(type),
                                              orEmpty(minReqFirmwareVersion));
  });
}

void databaseVersionExDeDatabasePackageManifestSummary(void* summary) {
  delete static_cast<DatabasePackageManifestSummary*>(summary);
}

void* databaseVersionExDatabasePackageManifest(void const* summary, void const* list) {
  auto& head = recordOf<DatabasePackageManifestSummary const>(summary, "summary != nullptr", __LINE__);
  auto& descriptors = recordOf<DatabaseDescriptorList const>(list, "list != nullptr", __LINE__);
  return created([&] { return new DatabasePackageManifest(head, descriptors); });
}

void databaseVersionExDeDatabasePackageManifest(void* manifest) {
  delete static_cast<DatabasePackageManifest*>(manifest);
}

int databaseVersionExDatabaseVersionDumpBuffer(void const* version, char* buffer, int length) {
  return dumpToBuffer<DatabaseVersion>(version, buffer, length);
}

int databaseVersionExDatabaseDescriptorDumpBuffer(void const* descriptor, char* buffer, int length) {
  return dumpToBuffer<DatabaseDescriptor>(descriptor, buffer, length);
}

int databaseVersionExDatabaseDescriptorListDumpBuffer(void const* list, char* buffer, int length) {
  return dumpToBuffer<DatabaseDescriptorList>(list, buffer, length);
}

int databaseVersionExDatabasePackageManifestSummaryDumpBuffer(void const* summary, char* buffer, int length) {
  return dumpToBuffer<DatabasePackageManifestSummary>(summary, buffer, length);
}

int databaseVersionExDatabasePackageManifestDumpBuffer(void const* manifest, char* buffer, int length) {
  return dumpToBuffer<DatabasePackageManifest>(manifest, buffer, length);
}

void databaseVersionExDatabasePackageManifestWrite(void* manifest, int sectionType, char const* path) {
  auto& record = recordOf<DatabasePackageManifest>(manifest, "manifest != nullptr", __LINE__);
  // Callers in the field expect silence: the code is ignored here, and so is memory that runs out.
  unlessOutOfMemory(PFile::PFILE_FAILED, [&] { return writeManifestFile(record, narrowed(sectionType), path); });
}

void databaseVersionExDatabasePackageManifestWriteCable(void* manifest, char const* path) {
  databaseVersionExDatabasePackageManifestWrite(manifest, PFile::SECTION_CABLE_MANIFEST, path);
}

void databaseVersionExDatabasePackageManifestWriteLimit(void* manifest, char const* path) {
  databaseVersionExDatabasePackageManifestWrite(manifest, PFile::SECTION_LIMIT_MANIFEST, path);
}

DatabaseVersionExStatus getManifestFromPFile(DatabasePackageManifest* pM, char const* filename) {
  if (pM == nullptr) assertFatal("pM != nullptr", SOURCE, __LINE__);
  if (filename == nullptr) assertFatal("filename != nullptr", SOURCE, __LINE__);
  return unlessOutOfMemory(PFile::READER_ERROR_OPENING_FILE, [&] { return readManifestFile(*pM, filename); });
}

DatabaseVersionExStatus getDbVersionFromManifest(char const* filename, char* dst, int len, uint16_t* build) {
  DatabasePackageManifest manifest;
  const DatabaseVersionExStatus status = getManifestFromPFile(&manifest, filename);
  if (status != PFile::READER_OK) return status;
  if (build == nullptr) assertFatal("build != nullptr", SOURCE, __LINE__);
  return unlessOutOfMemory(PFile::READER_ERROR_OPENING_FILE, [&] {
    copyText(manifest.summary.getVersionString(), dst, len);
    *build = manifest.summary.build;
    return status;
  });
}

DatabaseVersionExStatus getDbMinReqFirmwareVersionFromManifest(char const* filename, char* dst, int len) {
  DatabasePackageManifest manifest;
  const DatabaseVersionExStatus status = getManifestFromPFile(&manifest, filename);
  if (status == PFile::READER_OK) copyText(manifest.summary.minReqFirmwareVersion, dst, len);
  return status;
}
