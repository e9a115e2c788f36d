"""soc-info must print the JSON of every folder in examples/machines. A new folder needs no code."""

import json
import unittest

from soc_info import MACHINES, Tests


class MachinesTest(Tests):
    maxDiff = None

    def test_machines(self):
        machines = sorted(path for path in MACHINES.iterdir() if path.is_dir())
        self.assertTrue(machines)
        for machine in machines:
            for expectation, command in {"identify.json": ["identify"],
                                         "capabilities.json": []}.items():
                # A machine whose answers are its provider's has no capabilities.json.
                if expectation == "identify.json" or (machine / expectation).exists():
                    with self.subTest(machine=machine.name, file=expectation):
                        result = self.run_tool(*command, "--tables", machine, "--json")
                        expected = json.loads((machine / expectation).read_text(encoding="utf-8"))
                        self.assertEqual(json.loads(result.stdout), expected, result.stderr)


if __name__ == "__main__":
    unittest.main()
