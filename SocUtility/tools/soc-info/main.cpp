// soc-info: tells what the library finds out on a machine, and why it finds out no more.
//
// Exit status: 0; 1 when something of this system failed (memory, the output), and for a provider
// whose import would not count; 2 for bad arguments and for files that are missing or unusable.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "AskProvider.h"
#include "Capture.h"
#include "CheckProvider.h"
#include "IdentifyReport.h"
#include "MachineTables.h"
#include "Output.h"
#include "SocReport.h"

namespace {

constexpr int FAILED = 1;
constexpr int BAD_INPUT = 2;

struct Options {
  std::optional<std::string> tables;  ///< A directory of dumps; none for this machine.
  bool json = false;
};

/// The options of a command that lives until the program ends.
std::shared_ptr<Options> addOptions(CLI::App& command) {
  auto options = std::make_shared<Options>();
  command
      .add_option("--tables", options->tables,
                  "Another machine: a directory with its raw tables FACP and PPTT")
      ->option_text("DIR");
  command.add_flag("--json", options->json, "Write one JSON document");
  return options;
}

template <class Report>
void write(const Report& report, const Options& options) {
  if (options.json) {
    WriteDocument(std::cout, ToJson(report));
  } else {
    WriteText(std::cout, report);
  }
}

/// What the program does without a subcommand.
void addTable(CLI::App& app) {
  const auto options = addOptions(app);
  app.callback([&app, options] {
    if (app.get_subcommands().empty()) {
      write(options->tables ? InspectTables(ReadDumps(*options->tables, std::cerr))
                            : InspectThisMachine(),
            *options);
    }
  });
}

void addIdentify(CLI::App& app) {
  CLI::App* const command =
      app.add_subcommand("identify", "Show the steps of the chip's identification");
  const auto options = addOptions(*command);
  command->callback([options] {
    write(Identify(options->tables ? ReadDumps(*options->tables, std::cerr) : ReadThisMachine()),
          *options);
  });
}

void addCapture(CLI::App& app) {
  CLI::App* const command = app.add_subcommand(
      "capture", "Save this machine's FADT and PPTT and what identify makes of them");
  auto directory = std::make_shared<std::string>();
  command->add_option("DIR", *directory, "A new directory")->required();
  command->callback([directory] {
    Capture(*directory);
    std::cout << "captured in " << Quoted(*directory) << '\n';
  });
}

void addCheckProvider(CLI::App& app) {
  struct CheckOptions : Options {
    std::string file;
    double seconds = 10;
  };
  CLI::App* const command = app.add_subcommand(
      "check-provider", "Ask a provider library as the import does; status 0 when it would count");
  auto options = std::make_shared<CheckOptions>();
  command->add_option("FILE", options->file, "The library")->required();
  command->add_flag("--json", options->json, "Write one JSON document");
  command
      ->add_option("--timeout", options->seconds,
                   "Time for each step, 10 unless told, before the library is given up")
      ->option_text("SECONDS")
      ->check(CLI::Range(0.001, 86400.0));
  command->callback([options] {
    if (!std::isfinite(options->seconds)) {
      throw InputError("--timeout takes a number");  // "nan" is in no range, and outside of none
    }
    const Json check = CheckProvider(options->file, options->seconds);
    options->json ? WriteDocument(std::cout, check) : WriteCheck(std::cout, check);
    if (!check.at("importCounts").get<bool>()) {
      throw CLI::RuntimeError(FAILED);
    }
  });

  CLI::App* const child = app.add_subcommand("ask-provider")->group("");  // hidden
  child->add_option("FILE", options->file)->required();
  child->add_option("SECONDS", options->seconds)->required();
  child->callback([options] {
    const std::chrono::duration<double> limit(options->seconds);
    AskProvider(options->file, std::chrono::duration_cast<std::chrono::nanoseconds>(limit));
  });
}

/// Options that stand before a subcommand would be read and mean nothing.
void refuseOptionsBeforeSubcommands(CLI::App& app) {
  for (CLI::App* const command : app.get_subcommands({})) {
    for (CLI::Option* const option : app.get_options()) {
      command->excludes(option);
    }
  }
}

int run(int argc, char** argv) {
  CLI::App app("Tells what this machine's system-on-chip can do, and how that was found out.",
               "soc-info");
  app.set_version_flag("--version", "soc-info " SOC_INFO_VERSION);
  app.require_subcommand(0, 1);
  addTable(app);
  addIdentify(app);
  addCapture(app);
  addCheckProvider(app);
  refuseOptionsBeforeSubcommands(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::RuntimeError& status) {
    return status.get_exit_code();  // how a command ends with a status of its own
  } catch (const CLI::ExcludesError&) {
    throw InputError("options stand after the subcommand, as in: soc-info identify --json");
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
