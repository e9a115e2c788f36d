#include "FakeProvider.h"

#include <algorithm>

#include "AllocationWatch.h"

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

Behaviour answersAndExhausts(Bytes bytes) {
  return [answer = answers(std::move(bytes))](void* buffer, std::uint64_t* size) {
    const std::uint32_t status = answer(buffer, size);
    largestAllocation = status == SUCCESS ? 4096 : SIZE_MAX;
    return status;
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

FakeProvider::~FakeProvider() { largestAllocation = SIZE_MAX; }

void FakeProvider::BindSerialized() {
  loader.getCapabilitySerialized = Answer<&FakeProvider::lists>;
}

template <std::map<Key, Behaviour> FakeProvider::*behaviours>
std::uint32_t FakeProvider::Answer(std::uint64_t component, std::uint64_t key, void* buffer,
                                   std::uint64_t* size) {
  const auto* bytes = static_cast<const std::uint8_t*>(buffer);
  current->asked.emplace_back(component, key);
  current->offered[{component, key}].push_back(*size);
  current->offeredZeros &= std::all_of(bytes, bytes + *size, [](auto byte) { return byte == 0; });
  const auto& known = current->*behaviours;
  const auto found = known.find({component, key});
  return found == known.end() ? std::uint32_t{FAILURE} : found->second(buffer, size);
}
