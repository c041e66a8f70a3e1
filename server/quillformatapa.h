/* QuillFormatAPA as an in-process server: the C interface.
 *
 * A host loads libQuillFormatAPA.so, asks its class factory for objects by
 * class name ("QuillFormatAPA.Main2", ...) and drives them late-bound: every
 * member is invoked by name with variant arguments, positional or named, by
 * value or by reference. Host objects written in C (a table of callbacks)
 * can be handed to the library, which calls them the same way.
 *
 * Errors never cross this interface as exceptions. A function that can fail
 * returns 0 (QFA_OK) or the platform's run-time error number (13 type
 * mismatch, 438 unknown member, ...); qfa_error_description() and
 * qfa_error_source() then tell more, until the next call on the same thread.
 *
 * Reference counting: every qfa_object* the library hands out carries one
 * reference that the receiver gives back with qfa_object_release(). Objects
 * passed in are borrowed for the call; the library takes its own reference
 * when it keeps them. */
#ifndef QUILLFORMATAPA_H
#define QUILLFORMATAPA_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define QFA_C_API __attribute__((visibility("default")))

#define QFA_OK 0
/* Success with nothing done (unregistering what was not registered). */
#define QFA_FALSE 1

typedef struct qfa_object qfa_object;
typedef struct qfa_variant qfa_variant;

/* The types a variant holds. */
enum qfa_type {
  QFA_EMPTY = 0,   /* never assigned */
  QFA_NULL = 1,    /* no valid data */
  QFA_MISSING = 2, /* an optional argument left out */
  QFA_BOOLEAN = 3,
  QFA_INTEGER = 4, /* 16-bit */
  QFA_LONG = 5,    /* 32-bit */
  QFA_DOUBLE = 6,
  QFA_STRING = 7, /* UTF-8 */
  QFA_OBJECT = 8, /* an object, or Nothing */
  QFA_ARRAY = 9
};

/* How a member is invoked; QFA_METHOD | QFA_PROPERTY_GET lets either answer. */
enum qfa_call_kind { QFA_METHOD = 1, QFA_PROPERTY_GET = 2, QFA_PROPERTY_PUT = 4 };

/* ---- errors ---------------------------------------------------------------- */

/* The description and source of the last error on this thread ("" if none). */
QFA_C_API const char* qfa_error_description(void);
QFA_C_API const char* qfa_error_source(void);
/* For a host object's invoke callback: sets the description the library
 * reports with the error number the callback returns. */
QFA_C_API void qfa_set_error(int32_t number, const char* description);

/* ---- variants -------------------------------------------------------------- */

QFA_C_API qfa_variant* qfa_variant_new(void);
QFA_C_API void qfa_variant_free(qfa_variant* v);
/* Makes `v` empty; a by-reference slot stops referring. */
QFA_C_API void qfa_variant_clear(qfa_variant* v);
QFA_C_API int32_t qfa_variant_copy(qfa_variant* dest, const qfa_variant* src);

/* The type of the value (of the referred value for a by-reference slot). */
QFA_C_API int32_t qfa_variant_type(const qfa_variant* v);
/* Whether `v` is a by-reference slot (the library passes arguments the
 * callee may write this way). */
QFA_C_API int qfa_variant_is_byref(const qfa_variant* v);

/* Setters. On a by-reference slot they write the value referred to. */
QFA_C_API void qfa_variant_set_empty(qfa_variant* v);
QFA_C_API void qfa_variant_set_null(qfa_variant* v);
QFA_C_API void qfa_variant_set_missing(qfa_variant* v);
QFA_C_API void qfa_variant_set_bool(qfa_variant* v, int value);
QFA_C_API void qfa_variant_set_integer(qfa_variant* v, int16_t value);
QFA_C_API void qfa_variant_set_long(qfa_variant* v, int32_t value);
QFA_C_API void qfa_variant_set_double(qfa_variant* v, double value);
/* Copies `length` bytes of UTF-8 text. */
QFA_C_API int32_t qfa_variant_set_string(qfa_variant* v, const char* text, size_t length);
/* Takes a reference of its own; NULL sets Nothing. */
QFA_C_API void qfa_variant_set_object(qfa_variant* v, qfa_object* object);
/* A one-dimensional array of `count` empty variants with indices from
 * `lower`; fill it with qfa_variant_array_set. 6 when its last index would
 * not be a 32-bit number. */
QFA_C_API int32_t qfa_variant_set_array(qfa_variant* v, int32_t lower, int32_t count);
/* Turns `v` into a by-reference slot: the callee reads and writes `target`.
 * 5 when `target` is `v` or refers to it (a cycle). */
QFA_C_API int32_t qfa_variant_set_byref(qfa_variant* v, qfa_variant* target);

/* Getters convert as the platform does (13 type mismatch, 6 overflow). */
QFA_C_API int32_t qfa_variant_get_bool(const qfa_variant* v, int* out);
QFA_C_API int32_t qfa_variant_get_long(const qfa_variant* v, int32_t* out);
QFA_C_API int32_t qfa_variant_get_double(const qfa_variant* v, double* out);
/* The text of the value: for a string, its own bytes, valid while `v` keeps
 * it; for a number or boolean, its text, valid until the next call of this
 * function on the same thread. The text is not NUL-terminated: use *length. */
