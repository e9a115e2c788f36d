// Prints the interface's version and some capabilities of this machine.
#include <ZynSystemInfo.h>

#include <array>
#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// A query that did not end in `SUCCESS`.
class QueryError : public std::runtime_error {
 public:
  explicit QueryError(std::uint32_t code)
      : std::runtime_error("status " + std::to_string(code)), status(code) {}

  std::uint32_t status;
};

/// An integer or flag; cast it to `std::int64_t` where the key's type is signed.
std::uint64_t number(std::uint64_t component, std::uint64_t key) {
  std::uint64_t value = 0;
  std::uint64_t size = sizeof value;
  const std::uint32_t status = Soc_GetCapability(component, key, &value, &size);
  return status == SUCCESS ? value : throw QueryError(status);
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
      throw QueryError(status);
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
      throw QueryError(status);
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
  std::cout << "GPU 4: " << gpuName() << '\n';
  for (const NamedValue& entry : list<NamedValue>(48)) {
    std::cout << "DSP 48: " << entry.name.data() << " = " << entry.value << '\n';
  }
  const std::uint64_t cpu2 = number(CPU, 2);
  std::cout << "CPU 2: " << cpu2 << '\n';
} catch (const QueryError& error) {
  std::cerr << error.what();
  if (error.status == FAILURE) {
    std::cerr << ": the chip is unknown and no provider library describes it";
  }
  std::cerr << '\n';
  return 1;
}
