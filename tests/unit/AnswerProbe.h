/// Asks the query answers of a record and keeps all that can be seen of them.
#pragma once

#include <fcntl.h>
#include <unistd.h>
#ifdef _WIN32
#include <io.h>
#else
#include <sys/socket.h>
#endif

#include <array>
#include <string>
#include <vector>

#include "AllocationFault.h"
#include "Bytes.h"
#include "DynamicSocInfo/ListAnswers.h"
#include "DynamicSocInfo/ScalarAnswers.h"
#include "ZynSystemInfo.h"

struct Answer {
  std::uint32_t status = 0;
  std::uint64_t size;                    ///< As the query left it.
  Bytes buffer;                          ///< The whole of it, see `bufferWith`.
  std::vector<std::string> writes = {};  ///< To standard error, see `openChannel`.
  std::size_t allocations = 0;           ///< Blocks taken from the heap.
};

/// The scalar query of a record, after the argument checks.
inline std::uint32_t AnswerScalar(const SocInfo& record, std::uint64_t component, std::uint64_t key,
                                  void* buffer, std::uint64_t* size) {
  return ScalarAnswers(record).Answer(ScalarFormOf(component, key), component, key, buffer, size);
}

using Query = std::uint32_t (*)(const SocInfo&, std::uint64_t, std::uint64_t, void*,
                                std::uint64_t*);

/// The buffer behind every query is larger than any answer here.
inline constexpr std::size_t BUFFER_SIZE = 128;

/// The buffer of an answer that wrote `bytes` and nothing more.
inline Bytes bufferWith(const Bytes& bytes) { return padded(bytes, BUFFER_SIZE, 0xA5); }

/// What is written to the second end is read from the first: on Linux each write separately, on
/// Windows all of them together.
inline void openChannel(std::array<int, 2>& ends) {
#ifdef _WIN32
  _pipe(ends.data(), 4096, _O_BINARY);
#else
  socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data());
#endif
}

/// `query` is `AnswerScalar` or `AnswerList`; `size` is the buffer size passed to it.
inline Answer ask(Query query, const SocInfo& record, std::uint64_t component, std::uint64_t key,
                  std::uint64_t size = BUFFER_SIZE) {
  Answer answer{.size = size, .buffer = bufferWith({})};
  std::array<int, 2> ends{};
  openChannel(ends);
  const int standardError = dup(STDERR_FILENO);
  dup2(ends[1], STDERR_FILENO);
  close(ends[1]);
  const std::size_t before = AllocationFault::Count();
  answer.status = query(record, component, key, answer.buffer.data(), &answer.size);
  answer.allocations = AllocationFault::Count() - before;
  dup2(standardError, STDERR_FILENO);
  close(standardError);

  std::array<char, 512> bytes;
  for (;;) {
    const auto length = read(ends[0], bytes.data(), bytes.size());
    if (length <= 0) {
      break;
    }
    answer.writes.emplace_back(bytes.data(), static_cast<std::size_t>(length));
  }
  close(ends[0]);
  return answer;
}

/// The record of an unknown chip with the given first entries.
inline SocInfo recordOf(const DspInfo& dsp, const GpuInfo& gpu = GpuInfo(0), CpuInfo cpu = {}) {
  return {0, {0}, {}, {dsp}, cpu, {gpu}, 0x1000000000, std::string("UNKNOWN_PLX")};
}
