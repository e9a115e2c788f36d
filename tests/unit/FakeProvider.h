/// A provider made of plain functions. It gives the set answers and records what it is asked.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "AllocationFault.h"
#include "Bytes.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "ZynSystemInfo.h"

using Key = std::pair<std::uint64_t, std::uint64_t>;  ///< Component, key.

/// How a provider answers one key: fills `buffer`, sets `*size`, returns a status.
using Behaviour = std::function<std::uint32_t(void* buffer, std::uint64_t* size)>;

/// As a well-behaved provider does: status 4 and the size required, or `bytes`.
inline Behaviour answers(Bytes bytes) {
  return [bytes = std::move(bytes)](void* buffer, std::uint64_t* size) -> std::uint32_t {
    const std::uint64_t offered = std::exchange(*size, bytes.size());
    if (offered < bytes.size()) {
      return INSUFFICIENT_SIZE;
    }
    std::ranges::copy(bytes, static_cast<std::uint8_t*>(buffer));
    return SUCCESS;
  };
}

/// As `answer` does, but the allocation that follows an answer of this status fails.
inline Behaviour exhausts(Behaviour answer, std::uint32_t status = SUCCESS) {
  return [=](void* buffer, std::uint64_t* size) {
    const std::uint32_t answered = answer(buffer, size);
    if (answered == status) {
      AllocationFault::FailNext();
    }
    return answered;
  };
}

struct Reply {
  std::uint32_t status;
  std::uint64_t size;
  Bytes bytes = {};  ///< Written as far as they fit.
};

/// One reply after the other, for any offered size; the last one is repeated.
inline Behaviour replies(std::vector<Reply> script) {
  return [script = std::move(script), next = std::size_t{0}](
             void* buffer, std::uint64_t* size) mutable -> std::uint32_t {
    const Reply& reply = script[next];
    next = std::min(next + 1, script.size() - 1);
    std::copy_n(reply.bytes.begin(), std::min<std::uint64_t>(*size, reply.bytes.size()),
                static_cast<std::uint8_t*>(buffer));
    *size = reply.size;
    return reply.status;
  };
}

/// One lives at a time. A key without behaviour fails with `FAILURE`.
class FakeProvider {
 public:
  FakeProvider() {
    current = this;
    loader.getCapability = Answer<&FakeProvider::scalars>;
  }
  FakeProvider(const FakeProvider&) = delete;
  FakeProvider& operator=(const FakeProvider&) = delete;
  /// Binds `Soc_GetCapabilitySerialized` too.
  void BindSerialized() { loader.getCapabilitySerialized = Answer<&FakeProvider::lists>; }

  ProviderLoader loader;
  std::map<Key, Behaviour> scalars;  ///< Of `Soc_GetCapability`.
  std::map<Key, Behaviour> lists;    ///< Of `Soc_GetCapabilitySerialized`.

  std::vector<Key> asked;                             ///< One key a question.
  std::map<Key, std::vector<std::uint64_t>> offered;  ///< Bytes at the buffer, one a question.
  bool offeredZeros = true;                           ///< Every byte ever offered was 0.

 private:
  template <std::map<Key, Behaviour> FakeProvider::*behaviours>
  static std::uint32_t Answer(std::uint64_t component, std::uint64_t key, void* buffer,
                              std::uint64_t* size) {
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    current->asked.emplace_back(component, key);
    current->offered[{component, key}].push_back(*size);
    current->offeredZeros &= std::all_of(bytes, bytes + *size, [](auto byte) { return byte == 0; });
    const auto& known = current->*behaviours;
    const auto found = known.find({component, key});
    return found == known.end() ? std::uint32_t{FAILURE} : found->second(buffer, size);
  }

  static inline FakeProvider* current = nullptr;
};
