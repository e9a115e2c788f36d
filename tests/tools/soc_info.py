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
# The two that throw when they are asked DSP 3: an exception of their own type, and one of the
# standard library.
OWN_FAULT, RUNTIME_ERROR = (pathlib.Path(PROVIDER).with_name(name + ".dll")
                            for name in ("OwnFault", "runtime_error"))
# What the scripted provider answers where a terminal or a reader of the report could be misled.
HOSTILE_NAME = "3 4 reply 0 7 1b5b33316dff00"
HOSTILE_NAME_VALUE = "\x1b[31m\ufffd"
HOSTILE_NAME_TEXT = r'"\u001b[31m\ufffd"'


class Tests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_tool(self, *arguments, script=(), program=SOC_INFO, before=None):
        """The result of a run; `script` is the scripted provider's (see provider.c).

        `before` is called in the new process before the tool is started there."""
        (self.folder / "provider.txt").write_text("".join(line + "\n" for line in script))
        return subprocess.run([program, *arguments], capture_output=True, text=True, timeout=60,
                              cwd=self.folder, preexec_fn=before)

    def assert_refused(self, result, message):
        self.assertEqual((result.returncode, result.stdout), (2, ""), result.stderr)
        self.assertIn(message, result.stderr)
