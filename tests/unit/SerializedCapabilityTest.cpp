// The serialized lists: the exact bytes, and a reader that takes them from another library and so
// must refuse what is malformed before it touches a target.
#include "DynamicSocInfo/capabilities/SerializedCapability.h"

#include <gtest/gtest.h>

#include <optional>

#include "Bytes.h"

namespace {

constexpr std::uint8_t UNTOUCHED = 0xA5;

Bytes name(std::string_view text) { return padded({text.begin(), text.end()}, 32); }

/// The lists, one a DSP, must become exactly these bytes, need a buffer of that size, and read back
/// the same.
template <class List>
void expectBytes(const std::vector<List>& lists, const Bytes& bytes) {
  std::vector<List> copies(lists.size(), lists.front());  // not empty, to be emptied
  std::vector<const List*> pointers;
  std::vector<List*> targets;
  for (std::size_t i = 0; i < lists.size(); ++i) {
    pointers.push_back(&lists[i]);
    targets.push_back(&copies[i]);
  }
  Bytes buffer(bytes.size() + 8, UNTOUCHED);
  std::uint64_t size = bytes.size() - 1;
  EXPECT_FALSE(serialize<List>(buffer.data(), &size, pointers));
  EXPECT_EQ(size, bytes.size());
  EXPECT_EQ(buffer, Bytes(buffer.size(), UNTOUCHED));

  EXPECT_TRUE(serialize<List>(buffer.data(), &size, pointers));
  EXPECT_EQ(size, bytes.size());
  EXPECT_EQ(buffer, padded(bytes, buffer.size(), UNTOUCHED));

  EXPECT_FALSE(deserialize<List>(nullptr, bytes.size(), targets));
  EXPECT_EQ(copies.back(), lists.front()) << "a target was touched";
  const Bytes unaligned = Bytes{0} + bytes;
  EXPECT_TRUE(deserialize<List>(unaligned.data() + 1, bytes.size(), targets));
  EXPECT_EQ(copies, lists);
  EXPECT_TRUE(deserialize<List>(nullptr, 0, targets));
  EXPECT_EQ(copies, std::vector<List>(lists.size()));
}

TEST(SerializedList, HasExactlyTheseBytes) {
  const std::string longest(31, 'x');
  expectBytes<U32List>({{5, 6}}, halfWords({0, 5, 0, 6}));
  expectBytes<U32List>({{0xFFFFFFFF}, {}, {7, 8}}, halfWords({0, 0xFFFFFFFF, 2, 7, 2, 8}));
  expectBytes<U32ByPosition>({{{0, 9}}, {{0, 7}, {1, 3}}}, halfWords({0, 9, 1, 7, 1, 3}));
  expectBytes<NameList>({{"ab", longest}, {""}}, halfWords({0}) + name("ab") + halfWords({0}) +
                                                     name(longest) + halfWords({1}) + name(""));
  expectBytes<NamedValuesByPosition>({{{0, {"ab", 7}}}},
                                     Bytes{0, 0, 0, 0, 7, 0, 0, 0, 'a', 'b'} + Bytes(30));
  expectBytes<NamedValuesByPosition>(
      {{}, {{0, {longest, 1}}, {1, {"b", 2}}}},
      halfWords({1, 1}) + name(longest) + halfWords({1, 2}) + name("b"));
}

/// The list that a reader of the first DSP's entries makes of `bytes`, or nothing when it refuses
/// them, its target untouched.
template <class List>
std::optional<List> read(const Bytes& bytes, const List& former) {
  List target = former;
  List* const destination = &target;
  if (deserialize<List>(bytes.data(), bytes.size(), {&destination, 1})) {
    return target;
  }
  EXPECT_EQ(target, former) << "a target was touched";
  return std::nullopt;
}

/// `entry` gives an entry of a DSP. All entries must be whole and well-formed, of whichever DSP;
/// those of the first make `list`.
template <class List, class Entry>
void expectReader(const List& list, Entry entry) {
  const Bytes ended = {'a', 'b', 0, 'c'};
  const Bytes bytes = entry(0, ended) + entry(1, ended) + entry(0, ended);
  EXPECT_EQ(read(bytes, list), list);
  EXPECT_EQ(read(bytes, List{}), list);
  EXPECT_EQ(read(bytes + Bytes{0}, list), std::nullopt);
  EXPECT_EQ(read(Bytes(bytes.begin(), bytes.end() - 1), list), std::nullopt);
  const Bytes endless(32, 'e');
  if (entry(0, endless) != entry(0, ended)) {
    EXPECT_EQ(read(bytes + entry(1, endless), list), std::nullopt);
    EXPECT_EQ(read(entry(0, endless) + bytes, list), std::nullopt);
  }
}

TEST(SerializedReader, TakesWellFormedEntriesOfItsDspsAndNothingElse) {
  const auto number = [](std::uint32_t dsp, const Bytes&) { return halfWords({dsp, 7}); };
  expectReader<U32List>({7, 7}, number);
  expectReader<U32ByPosition>({{0, 7}, {1, 7}}, number);
  expectReader<NameList>({"ab", "ab"}, [](std::uint32_t dsp, const Bytes& text) {
    return halfWords({dsp}) + padded(text, 32, 'z');
  });
  expectReader<NamedValuesByPosition>({{0, {"ab", 7}}, {1, {"ab", 7}}},
                                      [](std::uint32_t dsp, const Bytes& text) {
                                        return halfWords({dsp, 7}) + padded(text, 32, 'z');
                                      });
}

}  // namespace
