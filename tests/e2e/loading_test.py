"""Which provider is loaded, if any, and what the queries answer without one."""

import json
import os

from expectations import (LIST, LIST_DEFAULT, LIST_IMPORTED, REFUSED, SCALAR, SCALAR_DEFAULT,
                          SCALAR_IMPORTED, ScenarioTest)
from scenario import PROVIDER, Result, Settings, run


class WithoutProvider(ScenarioTest):
    def test_argument_checks_come_before_the_first_use(self):
        outcome = run(["s 2 5 n0", "s 2 16 15", "s 2 43 3", "l 2 16 n5", SCALAR, "s 2 5 n0",
                       SCALAR, LIST, LIST, "l 4 16 64"])
        self.assert_results(
            outcome, Result(7, 8, ""), Result(4, 16, ""), Result(4, 4, ""), Result(7, 5, ""),
            SCALAR_DEFAULT, Result(7, 8, ""), REFUSED, LIST_DEFAULT, LIST_DEFAULT,
            Result(2, 64, ""))
        self.assertEqual("UNSUPPORTED_COMPONENT: 4\n", outcome.stderr)

    def test_a_refusal_needs_no_standard_error(self):
        if Settings.is_windows():
            self.skipTest("needs a client that is started with a closed stream")
        outcome = run(["l 4 16 64", SCALAR], "Scripted", before=lambda: os.close(2))
        self.assert_results(outcome, Result(2, 64, ""), SCALAR_IMPORTED)
        # What takes the closed descriptor's place gets no line of the library.
        self.assert_loads(outcome, 2)


class Finding(ScenarioTest):
    BESIDE, SEARCHED, OTHER = f"lib/{PROVIDER}", f"app/{PROVIDER}", "lib/other.dll"
    # The files, what the process has loaded before, whether it is imported from, all loads.
    ROWS = {
        "by the platform's search": ({SEARCHED: "Scripted"}, None, True, 2),
        "beside the library comes first":
            ({BESIDE: "Scripted", SEARCHED: "NoVersion"}, None, True, 2),
        "one that loads ends the search":
            ({BESIDE: "NoVersion", SEARCHED: "Scripted"}, None, False, 2),
        "one that does not load is passed over":
            ({BESIDE: b"no library", SEARCHED: "Scripted"}, None, True, 2),
        "an empty file": ({BESIDE: b""}, None, False, 0),
        "no version export, though another module has it":
            ({BESIDE: "NoVersion", OTHER: "Scripted"}, OTHER, False, 3),
        "no query export, though another module has it":
            ({BESIDE: "NoQuery", OTHER: "Scripted"}, OTHER, False, 3),
        "one that the process has loaded stays": ({BESIDE: "Scripted"}, BESIDE, True, 1),
    }

    def test_rows(self):
        rows = dict(self.ROWS)
        if not Settings.is_windows():  # where this is the product's own name
            rows["another kind"] = ({"lib/ZynSystemInfo.dll": "Scripted"}, None, False, 0)
        for name, (files, loaded, imported, loads) in rows.items():
            with self.subTest(name):
                before = [f"load {loaded}"] if loaded else []
                outcome = run([*before, SCALAR, SCALAR, LIST, LIST], files=files)
                if imported:
                    self.assert_results(outcome, *[SCALAR_IMPORTED] * 2, *[LIST_IMPORTED] * 2)
                else:
                    self.assert_nothing_imported(outcome)
                self.assert_loads(outcome, loads)
                if loaded:
                    self.assertEqual("unload", outcome.log[-1])


class Machines(ScenarioTest):
    """The example machines: their firmware tables replace this machine's."""

    def test_only_a_chip_without_a_row_asks_the_provider(self):
        known = []
        for file in sorted(Settings.machines.glob("*/capabilities.json")):
            machine = json.loads(file.read_text())
            known.append(machine["chip"]["known"])
            with self.subTest(file.parent.name):
                outcome = run(["s 3 4 64"], "Scripted", machine=file.parent)
                name = next(row["value"] for row in machine["capabilities"]
                            if (row["component"], row["key"]) == ("GPU", 4))
                name = name if known[-1] else "Turnstone 860"
                self.assertEqual(name.encode().hex() + "00", outcome.results()[0].answer)
                self.assert_loads(outcome, 0 if known[-1] else 1)
        self.assertEqual({True, False}, set(known))
