"""End-to-end tests: the real shared library, in fresh processes, with providers beside it."""

import argparse
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

from scenario import PROVIDER, Result, Settings, number, run

DSP, GPU, CPU = 2, 3, 5
DSP_REQUIRED = [*range(1, 17), *range(18, 26), 17, 26, 27, 28]
DSP_OPTIONAL = [*range(29, 35), *range(36, 45)]
GPU_REQUIRED = [1, 4]
GPU_OPTIONAL = range(5, 14)
REQUIRED = [(DSP, key) for key in DSP_REQUIRED] + [(GPU, key) for key in GPU_REQUIRED]
OPTIONAL = [(DSP, key) for key in DSP_OPTIONAL] + [(GPU, key) for key in GPU_OPTIONAL]
ASKED = [(DSP, key) for key in DSP_REQUIRED + DSP_OPTIONAL] + [
    (CPU, 1), (CPU, 2)] + [(GPU, key) for key in [*GPU_REQUIRED, *GPU_OPTIONAL]]
FIRST_SIZES = {(DSP, 16): 32, (GPU, 4): 32, (DSP, 43): 4, (DSP, 44): 4}

# Sizes that no answer has: more than memory, or more than is taken from a provider.
HOSTILE = [2**64 - 1, 2**63, 2**40, 65 << 20]

SCALAR = "s 2 5 8"
LIST = "l 2 16 64"
# What they give from the example provider, and without a provider.
SCALAR_IMPORTED = Result(0, 8, number(6))
LIST_IMPORTED = Result(0, 32, "".join(number(0, 4) + number(n, 4) for n in (1, 2, 4, 6)))
SCALAR_DEFAULT = Result(0, 8, number(0))
LIST_DEFAULT = Result(0, 0, "")
REFUSED = Result(25, 8, "")


def refuse(keys):
    return [f"{component} {key} reply 3 0 -" for component, key in keys]


def one_import(sizes_of=lambda pair: [FIRST_SIZES.get(pair, 8)]):
    """The log of one import that asks each key with these sizes."""
    questions = [f"{component} {key} {size}" for component, key in ASKED
                 for size in sizes_of((component, key))]
    return ["load", *questions, "unload"]


class Tests(unittest.TestCase):
    def assert_results(self, outcome, *expected):
        self.assertEqual(list(expected), outcome.results())

    def assert_nothing_imported(self, outcome):
        """Of SCALAR, SCALAR, LIST, LIST: only the scalar query's first call answers."""
        self.assert_results(outcome, SCALAR_DEFAULT, REFUSED, LIST_DEFAULT, LIST_DEFAULT)


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


