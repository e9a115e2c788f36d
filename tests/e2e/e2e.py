"""End-to-end tests: the real shared library, in fresh processes, with providers beside it."""

import argparse
import pathlib
import subprocess
import sys
import unittest

from expectations import SCALAR
from failure_test import Allocations, Exceptions, Faults  # noqa: F401
from import_test import Import  # noqa: F401
from lifetime_test import Lifetime  # noqa: F401
from loading_test import Finding, Machines, WithoutProvider  # noqa: F401
from scenario import Settings


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--library", type=pathlib.Path, required=True)
    parser.add_argument("--client", type=pathlib.Path, required=True)
    parser.add_argument("--providers", type=pathlib.Path, required=True, help="folder")
    parser.add_argument("--machines", type=pathlib.Path, required=True, help="folder")
    parser.add_argument("--launcher", default="", help="command that starts the client")
    parser.add_argument("--block-tolerance", type=int, default=0,
                        help="how far two counts of the same heap blocks may differ")
    options, rest = parser.parse_known_args()
    for name in ("library", "client", "providers", "machines"):
        setattr(Settings, name, getattr(options, name).resolve())
    Settings.launcher = options.launcher.split()
    Settings.block_tolerance = options.block_tolerance
    # The first process through a launcher may start a whole system, which ends with the last one:
    # this one answers when the system is up, and stays until all tests have run.
    with subprocess.Popen([*Settings.launcher, Settings.client, Settings.library],
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as first:
        first.stdin.write(SCALAR.encode() + b"\n")
        first.stdin.flush()
        first.stdout.readline()
        unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
