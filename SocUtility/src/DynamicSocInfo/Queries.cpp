#include "DynamicSocInfo/Queries.h"

#include <utility>

#include "DynamicSocInfo/Answers.h"
#include "DynamicSocInfo/ProviderAttempt.h"
#include "DynamicSocInfo/ScalarAnswers.h"
#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipIdentification.h"
#include "ZynSystemInfo.h"

namespace {

enum class Query { SCALAR, SERIALIZED };

/// What one query function answers from.
struct QueryState {
  explicit QueryState(SocInfo chipRecord)
      : record(std::move(chipRecord)), attempt(record.isKnownChip) {}

  SocInfo record;
  ProviderAttempt attempt;
};

template <Query query>
SocInfo buildRecord() {
  // Its own static: an identification that was made is kept even when building the record fails.
  static const std::uint32_t chipId = IdentifyChip();
  return BuildChipRecord(chipId);
}

/// The state of a query function, built by its first call. A call that fails to build it throws,
/// and the next one builds it.
template <Query query>
QueryState& stateOf() {
  static QueryState state(buildRecord<query>());
  return state;
}

}  // namespace

std::uint32_t GetCapability(std::uint64_t component, std::uint64_t key, void* buffer,
                            std::uint64_t* size) {
  if (buffer == nullptr) {
    *size = sizeof(std::uint64_t);
    return NULL_BUFFER;
  }
  const std::uint64_t minimum = MinimumSize(component, key);
  if (*size < minimum) {
    *size = minimum;
    return INSUFFICIENT_SIZE;
  }
  if (ProviderAttempt::RunsOnThisThread()) {
    return FAILURE;
  }
  QueryState& state = stateOf<Query::SCALAR>();
  const bool attemptedNow = state.attempt.MakeOnce(state.record);
  if (state.attempt.RecordConfirmed()) {
    static const ScalarAnswers answers(state.record);
    if (settledAnswers.load(std::memory_order_relaxed) != &answers) {
      ProviderAttempt::Settle(answers);
    }
  } else if (!attemptedNow) {
    // Only the call that made the attempt answers from a record that nobody confirmed.
    return FAILURE;
  }
  return AnswerScalar(state.record, component, key, buffer, size);
}

std::uint32_t GetCapabilitySerialized(std::uint64_t component, std::uint64_t key, void* buffer,
                                      std::uint64_t* size) {
  if (buffer == nullptr) {
    return NULL_BUFFER;
  }
  if (ProviderAttempt::RunsOnThisThread()) {
    return FAILURE;
  }
  QueryState& state = stateOf<Query::SERIALIZED>();
  state.attempt.MakeOnce(state.record);
  return AnswerSerialized(state.record, component, key, buffer, size);
}
