"""Checks the texts against the code: check_docs.py SOC_INFO PROVIDER, run in the root.

Every relative link in a tracked Markdown file must lead to an existing file and heading. Every cell
of the table in docs/capabilities.md must be what soc-info reports: of an unknown chip, of the example
machines with known chips, and of an import from the example provider. Exits 1 and names each fault.
"""

import json
import pathlib
import re
import subprocess
import sys

# The answer's bytes by the value's type, where they are not 8.
BYTES = {"f32": "4", "string": "length + 1", "list of u32": "8 an entry",
         "list of string": "36 an entry", "list of named u32": "40 an entry"}
MACHINES = pathlib.Path("examples/machines")
FENCE = re.compile(r"^```.*?^```|^ {4}.*?$", re.MULTILINE | re.DOTALL)


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def anchors(path):
    """The anchors of a file's headings."""
    headings = re.findall(r"^#+ (.*)$", FENCE.sub("", path.read_text()), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def broken_links(path):
    for target in re.findall(r"\]\(([^)\s]+)\)", FENCE.sub("", path.read_text())):
        if re.match(r"[a-z]+:", target):
            continue
        file, _, anchor = target.partition("#")
        leads_to = (path.parent / file) if file else path
        if not leads_to.exists() or (anchor and anchor not in anchors(leads_to)):
            yield f"{path}: no {target}"


def values(inspection):
    return {(row["component"], row["key"]): row["value"] for row in inspection["capabilities"]}


def table_of_code(soc_info, provider):
    """The rows that docs/capabilities.md must have: (component, key) to the other cells."""
    unknown = json.loads(output_of(soc_info, "--tables", MACHINES / "unlisted", "--json"))
    documents = [json.loads(path.read_text()) for path in MACHINES.glob("*/capabilities.json")]
    known = [values(document) for document in documents if document["chip"]["known"]]
    check = json.loads(output_of(soc_info, "check-provider", provider, "--json"))
    need = {(row["component"], row["key"]): "required" if row["required"] else "optional"
            for row in check["keys"]}
    table = {}
    for row in unknown["capabilities"]:
        key = (row["component"], row["key"])
        of_chips = [chip[key] for chip in known]
        kind = ("own" if of_chips != of_chips[:1] * len(known) else
                "default" if of_chips[0] == row["value"] else "common")
        table[key] = (row["type"], BYTES.get(row["type"], "8"), json.dumps(row["value"]), kind,
                      need.get(key, "never asked"))
    return table


def table_faults(expected):
    written = {}
    for line in pathlib.Path("docs/capabilities.md").read_text().splitlines():
        cells = [cell.strip() for cell in line.split("|")]
        if len(cells) == 9 and cells[2].isdigit():
            written[cells[1], int(cells[2])] = tuple(cells[3:8])
    for key in sorted(written.keys() | expected.keys()):
        if written.get(key) != expected.get(key):
            yield (f"docs/capabilities.md: {key} has {written.get(key)}, "
                   f"the code has {expected.get(key)}")


def main():
    files = [pathlib.Path(name) for name in output_of("git", "ls-files", "*.md").splitlines()]
    faults = [fault for path in files if path.exists() for fault in broken_links(path)]
    faults += table_faults(table_of_code(*sys.argv[1:]))
    for fault in faults:
        print(f"check_docs: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