QFA_C_API int32_t qfa_variant_get_string(const qfa_variant* v, const char** text, size_t* length);
/* A new reference to the object held (NULL for Nothing); 424 for a non-object. */
QFA_C_API int32_t qfa_variant_get_object(const qfa_variant* v, qfa_object** out);

/* Arrays: dimensions (0 for a non-array), bounds of dimension 1 or 2, and
 * elements by index (`j` is ignored for one dimension). Out-of-range is 9. */
QFA_C_API int32_t qfa_variant_array_dims(const qfa_variant* v);
QFA_C_API int32_t qfa_variant_array_bounds(const qfa_variant* v, int32_t dimension, int32_t* lower, int32_t* upper);
QFA_C_API int32_t qfa_variant_array_get(const qfa_variant* v, int32_t i, int32_t j, qfa_variant* out);
QFA_C_API int32_t qfa_variant_array_set(qfa_variant* v, int32_t i, const qfa_variant* value);

/* ---- objects --------------------------------------------------------------- */

QFA_C_API void qfa_object_addref(qfa_object* object);
QFA_C_API void qfa_object_release(qfa_object* object);
/* The class name ("Main2"); valid while the object lives. */
QFA_C_API const char* qfa_object_type_name(qfa_object* object);

/* Invokes `member` on `object`. `args` holds `argc` arguments, positional
 * ones first; the last `named_count` of them are named by `names`. A
 * by-reference argument is a slot made with qfa_variant_set_byref. `result`
 * may be NULL. Returns 0 or the error number. */
QFA_C_API int32_t qfa_invoke(qfa_object* object, const char* member, int32_t kind, qfa_variant* const* args,
                             size_t argc, const char* const* names, size_t named_count, qfa_variant* result);

/* A host object. The library calls `id_of_name` to resolve a member name
 * (case-insensitively; -1 for a member the object lacks; a member's id must
 * stay the same for the object's life, as the library asks once) and `invoke` to call
 * it, with arguments laid out as for qfa_invoke. `invoke` returns 0 or an
 * error number (with qfa_set_error for its description); it must not unwind
 * into the library. `release` runs when the last reference goes; `type_name`
 * may be NULL. */
typedef struct qfa_host_vtable {
  int32_t (*id_of_name)(void* self, const char* name);
  int32_t (*invoke)(void* self, int32_t id, int32_t kind, qfa_variant* const* args, size_t argc,
                    const char* const* names, size_t named_count, qfa_variant* result);
  void (*release)(void* self);
  const char* (*type_name)(void* self);
} qfa_host_vtable;

/* Wraps `self` as an object with one reference (the vtable is copied);
 * NULL when `vtable` has no invoke callback. */
QFA_C_API qfa_object* qfa_host_object_new(const qfa_host_vtable* vtable, void* self);

/* The process's running objects: a host registers its diagnostics bridge
 * ("QuillPaperDot.BridgeToVB") here before it drives the library. */
QFA_C_API int32_t qfa_register_running_object(const char* class_name, qfa_object* object);
/* QFA_FALSE when nothing was registered under the name. */
QFA_C_API int32_t qfa_revoke_running_object(const char* class_name);

/* The host is done with the library on this thread: the diagnostics service
 * the library looked up is told so and let go (as when a command object
 * goes). Call it before the host's objects can no longer be called. */
QFA_C_API void qfa_thread_done(void);

/* ---- class factory and server -------------------------------------------- */

/* The public classes, "QuillFormatAPA.Main2" first. */
QFA_C_API size_t qfa_class_count(void);
QFA_C_API const char* qfa_class_name(size_t index);

/* The class object of a class (case-insensitive): 429 for a name the library
 * does not serve. The class object is itself an object with the members
 * CreateInstance and LockServer(lock). */
QFA_C_API int32_t DllGetClassObject(const char* class_name, qfa_object** class_object);
QFA_C_API int32_t qfa_class_create_instance(qfa_object* class_object, qfa_object** instance);
/* Keeps the library loaded (lock != 0) or lets it go again. */
QFA_C_API int32_t qfa_class_lock_server(qfa_object* class_object, int lock);
/* DllGetClassObject and CreateInstance in one step. */
QFA_C_API int32_t qfa_create_object(const char* class_name, qfa_object** instance);

/* 1 exactly when no object the library made is alive (the host objects it
 * wraps included, and those it holds: a registered running object, the
 * diagnostics service until qfa_thread_done) and no lock is held. */
QFA_C_API int DllCanUnloadNow(void);

/* Writes the per-user registration record
 * ($XDG_DATA_HOME/QuillFormatAPA/registration.json): the library's path, its
 * classes and its type library. Registering again rewrites it. */
QFA_C_API int32_t DllRegisterServer(void);
/* Removes the record; QFA_FALSE (with a description) when this library is
 * not registered. */
QFA_C_API int32_t DllUnregisterServer(void);
/* Where the registration record is kept for this user. */
QFA_C_API const char* qfa_registration_path(void);

/* The type library: every public class with its members in dispatch order,
 * as JSON. The same text is installed beside the library. */
QFA_C_API const char* qfa_type_library(void);

/* "0.1.0" */
QFA_C_API const char* qfa_version(void);

#ifdef __cplusplus
}
#endif

#endif /* QUILLFORMATAPA_H */
