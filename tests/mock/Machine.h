/// The machine of a test: what the scenario installs, and a record of every call.
///
/// `MockWindowsApi.cpp` answers the functions of `WindowsApi.h` from the machine that is alive. It
/// is strict: the test fails if handles, blocks and module references are not closed as often as
/// opened, if a module is used after its release, and if an ordered fault does not occur.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "DynamicSocInfo/provider/DriverLocation.h"

struct Machine {
  using Symbols = std::map<std::string, std::uintptr_t>;  ///< Addresses, which are only compared.
  using Table = std::vector<BYTE>;

  /// A library; its address is its handle.
  struct Module {
    std::string name;
    Symbols symbols = {};
    bool isResident = true;  ///< The process has it, whatever the library does.
    int references = 0;      ///< Those that the library holds.

    bool IsLoaded() const { return isResident || references > 0; }
  };
  using Key = std::map<std::string, std::string>;  ///< The bytes of values, by name.

  Machine() { current = this; }
  ~Machine() {
    EXPECT_EQ(openHandles, 0) << "not every handle or block was closed once";
    EXPECT_GE(countedCalls, failingCall) << "the fault never came about";
    for (const Module& module : modules) {
      EXPECT_EQ(module.references, 0) << "not released as often as loaded: " << module.name;
    }
    current = nullptr;
  }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // What a scenario sets.
  std::list<Module> modules;                  ///< Loaded or not, in the platform's order.
  Module program{"program"};                  ///< That of the null handle.
  Module* ownModule = nullptr;                ///< The one that contains any address.
  std::map<WideString, WideString> services;  ///< Binary paths by name.
  std::map<std::string, Key> registry;        ///< By path under the local machine's key.
  WideString windir;
  std::map<DWORD, Table> firmware;
  DWORD lastError = ERROR_SUCCESS;
  int failingCall = 0;  ///< Which call fails, from 1; the closing of handles does not count.
  /// Runs before a call is answered, to change the machine while the library uses it.
  std::function<void(const std::string& call)> before = [](const std::string&) {};

  // What the platform keeps.
  static inline Machine* current = nullptr;
  int countedCalls = 0;
  int openHandles = 0;  ///< Handles and blocks that the library has to close.

  /// What a test reads: the functions' names and those arguments that nothing is looked up by,
  /// numbers in hexadecimal.
  std::vector<std::string> calls;
  /// The rest of each call that begins with the words `start`.
  std::vector<std::string> CallsOf(const std::string& start) const {
    std::vector<std::string> rests;
    for (const std::string& call : calls) {
      if ((call + ' ').starts_with(start + ' ')) {
        rests.push_back(call.substr(std::min(call.size(), start.size() + 1)));
      }
    }
    return rests;
  }
};

/// Runs `body` in a forked copy of this process, which keeps what a process remembers (the chip,
/// the driver's directory) out of other tests. What fails there fails the test here.
template <class Body>
void inOwnProcess(Body body) {
  const auto run = [&] {
    body();
    std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}
