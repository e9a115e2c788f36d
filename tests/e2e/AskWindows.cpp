// The frames that call the product, compiled as most hosts of Windows are: for the C++ ABI of MSVC.
#include "Host.h"

namespace {

HostEnd askCatching(HostQuery query, uint64_t component, uint64_t key, void* buffer, uint64_t* size,
                    uint32_t* status) {
  try {
    *status = query(component, key, buffer, size);
    return HOST_RETURNED;
  } catch (...) {
    return HOST_THREW;
  }
}

}  // namespace

HostEnd HostAsk(HostQuery query, uint64_t component, uint64_t key, void* buffer, uint64_t* size,
                uint32_t* status) {
  constexpr int EXECUTE_HANDLER = 1;
  __try {
    return askCatching(query, component, key, buffer, size, status);
  } __except (EXECUTE_HANDLER) {
    return HOST_FAULTED;
  }
}
