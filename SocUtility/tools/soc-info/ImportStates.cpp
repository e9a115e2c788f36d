#include "ImportStates.h"

#include <algorithm>

namespace {

constexpr std::string_view UNKNOWN_ROW = "unknown row";
constexpr ImportState STATES[] = {
    {.state = "notNeeded",
     .answersText = "catalogue row ",
     .providerText = "not needed",
     .answersFrom = "catalogue",
     .isForeseen = true},
    {.state = "notAsked",
     .answersText = UNKNOWN_ROW,
     .providerText = "not asked: the tables are another machine's",
     .answersFrom = "unknownRow",
     .isForeseen = true},
    {.state = "notFound",
     .answersText = UNKNOWN_ROW,
     .providerText = "not found",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .scalarsFail = true},
    {.state = "notLoaded",
     .answersText = UNKNOWN_ROW,
     .providerText = "found, but cannot be loaded",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .scalarsFail = true},
    {.state = "rejected",
     .answersText = UNKNOWN_ROW,
     .providerText = "found but rejected: ",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .scalarsFail = true},
    {.state = "incomplete",
     .answersText = "unknown row, with what the provider did answer",
     .providerText = "the import is incomplete: required keys are missing: ",
     .answersFrom = "unknownRow",
     .isForeseen = true,
     .scalarsFail = true,
     .checkShowsMore = true},
    {.state = "exception",
     .answersText = "none: every query fails",
     .providerText = "the import ends with an exception",
     .isForeseen = true,
     .scalarsFail = true,
     .listsFail = true,
     .checkShowsMore = true},
    {.state = "stopped",
     .answersText = "what the library answered before its process ended",
     .providerText = "ended its process",
     .checkShowsMore = true},
    {.state = "succeeded",
     .answersText = "provider, over the unknown row",
     .providerText = "the import succeeds",
     .answersFrom = "provider",
     .isForeseen = true},
};

}  // namespace

const ImportState& StateOf(std::string_view state) {
  return *std::ranges::find(STATES, state, &ImportState::state);
}
