// The C interface of the in-process server. Every function that can fail runs
// its body through guarded(): whatever goes wrong comes back as an error
// number with its description kept per thread, never as an exception.

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <new>
#include <span>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "command/ClassFactory.h"
#include "diagnostics/vbwProtector.h"
#include "host/Args.h"
#include "host/Array.h"
#include "host/AutomationError.h"
#include "host/CallSite.h"
#include "host/LibraryObject.h"
#include "host/Object.h"
#include "host/RunningObjects.h"
#include "host/Variant.h"
#include "server/ClassObject.h"
#include "server/Registration.h"
#include "server/TypeLibrary.h"
#include "server/quillformatapa.h"

using namespace QuillFormatAPA;

namespace {

// ---- the last error of this thread ------------------------------------------

struct LastError {
  int32_t number = 0;
  std::string description;
  std::string source;
};
thread_local LastError lastError;

int32_t fail(int32_t number, std::string description, std::string source = {}) noexcept {
  try {
    lastError.number = number;
    lastError.description = std::move(description);
    lastError.source = std::move(source);
  } catch (...) {
    lastError.description.clear();
    lastError.source.clear();
  }
  return number;
}

void clearError() noexcept {
  LastError& e = lastError;
  if (e.number == 0 && e.description.empty() && e.source.empty()) return;
  e.number = 0;
  e.description.clear();
  e.source.clear();
}

template <class F>
int32_t guarded(F&& body) noexcept {
  clearError();
  try {
    return body();
  } catch (const AutomationError& e) {
    return fail(e.number(), e.description(), e.source());
  } catch (const std::bad_alloc&) {
    return fail(kOutOfMemory, std::string(standardDescription(kOutOfMemory)));
  } catch (const std::exception& e) {
    return fail(kInternalError, e.what());
  } catch (...) {
    return fail(kInternalError, std::string(standardDescription(kInternalError)));
  }
}

[[noreturn]] void invalid(const char* what) { throw AutomationError(kInvalidProcedureCall, what, ""); }

// ---- the handles are the library's own objects --------------------------------

Variant& V(qfa_variant* v) { return *reinterpret_cast<Variant*>(v); }
const Variant& V(const qfa_variant* v) { return *reinterpret_cast<const Variant*>(v); }
qfa_variant* C(Variant* v) { return reinterpret_cast<qfa_variant*>(v); }
Object* O(qfa_object* o) { return reinterpret_cast<Object*>(o); }
qfa_object* C(Object* o) { return reinterpret_cast<qfa_object*>(o); }

// Hands a reference over to C.
qfa_object* handOver(ObjectRef o) { return C(o.detach()); }

// A value written through a by-reference slot reaches what it refers to.
void assign(qfa_variant* v, Variant value) noexcept {
  if (v) V(v).deref() = std::move(value);
}

// Room for a call's values without asking the heap: most calls have a few.
// Only the items asked for are made (value-initialised) and unmade.
template <class T, size_t N>
class SmallList {
 public:
  explicit SmallList(size_t size) : size_(size) {
    if (size > N) more_.resize(size);
    else std::uninitialized_value_construct_n(fixed(), size);
  }
  SmallList(const SmallList&) = delete;
  SmallList& operator=(const SmallList&) = delete;
  ~SmallList() {
    if (size_ <= N) std::destroy_n(fixed(), size_);
  }
  std::span<T> items() noexcept { return {size_ > N ? more_.data() : fixed(), size_}; }
  T& operator[](size_t i) noexcept { return items()[i]; }

 private:
  T* fixed() noexcept { return std::launder(reinterpret_cast<T*>(storage_)); }

