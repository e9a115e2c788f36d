/// The error for what the user gave: a file, a directory, a machine that does not let itself be
/// read.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "Output.h"

/// Ends the program with exit status 2 and its message on standard error.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;

  /// "`path`: `reason`", the path escaped.
  InputError(const std::filesystem::path& path, const std::string& reason)
      : std::runtime_error(Quoted(path.generic_string()) + ": " + reason) {}
};
