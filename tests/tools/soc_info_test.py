"""soc-info as users see it: text, bad input, captures, and its report on a provider."""

import json
import os
import pathlib
import shutil
import unittest

import images
from soc_info import (HOSTILE_NAME, HOSTILE_NAME_TEXT, HOSTILE_NAME_VALUE, LIBRARY,
                      MACHINES, NO_PROVIDER, ON_WINDOWS, OTHER_LIBRARY, OTHER_MACHINE, OWN_FAULT,
                      PROVIDER, SOC_INFO, Tests, schema_faults)

FACP = (MACHINES / "heron" / "facp.dat").read_bytes()
PPTT = (MACHINES / "heron" / "pptt.dat").read_bytes()


class SocInfoTest(Tests):
    def dump(self, **tables):
        for name, content in tables.items():
            (self.folder / name).write_bytes(content)
        return self.folder

    def test_what_cannot_be_used_is_refused_by_name(self):
        (self.folder / "file").touch()
        (self.folder / "text.dll").write_text("text")
        (self.folder / "other.dll").write_bytes(OTHER_MACHINE)
        rows = [
            ({"PPTT": PPTT}, ["--tables", "."], "holds no dump of the FADT"),
            ({"FACP": FACP, "pptt.dat": b""}, ["--tables", "."], 'pptt.dat": empty'),
            ({"FACP": FACP, "PPTT": FACP}, ["--tables", "."], 'PPTT": no raw dump of the table'),
            ({"FACP": b"FAC"}, ["--tables", "."], 'FACP": no raw dump of the table FACP'),
            ({}, ["--tables", "missing"], "missing"),
            ({}, ["--tables", "file"], "not a directory"),
            ({}, ["nonsense"], ""),
            ({}, ["--tables"], ""),
            ({}, ["capture"], ""),
            ({}, ["--library", LIBRARY, "--tables", "."], "excludes"),
            ({}, ["--library", LIBRARY, "identify"], "identify takes no --library"),
            ({}, ["get", "DSP", "35"], 'no capability "DSP 35"'),
            ({}, ["--library", "missing.dll"], 'missing.dll": '),
            ({}, ["--library", "text.dll"], "it is no library: "),
            ({}, ["--library", "other.dll"], "it is for another machine, "),
            ({}, ["--library", PROVIDER], "lacks the export Soc_GetCapabilitySerialized"),
            ({}, ["--library", "."], "not a regular file"),
        ]
        for tables, arguments, message in rows:
            with self.subTest(arguments=arguments, message=message):
                self.dump(**tables)
                self.assert_refused(self.run_tool(*arguments), message)
                for name in tables:
                    (self.folder / name).unlink()
        self.dump(FACP=FACP)
        (self.folder / "PPTT").mkdir()
        self.assert_refused(self.run_tool("--tables", "."), 'PPTT": not a regular file')
        (self.folder / "PPTT").rmdir()
        if not ON_WINDOWS:
            (self.folder / "PPTT").symlink_to("nowhere")
            self.assert_refused(self.run_tool("--tables", "."), 'PPTT": ')
        os.truncate(self.folder / "FACP", (16 << 20) + 1)
        self.assert_refused(self.run_tool("--tables", "."), 'FACP": larger than 16 MiB')

    def test_options_may_precede_the_command(self):
        arguments = ["--tables", MACHINES / "heron"]
        self.assertEqual(self.run_tool("--json", "identify", *arguments).stdout,
                         self.run_tool("identify", *arguments, "--json").stdout)
        self.assertEqual(self.run_tool("--help").returncode, 0)

    def test_dump_that_is_cut_is_walked_to_its_end_with_a_warning(self):
        for length, is_found in [(59, False), (60, True)]:
            dumps = self.dump(FACP=FACP, PPTT=PPTT[:length])
            result = self.run_tool("identify", "--json", "--tables", dumps)
            self.assertIn(f"only {length} bytes", result.stderr)
            self.assertEqual(json.loads(result.stdout)["pptt"]["idStructure"] is not None, is_found)

    def test_missing_dump_is_no_missing_table(self):
        reason = "there is no dump of the PPTT; the machine may have one"
        self.dump(FACP=FACP)
        self.assertIn(f"none: {reason}", self.run_tool("--tables", ".").stdout)
        for document, is_known in [("{}", False), ("no JSON", False),
                                   ('{"pptt": {"read": false}}', True)]:
            (self.folder / "identify.json").write_text(document)
            self.assertEqual(reason in self.run_tool("--tables", ".").stdout, not is_known)

    def test_capture_replays_to_the_same_document(self):
        capture = self.folder / "new" / "capture"
        result = self.run_tool("capture", capture)
        if "nothing to capture" in result.stderr:
            self.assert_refused(result, "FADT")
            self.skipTest("this machine's tables cannot be read")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertLessEqual({path.name for path in capture.iterdir()},
                             {"FACP", "PPTT", "identify.json"})
        self.assertEqual(self.run_tool("identify", "--json", "--tables", capture).stdout,
                         (capture / "identify.json").read_text())
        # Not even an empty one: whoever made it can put a link into it meanwhile.
        (self.folder / "empty").mkdir()
        self.assertEqual(self.run_tool("capture", f"{self.folder}/slash/").returncode, 0)
        for directory in (capture, self.folder / "empty"):
            self.assert_refused(self.run_tool("capture", directory), "takes a new directory")

    def with_provider(self, library, *script, status=0, arguments=()):
        """This machine's document, with a library in the provider's place."""
        program = self.install(library)
        result = self.run_tool("--json", *arguments, program=program, script=script)
        document = json.loads(result.stdout)
        if document["chip"]["known"]:
            self.skipTest("this machine's chip is known, so no provider is asked")
        self.assertEqual((result.returncode, document["disagreements"]), (status, []))
        rows = {(row["component"], row["key"]): row for row in document["capabilities"]}
        return document, rows

    def test_provider_that_ends_the_process_is_named_with_its_key(self):
        first = "its first query"
        for script, what, at, verb in [
            ("2 17 fault 0 0 -", "crash", "DSP 17", "crashes"),
            ("2 17 quit 0 0 -", "exit", "DSP 17", "is ended"),
            ("2 17 hang 0 0 -", "hang", "DSP 17", "hangs"),
            ("0 1 quit 0 0 -", "exit", "load", "is ended"),
            ("0 0 quit 0 0 -", "exit", "unload", "is ended"),
        ]:
            with self.subTest(script):
                limit = ("--timeout", "1" if what == "hang" else "20")
                document, rows = self.with_provider(PROVIDER, script, "3 4 fault 0 0 -",
                                                    status=1, arguments=limit)
                self.assertEqual((document["provider"]["state"], document["answersFrom"]),
                                 ("stopped", None))
                found = [(finding["what"], finding["at"]) for finding in document["findings"]]
                self.assertEqual(found[:2], [(what if at != "unload" else "crash", first),
                                             (what, at) if at != "unload" else ("crash", "GPU 4")])
                self.assertEqual(("crash", "GPU 4") in found, at != "load")
                self.assertEqual({row["status"] for row in rows.values()}, {None})
                text = self.run_tool(*limit, program=self.install(PROVIDER),
                                     script=[script]).stdout
                self.assertRegex(text, f"program +a program that asks this library {verb} at {at}, "
                                       'in ".*RzSoCServiceUtils.dll"')

    def test_output_of_a_provider_is_not_in_the_document(self):
        self.with_provider(PROVIDER, "2 17 write 1 0 text")

    def test_get_prints_the_value_alone(self):
        program = self.install(PROVIDER)
        if self.with_provider(PROVIDER)[0]["provider"]["state"] == "succeeded":
            for capability, value in [(("DSP", "7"), "7516192768"), (("GPU", "4"), "Turnstone 860"),
                                      (("DSP", "16"), "[1,2,4,6]")]:
                result = self.run_tool("get", *capability, program=program)
                self.assertEqual((result.returncode, result.stdout), (0, value + "\n"))
            result = self.run_tool("get", "DSP", "7", "--json", program=program)
            document = json.loads(result.stdout)
            self.assertEqual((document["status"], document["value"]), (0, 7516192768))
        for script, status, message in [
            ("2 1 reply 3 0 -", 25, "DSP 7: status 25"),
            ("2 1 fault 0 0 -", None, "crash at its first query, in "),
        ]:
            result = self.run_tool("get", "DSP", "7", "--json", program=program, script=[script])
            self.assertEqual((result.returncode, json.loads(result.stdout)["status"]), (1, status))
            self.assertIn("soc-info: " + message, result.stderr)

    def test_paths_print_as_they_are(self):
        folder = self.folder / "\u00dcn\u00ef \u6f22\u5b57"
        folder.mkdir()
        shutil.copy(LIBRARY, folder)
        program = shutil.copy(SOC_INFO, folder)
        result = self.run_tool(program=program)
        self.assertIn(f'{folder.name}/{pathlib.Path(LIBRARY).name}"', result.stdout, result.stderr)

    def test_library_answers_and_sources_tell_provider_from_default(self):
        script = [HOSTILE_NAME, "2 43 reply 0 4 cdcccc3d", "2 44 reply 0 4 0000c07f",
                  "2 42 reply 3 0 -"]
        document, rows = self.with_provider(PROVIDER, *script)
        self.assertEqual(document["provider"]["state"], "succeeded")
        self.assertEqual(document["answersFrom"], "provider")
        self.assertFalse(document["scalarQueriesFail"])
        self.assertEqual([key for key, row in rows.items() if row["source"] == "default"],
                         [("DSP", 42), ("DSP", 45), ("DSP", 46), ("DSP", 47), ("DSP", 48)])
        self.assertEqual([rows["DSP", key]["value"] for key in (16, 43, 44)],
                         [[1, 2, 4, 6], 0.1, "NaN"])
        self.assertEqual(rows["GPU", 2]["value"], rows["GPU", 6]["value"])
        self.assertEqual(rows["GPU", 4]["value"], HOSTILE_NAME_VALUE)
        library = pathlib.PureWindowsPath(document["run"]["library"]["path"])
        self.assertEqual(library.parent.name, self.folder.name)
        self.assertEqual(document["run"]["library"]["interface"], "0.1")
        text = self.run_tool(program=self.install(PROVIDER), script=script).stdout
        self.assertIn(HOSTILE_NAME_TEXT, text)
        self.assertIn("  0.1 ", text)

    def test_import_without_a_required_key_is_incomplete(self):
        document, rows = self.with_provider(PROVIDER, "2 17 reply 3 0 -")
        self.assertEqual(document["provider"]["state"], "incomplete")
        self.assertEqual(document["provider"]["missing"], ["DSP 17"])
        self.assertEqual(document["answersFrom"], "unknownRow")
        self.assertTrue(document["scalarQueriesFail"])
        self.assertEqual([(rows["DSP", key]["status"], rows["DSP", key]["value"],
                           rows["DSP", key]["source"]) for key in (16, 17, 18, 46)],
                         [(0, [1, 2, 4, 6], "provider"), (25, None, None), (25, None, None),
                          (0, [], "default")])

    def test_refused_libraries_are_explained(self):
        other, text, needy = (self.folder / name for name in ("other", "text", "needy"))
        other.write_bytes(OTHER_MACHINE)
        text.write_text("text")
        needy.write_bytes(images.without_dependency(PROVIDER))
        for library, state, reason, *script in [
            (NO_PROVIDER, "rejected", "it lacks the export Soc_GetCapability"),
            (other, "notLoaded", "it is for another machine, "),
            (text, "notLoaded", "it is no library: "),
            (needy, "notLoaded", "error 126" if ON_WINDOWS else "absent.so"),
            (None, "notFound", None),
            (PROVIDER, "exception", None, OWN_FAULT),
        ]:
            with self.subTest(state):
                document, rows = self.with_provider(library, *script,
                                                    status=1 if state == "exception" else 0)
                provider = document["provider"]
                self.assertTrue(document["scalarQueriesFail"])
                self.assertEqual(provider["state"], state)
                first = provider["lookedFor"][0]
                self.assertEqual(first["state"], {"notLoaded": "notLoaded", "notFound": "absent"}
                                 .get(state, "loaded"))
                said = provider["reason"] or first["reason"]
                self.assertTrue(said is reason or reason in said, said)
                paths = [pathlib.PureWindowsPath(place["path"]) for place in provider["lookedFor"]]
                self.assertEqual((paths[0].parent.name, paths[0].name),
                                 (self.folder.name, "RzSoCServiceUtils.dll"))
                self.assertEqual([str(path) for path in paths[1:]],
                                 ["RzSoCServiceUtils.dll"] * (first["state"] != "loaded"))
                self.assertEqual(rows["DSP", 46]["status"], 25 if state == "exception" else 0)

    def test_library_that_answers_otherwise_is_asked_and_contradicted(self):
        name_without_nul, entry_without_nul = "78" * 32, "78" * 36
        script = ["0 2 version 9 9 -", "2 1 reply 0 8 09", "2 2 reply 0 4 09", "2 16 reply 0 7 -",
                  f"2 47 reply 0 36 {entry_without_nul}", f"2 48 reply 0 {2**64 - 1} -",
                  f"3 4 reply 0 32 {name_without_nul}"]
        document = json.loads(self.run_tool("--json", "--library", OTHER_LIBRARY,
                                            script=script).stdout)
        self.assertFalse(document["scalarQueriesFail"])
        library = document["run"]["library"]
        self.assertEqual((library["version"], library["interface"]), (None, "9.9"))
        first = document["disagreements"][0]
        self.assertEqual((first["capability"], first["library"]),
                         ("DSP 1", {"status": 0, "value": 9}))
        self.assertNotEqual(first["core"], first["library"])
        text = self.run_tool("--library", OTHER_LIBRARY, script=script).stdout
        self.assertIn("disagreement DSP 1: the library answers 9, soc-info expects ", text)
        malformed = {
            "DSP 2": "Result buffer size mismatch",
            "DSP 16": "not a list of u32",
            "DSP 47": "not a list of string",
            "DSP 48": "not a list of named u32",
            "GPU 4": "missing null terminator",
        }
        self.assertEqual({difference["capability"]: difference["malformed"] for difference
                          in document["disagreements"] if difference["malformed"]}, malformed)
        for row in document["capabilities"]:
            if f"{row['component']} {row['key']}" in malformed:
                self.assertEqual((row["status"], row["value"], row["source"]), (0, None, None))
        count = len(document["disagreements"])
        self.assertIn(f"and {count - 5} more, which --json lists\n", text)
        self.assertIn("DSP         16  list of u32        malformed", text)

    def test_library_version_is_that_of_its_file(self):
        version = self.run_tool("--version").stdout.split()[-1]
        arguments = ("--library", LIBRARY)
        document = json.loads(self.run_tool("--json", *arguments).stdout)
        self.assertEqual(document["run"]["library"]["version"], version)
        self.assertIn(f'", version {version}, interface 0.', self.run_tool(*arguments).stdout)

    def test_missing_library_is_named(self):
        alone = shutil.copy(SOC_INFO, self.folder)
        self.assert_refused(self.run_tool(program=alone), "name one with --library FILE")
        self.assertEqual(self.run_tool("--library", LIBRARY, program=alone).returncode, 0)

    def test_schema_refuses_what_is_no_document(self):
        document = json.loads(self.run_tool("identify", "--json", "--tables",
                                            MACHINES / "heron").stdout)
        for change in ({"key": "0x1"}, {"another": 1}, {"schemaVersion": 1}):
            self.assertNotEqual(schema_faults([json.dumps(document | change)]), "", change)


if __name__ == "__main__":
    unittest.main()