  size_t size_;
  alignas(T) unsigned char storage_[N * sizeof(T)];
  std::vector<T> more_;
};

// The arguments of a C call as the object model takes them: positional ones
// copied (a by-reference slot keeps referring to the caller's variant), named
// ones with their names.
class CallArguments {
 public:
  CallArguments(qfa_variant* const* args, size_t argc, const char* const* names, size_t namedCount)
      : positional_(checked(args, argc, names, namedCount)), named_(namedCount) {
    const size_t positional = argc - namedCount;
    // The caller's texts are lent for the call, unless the callee could
    // write one of them through a by-reference argument while reading the loan.
    const bool lend = std::none_of(args, args + argc, [](const qfa_variant* v) { return v && V(v).isByRef(); });
    const auto value = [&](const qfa_variant* v) {
      return !v ? Variant::missing() : lend ? Variant::lend(V(v)) : V(v);
    };
    for (size_t i = 0; i < positional; ++i) positional_[i].assignWithin(value(args[i]));
    for (size_t k = 0; k < namedCount; ++k) {
      if (!names[k]) invalid("a named argument without a name");
      named_[k].name = names[k];
      named_[k].value.assignWithin(value(args[positional + k]));
    }
  }
  Args args() { return Args(positional_.items(), named_.items()); }

 private:
  // The number of positional arguments, once the counts are known to be sound.
  static size_t checked(qfa_variant* const* args, size_t argc, const char* const* names, size_t namedCount) {
    if (namedCount > argc) invalid("more named arguments than arguments");
    if ((argc && !args) || (namedCount && !names)) invalid("arguments missing");
    return argc - namedCount;
  }

  SmallList<Variant, 8> positional_;
  SmallList<NamedArg, 4> named_;
};

// ---- host objects written in C ------------------------------------------------

// Counted as the library's own: its code runs when the last reference goes.
class HostObject final : public Object, private LibraryObject {
 public:
  HostObject(const qfa_host_vtable& vtable, void* self) : vtable_(vtable), self_(self), idScope_(newIdScope()) {}
  ~HostObject() override {
    if (vtable_.release) vtable_.release(self_);
  }

  // A host object's ids stay the same for its life, so each name is asked
  // once: a call site caches the ids of this object's scope, and a call by
  // name finds them here. Threads share the object: the cache is read and
  // filled under a lock, the host's own callback is made outside it.
  uint64_t idScope() const noexcept override { return idScope_; }
  DispId idOfName(std::string_view name) const noexcept override {
    if (!vtable_.id_of_name) return kUnknownDispId;
    try {
      {
        std::lock_guard lock(mutex_);
        if (auto known = ids_.find(name); known != ids_.end()) return known->second;
      }
      std::string text(name);
      const int32_t answer = vtable_.id_of_name(self_, text.c_str());
      const DispId id = answer < 0 ? kUnknownDispId : answer;
      std::lock_guard lock(mutex_);
      if (id != kUnknownDispId) ids_.emplace(std::move(text), id);
      return id;
    } catch (...) {
      return kUnknownDispId;
    }
  }

  Status invoke(DispId id, CallKind kind, Args& args, Variant& result) noexcept override {
    try {
      SmallList<qfa_variant*, 16> values(args.count());
      size_t at = 0;
      for (Variant& v : args.positional()) values[at++] = C(&v);
      for (NamedArg& named : args.named()) values[at++] = C(&named.value);
      // The names as C strings, when there are any.
      std::vector<std::string> nameTexts;
      std::vector<const char*> names;
      if (!args.named().empty()) {
        nameTexts.reserve(args.named().size());
        for (const NamedArg& named : args.named()) names.push_back(nameTexts.emplace_back(named.name).c_str());
      }
      clearError();
      const int32_t number = vtable_.invoke(self_, id, static_cast<int32_t>(kind), values.items().data(),
                                            values.items().size(), names.data(), names.size(), C(&result));
      if (number == 0) return {};
      std::string description = lastError.number == number && !lastError.description.empty()
                                    ? lastError.description
                                    : std::string(standardDescription(number));
      clearError();
      return Status(AutomationError(number, std::move(description), std::string(typeName())));
    } catch (const std::bad_alloc&) {
      return Status(AutomationError(kOutOfMemory, std::string(typeName())));
    } catch (...) {
      return Status(AutomationError(kInternalError, std::string(typeName())));
    }
  }

