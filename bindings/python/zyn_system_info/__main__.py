"""Prints some capabilities of this machine."""

import argparse
import sys

from . import Component, Failure, LibraryError, SystemInfo


def main() -> int:
    parser = argparse.ArgumentParser("python -m zyn_system_info", description=__doc__)
    parser.add_argument("library", nargs="?", metavar="LIBRARY",
                        help="path of ZynSystemInfo.dll or libZynSystemInfo.so.0.1; by default the "
                             "one of this package or, if it has none, of the system")
    try:
        info = SystemInfo(parser.parse_args().library)
        print("GPU 4:", info.get(Component.GPU, 4))
        print("DSP 3:", info.get(Component.DSP, 3))
        print("DSP 16:", info.get_list(Component.DSP, 16))
    except LibraryError as error:
        print(error, file=sys.stderr)
        return 2
    except Failure as failure:
        print(failure, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
