/// This program, started a second time as a process that may crash or hang without harm.
#pragma once

#include <cstdio>
#include <string>

/// The result of a child process.
struct ChildResult {
  std::string output;   ///< All that it wrote to the stream of `OpenStreamToParent`.
  std::string failure;  ///< "signal 11 (Segmentation fault)", "exception 0xC0000005" or "exit
                        ///< status 1"; empty for exit status 0.
};

/// The parent's side: runs the command `ask-provider` and waits for its end. `file` is an absolute
/// path, `seconds` a number. Throws `std::runtime_error`.
ChildResult RunAskProvider(const std::string& file, const std::string& seconds);

/// The child's side: opens the stream to the parent, unbuffered, on the descriptor given as the
/// command's last argument. What the process writes to its standard output from then on goes to its
/// standard error. Throws `std::system_error`.
std::FILE* OpenStreamToParent(int descriptor);

/// Ends the process with exit status 0, even if other threads run or hold locks.
[[noreturn]] void EndAtOnce();
