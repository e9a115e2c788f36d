"""Reads what scripts/check-image asks of a Windows image (PE32+)."""

import struct
from collections import namedtuple

Section = namedtuple("Section", "name address size offset stored flags")
Export = namedtuple("Export", "name address forwarder")

EXPORTS, IMPORTS, RESOURCES, LOAD_CONFIG, DELAY_IMPORTS = 0, 1, 2, 10, 13
VERSION_RESOURCE = 16
FIXED_VERSION_SIGNATURE = 0xFEEF04BD


class ImageError(Exception):
    """The file is not a valid image; the message gives the fault."""


class PeImage:
    """A PE32+ file's headers and tables. Raises ImageError where they contradict the file."""

    def __init__(self, data):
        self.data = data
        if data[:2] != b"MZ":
            raise ImageError("not a Windows image")
        header = self._read("<I", 0x3C)[0]
        if data[header : header + 4] != b"PE\0\0":
            raise ImageError("no PE header")
        self.machine, count, _, _, _, size, _ = self._read("<HHIIIHH", header + 4)
        optional = header + 24
        if self._read("<H", optional)[0] != 0x20B:
            raise ImageError("not a PE32+ image")
        self.entry_point = self._read("<I", optional + 16)[0]
        self.base = self._read("<Q", optional + 24)[0]
        self.characteristics = self._read("<H", optional + 70)[0]
        directories = self._read("<I", optional + 108)[0]
        self._directories = [
            self._read("<II", optional + 112 + 8 * i) for i in range(min(directories, 16))
        ]
        self.sections = [self._section(optional + size + 40 * i) for i in range(count)]

    def exports(self):
        """An Export for each name of an exported address, in order of the addresses' ordinals. One
        without a name is called "#ordinal"; the forwarder is a text or empty."""
        address, size = self._directory(EXPORTS)
        if not address:
            return []
        at = self.offset(address)
        base, functions, names, table, name_table, ordinals = self._read("<6I", at + 16)
        named = {}
        for i in range(names):
            index = self._read("<H", self.offset(ordinals + 2 * i))[0]
            named.setdefault(index, []).append(self._text_at(name_table + 4 * i))
        found = []
        for index in range(functions):
            target = self._read("<I", self.offset(table + 4 * index))[0]
            if target:
                inside = address <= target < address + size
                forwarder = self._text(target) if inside else ""
                for name in named.get(index, [f"#{base + index}"]):
                    found.append(Export(name, target, forwarder))
        return found

    def imports(self):
        """{library name: [function name or "#ordinal"]} of the libraries loaded with the image."""
        return self._imports(IMPORTS, size=20, name_at=12, table_at=0)

    def delayed_imports(self):
        """The same for libraries loaded at the first call."""
        return self._imports(DELAY_IMPORTS, size=32, name_at=4, table_at=16)

    def _imports(self, directory, size, name_at, table_at):
        found = {}
        address, _ = self._directory(directory)
        while address:
            name, table = (self.read("<I", address + at)[0] for at in (name_at, table_at))
            if not name:
                break
            found.setdefault(self._text(name), []).extend(self._thunks(table))
            address += size
        return found

    def load_config(self, layout, at):
        """Fields of the load configuration, None where it is too short to have them."""
        address, _ = self._directory(LOAD_CONFIG)
        if not address or self.read("<I", address)[0] < at + struct.calcsize(layout):
            return None
        return self.read(layout, address + at)

    def read(self, layout, address):
        """Unpacks what is stored at an address relative to the image's base."""
        return self._read(layout, self.offset(address))

    def offset(self, address):
        """Where in the file an address is stored."""
        if address < min(section.address for section in self.sections):
            return address  # the headers
        for section in self.sections:
            if section.address <= address < section.address + section.stored:
                return section.offset + address - section.address
        raise ImageError(f"address {address:#x} is not stored in the file")

    def file_version(self):
        """The version resource's file version as four numbers; None where there is none."""
        fixed = self._version_resource().find(struct.pack("<I", FIXED_VERSION_SIGNATURE))
        if fixed < 0:
            return None
        high, low = struct.unpack_from("<II", self._version_resource(), fixed + 8)
        return high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF

    def version_text(self, key):
        """The text that the version resource has under key; None where there is none."""
        resource = self._version_resource()
        at = resource.find((key + "\0").encode("utf-16-le"))
        if at < 0:
            return None
        value = resource[at + 2 * len(key) + 2 :].decode("utf-16-le", "replace").lstrip("\0")
        return value.split("\0")[0]

    def _version_resource(self):
        root, _ = self._directory(RESOURCES)
        if not root:
            return b""
        entry = self._resource_entry(root, 0, VERSION_RESOURCE)
        while entry is not None and entry & 0x80000000:
            entry = self._resource_entry(root, entry & 0x7FFFFFFF, None)
        if entry is None:
            return b""
        address, size = self._read("<II", self.offset(root + entry))
        start = self.offset(address)
        return self.data[start : start + size]

    def _resource_entry(self, root, table, wanted):
        at = self.offset(root + table)
        named, numbered = self._read("<HH", at + 12)
        for i in range(named + numbered):
            identifier, target = self._read("<II", at + 16 + 8 * i)
            if wanted in (None, identifier):
                return target
        return None

    def _thunks(self, address):
        while True:
            thunk = self._read("<Q", self.offset(address))[0]
            if not thunk:
                return
            yield f"#{thunk & 0xFFFF}" if thunk >> 63 else self._text(thunk + 2)
            address += 8

    def _directory(self, index):
        return self._directories[index] if index < len(self._directories) else (0, 0)

    def _section(self, at):
        name, size, address, stored, offset, flags = self._read("<8s4I12xI", at)
        return Section(name.rstrip(b"\0").decode(), address, size, offset, stored, flags)

    def _text_at(self, pointer):
        return self._text(self._read("<I", self.offset(pointer))[0])

    def _text(self, address):
        start = self.offset(address)
        return self.data[start:].partition(b"\0")[0].decode("ascii", "replace")

    def _read(self, layout, at):
        try:
            return struct.unpack_from(layout, self.data, at)
        except struct.error:
            raise ImageError("the file is cut short") from None
