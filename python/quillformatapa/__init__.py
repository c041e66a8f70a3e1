"""Python binding of QuillFormatAPA, over its C interface (ctypes only).

    import quillformatapa as qfa
    main = qfa.Main2()
    main.buildInstruction("Title", 3)             # '3Title'
    words = qfa.ByRef()
    main.IntArray(words, [1, 2, 3])               # words.value == [1, 2, 3]

Library objects answer attribute access late-bound: a property without
parameters reads as an attribute, everything else is called. Arguments are
Python values; keyword arguments are passed as named arguments, ByRef
wraps an argument the member may write.

Any Python object can be handed to the library as a host object: the
library's late-bound calls reach its attributes and methods by name,
case-insensitively, named arguments included. An argument the library passes
by reference reaches a Python method as a ByRef, whose value it may set.
"""

import atexit
import contextlib
import ctypes
import inspect
import itertools
import json
import threading

from . import _capi
from ._capi import METHOD, PROPERTY_GET, PROPERTY_PUT

__all__ = ["AutomationError", "ByRef", "Diagnostics", "Dispatch", "Library", "Main2", "Missing", "Nothing",
           "library"]

BRIDGE_CLASS = "QuillPaperDot.BridgeToVB"


class AutomationError(Exception):
    """A run-time error of a late-bound call: the platform's number and text."""

    def __init__(self, number, description="", source=""):
        super().__init__(f"{number}: {description}" + (f" ({source})" if source else ""))
        self.number = number
        self.description = description
        self.source = source


class ByRef:
    """An argument passed by reference: after the call, `value` holds what the
    callee left in it."""

    def __init__(self, value=None):
        self.value = value

    def __repr__(self):
        return f"ByRef({self.value!r})"


class _Sentinel:
    def __init__(self, name):
        self._name = name

    def __repr__(self):
        return self._name


Missing = _Sentinel("Missing")  # an optional argument left out
Nothing = _Sentinel("Nothing")  # the empty object reference


class Diagnostics:
    """A diagnostics service for the library: keeps its call stack and records
    every error it reports. It answers the first error of a thread by leaving
    the failing procedure; the library skips every later one without asking.
    Pass `trace` (a callable taking one line) to see every procedure."""

    EXIT, END, RETRY, IGNORE = 1, 3, 4, 5

    def __init__(self, trace=None, answer=EXIT):
        self.stack = []
        self.errors = []
        self._trace = trace
        self._answer = answer
        self._dump = []

    def vbwProcIn(self, name, parameterText):
        if self._trace:
            text = parameterText.value if isinstance(parameterText, ByRef) else parameterText
            self._trace("  " * len(self.stack) + name + (" " + text if text else ""))
        self.stack.append(name)

    def vbwProcOut(self):
        if self.stack:
            self.stack.pop()

    def vbwReportParameter(self, name, value):
        return f"{name}={value!r}"

    def vbwBeforeDump(self, project, module, procedure, line, number, description, systemError):
        self.errors.append({"where": f"{module}.{procedure}", "line": line, "number": number,
                            "description": description})

    def vbwOpenDumpFile(self):
        self._dump = []

    def vbwReportToFile(self, text):
        self._dump.append(text.value if isinstance(text, ByRef) else text)

    def vbwReportVariable(self, name, value, flag):
        self._dump.append(f"{name} = {value.value if isinstance(value, ByRef) else value!r}")

    def vbwReportObject(self, name, object):  # noqa: A002 - the library's own parameter name
        self._dump.append(f"{name} = <{type(object).__name__}>")

    def vbwCloseDumpFile(self):
        if self.errors:
            self.errors[-1]["dump"] = list(self._dump)

    def vbwAfterDump(self):
        return self._answer

    def vbwExitThread(self, flag):
        self.stack.clear()


class _Bridge:
    """What the library looks up among the running objects to find the service."""

    def __init__(self, service):
        self.ErrorParams = service


class _Variant:
    """A variant owned by Python for the length of one call."""

    def __init__(self, lib):
        self._dll = lib._dll
        self.ptr = self._dll.qfa_variant_new()
        if not self.ptr:
            raise MemoryError("no memory for a variant")

    def free(self):
        if self.ptr:
            self._dll.qfa_variant_free(self.ptr)
            self.ptr = None


