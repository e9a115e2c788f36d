/// Saves what identifies this machine, so that a report from the field becomes a test.
#pragma once

#include <filesystem>

/// Writes this machine's FADT ("FACP"), its PPTT if it has one ("PPTT"), and "identify.json", the
/// document of `identify`, which the two dumps reproduce. No other table: some hold licence keys.
///
/// \param directory A new one: beside older files the dumps could mean another machine, and a link
///                  in it could lead a program that runs as root to any file.
/// Throws `InputError` otherwise, when the tables cannot be read, and when a file cannot be
/// written.
void Capture(const std::filesystem::path& directory);
