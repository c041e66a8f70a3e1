"""The C interface of libQuillFormatAPA, declared for ctypes."""

import ctypes
import ctypes.util
import json
import os
from pathlib import Path

c_variant_p = ctypes.c_void_p
c_object_p = ctypes.c_void_p

# Variant types (enum qfa_type).
EMPTY, NULL, MISSING, BOOLEAN, INTEGER, LONG, DOUBLE, STRING, OBJECT, ARRAY = range(10)
# Call kinds (enum qfa_call_kind).
METHOD, PROPERTY_GET, PROPERTY_PUT = 1, 2, 4
OK, FALSE = 0, 1

ID_OF_NAME = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_char_p)
INVOKE = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p, ctypes.c_int32, ctypes.c_int32,
                          ctypes.POINTER(c_variant_p), ctypes.c_size_t,
                          ctypes.POINTER(ctypes.c_char_p), ctypes.c_size_t, c_variant_p)
RELEASE = ctypes.CFUNCTYPE(None, ctypes.c_void_p)
TYPE_NAME = ctypes.CFUNCTYPE(ctypes.c_void_p, ctypes.c_void_p)


class HostVtable(ctypes.Structure):
    _fields_ = [("id_of_name", ID_OF_NAME), ("invoke", INVOKE),
                ("release", RELEASE), ("type_name", TYPE_NAME)]


_SIGNATURES = {
    "qfa_error_description": (ctypes.c_char_p, []),
    "qfa_error_source": (ctypes.c_char_p, []),
    "qfa_set_error": (None, [ctypes.c_int32, ctypes.c_char_p]),
    "qfa_variant_new": (c_variant_p, []),
    "qfa_variant_free": (None, [c_variant_p]),
    "qfa_variant_clear": (None, [c_variant_p]),
    "qfa_variant_copy": (ctypes.c_int32, [c_variant_p, c_variant_p]),
    "qfa_variant_type": (ctypes.c_int32, [c_variant_p]),
    "qfa_variant_is_byref": (ctypes.c_int, [c_variant_p]),
    "qfa_variant_set_empty": (None, [c_variant_p]),
    "qfa_variant_set_null": (None, [c_variant_p]),
    "qfa_variant_set_missing": (None, [c_variant_p]),
    "qfa_variant_set_bool": (None, [c_variant_p, ctypes.c_int]),
    "qfa_variant_set_integer": (None, [c_variant_p, ctypes.c_int16]),
    "qfa_variant_set_long": (None, [c_variant_p, ctypes.c_int32]),
    "qfa_variant_set_double": (None, [c_variant_p, ctypes.c_double]),
    "qfa_variant_set_string": (ctypes.c_int32, [c_variant_p, ctypes.c_char_p, ctypes.c_size_t]),
    "qfa_variant_set_object": (None, [c_variant_p, c_object_p]),
    "qfa_variant_set_array": (ctypes.c_int32, [c_variant_p, ctypes.c_int32, ctypes.c_int32]),
    "qfa_variant_set_byref": (ctypes.c_int32, [c_variant_p, c_variant_p]),
    "qfa_variant_get_bool": (ctypes.c_int32, [c_variant_p, ctypes.POINTER(ctypes.c_int)]),
    "qfa_variant_get_long": (ctypes.c_int32, [c_variant_p, ctypes.POINTER(ctypes.c_int32)]),
    "qfa_variant_get_double": (ctypes.c_int32, [c_variant_p, ctypes.POINTER(ctypes.c_double)]),
    "qfa_variant_get_string": (ctypes.c_int32, [c_variant_p, ctypes.POINTER(ctypes.c_void_p),
                                                ctypes.POINTER(ctypes.c_size_t)]),
    "qfa_variant_get_object": (ctypes.c_int32, [c_variant_p, ctypes.POINTER(c_object_p)]),
    "qfa_variant_array_dims": (ctypes.c_int32, [c_variant_p]),
    "qfa_variant_array_bounds": (ctypes.c_int32, [c_variant_p, ctypes.c_int32, ctypes.POINTER(ctypes.c_int32),
                                                  ctypes.POINTER(ctypes.c_int32)]),
    "qfa_variant_array_get": (ctypes.c_int32, [c_variant_p, ctypes.c_int32, ctypes.c_int32, c_variant_p]),
    "qfa_variant_array_set": (ctypes.c_int32, [c_variant_p, ctypes.c_int32, c_variant_p]),
    "qfa_object_addref": (None, [c_object_p]),
    "qfa_object_release": (None, [c_object_p]),
    "qfa_object_type_name": (ctypes.c_char_p, [c_object_p]),
    "qfa_invoke": (ctypes.c_int32, [c_object_p, ctypes.c_char_p, ctypes.c_int32, ctypes.POINTER(c_variant_p),
                                    ctypes.c_size_t, ctypes.POINTER(ctypes.c_char_p), ctypes.c_size_t, c_variant_p]),
    "qfa_host_object_new": (c_object_p, [ctypes.POINTER(HostVtable), ctypes.c_void_p]),
    "qfa_register_running_object": (ctypes.c_int32, [ctypes.c_char_p, c_object_p]),
    "qfa_revoke_running_object": (ctypes.c_int32, [ctypes.c_char_p]),
    "qfa_thread_done": (None, []),
    "qfa_class_count": (ctypes.c_size_t, []),
    "qfa_class_name": (ctypes.c_char_p, [ctypes.c_size_t]),
    "DllGetClassObject": (ctypes.c_int32, [ctypes.c_char_p, ctypes.POINTER(c_object_p)]),
    "qfa_class_create_instance": (ctypes.c_int32, [c_object_p, ctypes.POINTER(c_object_p)]),
    "qfa_class_lock_server": (ctypes.c_int32, [c_object_p, ctypes.c_int]),
    "qfa_create_object": (ctypes.c_int32, [ctypes.c_char_p, ctypes.POINTER(c_object_p)]),
    "DllCanUnloadNow": (ctypes.c_int, []),
    "DllRegisterServer": (ctypes.c_int32, []),
    "DllUnregisterServer": (ctypes.c_int32, []),
    "qfa_registration_path": (ctypes.c_char_p, []),
    "qfa_type_library": (ctypes.c_char_p, []),
    "qfa_version": (ctypes.c_char_p, []),
}


def registration_path():
    """Where the per-user registration record is kept."""
    base = os.environ.get("XDG_DATA_HOME") or os.path.join(os.path.expanduser("~"), ".local", "share")
    return Path(base) / "QuillFormatAPA" / "registration.json"


def find_library():
    """The library to load: $QUILLFORMATAPA_LIBRARY, else the registered one,
    else whatever the system's loader finds."""
    explicit = os.environ.get("QUILLFORMATAPA_LIBRARY")
    if explicit:
        return explicit
    record = registration_path()
    if record.is_file():
        try:
            registered = json.loads(record.read_text(encoding="utf-8")).get("library")
        except (OSError, ValueError):
            registered = None
        if registered and Path(registered).is_file():
            return registered
    found = ctypes.util.find_library("QuillFormatAPA")
    if found:
        return found
    raise OSError("QuillFormatAPA is not registered and not on the library path; "
                  "set QUILLFORMATAPA_LIBRARY to the path of libQuillFormatAPA.so")


def load(path=None):
    """Loads the shared library and declares its functions."""
    dll = ctypes.CDLL(path or find_library())
    for name, (restype, argtypes) in _SIGNATURES.items():
        function = getattr(dll, name)
        function.restype = restype
        function.argtypes = argtypes
    return dll
