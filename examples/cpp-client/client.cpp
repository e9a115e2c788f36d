// Prints the interface's version and some capabilities of this machine.
#include <ZynSystemInfo.h>

#include <array>
#include <cstdint>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// A query that ended in another status than `SUCCESS`.
std::runtime_error queryError(std::uint32_t status) {
  return std::runtime_error("status " + std::to_string(status));
}

/// An integer or flag; cast it to `std::int64_t` where the key's type is signed.
std::uint64_t number(std::uint64_t component, std::uint64_t key) {
  std::uint64_t value = 0;
  std::uint64_t size = sizeof value;
  const std::uint32_t status = Soc_GetCapability(component, key, &value, &size);
  return status == SUCCESS ? value : throw queryError(status);
}

/// Asks twice, since the first query of an unknown chip is answered from default values.
bool chipIsKnown() {
  std::uint64_t value = 0;
  std::uint64_t size = sizeof value;
  Soc_GetCapability(CPU, 1, &value, &size);
  return Soc_GetCapability(CPU, 1, &value, &size) == SUCCESS;
}

std::string gpuName() {
  std::vector<char> buffer(64);
  for (;;) {
    std::uint64_t size = buffer.size();
    const std::uint32_t status = Soc_GetCapability(GPU, 4, buffer.data(), &size);
    if (status == SUCCESS) {
      return buffer.data();
    }
    if (status != INSUFFICIENT_SIZE) {
      throw queryError(status);
    }
    buffer.resize(size);  // a longer name: ask again with what it needs
  }
}

struct NamedValue {
  std::uint32_t dsp;
  std::uint32_t value;
  std::array<char, 32> name;  ///< Ends with a NUL.
};

/// The entries of a DSP list; `Entry` is laid out as the list's entries are.
template <class Entry>
std::vector<Entry> list(std::uint64_t key) {
  std::vector<Entry> entries(16);
  for (;;) {
    std::uint64_t size = entries.size() * sizeof(Entry);
    const std::uint32_t status = Soc_GetCapabilitySerialized(DSP, key, entries.data(), &size);
    if (status != SUCCESS && status != INSUFFICIENT_SIZE) {
      throw queryError(status);
    }
    entries.resize(size / sizeof(Entry));
    if (status == SUCCESS) {
      return entries;
    }
  }
}

}  // namespace

int main() try {
  std::uint8_t major = 0;
  std::uint8_t minor = 0;
  Soc_GetAPIVersion(&major, &minor);
  std::cout << "package " << PACKAGE_VERSION << ", interface " << +major << '.' << +minor << '\n';
  if (!chipIsKnown()) {
    std::cerr << "unknown chip: no provider library describes it\n";
    return 1;
  }
  std::cout << "GPU 4: " << gpuName() << '\n';
  for (const NamedValue& entry : list<NamedValue>(48)) {
    std::cout << "DSP 48: " << entry.name.data() << " = " << entry.value << '\n';
  }
  const std::uint64_t cpu2 = number(CPU, 2);
  std::cout << "CPU 2: " << cpu2 << '\n';
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