  std::string_view typeName() const noexcept override {
    if (!vtable_.type_name) return "Object";
    std::call_once(typeNameAsked_, [&] {
      const char* name = vtable_.type_name(self_);
      try {
        typeName_ = name && *name ? name : "Object";
      } catch (...) {
      }
    });
    if (typeName_.empty()) return "Object";
    return typeName_;
  }

 private:
  struct NameHash {
    using is_transparent = void;
    size_t operator()(std::string_view name) const noexcept { return std::hash<std::string_view>{}(name); }
  };
  qfa_host_vtable vtable_;
  void* self_;
  const uint64_t idScope_;
  mutable std::mutex mutex_;  // guards ids_
  mutable std::unordered_map<std::string, DispId, NameHash, std::equal_to<>> ids_;
  mutable std::once_flag typeNameAsked_;
  mutable std::string typeName_;
};

thread_local std::string convertedText;

}  // namespace

extern "C" {

// ---- errors ----------------------------------------------------------------------

const char* qfa_error_description(void) { return lastError.description.c_str(); }
const char* qfa_error_source(void) { return lastError.source.c_str(); }
void qfa_set_error(int32_t number, const char* description) { fail(number, description ? description : ""); }

// ---- variants ----------------------------------------------------------------------

qfa_variant* qfa_variant_new(void) { return C(new (std::nothrow) Variant()); }
void qfa_variant_free(qfa_variant* v) { delete reinterpret_cast<Variant*>(v); }
void qfa_variant_clear(qfa_variant* v) {
  if (v) V(v) = Variant();
}
int32_t qfa_variant_copy(qfa_variant* dest, const qfa_variant* src) {
  return guarded([&] {
    if (!dest || !src) invalid("no variant");
    V(dest) = V(src).deref();
    return QFA_OK;
  });
}

int32_t qfa_variant_type(const qfa_variant* v) { return v ? static_cast<int32_t>(V(v).type()) : QFA_EMPTY; }
int qfa_variant_is_byref(const qfa_variant* v) { return v && V(v).isByRef(); }

void qfa_variant_set_empty(qfa_variant* v) { assign(v, Variant()); }
void qfa_variant_set_null(qfa_variant* v) { assign(v, Variant::null()); }
void qfa_variant_set_missing(qfa_variant* v) { assign(v, Variant::missing()); }
void qfa_variant_set_bool(qfa_variant* v, int value) { assign(v, Variant(value != 0)); }
void qfa_variant_set_integer(qfa_variant* v, int16_t value) { assign(v, Variant(value)); }
void qfa_variant_set_long(qfa_variant* v, int32_t value) { assign(v, Variant(value)); }
void qfa_variant_set_double(qfa_variant* v, double value) { assign(v, Variant(value)); }
int32_t qfa_variant_set_string(qfa_variant* v, const char* text, size_t length) {
  return guarded([&] {
    if (!v || (!text && length)) invalid("no variant or no text");
    assign(v, Variant(std::string(text ? text : "", length)));
    return QFA_OK;
  });
}
void qfa_variant_set_object(qfa_variant* v, qfa_object* object) { assign(v, Variant(ObjectRef(O(object)))); }
int32_t qfa_variant_set_array(qfa_variant* v, int32_t lower, int32_t count) {
  return guarded([&] {
    if (!v || count < 0) invalid("no variant or a negative count");
    // Its last index must be a 32-bit number too; an empty array needs one below its first.
    const int64_t upper = int64_t{lower} + count - 1;
    if (upper > INT32_MAX || upper < INT32_MIN) throw AutomationError(kOverflow, "the array's bounds");
    assign(v, Variant(Array::vector(lower, static_cast<int32_t>(upper))));
    return QFA_OK;
  });
}
int32_t qfa_variant_set_byref(qfa_variant* v, qfa_variant* target) {
  return guarded([&] {
    if (!v || !target) invalid("no variant");
    // A slot that refers, however far, to itself would be followed for ever.
    if (V(target).reaches(V(v))) invalid("a by-reference slot may not refer to itself");
    V(v) = Variant::byRef(V(target));
    return QFA_OK;
  });
}

int32_t qfa_variant_get_bool(const qfa_variant* v, int* out) {
  return guarded([&] {
    if (!v || !out) invalid("no variant or no output");
    *out = V(v).toBool() ? 1 : 0;
    return QFA_OK;
  });
}
int32_t qfa_variant_get_long(const qfa_variant* v, int32_t* out) {
  return guarded([&] {
    if (!v || !out) invalid("no variant or no output");
    *out = V(v).toLong();
    return QFA_OK;
  });
}
int32_t qfa_variant_get_double(const qfa_variant* v, double* out) {
  return guarded([&] {
    if (!v || !out) invalid("no variant or no output");
    *out = V(v).toDouble();
    return QFA_OK;
  });
}
int32_t qfa_variant_get_string(const qfa_variant* v, const char** text, size_t* length) {
  return guarded([&] {
    if (!v || !text || !length) invalid("no variant or no output");
    const Variant& value = V(v);
    if (value.isString()) {
      const std::string_view view = value.stringView();
      *text = view.data();
      *length = view.size();
    } else {
      convertedText = value.toString();
      *text = convertedText.data();
      *length = convertedText.size();
    }
    return QFA_OK;
  });
}
int32_t qfa_variant_get_object(const qfa_variant* v, qfa_object** out) {
  return guarded([&] {
    if (!v || !out) invalid("no variant or no output");
    *out = handOver(V(v).toObject());
    return QFA_OK;
  });
}

int32_t qfa_variant_array_dims(const qfa_variant* v) {
  return v && V(v).isArray() ? V(v).array().dimensions() : 0;
}
int32_t qfa_variant_array_bounds(const qfa_variant* v, int32_t dimension, int32_t* lower, int32_t* upper) {
  return guarded([&] {
    if (!v || !lower || !upper) invalid("no variant or no output");
    const Array& a = V(v).array();
    *lower = a.lowerBound(dimension);
    *upper = a.upperBound(dimension);
    return QFA_OK;
  });
}
int32_t qfa_variant_array_get(const qfa_variant* v, int32_t i, int32_t j, qfa_variant* out) {
  return guarded([&] {
    if (!v || !out) invalid("no variant or no output");
    const Array& a = V(v).array();
    V(out) = a.dimensions() == 2 ? a.get(i, j) : a.get(i);
    return QFA_OK;
  });
}
int32_t qfa_variant_array_set(qfa_variant* v, int32_t i, const qfa_variant* value) {
  return guarded([&] {
    if (!v || !value) invalid("no variant or no value");
    V(v).array().set(i, V(value).deref());
    return QFA_OK;
  });
}

// ---- objects -----------------------------------------------------------------------

void qfa_object_addref(qfa_object* object) {
  if (object) O(object)->addRef();
}
void qfa_object_release(qfa_object* object) {
  if (object) O(object)->release();
}
const char* qfa_object_type_name(qfa_object* object) {
  // Every type name the library hands out ends in a NUL: member tables keep
  // theirs in std::string, host objects theirs too.
  return object ? O(object)->typeName().data() : "";
}

int32_t qfa_invoke(qfa_object* object, const char* member, int32_t kind, qfa_variant* const* args, size_t argc,
                   const char* const* names, size_t named_count, qfa_variant* result) {
  return guarded([&] {
    if (!member) invalid("no member name");
    if (kind < QFA_METHOD || kind > (QFA_METHOD | QFA_PROPERTY_GET | QFA_PROPERTY_PUT)) invalid("unknown call kind");
    CallArguments call(args, argc, names, named_count);
    Args a = call.args();
    Variant value = invokeByName(O(object), member, static_cast<CallKind>(kind), a);
    if (result) V(result) = std::move(value);
    return QFA_OK;
  });
}

qfa_object* qfa_host_object_new(const qfa_host_vtable* vtable, void* self) {
  if (!vtable || !vtable->invoke) return nullptr;
  HostObject* object = new (std::nothrow) HostObject(*vtable, self);
  if (!object) return nullptr;
  object->addRef();
  return C(object);
}

int32_t qfa_register_running_object(const char* class_name, qfa_object* object) {
  return guarded([&] {
    if (!class_name || !object) invalid("no class name or no object");
    RunningObjects::registerObject(class_name, ObjectRef(O(object)));
    return QFA_OK;
  });
}
int32_t qfa_revoke_running_object(const char* class_name) {
  return guarded([&] {
    if (!class_name) invalid("no class name");
    if (RunningObjects::revoke(class_name)) return QFA_OK;
    return fail(QFA_FALSE, std::string("nothing is registered as ") + class_name);
  });
}

void qfa_thread_done(void) { vbwProtector::exitThread(false); }

// ---- class factory and server ------------------------------------------------------

size_t qfa_class_count(void) { return publicClasses().size(); }
const char* qfa_class_name(size_t index) {
  // The names are literals, so each ends in a NUL.
  return index < publicClasses().size() ? publicClasses()[index].name.data() : nullptr;
}

int32_t DllGetClassObject(const char* class_name, qfa_object** class_object) {
  return guarded([&] {
    if (!class_name || !class_object) invalid("no class name or no output");
    *class_object = nullptr;
    const PublicClass* c = findClass(class_name);
    if (!c) throw AutomationError(kCannotCreateObject, std::string("no class named ") + class_name, "DllGetClassObject");
    *class_object = handOver(make<server::ClassObject>(*c));
    return QFA_OK;
  });
}

int32_t qfa_class_create_instance(qfa_object* class_object, qfa_object** instance) {
  return guarded([&] {
    if (!class_object || !instance) invalid("no class object or no output");
    *instance = nullptr;
    Args none;
    *instance = handOver(invokeByName(O(class_object), "CreateInstance", CallKind::Method, none).toObject());
    return QFA_OK;
  });
}

int32_t qfa_class_lock_server(qfa_object* class_object, int lock) {
  return guarded([&] {
    if (!class_object) invalid("no class object");
    Variant arg(lock != 0);
    Args args(std::span<Variant>(&arg, 1));
    invokeByName(O(class_object), "LockServer", CallKind::Method, args);
    return QFA_OK;
  });
}

int32_t qfa_create_object(const char* class_name, qfa_object** instance) {
  return guarded([&] {
    if (!class_name || !instance) invalid("no class name or no output");
    *instance = nullptr;
    ObjectRef object = createObject(class_name);
    if (!object) throw AutomationError(kCannotCreateObject, std::string("no class named ") + class_name, "CreateObject");
    *instance = handOver(std::move(object));
    return QFA_OK;
  });
}

int DllCanUnloadNow(void) { return server::canUnloadNow() ? 1 : 0; }

int32_t DllRegisterServer(void) {
  return guarded([&] {
    server::registerServer();
    return QFA_OK;
  });
}

int32_t DllUnregisterServer(void) {
  return guarded([&] {
    std::string why;
    if (server::unregisterServer(why)) return QFA_OK;
    return fail(QFA_FALSE, std::move(why), "DllUnregisterServer");
  });
}

const char* qfa_registration_path(void) {
  thread_local std::string path;
  try {
    path = server::registrationPath().string();
  } catch (...) {
    path.clear();
  }
  return path.c_str();
}

const char* qfa_type_library(void) {
  try {
    return server::typeLibraryJson().c_str();
  } catch (...) {
    return "";
  }
}

const char* qfa_version(void) { return server::version().data(); }

}  // extern "C"
