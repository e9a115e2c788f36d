#include "ImportStates.h"

#include <algorithm>

namespace {

constexpr std::string_view UNKNOWN_ROW = "unknown row";
constexpr ImportState STATES[] = {
    {.state = "notNeeded",
     .answersFrom = "catalogue",
     .isForeseen = true,
     .answersText = "catalogue row ",
     .providerText = "not needed"},
    {.state = "notAsked",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .answersText = UNKNOWN_ROW,
     .providerText = "not asked: the tables are another machine's"},
    {.state = "notFound",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .scalarsFail = true,
     .answersText = UNKNOWN_ROW,
     .providerText = "not found"},
    {.state = "notLoaded",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .scalarsFail = true,
     .answersText = UNKNOWN_ROW,
     .providerText = "found, but cannot be loaded"},
    {.state = "rejected",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .scalarsFail = true,
     .answersText = UNKNOWN_ROW,
     .providerText = "found but rejected: "},
    {.state = "incomplete",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .scalarsFail = true,
     .answersText = "unknown row, with what the provider did answer",
     .providerText = "the import is incomplete: required keys are missing: ",
     .checkShowsMore = true},
    {.state = "exception",
     .isForeseen = true,
     .scalarsFail = true,
     .listsFail = true,
     .answersText = "none: every query fails",
     .providerText = "the import ends with an exception",
     .checkShowsMore = true},
    {.state = "stopped",
     .answersText = "what the library answered before its process ended",
     .providerText = "ended its process",
     .checkShowsMore = true},
    {.state = "succeeded",
     .answersFrom = "provider",
     .isForeseen = true,
     .answersText = "provider, over the unknown row",
     .providerText = "the import succeeds"},
};

}  // namespace

const ImportState& StateOf(std::string_view state) {
  return *std::ranges::find(STATES, state, &ImportState::state);
}
