// out_of_memory PATH: every call of the flat interface that allocates, with each of its allocations failing in turn.
// Creating gives null, dumping -1, reading 4, and nothing else comes out until memory suffices.
#include <libcrossplatform/common/DatabaseVersionEx.h>

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

long allocationsLeft = -1;  ///< negative: as many as wanted
int failures = 0;

/// Repeats `call` with one allocation more each time, until it gives something else than `refused`.
template <class Call, class Result>
auto whenMemorySuffices(const char* name, Result refused, Call call) {
  for (long allocations = 0;; ++allocations) {
    allocationsLeft = allocations;
    const auto result = call();
    allocationsLeft = -1;
    if (result == refused) continue;
    if (allocations == 0) {
      std::fprintf(stderr, "%s: no allocation was refused\n", name);
      ++failures;
    }
    return result;
  }
}

template <class Result, class Expected>
void expect(const char* name, Result result, Expected expected) {
  if (result == expected) return;
  std::fprintf(stderr, "%s: %d\n", name, static_cast<int>(result));
  ++failures;
}

/// Longer than any text kept without an allocation.
constexpr char LONG_TEXT[] = "databases/of/limits/for/the/test/of/memory.db";

void* newManifest() {
  void* const none = nullptr;
  void* version = whenMemorySuffices("version", none, [] { return databaseVersionExDatabaseVersion(1, 2, 3, 4); });
  void* list = whenMemorySuffices("list", none, [] { return databaseVersionExDatabaseDescriptorList(); });
  const int emptyLength = databaseVersionExDatabaseDescriptorListDumpBuffer(list, nullptr, 0);
  whenMemorySuffices("add", emptyLength, [=] {
    const long allocations = allocationsLeft;
    allocationsLeft = -1;
    void* descriptor = databaseVersionExDatabaseDescriptor(version, 1, "", "");
    allocationsLeft = allocations;
    databaseVersionExDatabaseDescriptorListAdd(list, descriptor);
    allocationsLeft = -1;
    return databaseVersionExDatabaseDescriptorListDumpBuffer(list, nullptr, 0);
  });
  databaseVersionExDatabaseDescriptorListAdd(
      list, whenMemorySuffices("descriptor", none,
                               [=] { return databaseVersionExDatabaseDescriptor(version, 1, LONG_TEXT, LONG_TEXT); }));
  void* summary = whenMemorySuffices("summary", none, [] {
    return databaseVersionExDatabasePackageManifestSummary(1, 2, LONG_TEXT, 3, 4, 5, LONG_TEXT);
  });
  void* manifest =
      whenMemorySuffices("manifest", none, [=] { return databaseVersionExDatabasePackageManifest(summary, list); });
  databaseVersionExDeDatabaseVersion(version);
  databaseVersionExDeDatabaseDescriptorList(list);
  databaseVersionExDeDatabasePackageManifestSummary(summary);
  return manifest;
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
  void* manifest = newManifest();
  const int length = databaseVersionExDatabasePackageManifestDumpBuffer(manifest, nullptr, 0);
  expect("dump",
         whenMemorySuffices("dump", -1,
                            [=] { return databaseVersionExDatabasePackageManifestDumpBuffer(manifest, nullptr, 0); }),
         length);
  char text[64];
  uint16_t build = 0;
  std::remove(path);
  const auto written = [&] {
    databaseVersionExDatabasePackageManifestWriteLimit(manifest, path);
    allocationsLeft = -1;
    return getDbVersionFromManifest(path, text, sizeof text, &build) == 0;
  };
  whenMemorySuffices("write", false, written);

  const auto handle = static_cast<DatabaseVersionExManifest>(manifest);
  expect("read", whenMemorySuffices("read", 4, [=] { return getManifestFromPFile(handle, path); }), 0);
  expect("version",
         whenMemorySuffices("version", 4, [&] { return getDbVersionFromManifest(path, text, sizeof text, &build); }),
         0);
  expect("firmware",
         whenMemorySuffices("firmware", 4,
                            [&] { return getDbMinReqFirmwareVersionFromManifest(path, text, sizeof text); }),
         0);
  databaseVersionExDeDatabasePackageManifest(manifest);
  return failures == 0 ? 0 : 1;
}
