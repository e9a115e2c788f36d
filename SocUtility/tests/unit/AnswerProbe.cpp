#include "AnswerProbe.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <system_error>

#include "AllocationWatch.h"

namespace {

/// Standard error redirected to a socket that keeps each write apart.
class StandardErrorCapture {
 public:
  StandardErrorCapture() {
    if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends_.data()) != 0) {
      throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    dup2(ends_[1], STDERR_FILENO);
  }
  ~StandardErrorCapture() {
    dup2(saved_, STDERR_FILENO);
    for (const int file : {saved_, ends_[0], ends_[1]}) {
      close(file);
    }
  }
  StandardErrorCapture(const StandardErrorCapture&) = delete;
  StandardErrorCapture& operator=(const StandardErrorCapture&) = delete;

  std::vector<std::string> Writes() const {
    std::vector<std::string> writes;
    std::array<char, 512> packet;
    ssize_t size = 0;
    while ((size = recv(ends_[0], packet.data(), packet.size(), MSG_DONTWAIT)) > 0) {
      writes.emplace_back(packet.data(), static_cast<std::size_t>(size));
    }
    return writes;
  }

 private:
  int saved_ = dup(STDERR_FILENO);
  std::array<int, 2> ends_{};
};

}  // namespace

Answer ask(Query query, const SocInfo& record, std::uint64_t component, std::uint64_t key,
           std::uint64_t size) {
  Answer answer{.size = size, .buffer = bufferWith({})};
  const StandardErrorCapture capture;
  const std::size_t before = allocationCount;
  answer.status = query(record, component, key, answer.buffer.data(), &answer.size);
  answer.allocations = allocationCount - before;
  answer.writes = capture.Writes();
  return answer;
}
