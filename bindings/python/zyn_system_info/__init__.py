"""What the system-on-chip of this machine can do, by numbered capability.

    info = SystemInfo()
    info.get(Component.GPU, 4)      # 'Stilt 740'
    info.get(Component.DSP, 3)      # 73
    info.get_list(Component.DSP, 16)  # [Value(dsp=0, value=6)]

A refused query raises the subclass of SocError that is named after its status. If the chip is
unknown and no provider library describes it, every get() raises Failure. A wheel of this package
has the library inside. Without it, the package needs ZynSystemInfo.dll or libZynSystemInfo.so.0.1.
"""

import ctypes
import enum
import os
import struct
import sys
from typing import Any, Callable, Dict, List, NamedTuple, Optional, Tuple, Union


class Component(enum.IntEnum):
    """What a capability belongs to."""

    DSP = 2
    GPU = 3
    CPU = 5


class SocError(Exception):
    """A query that failed. It has the query's `component` and `key`, and the library's `status`."""

    _name = "an unknown status"
    _meaning = "the library is of another version than this package"

    def __init__(self, component: int, key: int, status: int) -> None:
        super().__init__(component, key, status)
        self.component, self.key, self.status = component, key, status

    def __str__(self) -> str:
        known = self.component in list(Component)
        component = Component(self.component).name if known else f"component {self.component}"
        return f"{component} key {self.key}: {self._name} (status {self.status}): {self._meaning}"


class UnsupportedComponent(SocError):
    """The component is none of DSP, GPU and CPU."""

    _name = "UNSUPPORTED_COMPONENT"
    _meaning = "components are DSP (2), GPU (3) and CPU (5)"


class UnsupportedKey(SocError):
    """The key is no capability of the component, or get() was asked for a list, or get_list() for
    a scalar.
    """

    _name = "UNSUPPORTED_KEY"
    _meaning = "there is no such key, or it is a list (get_list) or a scalar (get)"


class Failure(SocError):
    """The answer could not be produced. get() raises this if the chip is unknown and no provider
    library describes it. get() and get_list() raise it for other reasons, for instance if memory
    ran out.
    """

    _name = "FAILURE"
    _meaning = ("usually the chip is unknown and no provider library describes it (only get() fails "
                "then); ZynSystemInfo's docs/troubleshooting.md has the fixes, "
                "docs/capabilities.md all causes of this status")


_SUCCESS = 0
_INSUFFICIENT_SIZE = 4
_ERRORS = {2: UnsupportedComponent, 3: UnsupportedKey, 25: Failure}


class LibraryError(OSError):
    """The library is missing or cannot be loaded."""


class Value(NamedTuple):
    """An entry of DSP lists 16 and 46."""

    dsp: int  # index of the DSP
    value: int


class Name(NamedTuple):
    """An entry of DSP list 47."""

    dsp: int
    name: str


class NamedValue(NamedTuple):
    """An entry of DSP list 48."""

    dsp: int
    value: int
    name: str


Entry = Union[Value, Name, NamedValue]

_LAYOUTS: Dict[int, Tuple[Callable[..., Entry], str]] = {
    16: (Value, "<II"), 46: (Value, "<II"), 47: (Name, "<I32s"), 48: (NamedValue, "<II32s")}
_FLOATS = {(Component.DSP, 43), (Component.DSP, 44)}
_NAME = (Component.GPU, 4)
_SIGNED = {(Component.DSP, key) for key in (1, 2, 3, 41, 45)} | {
    (Component.GPU, 1), (Component.CPU, 1)}


def parse_list(key: int, data: bytes) -> List[Entry]:
    """The entries of a DSP list (key 16, 46, 47 or 48) from its bytes.

    Raises KeyError for another key and ValueError where the bytes are no such list.

    >>> parse_list(16, bytes.fromhex("00000000 ffffffff"))
    [Value(dsp=0, value=4294967295)]
    >>> entry = bytes.fromhex("01000000 07000000") + b"ab" + bytes(30)
    >>> parse_list(48, entry)
    [NamedValue(dsp=1, value=7, name='ab')]
    >>> parse_list(48, entry[:-1])
    Traceback (most recent call last):
    ValueError: 39 bytes are no whole entries of list 48
    >>> parse_list(47, bytes(4) + b"x" * 32)
    Traceback (most recent call last):
    ValueError: a name without a NUL
    """
    entry_type, layout = _LAYOUTS[key]
    if len(data) % struct.calcsize(layout):
        raise ValueError(f"{len(data)} bytes are no whole entries of list {key}")
    return [entry_type(*map(_text_or_number, fields))
            for fields in struct.iter_unpack(layout, data)]


