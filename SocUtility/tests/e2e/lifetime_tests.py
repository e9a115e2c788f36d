"""Threads, unloading, providers that ask back, memory that runs out."""

from facts import (LIST, LIST_DEFAULT, LIST_IMPORTED, REFUSED, SCALAR, SCALAR_DEFAULT,
                   SCALAR_IMPORTED, Tests)
from scenario import Result, Settings, run


def loads(outcome):
    return [line for line in outcome.log if "load" in line]


class Lifetime(Tests):
    def test_a_provider_that_asks_back_is_refused(self):
        product = Settings.product()
        outcome = run([SCALAR, LIST], "Scripted", [f"2 1 call 0 0 {product}"])
        self.assert_results(outcome, SCALAR_IMPORTED, LIST_IMPORTED)
        self.assertEqual(["call 25 25"] * 2, [line for line in outcome.log if "call" in line])

    def test_threads_that_ask_first_together_share_one_attempt(self):
        name = b"Turnstone 860\0"
        scalar, listed = Result(0, len(name), name.hex()), LIST_IMPORTED
        for _ in range(5):
            outcome = run(["threads 32 s 3 4 64 l 2 16 64"], "Scripted")
            self.assert_results(outcome, *[scalar, listed] * 32)
            self.assertEqual(["load", "unload"] * 2, loads(outcome))

    def test_threads_whose_attempt_fails_get_an_answer_once(self):
        outcome = run(["threads 32 s 3 4 64 l 2 16 64"])
        scalars = outcome.results()[::2]
        self.assertEqual(1, sum(result.status == 0 for result in scalars))
        self.assertEqual({0, 25}, {result.status for result in scalars})
        self.assertEqual({LIST_DEFAULT}, set(outcome.results()[1::2]))

    def test_a_hundred_loads_and_unloads_leave_nothing_behind(self):
        cycle = f"{SCALAR} {LIST}"
        outcome = run([f"cycle 10 {cycle}", "measure", f"cycle 100 {cycle}", "measure"], "Scripted")
        before, after = (list(map(int, outcome.lines.pop(at).split())) for at in (20, -1))
        self.assert_results(outcome, *[SCALAR_IMPORTED, LIST_IMPORTED] * 110)
        self.assertEqual(["load", "unload"] * 220, loads(outcome))
        handles, modules, memory = (then - now for now, then in zip(before, after, strict=True))
        self.assertEqual(0, modules)
        # winpthread, which GCC links into the x64 image, keeps two handles for a thread that used it
        # when the image is unloaded.
        self.assertLessEqual(handles, 2 * 100 if Settings.is_windows_x64() else 0)
        # Blocks where they are counted, so that one lost each time shows; on Windows whole pages.
        self.assertLess(memory, 1 << 20 if Settings.is_windows() else 1 << 10)

    def test_any_allocation_may_fail(self):
        rows = {SCALAR: (SCALAR_IMPORTED, {SCALAR_IMPORTED, SCALAR_DEFAULT, REFUSED}),
                LIST: (LIST_IMPORTED, {LIST_IMPORTED, LIST_DEFAULT, Result(25, 64, "")})}
        for query, (imported, allowed) in rows.items():
            failed = True
            n = 0
            while failed:
                n += 1
                outcome = run([f"failalloc {n} {query}", query], "Scripted")
                if outcome.lines[0] == "unsupported":
                    self.skipTest("a sanitizer or the system owns the allocation functions")
                first, second = outcome.results()
                failed = first.remarks == ("failed",)
                first = first._replace(remarks=())
                with self.subTest(query, allocation=n):
                    self.assertIn(first, allowed)
                    self.assertEqual(outcome.log.count("load"), outcome.log.count("unload"))
                    if first.status != 0:
                        # Nothing was attempted, or not to its end: now it is.
                        self.assertEqual(imported, second)
                    else:
                        self.assertIn(second, {first, REFUSED} if query == SCALAR else {first})
            self.assertEqual(imported, first)
            self.assertGreater(n, 50)
