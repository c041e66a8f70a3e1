#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "Args.h"
#include "Array.h"
#include "Export.h"
#include "Object.h"
#include "Variant.h"

namespace QuillFormatAPA {

// An argument passed by reference: the callee may write it, and the new value
// comes back into `target` after the call.
template <class T>
struct ByRefArg {
  T& target;
};
template <class T>
ByRefArg<T> byRef(T& target) {
  return {target};
}

template <class T>
struct NamedValue {
  std::string_view name;
  T value;
};
template <class T>
NamedValue<T> named(std::string_view name, T value) {
  return {name, std::move(value)};
}

namespace detail {

template <class A>
constexpr bool isNamed = false;
template <class T>
constexpr bool isNamed<NamedValue<T>> = true;
template <class A>
constexpr bool isByRef = false;
template <class T>
constexpr bool isByRef<ByRefArg<T>> = true;

// An argument value for a call; strings are lent, not copied.
inline Variant pass(std::string_view s) { return Variant::borrow(s); }
inline Variant pass(const std::string& s) { return Variant::borrow(s); }
inline Variant pass(const char* s) { return Variant::borrow(s); }
inline Variant pass(bool b) { return b; }
inline Variant pass(int16_t i) { return i; }
inline Variant pass(int32_t i) { return i; }
inline Variant pass(double d) { return d; }
inline Variant pass(const Variant& v) { return v.deref(); }
inline Variant pass(const Array& a) { return a; }
template <class T>
Variant pass(const Ref<T>& o) {
  return ObjectRef(o);
}

template <class T>
void takeBack(const Variant& v, T& target) {
  if constexpr (std::is_same_v<T, std::string>) {
    if (!v.lends(target)) target = v.toString();  // unless the callee left it untouched
  }
  else if constexpr (std::is_same_v<T, bool>) target = v.toBool();
  else if constexpr (std::is_same_v<T, int16_t>) target = v.toInteger();
  else if constexpr (std::is_same_v<T, int32_t>) target = v.toLong();
  else if constexpr (std::is_same_v<T, double>) target = v.toDouble();
  else if constexpr (std::is_same_v<T, Variant>) target = v.deref();
  else if constexpr (std::is_same_v<T, Array>) target = v.array();
  else target = v.toObject();
}

// The argument storage of one call made from C++ values.
template <class... A>
class CallArgs {
 public:
  static constexpr size_t kNamed = (size_t{isNamed<std::remove_cvref_t<A>>} + ... + 0);
  static constexpr size_t kRefs = (size_t{isByRef<std::remove_cvref_t<A>>} + ... + 0);
  static constexpr size_t kPositional = sizeof...(A) - kNamed;

  explicit CallArgs(A&... a) : refs_(a...) {
    [[maybe_unused]] size_t p = 0, n = 0, r = 0;
    (place(a, p, n, r), ...);
  }
  Args args() { return Args(positional_, named_); }
  void writeBack() {
    [[maybe_unused]] size_t r = 0;
    std::apply([&](auto&... a) { (takeBackOne(a, r), ...); }, refs_);
  }

 private:
  template <class T>
  void place(ByRefArg<T>& a, size_t& p, size_t&, size_t& r) {
    refStore_[r].assignWithin(pass(a.target));
    positional_[p++] = Variant::byRef(refStore_[r++]);
  }
  template <class T>
  void place(NamedValue<T>& a, size_t&, size_t& n, size_t&) {
    named_[n].name = a.name;
    named_[n++].value.assignWithin(pass(a.value));
  }
  template <class T>
  void place(T& a, size_t& p, size_t&, size_t&) {
    positional_[p++].assignWithin(pass(a));
  }
  template <class T>
  void takeBackOne(T&, size_t&) {}
  template <class T>
  void takeBackOne(ByRefArg<T>& a, size_t& r) {
    takeBack(refStore_[r++], a.target);
  }

  std::tuple<A&...> refs_;
  std::array<Variant, kRefs> refStore_;
  std::array<Variant, kPositional> positional_;
  std::array<NamedArg, kNamed> named_;
};

}  // namespace detail

// One member name called late-bound from C++. The member id is resolved once
// per class of callee and cached, so a call costs no string comparison:
//
//   static const CallSite kAddPage("addPage");
//   ObjectRef page = kAddPage.call(section).toObject();
class QFA_API CallSite {
 public:
  constexpr explicit CallSite(std::string_view name) noexcept : name_(name) {}
  CallSite(const CallSite&) = delete;
  CallSite& operator=(const CallSite&) = delete;

  std::string_view name() const noexcept { return name_; }

  // Raises AutomationError: 91 when `object` is null, 438 when it lacks the
  // member, or whatever the member raised.
  Variant invoke(Object* object, CallKind kind, Args& args) const;

  // A method call or property read, as an expression evaluates it.
  template <class... A>
  Variant call(const ObjectRef& object, A&&... a) const {
    return run(object.get(), CallKind::Method | CallKind::PropertyGet, a...);
  }
  // A property write; the value comes last.
  template <class... A>
  void put(const ObjectRef& object, A&&... a) const {
    run(object.get(), CallKind::PropertyPut, a...);
  }

 private:
  template <class... A>
  Variant run(Object* object, CallKind kind, A&... a) const {
    detail::CallArgs<A...> store(a...);
    Args args = store.args();
    Variant result = invoke(object, kind, args);
    store.writeBack();
    return result;
  }
  [[gnu::always_inline]] DispId resolve(const Object& object, uint64_t scope) const;

  std::string_view name_;
  // (id scope << 32) | member id, of the last scope called.
  mutable std::atomic<uint64_t> cache_{0};
};

// Invokes `name` on `object` once, without caching; raises AutomationError.
QFA_API Variant invokeByName(Object* object, std::string_view name, CallKind kind, Args& args);

// A method call or property read by a name known only at run time.
template <class... A>
Variant callByName(const ObjectRef& object, std::string_view name, A&&... a) {
  detail::CallArgs<std::remove_reference_t<A>...> store(a...);
  Args args = store.args();
  Variant result = invokeByName(object.get(), name, CallKind::Method | CallKind::PropertyGet, args);
  store.writeBack();
  return result;
}

}  // namespace QuillFormatAPA
