/// The system's own words for why a library does not load.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

/// Call this on the thread whose attempt to load `library` failed, with the last error of that
/// attempt. On Windows returns "error 126: " and the system's text, in its language and in UTF-8.
/// Elsewhere the number says little and is left out: the loader is asked once more for its words.
///
/// `library` is what the attempt loaded: a path, or a bare name, for which the platform searches.
std::string WhyLoadFailed(const std::filesystem::path& library, std::uint32_t lastError);
