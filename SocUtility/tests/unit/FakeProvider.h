/// A provider made of plain functions, which answers as told and notes what it is asked.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "Bytes.h"
#include "ZynSystemInfo.h"
#include "provider/ProviderLoader.h"

using Key = std::pair<std::uint64_t, std::uint64_t>;  ///< Component, key.

/// How a provider answers one key: fills `buffer`, sets `*size`, returns a status.
using Behaviour = std::function<std::uint32_t(void* buffer, std::uint64_t* size)>;

/// As a well-behaved provider does: status 4 and the size required, or `bytes`.
Behaviour answers(Bytes bytes);

/// So too, but once it has answered there is no memory for a block of more than 4096 bytes. Ends
/// with the provider.
Behaviour answersAndExhausts(Bytes bytes);

struct Reply {
  std::uint32_t status;
  std::uint64_t size;
  Bytes bytes = {};  ///< Written as far as they fit.
};

/// One reply after the other, whatever is offered; the last one is repeated.
Behaviour replies(std::vector<Reply> script);

/// One lives at a time. A key without behaviour fails with `FAILURE`.
class FakeProvider {
 public:
  FakeProvider();
  ~FakeProvider();
  FakeProvider(const FakeProvider&) = delete;
  FakeProvider& operator=(const FakeProvider&) = delete;
  /// Binds `Soc_GetCapabilitySerialized` too.
  void BindSerialized();

  ProviderLoader loader{ProviderSearchPlan{2}};
  std::map<Key, Behaviour> scalars;  ///< Of `Soc_GetCapability`.
  std::map<Key, Behaviour> lists;    ///< Of `Soc_GetCapabilitySerialized`.

  std::vector<Key> asked;                             ///< One key a question.
  std::map<Key, std::vector<std::uint64_t>> offered;  ///< Bytes at the buffer, one a question.
  bool offeredZeros = true;                           ///< Every byte ever offered was 0.

 private:
  template <std::map<Key, Behaviour> FakeProvider::*behaviours>
  static std::uint32_t Answer(std::uint64_t component, std::uint64_t key, void* buffer,
                              std::uint64_t* size);
};
