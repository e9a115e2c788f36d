"""What is asked of a provider, what its answers become, and what malformed ones do."""

from facts import (ASKED, CPU, DSP, FIRST_SIZES, LIST, LIST_DEFAULT, LIST_IMPORTED, OPTIONAL,
                   REFUSED, REQUIRED, SCALAR, SCALAR_DEFAULT, SCALAR_IMPORTED, Tests, one_import,
                   refuse)
from scenario import PROVIDER, Result, number, run

# Sizes that no answer has: more than memory holds, or more than is taken from a provider.
HOSTILE = [2**64 - 1, 2**63, 2**40, 65 << 20]


class Import(Tests):
    def test_every_key_is_asked_once_in_order_for_each_query_function(self):
        outcome = run([SCALAR, LIST, SCALAR, LIST], "Scripted")
        self.assert_results(outcome, *[SCALAR_IMPORTED, LIST_IMPORTED] * 2)
        # The example's list needs 40 bytes: asked again.
        growth = {(DSP, 16): [32, 40]}
        log = one_import(lambda pair: growth.get(pair, [FIRST_SIZES.get(pair, 8)]))
        self.assertEqual(log * 2, outcome.log)

    def test_every_imported_value_is_the_providers(self):
        queries = [f"{component} {key} 16" for component, key in ASKED
                   if (component, key) != (DSP, 16)]
        provided = run([f"load lib/{PROVIDER}", *(f"p {query}" for query in queries)], "Scripted")
        imported = run([f"s {query}" for query in queries], "Scripted").results()
        for query, line, result in zip(queries, provided.lines[1:], imported):
            with self.subTest(query):
                self.assertEqual(0, result.status)
                # The provider reports its answer's size, a number's query does not.
                answer = bytes.fromhex(line.split()[2])[: int(line.split()[1])].hex()
                self.assertEqual(answer, result.answer)

    def test_gpu_keys_2_and_3_answer_as_6_and_7(self):
        two, six, three, seven = run(["s 3 2 8", "s 3 6 8", "s 3 3 8", "s 3 7 8"], "Scripted").lines
        self.assertEqual((six, seven), (two, three))

    def test_a_name_longer_than_the_buffer_needs_its_size(self):
        self.assert_results(run(["s 3 4 12"], "Scripted"), Result(4, 14, ""))

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

    def test_optional_keys_are_optional(self):
        script = refuse([*OPTIONAL, (CPU, 1), (CPU, 2)])
        outcome = run([SCALAR, SCALAR, LIST, "s 2 38 8", "s 3 13 8", "s 5 2 8"], "Scripted", script)
        self.assert_results(outcome, SCALAR_IMPORTED, SCALAR_IMPORTED, LIST_IMPORTED,
                            Result(0, 8, number(1)), SCALAR_DEFAULT, SCALAR_DEFAULT)

    def test_a_provider_that_refuses_everything(self):
        outcome = run([SCALAR, SCALAR, LIST, LIST], "Scripted", ["0 0 reply 25 0 -"])
        self.assert_nothing_imported(outcome)
        self.assertEqual(one_import() * 2, outcome.log)

    def test_a_provider_that_asks_for_one_byte_more_each_time(self):
        outcome = run([SCALAR, LIST, LIST], "Scripted", ["2 16 grow 96 0 -"])
        self.assert_results(outcome, SCALAR_IMPORTED, LIST_IMPORTED, LIST_IMPORTED)
        sizes = [line.split()[2] for line in outcome.log if line.startswith("2 16 ")]
        self.assertEqual([str(size) for size in range(32, 97)] * 2, sizes)


