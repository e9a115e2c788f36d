#include "ScalarAnswers.h"

#include <type_traits>

#include "ScalarEncoding.h"
#include "capabilities/KeyTable.h"

ScalarAnswers::ScalarAnswers(const SocInfo& record) {
  Encode(record.dsps.front());
  Encode(record.gpus.front());
  Encode(record.cpu);
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
          if constexpr (std::is_arithmetic_v<T>) {
            constexpr bool IS_FLOAT = std::is_same_v<T, float>;
            Answer& answer = answers[key];
            answer.bits = answerBits(entry.*field);
            (IS_FLOAT ? answer.tooSmallForFloat : answer.tooSmallForWide) = ANSWER_WIDTH<T> - 1;
          }
        },
        [] {});
  }
}
