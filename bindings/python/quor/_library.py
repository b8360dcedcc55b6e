"""The C interface of libquor, as <quor/quor.h> describes it, by ctypes.

Owner    What `forever` returns is never freed. The library keeps the address of every trace point, and a
         thread of its own writes to it as long as the process lives, so longer than the interpreter.
Errors   Without the library the import of this module is an ImportError that names the package.
Threads  The calls keep the interpreter's lock, because they take less time than to give it away and to wait
         for it again behind other threads. Only `quor_flush` gives it away.
"""
import ctypes

SONAME = "libquor.so.1"
UNREGISTERED = 0xFFFFFFFF


class PointMemory(ctypes.Structure):
    """quor_point."""
    _fields_ = [("settings", ctypes.c_uint32), ("id", ctypes.c_uint32), ("names", ctypes.c_uint16 * 2),
                ("reserved", ctypes.c_uint32), ("component", ctypes.c_void_p),
                ("category", ctypes.c_void_p), ("next", ctypes.c_void_p)]


class CountsMemory(ctypes.Structure):
    """quor_counts."""
    _fields_ = [("traced", ctypes.c_uint64), ("lost", ctypes.c_uint64)]


def _load(kind):
    try:
        return kind(SONAME)
    except OSError as error:
        raise ImportError(f"{SONAME} cannot be loaded: {error}. It is in the package libquor1; if it is "
                          "installed elsewhere, put its folder into LD_LIBRARY_PATH.") from None


def _function(library, name, result, *arguments):
    function = getattr(library, name)
    function.restype = result
    function.argtypes = arguments
    return function


_holding, _releasing = _load(ctypes.PyDLL), _load(ctypes.CDLL)
_text, _unsigned, _address = ctypes.c_char_p, ctypes.c_uint, ctypes.c_void_p

quor_application = _function(_holding, "quor_application", None, _text)
quor_declare = _function(_holding, "quor_declare", None, _address)
quor_first_use = _function(_holding, "quor_first_use", ctypes.c_int, _address, _unsigned)
quor_thread_name = _function(_holding, "quor_thread_name", None, _text)
quor_trace = _function(_holding, "quor_trace", None, _address, _unsigned, _text, _unsigned, _text,
                       ctypes.c_size_t)
quor_get_counts = _function(_holding, "quor_get_counts", None, ctypes.POINTER(CountsMemory))
quor_flush = _function(_releasing, "quor_flush", ctypes.c_int, _unsigned)
_calloc = _function(ctypes.PyDLL(None), "calloc", _address, ctypes.c_size_t, ctypes.c_size_t)


def forever(size):
    """The address of zeroed memory that is never freed."""
    address = _calloc(1, size)
    if not address:
        raise MemoryError("no memory for a trace point")
    return address
