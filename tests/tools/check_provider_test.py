"""soc-info check-provider over good and faulty libraries, as the writer of a provider meets it."""

import json
import os
import shutil
import signal
import unittest

from soc_info import (HOSTILE_NAME, HOSTILE_NAME_TEXT, HOSTILE_NAME_VALUE, MANGLED,
                      NO_PROVIDER, NO_VERSION, ON_WINDOWS, OTHER_MACHINE, OWN_FAULT, PROVIDER,
                      RUNTIME_ERROR, Tests)

PASSES, FAILS, BAD_INPUT = 0, 1, 2


class CheckProviderTest(Tests):
    maxDiff = None

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
    def test_example_passes(self):
        status, document, rows = self.check(os.environ["EXAMPLE_PROVIDER"])
        self.assertEqual((status, document["passes"], document["findings"]), (PASSES, True, []))
        self.assertEqual([document[name] for name in ("nameLookedFor", "state", "statuses")],
                         [True, "succeeded", {"DSP": 0, "GPU": 0}])
        # The end-to-end tests know the whole order.
        self.assertEqual([len(rows), *list(rows)[24:26]], [56, ("DSP", 17), ("DSP", 26)])
        self.assertEqual([rows["DSP", key]["required"] for key in (28, 29)], [True, False])
        self.assertEqual([rows[key]["value"] for key in [("DSP", 16), ("DSP", 43), ("GPU", 4)]],
                         [[1, 2, 4, 6], 1.5, "Turnstone 860"])
        self.assertEqual(rows["DSP", 16]["calls"], 2)  # it does not fit into the first 32 bytes

    def test_keys_that_fail_tell_why_and_decide_the_verdict(self):
        for rule, exit_status, dsp_status, message, call in [
            ("17 reply 3 8 -", FAILS, -2, "GetCapability failed", (3, 8, 8)),
            ("44 reply 3 4 -", PASSES, 1, "GetCapability failed", (3, 4, 4)),
            ("3 reply 0 4 -", FAILS, -2, "Result buffer size mismatch", (0, 8, 4)),
            ("16 reply 0 4 -", FAILS, -2, "bad vector format", (0, 32, 4)),
            ("16 reply 0 16 0500000000000000", FAILS, -2,
             "vector buffer is too small: N is 5, which needs 48 bytes", (0, 32, 16)),
            ("16 reply 0 16 ffffffffffffffff", FAILS, -2, "vector buffer is too small: "
             "N is 18446744073709551615, which needs more bytes than there are", (0, 32, 16)),
        ]:
            with self.subTest(rule):
                status, document, rows = self.check(PROVIDER, "2 " + rule)
                row = rows["DSP", int(rule.split()[0])]
                self.assertEqual((status, document["statuses"]["DSP"], document["reason"]),
                                 (exit_status, dsp_status, None))
                self.assertEqual((row["answered"], row["value"], row["message"]),
                                 (False, None, message))
                self.assertEqual((row["status"], row["offered"], row["reported"]), call)
                text = self.text("2 " + rule).stdout
                self.assertIn("no: {} (status {}, {} bytes offered, {} reported)"
                              .format(message, *call), text)
                self.assertRegex(text, "DSP keys +{} keys missing: {}\n".format(
                    "required" if dsp_status == -2 else "optional", rule.split()[0]))

    def test_each_misbehaviour_is_named_with_its_step(self):
        """Rows: the script; each finding's kind, step and a part of its detail; the keys left."""
        ends = "exit" if ON_WINDOWS else "crash"  # abort is an exit there
        rows = [
            (["2 17 abort 0 0 -"], [(ends, "DSP 17", "")], 55),
            (["2 17 fault 0 0 -", "3 4 fault 0 0 -"],
             [("crash", "DSP 17", ""), ("crash", "GPU 4", "")], 54),
            (["2 1 quit 0 0 -"], [("exit", "DSP 1", "exit status 0")], 55),
            (["2 44 hang 0 0 -"], [("hang", "DSP 44", "not done within 1 s")], 55),
            ([f"2 {key} hang 0 0 -" for key in (1, 2, 3, 4)],
             [("hang", f"DSP {key}", "") for key in (1, 2, 3)], 0),  # each takes the time limit
            (["0 1 quit 0 0 -"], [("exit", "load", "exit status 0")], 0),
            (["0 1 hang 0 0 -"], [("hang", "load", "not done within 1 s")], 0),
            (["0 0 abort 0 0 -"], [(ends, "unload", "")], 56),
            ([OWN_FAULT, "3 4 except 2 0 -"],
             [("exception", "DSP 3", None), ("exception", "GPU 4", None)], 54),
            (["2 7 overrun 1 0 -"], [("overrun", "DSP 7", "8 bytes offered, 1 written after")], 56),
            (["2 7 overrun 16 3 -"], [("overrun", "DSP 7", "8 bytes offered, 3 written before"),
                                      ("overrun", "DSP 7", "8 bytes offered, 16 written after")],
             56),
            (["2 7 thread 60000 0 -", "2 8 length 0 0 -"],
             [("threads", "unload", " left running"),
              ("differs", "DSP 8 of the second import", "first ")], 56),
            (["2 7 upward 0 0 -"], [("float", "unload", "rounding mode")], 56),
            ([f"2 7 keep 0 0 {PROVIDER}"], [("loaded", "unload", "it stays loaded")], 56),
        ]
        if not ON_WINDOWS:
            rows += [(["2 17 signal 34 0 -"], [("crash", "DSP 17", "signal 34")], 55),
                     (["2 17 write 3 0 no report"], [("report", "DSP 17", "not its own")], 55)]
        for script, expected, keys in rows:
            with self.subTest(script):
                status, document, asked = self.check(PROVIDER, *script, timeout="1" if "hang" in
                                                     script[0] else "20")
                found = document["findings"]
                self.assertEqual([(finding["what"], finding["at"]) for finding in found],
                                 [finding[:2] for finding in expected])
                for finding, (_, _, detail) in zip(found, expected):
                    self.assertTrue(finding["detail"] is detail or detail in finding["detail"])
                    self.assertEqual(os.path.basename(finding["library"]),
                                     os.path.basename(PROVIDER))
                self.assertEqual(len(asked), keys)
                warns = expected[0][0] == "loaded"
                self.assertEqual((status, document["passes"]), (PASSES if warns else FAILS, warns))

    def test_findings_are_lines_of_the_text(self):
        # A parent may have left this signal ignored, and then children have no status. Wine
        # does not work then.
        parent = None if ON_WINDOWS else lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN)
        text = self.text("2 17 fault 0 0 -", "2 7 overrun 1 0 -", before=parent).stdout
        self.assertRegex(text, r'failure +overrun at DSP 7, in ".*dll": 8 bytes offered, 1 written')
        self.assertRegex(text, 'failure +crash at DSP 17, in ".*dll": ' +
                         ("exception 0xC0000005" if ON_WINDOWS else "signal 11"))
        self.assertIn("would not come unharmed out of the import", text)
        self.assertIn("every query would fail with 25", self.text(OWN_FAULT).stdout)
        self.assertRegex(self.text(f"2 7 keep 0 0 {PROVIDER}").stdout, "warning +loaded at unload")

    def test_runtime_error_fails_the_key_as_in_the_library(self):
        # The answer before it is larger than what is offered when the exception comes.
        _, document, rows = self.check(PROVIDER, RUNTIME_ERROR, "2 2 reply 4 4000 -")
        self.assertEqual((document["findings"], len(rows)), ([], 56))
        self.assertEqual([rows["DSP", 3][name] for name in ("message", "status", "reported")],
                         ['it threw a std::runtime_error, "thrown by the provider"', None, 8])

    def test_what_the_library_prints_or_answers_is_not_taken_for_the_report(self):
        script = ['2 2 write 1 0 {"step": "exit"}', HOSTILE_NAME]
        status, document, rows = self.check(PROVIDER, *script)
        self.assertEqual((status, len(rows), document["findings"]), (PASSES, 56, []))
        self.assertEqual(rows["GPU", 4]["value"], HOSTILE_NAME_VALUE)
        result = self.text(*script)
        self.assertIn(HOSTILE_NAME_TEXT, result.stdout)
        self.assertIn('{"step": "exit"}', result.stderr)
        if not ON_WINDOWS:  # the report must not get the descriptor of a closed standard error
            result = self.text("2 2 write 1 0 text", before=lambda: os.close(2))
            self.assertEqual(result.returncode, PASSES, result.stdout)

    def test_library_without_exports_is_rejected_unasked(self):
        for library, reason in [(NO_PROVIDER, "it lacks the export Soc_GetCapability"),
                                (NO_VERSION, "it lacks the export Soc_GetAPIVersion")]:
            status, document, rows = self.check(library)
            self.assertEqual((status, document["state"], document["reason"], rows),
                             (FAILS, "rejected", reason, {}))
        self.assertRegex(self.check(MANGLED)[1]["reason"],
                         r'export Soc_GetCapability \(it has .*\); declare it extern "C"')

    def test_other_file_name_is_noted_and_the_file_is_the_one_named(self):
        shutil.copy(PROVIDER, self.folder / "a build.dll")
        result = self.run_tool("check-provider", "a build.dll")
        self.assertEqual(result.returncode, PASSES, result.stderr)
        self.assertIn("note         found by the library only under the name Rz", result.stdout)

    def test_what_cannot_be_loaded_is_bad_input(self):
        (self.folder / "other").write_bytes(OTHER_MACHINE)
        for file, message in [("missing.dll", 'missing.dll": '), (__file__, "it is no library: "),
                              ("other", "it is for another machine, "),
                              (".", "not a regular file")]:
            with self.subTest(file):
                self.assert_refused(self.run_tool("check-provider", file), message)
        for seconds in ("0", "nan"):
            self.assert_refused(self.run_tool("check-provider", PROVIDER, "--timeout", seconds), "")


if __name__ == "__main__":
    unittest.main()
