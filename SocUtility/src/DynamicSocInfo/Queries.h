/// The two queries in full: argument checks, first use, answer. The exports stand before them and
/// take care of errors.
///
/// Arguments and results are those of the exported functions (see `ZynSystemInfo.h`); everything
/// that fails while a query function's state is built, or during its provider attempt, is thrown.
#pragma once

#include <cstdint>

std::uint32_t GetCapability(std::uint64_t component, std::uint64_t key, void* buffer,
                            std::uint64_t* size);

std::uint32_t GetCapabilitySerialized(std::uint64_t component, std::uint64_t key, void* buffer,
                                      std::uint64_t* size);
