"""A run of soc-info in a folder of its own."""

import os
import pathlib
import subprocess
import tempfile
import unittest

SOC_INFO = os.environ["SOC_INFO"]
MACHINES = pathlib.Path(os.environ["MACHINES"])
PROVIDER = os.environ["PROVIDER"]
NO_PROVIDER = os.environ["NO_PROVIDER"]
# What the scripted provider answers where a terminal or a reader of the report could be misled.
HOSTILE_NAME = "3 4 reply 0 7 1b5b33316dff00"
HOSTILE_NAME_VALUE = "\x1b[31m\ufffd"
HOSTILE_NAME_TEXT = r'"\u001b[31m\ufffd"'


class Tests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_tool(self, *arguments, script=(), program=SOC_INFO):
        """The result of a run; `script` is the scripted provider's (see provider.c)."""
        (self.folder / "provider.txt").write_text("".join(line + "\n" for line in script))
        return subprocess.run([program, *arguments], capture_output=True, text=True, timeout=60,
                              cwd=self.folder)

    def assert_refused(self, result, message):
        self.assertEqual((result.returncode, result.stdout), (2, ""), result.stderr)
        self.assertIn(message, result.stderr)
