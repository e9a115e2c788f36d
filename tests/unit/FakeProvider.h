/// A provider that follows a script and records what it is asked.
#pragma once

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "Bytes.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "ZynSystemInfo.h"

using Key = std::pair<std::uint64_t, std::uint64_t>;  ///< Component, key.
using Sizes = std::vector<std::uint64_t>;

/// What the provider does when it is asked once.
struct Reply {
  std::uint32_t status;
  std::uint64_t size;
  Bytes bytes = {};           ///< Written as far as they fit.
  void (*after)() = nullptr;  ///< Called before the reply is returned.
};

/// A good answer.
inline Reply answers(const Bytes& bytes) { return {SUCCESS, bytes.size(), bytes}; }

/// One lives at a time.
class FakeProvider {
 public:
  FakeProvider() {
    current = this;
    loader.getCapability = Ask;
  }
  FakeProvider(const FakeProvider&) = delete;
  FakeProvider& operator=(const FakeProvider&) = delete;

  ProviderLoader loader;
  /// The replies to a key, of which the last is repeated; without any the provider fails. A success
  /// whose bytes do not fit becomes `INSUFFICIENT_SIZE`.
  std::map<Key, std::vector<Reply>> script;

  std::vector<Key> asked;        ///< One key a question.
  std::map<Key, Sizes> offered;  ///< Bytes at the buffer, one a question.
  bool offeredZeros = true;      ///< Every byte ever offered was 0.

  static std::uint32_t Ask(std::uint64_t component, std::uint64_t key, void* buffer,
                           std::uint64_t* size) {
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    const std::uint64_t capacity = *size;
    Sizes& sizes = current->offered[{component, key}];
    sizes.push_back(capacity);
    current->asked.emplace_back(component, key);
    current->offeredZeros &= std::count(bytes, bytes + capacity, 0) == std::ptrdiff_t(capacity);

    const std::vector<Reply>& replies = current->script[{component, key}];
    if (replies.empty()) {
      return FAILURE;
    }
    const Reply& reply = replies[std::min(sizes.size(), replies.size()) - 1];
    *size = reply.size;
    if (reply.status == SUCCESS && reply.bytes.size() > capacity) {
      return INSUFFICIENT_SIZE;
    }
    std::copy_n(reply.bytes.begin(), std::min<std::uint64_t>(capacity, reply.bytes.size()), bytes);
    if (reply.after != nullptr) {
      reply.after();
    }
    return reply.status;
  }

 private:
  static inline FakeProvider* current = nullptr;
};
