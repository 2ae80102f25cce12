#pragma once

/// @file
/// The flat interface of database packages: C when a C compiler reads this, C++ otherwise; exported unmangled.
///
/// Handles  are heap objects. The caller owns what a creating call returns and releases it once by the call of the same
///          name with "De" after databaseVersionEx, which ignores null. A list owns the descriptors added to it.
///          Everything else passed in is copied and stays the caller's.
/// Numbers  given as int are stored in 16 bits, only dbType in 32.
/// Texts    end in a zero; null counts as empty, but not for the name of a file that is to be read.
/// Status   of reading: 0 read; 1 wrong file type; 2 version too new; 3 corrupt; 4 error opening the file.
/// Memory   that runs out is never fatal: creating gives null, dumping -1, reading 4; writing and adding report nothing
///          and release what could not be added.
/// Fatal    (one line on standard error, then abort) is null for a required handle or out-argument. A handle
///          of another kind, or already released, is not detected. One thread at a time may use a handle.

#include <libcrossplatform/logging/Export.h>

#ifdef __cplusplus
#include <cstdint>

#include <libcrossplatform/common/PFileTypes.h>

namespace Veltra {
class DatabasePackageManifest;
}
using DatabaseVersionExManifest = Veltra::DatabasePackageManifest*;  ///< the handle of a manifest
using DatabaseVersionExStatus = PFile::PFileReaderStatus;            ///< the status of reading
extern "C" {
#else
#include <stdint.h>

typedef void* DatabaseVersionExManifest; /* the handle of a manifest */
typedef int DatabaseVersionExStatus;
#endif

/// The version of one database file.
VELTRA_EXPORT void* databaseVersionExDatabaseVersion(int schema, int content, int object, int build);
/// Destroys it; null is ignored.
VELTRA_EXPORT void databaseVersionExDeDatabaseVersion(void* version);

/// One database file of a package.
/// @param version   only read
/// @param filePath  within the package; one of more than 1023 characters is written, but cannot be read back
VELTRA_EXPORT void* databaseVersionExDatabaseDescriptor(void const* version, int dbType, char const* filePath,
                                                        char const* minReqFirmwareVersion);
/// Destroys it; null is ignored.
VELTRA_EXPORT void databaseVersionExDeDatabaseDescriptor(void* descriptor);

/// The databases of a package; empty at first.
VELTRA_EXPORT void* databaseVersionExDatabaseDescriptorList(void);
/// Appends a descriptor, which the list then owns. More than 50 are accepted and written, but a list of none or of
/// more than 50 cannot be read back.
VELTRA_EXPORT void databaseVersionExDatabaseDescriptorListAdd(void* list, void* descriptor);
/// Destroys its descriptors too.
VELTRA_EXPORT void databaseVersionExDeDatabaseDescriptorList(void* list);

/// What a package is as a whole; customers see its version as "V<major>.<minor> <suffix>".
VELTRA_EXPORT void* databaseVersionExDatabasePackageManifestSummary(int major, int minor, char const* suffix,
                                                                    int releaseType, int build, int type,
                                                                    char const* minReqFirmwareVersion);
/// Destroys it; null is ignored.
VELTRA_EXPORT void databaseVersionExDeDatabasePackageManifestSummary(void* summary);

/// A manifest with copies of a summary and of a list with all its descriptors.
VELTRA_EXPORT void* databaseVersionExDatabasePackageManifest(void const* summary, void const* list);
/// Destroys it; null is ignored.
VELTRA_EXPORT void databaseVersionExDeDatabasePackageManifest(void* manifest);

///@{
/// Each of these five copies the text of a record, its JSON, into a buffer: up to `length` characters and no
/// terminating zero. Ask for the length first, and leave room for your own zero.
/// @return 0 copied; -1 null handle; without a buffer, or with a length below 1: the length of the whole text
VELTRA_EXPORT int databaseVersionExDatabaseVersionDumpBuffer(void const* version, char* buffer, int length);
VELTRA_EXPORT int databaseVersionExDatabaseDescriptorDumpBuffer(void const* descriptor, char* buffer, int length);
VELTRA_EXPORT int databaseVersionExDatabaseDescriptorListDumpBuffer(void const* list, char* buffer, int length);
VELTRA_EXPORT int databaseVersionExDatabasePackageManifestSummaryDumpBuffer(void const* summary, char* buffer,
                                                                            int length);
VELTRA_EXPORT int databaseVersionExDatabasePackageManifestDumpBuffer(void const* manifest, char* buffer, int length);
///@}

/// Writes a manifest as the one section of a new container file. No failure is reported: read the file back to check.
/// @param sectionType  101 limit manifest, 102 cable manifest; others are written, but cannot be read back
VELTRA_EXPORT void databaseVersionExDatabasePackageManifestWrite(void* manifest, int sectionType, char const* path);
/// The same as a cable manifest.
VELTRA_EXPORT void databaseVersionExDatabasePackageManifestWriteCable(void* manifest, char const* path);
/// The same as a limit manifest.
VELTRA_EXPORT void databaseVersionExDatabasePackageManifestWriteLimit(void* manifest, char const* path);

/// Reads the manifest of a package into an existing one, which a failure may leave partly filled.
/// Files with a correct CRC-32 and wrong content can be fatal too: see Veltra::readManifestFile().
VELTRA_NODISCARD VELTRA_EXPORT DatabaseVersionExStatus getManifestFromPFile(DatabaseVersionExManifest pM,
                                                                            char const* filename);

/// The version of a package, as in "V3.12 beta", and its build.
/// @param dst    receives at most `len` characters, the last of them always zero; untouched unless the status is 0
/// @param len    1 or more; less is fatal
/// @param build  untouched unless the status is 0
VELTRA_NODISCARD VELTRA_EXPORT DatabaseVersionExStatus getDbVersionFromManifest(char const* filename, char* dst,
                                                                                int len, uint16_t* build);
/// The oldest instrument firmware that can use a package; `dst` and `len` as above.
VELTRA_NODISCARD VELTRA_EXPORT DatabaseVersionExStatus getDbMinReqFirmwareVersionFromManifest(char const* filename,
                                                                                              char* dst, int len);

#ifdef __cplusplus
}
#endif
