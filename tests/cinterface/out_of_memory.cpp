// out_of_memory PATH: what the flat interface answers while each of its allocations fails in turn: dumping -1, reading
// 4, and nothing else until memory suffices. That nothing leaks or is thrown is seen in tests/faults.
#include <libcrossplatform/common/DatabaseVersionEx.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>

namespace {

long allocationsLeft = -1;  ///< negative: as many as wanted

/// Repeats `call` with one allocation more each time, until memory suffices.
/// @return whether it gave `refused` at least once, then `good`
bool isRefusedUntilMemorySuffices(int refused, int good, const std::function<int()>& call) {
  for (long allocations = 0;; ++allocations) {
    allocationsLeft = allocations;
    const int result = call();
    allocationsLeft = -1;
    if (result != refused) return allocations > 0 && result == good;
  }
}

}  // namespace

void* operator new(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  void* const p = std::malloc(size != 0 ? size : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const char* const path = argv[1];
  constexpr char LONG_TEXT[] = "longer than any text that is kept without an allocation";
  void* const version = databaseVersionExDatabaseVersion(1, 2, 3, 4);
  void* const list = databaseVersionExDatabaseDescriptorList();
  databaseVersionExDatabaseDescriptorListAdd(list,
                                             databaseVersionExDatabaseDescriptor(version, 1, LONG_TEXT, LONG_TEXT));
  void* const summary = databaseVersionExDatabasePackageManifestSummary(1, 2, LONG_TEXT, 3, 4, 5, LONG_TEXT);
  void* const manifest = databaseVersionExDatabasePackageManifest(summary, list);
  databaseVersionExDatabasePackageManifestWriteLimit(manifest, path);
  const int length = databaseVersionExDatabasePackageManifestDumpBuffer(manifest, nullptr, 0);
  char text[64];
  uint16_t build = 0;
  const bool good =
      isRefusedUntilMemorySuffices(
          -1, length, [=] { return databaseVersionExDatabasePackageManifestDumpBuffer(manifest, nullptr, 0); }) &&
      isRefusedUntilMemorySuffices(
          4, 0, [=] { return getManifestFromPFile(static_cast<DatabaseVersionExManifest>(manifest), path); }) &&
      isRefusedUntilMemorySuffices(4, 0, [&] { return getDbVersionFromManifest(path, text, sizeof text, &build); }) &&
      isRefusedUntilMemorySuffices(4, 0,
                                   [&] { return getDbMinReqFirmwareVersionFromManifest(path, text, sizeof text); });
  databaseVersionExDeDatabaseVersion(version);
  databaseVersionExDeDatabaseDescriptorList(list);
  databaseVersionExDeDatabasePackageManifestSummary(summary);
  databaseVersionExDeDatabasePackageManifest(manifest);
  return good ? 0 : 1;
}
