/// Files that are written by a program which may run as root, where others may write too.
#pragma once

#include <cstdio>
#include <filesystem>

/// Creates a file and opens it for writing bytes. Null, with the reason in `errno`, when that is
/// not possible or when there is something of that name, be it a link to nothing.
std::FILE* CreateNewFile(const std::filesystem::path& path);
