// The frames that call the product, compiled as most hosts of Windows are: for the C++ ABI of MSVC.
#include "Host.h"

namespace {

void askCatching(HostCall* call) {
  try {
    call->status = call->query(call->component, call->key, call->buffer, &call->size);
  } catch (...) {
    call->end = " threw";
  }
}

}  // namespace

void HostAsk(HostCall* call) {
  constexpr int EXECUTE_HANDLER = 1;
  __try {
    askCatching(call);
  } __except (EXECUTE_HANDLER) {
    call->end = " faulted";
  }
}
