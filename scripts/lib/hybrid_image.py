"""Reads the x64 view of a hybrid (ARM64X) Windows image."""

import struct
from collections import namedtuple

from pe_image import ImageError, PeImage

CodeRange = namedtuple("CodeRange", "kind start end")
KINDS = {0: "ARM64", 1: "ARM64EC", 2: "x64"}

# In the load configuration.
CODE_METADATA, RELOCATIONS_OFFSET = 0xC8, 0xE0
ARM64X_RELOCATIONS = 6
ZERO, VALUE, DELTA = 0, 1, 2


def code_map(image):
    """The ranges of code of each kind; empty for an image with one kind alone."""
    pointer = image.load_config("<Q", CODE_METADATA)
    if not pointer or not pointer[0]:
        return []
    address, count = image.read("<II", pointer[0] - image.base + 4)
    ranges = []
    for i in range(count):
        start, length = image.read("<II", address + 8 * i)
        kind = KINDS.get(start & 3, "unknown")
        ranges.append(CodeRange(kind, start & ~3, (start & ~3) + length))
    return ranges


def kind_at(ranges, address):
    """The kind of the code at an address, None outside all ranges."""
    return next((kind for kind, start, end in ranges if start <= address < end), None)


def x64_view(image):
    """The image as an x64 process sees it: with its ARM64X relocations applied."""
    data = bytearray(image.data)
    for address, kind, argument, payload in _relocations(image):
        at = image.offset(address)
        if kind == ZERO:
            data[at : at + (1 << argument)] = bytes(1 << argument)
        elif kind == VALUE:
            data[at : at + (1 << argument)] = payload
        else:
            distance = struct.unpack("<H", payload)[0] * (8 if argument & 2 else 4)
            value = struct.unpack_from("<I", data, at)[0]
            value += -distance if argument & 1 else distance
            struct.pack_into("<I", data, at, value & 0xFFFFFFFF)
    return PeImage(bytes(data))


def _relocations(image):
    """(address, kind, argument, bytes that follow) of each ARM64X relocation."""
    at, end = _relocation_blocks(image)
    while at < end:
        page, size = image.read("<II", at)
        if size < 8:
            raise ImageError("an ARM64X relocation block without size")
        entry, at = at + 8, at + size
        while entry < at:
            word = image.read("<H", entry)[0]
            kind, argument = word >> 12 & 3, word >> 14
            length = {ZERO: 0, VALUE: 1 << argument, DELTA: 2}.get(kind)
            if length is None:
                raise ImageError(f"an ARM64X relocation of the unknown kind {kind}")
            entry += 2
            if word:  # else padding
                payload = image.read(f"{length}s", entry)[0]
                yield page + (word & 0xFFF), kind, argument, payload
                entry += length


def _relocation_blocks(image):
    """From where to where the blocks of ARM64X relocations are, as addresses."""
    place = image.load_config("<IH", RELOCATIONS_OFFSET)
    if not place or not 0 < place[1] <= len(image.sections):
        raise ImageError("no dynamic relocations")
    at = image.sections[place[1] - 1].address + place[0]
    version, size = image.read("<II", at)
    if version != 1:
        raise ImageError(f"dynamic relocations of version {version}")
    at, end = at + 8, at + 8 + size
    while at < end:
        symbol, length = image.read("<QI", at)
        at += 12
        if symbol == ARM64X_RELOCATIONS:
            return at, at + length
        at += length
    raise ImageError("no ARM64X relocations")
