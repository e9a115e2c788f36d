"""The installed package in another place, used by programs that know nothing of the build.

The example provider is beside the library, since the chip of a development machine is unknown.
"""

import argparse
import json
import os
import pathlib
import platform
import re
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "scripts" / "lib"))
from check_docs import broken_links  # noqa: E402

options = None


def run(*command, **keywords):
    """The standard output of a command that must succeed."""
    result = subprocess.run([str(part) for part in command], capture_output=True, text=True,
                            timeout=240, **keywords)
    if result.returncode:
        raise AssertionError(f"{command}: {result.stdout}{result.stderr}")
    return result.stdout


def built_for_windows():
    return options.provider.read_bytes().startswith(b"MZ")


def configure_arguments(prefix):
    """What a user says to CMake: the compiler and where the package is."""
    if options.toolchain:
        # A cross compiler's search for packages is confined to its own tree.
        return [f"-DCMAKE_TOOLCHAIN_FILE={options.toolchain}",
                f"-DZynSystemInfo_DIR={prefix}/lib/cmake/ZynSystemInfo"]
    return [f"-DCMAKE_C_COMPILER={options.c_compiler}",
            f"-DCMAKE_CXX_COMPILER={options.cxx_compiler}", f"-DCMAKE_PREFIX_PATH={prefix}"]