class Dispatch:
    """A library object (or any object the library hands out), driven late-bound."""

    __slots__ = ("_lib", "_ptr", "__weakref__")

    def __init__(self, lib, ptr):
        object.__setattr__(self, "_lib", lib)
        object.__setattr__(self, "_ptr", ptr)  # one reference, ours

    def __del__(self):
        ptr, self_lib = getattr(self, "_ptr", None), getattr(self, "_lib", None)
        if ptr and self_lib is not None and self_lib._dll is not None:
            object.__setattr__(self, "_ptr", None)
            self_lib._dll.qfa_object_release(ptr)

    @property
    def type_name(self):
        return self._lib._dll.qfa_object_type_name(self._ptr).decode()

    def __getattr__(self, name):
        if name.startswith("__"):
            raise AttributeError(name)
        member = self._lib._member(self.type_name, name)
        if member and member["kind"] != "method" and not member["params"]:
            return self._lib._invoke(self._ptr, member["name"], PROPERTY_GET, (), {})
        return _BoundMember(self, member["name"] if member else name)

    def __setattr__(self, name, value):
        self._lib._invoke(self._ptr, name, PROPERTY_PUT, (value,), {})

    def __eq__(self, other):
        return isinstance(other, Dispatch) and other._ptr == self._ptr

    def __hash__(self):
        return hash(self._ptr)

    def __repr__(self):
        return f"<{self.type_name} object>"


class _BoundMember:
    def __init__(self, target, name):
        self._target = target
        self._name = name

    def __call__(self, *args, **kwargs):
        return self._target._lib._invoke(self._target._ptr, self._name, METHOD | PROPERTY_GET, args, kwargs)

    def __repr__(self):
        return f"<member {self._name} of {self._target!r}>"


class _HostEntry:
    """One Python object the library holds, with the member ids given out."""

    def __init__(self, obj):
        self.obj = obj
        self.names = []
        self.ids = {}
        self.type_name = type(obj).__name__.encode()
        self.pointer = None


