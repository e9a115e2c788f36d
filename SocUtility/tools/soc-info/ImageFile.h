/// What a file is, read from its first bytes. Nothing of it is loaded or run.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

struct ImageFile {
  enum class State {
    Absent,
    Unreadable,  ///< It exists, but is no regular file or cannot be opened.
    OtherFile,   ///< It is no image of Windows or ELF.
    Image,
  };

  State state;
  /// For people. The system's words for an absent or unreadable file; "ELF for x86-64", "Windows
  /// image for ARM64X" for an image.
  std::string description;
  /// Whether the image is for a machine of this process. A hybrid image has two.
  bool isForThisProcess;
};

ImageFile ReadImageFile(const std::filesystem::path& path);

/// The form that C++ gives to the name of a function, as the file quotes it; empty if it does not.
/// Such a file has the function but does not export it under `name`: `extern "C"` is missing.
/// The file must be a regular one.
std::string MangledName(const std::filesystem::path& path, std::string_view name);
