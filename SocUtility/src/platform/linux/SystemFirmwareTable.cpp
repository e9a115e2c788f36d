#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "platform/WindowsApi.h"

namespace {

struct CloseFile {
  void operator()(FILE* file) const { (void)fclose(file); }
};

UINT failedWith(int error) {
  SetLastError(error == EACCES || error == EPERM ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
  return 0;
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
  errno = 0;  // a file that ends early is no error of the system
  const std::unique_ptr<FILE, CloseFile> file(fopen(path, "re"));
  const bool isRead = file && fread(buffer, 1, size, file.get()) == size;
  return isRead ? size : failedWith(errno);
}
