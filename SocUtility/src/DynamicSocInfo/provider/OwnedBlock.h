/// Ownership of a block from `malloc`, where running out of memory is a result and not an
/// exception.
#pragma once

#include <cstdlib>
#include <memory>

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};

template <class T>
using OwnedBlock = std::unique_ptr<T, FreeBlock>;
