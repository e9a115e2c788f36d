"""What the tests expect: the keys of an import, and the answers with and without a provider."""

import unittest

from scenario import Result, number

DSP, GPU, CPU = 2, 3, 5
DSP_ASKED = [*range(1, 17), *range(18, 26), 17, *range(26, 35), *range(36, 45)]
ASKED = [*((DSP, key) for key in DSP_ASKED), (CPU, 1), (CPU, 2), (GPU, 1), (GPU, 4),
         *((GPU, key) for key in range(5, 14))]
REQUIRED = [*((DSP, key) for key in range(1, 29)), (GPU, 1), (GPU, 4)]
OPTIONAL = [pair for pair in ASKED if pair not in REQUIRED]
FIRST_SIZES = {(DSP, 16): 32, (GPU, 4): 32, (DSP, 43): 4, (DSP, 44): 4}
# The log of an import in which no key is asked twice.
IMPORT = ["load", *(f"asked {component} {key} {FIRST_SIZES.get((component, key), 8)}"
                    for component, key in ASKED), "unload"]

SCALAR = "s 2 5 8"
LIST = "l 2 16 64"
# What they give from the example provider, and without a provider.
SCALAR_IMPORTED = Result(0, 8, number(6))
LIST_IMPORTED = Result(0, 32, "".join(number(0, 4) + number(n, 4) for n in (1, 2, 4, 6)))
SCALAR_DEFAULT = Result(0, 8, number(0))
LIST_DEFAULT = Result(0, 0, "")
REFUSED = Result(25, 8, "")
LIST_REFUSED = Result(25, 64, "")


def refuse(keys):
    return [f"{component} {key} reply 3 0 -" for component, key in keys]


class ScenarioTest(unittest.TestCase):
    def assert_results(self, outcome, *expected):
        self.assertEqual(list(expected), outcome.results())

    def assert_loads(self, outcome, count):
        """Asserts that a provider was loaded this often, and unloaded each time."""
        self.assertEqual([count] * 2, [outcome.log.count(word) for word in ("load", "unload")])

    def assert_nothing_imported(self, outcome):
        """Of SCALAR, SCALAR, LIST, LIST: only the scalar query's first call answers."""
        self.assert_results(outcome, SCALAR_DEFAULT, REFUSED, LIST_DEFAULT, LIST_DEFAULT)
