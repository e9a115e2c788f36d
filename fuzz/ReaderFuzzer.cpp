// The four readers of serialized lists. The input: which list, the number of targets, the buffer.
#include <vector>

#include "DynamicSocInfo/capabilities/SerializedCapability.h"
#include "FuzzInput.h"

namespace {

constexpr std::size_t MAX_TARGETS = 3;

template <class List>
std::vector<List*> pointersTo(std::vector<List>& lists) {
  std::vector<List*> pointers(lists.size());
  std::ranges::transform(lists, pointers.begin(), [](List& list) { return &list; });
  return pointers;
}

/// What was read can be written, and reads back the same.
template <class List>
void requireRoundTrip(const std::vector<List>& lists) {
  std::vector<const List*> sources(lists.size());
  std::ranges::transform(lists, sources.begin(), [](const List& list) { return &list; });
  std::uint64_t size = 0;
  if (serialize<List>(nullptr, &size, sources)) {
    require(size == 0);
    return;
  }
  std::vector<std::uint8_t> bytes(size);
  require(serialize<List>(bytes.data(), &size, sources) && size == bytes.size());

  std::vector<List> copies(lists.size());
  require(deserialize<List>(bytes.data(), bytes.size(), pointersTo(copies)));
  require(copies == lists);
}

template <class List>
void read(const std::vector<std::uint8_t>& bytes, std::size_t targets, std::size_t entrySize,
          const List& former) {
  std::vector<List> lists(targets, former);
  if (!deserialize<List>(bytes.data(), bytes.size(), pointersTo(lists))) {
    require(lists == std::vector<List>(targets, former));
    return;
  }
  require(bytes.size() % entrySize == 0);
  std::vector<std::size_t> counts(targets);
  for (std::size_t at = 0; at < bytes.size(); at += entrySize) {
    std::uint32_t index = 0;
    std::memcpy(&index, bytes.data() + at, sizeof index);
    if (index < targets) {
      ++counts[index];
    }
  }
  for (std::size_t i = 0; i < targets; ++i) {
    require(lists[i].size() == counts[i]);
  }
  requireRoundTrip(lists);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const auto list = input.TakeNumber<std::uint8_t>();
  const std::size_t targets = input.TakeNumber<std::uint8_t>() % (MAX_TARGETS + 1);
  const std::vector<std::uint8_t> bytes = input.TakeRest();
  switch (list % 4) {
    case 0:
      read<U32List>(bytes, targets, 8, {7, 8});
      break;
    case 1:
      read<U32ByPosition>(bytes, targets, 8, {{0, 7}});
      break;
    case 2:
      read<NameList>(bytes, targets, 36, {"former"});
      break;
    default:
      read<NamedValuesByPosition>(bytes, targets, 40, {{0, {"former", 7}}});
  }
  return 0;
}
