#include "WatchedImport.h"

#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "GuardedBuffer.h"
#include "ZynSystemInfo.h"

namespace {

// The provider is called through a plain function, so what that needs is global.
WatchedImport* running = nullptr;

/// What a counted vector's first word says, for a key that failed by it.
std::string countText(std::uint64_t count) {
  constexpr std::uint64_t WORD = sizeof count;
  constexpr std::uint64_t MOST = std::numeric_limits<std::uint64_t>::max() / WORD - 1;
  return ": N is " + std::to_string(count) + ", which needs " +
         (count > MOST ? "more bytes than there are"
                       : std::to_string(WORD + count * WORD) + " bytes");
}

/// Why a key has no answer.
Json messageOf(const AskedKey& asked, const KeyCalls& calls, std::string_view type) {
  if (asked.answered) {
    return nullptr;
  }
  if (calls.threw) {
    return "it threw a std::runtime_error, " + Quoted(asked.failure);
  }
  const bool hasCount =
      type == "list of u32" && calls.status == SUCCESS && calls.reported >= sizeof calls.firstWord;
  return asked.failure + (hasCount ? countText(calls.firstWord) : "");
}

}  // namespace

WatchedImport::WatchedImport(JobReport& report)
    : report_(report), isCheck_(report.Job().at("isCheck")) {}

Json WatchedImport::Run(ProviderLoader& provider, const std::string& library) {
  library_ = library;
  const int first = report_.Job().at("from");
  Json succeeds = nullptr;
  bool isOver = false;
  // An exception is the provider's: only its text may outlive the handler.
  const auto addException = [&](const Json& text) {
    if (!isRepeat_) {
      report_.AddFinding(Finding("exception", StepOfKey(), text));
    }
  };
  for (int from = first; !isOver; from = number_ + 1) {
    try {
      const bool allAnswered = ImportFrom(provider, from);
      succeeds = from == 0 ? Json(allAnswered) : Json(nullptr);
      isOver = true;
    } catch (const std::exception& error) {
      addException(Quoted(error.what()));
    } catch (...) {
      addException(nullptr);
    }
  }
  return succeeds;
}

void WatchedImport::Repeat(ProviderLoader& provider) {
  isRepeat_ = true;
  Run(provider, library_);
}

bool WatchedImport::ImportFrom(ProviderLoader& provider, int from) {
  from_ = from;
  number_ = -1;
  calls_ = {};
  running = this;
  query_ = std::exchange(provider.getCapability, &QueryRunning);
  const auto restore = [this](ProviderLoader* asked) { asked->getCapability = query_; };
  const std::unique_ptr<ProviderLoader, decltype(restore)> restoring(&provider, restore);
  SocInfo record = BuildChipRecord(NO_CHIP_ID);
  return ImportProviderCapabilities(provider, record, [&](const AskedKey& asked) {
    if (number_ >= from_) {
      AddOutcome(asked, CapabilityOf(record, {asked.component, asked.key}));
    }
  });
}

void WatchedImport::AddOutcome(const AskedKey& asked, const Capability& capability) {
  const Json row = {{"component", ComponentName(asked.component)},
                    {"key", asked.key},
                    {"required", asked.required},
                    {"type", capability.type},
                    {"answered", asked.answered},
                    {"value", asked.answered ? capability.value : Json(nullptr)},
                    {"message", messageOf(asked, calls_, capability.type)},
                    {"calls", calls_.count},
                    {"status", calls_.threw ? Json(nullptr) : Json(calls_.status)},
                    {"offered", calls_.offered},
                    {"reported", calls_.reported}};
  if (isRepeat_) {
    CompareOutcome(row);
  } else {
    report_.Write({{"key", row}});
    rows_[CapabilityName(capability.id)] = row;
  }
}

void WatchedImport::CompareOutcome(const Json& row) {
  const auto textOf = [](const Json& outcome) {
    return outcome.at("answered") == true ? ValueText(outcome) : "no answer";
  };
  const std::string before = textOf(rows_.value(CapabilityName(calls_.id), row));
  if (const std::string now = textOf(row); now != before) {
    report_.AddFinding(Finding("differs", StepOfKey(), "first " + before + ", then " + now));
  }
}

Step WatchedImport::StepOfKey() const {
  const std::string name = CapabilityName(calls_.id);
  // What a second import does not survive is not tried a third time.
  return isRepeat_ ? Step{library_, name + " of the second import"} : Step{library_, name, number_};
}

std::uint32_t WatchedImport::QueryRunning(std::uint64_t component, std::uint64_t key, void* buffer,
                                          std::uint64_t* size) {
  return running->Query({static_cast<std::uint32_t>(component), static_cast<std::uint32_t>(key)},
                        buffer, size);
}

std::uint32_t WatchedImport::Query(const CapabilityId& id, void* buffer, std::uint64_t* size) {
  if (id != calls_.id) {
    calls_ = {.id = id};
    ++number_;
    if (number_ >= from_) {
      report_.Begin(StepOfKey());
    }
  }
  if (number_ < from_) {
    return FAILURE;
  }
  ++calls_.count;
  calls_.offered = *size;
  calls_.reported = *size;
  try {
    calls_.status =
        isCheck_ ? QueryGuarded(id, buffer, size) : query_(id.component, id.key, buffer, size);
  } catch (const std::runtime_error&) {
    calls_.threw = true;
    throw;
  }
  calls_.reported = *size;
  if (calls_.offered >= sizeof calls_.firstWord) {
    std::memcpy(&calls_.firstWord, buffer, sizeof calls_.firstWord);
  }
  return calls_.status;
}

std::uint32_t WatchedImport::QueryGuarded(const CapabilityId& id, void* buffer,
                                          std::uint64_t* size) {
  const std::size_t offered = *size;
  const GuardedBuffer guarded(offered);
  const std::uint32_t status = query_(id.component, id.key, guarded.Bytes().data(), size);
  if (offered != 0) {
    std::memcpy(buffer, guarded.Bytes().data(), offered);
  }
  const auto addIf = [&](std::size_t written, const char* where) {
    if (written != 0 && !isRepeat_) {
      report_.AddFinding(Finding("overrun", StepOfKey(),
                                 std::to_string(offered) + " bytes offered, " +
                                     std::to_string(written) + " written " + where + " them"));
    }
  };
  addIf(guarded.BytesWrittenBefore(), "before");
  addIf(guarded.BytesWrittenAfter(), "after");
  return status;
}
