"""soc-info as users see it: text, bad input, captures, and its report on a provider."""

import json
import os
import pathlib
import shutil
import tempfile
import unittest

from soc_info import (HOSTILE_NAME, HOSTILE_NAME_TEXT, HOSTILE_NAME_VALUE, LIBRARY, MACHINES,
                      NO_PROVIDER, ON_WINDOWS, OTHER_LIBRARY, OWN_FAULT, PROVIDER, SOC_INFO, Tests,
                      schema_faults)

FACP = (MACHINES / "heron" / "facp.dat").read_bytes()
PPTT = (MACHINES / "heron" / "pptt.dat").read_bytes()


class SocInfoTest(Tests):
    def dump(self, **tables):
        for name, content in tables.items():
            (self.folder / name).write_bytes(content)
        return self.folder

    def test_first_lines_tell_the_chip_and_where_answers_come_from(self):
        for machine, lines in {
            "heron": ["HERON_411, also HERON_411_MOBILE", "101",
                      "catalogue row 411; no provider is consulted"],
            "dunlin": ["UNKNOWN_PLX", "202: the catalogue has no row for it", "unknown row"],
            "unlisted": ["UNKNOWN_PLX", "none: the key is not in the map", "unknown row"],
            "no-pptt": ["UNKNOWN_PLX", "none: the machine has no PPTT", "unknown row"],
        }.items():
            with self.subTest(machine):
                output = self.run_tool("--tables", MACHINES / machine).stdout.splitlines()
                self.assertEqual([line[13:] for line in output[:3]], lines)

    def test_text_table_has_every_key_and_keeps_a_trailing_blank(self):
        rows = self.run_tool("--tables", MACHINES / "heron").stdout.split("\n\n")[1].splitlines()
        self.assertEqual(len(rows), 1 + 47 + 13 + 2)
        self.assertIn('GPU          4  string             "Stilt 730 "  catalogue', rows)

    def test_key_that_the_map_lacks_gives_the_line_to_add(self):
        output = self.run_tool("identify", "--tables", MACHINES / "unlisted").stdout
        self.assertEqual(output.splitlines()[-1], "    {0x0000004100000001, CHIP_NAME},")

    def test_unusable_dumps_are_refused_by_name(self):
        for name, tables, message in [
            ("no FADT", {"PPTT": PPTT}, "holds no dump of the FADT"),
            ("empty file", {"FACP": FACP, "pptt.dat": b""}, 'pptt.dat": empty'),
            ("another table", {"FACP": FACP, "PPTT": FACP}, 'PPTT": no raw dump of the table PPTT'),
            ("three bytes", {"FACP": b"FAC"}, 'FACP": no raw dump of the table FACP'),
        ]:
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                self.folder = pathlib.Path(folder)
                result = self.run_tool("identify", "--tables", self.dump(**tables))
                self.assert_refused(result, message)

    def test_paths_that_are_no_dumps_are_refused(self):
        self.dump(FACP=FACP)
        self.assert_refused(self.run_tool("--tables", self.folder / "missing"), "missing")
        self.assert_refused(self.run_tool("--tables", self.folder / "FACP"), "not a directory")
        (self.folder / "PPTT").mkdir()
        self.assert_refused(self.run_tool("--tables", self.folder), 'PPTT": not a regular file')
        (self.folder / "PPTT").rmdir()
        if not ON_WINDOWS:
            (self.folder / "PPTT").symlink_to("nowhere")
            self.assert_refused(self.run_tool("--tables", self.folder), 'PPTT": ')
        os.truncate(self.folder / "FACP", (16 << 20) + 1)
        self.assert_refused(self.run_tool("--tables", self.folder), 'FACP": larger than 16 MiB')

    def test_bad_arguments_are_refused(self):
        for arguments in [("nonsense",), ("--tables",), ("capture",), ("--json", "identify")]:
            with self.subTest(arguments):
                self.assert_refused(self.run_tool(*arguments), "")
        self.assertEqual(self.run_tool("--help").returncode, 0)

    def test_dump_that_is_cut_is_walked_to_its_end_with_a_warning(self):
        for length, is_found in [(59, False), (60, True)]:
            dumps = self.dump(FACP=FACP, PPTT=PPTT[:length])
            result = self.run_tool("identify", "--json", "--tables", dumps)
            self.assertIn(f"only {length} bytes", result.stderr)
            self.assertEqual(json.loads(result.stdout)["pptt"]["idStructure"] is not None, is_found)

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

    def with_provider(self, library, *script):
        """This machine's document, with a library in the provider's place."""
        program = self.install(library)
        document = json.loads(self.run_tool("--json", program=program, script=script).stdout)
        if document["chip"]["known"]:
            self.skipTest("this machine's chip is known, so no provider is asked")
        self.assertEqual(document["disagreements"], [])
        rows = {(row["component"], row["key"]): row for row in document["capabilities"]}
        return document, rows

    def test_library_answers_and_sources_tell_provider_from_default(self):
        script = [HOSTILE_NAME, "2 43 reply 0 4 cdcccc3d", "2 44 reply 0 4 0000c07f",
                  "2 42 reply 3 0 -"]
        document, rows = self.with_provider(PROVIDER, *script)
        self.assertEqual(document["provider"]["state"], "imported")
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
        text = self.run_tool(program=self.install(), script=script).stdout
        self.assertIn(HOSTILE_NAME_TEXT, text)
        self.assertIn("  0.1 ", text)

    def test_provider_without_a_required_key_does_not_count(self):
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
        for library, state, reason, *script in [
            (NO_PROVIDER, "rejected", "it lacks the export Soc_GetCapability"),
            (MACHINES / "rebuild", "notFound", "load library failed"),
            (PROVIDER, "failed", "an exception ended the import", OWN_FAULT),
        ]:
            with self.subTest(state):
                document, rows = self.with_provider(library, *script)
                provider = document["provider"]
                self.assertTrue(document["scalarQueriesFail"])
                self.assertEqual((provider["state"], provider["reason"]), (state, reason))
                first, second = map(pathlib.PureWindowsPath,
                                    (provider["lookedFor"] + ["RzSoCServiceUtils.dll"])[:2])
                self.assertEqual((first.parent.name, first.name, str(second)),
                                 (self.folder.name, second.name, "RzSoCServiceUtils.dll"))
                self.assertEqual(rows["DSP", 46]["status"], 25 if state == "failed" else 0)

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
        self.assertIn("DSP 16: the library's answer is malformed (not a list of u32), so", text)
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
        for library, message in [(PROVIDER, "lacks the export Soc_GetCapabilitySerialized"),
                                 (__file__, "load library failed")]:
            self.assert_refused(self.run_tool("--library", library), message)
        self.assert_refused(self.run_tool("--library", LIBRARY, "--tables", "."), "excludes")

    def test_schema_refuses_what_is_no_document(self):
        document = json.loads(self.run_tool("identify", "--json", "--tables",
                                            MACHINES / "heron").stdout)
        for change in ({"key": "0x1"}, {"another": 1}, {"schemaVersion": 1}):
            self.assertNotEqual(schema_faults([json.dumps(document | change)]), "", change)


if __name__ == "__main__":
    unittest.main()
