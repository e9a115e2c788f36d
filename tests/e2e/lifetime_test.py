"""Threads, unloading, and providers that query the library."""

from expectations import (DSP, LIST, LIST_DEFAULT, LIST_IMPORTED, LIST_REFUSED, REFUSED, SCALAR,
                          SCALAR_DEFAULT, SCALAR_IMPORTED, ScenarioTest, refuse)
from scenario import Settings, run


class Lifetime(ScenarioTest):
    def test_a_provider_that_asks_back_gets_what_needs_no_attempt(self):
        """The first attempt refuses both queries; the second refuses its own query only."""
        rows = {"scalar first": ([SCALAR, LIST], [SCALAR_IMPORTED, LIST_IMPORTED], "call 0 25"),
                "list first": ([LIST, SCALAR], [LIST_IMPORTED, SCALAR_IMPORTED], "call 25 0")}
        for name, (queries, results, second) in rows.items():
            with self.subTest(name):
                outcome = run(queries, "Scripted", [f"2 1 call 0 0 {Settings.product()}"])
                self.assert_results(outcome, *results)
                self.assertEqual(["call 25 25", second],
                                 [line for line in outcome.log if "call" in line])

    def test_threads_that_ask_first_together_share_one_attempt(self):
        for _ in range(5):
            outcome = run([f"threads 32 {SCALAR} {LIST}"], "Scripted")
            self.assert_results(outcome, *[SCALAR_IMPORTED, LIST_IMPORTED] * 16)
            self.assert_loads(outcome, 2)

    def test_threads_whose_attempt_fails_get_an_answer_once(self):
        # An import takes long enough that other threads wait for it.
        for _ in range(5):
            outcome = run([f"threads 32 {SCALAR} {LIST}"], "Scripted", refuse([(DSP, 17)]))
            scalars = outcome.results()[::2]
            self.assertEqual([SCALAR_IMPORTED, *[REFUSED] * 15], sorted(scalars))
            self.assertEqual([LIST_IMPORTED] * 16, outcome.results()[1::2])

    def test_a_hundred_loads_and_unloads_leave_nothing_behind(self):
        throw = ["2 17 except 2 0 -"]
        rows = [("Scripted", [], SCALAR_IMPORTED, LIST_IMPORTED),
                (None, [], SCALAR_DEFAULT, LIST_DEFAULT),
                ("Scripted", throw, REFUSED, LIST_REFUSED)]
        if Settings.is_windows():
            rows.append(("ThrowingMsvc", throw, REFUSED, LIST_REFUSED))
        cycle = ["reload", SCALAR, LIST]
        for provider, script, *answers in rows:
            with self.subTest(provider, script=script):
                outcome = run([*cycle * 10, "measure", *cycle * 100, "measure"], provider, script)
                before, after = (list(map(int, outcome.lines.pop(at).split())) for at in (20, -1))
                self.assert_results(outcome, *answers * 110)
                self.assert_loads(outcome, 0 if provider is None else 220)
                self.assertEqual(before[0], after[0], "handles")
                self.assertLessEqual(abs(after[1] - before[1]), Settings.block_tolerance,
                                     f"blocks {before} {after}")