class WireForms(Tests):
    """Rows: what the provider does with one key, and what the product then answers."""

    ACCEPTED = {
        "signed 32 bits drop the high half":
            ("2 1 answer 0 0 07000000ffffffff", "s 2 1 8", number(7)),
        "signed 32 bits are extended":
            ("2 41 answer 0 0 ffffffff00000000", "s 2 41 8", number(-1)),
        "unsigned 32 bits are not extended":
            ("2 4 answer 0 0 ffffffff01000000", "s 2 4 8", number(0xFFFFFFFF)),
        "8 bits drop the rest": ("2 38 answer 0 0 0201000000000000", "s 2 38 8", number(2)),
        "a flag looks at all bits": ("2 6 answer 0 0 0000000001000000", "s 2 6 8", number(1)),
        "64 bits are taken whole":
            ("2 7 answer 0 0 f1f2f3f4f5f6f7f8", "s 2 7 8", "f1f2f3f4f5f6f7f8"),
        "an empty name": ("3 4 answer 0 0 00", "s 3 4 12", "00"),
        "bytes after a name": ("3 4 answer 0 0 410042", "s 3 4 12", "4100"),
        "a name ended by the bytes added":
            ("3 4 reply 0 33 " + "41" * 32, "s 3 4 64", "41" * 32 + "00"),
        "an empty list": ("2 16 answer 0 0 " + number(0), "l 2 16 64", ""),
        "elements drop the high half":
            ("2 16 answer 0 0 " + number(1) + "0500000001000000", "l 2 16 64",
             number(0, 4) + number(5, 4)),
    }

    def test_accepted(self):
        for name, (rule, query, answer) in self.ACCEPTED.items():
            with self.subTest(name):
                first, again, confirmed = run([query, query, SCALAR], "Scripted", [rule]).results()
                self.assertEqual((0, answer), (first.status, first.answer))
                self.assertEqual((first, SCALAR_IMPORTED), (again, confirmed))

    MALFORMED = {
        "a number of 4 bytes": ["2 5 answer 0 0 01000000"],
        "a number of 9 bytes": ["2 5 answer 0 0 010203040506070809"],
        "a number reported longer than written": ["2 5 reply 0 16 0102030405060708"],
        "a refused call's bytes": ["2 5 reply 4 8 0102030405060708"],
        "status 4 for less than was offered": ["2 5 reply 4 7 -"],
        "a status above the known ones": ["2 5 reply 4294967295 8 0102030405060708"],
        "a name without an end": ["3 4 reply 0 4 41424344"],
        "a list of 7 bytes": ["2 16 answer 0 0 00000000000000"],
        "a list shorter than its count": ["2 16 answer 0 0 " + number(1)],
        "a list longer than its count": ["2 16 answer 0 0 " + number(1) * 3],
        "a count that wraps around": ["2 16 answer 0 0 " + number(1 << 61)],
    } | {
        f"status {status}, size {size}":
            [f"{key} reply {status} {size} -" for key in ("2 5", "2 16", "3 4")]
        for status in (0, 4) for size in HOSTILE
    }

    def test_malformed(self):
        for name, script in self.MALFORMED.items():
            with self.subTest(name):
                keys = [tuple(map(int, rule.split()[:2])) for rule in script]
                outcome = run(["s 2 5 8", "s 2 5 8", LIST, LIST], "Scripted", script)
                number_of_5 = SCALAR_DEFAULT if (DSP, 5) in keys else SCALAR_IMPORTED
                list_of_16 = LIST_DEFAULT if (DSP, 16) in keys else LIST_IMPORTED
                self.assert_results(outcome, number_of_5, REFUSED, list_of_16, list_of_16)

    def test_malformed_optional_keys_do_no_harm(self):
        rows = {"a float of 8 bytes": ("2 43 answer 0 0 0000803f00000000", "s 2 43 8"),
                "a flag of 1 byte": ("2 29 answer 0 0 01", "s 2 29 8")}
        rows |= {f"size {size}": (f"2 29 reply 0 {size} -", "s 2 29 8") for size in HOSTILE}
        for name, (rule, query) in rows.items():
            with self.subTest(name):
                malformed, confirmed = run([query, SCALAR], "Scripted", [rule]).results()
                self.assertEqual(0, int(malformed.answer, 16))
                self.assertEqual(SCALAR_IMPORTED, confirmed)
