/* package_builder PATH
 *
 * Builds a package of limit databases at PATH, reads it back and prints what it found. Exit status 1 when what was read
 * is not what was meant, 2 when called wrongly.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <libcrossplatform/common/DatabaseVersionEx.h>

struct Database {
  int schema, content, object, build;
  int type; /* agreed with the users of the package */
  const char* path;
  const char* firmware;
};

static const struct Database DATABASES[] = {
    {4, 118, 2, 407, 1, "limits/copper.db", "V5.0"},
    {4, 97, 2, 407, 2, "limits/fiber.db", "V5.0"},
    {1, 6, 1, 12, 3, "limits/custom.db", "V5.1"},
};

static void outOfMemory(void) {
  fputs("package_builder: out of memory\n", stderr);
  exit(1);
}

/* A creating call gives null when memory runs out. */
static void* need(void* handle) {
  if (handle == NULL) outOfMemory();
  return handle;
}

static void* newDescriptor(const struct Database* d) {
  void* version = need(databaseVersionExDatabaseVersion(d->schema, d->content, d->object, d->build));
  void* descriptor = need(databaseVersionExDatabaseDescriptor(version, d->type, d->path, d->firmware));
  databaseVersionExDeDatabaseVersion(version); /* its numbers were copied */
  return descriptor;
}

static void* newPackageManifest(void) {
  void* summary = need(databaseVersionExDatabasePackageManifestSummary(3, 12, "beta", 1, 407, 0, "V5.1"));
  void* list = need(databaseVersionExDatabaseDescriptorList());
  for (size_t i = 0; i < sizeof DATABASES / sizeof DATABASES[0]; ++i) {
    /* Not released here: a descriptor belongs to the list it was added to. */
    databaseVersionExDatabaseDescriptorListAdd(list, newDescriptor(&DATABASES[i]));
  }
  void* manifest = need(databaseVersionExDatabasePackageManifest(summary, list));
  databaseVersionExDeDatabaseDescriptorList(list); /* the manifest holds copies */
  databaseVersionExDeDatabasePackageManifestSummary(summary);
  return manifest;
}

static void* newEmptyManifest(void) {
  void* summary = need(databaseVersionExDatabasePackageManifestSummary(0, 0, "", 0, 0, 0, ""));
  void* list = need(databaseVersionExDatabaseDescriptorList());
  void* manifest = need(databaseVersionExDatabasePackageManifest(summary, list));
  databaseVersionExDeDatabaseDescriptorList(list);
  databaseVersionExDeDatabasePackageManifestSummary(summary);
  return manifest;
}

/* The text of a manifest, to be released with free(). */
static char* newText(const void* manifest) {
  const int length = databaseVersionExDatabasePackageManifestDumpBuffer(manifest, NULL, 0);
  if (length < 0) outOfMemory();
  char* text = need(malloc((size_t)length + 1));
  if (databaseVersionExDatabasePackageManifestDumpBuffer(manifest, text, length) != 0) outOfMemory();
  text[length] = '\0'; /* the call adds none */
  return text;
}

/* Prints the package at `path`. Returns 0 when it is the one that was meant. */
static int readBack(const char* path, const void* meant) {
  char version[32];
  char firmware[32];
  uint16_t build = 0;
  void* manifest = newEmptyManifest();
  int status = getManifestFromPFile(manifest, path);
  if (status == 0) status = getDbVersionFromManifest(path, version, sizeof version, &build);
  if (status == 0) status = getDbMinReqFirmwareVersionFromManifest(path, firmware, sizeof firmware);
  if (status != 0) {
    fprintf(stderr, "package_builder: %s: status %d\n", path, status);
    databaseVersionExDeDatabasePackageManifest(manifest);
    return 1;
  }
  char* text = newText(manifest);
  char* meantText = newText(meant);
  const int differs = strcmp(text, meantText) != 0;
  printf("Package %s, build %u, needs firmware %s\n%s", version, (unsigned)build, firmware, text);
  if (differs) fprintf(stderr, "package_builder: %s: not what was written\n", path);
  free(meantText);
  free(text);
  databaseVersionExDeDatabasePackageManifest(manifest);
  return differs;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fputs("usage: package_builder PATH\n", stderr);
    return 2;
  }
  void* manifest = newPackageManifest();
  databaseVersionExDatabasePackageManifestWriteLimit(manifest, argv[1]); /* reports nothing, so it is read back */
  const int result = readBack(argv[1], manifest);
  databaseVersionExDeDatabasePackageManifest(manifest);
  return result;
}
