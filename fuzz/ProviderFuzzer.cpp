// The whole import from a provider that takes its answers from the input, then every query that the
// record answers. The input: the provider's kind (1 byte), then what the provider does at each
// call.
#include <memory>
#include <utility>

#include "DynamicSocInfo/ListAnswers.h"
#include "DynamicSocInfo/ScalarAnswers.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "FuzzInput.h"
#include "ZynSystemInfo.h"

namespace {

constexpr std::uint64_t MOST_TO_HOLD = std::uint64_t{1} << 12;

/// The rest of the input, for the provider's functions.
FuzzInput* script = nullptr;

std::uint32_t reply(std::vector<std::uint8_t> bytes, void* buffer, std::uint64_t* size) {
  const std::uint64_t offered = *size;
  *size = bytes.size();
  if (offered < bytes.size()) {
    return INSUFFICIENT_SIZE;
  }
  std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(buffer));
  return SUCCESS;
}

/// Any status, any size, some bytes.
std::uint32_t misbehave(void* buffer, std::uint64_t* size) {
  const std::vector<std::uint8_t> bytes = script->TakeBytes(script->TakeNumber<std::uint8_t>());
  std::copy_n(bytes.begin(), std::min<std::uint64_t>(bytes.size(), *size),
              static_cast<std::uint8_t*>(buffer));
  *size = script->TakeNumber<std::uint64_t>();
  if (*size > MOST_TO_HOLD && *size <= LARGEST_ANSWER) {
    *size %= MOST_TO_HOLD;  // would be accepted, and slow
  }
  return script->TakeNumber<std::uint8_t>();
}

/// One call. A reply that does not fit is read again by the call that offers more.
std::uint32_t answer(std::uint64_t, std::uint64_t, void* buffer, std::uint64_t* size) {
  if (script->IsEmpty()) {
    return FAILURE;
  }
  FuzzInput ahead = *script;
  const auto action = ahead.TakeNumber<std::uint8_t>();
  std::vector<std::uint8_t> bytes;
  switch (action % 4) {
    case 0:  // a number, as wide as what was offered
      bytes = ahead.TakeBytes(*size <= 8 ? *size : 8);
      bytes.resize(*size <= 8 ? *size : 8);
      break;
    case 1:
      bytes = ahead.TakeBytes(ahead.TakeNumber<std::uint8_t>());
      break;
    case 2: {  // a counted vector
      const std::uint64_t count = action / 4;
      bytes.resize(8 + count * 8, action);
      std::memcpy(bytes.data(), &count, 8);
      break;
    }
    default:
      *script = ahead;
      return misbehave(buffer, size);
  }
  const std::uint32_t status = reply(std::move(bytes), buffer, size);
  if (status == SUCCESS) {
    *script = ahead;
  }
  return status;
}

void queryScalar(const ScalarAnswers& answers, ScalarForm form, std::uint64_t component,
                 std::uint64_t key) {
  std::uint64_t size = form.minimumSize;
  std::vector<std::uint8_t> buffer(size);
  std::uint32_t status = answers.Answer(form, component, key, buffer.data(), &size);
  if (status == INSUFFICIENT_SIZE) {
    require(size > buffer.size());
    buffer = std::vector<std::uint8_t>(size);
    status = answers.Answer(form, component, key, buffer.data(), &size);
    require(size == buffer.size() && buffer.back() == 0);
  }
  require(status == SUCCESS);
}

void queryList(const SocInfo& record, std::uint64_t component, std::uint64_t key) {
  std::uint64_t size = 0;
  const std::unique_ptr<std::uint8_t[]> nothing(new std::uint8_t[0]);
  std::uint32_t status = AnswerList(record, component, key, nothing.get(), &size);
  if (status == INSUFFICIENT_SIZE) {
    std::vector<std::uint8_t> buffer(size);
    status = AnswerList(record, component, key, buffer.data(), &size);
    require(size == buffer.size());
  }
  require(status == SUCCESS);
}

/// Makes the query that answers the key. A refusal does not depend on the record, and would take
/// most of the time for its diagnostic line.
void query(const SocInfo& record, const ScalarAnswers& answers, std::uint64_t component,
           std::uint64_t key) {
  const ScalarForm form = ScalarFormOf(component, key);
  switch (form.kind) {
    case ScalarForm::NO_COMPONENT:
    case ScalarForm::NO_KEY:
      return;
    case ScalarForm::LIST:
      return queryList(record, component, key);
    default:
      return queryScalar(answers, form, component, key);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const auto kind = input.TakeNumber<std::uint8_t>();
  script = &input;
  ProviderLoader provider;
  provider.getCapability = answer;
  if (kind % 2 != 0) {
    provider.getCapabilitySerialized = answer;
  }

  static const SocInfo unknown = BuildChipRecord(0);
  SocInfo record = unknown;
  ImportProviderCapabilities(provider, record);
  const ScalarAnswers answers(record);
  for (std::uint64_t component = DSP; component <= CPU; ++component) {
    for (std::uint64_t key = 1; key < SCALAR_KEYS; ++key) {
      query(record, answers, component, key);
    }
  }
  return 0;
}
