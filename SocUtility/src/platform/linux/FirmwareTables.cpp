#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/WindowsApi.h"

namespace {

UINT failedWith(int error) {
  SetLastError(error == EACCES || error == EPERM ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
  return 0;
}

/// Reads exactly `size` bytes; false with `errno` on failure.
bool readWhole(int file, BYTE* buffer, std::size_t size) {
  std::size_t count = 0;
  while (count < size) {  // the kernel delivers a page at a time
    const ssize_t part = read(file, buffer + count, size - count);
    if (part <= 0) {
      return false;
    }
    count += static_cast<std::size_t>(part);
  }
  return true;
}

}  // namespace

UINT GetSystemFirmwareTable(DWORD, DWORD tableId, PVOID buffer, DWORD bufferSize) {
  char path[] = "/sys/firmware/acpi/tables/FACP";
  // The identifier's bytes are the table's signature, which is the file's name.
  std::memcpy(path + sizeof path - 1 - sizeof tableId, &tableId, sizeof tableId);
  struct stat status {};
  if (stat(path, &status) != 0) {
    return failedWith(errno);
  }
  const auto size = static_cast<DWORD>(status.st_size);
  if (size > bufferSize) {
    return size;
  }
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return failedWith(errno);
  }
  const bool isRead = readWhole(file, static_cast<BYTE*>(buffer), size);
  const int error = errno;
  close(file);
  return isRead ? size : failedWith(error);
}
