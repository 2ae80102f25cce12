#include "Workloads.h"

#include <fcntl.h>
#include <openssl/crypto.h>

#include <new>
#include <ostream>

#include <gsl/util>

#include <libcrossplatform/common/DatabaseVersionEx.h>
#include <libcrossplatform/common/FileReplacement.h>
#include <libcrossplatform/common/NetworkProfile.h>
#include <libcrossplatform/common/ResultFile.h>

#ifdef VELTRA_HAS_INSPECT
#include <libinspect/container/Recover.h>
#include <libinspect/records/FileJudge.h>
#endif

namespace Workloads {
namespace {

using namespace PFile;
using RecordTesting::fileBytes, RecordTesting::writeFile;

/// Bytes that do not repeat within a buffer of stdio.
Bytes trace(std::size_t size) {
  Bytes bytes(size);
  uint32_t state = 1;
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  return bytes;
}

/// A summary, a compressed section, one larger than the buffer of the stream, and a small one after it.
int writeResult(FileWriter& file) {
  Veltra::ResultSummary summary;
  summary.resultName = "FDP-A1 port 07, measured from the far end";
  Veltra::MemFileWriter writer(&file);
  int code = writer.writeSection(summary, 1, SECTION_RESULT_SUMMARY, 0, 0);
  struct Row {
    uint16_t type, version, flags;
    std::size_t size;
  };
  constexpr Row ROWS[] = {{300, 12, 0, 40}, {301, 3, SECTION_FLAG_COMPRESS, 9000}, {302, 1, 0, 70000}, {303, 12, 0, 9}};
  for (const Row& row : ROWS) {
    Bytes data = trace(row.size);
    Section section;
    if (code == 0) {
      code = section.set(row.type, row.version, row.flags, data.data(), static_cast<unsigned>(row.size), false, 6);
    }
    if (code == 0) code = writer.write(section);
  }
  return code;
}

int save(const std::string& path) {
  SafeFileWriter file;
  int code = file.open(path.c_str());
  if (code == 0) code = writeResult(file.writer());
  return code == 0 ? file.commit() : code;
}

int saveInPlace(const std::string& path) {
  FileWriter file;
  const int opened = file.open(path.c_str());
  const int written = opened == 0 ? writeResult(file) : opened;
  const int closed = file.close(true);
  return written != 0 ? written : closed;
}

/// Every way to go through a file, and every byte of it compared.
int reopen(const std::string& path) {
  Veltra::ResultSummary summary;
  if (const int code = readResultSummary(summary, path.c_str(), true); code != 0) return code;
  if (const int code = checkResultFile(summary, path.c_str()).status; code != 0) return code;
  FileReader reader;
  if (const int code = reader.open(path.c_str()); code != 0) return code;
  if (const int code = reader.skipNextSection(); code != 0) return code;
  for (const std::size_t size : {40u, 9000u, 70000u, 9u}) {
    Header ahead;
    Section section;
    if (const int code = reader.peek(ahead); code != 0) return code;
    if (const int code = reader.read(section, true); code != 0) return code;
    if (Bytes(section.payload.data(), section.payload.data() + section.payload.size()) != trace(size)) {
      return FOREIGN_EXCEPTION;  // read as good, and is not
    }
  }
  Section next;
  return reader.read(next, true) == PFILE_END_OF_DATA ? reader.close() : PFILE_FAILED;
}

/// A package of one database, made through the flat interface. @return null when memory runs out
void* newManifest() {
  void* manifest = nullptr;
  void* const version = databaseVersionExDatabaseVersion(1, 2, 3, 4);
  void* const list = databaseVersionExDatabaseDescriptorList();
  void* const summary = databaseVersionExDatabasePackageManifestSummary(3, 12, "a suffix beyond short texts", 1, 407, 0,
                                                                        "V5.1 and whatever is newer");
  if (version != nullptr && list != nullptr && summary != nullptr) {
    void* const limits = databaseVersionExDatabaseDescriptor(version, 1, "limits/of/the/package/limits.db", "V5.0");
    if (limits != nullptr) databaseVersionExDatabaseDescriptorListAdd(list, limits);
    manifest = databaseVersionExDatabasePackageManifest(summary, list);
  }
  databaseVersionExDeDatabaseVersion(version);
  databaseVersionExDeDatabaseDescriptorList(list);
  databaseVersionExDeDatabasePackageManifestSummary(summary);
  return manifest;
}

/// The flat interface says nothing of a failed write: what is read back tells.
int package(const std::string& path) {
  void* const manifest = newManifest();
  if (manifest == nullptr) return READER_ERROR_OPENING_FILE;
  databaseVersionExDatabasePackageManifestWriteLimit(manifest, path.c_str());
  const int status = getManifestFromPFile(static_cast<DatabaseVersionExManifest>(manifest), path.c_str());
  databaseVersionExDeDatabasePackageManifest(manifest);
  return status;
}

int readPackage(const std::string& path) {
  void* const manifest = newManifest();
  if (manifest == nullptr) return READER_ERROR_OPENING_FILE;
  char number[16] = "", firmware[16] = "";
  uint16_t build = 0;
  const int length = databaseVersionExDatabasePackageManifestDumpBuffer(manifest, nullptr, 0);
  int status = length == -1 ? READER_ERROR_OPENING_FILE : READER_OK;
  if (status == 0) status = getManifestFromPFile(static_cast<DatabaseVersionExManifest>(manifest), path.c_str());
  if (status == 0) status = getDbVersionFromManifest(path.c_str(), number, sizeof number, &build);
  if (status == 0) status = getDbMinReqFirmwareVersionFromManifest(path.c_str(), firmware, sizeof firmware);
  databaseVersionExDeDatabasePackageManifest(manifest);
  const bool isRight = std::string(number) == "V3.12 a suffix " && build == 407 && firmware[3] == '1';
  return status == 0 && !isRight ? FOREIGN_EXCEPTION : status;
}

constexpr char ADDRESS[] = "10.20.30.40";

int saveProfile(const std::string& path) {
  NetworkProfile profile;
  const bool done = profile.setInetAddr(ADDRESS) && profile.setMask("255.255.255.0") && profile.addDNS("10.20.30.1") &&
                    profile.addDNS("10.20.30.2") && profile.saveTo(path);
  return done ? 0 : 1;
}

/// A profile is read, and secrets go into the document and out again, through every layer of a stored text. A secret
/// that cannot be read is empty.
int keepSecrets(const std::string& path) {
  const auto forget = gsl::finally([] { OPENSSL_thread_stop(); });  // what OpenSSL keeps for the thread is no leak
  constexpr char SECRET[] = "a pass phrase beyond short texts";
  NetworkProfile profile;
  const bool done = profile.readFrom(path) && profile.setUsbWifiSSID("a name beyond the short texts") &&
                    profile.setUsbWifiDHCP(true) && profile.addUsbWifiDNS("10.20.30.1") &&
                    profile.setUsbWifiSecurity(UsbWifiSecurity::PERSONAL) && profile.setWirelessPassword(SECRET) &&
                    profile.addCurrentWifiProfile() && profile.setUsbWifiSecurity(UsbWifiSecurity::WEP) &&
                    profile.setWirelessKey(2, "0123456789");
  WifiProfile recent;
  if (!done || !profile.getWifiProfile(0, recent)) return 1;
  if (profile.getInetAddr() != ADDRESS || profile.getDNSSize() != 2) return FOREIGN_EXCEPTION;
  NetworkProfile other;
  if (!other.setConfigFromWifiProfile(recent)) return 1;
  for (const std::string& secret : {recent.wirelessPassword, other.getWirelessPassword()}) {
    if (secret.empty()) return 1;
    if (secret != SECRET) return FOREIGN_EXCEPTION;
  }
  return profile.getWirelessKey(2) == "0123456789" ? 0 : 1;
}

int replace(const std::string& path) {
  const Bytes bytes = trace(70000);
  return Veltra::replaceFile(path, bytes.data(), bytes.size()) ? 0 : 1;
}

#ifdef VELTRA_HAS_INSPECT

int doctor(const std::string& path) try {
  std::string error;
  Inspect::ByteSource source;
  if (!source.open(path, error)) return 1;
  const Inspect::ContainerReport report = judge(source, Inspect::Examination::DEEP).report;
  if (source.hasFailed()) return 1;
  return report.findings.empty() ? 0 : FOREIGN_EXCEPTION;  // there is nothing to find
} catch (const Json::RuntimeError&) {                      // how JsonCpp reports lost memory; the command ends with it
  return OUT_OF_MEMORY;
}

int recover(const std::string& path) {
  std::string error;
  Inspect::ByteSource source;
  if (!source.open(path + ".other", error)) return 1;
  const Inspect::Recovery recovery = findSections(source);
  return !source.hasFailed() && writeRecovered(source, recovery, path, error) ? 0 : 1;
}

#endif

/// Beside the file that is worked on: a whole result file.
std::string otherIn(const std::string& directory) {
  return pathIn(directory) + ".other";
}

Bytes made(int (*make)(const std::string&)) {
  const RecordTesting::TempDir directory;
  return make(pathIn(directory.path)) == 0 ? fileBytes(pathIn(directory.path)) : Bytes();
}

const Bytes& wholeResult() {
  static const Bytes bytes = made(saveInPlace);
  return bytes;
}

}  // namespace

const std::vector<Workload>& all() {
  static const Bytes OLD = {'o', 'l', 'd'};
  static const Bytes profile = made(saveProfile), manifest = made(package);
  static const std::vector<Workload> list = {
      {"save", save, OLD, wholeResult(), Workload::REPLACES, true, false},
      {"save_in_place", saveInPlace, OLD, wholeResult(), Workload::OVERWRITES, true, false},
      {"reopen", reopen, wholeResult(), wholeResult(), Workload::READS, true, false},
      {"package", package, OLD, manifest, Workload::OVERWRITES, true, true},
      {"package_read", readPackage, manifest, manifest, Workload::READS, true, true},
      {"replace", replace, OLD, trace(70000), Workload::REPLACES, false, false},
      {"profile_save", saveProfile, OLD, profile, Workload::REPLACES, false, false},
      {"secrets", keepSecrets, profile, profile, Workload::READS, false, false},
#ifdef VELTRA_HAS_INSPECT
      {"doctor", doctor, wholeResult(), wholeResult(), Workload::READS, true, false},
      {"recover", recover, OLD, wholeResult(), Workload::REPLACES, true, false},
#endif
  };
  return list;
}

void PrintTo(const Workload& workload, std::ostream* out) {
  *out << workload.name;
}

std::string pathIn(const std::string& directory) {
  return directory + "/file";
}

const Workload* find(const std::string& name) {
  for (const Workload& workload : all()) {
    if (workload.name == name) return &workload;
  }
  return nullptr;
}

int run(const Workload& workload, const std::string& path) {
  try {
    return workload.run(path);
  } catch (const std::bad_alloc&) {
    return workload.isFlat ? FOREIGN_EXCEPTION : OUT_OF_MEMORY;
  } catch (...) {
    return FOREIGN_EXCEPTION;
  }
}

void prepare(const Workload& workload, const std::string& directory) {
  for (const auto& entry : std::filesystem::directory_iterator(directory)) std::filesystem::remove(entry);
  writeFile(pathIn(directory), workload.before);
  writeFile(otherIn(directory), wholeResult());
}

std::string check(const Workload& workload, const std::string& directory, int code, Fault fault) {
  if (code == FOREIGN_EXCEPTION) return "an exception that is no bad_alloc left, or what was read is not what is there";
  if (fault == Fault::ALLOCATION && workload.isFlat && workload.kind == Workload::READS && code != 0 &&
      code != READER_ERROR_OPENING_FILE) {
    return "lost memory is answered by " + std::to_string(code);
  }
  if (fileBytes(otherIn(directory)) != wholeResult()) return "another file was touched";
  const Bytes now = fileBytes(pathIn(directory));
  const bool isWhole = now == workload.after;
  if (code == 0 && !isWhole) return "ended well without all of the bytes";
  if (workload.kind == Workload::REPLACES && !isWhole && now != workload.before)
    return "neither the old file nor the new";
  if (workload.kind == Workload::READS && !isWhole) return "reading changed the file";
#ifdef VELTRA_HAS_INSPECT
  // A writer that an exception ends closes the file with the sections it has.
  const bool mayBeShorter = fault == Fault::ALLOCATION && workload.kind == Workload::OVERWRITES;
  if (workload.isContainer && !mayBeShorter && isClean(pathIn(directory)) != isWhole) {
    return "taken for whole and is not, or the reverse";
  }
#endif
  const std::filesystem::directory_iterator first(directory);
  if (fault != Fault::REMOVING && std::distance(first, {}) > 2) return "a temporary file was left";
  return {};
}

int openDescriptors() {
  constexpr int MOST = 64;
  int open = 0;
  for (int i = 0; i < MOST; ++i) open += fcntl(i, F_GETFD) != -1;
  return open;
}

#ifdef VELTRA_HAS_INSPECT
bool isClean(const std::string& path) {
  std::string error;
  Inspect::ByteSource source;
  return source.open(path, error) && judge(source, Inspect::Examination::DEEP).report.findings.empty();
}
#endif

}  // namespace Workloads
