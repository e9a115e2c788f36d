/// What follows for a program from how an import ends.
#pragma once

#include <string_view>

struct ImportState {
  std::string_view state;              ///< As in `ImportReport`.
  std::string_view answersText = {};   ///< Where the answers come from, for people.
  std::string_view providerText = {};  ///< How it went for the provider, for people.
  const char* answersFrom = nullptr;   ///< Null when no query answers.
  /// Whether soc-info knows what the library must answer. If so, the next two fields say whether
  /// all scalar queries after the first one must fail, and whether all list queries must.
  bool isForeseen = false;
  bool scalarsFail = false;
  bool listsFail = false;
  bool checkShowsMore = false;  ///< Whether `check-provider` does.
};

const ImportState& StateOf(std::string_view state);
