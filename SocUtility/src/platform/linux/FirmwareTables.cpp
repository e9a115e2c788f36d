#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include "platform/WindowsApi.h"

namespace {

constexpr DWORD ACPI_PROVIDER = 0x41435049;  // "ACPI"
constexpr std::string_view TABLE_DIRECTORY = "/sys/firmware/acpi/tables/";
constexpr std::size_t SIGNATURE_SIZE = 4;

/// An open file, closed at the end of its scope; negative when opening failed.
class File {
 public:
  explicit File(const char* path) noexcept : descriptor_(open(path, O_RDONLY | O_CLOEXEC)) {}
  ~File() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }
  File(const File&) = delete;
  File(File&&) = delete;
  File& operator=(const File&) = delete;
  File& operator=(File&&) = delete;

  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

using TablePath = std::array<char, TABLE_DIRECTORY.size() + SIGNATURE_SIZE + 1>;

/// The zero-terminated path of a table's file; empty when the id is no signature.
TablePath tablePath(DWORD tableId) {
  TablePath path{};
  auto* end = std::copy(TABLE_DIRECTORY.begin(), TABLE_DIRECTORY.end(), path.begin());
  for (std::size_t i = 0; i < SIGNATURE_SIZE; ++i) {
    const char letter = static_cast<char>(tableId >> 8 * i & 0xFF);
    // The signature becomes part of a path and must not lead out of the directory.
    if (letter <= ' ' || letter > '~' || letter == '/' || letter == '.') {
      return {};
    }
    *end++ = letter;
  }
  return path;
}

UINT failedWith(int error) {
  SetLastError(error == EACCES || error == EPERM ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
  return 0;
}

}  // namespace

UINT GetSystemFirmwareTable(DWORD provider, DWORD tableId, PVOID buffer, DWORD bufferSize) {
  if (provider != ACPI_PROVIDER) {
    SetLastError(ERROR_INVALID_FUNCTION);
    return 0;
  }
  const TablePath path = tablePath(tableId);
  const File file(path.data());
  if (file.Descriptor() < 0) {
    return failedWith(errno);
  }
  struct stat status {};
  // Subdirectories with four-letter names stand beside the tables.
  if (fstat(file.Descriptor(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0) {
    return failedWith(ENOENT);
  }
  const auto size = static_cast<DWORD>(status.st_size);
  if (buffer == nullptr || size > bufferSize) {
    return size;
  }

  auto* const bytes = static_cast<BYTE*>(buffer);
  DWORD count = 0;
  while (count < size) {
    const ssize_t part = read(file.Descriptor(), bytes + count, size - count);
    if (part < 0 && errno == EINTR) {
      continue;
    }
    if (part < 0) {
      return failedWith(errno);
    }
    if (part == 0) {
      break;
    }
    count += static_cast<DWORD>(part);
  }
  return count == 0 ? failedWith(ENOENT) : count;
}
