/// The serialized capability format: how the list capabilities travel between libraries.
///
/// A buffer holds entries of one size without padding, and nothing else. Integers are `uint32_t`,
/// little-endian. The first field of an entry is the index of its DSP. The writer answers this
/// library's list queries. The reader reads another library's answers.
///
/// `List` is one of the four list field types of `DspInfo`:
///
/// | field   | entry    | content                                              |
/// |---------|----------|------------------------------------------------------|
/// | `cap16` | 8 bytes  | index at 0, element at 4                             |
/// | `cap46` | 8 bytes  | index at 0, mapped value at 4                        |
/// | `cap47` | 36 bytes | index at 0, name at 4 (32 bytes)                     |
/// | `cap48` | 40 bytes | index at 0, value at 4, name at 8 (32 bytes)         |
///
/// A name is at most 31 bytes, followed by NUL bytes up to the end of its 32.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "DynamicSocInfo/capabilities/SocInfo.h"

/// What the writer leaves in `*size` when a name does not fit its 32 bytes.
inline constexpr std::uint64_t UNSERIALIZABLE = std::numeric_limits<std::uint64_t>::max();

/// Writes the entries of `lists` to `buffer`; a list's position is the DSP index of its entries.
///
/// \param buffer Receives the entries; untouched on failure and when there are none.
/// \param size   In: bytes at `buffer`. Out: bytes written; on failure the bytes required, or
///               `UNSERIALIZABLE` when a name of 32 bytes or more cannot be stored.
/// \return Whether the entries were written. Allocates nothing.
template <class List>
bool serialize(void* buffer, std::uint64_t* size, std::span<const List* const> lists);

/// Reads entries into `targets`: target i is emptied and receives those whose DSP index is i, in
/// buffer order. Entries of further DSPs are ignored. `data` needs no alignment.
///
/// \return False, with all targets as they were, when `length` is not a multiple of the entry size,
///         `data` is null although `length` is not 0, or a name of any entry has no NUL.
template <class List>
bool deserialize(const void* data, std::size_t length, std::span<List* const> targets);
