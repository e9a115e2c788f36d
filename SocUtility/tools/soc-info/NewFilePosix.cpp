#include "NewFile.h"

std::FILE* CreateNewFile(const std::filesystem::path& path) {
  return std::fopen(path.c_str(), "wbx");
}
