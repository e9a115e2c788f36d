"""The sources as a part of another project's build, which has no Python and no test libraries.

The builds are configured only: that the sources compile is what all other tests are about. CLANG,
where there is one, takes the place of Visual Studio's compiler. For Windows there it needs llvm-ar
and llvm-rc beside it.
"""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

SOURCE = os.environ["SOURCE"]
LLVM = pathlib.Path(os.environ.get("CLANG") or "/none").resolve().parent

CONSUMER = f"""
cmake_minimum_required(VERSION 3.25)
project(Consumer LANGUAGES C CXX)
include(FetchContent)
FetchContent_Declare(ZynSystemInfo SOURCE_DIR {SOURCE})
FetchContent_MakeAvailable(ZynSystemInfo)
add_executable(consumer main.c)
target_link_libraries(consumer PRIVATE ZynSystemInfo::ZynSystemInfo)
"""
HIDDEN = ["Python3", "GTest", "CLI11", "nlohmann_json", "benchmark"]
RULES_OF_THE_PROJECT = ["-Werror", "/WX", "check-image", "check_image", "soc-info", "gtest"]
# What a compiler or linker other than GNU's and Clang's would not know.
GNU_OPTION = re.compile(r"\s(-[fgmWO]\w[^ ]*)")


class DependencyTest(unittest.TestCase):
    def configure(self, *arguments):
        """The build rules, and the consumer's own compile command."""
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        path = pathlib.Path(folder.name)
        build = path / "build"
        (path / "CMakeLists.txt").write_text(CONSUMER)
        (path / "main.c").write_text("int main(void) { return 0; }\n")
        hidden = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in HIDDEN]
        result = subprocess.run(
            ["cmake", "-G", "Ninja", "-S", path, "-B", build, "-DCMAKE_BUILD_TYPE=Release",
             "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", *hidden, *arguments],
            capture_output=True, text=True, timeout=120)
        self.assertEqual(result.returncode, 0, result.stderr)
        commands = json.loads((build / "compile_commands.json").read_text())
        [own] = [entry["command"] for entry in commands if entry["file"].endswith("main.c")]
        return (build / "build.ninja").read_text(), own

    def test_consumer_needs_nothing_and_meets_no_rule_of_the_project(self):
        rules, own = self.configure()
        self.assertEqual([rule for rule in RULES_OF_THE_PROJECT if rule in rules], [])
        self.assertNotRegex(own, "-W|-std=|-fvisibility|-g ")

    @unittest.skipUnless((LLVM / "llvm-ar").exists() and (LLVM / "llvm-rc").exists(),
                         "there is no Clang with its tools")
    def test_visual_studio_meets_no_option_of_other_compilers(self):
        with tempfile.TemporaryDirectory() as folder:
            for name, tool in [("clang-cl", "clang"), ("llvm-lib", "llvm-ar")]:
                pathlib.Path(folder, name).symlink_to(LLVM / tool)
            rules, _ = self.configure(
                "-DCMAKE_SYSTEM_NAME=Windows", "-DCMAKE_SYSTEM_PROCESSOR=ARM64",
                "-DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY",
                f"-DCMAKE_C_COMPILER={folder}/clang-cl", f"-DCMAKE_CXX_COMPILER={folder}/clang-cl",
                "-DCMAKE_C_COMPILER_TARGET=aarch64-pc-windows-msvc",
                "-DCMAKE_CXX_COMPILER_TARGET=aarch64-pc-windows-msvc",
                f"-DCMAKE_AR={folder}/llvm-lib", f"-DCMAKE_RC_COMPILER={LLVM}/llvm-rc",
                "-DCMAKE_LINKER=/not/run", "-DCMAKE_MT=/not/run")
        flags = re.findall(r"^ *(?:LINK_FLAGS|FLAGS) = (.*)$", rules, re.M)
        self.assertEqual({option for line in flags for option in GNU_OPTION.findall(line)}, set())
        # One runtime in all objects of the image, and its exports.
        library = [line for line in flags if "/std:c++20" in line or "-std:c++20" in line]
        self.assertEqual([line for line in library if "-MT" not in line], [])
        self.assertIn("ZynSystemInfo.def", "".join(flags))


if __name__ == "__main__":
    unittest.main()
