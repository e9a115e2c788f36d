// The serialized lists: the exact bytes, and a reader that takes them from another library and so
// must refuse what is malformed before it touches a target.
#include "DynamicSocInfo/capabilities/SerializedCapability.h"

#include <gtest/gtest.h>

#include "Bytes.h"

namespace {

constexpr std::uint8_t UNTOUCHED = 0xA5;

Bytes name(std::string_view text) { return padded({text.begin(), text.end()}, 32); }

/// The lists, one a DSP, must become exactly these bytes and read back the same. Bytes that end
/// within an entry are refused.
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
  EXPECT_FALSE(deserialize<List>(buffer.data(), bytes.size() - 1, targets));
  EXPECT_FALSE(deserialize<List>(buffer.data(), bytes.size() + 1, targets));
  EXPECT_EQ(copies.back(), lists.front()) << "a target was touched";
  const Bytes unaligned = Bytes{0} + bytes;
  EXPECT_TRUE(deserialize<List>(unaligned.data() + 1, bytes.size(), targets));
  EXPECT_EQ(copies, lists);
  // Entries of other DSPs are passed over, and no bytes are empty lists.
  EXPECT_TRUE(deserialize<List>(bytes.data(), bytes.size(), {targets.data(), 1}));
  EXPECT_EQ(copies.front(), lists.front());
  EXPECT_TRUE(deserialize<List>(nullptr, 0, targets));
  EXPECT_EQ(copies, std::vector<List>(lists.size()));
}

TEST(SerializedList, HasExactlyTheseBytes) {
  const std::string longest(31, 'x');
  expectBytes<U32List>({{0xFFFFFFFF}, {}, {7, 8}}, halfWords({0, 0xFFFFFFFF, 2, 7, 2, 8}));
  expectBytes<U32ByPosition>({{{0, 9}}, {{0, 7}, {1, 3}}}, halfWords({0, 9, 1, 7, 1, 3}));
  expectBytes<NameList>({{"ab", longest}, {""}}, halfWords({0}) + name("ab") + halfWords({0}) +
                                                     name(longest) + halfWords({1}) + name(""));
  expectBytes<NamedValuesByPosition>({{{0, {"ab", 7}}}, {{0, {longest, 1}}, {1, {"b", 2}}}},
                                     halfWords({0, 7}) + name("ab") + halfWords({1, 1}) +
                                         name(longest) + halfWords({1, 2}) + name("b"));
}

/// `entry` gives an entry with a name. What follows the name's NUL is ignored; without one nothing
/// is read, whichever DSP and position the entry has.
template <class List, class Entry>
void expectNamesEnd(const List& list, Entry entry) {
  const Bytes ended = padded({'a', 'b', 0, 'c'}, 32, 'z');
  const Bytes endless(32, 'e');
  List target;
  List* const pointer = &target;
  const auto read = [&](const Bytes& bytes) {
    return deserialize<List>(bytes.data(), bytes.size(), {&pointer, 1});
  };
  EXPECT_TRUE(read(entry(0, ended)));
  EXPECT_FALSE(read(entry(0, ended) + entry(1, endless)));
  EXPECT_FALSE(read(entry(0, endless) + entry(0, ended)));
  EXPECT_EQ(target, list);
}

TEST(SerializedList, NamesEndWithinTheirField) {
  expectNamesEnd<NameList>(
      {"ab"}, [](std::uint32_t dsp, const Bytes& text) { return halfWords({dsp}) + text; });
  expectNamesEnd<NamedValuesByPosition>({{0, {"ab", 7}}}, [](std::uint32_t dsp, const Bytes& text) {
    return halfWords({dsp, 7}) + text;
  });
}

}  // namespace
