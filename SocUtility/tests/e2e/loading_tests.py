"""Which provider is loaded, if any, and what the queries answer without one."""

import json
import shutil
import struct
import subprocess
import unittest

from facts import (CPU, DSP, GPU, LIST, LIST_DEFAULT, LIST_IMPORTED, REFUSED, SCALAR,
                   SCALAR_DEFAULT, SCALAR_IMPORTED, Tests, one_import)
from scenario import PROVIDER, Result, Settings, number, run


class WithoutProvider(Tests):
    def test_scalar_answers_once_and_the_list_always(self):
        self.assert_nothing_imported(run([SCALAR, SCALAR, LIST, LIST]))

    def test_argument_checks_come_before_the_first_use(self):
        outcome = run(["s 2 5 n0", "s 2 16 15", "s 9 1 7", "s 2 43 3", "l 2 16 n5", SCALAR,
                       "s 2 5 n0", SCALAR])
        self.assert_results(
            outcome, Result(7, 8, ""), Result(4, 16, ""), Result(4, 8, ""), Result(4, 4, ""),
            Result(7, 5, ""), SCALAR_DEFAULT, Result(7, 8, ""), REFUSED)
        self.assertEqual("", outcome.stderr)

    def test_diagnostic_lines_reach_standard_error(self):
        outcome = run(["s 2 4294967295 8", "l 3 13 8", "l 9 1 0"])
        self.assertEqual([3, 3, 2], [result.status for result in outcome.results()])
        lines = ["DSP_INFO UNSUPPORTED_KEY: -1", "GPU_INFO UNSUPPORTED_KEY: 13",
                 "UNSUPPORTED_COMPONENT: 9"]
        self.assertEqual(lines, [line for line in outcome.stderr.splitlines() if line in lines])

    def test_version(self):
        self.assertEqual(["0 0 1"], run(["v"]).lines)


class Finding(Tests):
    QUERIES = [SCALAR, SCALAR, LIST, LIST]

    def test_by_the_platforms_search(self):
        outcome = run(self.QUERIES, "Scripted", place="app")
        self.assert_results(outcome, *[SCALAR_IMPORTED] * 2, *[LIST_IMPORTED] * 2)

    def test_beside_the_library_comes_first(self):
        beside = run(self.QUERIES, "Scripted", extra={f"app/{PROVIDER}": "NoVersion"})
        self.assert_results(beside, *[SCALAR_IMPORTED] * 2, *[LIST_IMPORTED] * 2)
        # One that loads ends the search, even when it is of no use.
        self.assert_nothing_imported(
            run(self.QUERIES, "NoVersion", extra={f"app/{PROVIDER}": "Scripted"}))

    def test_what_does_not_load_beside_the_library_is_passed_over(self):
        outcome = run(self.QUERIES, b"no library", extra={f"app/{PROVIDER}": "Scripted"})
        self.assert_results(outcome, *[SCALAR_IMPORTED] * 2, *[LIST_IMPORTED] * 2)

    def test_what_cannot_be_used(self):
        rows = {"no version export": ("NoVersion", ["load", "unload"] * 2),
                "no query export": ("NoQuery", ["load", "unload"] * 2),
                "no library": (b"text\n", []), "an empty file": (b"", [])}
        for name, (provider, log) in rows.items():
            with self.subTest(name):
                outcome = run(self.QUERIES, provider)
                self.assert_nothing_imported(outcome)
                self.assertEqual(log, outcome.log)

    def test_an_export_of_another_module_is_not_taken(self):
        for provider in ("NoVersion", "NoQuery"):
            with self.subTest(provider):
                outcome = run(["load lib/other.dll", *self.QUERIES], provider,
                              extra={"lib/other.dll": "Scripted"})
                self.assertEqual("loaded", outcome.lines.pop(0))
                self.assert_nothing_imported(outcome)

    def test_a_provider_that_the_process_has_loaded_stays(self):
        outcome = run([f"load lib/{PROVIDER}", SCALAR, LIST, "p 2 5 8"], "Scripted")
        self.assertEqual("loaded", outcome.lines.pop(0))
        self.assert_results(outcome, SCALAR_IMPORTED, LIST_IMPORTED, SCALAR_IMPORTED)
        asks = 2 * (len(one_import()) - 2 + 1) + 1
        self.assertEqual(["load", "unload"], [outcome.log[0], outcome.log[-1]])
        self.assertEqual(asks, len(outcome.log[1:-1]))
        self.assertNotIn("unload", outcome.log[:-1])


class Machines(Tests):
    """The machines of the examples: their firmware tables take the place of this machine's."""

    @classmethod
    def setUpClass(cls):
        # A tmpfs takes the place of the whole tree, since the folder need not exist here.
        show = "mount -t tmpfs none /sys && mkdir -p /sys/firmware/acpi/tables"
        use = ' && cp firmware/* /sys/firmware/acpi/tables && exec "$@"'
        namespace = ["unshare", "--mount", "--map-root-user", "sh", "-c"]
        cls.wrapper = [*namespace, show + use, "sh"]
        if Settings.is_windows() or shutil.which("unshare") is None or subprocess.run(
                [*namespace, show], capture_output=True, check=False).returncode != 0:
            raise unittest.SkipTest("only a Linux process can be shown other firmware tables, in a "
                                    "mount namespace")

    def run_on(self, folder, commands):
        # Made from a source, or captured.
        tables = {f"firmware/{signature}": (folder / name).read_bytes()
                  for signature in ("FACP", "PPTT")
                  for name in (f"{signature.lower()}.dat", signature) if (folder / name).exists()}
        return run(commands, "Scripted", extra=tables, wrapper=self.wrapper)

    def test_only_a_chip_without_a_row_asks_the_provider(self):
        known = []
        for file in sorted(Settings.machines.glob("*/capabilities.json")):
            machine = json.loads(file.read_text())
            known.append(machine["chip"]["known"])
            with self.subTest(file.parent.name):
                if known[-1]:
                    self.check_catalogue(file.parent, machine["capabilities"])
                else:
                    outcome = self.run_on(file.parent, [SCALAR, SCALAR])
                    self.assert_results(outcome, SCALAR_IMPORTED, SCALAR_IMPORTED)
        self.assertEqual({True, False}, set(known))

    def check_catalogue(self, folder, capabilities):
        numbers = {"DSP": DSP, "GPU": GPU, "CPU": CPU}
        expected = {f"{'l' if 'list' in row['type'] else 's'} {numbers[row['component']]} "
                    f"{row['key']} 64": wire_form(row) for row in capabilities}
        outcome = self.run_on(folder, expected)
        for (query, answer), result in zip(expected.items(), outcome.results(), strict=True):
            self.assertEqual((query, 0, answer), (query, result.status, result.answer))
        self.assertEqual([], outcome.log, "the provider was opened")


def wire_form(row):
    """The answer that a row of a capabilities document stands for."""
    kind, value = row["type"], row["value"]
    if kind == "f32":
        return struct.pack("<f", value).hex()
    if kind == "string":
        return value.encode().hex() + "00"
    if kind.startswith("list"):
        return "".join(number(0, 4) + number(element, 4) for element in value)
    return number(int(value))
