// The serialized lists: the exact bytes, and a reader that takes them from another library and so
// must refuse what is malformed before it touches a target.
#include "capabilities/SerializedCapability.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "Bytes.h"

namespace {

constexpr std::uint8_t UNTOUCHED = 0xA5;

Bytes name(std::string_view text) { return padded({text.begin(), text.end()}, 32); }

/// The lists, one a DSP, must be exactly these bytes, need all their room, and read back the same.
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
  expectBytes<U32Positions>({{{0, 9}}, {{0, 7}, {1, 3}}}, halfWords({0, 9, 1, 7, 1, 3}));
  expectBytes<NameList>({{"ab", longest}, {""}}, halfWords({0}) + name("ab") + halfWords({0}) +
                                                     name(longest) + halfWords({1}) + name(""));
  expectBytes<NamedValues>({{{0, {"ab", 7}}}}, Bytes{0, 0, 0, 0, 7, 0, 0, 0, 'a', 'b'} + Bytes(30));
  expectBytes<NamedValues>({{}, {{0, {longest, 1}}, {1, {"b", 2}}}},
                           halfWords({1, 1}) + name(longest) + halfWords({1, 2}) + name("b"));
}

/// Reads random entries of two DSPs into a target of the first: they must be taken as a writer
/// would write them, or refused.
template <class List>
void readRandomEntries(std::size_t entrySize, const List& kept) {
  std::mt19937 random(20250107);  // NOLINT(cert-msc*): the same bytes in every run
  const auto below = [&](std::size_t end) { return random() % end; };
  for (int round = 0; round < 2000; ++round) {
    Bytes bytes(below(8) == 0 ? 1 + below(entrySize - 1) : 0);
    bool isValid = bytes.empty();
    Bytes taken;
    for (std::size_t count = below(5); count != 0; --count) {
      Bytes entry = halfWords({static_cast<std::uint32_t>(below(2))});
      for (std::size_t i = 4; i < entrySize; ++i) {
        entry.push_back(static_cast<std::uint8_t>(1 + below(255)));
      }
      Bytes written = entry;
      if (entrySize > 32) {  // it ends in a name
        const auto end = static_cast<std::ptrdiff_t>(below(33));
        std::fill(written.end() - 32 + end, written.end(), std::uint8_t{0});
        if (end < 32) {
          *(entry.end() - 32 + end) = 0;
        }
        isValid = isValid && end < 32;
      }
      bytes = entry + bytes;
      taken = entry[0] == 0 ? written + taken : taken;
    }
    List target = kept;
    List* const destination = &target;
    ASSERT_EQ(deserialize<List>(bytes.data(), bytes.size(), {&destination, 1}), isValid) << round;
    if (!isValid) {
      ASSERT_EQ(target, kept) << round;
      continue;
    }
    Bytes again(taken.size());
    std::uint64_t size = again.size();
    const List* const pointer = &target;
    ASSERT_TRUE(serialize<List>(again.data(), &size, {&pointer, 1})) << round;
    ASSERT_EQ(again, taken) << round;
  }
}

TEST(SerializedReader, TakesRandomEntriesAsAWriterWouldWriteThem) {
  readRandomEntries<U32List>(8, {1});
  readRandomEntries<U32Positions>(8, {{3, 1}});
  readRandomEntries<NameList>(36, {"kept"});
  readRandomEntries<NamedValues>(40, {{3, {"kept", 1}}});
}

}  // namespace
