#include "DynamicSocInfo/ScalarAnswers.h"

#include <algorithm>
#include <string>
#include <type_traits>

#include "DynamicSocInfo/Answers.h"
#include "DynamicSocInfo/ScalarEncoding.h"
#include "DynamicSocInfo/capabilities/KeyTable.h"

ScalarAnswers::ScalarAnswers(const SocInfo& record) {
  Encode(record.dsps.front());
  Encode(record.gpus.front());
  Encode(record.cpu);
}

void ScalarAnswers::Name::Encode(const std::string& name, std::uint64_t minimum) {
  const std::uint64_t length = name.size() + 1;
  if (length < WORD || length > 2 * WORD) {
    return;
  }
  std::memcpy(&first, name.c_str(), WORD);
  std::memcpy(&last, name.c_str() + length - WORD, WORD);
  size = length;
  tooSmall = std::max(size, minimum) - 1;
}

template <class Record>
void ScalarAnswers::Encode(const Record& entry) {
  constexpr std::size_t KEY_COUNT = KeyTable<Record>::FIELDS.size();
  constexpr std::uint64_t ROW = KeyTable<Record>::COMPONENT - FIRST_COMPONENT;
  static_assert(ROW < COMPONENTS && KEY_COUNT <= KEYS);
  auto& answers = answers_[ROW];
  for (std::size_t key = 0; key < KEY_COUNT; ++key) {
    visitField<Record>(
        key,
        [&]<class T>(T Record::*field) {
          Answer& answer = answers[key];
          if constexpr (std::is_arithmetic_v<T>) {
            constexpr bool IS_FLOAT = std::is_same_v<T, float>;
            answer.bits = answerBits(entry.*field);
            (IS_FLOAT ? answer.tooSmallForFloat : answer.tooSmallForWide) = ANSWER_WIDTH<T> - 1;
          } else if constexpr (std::is_same_v<T, std::string>) {
            name_.Encode(entry.*field, MinimumSize(KeyTable<Record>::COMPONENT, key));
          }
        },
        [] {});
  }
}
