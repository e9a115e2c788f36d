"""Checks what the texts claim that a program can know: check_docs.py SOC_INFO, in the root.

Every relative link of a tracked Markdown file leads to a file and heading that exist, and the table
of docs/capabilities.md has the keys, types, sizes and defaults that soc-info tells. Exits 1 and names every
claim that does not hold.
"""

import json
import pathlib
import re
import subprocess
import sys

# The answer's bytes by the value's type, where they are not 8.
BYTES = {"f32": "4", "string": "length + 1", "list of u32": "8 an entry",
         "list of string": "36 an entry", "list of named u32": "40 an entry"}
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


def table_faults(soc_info):
    text = output_of(soc_info, "--tables", "examples/machines/unlisted", "--json")
    told = {(row["component"], row["key"], row["type"], BYTES.get(row["type"], "8"),
             json.dumps(row["value"])) for row in json.loads(text)["capabilities"]}
    written = set()
    for line in pathlib.Path("docs/capabilities.md").read_text().splitlines():
        cells = [cell.strip() for cell in line.split("|")]
        if len(cells) == 9 and cells[2].isdigit():
            written.add((cells[1], int(cells[2]), cells[3], cells[4], cells[5]))
    for row in sorted(told ^ written):
        yield f"docs/capabilities.md: {'lacks' if row in told else 'has'} the row {row}"


def main():
    files = [pathlib.Path(name) for name in output_of("git", "ls-files", "*.md").splitlines()]
    faults = [fault for path in files if path.exists() for fault in broken_links(path)]
    faults += table_faults(sys.argv[1])
    for fault in faults:
        print(f"check_docs: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
