/// Saves the tables that identify this machine, so that a report from a user can become a test.
#pragma once

#include <filesystem>

/// Writes this machine's FADT ("FACP"), its PPTT if it has one ("PPTT"), and "identify.json", the
/// document of `identify`, which the two dumps reproduce. No other table: some hold licence keys.
///
/// \param directory Must not exist. Older files in it could be of another machine, and a link in it
///                  could make a program that runs as root write to any file.
/// Throws `InputError` if it exists, if the tables cannot be read, and if a file cannot be written.
void Capture(const std::filesystem::path& directory);
