#pragma once

#include <array>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <source_location>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "diagnostics/vbwProtector.h"
#include "host/Array.h"
#include "host/Variant.h"

namespace QuillFormatAPA {

// ---- values as the diagnostics service sees them -------------------------

inline Variant toVariant(const Variant& v) { return v.deref(); }
inline Variant toVariant(const std::string& s) { return Variant::borrow(s); }
inline Variant toVariant(bool b) { return b; }
inline Variant toVariant(int16_t i) { return i; }
inline Variant toVariant(int32_t i) { return i; }
inline Variant toVariant(double d) { return d; }
inline Variant toVariant(const Array& a) { return a; }
Variant toVariant(const std::vector<std::string>& list);
template <class T>
Variant toVariant(const Ref<T>& o) {
  return ObjectRef(o);
}
template <class T>
Variant toVariant(const std::optional<T>& o) {
  return o ? toVariant(*o) : Variant::missing();
}

// A named variable of a procedure, read when it is reported.
struct VarRef {
  std::string_view name;
  const void* address;
  Variant (*read)(const void*);
};

template <class T>
VarRef arg(std::string_view name, const T& variable) {
  return {name, &variable, [](const void* p) { return toVariant(*static_cast<const T*>(p)); }};
}
// A temporary would be gone by the time a dump reads it.
template <class T>
VarRef arg(std::string_view name, const T&& variable) = delete;

// The parameters of a procedure, in declaration order.
template <class... V>
std::array<VarRef, sizeof...(V)> params(V... refs) {
  return {refs...};
}

// Reports variables to the diagnostics service during a dump.
class VariableReport {
 public:
  template <class T>
  void variable(std::string_view name, const T& value) const {
    vbwProtector::reportVariable(name, Variant(toVariant(value)));
  }
};

// A module or class as the diagnostics report it: its name and its
// module-level variables.
class Module {
 public:
  virtual std::string_view moduleName() const noexcept = 0;
  // Reports the module-level variables, in declaration order.
  virtual void reportVariables(const VariableReport&) const {}

 protected:
  ~Module() = default;
};

// A procedural module: a name and a function reporting its variables.
class StaticModule final : public Module {
 public:
  constexpr explicit StaticModule(std::string_view name,
                                  void (*report)(const VariableReport&) = nullptr) noexcept
      : name_(name), report_(report) {}
  std::string_view moduleName() const noexcept override { return name_; }
  void reportVariables(const VariableReport& r) const override {
    if (report_) report_(r);
  }

 private:
  std::string_view name_;
  void (*report_)(const VariableReport&);
};

namespace detail {
// Leaves a procedure through its error tail; only traced() catches it.
struct LeaveProcedure {};
}  // namespace detail

// One running procedure: its statements run through step(), which hands any
// error to the error tail and then retries the statement, goes on with the
// next one, or leaves the procedure, as the diagnostics service answers.
class Procedure {
 public:
  Procedure(const Module& module, std::string_view name, std::string_view qualifiedName,
            std::span<const VarRef> params) noexcept
      : state_(vbwProtector::threadState()),
        module_(module),
        name_(name),
        qualifiedName_(qualifiedName),
        params_(params) {}
  Procedure(const Procedure&) = delete;
  Procedure& operator=(const Procedure&) = delete;
  // The frame traces itself out: a procedure traced in is traced out on every
  // way out of it, an exception that escapes its statements included, so the
  // service's call stack stays balanced.
  ~Procedure();

  // Declares a local variable for the dump, in declaration order.
  template <class T>
  void local(std::string_view name, const T& variable) {
    addLocal(arg(name, variable));
  }
  template <class T>
  void local(std::string_view name, const T&& variable) = delete;

  // Runs one statement. On an error the tail runs; then the statement is run
  // again (retry), skipped with its default value (ignore), or the procedure
  // is left.
  template <class F>
  auto step(F&& statement, std::source_location where = std::source_location::current()) {
    using R = std::invoke_result_t<F&>;
    for (;;) {
      try {
        return statement();
      } catch (const detail::LeaveProcedure&) {
        throw;
      } catch (...) {
        if (!errorTail(std::current_exception(), where.line())) {
          if constexpr (std::is_void_v<R>) return;
          else return R{};
        }
      }
    }
  }

  // For traced(): the prologue, the normal exit and the exit through the tail.
  void enter();
  void exit();
  void leave();

 private:
  void addLocal(VarRef ref) {
    if (localCount_ < kLocals)
      std::construct_at(&locals_[localCount_++], ref);
    else
      moreLocals_.push_back(ref);
  }
  std::string parameterText() const;
  // Dumps the error and asks the service. Answers true to retry, false to go
  // on; throws LeaveProcedure to leave. A failure of the tail itself (a line
  // or error number beyond 16 bits, a missing service) propagates.
  bool errorTail(std::exception_ptr error, uint32_t line);
  void dump() const;

  vbwProtector::ThreadState& state_;
  bool tracedIn_ = false;
  bool tracedOut_ = false;
  const Module& module_;
  std::string_view name_;
  std::string_view qualifiedName_;
  std::span<const VarRef> params_;
  static constexpr size_t kLocals = 12;
  // The first localCount_ are set; the others are left unwritten, since most
  // procedures declare a few locals and every call would pay for clearing them.
  union {
    VarRef locals_[kLocals];
  };
  size_t localCount_ = 0;
  std::vector<VarRef> moreLocals_;
};

// A module's hold on a host object for the length of one procedure: let go
// on every way out of it, the error tail included, after the tail has dumped
// it. A host object must never outlive its host.
class Holding {
 public:
  explicit Holding(ObjectRef& slot) noexcept : slot_(slot) {}
  Holding(const Holding&) = delete;
  Holding& operator=(const Holding&) = delete;
  ~Holding() { slot_ = ObjectRef(); }

 private:
  ObjectRef& slot_;
};

// "QuillFormatAPA.Module.procedure"
std::string qualifiedName(const Module& module, std::string_view procedure);

// Runs `body(Procedure&)` as the procedure `module.name`: traced in and out,
// with the error tail on every statement. A procedure left through the tail
// returns the default value of its result type.
template <class Body>
auto traced(const Module& module, std::string_view name, std::span<const VarRef> parameters,
            Body&& body, std::source_location where = std::source_location::current()) {
  using R = std::invoke_result_t<Body&, Procedure&>;
  // Each call site has its own Body type, so this composes the name once.
  static const std::string qualified = qualifiedName(module, name);
  Procedure proc(module, name, qualified, parameters);
  [[maybe_unused]] std::conditional_t<std::is_void_v<R>, int, R> result{};
  try {
    proc.step([&] { proc.enter(); }, where);
    if constexpr (std::is_void_v<R>)
      body(proc);
    else
      result = body(proc);
    proc.step([&] { proc.exit(); }, where);
  } catch (const detail::LeaveProcedure&) {
    proc.leave();
  }
  if constexpr (!std::is_void_v<R>) return result;
}

template <class Body>
auto traced(const Module& module, std::string_view name, Body&& body,
            std::source_location where = std::source_location::current()) {
  return traced(module, name, std::span<const VarRef>(), std::forward<Body>(body), where);
}

}  // namespace QuillFormatAPA
