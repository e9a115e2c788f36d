"""What the tests expect: the keys of an import, and the answers with and without a provider."""

import unittest

from scenario import Result, number

DSP, GPU, CPU = 2, 3, 5
DSP_REQUIRED = [*range(1, 17), *range(18, 26), 17, 26, 27, 28]
DSP_OPTIONAL = [*range(29, 35), *range(36, 45)]
GPU_REQUIRED = [1, 4]
GPU_OPTIONAL = range(5, 14)
CPU_OPTIONAL = [(CPU, 1), (CPU, 2)]
REQUIRED = [(DSP, key) for key in DSP_REQUIRED] + [(GPU, key) for key in GPU_REQUIRED]
OPTIONAL = [(DSP, key) for key in DSP_OPTIONAL] + CPU_OPTIONAL + [
    (GPU, key) for key in GPU_OPTIONAL]
ASKED = [(DSP, key) for key in DSP_REQUIRED + DSP_OPTIONAL] + CPU_OPTIONAL + [
    (GPU, key) for key in [*GPU_REQUIRED, *GPU_OPTIONAL]]
FIRST_SIZES = {(DSP, 16): 32, (GPU, 4): 32, (DSP, 43): 4, (DSP, 44): 4}

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


def one_import(sizes_of=lambda pair: [FIRST_SIZES.get(pair, 8)]):
    """The log of one import that asks each key with these sizes."""
    questions = [f"asked {component} {key} {size}" for component, key in ASKED
                 for size in sizes_of((component, key))]
    return ["load", *questions, "unload"]


class Tests(unittest.TestCase):
    def assert_results(self, outcome, *expected):
        self.assertEqual(list(expected), outcome.results())

    def assert_loads(self, outcome, count):
        """Asserts that a provider was loaded this often, and unloaded each time."""
        self.assertEqual([count] * 2, [outcome.log.count(word) for word in ("load", "unload")])

    def assert_nothing_imported(self, outcome):
        """Of SCALAR, SCALAR, LIST, LIST: only the scalar query's first call answers."""
        self.assert_results(outcome, SCALAR_DEFAULT, REFUSED, LIST_DEFAULT, LIST_DEFAULT)
