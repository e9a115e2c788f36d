#include "Machine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

namespace {

Machine* current = nullptr;

/// A handle value that no machine of this process ever gives out again.
void* newHandle() {
  static std::uintptr_t last = 0;
  return reinterpret_cast<void*>(last += 0x10000);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

Machine::Machine() { current = this; }

Machine::~Machine() {
  current = nullptr;
  for (const auto& [handle, description] : open_) {
    ADD_FAILURE() << "left open: " << description;
  }
  for (const Module& module : modules) {
    EXPECT_EQ(module.references, 0) << "left loaded: " << module.name;
  }
  const bool isOrdered = !failing.first.empty() && failing.second != 0;
  EXPECT_TRUE(faultHappened_ || !isOrdered) << "never called: " << failing.first;
}

Machine& Machine::Current() {
  if (current == nullptr) {
    ADD_FAILURE() << "a call of the platform outside any scenario";
    std::abort();
  }
  return *current;
}

HMODULE Machine::AddModule(const std::string& name, const Symbols& symbols, bool isResident) {
  auto* const handle = static_cast<HMODULE>(newHandle());
  modules.push_back({name, symbols, isResident, handle});
  return handle;
}

std::vector<std::string> Machine::CallsOf(const std::string& function) const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (call.starts_with(function + ' ')) {
      found.push_back(call.substr(function.size() + 1));
    }
  }
  return found;
}

bool Machine::Note(const std::string& function, const std::string& arguments) {
  static const std::set<std::string> RELEASES{"FreeLibrary", "CloseServiceHandle", "LocalFree",
                                              "RegCloseKey"};
  calls.push_back(function + arguments);
  const int nth = ++counts_[function];
  if (before) {
    before(function, nth);
  }
  const bool isNext = !RELEASES.contains(function) && ++failableCalls_ == failingCall;
  if (!isNext && failing != std::pair(function, nth)) {
    return false;
  }
  lastError = ERROR_ACCESS_DENIED;
  return faultHappened_ = true;
}

Machine::Module* Machine::Find(HMODULE handle) {
  const auto found = std::ranges::find(modules, handle, &Module::handle);
  if (found == modules.end()) {
    ADD_FAILURE() << "not a loaded module: " << handle;
    return nullptr;
  }
  return &*found;
}

void* Machine::Open(const std::string& description, void* handle) {
  handle = handle == nullptr ? newHandle() : handle;
  open_[handle] = description;
  return handle;
}

std::string Machine::Use(const void* handle, std::string_view kind) {
  const auto found = open_.find(handle);
  if (found == open_.end() || !found->second.starts_with(kind)) {
    ADD_FAILURE() << "not an open " << kind << ": " << handle;
    return {};
  }
  return found->second;
}

void Machine::Close(const void* handle, std::string_view kind) {
  Use(handle, kind);
  open_.erase(handle);
}
