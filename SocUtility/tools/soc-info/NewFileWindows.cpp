#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include "NewFile.h"

// Not every C runtime of this system knows the x of fopen's mode.
std::FILE* CreateNewFile(const std::filesystem::path& path) {
  const int file =
      _wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
  return file < 0 ? nullptr : _fdopen(file, "wb");
}
