/// The diagnostic lines that the query functions write when they refuse a query.
#pragma once

#include <cstdint>
#include <string_view>

/// Writes one line to standard error: `text`, the low 32 bits of `number` as a signed decimal, and
/// `ending` (together at most 100 bytes). One write, flushed at once; errors of the stream are
/// ignored.
void WriteDiagnostic(std::string_view text, std::uint64_t number,
                     std::string_view ending = {}) noexcept;
