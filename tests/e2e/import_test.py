"""What a provider is asked, and the effect of keys that it does not answer."""

from expectations import (ASKED, DSP, IMPORT, LIST, LIST_DEFAULT, LIST_IMPORTED, OPTIONAL, REFUSED,
                          REQUIRED, SCALAR, SCALAR_DEFAULT, SCALAR_IMPORTED, ScenarioTest, refuse)
from scenario import Result, number, run

# Sizes that no answer has: more than memory holds, or more than is taken from a provider.
HOSTILE = [2**64 - 1, 2**63, 2**40, 65 << 20]


class Import(ScenarioTest):
    def test_every_key_is_asked_once_in_order_for_each_query_function(self):
        outcome = run([SCALAR, LIST, SCALAR, LIST, "s 2 5 n8"], "Scripted")
        self.assert_results(outcome, *[SCALAR_IMPORTED, LIST_IMPORTED] * 2, Result(7, 8, ""))
        # The example's list needs 40 bytes: asked again.
        after = IMPORT.index("asked 2 16 32") + 1
        self.assertEqual([*IMPORT[:after], "asked 2 16 40", *IMPORT[after:]] * 2, outcome.log)

    def test_without_one_required_key_nothing_counts(self):
        for component, key in REQUIRED:
            with self.subTest(component=component, key=key):
                script = refuse([(component, key)])
                query = "s 2 5 8" if (component, key) != (DSP, 5) else "s 2 4 8"
                first, later, listed = run([query, query, LIST], "Scripted", script).results()
                # What was imported before and after the refused key stays all the same.
                self.assertEqual(0, first.status)
                self.assertNotEqual(number(0), first.answer)
                self.assertEqual(REFUSED, later)
                missing = (component, key) == (DSP, 16)
                self.assertEqual(LIST_DEFAULT if missing else LIST_IMPORTED, listed)

    def test_without_the_optional_keys_the_others_count(self):
        for reply in ["reply 3 0 -", *(f"reply 0 {size} -" for size in HOSTILE)]:
            with self.subTest(reply):
                script = [f"{component} {key} {reply}" for component, key in OPTIONAL]
                outcome = run([SCALAR, SCALAR, LIST, "s 2 29 8", "s 3 13 8"], "Scripted", script)
                self.assert_results(outcome, SCALAR_IMPORTED, SCALAR_IMPORTED, LIST_IMPORTED,
                                    SCALAR_DEFAULT, SCALAR_DEFAULT)

    def test_a_provider_that_refuses_everything_is_asked_everything(self):
        outcome = run([SCALAR, SCALAR, LIST, LIST], "Scripted", refuse(ASKED))
        self.assert_nothing_imported(outcome)
        self.assertEqual(IMPORT * 2, outcome.log)
