#include "ImageFile.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <system_error>

#include "Output.h"
#include "platform/WindowsApi.h"

namespace fs = std::filesystem;

namespace {

using State = ImageFile::State;

/// Reads little-endian numbers. Behind the file's end all bytes are 0.
class Reader {
 public:
  explicit Reader(const fs::path& file) : file_(file, std::ios::binary) {}

  bool IsOpen() const { return file_.is_open(); }

  template <class T>
  T At(std::uint64_t offset) {
    std::array<char, sizeof(T)> bytes{};
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(offset));
    file_.read(bytes.data(), bytes.size());
    return std::bit_cast<T>(bytes);
  }

 private:
  std::ifstream file_;
};

namespace elf {

constexpr std::uint32_t MAGIC = 0x464C457F;
constexpr std::uint8_t CLASS_32 = 1;
constexpr std::uint8_t BIG_ENDIAN_DATA = 2;
constexpr std::uint16_t X86 = 3;
constexpr std::uint16_t ARM = 40;
constexpr std::uint16_t X64 = 62;
constexpr std::uint16_t ARM64 = 183;

std::string nameOf(std::uint16_t machine) {
  switch (machine) {
    case X86:
      return "x86";
    case ARM:
      return "32-bit ARM";
    case X64:
      return "x86-64";
    case ARM64:
      return "ARM64";
    default:
      return "machine " + std::to_string(machine);
  }
}

ImageFile read(Reader& file) {
#if defined(_WIN32)
  constexpr std::uint16_t OWN = 0;
#elif defined(__aarch64__)
  constexpr std::uint16_t OWN = ARM64;
#else
  constexpr std::uint16_t OWN = X64;
#endif
  const bool is32 = file.At<std::uint8_t>(4) == CLASS_32;
  const bool isBigEndian = file.At<std::uint8_t>(5) == BIG_ENDIAN_DATA;
  auto machine = file.At<std::uint16_t>(18);
  if (isBigEndian) {
    machine = static_cast<std::uint16_t>(machine << 8 | machine >> 8);
  }
  return {State::Image,
          std::string(is32 ? "32-bit " : "") + (isBigEndian ? "big-endian " : "") + "ELF for " +
              nameOf(machine),
          !is32 && !isBigEndian && machine == OWN};
}

}  // namespace elf

namespace pe {

constexpr std::uint16_t DOS_MAGIC = 0x5A4D;
constexpr std::uint32_t MAGIC = 0x00004550;
constexpr std::uint16_t MAGIC_64 = 0x20B;  ///< Of the optional header.
constexpr std::uint16_t X86 = 0x14C;
constexpr std::uint16_t ARM = 0x1C4;
constexpr std::uint16_t X64 = 0x8664;
constexpr std::uint16_t ARM64 = 0xAA64;

/// The place in the file of an address relative to the image's base; 0 if there is none.
std::uint64_t fileOffset(Reader& file, std::uint64_t header, std::uint32_t address) {
  const auto count = file.At<std::uint16_t>(header + 6);
  std::uint64_t section = header + 24 + file.At<std::uint16_t>(header + 20);
  for (std::uint16_t index = 0; index < count; ++index, section += 40) {
    const std::uint32_t distance = address - file.At<std::uint32_t>(section + 12);
    if (distance < file.At<std::uint32_t>(section + 16)) {
      return std::uint64_t{file.At<std::uint32_t>(section + 20)} + distance;
    }
  }
  return 0;
}

/// Whether the image has ARM64EC code. Its header names the other machine of the two: x64 in an
/// ARM64EC image, ARM64 in an ARM64X image.
bool isHybrid(Reader& file, std::uint64_t header) {
  constexpr std::uint64_t LOAD_CONFIGURATION = 24 + 112 + 10 * 8;
  constexpr std::uint32_t HYBRID_METADATA = 200;
  if (file.At<std::uint16_t>(header + 24) != MAGIC_64) {
    return false;
  }
  const auto address = file.At<std::uint32_t>(header + LOAD_CONFIGURATION);
  const std::uint64_t configuration = fileOffset(file, header, address);
  return address != 0 && configuration != 0 &&
         file.At<std::uint32_t>(configuration) > HYBRID_METADATA &&
         file.At<std::uint64_t>(configuration + HYBRID_METADATA) != 0;
}

std::string nameOf(std::uint16_t machine, bool hybrid) {
  switch (machine) {
    case X86:
      return "x86";
    case ARM:
      return "32-bit ARM";
    case X64:
      return hybrid ? "ARM64EC" : "x64";
    case ARM64:
      return hybrid ? "ARM64X" : "ARM64";
    default:
      return "machine " + Hex(machine, 4);
  }
}

bool isForThisProcess([[maybe_unused]] std::uint16_t machine, [[maybe_unused]] bool hybrid) {
#if !defined(_WIN32)
  return false;
#elif defined(__aarch64__) || defined(_M_ARM64)
  return machine == ARM64;
#else
  // Only a system on ARM64 loads ARM64EC code.
  USHORT emulated = 0;
  USHORT native = 0;
  return hybrid ? IsWow64Process2(GetCurrentProcess(), &emulated, &native) && native == ARM64
                : machine == X64;
#endif
}

ImageFile read(Reader& file, std::uint64_t header) {
  const auto machine = file.At<std::uint16_t>(header + 4);
  const bool hybrid = isHybrid(file, header);
  return {State::Image, "Windows image for " + nameOf(machine, hybrid),
          isForThisProcess(machine, hybrid)};
}

}  // namespace pe

}  // namespace

ImageFile ReadImageFile(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) {
    return {State::Absent, error.message(), false};
  }
  if (!fs::is_regular_file(status)) {  // opening a pipe would wait for a writer
    return {State::Unreadable, error ? error.message() : "not a regular file", false};
  }
  errno = 0;
  Reader file(path);
  if (!file.IsOpen()) {
    return {State::Unreadable, std::generic_category().message(errno), false};
  }
  if (file.At<std::uint32_t>(0) == elf::MAGIC) {
    return elf::read(file);
  }
  const auto header = file.At<std::uint32_t>(0x3C);
  if (file.At<std::uint16_t>(0) == pe::DOS_MAGIC && file.At<std::uint32_t>(header) == pe::MAGIC) {
    return pe::read(file, header);
  }
  return {State::OtherFile, "not an image of a library", false};
}

std::string MangledName(const fs::path& path, std::string_view name) {
  // GNU's form and Microsoft's. The length, or what follows, tells the name from a longer one.
  const std::array forms = {"_Z" + std::to_string(name.size()).append(name),
                            std::string("?").append(name).append("@@")};
  constexpr std::size_t LONGEST = 512;
  constexpr std::string_view NAME_CHARACTERS =
      "_$@?.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  std::ifstream file(path, std::ios::binary);
  std::array<char, 65536> chunk;
  std::string window;
  while (file.read(chunk.data(), chunk.size()), file.gcount() > 0) {
    window.append(chunk.data(), static_cast<std::size_t>(file.gcount()));
    for (const std::string& form : forms) {
      if (const std::size_t at = window.find(form); at != std::string::npos) {
        const std::size_t end = window.find_first_not_of(NAME_CHARACTERS, at);
        // A name at the window's end may go on: it is found again with the next chunk.
        if (end != std::string::npos || !file) {
          return window.substr(at, std::min(end - at, LONGEST));
        }
      }
    }
    window.erase(0, window.size() - std::min(window.size(), LONGEST));
  }
  return {};
}
