#include "DynamicSocInfo/import/ProviderCalls.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "ZynSystemInfo.h"
#include "platform/ProviderFrame.h"

namespace {

constexpr std::size_t VARIABLE_ANSWER_FIRST_SIZE = 32;
constexpr std::size_t WORD = sizeof(std::uint64_t);

[[noreturn]] void failForSize() { throw std::runtime_error("reported size cannot be held"); }

/// Runs an action that needs memory for an answer. The provider chose its size, so if memory runs
/// out, the call fails.
template <class Action>
auto withReportedSize(Action action) {
  try {
    return action();
  } catch (const std::bad_alloc&) {
    failForSize();
  }
}

void resizeToReported(std::vector<std::uint8_t>& buffer, std::uint64_t size) {
  if (size > LARGEST_ANSWER) {
    failForSize();
  }
  withReportedSize([&] { buffer.resize(size); });
}

/// An answer of exactly the width of `Wire`.
template <class Wire>
Wire readExactly(ProviderLoader& provider, std::uint32_t component, std::uint32_t key) {
  const std::vector<std::uint8_t> bytes =
      GetCapabilityBytes(provider, component, key, sizeof(Wire));
  if (bytes.size() != sizeof(Wire)) {
    throw std::runtime_error("Result buffer size mismatch");
  }
  Wire value;
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

/// Stores what `read` returns. Returns false, with `out` unchanged, if it throws a failure.
template <class Out, class Read>
bool tryRead(Out& out, std::string* failure, Read read) {
  try {
    out = read();
    return true;
  } catch (const std::runtime_error& error) {
    if (failure != nullptr) {
      *failure = error.what();
    }
    return false;
  }
}

/// The number of an answer that has exactly the width of `Wire`, converted to `Out`: an integer
/// keeps its low bits, a flag is true unless the number is 0.
template <class Wire, class Out>
bool tryGetNumber(ProviderLoader& provider, std::uint32_t component, std::uint32_t key, Out& out,
                  std::string* failure) {
  return tryRead(out, failure,
                 [&] { return static_cast<Out>(readExactly<Wire>(provider, component, key)); });
}

}  // namespace

std::uint32_t AskOnce(Soc_GetCapabilityFn* query, std::uint32_t component, std::uint32_t key,
                      void* buffer, std::uint64_t* size) {
  std::uint32_t status = FAILURE;
  if (!CallProvider(query, component, key, buffer, size, &status)) {
    throw ForeignException();
  }
  return status;
}

void AskGrowing(Soc_GetCapabilityFn* query, std::uint32_t component, std::uint32_t key,
                std::vector<std::uint8_t>& buffer, WhenGrowing whenGrowing) {
  while (true) {
    std::uint64_t size = buffer.size();
    switch (AskOnce(query, component, key, buffer.data(), &size)) {
      case SUCCESS:
        return resizeToReported(buffer, size);
      case INSUFFICIENT_SIZE:
        if (size <= buffer.size()) {
          throw std::runtime_error("INSUFFICIENT_SIZE despite matching size");
        }
        if (whenGrowing == WhenGrowing::CLEAR) {
          buffer.clear();
        }
        resizeToReported(buffer, size);
        break;
      default:
        throw std::runtime_error("GetCapability failed");
    }
  }
}

std::vector<std::uint8_t> GetCapabilityBytes(ProviderLoader& provider, std::uint32_t component,
                                             std::uint32_t key, std::size_t initialSize) {
  if (provider.getCapability == nullptr) {
    throw std::runtime_error("SoCServiceUtils not loaded");
  }
  std::vector<std::uint8_t> buffer(initialSize);
  // What a refused call left behind must not pass for an answer.
  AskGrowing(provider.getCapability, component, key, buffer, WhenGrowing::CLEAR);
  return buffer;
}

std::vector<std::uint64_t> ReadU64Vector(ProviderLoader& provider, std::uint32_t component,
                                         std::uint32_t key) {
  const std::vector<std::uint8_t> bytes =
      GetCapabilityBytes(provider, component, key, VARIABLE_ANSWER_FIRST_SIZE);
  if (bytes.size() < WORD) {
    throw std::runtime_error("bad vector format");
  }
  std::uint64_t count = 0;
  std::memcpy(&count, bytes.data(), WORD);
  const std::size_t elementBytes = bytes.size() - WORD;
  if (count > elementBytes / WORD) {
    throw std::runtime_error("vector buffer is too small");
  }
  if (count * WORD != elementBytes) {
    throw std::runtime_error("vector buffer does not match expected size");
  }
  return withReportedSize([&] {
    std::vector<std::uint64_t> elements(count);
    if (count != 0) {
      std::memcpy(elements.data(), bytes.data() + WORD, elementBytes);
    }
    return elements;
  });
}

std::string ReadCapabilityString(ProviderLoader& provider, std::uint32_t component,
                                 std::uint32_t key) {
  const std::vector<std::uint8_t> bytes =
      GetCapabilityBytes(provider, component, key, VARIABLE_ANSWER_FIRST_SIZE);
  const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
  if (end == bytes.end()) {
    throw std::runtime_error("missing null terminator");
  }
  return withReportedSize([&] { return std::string(bytes.begin(), end); });
}

bool TryGetU64(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
               std::uint64_t& out, std::string* failure) {
  return tryGetNumber<std::uint64_t>(provider, component, key, out, failure);
}

bool TryGetU32(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
               std::uint32_t& out, std::string* failure) {
  return tryGetNumber<std::uint64_t>(provider, component, key, out, failure);
}

bool TryGetU8(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
              std::uint8_t& out, std::string* failure) {
  return tryGetNumber<std::uint64_t>(provider, component, key, out, failure);
}

bool TryGetBool(ProviderLoader& provider, std::uint32_t component, std::uint32_t key, bool& out,
                std::string* failure) {
  return tryGetNumber<std::uint64_t>(provider, component, key, out, failure);
}

bool TryGetFloat(ProviderLoader& provider, std::uint32_t component, std::uint32_t key, float& out,
                 std::string* failure) {
  return tryGetNumber<float>(provider, component, key, out, failure);
}

bool TryGetU32List(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
                   std::vector<std::uint32_t>& out, std::string* failure) {
  return tryRead(out, failure, [&] {
    const std::vector<std::uint64_t> elements = ReadU64Vector(provider, component, key);
    return withReportedSize([&] {
      std::vector<std::uint32_t> values(elements.size());
      std::ranges::transform(elements, values.begin(), [](std::uint64_t element) {
        return static_cast<std::uint32_t>(element);
      });
      return values;
    });
  });
}

bool TryGetString(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
                  std::string& out, std::string* failure) {
  return tryRead(out, failure, [&] { return ReadCapabilityString(provider, component, key); });
}
