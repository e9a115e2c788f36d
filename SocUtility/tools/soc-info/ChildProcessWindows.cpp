#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "ChildProcess.h"
#include "Output.h"
#include "platform/WindowsApi.h"

namespace {

constexpr DWORD WAIT_MILLISECONDS = 5;

void throwLastErrorIf(bool failed, const char* what) {
  if (failed) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
  }
}

struct HandleClose {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, HandleClose>;

/// The path of this program.
std::wstring ownPath() {
  std::wstring path(MAX_PATH, L'\0');
  while (true) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    throwLastErrorIf(length == 0, "finding this program");
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(2 * path.size());
  }
}

std::wstring commandLine(const std::vector<std::string>& arguments) {
  std::wstring line = L"soc-info";
  for (const std::string& argument : arguments) {
    line += L" \"" + std::filesystem::path(argument).wstring() + L'"';
  }
  return line;
}

std::string describe(DWORD code) {
  constexpr DWORD FIRST_EXCEPTION = 0xC0000000;
  if (code >= FIRST_EXCEPTION) {
    return "exception " + Hex(code, 8);
  }
  return code == 0 ? std::string() : "exit status " + std::to_string(code);
}

}  // namespace

struct ChildProcess::Handles {
  OwnedHandle process;
  OwnedHandle pipe;
  bool ended = false;
};

ChildProcess::ChildProcess(const std::vector<std::string>& arguments)
    : handles_(std::make_unique<Handles>()) {
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;
  throwLastErrorIf(CreatePipe(&readEnd, &writeEnd, nullptr, 0) == FALSE, "pipe");
  handles_->pipe.reset(readEnd);
  const OwnedHandle output(writeEnd);
  throwLastErrorIf(
      SetHandleInformation(writeEnd, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) == FALSE, "pipe");

  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = writeEnd;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION started{};
  std::wstring line = commandLine(arguments);
  throwLastErrorIf(CreateProcessW(ownPath().c_str(), line.data(), nullptr, nullptr, TRUE, 0,
                                  nullptr, nullptr, &startup, &started) == FALSE,
                   "starting a process");
  CloseHandle(started.hThread);
  handles_->process.reset(started.hProcess);
}

ChildProcess::~ChildProcess() {
  if (!handles_->ended) {
    TerminateProcess(handles_->process.get(), 1);
  }
}

bool ChildProcess::HasEnded() {
  if (!handles_->ended && WaitForSingleObject(handles_->process.get(), 0) == WAIT_OBJECT_0) {
    DWORD code = 0;
    GetExitCodeProcess(handles_->process.get(), &code);
    handles_->ended = true;
    failure_ = describe(code);
  }
  return handles_->ended;
}

// A pipe of this kind cannot be waited for, so it is looked into at short intervals.
bool ChildProcess::Receive() {
  std::array<char, 4096> chunk;
  DWORD available = 0;
  if (PeekNamedPipe(handles_->pipe.get(), nullptr, 0, nullptr, &available, nullptr) == FALSE ||
      available == 0) {
    WaitForSingleObject(handles_->process.get(), WAIT_MILLISECONDS);
    return false;
  }
  DWORD count = 0;
  ReadFile(handles_->pipe.get(), chunk.data(),
           std::min(available, static_cast<DWORD>(chunk.size())), &count, nullptr);
  received_.append(chunk.data(), count);
  return count != 0;
}

std::FILE* OpenStreamToParent() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);  // a crash shall open no window
  constexpr int OUTPUT = 1;
  constexpr int ERRORS = 2;
  const int pipe = _dup(OUTPUT);
  std::FILE* const stream = pipe < 0 || _dup2(ERRORS, OUTPUT) != 0 ? nullptr : _fdopen(pipe, "wb");
  if (stream == nullptr) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
  return stream;
}
