"""A released Node.js for Windows runs the example client with the image."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SKIPPED = 77


class NodeTest(unittest.TestCase):
    def run_client(self, *files):
        """The client's exit code, output and errors, in a folder with the image and these files."""
        modules = os.environ["ZYN_NODE_MODULES"]
        environment = dict(os.environ, NODE_PATH="Z:" + modules.replace("/", "\\"))
        environment.pop("NODE_EXTRA_CA_CERTS", None)  # a path of the host
        with tempfile.TemporaryDirectory() as folder:
            for file in (os.environ["LIBRARY"], os.environ["CLIENT"], *files):
                shutil.copy(file, folder)
            # Under Wine Node.js writes to files but not to pipes.
            output, errors = (pathlib.Path(folder, name) for name in ("output", "errors"))
            with output.open("w") as stdout, errors.open("w") as stderr:
                process = subprocess.run(
                    [*os.environ["LAUNCHER"].split(), f"{modules}/{os.environ['NODE']}",
                     "client.js", "ZynSystemInfo.dll"],
                    cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=stdout,
                    stderr=stderr, timeout=300, check=False)
            return process.returncode, output.read_text().splitlines(), errors.read_text()

    def test_answers_of_a_provider_beside_the_library(self):
        status, lines, errors = self.run_client(os.environ["PROVIDER"])
        self.assertEqual(lines, ["GPU 4: Turnstone 860", "DSP 3: 68", "DSP 16: 1 2 4 6"], errors)
        self.assertEqual(status, 0)

    def test_unknown_chip_without_a_provider(self):
        status, lines, errors = self.run_client()
        self.assertEqual((status, lines), (1, []), errors)
        self.assertTrue(errors.endswith("unknown chip: no provider library describes it\n"), errors)


if __name__ == "__main__":
    if "ZYN_NODE_MODULES" not in os.environ:
        print("skipped: ZYN_NODE_MODULES does not name a folder (scripts/test does)")
        sys.exit(SKIPPED)
    unittest.main()
