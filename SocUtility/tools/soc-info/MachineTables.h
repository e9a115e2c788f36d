/// The firmware tables of this machine, or dumps of another machine's.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string_view>
#include <vector>

/// The two tables that identify a chip. A table that the machine lacks is empty.
struct MachineTables {
  std::vector<std::uint8_t> fadt;
  std::vector<std::uint8_t> pptt;
  bool ppttUnknown = false;   ///< The PPTT is empty, but the machine may have one.
  bool accessDenied = false;  ///< The FADT is empty because this user may not read it.
};

/// The tables that the library would read here.
MachineTables ReadThisMachine();

/// Reads the raw dumps in `directory`. The FADT's dump is the first of "FACP", "facp.dat" and
/// "FACP.dat" that exists. The PPTT's is the first of "PPTT", "pptt.dat" and "PPTT.dat". It may be
/// missing: `ppttUnknown` is then set unless the file "identify.json" of a capture says that the
/// machine has no PPTT.
///
/// Throws `InputError` when the FADT's dump is missing, when a dump is not a readable, non-empty
/// file of at most 16 MiB, and when a dump holds another table.
///
/// A dump that is shorter than its header claims is accepted with a line to `warnings`, since
/// firmware can deliver such a table.
MachineTables ReadDumps(const std::filesystem::path& directory, std::ostream& warnings);

/// Writes the dumps "FACP" and, unless the machine lacks it, "PPTT", and the file "identify.json".
/// No other table: some hold licence keys.
///
/// \param directory      Must not exist. Older files in it could be of another machine, and a link
///                       in it could make a program that runs as root write to any file.
/// \param identification The document of `identify` that the two dumps reproduce.
/// Throws `InputError` if the directory exists or a file cannot be written.
void WriteDumps(std::filesystem::path directory, const MachineTables& tables,
                std::string_view identification);
