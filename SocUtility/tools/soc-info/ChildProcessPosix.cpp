#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

#include "ChildProcess.h"

namespace {

constexpr int WAIT_MILLISECONDS = 5;

void throwIf(bool failed, int error, const char* what) {
  if (failed) {
    throw std::system_error(error, std::generic_category(), what);
  }
}

std::string describe(int status) {
  if (WIFSIGNALED(status)) {
    const int signal = WTERMSIG(status);
    const char* const description = sigdescr_np(signal);  // null for a real-time signal
    return "signal " + std::to_string(signal) +
           (description == nullptr ? std::string() : std::string(" (") + description + ')');
  }
  const int code = WEXITSTATUS(status);
  return code == 0 ? std::string() : "exit status " + std::to_string(code);
}

}  // namespace

struct ChildProcess::Handles {
  pid_t process = 0;  ///< 0 once there is none, or none any more.
  int pipe = -1;
};

ChildProcess::ChildProcess(const std::vector<std::string>& arguments)
    : handles_(std::make_unique<Handles>()) {
  std::string name = "soc-info";
  std::vector<std::string> copies = arguments;
  std::vector<char*> argv = {name.data()};
  for (std::string& copy : copies) {
    argv.push_back(copy.data());
  }
  argv.push_back(nullptr);

  // A process can be started with this signal ignored, and then its children leave no status.
  throwIf(std::signal(SIGCHLD, SIG_DFL) == SIG_ERR, errno, "signal");
  std::array<int, 2> ends{};
  throwIf(pipe2(ends.data(), O_CLOEXEC) != 0, errno, "pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  int error = posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  if (error == 0) {
    error =
        posix_spawn(&handles_->process, "/proc/self/exe", &actions, nullptr, argv.data(), environ);
  }
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  if (error != 0) {
    close(ends[0]);
  }
  throwIf(error != 0, error, "starting a process");
  handles_->pipe = ends[0];
}

ChildProcess::~ChildProcess() {
  close(handles_->pipe);
  if (handles_->process != 0) {
    kill(handles_->process, SIGKILL);
    waitpid(handles_->process, nullptr, 0);
  }
}

bool ChildProcess::HasEnded() {
  int status = 0;
  if (handles_->process == 0) {
    return true;
  }
  const pid_t result = waitpid(handles_->process, &status, WNOHANG);
  if (result == 0) {
    return false;
  }
  failure_ = result < 0 ? std::string("no exit status: ") + std::strerror(errno) : describe(status);
  handles_->process = 0;
  return true;
}

bool ChildProcess::Receive() {
  pollfd pipe = {.fd = handles_->pipe, .events = POLLIN, .revents = 0};
  std::array<char, 4096> chunk;
  if (poll(&pipe, 1, WAIT_MILLISECONDS) > 0) {
    const ssize_t count = read(handles_->pipe, chunk.data(), chunk.size());
    if (count > 0) {
      received_.append(chunk.data(), static_cast<std::size_t>(count));
      return true;
    }
    poll(nullptr, 0, WAIT_MILLISECONDS);  // the pipe is closed and would never make us wait
  }
  return false;
}

std::FILE* OpenStreamToParent() {
  const int pipe = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  throwIf(pipe < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0, errno, "standard output");
  std::FILE* const stream = fdopen(pipe, "w");
  throwIf(stream == nullptr, errno, "standard output");
  return stream;
}
