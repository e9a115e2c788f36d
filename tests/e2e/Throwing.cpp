// The scripted provider, but out of its query comes, for one key, what may not: an exception, of
// the type FAULT.
#include <cstdint>
#include <stdexcept>

#if defined(_WIN32)
#define PROVIDER_EXPORT __declspec(dllexport)
#else
#define PROVIDER_EXPORT [[gnu::visibility("default")]]
#endif

using Query = std::uint32_t(std::uint64_t component, std::uint64_t key, void* buffer,
                            std::uint64_t* size);

// The scripted provider's query under another name.
extern "C" Query ScriptedGetCapability;

namespace {
struct OwnFault {
  const char* text;
};
}  // namespace

extern "C" PROVIDER_EXPORT std::uint32_t Soc_GetCapability(std::uint64_t component,
                                                           std::uint64_t key, void* buffer,
                                                           std::uint64_t* size) {
  if (component == 2 && key == 3) {
    throw FAULT{"thrown by the provider"};
  }
  return ScriptedGetCapability(component, key, buffer, size);
}