class Library:
    """The loaded library: its class factory, registration and type library."""

    def __init__(self, path=None):
        self._dll = _capi.load(path)
        self._hosts = {}  # key -> _HostEntry
        self._host_by_pointer = {}  # qfa_object address -> key
        self._host_by_object = {}  # id(python object) -> key
        self._keys = itertools.count(1)
        # The host tables are shared by every thread; the library calls back
        # from any of them (the GIL is let go during each call into it).
        self._host_lock = threading.RLock()
        # A KeyboardInterrupt or SystemExit raised in a host object's method
        # waits here, per thread, while the library unwinds; it is raised
        # again once the call into the library returns.
        self._interrupted = threading.local()
        self._vtable = _capi.HostVtable(_capi.ID_OF_NAME(self._id_of_name), _capi.INVOKE(self._host_invoke),
                                        _capi.RELEASE(self._host_release), _capi.TYPE_NAME(self._host_type_name))
        self.type_library = json.loads(self._dll.qfa_type_library().decode())
        described = self.type_library["classes"] + [self.type_library["classObject"]]
        self._members = {c["name"].lower(): {m["name"].lower(): m for m in c["members"]} for c in described}
        self.diagnostics = None
        self.use_diagnostics(Diagnostics())
        atexit.register(self.close)

    # ---- server -------------------------------------------------------------------

    @property
    def version(self):
        return self._dll.qfa_version().decode()

    @property
    def classes(self):
        return [self._dll.qfa_class_name(i).decode() for i in range(self._dll.qfa_class_count())]

    def create(self, class_name):
        """A new object of a public class ("QuillFormatAPA.Main2")."""
        out = _capi.c_object_p()
        self._check(self._dll.qfa_create_object(class_name.encode(), ctypes.byref(out)))
        return Dispatch(self, out.value)

    def class_object(self, class_name):
        """The class object of a public class: CreateInstance(), LockServer(lock)."""
        out = _capi.c_object_p()
        self._check(self._dll.DllGetClassObject(class_name.encode(), ctypes.byref(out)))
        return Dispatch(self, out.value)

    def can_unload_now(self):
        """Whether no object of the library's making is alive: every object
        released, and close() called (the library holds the diagnostics service)."""
        return bool(self._dll.DllCanUnloadNow())

    def register_server(self):
        self._check(self._dll.DllRegisterServer())

    def unregister_server(self):
        """Removes this user's registration; False (nothing done) when the
        library was not registered."""
        return self._check(self._dll.DllUnregisterServer()) == _capi.OK

    @property
    def registration_path(self):
        return self._dll.qfa_registration_path().decode()

    def use_diagnostics(self, service):
        """Makes `service` the diagnostics service the library reports to."""
        self._dll.qfa_thread_done()
        self.register_running_object(BRIDGE_CLASS, _Bridge(service))
        self.diagnostics = service

    def register_running_object(self, class_name, obj):
        with self._temporary() as v:
            self._set(v.ptr, obj)
            holder = _capi.c_object_p()
            self._check(self._dll.qfa_variant_get_object(v.ptr, ctypes.byref(holder)))
            try:
                self._check(self._dll.qfa_register_running_object(class_name.encode(), holder.value))
            finally:
                self._dll.qfa_object_release(holder.value)

    def revoke_running_object(self, class_name):
        return self._check(self._dll.qfa_revoke_running_object(class_name.encode())) == _capi.OK

    def close(self):
        """Lets go of every Python object the library still holds for this
        thread: the diagnostics service and its bridge (use_diagnostics
        brings them back)."""
        if self._dll is None:
            return
        self._dll.qfa_thread_done()
        self._dll.qfa_revoke_running_object(BRIDGE_CLASS.encode())

    # ---- calls into the library ------------------------------------------------------

    def _member(self, type_name, name):
        return self._members.get(type_name.lower(), {}).get(name.lower())

    def _error(self, number):
        return AutomationError(number, self._dll.qfa_error_description().decode(errors="replace"),
                               self._dll.qfa_error_source().decode(errors="replace"))

    def _check(self, number):
        if number not in (_capi.OK, _capi.FALSE):
            raise self._error(number)
        return number

    @contextlib.contextmanager
    def _temporary(self):
        """A variant for the length of a `with` block."""
        v = _Variant(self)
        try:
            yield v
        finally:
            v.free()

    def _invoke(self, ptr, name, kind, args, kwargs):
        values = list(args) + list(kwargs.values())
        names = [n.encode() for n in kwargs]
        owned = []
        try:
            slots = []
            written = []
            for value in values:
                slot = _Variant(self)
                owned.append(slot)
                if isinstance(value, ByRef):
                    target = _Variant(self)
                    owned.append(target)
                    self._set(target.ptr, value.value)
                    self._check(self._dll.qfa_variant_set_byref(slot.ptr, target.ptr))
                    written.append((value, target))
                else:
                    self._set(slot.ptr, value)
                slots.append(slot.ptr)
            result = _Variant(self)
            owned.append(result)
            arg_array = (_capi.c_variant_p * max(1, len(slots)))(*slots)
            name_array = (ctypes.c_char_p * max(1, len(names)))(*names)
            number = self._dll.qfa_invoke(ptr, name.encode(), kind, arg_array, len(slots), name_array, len(names),
                                          result.ptr)
            interrupted = getattr(self._interrupted, "error", None)
            if interrupted is not None:
                self._interrupted.error = None
                raise interrupted
            if number:
                raise self._error(number)
            for ref, target in written:
                ref.value = self._get(target.ptr)
            return self._get(result.ptr)
        finally:
            for v in owned:
                v.free()

    # ---- values -------------------------------------------------------------------------

    def _set(self, ptr, value):
        """Writes a Python value into a variant."""
        dll = self._dll
        if value is None:
            dll.qfa_variant_set_empty(ptr)
        elif value is Missing:
            dll.qfa_variant_set_missing(ptr)
        elif value is Nothing:
            dll.qfa_variant_set_object(ptr, None)
        elif isinstance(value, ByRef):
            self._set(ptr, value.value)
        elif isinstance(value, bool):
            dll.qfa_variant_set_bool(ptr, int(value))
        elif isinstance(value, int):
            if -2**31 <= value < 2**31:
                dll.qfa_variant_set_long(ptr, value)
            else:
                try:
                    dll.qfa_variant_set_double(ptr, float(value))
                except OverflowError:
                    raise AutomationError(6, "Overflow: the number is too large for the library") from None
        elif isinstance(value, float):
            dll.qfa_variant_set_double(ptr, value)
        elif isinstance(value, str):
            data = value.encode("utf-8")
            self._check(dll.qfa_variant_set_string(ptr, data, len(data)))
        elif isinstance(value, Dispatch):
            dll.qfa_variant_set_object(ptr, value._ptr)
        elif isinstance(value, (list, tuple)):
            self._check(dll.qfa_variant_set_array(ptr, 0, len(value)))
            with self._temporary() as element:
                for i, item in enumerate(value):
                    self._set(element.ptr, item)
                    self._check(dll.qfa_variant_array_set(ptr, i, element.ptr))
        else:
            host = self._wrap(value)
            try:
                dll.qfa_variant_set_object(ptr, host)
            finally:
                dll.qfa_object_release(host)

    def _get(self, ptr):
        """Reads a variant as a Python value."""
        dll = self._dll
        kind = dll.qfa_variant_type(ptr)
        if kind in (_capi.EMPTY, _capi.NULL, _capi.MISSING):
            return None
        if kind == _capi.BOOLEAN:
            out = ctypes.c_int()
            self._check(dll.qfa_variant_get_bool(ptr, ctypes.byref(out)))
            return bool(out.value)
        if kind in (_capi.INTEGER, _capi.LONG):
            out = ctypes.c_int32()
            self._check(dll.qfa_variant_get_long(ptr, ctypes.byref(out)))
            return out.value
        if kind == _capi.DOUBLE:
            out = ctypes.c_double()
            self._check(dll.qfa_variant_get_double(ptr, ctypes.byref(out)))
            return out.value
        if kind == _capi.STRING:
            text, length = ctypes.c_void_p(), ctypes.c_size_t()
            self._check(dll.qfa_variant_get_string(ptr, ctypes.byref(text), ctypes.byref(length)))
            return ctypes.string_at(text, length.value).decode("utf-8", errors="replace") if length.value else ""
        if kind == _capi.OBJECT:
            out = _capi.c_object_p()
            self._check(dll.qfa_variant_get_object(ptr, ctypes.byref(out)))
            if not out.value:
                return Nothing
            key = self._host_by_pointer.get(out.value)
            if key is not None:
                dll.qfa_object_release(out.value)
                return self._hosts[key].obj
            return Dispatch(self, out.value)
        if kind == _capi.ARRAY:
            return self._get_array(ptr)
        raise AutomationError(13, f"a variant of unknown type {kind}")

    def _get_array(self, ptr):
        dll = self._dll
        dims = dll.qfa_variant_array_dims(ptr)
        bounds = []
        for d in range(1, dims + 1):
            lower, upper = ctypes.c_int32(), ctypes.c_int32()
            self._check(dll.qfa_variant_array_bounds(ptr, d, ctypes.byref(lower), ctypes.byref(upper)))
            bounds.append(range(lower.value, upper.value + 1))
        if dims < 1:  # an array the library declared but never dimensioned
            return []
        with self._temporary() as element:
            def at(i, j=0):
                self._check(dll.qfa_variant_array_get(ptr, i, j, element.ptr))
                return self._get(element.ptr)

            if dims == 1:
                return [at(i) for i in bounds[0]]
            return [[at(i, j) for j in bounds[1]] for i in bounds[0]]

    # ---- Python objects as host objects ----------------------------------------------------

    def _wrap(self, obj):
        """A new reference to the host object standing for `obj`."""
        with self._host_lock:
            key = self._host_by_object.get(id(obj))
            if key is not None:
                pointer = self._hosts[key].pointer
                self._dll.qfa_object_addref(pointer)
                return pointer
            key = next(self._keys)
            entry = _HostEntry(obj)
            self._hosts[key] = entry
            pointer = self._dll.qfa_host_object_new(ctypes.byref(self._vtable), key)
            if not pointer:
                del self._hosts[key]
                raise MemoryError("the library could not wrap a host object")
            entry.pointer = pointer
            self._host_by_pointer[pointer] = key
            self._host_by_object[id(obj)] = key
            return pointer

    def _id_of_name(self, key, name):
        try:
            entry = self._hosts[key]
            wanted = name.decode()
            folded = wanted.lower()
            if folded in entry.ids:
                return entry.ids[folded]
            actual = _attribute_name(entry.obj, wanted)
            if actual is None:
                return -1
            entry.ids[folded] = len(entry.names)
            entry.names.append(actual)
            return entry.ids[folded]
        except Exception:  # noqa: BLE001 - nothing may unwind into the library
            return -1

    def _host_invoke(self, key, member_id, kind, args, argc, names, named_count, result):
        try:
            entry = self._hosts[key]
            name = entry.names[member_id]
            if getattr(self._interrupted, "error", None) is not None:
                # Unwinding: the service ends the library's work, everything else fails.
                if name.lower() == "vbwafterdump":
                    self._dll.qfa_variant_set_long(result, Diagnostics.END)
                    return 0
                return self._raise(18, "User interrupt occurred")
            positional_count = argc - named_count
            values = [self._host_argument(args[i]) for i in range(argc)]
            positional = values[:positional_count]
            named = {names[k].decode(): values[positional_count + k] for k in range(named_count)}
            value = _call_host(entry.obj, name, kind, positional, named)
            for i in range(argc):  # what a method left in a ByRef goes back to the caller
                if isinstance(values[i], ByRef):
                    self._set(args[i], values[i].value)
            if value is not None:
                self._set(result, value)
            return 0
        except AutomationError as e:
            return self._raise(e.number, e.description)
        except TypeError as e:
            return self._raise(450, f"{type(e).__name__}: {e}")
        except Exception as e:  # noqa: BLE001 - nothing may unwind into the library
            return self._raise(5, f"{type(e).__name__}: {e}")
        except BaseException as e:  # KeyboardInterrupt, SystemExit: kept for the caller
            self._interrupted.error = e
            return self._raise(18, "User interrupt occurred")

    def _host_argument(self, ptr):
        value = self._get(ptr)
        return ByRef(value) if self._dll.qfa_variant_is_byref(ptr) else value

    def _raise(self, number, description):
        self._dll.qfa_set_error(number, description.encode("utf-8", errors="replace"))
        return number

    def _host_release(self, key):
        with self._host_lock:
            entry = self._hosts.pop(key, None)
            if entry is not None:
                self._host_by_pointer.pop(entry.pointer, None)
                self._host_by_object.pop(id(entry.obj), None)

    def _host_type_name(self, key):
        entry = self._hosts.get(key)
        return ctypes.cast(ctypes.c_char_p(entry.type_name), ctypes.c_void_p).value if entry else None