class Import(Tests):
    def test_every_key_is_asked_once_in_order_for_each_query_function(self):
        outcome = run([SCALAR, LIST, SCALAR, LIST], "Scripted")
        self.assert_results(outcome, *[SCALAR_IMPORTED, LIST_IMPORTED] * 2)
        # The example's list needs 40 bytes: asked again.
        growth = {(DSP, 16): [32, 40]}
        log = one_import(lambda pair: growth.get(pair, [FIRST_SIZES.get(pair, 8)]))
        self.assertEqual(log * 2, outcome.log)

    def test_every_imported_value_is_the_providers(self):
        queries = [f"{component} {key} 16" for component, key in ASKED if (component, key) != (DSP, 16)]
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
        "signed 32 bits drop the high half": ("2 1 answer 0 0 07000000ffffffff", "s 2 1 8", number(7)),
        "signed 32 bits are extended": ("2 41 answer 0 0 ffffffff00000000", "s 2 41 8", number(-1)),
        "unsigned 32 bits are not extended": ("2 4 answer 0 0 ffffffff01000000", "s 2 4 8", number(0xFFFFFFFF)),
        "8 bits drop the rest": ("2 38 answer 0 0 0201000000000000", "s 2 38 8", number(2)),
        "a flag looks at all bits": ("2 6 answer 0 0 0000000001000000", "s 2 6 8", number(1)),
        "64 bits are taken whole": ("2 7 answer 0 0 f1f2f3f4f5f6f7f8", "s 2 7 8", "f1f2f3f4f5f6f7f8"),
        "an empty name": ("3 4 answer 0 0 00", "s 3 4 12", "00"),
        "bytes after a name": ("3 4 answer 0 0 410042", "s 3 4 12", "4100"),
        "a name ended by the bytes added": ("3 4 reply 0 33 " + "41" * 32, "s 3 4 64", "41" * 32 + "00"),
        "an empty list": ("2 16 answer 0 0 " + number(0), "l 2 16 64", ""),
        "elements drop the high half": ("2 16 answer 0 0 " + number(1) + "0500000001000000", "l 2 16 64", "0000000005000000"),
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
        f"status {status}, size {size}": [f"{key} reply {status} {size} -" for key in ("2 5", "2 16", "3 4")]
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

    def test_known_chip_opens_no_provider(self):
        # The rows of the development data that firmware tables can be made for here.
        wrapper = firmware_wrapper()
        if Settings.is_windows() or wrapper is None:
            self.skipTest("other firmware tables can be shown to a Linux process only, as root")
        tables = {"firmware/FACP": table(b"FACP", bytes(232)),
                  "firmware/PPTT": table(b"PPTT", id_structure(0x21, 1))}
        outcome = run(["s 3 4 64", "s 3 4 64", LIST], "Scripted", extra=tables, wrapper=wrapper)
        name = b"Avocet 810-X\0"
        answer = Result(0, len(name), name.hex())
        self.assert_results(outcome, answer, answer, Result(0, 8, "0000000006000000"))
        self.assertEqual([], outcome.log)


def table(signature, body):
    """An ACPI table with this body after its header."""
    length = 36 + len(body)
    return struct.pack("<4sIBB6s8sIII", signature, length, 1, 0, b"", b"", 0, 0, 0) + body


def id_structure(level1, level2):
    return struct.pack("<BBHIQQHHH", 2, 30, 0, 0, level1, level2, 0, 0, 0)


def firmware_wrapper():
    """A command that runs another with firmware/ as its firmware tables; None when not possible."""
    # A tmpfs takes the place of the whole tree, since the folder need not exist on this machine.
    show = ("mount -t tmpfs none /sys && mkdir -p /sys/firmware/acpi/tables"
            " && { [ ! -d firmware ] || cp firmware/* /sys/firmware/acpi/tables; } && exec \"$@\"")
    wrapper = ["unshare", "--mount", "--map-root-user", "sh", "-c", show, "sh"]
    if shutil.which("unshare") is None:
        return None
    tried = subprocess.run([*wrapper, "true"], capture_output=True, check=False)
    return wrapper if tried.returncode == 0 else None


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
            self.assertEqual(["load", "unload"] * 2, [line for line in outcome.log if "load" in line])

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
        self.assertEqual([f"{SCALAR_IMPORTED}", f"{LIST_IMPORTED}"] * 110,
                         [f"{result}" for result in outcome.results()])
        self.assertEqual(["load", "unload"] * 220, [line for line in outcome.log if "load" in line])
        self.assertEqual(before[:2], after[:2], "handles and modules")
        # A single small block a round would show; the heap's own bookkeeping does not.
        self.assertLess(after[2] - before[2], 64 << 10 if Settings.is_windows() else 1 << 10)

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


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--library", type=pathlib.Path, required=True)
    parser.add_argument("--client", type=pathlib.Path, required=True)
    parser.add_argument("--providers", type=pathlib.Path, required=True, help="folder")
    parser.add_argument("--launcher", default="", help="command that starts the client")
    parser.add_argument("--sanitizers", default="")
    options, rest = parser.parse_known_args()
    Settings.library = options.library.resolve()
    Settings.client = options.client.resolve()
    Settings.providers = options.providers.resolve()
    Settings.launcher = options.launcher.split()
    Settings.sanitizers = options.sanitizers
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