class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(options.work, ignore_errors=True)
        run("cmake", "--install", options.build, "--prefix", options.work / "staged")
        cls.prefix = (options.work / "staged").rename(options.work / "moved")
        cls.files = sorted(path for path in cls.prefix.rglob("*") if path.is_file())
        cls.readme = cls.prefix / "share" / "doc" / "ZynSystemInfo" / "README.md"

    def file(self, name):
        found = [path for path in self.files if path.name == name]
        self.assertEqual(len(found), 1, f"{name} in {self.files}")
        return found[0]

    def tool(self):
        return self.file("soc-info.exe" if built_for_windows() else "soc-info")

    def test_cpp_client_is_built_through_the_cmake_package(self):
        build = options.work / "cpp-client"
        run("cmake", "-G", "Ninja", "-S", options.source / "examples" / "cpp-client", "-B", build,
            *configure_arguments(self.prefix))
        run("cmake", "--build", build)
        if built_for_windows():
            client, beside = build / "cpp-client.exe", build
        else:
            client, beside = build / "cpp-client", self.file("libZynSystemInfo.so").parent
        provider = shutil.copy(options.provider, beside)
        self.addCleanup(pathlib.Path(provider).unlink)
        interface = options.version.rpartition(".")[0]
        self.assertEqual(run(*options.launcher.split(), client).splitlines(), [
            f"package {options.version}, interface {interface}",
            "GPU 4: Turnstone 860",
            "CPU 2: 17179869184",
        ])

    def test_package_for_another_system_is_refused_with_the_reason(self):
        own, other = ("Windows", "Linux") if built_for_windows() else ("Linux", "Windows")
        script = options.work / "find.cmake"
        others = [(other, "")]
        if not (self.prefix / "lib" / "x64").exists():  # which serves both machines
            others.append((own, "x86_64" if platform.machine() == "aarch64" else "aarch64"))
        for system, machine in others:
            script.write_text(f"set(CMAKE_SYSTEM_NAME {system})\n"
                              f"set(CMAKE_SYSTEM_PROCESSOR {machine})\n"
                              f"find_package(ZynSystemInfo REQUIRED PATHS {self.prefix})\n")
            result = subprocess.run(["cmake", "-P", script], capture_output=True, text=True)
            self.assertRegex(result.stderr, f"package is for {own}.*You compile for\\s+{system}")

    def test_packager_may_name_folders_and_keep_debug_information(self):
        if built_for_windows():
            self.skipTest("Windows' images never have it")
        for stripped in (True, False):
            build, root = options.work / f"packager-{stripped}", options.work / f"root-{stripped}"
            run("cmake", "-G", "Ninja", "-S", options.source, "-B", build,
                "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_INSTALL_PREFIX=/usr",
                "-DCMAKE_INSTALL_LIBDIR=/usr/lib/triplet", f"-DZYN_INSTALL_STRIPPED={stripped}",
                *(f"-DZYN_BUILD_{part}=OFF" for part in ("TOOLS", "EXAMPLES", "TESTS")))
            for file in options.build.glob("SocUtility/libZynSystemInfo.so*"):
                shutil.copy(file, build / "SocUtility")
            run("cmake", "--install", build, env={**os.environ, "DESTDIR": str(root)})
            [image] = (root / "usr" / "lib" / "triplet").glob("*.so.*.*.*[0-9]")
            built = options.build / "SocUtility" / image.name
            self.assertEqual(image.read_bytes() != built.read_bytes(), stripped)
            self.assertEqual(len(list(image.parent.glob("*.debug"))), stripped)

    def check_c_program(self, source, printed):
        """Builds a program with pkg-config's flags, and runs it without and with a provider."""
        if built_for_windows():
            self.skipTest("pkg-config only finds libraries of the host")
        search = {"PKG_CONFIG_PATH": str(self.file("ZynSystemInfo.pc").parent), "PATH": "/usr/bin"}
        flags = run("pkg-config", "--cflags", "--libs", "ZynSystemInfo", env=search).split()
        client = options.work / "c-client"
        run(options.c_compiler, "-std=c99", "-pedantic-errors", source, "-o", client, *flags)
        library = self.file("libZynSystemInfo.so").parent
        start = {"LD_LIBRARY_PATH": str(library)}

        alone = subprocess.run([client], capture_output=True, text=True, env=start, timeout=60)
        self.assertEqual((alone.returncode, alone.stdout), (1, ""))
        self.assertIn("unknown chip", alone.stderr)

        provider = shutil.copy(options.provider, library)
        self.addCleanup(pathlib.Path(provider).unlink)
        self.assertEqual(run(client, env=start).splitlines(), printed)

    def test_c_client_is_built_through_pkg_config(self):
        self.check_c_program(options.source / "examples" / "c-client" / "client.c",
                             ["GPU 4: Turnstone 860", "DSP 3: 68", "DSP 16: 1 2 4 6"])

    def test_first_program_of_the_readme(self):
        source = options.work / "readme.c"
        source.write_text(re.search("```c\n(.*?)```", self.readme.read_text(), re.S)[1])
        self.check_c_program(source, ["GPU: Turnstone 860"])

    def test_example_provider_is_built_from_the_package(self):
        folder = self.file("RzSoCServiceUtils.c").parent
        build = options.work / "provider"
        run("cmake", "-G", "Ninja", "-S", folder, "-B", build, *configure_arguments(self.prefix))
        run("cmake", "--build", build)
        # Wine would take the first slash of an absolute path for an option's.
        run(*options.launcher.split(), self.tool(), "check-provider", "RzSoCServiceUtils.dll",
            cwd=build)

    def test_program_of_this_interface_gets_what_it_was_promised(self):
        folder = options.work / "abi-program"
        folder.mkdir()
        library = "ZynSystemInfo.dll" if built_for_windows() else "libZynSystemInfo.so.0.1"
        for file in (options.abi_program, options.provider, self.file(library)):
            shutil.copy(file, folder)
        program = folder / options.abi_program.name
        run(*options.launcher.split(), program,
            env={**os.environ, "LD_LIBRARY_PATH": str(folder)})

    def test_tool_asks_the_library_that_was_installed_with_it(self):
        document = json.loads(run(*options.launcher.split(), self.tool(), "--json"))
        library = pathlib.PureWindowsPath(document["run"]["library"]["path"])
        name = "ZynSystemInfo.dll" if built_for_windows() else "libZynSystemInfo.so.0.1"
        self.assertEqual((library.name, document["disagreements"]), (name, []))
        folders = {"bin"} if built_for_windows() else {"lib", "lib64"}
        self.assertIn(library.parent.name, folders)
        self.assertEqual(library.parent.parent.name, self.prefix.name)
        self.file("soc-info.schema.json")

    def test_all_tell_one_version(self):
        description = self.file("ZynSystemInfo.pc").read_text()
        changes = self.file("CHANGELOG.md").read_text()
        self.assertEqual(re.search("^Version: (.*)$", description, re.M)[1], options.version)
        self.assertEqual(re.search("^## ([0-9.]+)", changes, re.M)[1], options.version)
        told = run(*options.launcher.split(), self.tool(), "--version").strip()
        self.assertEqual(told, f"soc-info {options.version}")
        binding = self.file("pyproject.toml").read_text()
        self.assertEqual(re.search('^version = "(.*)"$', binding, re.M)[1], options.version)

    def test_tool_that_is_run_as_root_is_hardened(self):
        if not built_for_windows():
            found = run("readelf", "--wide", "--dynamic", "--dyn-syms", self.tool())
            self.assertEqual([part for part in ("BIND_NOW", "__stack_chk_fail")
                              if part not in found], [])

    def test_notices_have_the_licence_of_each_part(self):
        text = self.file("THIRD-PARTY-NOTICES.txt").read_text()
        runtime = ["Apache License v2.0 with LLVM Exceptions", "MinGW-w64 runtime licensing"]
        for phrase in ["University of Cincinnati", "Niels Lohmann",
                       *(runtime if built_for_windows() else ["GCC RUNTIME LIBRARY EXCEPTION"])]:
            self.assertIn(phrase, text)

    def test_links_of_the_texts_lead_somewhere(self):
        texts = [path for path in self.files if path.suffix == ".md"]
        self.assertNotEqual(texts, [])
        self.assertEqual([fault for path in texts for fault in broken_links(path)], [])
        self.assertNotRegex(self.readme.read_text(), "scripts/|<!--")

    def test_archives_hold_what_is_installed(self):
        folder = options.work / "archives"
        run("cpack", "--config", options.build / "CPackConfig.cmake", "-B", folder)
        package, symbols = [], []
        for archive in folder.iterdir():
            if archive.suffix in {".gz", ".zip"}:
                place = folder / archive.stem
                shutil.unpack_archive(archive, place)
                [top] = place.iterdir()
                found = symbols if "-symbols." in archive.name else package
                found += (path.relative_to(top) for path in top.rglob("*") if path.is_file())
        self.assertEqual({path.suffix for path in symbols},
                         {".pdb" if built_for_windows() else ".debug"})
        self.assertEqual(sorted(package + symbols),
                         [path.relative_to(self.prefix) for path in self.files])


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ("source", "build", "work", "provider", "abi-program"):
        parser.add_argument(f"--{name}", type=pathlib.Path, required=True)
    for name in ("version", "c-compiler", "cxx-compiler", "toolchain", "launcher"):
        parser.add_argument(f"--{name}", required=True)
    options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
