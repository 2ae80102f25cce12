/* caller PATH: every function of the flat interface as a C caller uses it, with a package at PATH. */
#include <libcrossplatform/common/DatabaseVersionEx.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void check(int condition, const char* expression, int line) {
  if (condition) return;
  fprintf(stderr, "caller.c:%d: %s\n", line, expression);
  ++failures;
}
#define CHECK(condition) check((condition) != 0, #condition, __LINE__)

typedef int (*DumpBuffer)(void const* handle, char* buffer, int length);

/* Asks for the length, copies half of the text and all of it, and expects nothing to be written after what was copied.
 */
static void checkDump(DumpBuffer dump, void const* handle, const char* part) {
  char text[2048];
  const int length = dump(handle, NULL, 0);
  CHECK(dump(NULL, text, sizeof text) == -1 && dump(NULL, NULL, 0) == -1);
  CHECK(dump(handle, NULL, 5) == length && dump(handle, text, 0) == length && dump(handle, text, -1) == length);
  CHECK(length > 4 && length < (int)sizeof text);
  memset(text, '#', sizeof text);
  CHECK(dump(handle, text, length / 2) == 0);
  CHECK(text[length / 2 - 1] != '#' && text[length / 2] == '#');
  CHECK(dump(handle, text, sizeof text) == 0);
  CHECK(text[length - 1] == '\n' && text[length] == '#');
  text[length] = '\0';
  CHECK(strstr(text, part) != NULL);
}

static void* newManifest(void) {
  void* version = databaseVersionExDatabaseVersion(1, 2, 3, 65536 + 4);
  void* descriptor = databaseVersionExDatabaseDescriptor(version, -7, "limits/copper.db", NULL);
  void* list = databaseVersionExDatabaseDescriptorList();
  void* summary = databaseVersionExDatabasePackageManifestSummary(3, 12, "beta", 1, 407, 65535, "V5.1");
  void* manifest;
  checkDump(databaseVersionExDatabaseVersionDumpBuffer, version, "\"build\" : 4");
  checkDump(databaseVersionExDatabaseDescriptorDumpBuffer, descriptor, "\"dbType\" : -7");
  checkDump(databaseVersionExDatabaseDescriptorListDumpBuffer, list, "\"DatabaseDescriptorList\" : []");
  checkDump(databaseVersionExDatabasePackageManifestSummaryDumpBuffer, summary, "\"type\" : 65535");

  databaseVersionExDatabaseDescriptorListAdd(list, descriptor);
  databaseVersionExDatabaseDescriptorListAdd(list, databaseVersionExDatabaseDescriptor(version, 1, "", ""));
  manifest = databaseVersionExDatabasePackageManifest(summary, list);
  databaseVersionExDeDatabaseVersion(version);
  databaseVersionExDeDatabaseDescriptorList(list);
  databaseVersionExDeDatabasePackageManifestSummary(summary);
  checkDump(databaseVersionExDatabasePackageManifestDumpBuffer, manifest, "limits/copper.db"); /* its own copies */
  return manifest;
}

/* Type of the section after the 24 bytes of the file header: its second word of 16 bits. */
static int sectionTypeOf(const char* path) {
  unsigned char bytes[28] = {0};
  FILE* file = fopen(path, "rb");
  CHECK(file != NULL && fread(bytes, 1, sizeof bytes, file) == sizeof bytes);
  if (file != NULL) fclose(file);
  return bytes[26] * 256 + bytes[27];
}

static void checkReading(const char* path) {
  char text[16];
  uint16_t build = 0xFFFF;
  CHECK(getDbVersionFromManifest(path, text, sizeof text, &build) == 0);
  CHECK(strcmp(text, "V3.12 beta") == 0 && build == 407);
  memset(text, '#', sizeof text);
  CHECK(getDbVersionFromManifest(path, text, 5, &build) == 0);
  CHECK(strcmp(text, "V3.1") == 0 && text[5] == '#');
  CHECK(getDbMinReqFirmwareVersionFromManifest(path, text, 4) == 0);
  CHECK(strcmp(text, "V5.") == 0);

  strcpy(text, "untouched");
  build = 77;
  CHECK(getDbVersionFromManifest("no such file", text, sizeof text, &build) == 4);
  CHECK(getDbMinReqFirmwareVersionFromManifest("no such file", text, sizeof text) == 4);
  CHECK(strcmp(text, "untouched") == 0 && build == 77);
}

int main(int argc, char** argv) {
  void* manifest;
  if (argc != 2) return 2;
  manifest = newManifest();
  databaseVersionExDatabasePackageManifestWrite(manifest, 103, argv[1]);
  CHECK(sectionTypeOf(argv[1]) == 103);
  CHECK(getManifestFromPFile(manifest, argv[1]) == 1);
  databaseVersionExDatabasePackageManifestWriteCable(manifest, argv[1]);
  CHECK(sectionTypeOf(argv[1]) == 102);
  databaseVersionExDatabasePackageManifestWriteLimit(manifest, "no such directory/package"); /* reports nothing */
  databaseVersionExDatabasePackageManifestWriteLimit(manifest, NULL);
  checkReading(argv[1]);
  databaseVersionExDeDatabasePackageManifest(manifest);

  manifest = databaseVersionExDatabaseVersion(0, 0, 0, 0);
  databaseVersionExDeDatabaseDescriptor(databaseVersionExDatabaseDescriptor(manifest, 0, "", ""));
  databaseVersionExDeDatabaseVersion(manifest);
  databaseVersionExDeDatabaseVersion(NULL);
  databaseVersionExDeDatabaseDescriptor(NULL);
  databaseVersionExDeDatabaseDescriptorList(NULL);
  databaseVersionExDeDatabasePackageManifestSummary(NULL);
  databaseVersionExDeDatabasePackageManifest(NULL);
  return failures == 0 ? 0 : 1;
}
