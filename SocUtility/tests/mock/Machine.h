/// The machine of a test: what a scenario puts there, and a record of every call made of it.
///
/// `MockWindowsApi.cpp` answers the functions of `WindowsApi.h` from the machine that is alive. It
/// is strict: a handle, block or module reference closed twice, used after its closing or left open
/// at the end fails the test, and so does a fault that was ordered and never came about.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "provider/DriverLocation.h"

class Machine {
 public:
  using Symbols = std::map<std::string, std::uintptr_t>;  ///< Addresses, which are only compared.

  struct Module {
    std::string name;
    Symbols symbols;
    bool isResident;  ///< The process has it, whatever the library does.
    HMODULE handle;
    int references = 0;  ///< Those that the library holds.
  };
  struct Service {
    std::optional<WideString> binaryPath;
    DWORD sizeReported = 0;  ///< In place of the configuration's real size, unless 0.
  };
  struct Value {
    DWORD type;  ///< The `RRF_RT_` flag that admits it.
    std::string bytes;
  };
  struct Table {
    std::vector<BYTE> bytes;
    DWORD sizeReported = 0;  ///< When only the size is asked, unless 0.
  };

  Machine();
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // What a scenario sets.
  std::map<std::string, Symbols> libraries;  ///< What can be loaded, by the name asked for.
  Symbols programSymbols;                    ///< Those of the null module.
  HMODULE ownModule = nullptr;               ///< The one that contains any address.
  std::map<WideString, Service> services;
  std::map<std::string, std::map<std::string, Value>> registry;  ///< Values by key path and name.
  std::optional<WideString> windir;
  std::map<DWORD, Table> firmware;
  DWORD lastError = ERROR_SUCCESS;
  std::pair<std::string, int> failing;  ///< A function, and which of its calls fails, from 1.
  int failingCall = 0;  ///< Which call of all fails, from 1; those that release do not count.
  /// Runs before the n-th call of a function, to change the machine under the library's feet.
  std::function<void(std::string_view function, int nth)> before;
  HMODULE AddModule(const std::string& name, const Symbols& symbols, bool isResident = true);

  // What a test reads.
  std::vector<std::string> calls;  ///< Function name and arguments, numbers in hexadecimal.
  std::vector<Module> modules;     ///< In the platform's order.
  /// The arguments of the calls of one function.
  std::vector<std::string> CallsOf(const std::string& function) const;
  bool FaultHappened() const { return faultHappened_; }

  // What the functions of the platform do with it.
  static Machine& Current();
  /// Records a call; whether it is to fail.
  bool Note(const std::string& function, const std::string& arguments);
  Module* Find(HMODULE handle);
  /// Notes a handle as open: the given one, or a new one.
  void* Open(const std::string& description, void* handle = nullptr);
  /// The description of an open handle, which must begin with `kind`.
  std::string Use(const void* handle, std::string_view kind);
  void Close(const void* handle, std::string_view kind);

 private:
  std::map<const void*, std::string> open_;
  std::map<std::string, int> counts_;
  int failableCalls_ = 0;
  bool faultHappened_ = false;
};
