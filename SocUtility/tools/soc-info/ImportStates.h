/// What follows for a program from how an import ends.
#pragma once

#include <string_view>

struct ImportState {
  std::string_view state;              ///< As in `ImportReport`.
  std::string_view answersText = {};   ///< Where the answers come from, for people.
  std::string_view providerText = {};  ///< What became of the provider, for people.
  const char* answersFrom = nullptr;   ///< Null when no query answers.
  /// The core foresees the library's answers: these fail, after the first call, or answer.
  bool isForeseen = false;
  bool scalarsFail = false;
  bool listsFail = false;
  bool checkShowsMore = false;  ///< Whether `check-provider` does.
};

const ImportState& StateOf(std::string_view state);
