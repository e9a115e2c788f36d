"""Prints some capabilities of this machine: python -m zyn_system_info [LIBRARY]."""

import sys

from . import Component, Failure, LibraryError, SystemInfo


def main() -> int:
    try:
        info = SystemInfo(*sys.argv[1:2])
        print("GPU 4:", info.get(Component.GPU, 4))
        print("DSP 3:", info.get(Component.DSP, 3))
        print("DSP 16:", info.get_list(Component.DSP, 16))
    except LibraryError as error:
        print(error, file=sys.stderr)
        return 2
    except Failure:
        print("unknown chip: no provider library describes it", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
