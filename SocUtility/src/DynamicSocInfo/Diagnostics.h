/// Refusals of the query functions. Each writes one line to standard error, in one write that is
/// flushed at once, and returns the query's status. Errors of the stream are ignored.
///
/// A line shows the low 32 bits of the component or key as a signed decimal number.
#pragma once

#include <cstdint>

/// A component that does not exist: `UNSUPPORTED_COMPONENT`.
std::uint32_t RefuseComponent(std::uint64_t component) noexcept;

// A key of a component that exists: `UNSUPPORTED_KEY`.

/// The key is no capability.
std::uint32_t RefuseUnknownKey(std::uint64_t component, std::uint64_t key) noexcept;
/// The scalar query was asked for a list.
std::uint32_t RefuseListKey(std::uint64_t key) noexcept;
/// The serialized query was asked for a scalar.
std::uint32_t RefuseScalarKey(std::uint64_t component, std::uint64_t key) noexcept;

/// The list could not be written to the buffer: returns `status`.
std::uint32_t RefuseUnwritableList(std::uint64_t key, std::uint32_t status) noexcept;
