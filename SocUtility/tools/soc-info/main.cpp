// soc-info: shows what the library answers on a machine, and why.
#include <CLI/CLI.hpp>
#include <cmath>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

#include "AskProvider.h"
#include "CheckProvider.h"
#include "Identify.h"
#include "Inspect.h"
#include "InstalledLibrary.h"
#include "MachineTables.h"
#include "Output.h"
#include "RunInfo.h"

namespace {

constexpr int FAILED = 1;
constexpr int BAD_INPUT = 2;

constexpr const char* EXIT_CODES = R"(
Exit status:
  0  done; for check-provider, the import would count
  1  the system failed (memory, the output), or the import would not count
  2  bad arguments, a missing or unusable file, no library, tables that
     cannot be read)";

/// The arguments of all commands; each reads its own.
struct Arguments {
  std::string tables;   ///< A directory of dumps; empty for this machine.
  std::string library;  ///< A file; empty for the installed one.
  std::string path;     ///< What `capture` makes, or what `check-provider` checks.
  double seconds = 10;
  int descriptor = -1;  ///< What `ask-provider` writes to.
  bool json = false;
};

void addTables(CLI::App& command, Arguments& arguments) {
  command
      .add_option("--tables", arguments.tables,
                  "Explain another machine: a directory with its raw tables FACP and PPTT")
      ->option_text("DIR");
}

void addJson(CLI::App& command, Arguments& arguments) {
  command.add_flag("--json", arguments.json, "Write one JSON document");
}

void write(const Json& document, const Arguments& arguments,
           void (*writeText)(std::ostream&, const Json&)) {
  (arguments.json ? WriteDocument : writeText)(std::cout, document);
}

void inspect(const Arguments& arguments) {
  if (arguments.tables.empty()) {
    InstalledLibrary library(arguments.library);
    write(Inspect(ReadThisMachine(), &library), arguments, WriteInspection);
  } else {
    write(Inspect(ReadDumps(arguments.tables, std::cerr)), arguments, WriteInspection);
  }
}

void identify(const Arguments& arguments) {
  write(arguments.tables.empty() ? Identify(ReadThisMachine(), RunInfo())
                                 : Identify(ReadDumps(arguments.tables, std::cerr)),
        arguments, WriteIdentification);
}

void capture(const Arguments& arguments) {
  const MachineTables tables = ReadThisMachine();
  const Json identification = Identify(tables);
  if (tables.fadt.empty()) {
    throw InputError("nothing to capture: " + Text(identification.at("reason")));
  }
  std::ostringstream document;
  WriteDocument(document, identification);
  WriteDumps(arguments.path, tables, document.str());
  std::cout << "captured in " << Quoted(arguments.path) << '\n';
}

void checkProvider(const Arguments& arguments) {
  if (!std::isfinite(arguments.seconds)) {
    throw InputError("--timeout takes a number");  // CLI11's range check lets "nan" pass
  }
  const Json check = CheckProvider(arguments.path, arguments.seconds);
  write(check, arguments, WriteCheck);
  if (check.at("importCounts") != true) {
    throw CLI::RuntimeError(FAILED);
  }
}

void addCommands(CLI::App& app, Arguments& arguments) {
  addTables(app, arguments);
  addJson(app, arguments);
  app.add_option("--library", arguments.library, "The library to ask, instead of the installed one")
      ->option_text("FILE")
      ->excludes("--tables");
  app.callback([&] {
    if (app.get_subcommands().empty()) {
      inspect(arguments);
    }
  });

  CLI::App* command = app.add_subcommand("identify", "Show the steps of the chip's identification");
  addTables(*command, arguments);
  addJson(*command, arguments);
  command->callback([&] { identify(arguments); });

  command = app.add_subcommand("capture",
                               "Save this machine's FADT and PPTT, and the document of identify");
  command->add_option("DIR", arguments.path, "A new directory")->required();
  command->callback([&] { capture(arguments); });

  command =
      app.add_subcommand("check-provider", "Ask a provider library every key, as the import does");
  command->add_option("FILE", arguments.path, "The library")->required();
  addJson(*command, arguments);
  command->add_option("--timeout", arguments.seconds, "Time limit of each step (default: 10)")
      ->option_text("SECONDS")
      ->check(CLI::Range(0.001, 86400.0));
  command->callback([&] { checkProvider(arguments); });

  command = app.add_subcommand("ask-provider")->group("");  // hidden: the child of check-provider
  command->add_option("FILE", arguments.path)->required();
  command->add_option("SECONDS", arguments.seconds)->required();
  command->add_option("DESCRIPTOR", arguments.descriptor)->required();
  command->callback([&] { AskProvider(arguments.path, arguments.seconds, arguments.descriptor); });

  // Options before a subcommand would be parsed and have no effect.
  for (CLI::App* const subcommand : app.get_subcommands({})) {
    subcommand->footer(EXIT_CODES);
    for (CLI::Option* const option : app.get_options()) {
      subcommand->excludes(option);
    }
  }
}

int run(int argc, char** argv) {
  CLI::App app("Shows what this machine's system-on-chip can do, and where the answers come from.",
               "soc-info");
  Arguments arguments;
  app.allow_windows_style_options(false);  // a path may begin with a slash
  app.set_version_flag("--version", "soc-info " SOC_INFO_VERSION);
  app.require_subcommand(0, 1);
  app.footer(EXIT_CODES);
  addCommands(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::RuntimeError& status) {
    return status.get_exit_code();  // how a command ends with a status of its own
  } catch (const CLI::ExcludesError& error) {
    throw InputError(app.get_subcommands().empty()
                         ? std::string(error.what())
                         : "put options after the subcommand, as in: soc-info identify --json");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : BAD_INPUT;  // 0: help or version was asked for
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  const int status = run(argc, argv);
  if (!std::cout.flush()) {
    std::cerr << "soc-info: the output could not be written\n";
    return FAILED;
  }
  return status;
} catch (const InputError& error) {
  std::cerr << "soc-info: " << error.what() << '\n';
  return BAD_INPUT;
} catch (const std::exception& error) {
  std::cerr << "soc-info: " << error.what() << '\n';
  return FAILED;
}