def _attribute_name(obj, name):
    """The attribute of `obj` that answers `name`, case-insensitively."""
    if hasattr(obj, name):
        return name
    folded = name.lower()
    for candidate in dir(obj):
        if candidate.lower() == folded and not candidate.startswith("__"):
            return candidate
    if isinstance(obj, dict):  # a dictionary answers its keys as properties
        for key in obj:
            if isinstance(key, str) and key.lower() == folded:
                return key
    return None


def _call_host(obj, name, kind, positional, named):
    """Runs one late-bound call on a Python object."""
    if kind & PROPERTY_PUT:
        *indices, value = [_plain(v) for v in positional]
        if indices:  # an indexed property: assign into what the attribute holds
            target = getattr(obj, name)
            for index in indices[:-1]:
                target = target[index]
            target[indices[-1]] = value
        elif isinstance(obj, dict) and not hasattr(obj, name):
            obj[name] = value
        else:
            setattr(obj, name, value)
        return None
    attribute = obj[name] if isinstance(obj, dict) and not hasattr(obj, name) else getattr(obj, name)
    if inspect.isroutine(attribute):
        return attribute(*positional, **_match_names(attribute, named))
    if named:
        raise AutomationError(448, f"{name} is a value and takes no named arguments")
    for index in positional:  # an indexed property: index into what the attribute holds
        attribute = attribute[_plain(index)]
    return attribute


def _match_names(function, named):
    """Named arguments renamed to the function's own parameter names, matched
    case-insensitively."""
    if not named:
        return {}
    try:
        parameters = inspect.signature(function).parameters
    except (TypeError, ValueError):
        return named
    by_fold = {name.lower(): name for name, p in parameters.items()
               if p.kind in (p.POSITIONAL_OR_KEYWORD, p.KEYWORD_ONLY)}
    takes_any = any(p.kind == p.VAR_KEYWORD for p in parameters.values())
    out = {}
    for key, value in named.items():
        actual = by_fold.get(key.lower(), key if takes_any else None)
        if actual is None:
            raise AutomationError(448, f"{getattr(function, '__name__', 'member')} has no parameter {key}")
        out[actual] = value
    return out


def _plain(value):
    return value.value if isinstance(value, ByRef) else value


_library = None
_library_lock = threading.Lock()


def library(path=None):
    """The library, loaded on first use (see _capi.find_library for where from);
    one for the process, whichever thread asks first."""
    global _library
    with _library_lock:
        if _library is None:
            _library = Library(path)
        return _library


def Main2():  # noqa: N802 - the library's class name
    """A new command object."""
    return library().create("QuillFormatAPA.Main2")
