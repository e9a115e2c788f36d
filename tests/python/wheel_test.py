"""The Python wheel of this build: on the host installed and used, for another system read."""

import doctest
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

SOURCE = pathlib.Path(os.environ["SOURCE"])
sys.path.insert(0, str(SOURCE / "scripts" / "lib"))
from pe_image import PeImage  # noqa: E402

PYTHON_WITH_PIP = "/usr/bin/python3"  # may be another one than runs this


def run(*command, status=0):
    """What a command writes that must end with the status."""
    result = subprocess.run(command, text=True, capture_output=True, timeout=240)
    if result.returncode != status:
        raise AssertionError(f"{command}: {result.returncode} {result.stdout}{result.stderr}")
    return result.stdout if status == 0 else result.stderr


WHEEL = SOURCE / run(SOURCE / "scripts" / "wheels", os.environ["PRESET"]).strip()


class WheelTest(unittest.TestCase):
    def test_is_for_the_systems_that_can_load_its_library(self):
        with zipfile.ZipFile(WHEEL) as archive:
            files = {pathlib.Path(name).name: archive.read(name) for name in archive.namelist()}
        [library] = [name for name in files if "ZynSystemInfo" in name]
        if library.endswith(".dll"):
            machine = {0x8664: "amd64", 0xAA64: "arm64"}[PeImage(files[library]).machine]
            tag = f"py3-none-win_{machine}"
        else:
            glibc = max(map(int, re.findall(rb"\0GLIBC_2\.(\d+)", files[library])))
            tag = f"py3-none-manylinux_2_{glibc}_{os.uname().machine}"
        self.assertEqual(WHEEL.name, f"zyn_system_info-{os.environ['VERSION']}-{tag}.whl")
        self.assertIn(f"Root-Is-Purelib: false\nTag: {tag}\n", files["WHEEL"].decode())
        self.assertLessEqual({"py.typed", "THIRD-PARTY-NOTICES.txt"}, files.keys())


@unittest.skipIf(os.environ["LAUNCHER"], "the library is for another system")
class InstalledWheelTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.python = folder.name + "/bin/python"
        run(PYTHON_WITH_PIP, "-m", "venv", "--without-pip", folder.name)
        run(PYTHON_WITH_PIP, "-m", "pip", "--python", cls.python, "install", "--no-index", WHEEL)
        [cls.package] = pathlib.Path(folder.name).glob("lib/*/*/zyn_system_info")
        sys.path.insert(0, str(cls.package.parent))
        global soc
        import zyn_system_info as soc

    def with_provider(self):
        """The path of a copy of the library that has a provider beside it."""
        folder = tempfile.mkdtemp(dir=self.package)
        shutil.copy(os.environ["PROVIDER"], folder)
        return pathlib.Path(shutil.copy(*self.package.glob("lib*"), folder))

    def test_answers_have_the_type_of_their_key(self):
        info = soc.SystemInfo(self.with_provider())
        for key, answer in [((2, 7), 0x1C0000000), ((2, 43), 1.5), ((5, 2), 0x400000000),
                            ((soc.Component.GPU, 4), "Turnstone 860")]:
            self.assertEqual(info.get(*key), answer)
        self.assertEqual(info.get_list(2, 16), [(0, 1), (0, 2), (0, 4), (0, 6)])
        self.assertEqual((info.get_list(2, 48), info.api_version()), ([], (0, 1)))
        self.assertEqual(doctest.testmod(soc).failed, 0)

    def test_refusals_say_what_they_mean(self):
        info, unknown = soc.SystemInfo(self.with_provider()), soc.SystemInfo()
        for query, component, key, error, text in [
            (info.get, 4, 1, soc.UnsupportedComponent, "component 4 key 1.*status 2.*GPU .3."),
            (info.get, 2, 46, soc.UnsupportedKey, "DSP key 46: UNSUPPORTED_KEY.*3.*get_list"),
            (unknown.get, 5, 1, soc.Failure, "CPU key 1: FAILURE.*25.*unknown.*capabilities.md"),
        ]:
            self.assertRaisesRegex(error, text, query, component, key)
        for path in ("/nowhere/libZynSystemInfo.so", __file__, "libc.so.6"):
            self.assertRaisesRegex(soc.LibraryError, path, soc.SystemInfo, path)

    def test_is_a_command(self):
        for arguments, status, text in [
            ([self.with_provider()], 0, "GPU 4: Turnstone 860\nDSP 3: 68\n"),
            ([], 1, "GPU key 4"), (["/nowhere"], 2, "cannot be loaded"), (["--help"], 0, "usage:"),
        ]:
            output = run(self.python, "-m", "zyn_system_info", *arguments, status=status)
            self.assertIn(text, output)


if __name__ == "__main__":
    unittest.main()
