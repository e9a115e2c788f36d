"""Failures while a provider is asked: exceptions, hardware faults, lack of memory."""

from expectations import (LIST, LIST_DEFAULT, LIST_IMPORTED, LIST_REFUSED, REFUSED, SCALAR,
                          SCALAR_DEFAULT, SCALAR_IMPORTED, ScenarioTest)
from scenario import Result, Settings, run

FIRST_KEY, MIDDLE_KEY, LAST_KEY = "2 1", "2 17", "3 13"
# What Throwing.cpp throws.
INT, OWN_TYPE, THROWN_AGAIN, RUNTIME_ERROR, NOTHING = range(1, 6)


class Exceptions(ScenarioTest):
    def test_one_of_any_compiler_fails_the_import_and_the_next_query_imports_again(self):
        rows = [(FIRST_KEY, INT), (MIDDLE_KEY, OWN_TYPE), (LAST_KEY, THROWN_AGAIN)]
        for provider in ["Scripted", *(["ThrowingMsvc"] if Settings.is_windows() else [])]:
            for key, kind in rows:
                with self.subTest(provider, key=key):
                    # Each thread of its own, so that a mutex which stays locked shows.
                    outcome = run([SCALAR, LIST, f"threads 2 {SCALAR} {LIST}", SCALAR, LIST],
                                  provider, [f"{key} except {kind} 0 -"])
                    self.assert_results(outcome, *[REFUSED, LIST_REFUSED] * 3)
                    self.assert_loads(outcome, 6)
                    if kind == OWN_TYPE:
                        # The provider's own destructors run before it is unloaded.
                        attempts = "\n".join(outcome.log).split("unload")[:-1]
                        self.assertEqual([["left", "destroyed"]] * 6,
                                         [attempt.split()[-2:] for attempt in attempts])

    def test_a_runtime_error_of_the_own_compiler_fails_the_key(self):
        script = [f"2 3 except {RUNTIME_ERROR} 0 -", f"2 4 except {NOTHING} 0 -"]
        outcome = run([SCALAR, SCALAR, LIST, LIST], "Scripted", script)
        self.assert_results(outcome, SCALAR_IMPORTED, REFUSED, LIST_IMPORTED, LIST_IMPORTED)
        self.assert_loads(outcome, 2)
        if not Settings.is_windows():  # there each library counts its exceptions itself
            self.assertNotIn("uncaught", outcome.log)


class Faults(ScenarioTest):
    FAULTED, LIST_FAULTED = (Result(0, size, "", ("faulted",)) for size in (8, 64))

    def setUp(self):
        if not Settings.is_windows():
            self.skipTest("on this system a program cannot continue after a fault")

    def test_a_handled_fault_counts_as_the_attempt(self):
        for key, listed in ((FIRST_KEY, LIST_DEFAULT), (MIDDLE_KEY, LIST_IMPORTED)):
            with self.subTest(key):
                outcome = run([SCALAR, f"threads 2 {SCALAR} {SCALAR}", SCALAR, LIST,
                               f"threads 2 {LIST} {LIST}", "s 2 5 n8"],
                              "Scripted", [f"{key} fault 0 0 -"])
                self.assert_results(
                    outcome, self.FAULTED, *[REFUSED] * 3, self.LIST_FAULTED, *[listed] * 2,
                    Result(7, 8, ""))

    def test_threads_that_wait_for_the_attempt_go_on_after_the_fault(self):
        outcome = run([f"threads 32 {SCALAR} {LIST}"], "Scripted", [f"{MIDDLE_KEY} fault 0 0 -"])
        for faulted, answer, results in ((self.FAULTED, REFUSED, outcome.results()[::2]),
                                         (self.LIST_FAULTED, LIST_IMPORTED,
                                          outcome.results()[1::2])):
            self.assertEqual([answer] * 15 + [faulted], sorted(results, key=lambda r: r.remarks))


class Allocations(ScenarioTest):
    """Each allocation of a first query fails once, of a library loaded for this query."""

    LIMIT = 150
    QUERIES = ("s 2 8 8", LIST)

    def sweep(self, query, provider, machine=None):
        # By preference; the first where nothing fails. A table that finds no memory counts as
        # absent, and its chip as unknown.
        answers = [first.results()[0] for first in (
            run([query], provider, machine=machine), run([query], provider), run([query]))]
        self.assertEqual(machine is not None, answers[0] != answers[1])
        commands = [line for n in range(1, self.LIMIT + 1)
                    for line in ("reload", f"failalloc {n} {query}", query)]
        outcome = run(commands, provider, machine=machine)
        results = outcome.results()
        if results[0].remarks == ("unsupported",):
            self.skipTest("a sanitizer owns the allocation functions")
        refused = Result(25, int(query.split()[-1]), "")
        failures = 0
        for n, (first, second) in enumerate(zip(results[::2], results[1::2], strict=True), 1):
            with self.subTest(query, provider=provider, allocation=n):
                failures += first.remarks == ("failed",)
                self.assertEqual((), first.remarks[1:])
                first = first._replace(remarks=())
                self.assertIn(first, [*answers, refused] if n <= failures else answers[:1])
                if first == refused:
                    # Nothing was attempted, or not to its end: now it is.
                    self.assertEqual(answers[0], second)
                else:
                    self.assertIn(second, [first, refused] if query[0] == "s" else [first])
        self.assert_loads(outcome, outcome.log.count("load"))
        print(f"  {query!r}, provider {provider}: {failures} allocations failed, one at a time")
        self.assertGreater(failures, 5)
        self.assertLess(failures, self.LIMIT)

    def test_of_an_unknown_chip(self):
        for query in self.QUERIES:
            self.sweep(query, "Scripted")
            self.sweep(query, None)

    def test_of_a_known_chip(self):
        for query in self.QUERIES:
            self.sweep(query, "Scripted", Settings.machines / "heron")
            self.sweep(query, None, Settings.machines / "heron")
