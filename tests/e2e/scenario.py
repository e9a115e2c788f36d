"""A scenario: the product and perhaps a provider in a fresh folder, and one process of the client.

The folder is the process's working directory and holds
  lib/           the product and mostly the provider
  app/           the client; the platform's search finds a provider here
  provider.txt   says how the provider misbehaves (see provider.c)
  provider.log   what the provider was asked
  firmware/      the tables that the process sees in place of this machine's, if there are any
"""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest
from typing import NamedTuple

PROVIDER = "RzSoCServiceUtils.dll"


class Settings:
    """Set from the command line before the tests run."""

    library = client = providers = machines = None
    launcher = []
    block_tolerance = 0

    @classmethod
    def is_windows(cls):
        return cls.client.suffix == ".exe"

    @classmethod
    def product(cls):
        """The product's path in a scenario, in the form that the client's system takes."""
        return ("lib\\" if cls.is_windows() else "./lib/") + cls.library.name


class Result(NamedTuple):
    """A query's result; `answer` is what was written to the buffer, in hex."""

    status: int
    size: int
    answer: str
    remarks: tuple = ()


def parse_result(line):
    status, size, written, *remarks = line.split()
    return Result(int(status), int(size), written.strip("-"), tuple(remarks))


class Outcome(NamedTuple):
    lines: list
    log: list
    stderr: str

    def results(self):
        return [parse_result(line) for line in self.lines]


def number(value, size=8):
    """A number as the bytes of an answer."""
    return value.to_bytes(size, "little", signed=value < 0).hex()


def table_wrapper():
    """The command that starts a client which sees the tables in its folder. On Windows the client
    itself does that. On Linux it needs a mount namespace, without which the test is skipped.
    """
    # A tmpfs replaces the whole tree, since the folder may not exist here.
    show = "mount -t tmpfs none /sys && mkdir -p /sys/firmware/acpi/tables"
    use = ' && cp firmware/* /sys/firmware/acpi/tables && exec "$@"'
    namespace = ["unshare", "--mount", "--map-root-user", "sh", "-c"]
    if Settings.is_windows():
        return ()
    if shutil.which("unshare") is None or subprocess.run(
            [*namespace, show], capture_output=True, check=False).returncode != 0:
        raise unittest.SkipTest("needs a mount namespace to show a process other tables")
    return [*namespace, show + use, "sh"]


def run(commands, provider=None, script=(), files=(), machine=None, before=None):
    """Runs the client with these commands and returns the outcome.

    provider: the one in lib, as in `files`. script: lines of provider.txt.
    files: further ones, path to bytes or to a name in the providers' folder.
    machine: an example machine, by its folder; the process sees its firmware tables.
    before: called in the client's process before it starts.
    """
    wrapper = table_wrapper() if machine else ()
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name in ("lib", "app"):
            (root / name).mkdir()
        shutil.copy(Settings.library, root / "lib")
        shutil.copy(Settings.client, root / "app")
        files = dict(files)
        if provider is not None:
            files[f"lib/{PROVIDER}"] = provider
        files["provider.txt"] = "".join(line + "\n" for line in script).encode()
        for path in machine.iterdir() if machine else ():
            if path.suffix in {".dat", ""}:  # made from a source, or captured
                files[f"firmware/{path.stem.upper()}"] = path.read_bytes()
        for name, content in files.items():
            path = root / name
            path.parent.mkdir(exist_ok=True)
            if isinstance(content, str):
                shutil.copy(Settings.providers / f"{content}.dll", path)
            else:
                path.write_bytes(content)
        # Windows looks in the program's folder, other systems need a path.
        environment = dict(os.environ, LD_LIBRARY_PATH=str(root / "app"))
        process = subprocess.run(
            [*wrapper, *Settings.launcher, str(root / "app" / Settings.client.name),
             Settings.product()],
            input="".join(command + "\n" for command in commands), cwd=root, env=environment,
            capture_output=True, text=True, timeout=300, check=False, preexec_fn=before)
        if process.returncode != 0:
            raise AssertionError(f"the client ended with {process.returncode}:\n"
                                 f"{process.stdout[-2000:]}\n{process.stderr[-6000:]}")
        log = root / "provider.log"
        lines = log.read_text().splitlines() if log.exists() else []
        return Outcome(process.stdout.splitlines(), lines, process.stderr)
