"""soc-info check-provider over good and faulty libraries, as the writer of a provider meets it."""

import json
import os
import shutil
import signal
import unittest

from soc_info import (HOSTILE_NAME, HOSTILE_NAME_TEXT, HOSTILE_NAME_VALUE, NO_PROVIDER, ON_WINDOWS,
                      OWN_FAULT, PROVIDER, RUNTIME_ERROR, Tests)

COUNTS, DOES_NOT_COUNT, BAD_INPUT = 0, 1, 2


class CheckProviderTest(Tests):
    def check(self, library, *script, timeout="20"):
        """The exit status, the document, and its rows by key."""
        result = self.run_tool("check-provider", library, "--json", "--timeout", timeout,
                               script=script)
        document = json.loads(result.stdout)
        return result.returncode, document, {(row["component"], row["key"]): row
                                             for row in document["keys"]}

    def text(self, *script, before=None):
        return self.run_tool("check-provider", PROVIDER, script=script, before=before)

    @unittest.skipUnless(os.environ["EXAMPLE_PROVIDER"], "built without the examples")
    def test_example_counts(self):
        status, document, rows = self.check(os.environ["EXAMPLE_PROVIDER"])
        self.assertEqual((status, document["importCounts"]), (COUNTS, True))
        self.assertEqual([document[name] for name in ("nameLookedFor", "accepted", "stopped",
                                                      "statuses")],
                         [True, True, None, {"DSP": 0, "GPU": 0}])
        # The end-to-end tests know the whole order.
        self.assertEqual([len(rows), *list(rows)[24:26]], [56, ("DSP", 17), ("DSP", 26)])
        self.assertEqual([rows["DSP", key]["required"] for key in (28, 29)], [True, False])
        self.assertEqual([rows[key]["value"] for key in [("DSP", 16), ("DSP", 43), ("GPU", 4)]],
                         [[1, 2, 4, 6], 1.5, "Turnstone 860"])
        self.assertEqual(rows["DSP", 16]["calls"], 2)  # it does not fit into the first 32 bytes

    def test_keys_that_fail_tell_why_and_decide_the_verdict(self):
        for rule, exit_status, dsp_status, message, call in [
            ("17 reply 3 8 -", DOES_NOT_COUNT, -2, "GetCapability failed", (3, 8, 8)),
            ("44 reply 3 4 -", COUNTS, 1, "GetCapability failed", (3, 4, 4)),
            ("3 reply 0 4 -", DOES_NOT_COUNT, -2, "Result buffer size mismatch", (0, 8, 4)),
            ("16 reply 0 4 -", DOES_NOT_COUNT, -2, "bad vector format", (0, 32, 4)),
        ]:
            with self.subTest(rule):
                status, document, rows = self.check(PROVIDER, "2 " + rule)
                row = rows["DSP", int(rule.split()[0])]
                self.assertEqual((status, document["statuses"]["DSP"], document["accepted"]),
                                 (exit_status, dsp_status, True))
                self.assertEqual((row["answered"], row["value"], row["message"]),
                                 (False, None, message))
                self.assertEqual((row["status"], row["offered"], row["reported"]), call)
                text = self.text("2 " + rule).stdout
                self.assertIn("no: {} (status {}, {} bytes offered, {} reported)"
                              .format(message, *call), text)
                self.assertRegex(text, "DSP keys +{} keys missing: {}\n".format(
                    "required" if dsp_status == -2 else "optional", rule.split()[0]))

    def test_library_that_stops_the_process_is_reported_with_the_step(self):
        of_this_system = [] if ON_WINDOWS else [
            ("2 17 signal 34 0 -", "DSP 17", "crash", 24),  # a signal without a description
            ("2 17 write 3 0 no JSON", "DSP 17", "crash", 24),
        ]
        for rule, at, how, rows_before in [
            ("2 17 abort 0 0 -", "DSP 17", "crash", 24),
            ("2 1 quit 0 0 -", "DSP 1", "crash", 0),
            ("2 44 hang 0 0 -", "DSP 44", "hang", 42),
            ("0 0 abort 0 0 -", "unload", "crash", 56),
            *of_this_system,
        ]:
            with self.subTest(rule):
                status, document, rows = self.check(PROVIDER, rule,
                                                    timeout="1" if how == "hang" else "20")
                self.assertEqual((status, document["importCounts"]), (DOES_NOT_COUNT, False))
                self.assertEqual((document["stopped"]["at"], document["stopped"]["how"], len(rows)),
                                 (at, how, rows_before))
        # A parent may have left this signal ignored, and then children have no status. Wine
        # does not work then.
        parent = None if ON_WINDOWS else lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN)
        result = self.text("2 17 abort 0 0 -", before=parent)
        self.assertIn("crash        at DSP 17: " + ("e" if ON_WINDOWS else "signal 6"),
                      result.stdout)
        self.assertIn("would not come unharmed out of the import", result.stdout)

    def test_exception_fails_the_key_or_the_import_as_in_the_library(self):
        # The answer before it is larger than what is offered when the exception comes.
        _, document, rows = self.check(PROVIDER, RUNTIME_ERROR, "2 2 reply 4 4000 -")
        self.assertEqual((document["exception"], len(rows)), (None, 56))
        self.assertEqual([rows["DSP", 3][name] for name in ("message", "status", "reported")],
                         ['it threw a std::runtime_error, "thrown by the provider"', None, 8])
        status, document, rows = self.check(PROVIDER, OWN_FAULT)
        self.assertEqual((status, document["stopped"], document["exception"], len(rows)),
                         (DOES_NOT_COUNT, None, {"at": "DSP 3", "text": None}, 2))
        self.assertIn("every query would fail with 25", self.text(OWN_FAULT).stdout)

    def test_what_the_library_prints_or_answers_is_not_taken_for_the_report(self):
        script = ['2 2 write 1 0 {"step": "exit"}', HOSTILE_NAME]
        status, document, rows = self.check(PROVIDER, *script)
        self.assertEqual((status, len(rows), document["stopped"]), (COUNTS, 56, None))
        self.assertEqual(rows["GPU", 4]["value"], HOSTILE_NAME_VALUE)
        result = self.text(*script)
        self.assertIn(HOSTILE_NAME_TEXT, result.stdout)
        self.assertIn('{"step": "exit"}', result.stderr)
        if not ON_WINDOWS:  # the report must not get the descriptor of a closed standard error
            result = self.text("2 2 write 1 0 text", before=lambda: os.close(2))
            self.assertEqual(result.returncode, COUNTS, result.stdout)

    def test_library_without_the_export_is_rejected_unasked(self):
        status, document, rows = self.check(NO_PROVIDER)
        self.assertEqual((status, document["accepted"], document["reason"], rows),
                         (DOES_NOT_COUNT, False, "it lacks the export Soc_GetCapability", {}))

    def test_other_file_name_is_noted_and_the_file_is_the_one_named(self):
        shutil.copy(PROVIDER, self.folder / "a build.dll")
        result = self.run_tool("check-provider", "a build.dll")
        self.assertEqual(result.returncode, COUNTS, result.stderr)
        self.assertIn("note         found by the library only under the name Rz", result.stdout)

    def test_what_cannot_be_loaded_is_bad_input(self):
        for file, message in [("missing.dll", 'missing.dll": '), (__file__, "load library failed"),
                              (".", "not a regular file")]:
            with self.subTest(file):
                self.assert_refused(self.run_tool("check-provider", file), message)
        for seconds in ("0", "nan"):
            self.assert_refused(self.run_tool("check-provider", PROVIDER, "--timeout", seconds), "")


if __name__ == "__main__":
    unittest.main()
