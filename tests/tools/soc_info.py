"""A run of soc-info in a folder of its own. Every document that it writes must fit the schema."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import images

SOC_INFO = os.environ["SOC_INFO"]
LIBRARY = os.environ["LIBRARY"]
OTHER_LIBRARY = os.environ["OTHER_LIBRARY"]
LAUNCHER = os.environ["LAUNCHER"].split()  # of another system's programs
ON_WINDOWS = SOC_INFO.endswith(".exe")
MACHINES = pathlib.Path(os.environ["MACHINES"])
SCHEMA = MACHINES.parent.parent / "docs" / "soc-info.schema.json"
PROVIDER = os.environ["PROVIDER"]
NO_PROVIDER = os.environ["NO_PROVIDER"]
NO_VERSION = os.environ["NO_VERSION"]
MANGLED = str(pathlib.Path(NO_PROVIDER).with_name("Mangled.dll"))
# Lines of its script: an exception of its own type at DSP 3, and one of the standard library, which
# fails the key.
OWN_FAULT, RUNTIME_ERROR = ("2 3 except 2 0 -", "2 3 except 4 0 -")
# What the scripted provider answers where a terminal or a reader of the report could be misled.
HOSTILE_NAME = "3 4 reply 0 7 1b5b33316dff00"
HOSTILE_NAME_VALUE = "\x1b[31m\ufffd"
HOSTILE_NAME_TEXT = r'"\u001b[31m\ufffd"'

OTHER_MACHINE = images.windows_image(images.ARM64) if ON_WINDOWS else images.elf_image(
    images.ELF_ARM64)


def schema_faults(documents):
    """What Debian's python3-jsonschema says of the texts, which are documents."""
    with tempfile.TemporaryDirectory() as folder:
        instances = []
        for number, document in enumerate(documents):
            path = pathlib.Path(folder, f"{number}.json")
            path.write_text(document, encoding="utf-8")
            instances += ["-i", str(path)]
        result = subprocess.run(["jsonschema", *instances, str(SCHEMA)], capture_output=True,
                                text=True, check=False)
        return result.stdout + result.stderr if result.returncode else ""


class Tests(unittest.TestCase):
    documents = []

    @classmethod
    def tearDownClass(cls):
        faults = schema_faults(Tests.documents) if Tests.documents else ""
        Tests.documents = []
        if faults:
            raise AssertionError(faults)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_tool(self, *arguments, script=(), program=SOC_INFO, before=None):
        """The result of a run; `script` is the scripted provider's (see provider.c).

        `before` is called in the new process before the tool is started there."""
        (self.folder / "provider.txt").write_text("".join(line + "\n" for line in script))
        # Crashes and threads left behind are for the tool to report, not for a sanitizer.
        environment = dict(os.environ, ASAN_OPTIONS="handle_segv=0",
                           TSAN_OPTIONS="handle_segv=0:report_thread_leaks=0")
        result = subprocess.run([*LAUNCHER, program, *arguments], capture_output=True,
                                timeout=60, cwd=self.folder, preexec_fn=before, encoding="utf-8",
                                env=environment)
        if "--json" in arguments and result.stdout:
            Tests.documents.append(result.stdout)
        return result

    def install(self, provider=None):
        """A copy of the tool in the folder, with the library, and a provider, beside it."""
        shutil.copy(LIBRARY, self.folder)
        place = self.folder / "RzSoCServiceUtils.dll"
        place.unlink(missing_ok=True)
        if provider:
            shutil.copy(provider, place)
        return shutil.copy(SOC_INFO, self.folder)

    def assert_refused(self, result, message):
        self.assertEqual((result.returncode, result.stdout), (2, ""), result.stderr)
        self.assertRegex(result.stderr, "^soc-info: ")
        self.assertIn(message, result.stderr)
