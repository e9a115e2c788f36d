"""Library files that the system under test cannot load. Only their headers are valid."""

import pathlib
import struct

X64, ARM64, ELF_ARM64 = 0x8664, 0xAA64, 183


def elf_image(machine):
    return b"\x7fELF" + bytes((2, 1, 1)) + bytes(9) + struct.pack("<HHI", 3, machine, 1) + bytes(40)


def windows_image(machine, hybrid=False):
    """A hybrid image has code for ARM64EC beside what its header names."""
    header, section, address, data = 0x40, 0x148, 0x1000, 0x200
    image = bytearray(0x400)
    image[0:2] = b"MZ"
    struct.pack_into("<I", image, 0x3C, header)
    # One section, and an optional header up to the section's.
    struct.pack_into("<4sHH12xHHH", image, header, b"PE", machine, 1, section - header - 24, 0x2022,
                     0x20B)
    struct.pack_into("<II", image, header + 24 + 112 + 10 * 8, address, 0x140)  # load configuration
    struct.pack_into("<8sIIII", image, section, b".rdata", 0x140, address, 0x200, data)
    struct.pack_into("<I", image, data, 0x140)
    struct.pack_into("<Q", image, data + 200, 0x180001100 if hybrid else 0)
    return bytes(image)


def without_dependency(library):
    """A copy of a library's bytes that needs a library which is nowhere."""
    content = pathlib.Path(library).read_bytes()
    for name, absent in {b"libc.so.6": b"absent.so", b"KERNEL32.dll": b"ABSENT32.dll"}.items():
        content = content.replace(name, absent)
    return content
