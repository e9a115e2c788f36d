"""The Python binding over the built library, in copies that have a provider beside them or none."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.environ["BINDING"])
import zyn_system_info as soc  # noqa: E402
from zyn_system_info import Component  # noqa: E402


# The packages that installing needs may be those of another Python than the one that runs this.
PYTHON_WITH_PIP = "/usr/bin/python3"


class PythonBindingTest(unittest.TestCase):
    def load(self, with_provider):
        # A copy is a library of its own, which makes its own first queries.
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        if with_provider:
            shutil.copy(os.environ["PROVIDER"], folder.name)
        return soc.SystemInfo(shutil.copy(os.environ["LIBRARY"], folder.name))

    def test_answers_have_the_type_of_their_key(self):
        info = self.load(with_provider=True)
        for component, key, answer in [
            (Component.DSP, 7, 0x1C0000000),
            (Component.DSP, 43, 1.5),
            (Component.GPU, 4, "Turnstone 860"),
            (5, 2, 0x400000000),
        ]:
            self.assertEqual(info.get(component, key), answer)
        self.assertEqual(info.get_list(Component.DSP, 16),
                         [soc.Value(0, 1), soc.Value(0, 2), soc.Value(0, 4), soc.Value(0, 6)])
        self.assertEqual(info.get_list(Component.DSP, 48), [])
        self.assertEqual(info.api_version(), (0, 1))

    def test_refusals_are_raised_by_name(self):
        info = self.load(with_provider=True)
        unknown = self.load(with_provider=False)
        for query, component, key, error in [
            (info.get, 4, 1, soc.UnsupportedComponent),
            (info.get, Component.DSP, 46, soc.UnsupportedKey),
            (info.get_list, Component.GPU, 4, soc.UnsupportedKey),
            (unknown.get, Component.CPU, 1, soc.Failure),
        ]:
            with self.subTest(component=component, key=key):
                self.assertRaises(error, query, component, key)
        for path in ("/nowhere/libZynSystemInfo.so", __file__):
            self.assertRaisesRegex(soc.LibraryError, path, soc.SystemInfo, path)

    def test_installed_package_is_a_command(self):
        library = self.load(with_provider=True)._library._name
        alone = self.load(with_provider=False)._library._name
        with tempfile.TemporaryDirectory() as folder:
            # A build leaves files beside the sources.
            source = shutil.copytree(os.environ["BINDING"], folder + "/source")
            subprocess.run([PYTHON_WITH_PIP, "-m", "pip", "install", "--quiet", "--no-deps",
                            "--no-index", "--no-build-isolation", "--target", folder, source],
                           check=True, capture_output=True, timeout=240)
            self.assertTrue(pathlib.Path(folder, "zyn_system_info", "py.typed").exists())
            for arguments, status, output in [([library], 0, "GPU 4: Turnstone 860\nDSP 3: 68\n"),
                                              ([alone], 1, ""), ([], 2, "")]:
                with self.subTest(arguments):
                    result = subprocess.run([sys.executable, "-m", "zyn_system_info", *arguments],
                                            text=True, capture_output=True, cwd=folder, timeout=60)
                    self.assertEqual((result.returncode, result.stdout[:len(output)]),
                                     (status, output))

    def test_answer_that_outgrows_the_buffer_is_asked_again(self):
        name = b"n" * 99 + b"\0"

        def query(component, key, buffer, size):
            fits = size._obj.value >= len(name)
            size._obj.value = len(name)
            if fits:
                buffer[:len(name)] = name
            return 0 if fits else soc.InsufficientSize.status

        self.assertEqual(soc.SystemInfo._ask(query, 3, 4, 64), name)

    def test_lists_are_read_from_their_bytes(self):
        entry = bytes.fromhex("00000000" "07000000" "6162") + bytes(30)
        other = bytes.fromhex("01000000" "ffffffff") + b"x" * 31 + b"\0"
        self.assertEqual(soc.parse_list(48, entry + other),
                         [soc.NamedValue(0, 7, "ab"), soc.NamedValue(1, 0xFFFFFFFF, "x" * 31)])
        self.assertEqual(soc.parse_list(47, entry[:4] + entry[8:]), [soc.Name(0, "ab")])
        self.assertRaises(ValueError, soc.parse_list, 48, entry[:-1])
        self.assertRaises(ValueError, soc.parse_list, 47, bytes(4) + b"x" * 32)


if __name__ == "__main__":
    unittest.main()
