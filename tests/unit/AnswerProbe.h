/// Asks the query answers of a record and keeps all that can be seen of them.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

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
  std::vector<std::string> writes = {};  ///< To standard error, one element a write.
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

/// `query` is `AnswerScalar` or `AnswerList`; `size` is the buffer size passed to it.
inline Answer ask(Query query, const SocInfo& record, std::uint64_t component, std::uint64_t key,
                  std::uint64_t size = BUFFER_SIZE) {
  Answer answer{.size = size, .buffer = bufferWith({})};
  // A socket replaces standard error and keeps the writes separate.
  std::array<int, 2> ends{};
  socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data());
  const int standardError = dup(STDERR_FILENO);
  dup2(ends[1], STDERR_FILENO);
  const std::size_t before = AllocationFault::Count();
  answer.status = query(record, component, key, answer.buffer.data(), &answer.size);
  answer.allocations = AllocationFault::Count() - before;
  dup2(standardError, STDERR_FILENO);

  std::array<char, 512> packet;
  ssize_t length = 0;
  while ((length = recv(ends[0], packet.data(), packet.size(), MSG_DONTWAIT)) > 0) {
    answer.writes.emplace_back(packet.data(), static_cast<std::size_t>(length));
  }
  for (const int file : {standardError, ends[0], ends[1]}) {
    close(file);
  }
  return answer;
}

/// The record of an unknown chip with the given first entries.
inline SocInfo recordOf(const DspInfo& dsp, const GpuInfo& gpu = GpuInfo(0), CpuInfo cpu = {}) {
  return {0, {0}, {}, {dsp}, cpu, {gpu}, 0x1000000000, std::string("UNKNOWN_PLX")};
}
