#include <fcntl.h>
#include <io.h>
#include <process.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "ChildProcess.h"
#include "Output.h"
#include "platform/WindowsApi.h"

namespace {

constexpr int OUTPUT = 1;
constexpr int ERRORS = 2;

void throwIf(bool failed, const char* what) {
  if (failed) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

std::wstring quoted(const std::wstring& text) { return L'"' + text + L'"'; }

std::string describe(int status) {
  constexpr std::uint32_t FIRST_EXCEPTION = 0xC0000000;
  const auto code = static_cast<std::uint32_t>(status);
  if (code >= FIRST_EXCEPTION) {
    return "exception " + Hex(code, 8);
  }
  return code == 0 ? std::string() : "exit status " + std::to_string(code);
}

}  // namespace

ChildResult RunAskProvider(const std::string& file, const std::string& seconds) {
  std::wstring program(32768, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
  const std::wstring library = quoted(std::filesystem::path(file).wstring());
  const std::wstring limit(seconds.begin(), seconds.end());

  // The child takes the pipe for its standard output.
  std::array<int, 2> ends{};
  throwIf(_pipe(ends.data(), 4096, _O_BINARY | _O_NOINHERIT) != 0, "pipe");
  const int output = _dup(OUTPUT);
  throwIf(output < 0 || _dup2(ends[1], OUTPUT) != 0, "standard output");
  const std::intptr_t child = _wspawnl(_P_NOWAIT, program.c_str(), L"soc-info", L"ask-provider",
                                       library.c_str(), limit.c_str(), nullptr);
  throwIf(child == -1, "starting a process");
  throwIf(_dup2(output, OUTPUT) != 0, "standard output");
  _close(output);
  _close(ends[1]);

  ChildResult result;
  std::array<char, 4096> chunk;
  int count = 0;
  while ((count = _read(ends[0], chunk.data(), static_cast<unsigned>(chunk.size()))) > 0) {
    result.output.append(chunk.data(), static_cast<std::size_t>(count));
  }
  _close(ends[0]);
  int status = 0;
  throwIf(_cwait(&status, child, 0) == -1, "waiting for a process");
  result.failure = describe(status);
  return result;
}

std::FILE* OpenStreamToParent() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);  // a crash shall open no window
  const int pipe = _dup(OUTPUT);
  throwIf(pipe < 0 || _dup2(ERRORS, OUTPUT) != 0, "standard output");
  std::FILE* const stream = _fdopen(pipe, "wb");
  throwIf(stream == nullptr || std::setvbuf(stream, nullptr, _IONBF, 0) != 0, "standard output");
  return stream;
}

// Not an exit, which would wait for the loader's lock.
void EndAtOnce() {
  TerminateProcess(GetCurrentProcess(), 0);
  std::abort();
}
