"""Reads the x64 view of a hybrid (ARM64X) Windows image."""

import struct
from collections import namedtuple

from pe_image import ImageError, PeImage

CodeRange = namedtuple("CodeRange", "kind start end")
KINDS = {0: "ARM64", 1: "ARM64EC", 2: "x64"}

# In the load configuration.
CODE_METADATA, RELOCATIONS_OFFSET = 0xC8, 0xE0
# In that metadata, IMAGE_ARM64EC_METADATA.
RANGES, REDIRECTIONS, REDIRECTION_COUNT, UNWIND_TABLE = 4, 16, 52, 64
ARM64X_RELOCATIONS = 6
ZERO, VALUE, DELTA = 0, 1, 2


def code_map(image):
    """The ranges of code of each kind; empty for an image with one kind alone."""
    metadata = _metadata(image)
    if metadata is None:
        return []
    address, count = image.read("<II", metadata + RANGES)
    ranges = []
    for i in range(count):
        start, length = image.read("<II", address + 8 * i)
        kind = KINDS.get(start & 3, "unknown")
        ranges.append(CodeRange(kind, start & ~3, (start & ~3) + length))
    return ranges


def kind_at(ranges, address):
    """The kind of the code at an address, None outside all ranges."""
    return next((kind for kind, start, end in ranges if start <= address < end), None)


def unwind_table(view):
    """The code's begin and end for each unwind entry of ARM64 and ARM64EC code, in the order of the
    table that x64 processes search."""
    address, size = view.read("<II", _metadata(view) + UNWIND_TABLE)
    entries = (view.read("<II", at) for at in range(address, address + size, 8))
    return [(begin, begin + _code_length(view, unwind)) for begin, unwind in entries]


def _code_length(view, unwind):
    if unwind & 3:  # all unwind data is in the entry
        return 4 * (unwind >> 2 & 0x7FF)
    return 4 * (view.read("<I", unwind)[0] & 0x3FFFF)


def redirected_functions(view):
    """The ARM64EC functions of the addresses that x64 code gets for exports and the entry point."""
    address = view.read("<I", _metadata(view) + REDIRECTIONS)[0]
    count = view.read("<I", _metadata(view) + REDIRECTION_COUNT)[0]
    return [view.read("<I", address + 8 * i + 4)[0] for i in range(count)]


def entry_thunk(view, ranges, function):
    """The thunk through which x64 code enters an ARM64EC function; None if it has none, so that an
    instruction or padding is before it."""
    distance = view.read("<i", function - 4)[0]
    thunk = function + (distance & ~3)
    return thunk if distance & 3 == 1 and kind_at(ranges, thunk) == "ARM64EC" else None


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


def _metadata(image):
    pointer = image.load_config("<Q", CODE_METADATA)
    return pointer[0] - image.base if pointer and pointer[0] else None


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
