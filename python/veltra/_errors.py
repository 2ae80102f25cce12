"""What can go wrong: the exceptions of the package."""

from __future__ import annotations

import errno
import os


class Error(Exception):
    """A file could not be used.

    file    its path, as it was given
    offset  where in the file, in bytes; None if that is not known
    code    of what is wrong: a finding such as "E04", or the name of the system's reason such as "ENOENT"
    """

    file: str
    offset: int | None
    code: str

    def __init__(self, text: str, file: str = "", offset: int | None = None, code: str = "") -> None:
        super().__init__(text)
        self.text, self.file, self.offset, self.code = text, file, offset, code

    def __str__(self) -> str:
        return self.text

    def __reduce__(self) -> tuple[object, ...]:
        return type(self), (self.text, self.file, self.offset, self.code)


class DamageError(Error, ValueError):
    """A file is damaged where it was read, or is no container; `code` is a finding: see docs/findings.md."""


class FileError(Error, OSError):
    """The system refused to open, read or write a file. Also the OSError that belongs to the reason: a file that is
    not there is a FileNotFoundError, and so on."""

    def __new__(cls, *args: object) -> FileError:
        return OSError.__new__(cls)

    def __init__(self, text: str, file: str = "", offset: int | None = None, code: str = "") -> None:
        Error.__init__(self, text, file, offset, code)
        self.errno = getattr(errno, code, 0)
        self.strerror = os.strerror(self.errno)
        self.filename = file


class MissingFileError(FileError, FileNotFoundError):
    """There is no such file."""


class ExistingFileError(FileError, FileExistsError):
    """There is such a file, and it was not to be replaced."""


class DeniedFileError(FileError, PermissionError):
    """The file may not be used."""


class DirectoryFileError(FileError, IsADirectoryError):
    """It is a directory, and no file."""


_CLASSES: dict[int, type[FileError]] = {
    errno.ENOENT: MissingFileError,
    errno.EEXIST: ExistingFileError,
    errno.EACCES: DeniedFileError,
    errno.EPERM: DeniedFileError,
    errno.EISDIR: DirectoryFileError,
}


def of_system(text: str, file: str, reason: int) -> FileError:
    """The error for a reason in the manner of errno."""
    return _CLASSES.get(reason, FileError)(text, file, None, errno.errorcode.get(reason, ""))
