#include "FakeProvider.h"

#include <algorithm>

namespace {

FakeProvider* current = nullptr;

}  // namespace

Behaviour answers(Bytes bytes) {
  return [bytes = std::move(bytes)](void* buffer, std::uint64_t* size) -> std::uint32_t {
    const std::uint64_t offered = std::exchange(*size, bytes.size());
    if (offered < bytes.size()) {
      return INSUFFICIENT_SIZE;
    }
    std::ranges::copy(bytes, static_cast<std::uint8_t*>(buffer));
    return SUCCESS;
  };
}

Behaviour replies(std::vector<Reply> script) {
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

FakeProvider::FakeProvider() {
  current = this;
  loader.getCapability = Answer<&FakeProvider::scalars>;
}

void FakeProvider::BindSerialized() {
  loader.getCapabilitySerialized = Answer<&FakeProvider::lists>;
}

template <std::map<Key, Behaviour> FakeProvider::*behaviours>
std::uint32_t FakeProvider::Answer(std::uint64_t component, std::uint64_t key, void* buffer,
                                   std::uint64_t* size) {
  const auto* bytes = static_cast<const std::uint8_t*>(buffer);
  current->asked_.push_back(
      {.key = {component, key},
       .offered = *size,
       .hasBuffer = buffer != nullptr,
       .isZero = std::all_of(bytes, bytes + *size, [](auto byte) { return byte == 0; })});
  const auto& known = current->*behaviours;
  const auto found = known.find({component, key});
  if (found == known.end()) {
    return FAILURE;
  }
  return found->second(buffer, size);
}
