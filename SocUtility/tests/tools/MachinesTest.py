"""Every folder of examples/machines answers as its JSON says: adding a machine is adding files."""

import json
import os
import pathlib
import subprocess
import unittest

MACHINES = sorted(path for path in pathlib.Path(os.environ["MACHINES"]).iterdir() if path.is_dir())


class MachinesTest(unittest.TestCase):
    maxDiff = None

    def compare(self, machine, expectation, *command):
        with self.subTest(machine=machine.name, file=expectation):
            output = subprocess.run(
                [os.environ["SOC_INFO"], *command, "--tables", machine, "--json"],
                check=True, capture_output=True, text=True).stdout
            expected = json.loads((machine / expectation).read_text(encoding="utf-8"))
            self.assertEqual(json.loads(output), expected)

    def test_there_are_machines(self):
        self.assertTrue(MACHINES)

    def test_identification(self):
        for machine in MACHINES:
            self.compare(machine, "identify.json", "identify")

    def test_capabilities(self):
        for machine in MACHINES:
            if (machine / "capabilities.json").exists():
                self.compare(machine, "capabilities.json")


if __name__ == "__main__":
    unittest.main()
