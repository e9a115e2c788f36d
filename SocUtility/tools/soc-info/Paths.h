/// Paths as text, which is UTF-8 on Windows too. There `std::filesystem::path` takes narrow text
/// for the process's code page, which need not have every letter of a path.
#pragma once

#include <filesystem>
#include <string>

std::filesystem::path PathOf(const std::string& text);

/// With forward slashes.
std::string PathText(const std::filesystem::path& path);

/// The path of a module, or empty if it is unknown. `module` is a handle of the platform.
std::filesystem::path ModulePath(void* module);

/// The path of this program.
std::filesystem::path OwnPath();
