// soc-info: shows what the library answers on a machine, and why.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "Commands.h"
#include "ForeignCode.h"
#include "MachineTables.h"
#include "Output.h"
#include "Paths.h"
#include "RunInfo.h"
#ifdef _WIN32
// clang-format off
#include "platform/WindowsApi.h"  // first: the other relies on its types
#include <shellapi.h>
// clang-format on

#include "DynamicSocInfo/provider/DriverLocation.h"
#endif

namespace {

constexpr int DONE = 0;
constexpr int FAILED = 1;
constexpr int BAD_INPUT = 2;

constexpr const char* EXIT_CODES = R"(
Exit status:
  0  done; for check-provider, the provider passes
  1  the library or a provider fails, and the document's findings say how; for
     check-provider, the provider does not pass; for get, there is no value;
     or the system failed (memory, the output)
  2  bad arguments, a missing or unusable file, no library, tables that
     cannot be read)";

/// The arguments of all commands; each reads its own.
struct Arguments {
  std::string tables;  ///< A directory of dumps; empty for this machine.
  std::string path;    ///< What `capture` makes, or what `check-provider` checks.
  std::string component;
  std::uint32_t key = 0;
  ForeignCodeOptions foreignCode;
  int descriptor = -1;  ///< What `child` writes to.
  bool json = false;
};

void write(const Json& document, const Arguments& arguments,
           void (*writeText)(std::ostream&, const Json&)) {
  (arguments.json ? WriteDocument : writeText)(std::cout, document);
}

/// The status of a document that can say what foreign code did wrong.
int statusOf(const Json& document) {
  const bool fails = std::ranges::any_of(
      document.at("findings"), [](const Json& finding) { return finding.at("fails") == true; });
  return fails ? FAILED : DONE;
}

int inspect(const Arguments& arguments) {
  const Json document = arguments.tables.empty()
                            ? Inspect(ReadThisMachine(), arguments.foreignCode)
                            : Inspect(ReadDumps(PathOf(arguments.tables), std::cerr));
  write(document, arguments, WriteInspection);
  return statusOf(document);
}

int get(const Arguments& arguments) {
  const Json document = GetCapability(arguments.component, arguments.key, arguments.foreignCode);
  write(document, arguments, WriteValue);
  if (document.at("value").is_null()) {
    std::cerr << "soc-info: " << WhyNoValue(document) << '\n';
    return FAILED;
  }
  return statusOf(document);
}

int identify(const Arguments& arguments) {
  write(arguments.tables.empty() ? Identify(ReadThisMachine(), RunInfo())
                                 : Identify(ReadDumps(PathOf(arguments.tables), std::cerr)),
        arguments, WriteIdentification);
  return DONE;
}

int capture(const Arguments& arguments) {
  const MachineTables tables = ReadThisMachine();
  const Json identification = Identify(tables);
  if (tables.fadt.empty()) {
    throw InputError("nothing to capture: " + Text(identification.at("reason")));
  }
  std::ostringstream document;
  WriteDocument(document, identification);
  WriteDumps(PathOf(arguments.path), tables, document.str());
  std::cout << "captured in " << Quoted(arguments.path) << '\n';
  return DONE;
}

int checkProvider(const Arguments& arguments) {
  const Json check = CheckProvider(PathOf(arguments.path), arguments.foreignCode.seconds);
  write(check, arguments, WriteCheck);
  return check.at("passes") == true ? DONE : FAILED;
}

int runJob(const Arguments& arguments) {
  RunJob(arguments.descriptor);
  return DONE;
}

void addTables(CLI::App& command, Arguments& arguments) {
  command
      .add_option("--tables", arguments.tables,
                  "Explain another machine: a directory with its raw tables FACP and PPTT")
      ->option_text("DIR");
}

void addLibrary(CLI::App& command, Arguments& arguments) {
  command
      .add_option("--library", arguments.foreignCode.library,
                  "The library to ask, instead of the installed one")
      ->option_text("FILE");
}

void addTimeout(CLI::App& command, Arguments& arguments) {
  command
      .add_option("--timeout", arguments.foreignCode.seconds,
                  "Time limit of each step of a library or provider (default: 10)")
      ->option_text("SECONDS")
      ->check(CLI::Range(0.001, 86400.0));
}

void addJson(CLI::App& command, Arguments& arguments) {
  command.add_flag("--json", arguments.json, "Write one JSON document");
}