def _text_or_number(field: Union[int, bytes]) -> Union[int, str]:
    if isinstance(field, int):
        return field
    text, end, _ = field.partition(b"\0")
    if not end:
        raise ValueError("a name without a NUL")
    return text.decode("utf-8", "replace")


class SystemInfo:
    """A loaded library. May be shared by threads; a query releases the interpreter's lock."""

    def __init__(self, library: Union[str, "os.PathLike[str]", None] = None) -> None:
        """Loads the library at the path `library`. Without a path, loads the library in this
        package's folder. If there is none, the system searches. Raises LibraryError.
        """
        path = os.fspath(library or _default_library())
        try:
            self._library = ctypes.CDLL(path)
            self._library.Soc_GetAPIVersion.argtypes = [ctypes.POINTER(ctypes.c_uint8)] * 2
            for query in (self._library.Soc_GetCapability,
                          self._library.Soc_GetCapabilitySerialized):
                query.argtypes = [ctypes.c_uint64, ctypes.c_uint64, ctypes.c_void_p,
                                  ctypes.POINTER(ctypes.c_uint64)]
                query.restype = ctypes.c_uint32
        except (OSError, AttributeError) as error:
            raise LibraryError(
                f"{path} cannot be loaded ({error}). Install this package's wheel, which has the "
                "library inside, or pass the library's path to SystemInfo.") from error
        self._first_query_was_made = False

    def api_version(self) -> Tuple[int, int]:
        """The interface's version: major and minor number."""
        major, minor = ctypes.c_uint8(), ctypes.c_uint8()
        self._library.Soc_GetAPIVersion(ctypes.byref(major), ctypes.byref(minor))
        return major.value, minor.value

    def get(self, component: int, key: int) -> Union[int, float, str]:
        """A scalar capability: DSP keys 43 and 44 are float, GPU key 4 is str, all others are int
        (0 or 1 for a flag). Raises UnsupportedComponent, UnsupportedKey or Failure.
        """
        if not self._first_query_was_made:
            # This query answers a default value even for an unknown chip. Later ones fail then.
            size = ctypes.c_uint64(8)
            self._library.Soc_GetCapability(Component.CPU, 1, ctypes.create_string_buffer(8),
                                            ctypes.byref(size))
            self._first_query_was_made = True
        answer = self._ask(self._library.Soc_GetCapability, component, key, 64)
        if (component, key) == _NAME:
            return answer.partition(b"\0")[0].decode("utf-8", "replace")
        if (component, key) in _FLOATS:
            return float(struct.unpack_from("<f", answer)[0])
        return int.from_bytes(answer[:8], "little", signed=(component, key) in _SIGNED)

    def get_list(self, component: int, key: int) -> List[Entry]:
        """A list capability: of Value (DSP keys 16 and 46), Name (47) or NamedValue (48).

        Raises UnsupportedComponent, UnsupportedKey or Failure.
        """
        # Longer lists are answered too, but the first query writes a line to standard error.
        answer = self._ask(self._library.Soc_GetCapabilitySerialized, component, key, 4096)
        return parse_list(key, answer)

    @staticmethod
    def _ask(query: Any, component: int, key: int, capacity: int) -> bytes:
        """The first `*size` bytes at the buffer after a successful query. A buffer that is too
        small is replaced by a larger one.

        >>> def query(component, key, buffer, size):
        ...     offered, size._obj.value = size._obj.value, 100
        ...     return _INSUFFICIENT_SIZE if offered < 100 else _SUCCESS
        >>> len(SystemInfo._ask(query, Component.GPU, 4, 64))
        100
        """
        while True:
            buffer = ctypes.create_string_buffer(capacity)
            size = ctypes.c_uint64(capacity)
            status = query(component, key, buffer, ctypes.byref(size))
            if status == _SUCCESS:
                return buffer.raw[:size.value]
            if status != _INSUFFICIENT_SIZE or size.value <= capacity:
                raise _ERRORS.get(status, SocError)(component, key, status)
            capacity = size.value


def _default_library() -> str:
    # With a bare name Windows would search the program's folder and not this one.
    name = "ZynSystemInfo.dll" if sys.platform == "win32" else "libZynSystemInfo.so.0.1"
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), name)
    return beside if os.path.exists(beside) else name
