"""The public header in programs of every supported language, beside headers that use its names.

The programs are only compiled. CC and CXX are the compilers; CLANG, where there is one, compiles
for Windows too.
"""

import os
import subprocess
import unittest

INCLUDE = os.environ["SOURCE"] + "/SocUtility/include"
# The file itself: a name with a target in front would bring that target's settings.
CLANG = os.environ.get("CLANG") and os.path.realpath(os.environ["CLANG"])

GNU_WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Wundef"]
# The front end that is compatible with Microsoft's, with every warning it has except those for
# programs in C++98. Freestanding, since Windows' own headers may not be at hand.
FOR_WINDOWS = ["--target=aarch64-pc-windows-msvc", "-ffreestanding", "-Weverything",
               "-Wno-c++98-compat", "-Wno-c++98-compat-pedantic"]

PROGRAM = """
#include <ZynSystemInfo.h>
uint32_t ask(Soc_GetCapabilityFn* query, Soc_GetCapabilitySerializedFn* list, uint64_t* value);
uint32_t ask(Soc_GetCapabilityFn* query, Soc_GetCapabilitySerializedFn* list, uint64_t* value) {
  uint64_t size = sizeof *value;
  uint8_t version[2] = {0, 0};
  Soc_GetAPIVersionFn* interface_version = Soc_GetAPIVersion;
  if (interface_version(&version[0], &version[1]) != SOC_SUCCESS ||
      list(SOC_DSP, 16, value, &size) == SOC_FAILURE) {
    return SOC_FAILURE;
  }
  query = query ? query : Soc_GetCapability;
  return query(%s, 1, value, &size) == %s ? 0U : 1U;
}
"""
# The second one meets a runtime's devices, and macros of the short names.
PROGRAMS = [
    ([], PROGRAM % ("GPU", "SUCCESS")),
    (["-DZYN_NO_SHORT_NAMES", "-DSUCCESS=1", "-DFAILURE=(-1)", "-DCPU=cpu", "-DNULL_BUFFER="],
     "enum DeviceType { CPU, GPU, DSP };" + PROGRAM % ("SOC_GPU", "SOC_SUCCESS")),
]


class HeaderTest(unittest.TestCase):
    def check(self, c_compiler, cxx_compiler, flags):
        for compiler, language, standard in [
            (c_compiler, "c", "c99"), (c_compiler, "c", "c17"),
            (cxx_compiler, "c++", "c++11"), (cxx_compiler, "c++", "c++20"),
        ]:
            command = [compiler, "-x", language, f"-std={standard}", *flags, "-Werror",
                       "-fsyntax-only", f"-I{INCLUDE}"]
            for defines, program in PROGRAMS:
                with self.subTest(defines=defines, standard=standard):
                    result = subprocess.run([*command, *defines, "-"], input=program,
                                            capture_output=True, text=True, timeout=120)
                    self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_compiles_with_the_compilers_of_this_build(self):
        self.check(os.environ["CC"], os.environ["CXX"], GNU_WARNINGS)

    @unittest.skipUnless(CLANG, "there is no Clang")
    def test_compiles_for_windows_with_every_warning(self):
        self.check(CLANG, CLANG, FOR_WINDOWS)


if __name__ == "__main__":
    unittest.main()
