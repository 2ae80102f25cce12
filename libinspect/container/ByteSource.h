#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Inspect {

/// The bytes of one input: a file, or standard input for the path "-". Of a file only a window is held. An input
/// without positions, such as a pipe, is taken in, up to a limit: into memory, and a long one into a file without a
/// name in $TMPDIR or /tmp, unless there is no room for it. One object may be used for many inputs in turn.
class ByteSource {
 public:
  static constexpr uint64_t PIPE_LIMIT = uint64_t{1} << 30;
  static constexpr uint64_t DEVICE_LIMIT = uint64_t{1} << 20;  ///< of /dev/zero and the like, which may have no end
  static constexpr std::size_t MOST_IN_MEMORY = std::size_t{8} << 20;
  static constexpr std::size_t WINDOW = std::size_t{128} * 1024;

  struct Stream;
  using Taken = std::shared_ptr<Stream>;  ///< what was taken in of an input without positions

  ByteSource() = default;
  ~ByteSource();
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  /// Inputs of more bytes are refused from the next open() on; 0 is no limit.
  void setLimit(uint64_t bytes) { _limit = bytes; }
  /// Called with the number of bytes after each read from the disk. May throw, which ends what reads.
  void onRead(std::function<void(std::size_t)> told) { _told = std::move(told); }

  /// Opens an input in place of the one before. A FIFO that nobody writes to is refused, not waited for.
  /// @return false, with `error` saying what is wrong with which input
  [[nodiscard]] bool open(const std::string& path, std::string& error);
  /// The same of a file, also one named "-": for what was written, or is named by another file.
  [[nodiscard]] bool openFile(const std::string& path, std::string& error);
  /// Opens what another source has open once more: a file by its name, what was taken in from where it is.
  [[nodiscard]] bool openAgain(const std::string& path, const Taken& taken, std::string& error);
  /// For openAgain(): null for a file.
  const Taken& taken() const { return _taken; }
  bool isOverLimit() const { return _isOverLimit; }  ///< whether open() refused it for its size
  const std::string& name() const { return _name; }  ///< inputName() of the path
  /// As open() took it: "-" for standard input.
  std::string path() const { return _isStandardInput ? "-" : _name; }
  /// Also when open() refused it: of a file its size, of another input what was taken in until then.
  uint64_t size() const { return _size; }
  /// A read failed since open(): results may be incomplete.
  bool hasFailed() const { return _hasFailed; }
  /// Reads up to `size` bytes at `offset`. @return how many there were; fewer only at the end or after a read error
  std::size_t readAt(uint64_t offset, void* to, std::size_t size) const;
  /// The same without moving the window: for reading a few bytes elsewhere.
  std::size_t readAside(uint64_t offset, void* to, std::size_t size) const;
  /// Up to WINDOW bytes at `offset` in place, valid until the next call. @return how many there are from `at` on
  std::size_t view(uint64_t offset, const uint8_t*& at) const;

 private:
  void close();
  [[nodiscard]] bool openInput(const std::string& path, bool isStandardInput, std::string& error);
  bool hasWriter(Stream& stream) const;
  [[nodiscard]] bool takeIn(Stream& stream, bool isDevice, std::string& error);
  void use(const Taken& taken);
  bool refuse(uint64_t limit, std::string& error);
  std::size_t readFile(uint64_t offset, uint8_t* to, std::size_t size) const;

  std::string _name;
  uint64_t _limit = 0;
  bool _isOverLimit = false;
  std::function<void(std::size_t)> _told;
  bool _isStandardInput = false;
  int _descriptor = -1;
  Taken _taken;
  uint64_t _size = 0;
  bool _inMemory = false;
  mutable bool _hasFailed = false;
  mutable std::vector<uint8_t> _bytes;  ///< the window of a file
  mutable uint64_t _windowAt = 0;
  mutable std::size_t _windowSize = 0;
};

/// What messages call an input: its path, or "standard input" for "-".
std::string inputName(const std::string& path);

/// Whether an input, "-" for standard input, is the file that a path leads to, whatever its name: by device and inode.
/// False if one of them cannot be examined.
bool isSameFile(const std::string& input, const std::string& path);

constexpr char EXISTS[] = "exists";
/// Why no output may be written to a path: it is no regular file; it is the standard output or error, or leads to a
/// link of the system to an open file, such as /dev/stdout, which would be replaced instead; EXISTS, where nothing is
/// to be replaced; or, to be replaced or not, it is one of the inputs, whatever its name. Empty if it may.
std::string refusalToReplace(const std::string& path, bool replaces, const std::vector<std::string>& inputs);

/// Whether two inputs have the same bytes; false if one of them cannot be read to its end.
bool haveSameBytes(const ByteSource& a, const ByteSource& b);
/// The same of a part of each.
bool haveSameBytes(const ByteSource& a, uint64_t offsetA, const ByteSource& b, uint64_t offsetB, uint64_t size);

constexpr uint64_t MOST_TEXT = uint64_t{16} << 20;  ///< bytes of a description or a list that a person made

/// A whole input as text, for descriptions and lists. Of a pipe no more than `limit` bytes and a piece are taken in.
/// @return false, with `error` filled, also above `limit` bytes
[[nodiscard]] bool readText(const std::string& path, uint64_t limit, std::string& text, std::string& error);

}  // namespace Inspect