void addCapability(CLI::App& command, Arguments& arguments) {
  command.add_option("COMPONENT", arguments.component, "DSP, GPU or CPU")->required();
  command.add_option("KEY", arguments.key, "A number")->required();
}

void addDirectory(CLI::App& command, Arguments& arguments) {
  command.add_option("DIR", arguments.path, "A new directory")->required();
}

void addFile(CLI::App& command, Arguments& arguments) {
  command.add_option("FILE", arguments.path, "The library")->required();
}

void addDescriptor(CLI::App& command, Arguments& arguments) {
  command.group("");  // hidden: the process that runs foreign code
  command.add_option("DESCRIPTOR", arguments.descriptor)->required();
}

const struct Command {
  std::string name;
  std::string help;
  int (*run)(const Arguments&);
  std::vector<void (*)(CLI::App&, Arguments&)> options;
} COMMANDS[] = {
    {"get",
     "Print the value of one capability",
     get,
     {addCapability, addLibrary, addTimeout, addJson}},
    {"identify", "Show the steps of the chip's identification", identify, {addTables, addJson}},
    {"capture",
     "Save this machine's FADT and PPTT, and the document of identify",
     capture,
     {addDirectory}},
    {"check-provider",
     "Ask a provider library every key, as the import does, and watch it",
     checkProvider,
     {addFile, addTimeout, addJson}},
    {"child", "", runJob, {addDescriptor}},
};

/// An option before a command is the program's own, and has no effect if the command lacks it.
void refuseUselessOptions(const CLI::App& app, const CLI::App& command) {
  for (const CLI::Option* const option : app.get_options()) {
    if (!option->empty() && command.get_option_no_throw(option->get_name()) == nullptr) {
      throw InputError(command.get_name() + " takes no " + option->get_name());
    }
  }
}

int run(std::vector<std::string> words) {
  CLI::App app("Shows what this machine's system-on-chip can do, and where the answers come from.",
               "soc-info");
  Arguments arguments;
  app.allow_windows_style_options(false);  // a path may begin with a slash
  app.set_help_all_flag("--help-all", "Print the help of all subcommands too and exit");
  app.set_version_flag("--version", "soc-info " SOC_INFO_VERSION);
  app.require_subcommand(0, 1);
  app.footer(EXIT_CODES);
  for (const auto add : {addTables, addLibrary, addTimeout, addJson}) {
    add(app, arguments);
  }
  app.get_option("--tables")->excludes("--library")->excludes("--timeout");
  for (const Command& command : COMMANDS) {
    CLI::App* const subcommand = app.add_subcommand(command.name, command.help);
    subcommand->footer(EXIT_CODES);
    for (const auto add : command.options) {
      add(*subcommand, arguments);
    }
  }
  try {
    std::ranges::reverse(words);  // as CLI11 takes them
    app.parse(words);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);  // help or version
  } catch (const CLI::ParseError& error) {
    throw InputError(error.what());
  }
  if (!std::isfinite(arguments.foreignCode.seconds)) {
    throw InputError("--timeout takes a number");  // CLI11's range check lets "nan" pass
  }
  if (app.get_subcommands().empty()) {
    return inspect(arguments);
  }
  const CLI::App& chosen = *app.get_subcommands().front();
  refuseUselessOptions(app, chosen);
  return std::ranges::find(COMMANDS, chosen.get_name(), &Command::name)->run(arguments);
}

/// What follows the program's name, in UTF-8.
#ifdef _WIN32
std::vector<std::string> wordsOf(int /*argc*/, char** /*argv*/) {
  // `main` gets text in the process's code page, which need not have every letter of a path.
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> texts;
  for (int i = 1; i < count; ++i) {
    texts.push_back(wideToUtf8(words[i]));
  }
  LocalFree(words);
  return texts;
}

/// Until it is destroyed, a console takes the text as UTF-8.
class ConsoleText {
 public:
  ConsoleText() { SetConsoleOutputCP(CP_UTF8); }
  ~ConsoleText() { SetConsoleOutputCP(before_); }
  ConsoleText(const ConsoleText&) = delete;
  ConsoleText& operator=(const ConsoleText&) = delete;

 private:
  UINT before_ = GetConsoleOutputCP();
};
#else
std::vector<std::string> wordsOf(int argc, char** argv) { return {argv + 1, argv + argc}; }
struct ConsoleText {};
#endif

}  // namespace

int main(int argc, char** argv) try {
  OpenMissingStandardStreams();
  [[maybe_unused]] const ConsoleText consoleText;
  const int status = run(wordsOf(argc, argv));
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
