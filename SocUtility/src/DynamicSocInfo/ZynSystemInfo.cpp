// The exported functions: argument checks, first use, and the boundary that no exception crosses.
#include "ZynSystemInfo.h"

#include <atomic>
#include <utility>

#include "DynamicSocInfo/ListAnswers.h"
#include "DynamicSocInfo/ProviderAttempt.h"
#include "DynamicSocInfo/ScalarAnswers.h"
#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipIdentification.h"

namespace {

/// What one query function answers from.
struct QueryState {
  explicit QueryState(SocInfo chipRecord)
      : record(std::move(chipRecord)), attempt(record.isKnownChip) {}

  SocInfo record;
  ProviderAttempt attempt;
};

enum class QueryFunction { SCALAR, SERIALIZED };

/// The state of a query function, built by its first call. A call that fails to build it throws,
/// and the next one builds it.
template <QueryFunction>
QueryState& stateOf() {
  // A static of its own: the identifier is kept even when building the record fails.
  static const std::uint32_t chipId = IdentifyChip();
  static QueryState state(BuildChipRecord(chipId));
  return state;
}

/// The scalar answers, once the record is confirmed.
constinit std::atomic<const ScalarAnswers*> publishedAnswers{nullptr};

/// Answers a scalar query as long as no answers are published. The arguments have been checked.
std::uint32_t answerUnpublished(ScalarForm form, std::uint64_t component, std::uint64_t key,
                                void* buffer, std::uint64_t* size) {
  QueryState& state = stateOf<QueryFunction::SCALAR>();
  const bool attemptedNow = state.attempt.EnsureAttempted(state.record);
  if (state.attempt.RecordConfirmed()) {
    static const ScalarAnswers answers(state.record);
    publishedAnswers.store(&answers, std::memory_order_release);
    return answers.Answer(form, component, key, buffer, size);
  }
  if (attemptedNow) {
    return ScalarAnswers(state.record).Answer(form, component, key, buffer, size);
  }
  return FAILURE;  // only the call that made the attempt answers from an unconfirmed record
}

}  // namespace

std::uint32_t Soc_GetAPIVersion(std::uint8_t* major, std::uint8_t* minor) noexcept {
  *major = 0;
  *minor = 1;
  return SUCCESS;
}

std::uint32_t Soc_GetCapability(std::uint64_t component, std::uint64_t key, void* buffer,
                                std::uint64_t* size) noexcept try {
  if (buffer == nullptr) {
    *size = sizeof(std::uint64_t);
    return NULL_BUFFER;
  }
  const ScalarForm form = ScalarFormOf(component, key);
  if (*size < form.minimumSize) {
    *size = form.minimumSize;
    return INSUFFICIENT_SIZE;
  }
  const ScalarAnswers* const answers = publishedAnswers.load(std::memory_order_acquire);
  return answers != nullptr ? answers->Answer(form, component, key, buffer, size)
                            : answerUnpublished(form, component, key, buffer, size);
} catch (...) {
  return FAILURE;
}

std::uint32_t Soc_GetCapabilitySerialized(std::uint64_t component, std::uint64_t key, void* buffer,
                                          std::uint64_t* size) noexcept try {
  if (buffer == nullptr) {
    return NULL_BUFFER;
  }
  QueryState& state = stateOf<QueryFunction::SERIALIZED>();
  state.attempt.EnsureAttempted(state.record);
  return AnswerList(state.record, component, key, buffer, size);
} catch (...) {
  return FAILURE;
}
