#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/WindowsApi.h"

namespace {

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
  File& operator=(const File&) = delete;

  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
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
  const File file(path);
  struct stat status {};
  if (file.Descriptor() < 0 || fstat(file.Descriptor(), &status) != 0) {
    return failedWith(errno);
  }
  const auto size = static_cast<DWORD>(status.st_size);
  if (size > bufferSize) {
    return size;
  }

  DWORD count = 0;
  while (count < size) {  // the kernel delivers a page at a time
    const ssize_t part = read(file.Descriptor(), static_cast<BYTE*>(buffer) + count, size - count);
    if (part <= 0) {
      return failedWith(errno);
    }
    count += static_cast<DWORD>(part);
  }
  return count;
}
