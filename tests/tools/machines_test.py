"""soc-info must print the files of every folder in examples/machines. A new folder needs no code."""

import unittest

from soc_info import MACHINES, Tests


COMMANDS = {
    "identify.json": ["identify", "--json"],
    "identify.txt": ["identify"],
    "capabilities.json": ["--json"],
    "capabilities.txt": [],
}


class MachinesTest(Tests):
    maxDiff = None

    def test_machines(self):
        machines = sorted(path for path in MACHINES.iterdir() if path.is_dir())
        self.assertTrue(machines)
        for machine in machines:
            for expectation, command in COMMANDS.items():
                # A machine whose answers are its provider's has no capabilities.
                if expectation == "identify.json" or (machine / expectation).exists():
                    with self.subTest(machine=machine.name, file=expectation):
                        result = self.run_tool(*command, "--tables", machine)
                        expected = (machine / expectation).read_text(encoding="utf-8")
                        self.assertEqual(result.stdout, expected, result.stderr)


if __name__ == "__main__":
    unittest.main()
