/// This program, started a second time as a process that may crash or hang without harm.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

struct CloseFile {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// How a child process ended, and what it wrote.
struct ChildResult {
  std::string report;  ///< All that it wrote to its report, whoever in it did.
  std::string how;     ///< "exit", "crash" or "hang".
  std::string detail;  ///< "exit status 1", "signal 11 (Segmentation fault)" or "exception
                       ///< 0xC0000005"; for "hang" the time limit.
};

/// The parent's side: runs the hidden command `child` with a job. Ends the child when it has added
/// nothing to its report for `seconds`. Throws `std::runtime_error`.
ChildResult RunChild(const std::string& job, double seconds);

/// The child's side: its job, and the stream to the parent.
class ChildStream {
 public:
  /// `descriptor` is the command's argument. What the process writes to its standard output from
  /// then on goes to its standard error. Throws `std::system_error`.
  explicit ChildStream(int descriptor);

  const std::string& Job() const { return job_; }
  /// Adds to the report at once. Throws `std::system_error`.
  void Write(const std::string& bytes);

 private:
  File stream_;
  std::string job_;
};

/// Opens the standard streams that the process was started without, so that no other file takes
/// their place. They accept no output.
void OpenMissingStandardStreams();
