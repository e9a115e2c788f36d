/// This program started anew, as a process that may crash or hang without harm.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

/// The parent's side: a running child and the pipe that it writes lines to. Not for several
/// threads.
class ChildProcess {
 public:
  /// What waiting for a line came to.
  enum class Event { LINE, ENDED, TIMED_OUT, TOO_LONG };

  /// In bytes: more than what a provider's largest answer, of 64 MiB, becomes when each of its
  /// bytes is escaped as six characters.
  static constexpr std::size_t LONGEST_LINE = std::size_t{400} << 20;

  /// Starts this program with the given arguments, which must not contain double quotes nor end in
  /// a backslash. It shares this process's environment, directory, standard input and standard
  /// error. Throws `std::system_error`.
  explicit ChildProcess(const std::vector<std::string>& arguments);
  /// Kills the child if it has not ended.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Waits for the child's next whole line and stores it without its end. `ENDED` comes after the
  /// last line, also when others still hold the pipe; `TIMED_OUT` when there was no line in time,
  /// and `TOO_LONG` when more than `LONGEST_LINE` came without a line's end.
  Event Next(std::string& line, std::chrono::milliseconds limit);

  /// How the child ended, after `ENDED`: "signal 11 (Segmentation fault)", "exception 0xC0000005"
  /// or "exit status 1"; empty for exit status 0, and not when it cannot be told.
  const std::string& Failure() const { return failure_; }

 private:
  struct Handles;

  bool TakeLine(std::string& line);
  /// Whether the child has ended; `failure_` is then set.
  bool HasEnded();
  /// Moves what the pipe holds to `received_`, waiting a few milliseconds when it is empty. Whether
  /// there was anything.
  bool Receive();

  std::unique_ptr<Handles> handles_;
  std::string received_;
  std::size_t searched_ = 0;  ///< So many bytes of `received_` hold no line's end.
  std::string failure_;
};

/// The child's side: the pipe to the parent, to be flushed after each line. What the process writes
/// to its standard output from then on goes to its standard error. To be called once; the stream
/// stays open. Throws `std::system_error`.
std::FILE* OpenStreamToParent();
