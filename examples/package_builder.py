#!/usr/bin/env python3
"""package_builder.py PATH [LIBRARY]

Builds a package of limit databases at PATH, reads it back and prints what it found. LIBRARY is libveltracommon.so;
without it the environment's VELTRA_LIBRARY is used, or the library the system finds. Exit status 1 when what was read is
not what was meant, 2 when called wrongly.
"""
import ctypes
import os
import sys
from ctypes import POINTER, byref, c_char_p, c_int, c_uint16, c_void_p, create_string_buffer

DATABASES = [  # schema, content, object, build, type, path, firmware
    (4, 118, 2, 407, 1, b"limits/copper.db", b"V5.0"),
    (4, 97, 2, 407, 2, b"limits/fiber.db", b"V5.0"),
    (1, 6, 1, 12, 3, b"limits/custom.db", b"V5.1"),
]

CREATING = {
    "DatabaseVersion": [c_int] * 4,
    "DatabaseDescriptor": [c_void_p, c_int, c_char_p, c_char_p],
    "DatabaseDescriptorList": [],
    "DatabasePackageManifestSummary": [c_int, c_int, c_char_p, c_int, c_int, c_int, c_char_p],
    "DatabasePackageManifest": [c_void_p, c_void_p],
}


class Packages:
    """The flat interface: handles are plain pointers, released by their owner."""

    def __init__(self, library):
        self.library = ctypes.CDLL(library)
        for record, arguments in CREATING.items():
            # Without a declared result ctypes would cut a pointer down to an int.
            self.declare(record, c_void_p, arguments)
            self.declare("De" + record, None, [c_void_p])
            self.declare(record + "DumpBuffer", c_int, [c_void_p, c_char_p, c_int])
        self.declare("DatabaseDescriptorListAdd", None, [c_void_p, c_void_p])
        self.declare("DatabasePackageManifestWriteLimit", None, [c_void_p, c_char_p])
        self.library.getManifestFromPFile.argtypes = [c_void_p, c_char_p]
        self.library.getDbVersionFromManifest.argtypes = [c_char_p, c_char_p, c_int, POINTER(c_uint16)]
        self.library.getDbMinReqFirmwareVersionFromManifest.argtypes = [c_char_p, c_char_p, c_int]

    def declare(self, name, result, arguments):
        function = self.library["databaseVersionEx" + name]
        function.restype = result
        function.argtypes = arguments
        setattr(self, name, function)

    def new(self, record, *arguments):
        handle = getattr(self, record)(*arguments)
        if not handle:
            raise MemoryError(record)
        return handle

    def release(self, record, handle):
        getattr(self, "De" + record)(handle)

    def new_manifest(self, summary_values, databases):
        summary = self.new("DatabasePackageManifestSummary", *summary_values)
        descriptors = self.new("DatabaseDescriptorList")
        for schema, content, object_, build, kind, path, firmware in databases:
            version = self.new("DatabaseVersion", schema, content, object_, build)
            # Not released here: a descriptor belongs to the list it is added to.
            descriptor = self.new("DatabaseDescriptor", version, kind, path, firmware)
            self.DatabaseDescriptorListAdd(descriptors, descriptor)
            self.release("DatabaseVersion", version)
        manifest = self.new("DatabasePackageManifest", summary, descriptors)
        self.release("DatabaseDescriptorList", descriptors)
        self.release("DatabasePackageManifestSummary", summary)
        return manifest

    def text(self, manifest):
        length = self.DatabasePackageManifestDumpBuffer(manifest, None, 0)
        buffer = create_string_buffer(max(length, 0) + 1)
        if length < 0 or self.DatabasePackageManifestDumpBuffer(manifest, buffer, length) != 0:
            raise MemoryError("DumpBuffer")
        return buffer.value.decode()


def read_back(packages, path, meant):
    library = packages.library
    version, firmware, build = create_string_buffer(32), create_string_buffer(32), c_uint16()
    manifest = packages.new_manifest((0, 0, b"", 0, 0, 0, b""), [])
    try:
        status = (library.getManifestFromPFile(manifest, path)
                  or library.getDbVersionFromManifest(path, version, len(version), byref(build))
                  or library.getDbMinReqFirmwareVersionFromManifest(path, firmware, len(firmware)))
        if status != 0:
            print(f"package_builder.py: {os.fsdecode(path)}: status {status}", file=sys.stderr)
            return 1
        text = packages.text(manifest)
        print(f"Package {version.value.decode()}, build {build.value}, needs firmware {firmware.value.decode()}")
        print(text, end="")
        if text != packages.text(meant):
            print(f"package_builder.py: {os.fsdecode(path)}: not what was written", file=sys.stderr)
            return 1
        return 0
    finally:
        packages.release("DatabasePackageManifest", manifest)


def main(arguments):
    if len(arguments) not in (1, 2):
        print("usage: package_builder.py PATH [LIBRARY]", file=sys.stderr)
        return 2
    path = os.fsencode(arguments[0])
    packages = Packages(arguments[1] if len(arguments) == 2 else os.environ.get("VELTRA_LIBRARY", "libveltracommon.so.1"))
    manifest = packages.new_manifest((3, 12, b"beta", 1, 407, 0, b"V5.1"), DATABASES)
    try:
        packages.DatabasePackageManifestWriteLimit(manifest, path)  # reports nothing, so it is read back
        return read_back(packages, path, manifest)
    finally:
        packages.release("DatabasePackageManifest", manifest)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
