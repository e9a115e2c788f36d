/// A provider made of plain functions, which answers as told and notes what it is asked.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "Bytes.h"
#include "ZynSystemInfo.h"
#include "provider/ProviderLoader.h"

using Key = std::pair<std::uint64_t, std::uint64_t>;  ///< Component, key.

/// A question as the provider saw it.
struct Asked {
  Key key;
  std::uint64_t offered;  ///< Bytes at the buffer.
  bool hasBuffer;
  bool isZero;  ///< Every byte offered is 0.

  bool operator==(const Asked&) const = default;
};

/// One member of each question.
template <class Member>
std::vector<Member> each(const std::vector<Asked>& asked, Member Asked::*member) {
  std::vector<Member> members;
  members.reserve(asked.size());
  for (const Asked& question : asked) {
    members.push_back(question.*member);
  }
  return members;
}

/// How a provider answers one key: fills `buffer`, sets `*size`, returns a status.
using Behaviour = std::function<std::uint32_t(void* buffer, std::uint64_t* size)>;

/// As a well-behaved provider does: status 4 and the size required, or `bytes`.
Behaviour answers(Bytes bytes);

struct Reply {
  Reply(std::uint32_t replyStatus, std::uint64_t reportedSize, Bytes written = {})
      : status(replyStatus), size(reportedSize), bytes(std::move(written)) {}

  std::uint32_t status;
  std::uint64_t size;
  Bytes bytes;  ///< Written as far as they fit.
};

/// One reply after the other, whatever is offered; the last one is repeated.
Behaviour replies(std::vector<Reply> script);

/// One lives at a time. A key without behaviour fails with `FAILURE`.
class FakeProvider {
 public:
  FakeProvider();
  /// Binds `Soc_GetCapabilitySerialized` too.
  void BindSerialized();
  /// The questions since the last call of this.
  std::vector<Asked> TakeAsked() { return std::exchange(asked_, {}); }

  ProviderLoader loader{ProviderSearchPlan{2}};
  std::map<Key, Behaviour> scalars;  ///< Of `Soc_GetCapability`.
  std::map<Key, Behaviour> lists;    ///< Of `Soc_GetCapabilitySerialized`.

 private:
  template <std::map<Key, Behaviour> FakeProvider::*behaviours>
  static std::uint32_t Answer(std::uint64_t component, std::uint64_t key, void* buffer,
                              std::uint64_t* size);

  std::vector<Asked> asked_;
};
