"""The Python binding over the built library, in copies that have a provider beside them or none."""

import os
import pathlib
import shutil
import sys
import tempfile
import unittest

sys.path.insert(0, os.environ["BINDING"])
import zyn_system_info as soc  # noqa: E402
from zyn_system_info import Component  # noqa: E402


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
            (Component.DSP, 3, 68),
            (Component.DSP, 6, 0),
            (Component.DSP, 7, 0x1C0000000),
            (Component.DSP, 43, 1.5),
            (Component.GPU, 4, "Turnstone 860"),
            (5, 2, 0x400000000),
        ]:
            with self.subTest(component=component, key=key):
                told = info.get(component, key)
                self.assertEqual((told, type(told)), (answer, type(answer)))
        self.assertEqual(info.get_list(Component.DSP, 16),
                         [soc.Value(0, 1), soc.Value(0, 2), soc.Value(0, 4), soc.Value(0, 6)])
        self.assertEqual(info.get_list(Component.DSP, 48), [])
        self.assertEqual(info.api_version(), (0, 1))

    def test_refusals_are_raised_by_name(self):
        info = self.load(with_provider=True)
        for query, component, key, error in [
            (info.get, 4, 1, soc.UnsupportedComponent),
            (info.get, Component.DSP, 35, soc.UnsupportedKey),
            (info.get, Component.DSP, 46, soc.UnsupportedKey),
            (info.get_list, Component.GPU, 4, soc.UnsupportedKey),
        ]:
            with self.subTest(component=component, key=key):
                self.assertRaises(error, query, component, key)
        unknown = self.load(with_provider=False)
        unknown.get(Component.CPU, 1)
        with self.assertRaises(soc.Failure) as failure:
            unknown.get(Component.CPU, 1)
        self.assertEqual(failure.exception.status, 25)

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
