#pragma once

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <functional>
#include <utility>
#include <vector>

#include "Args.h"
#include "Array.h"
#include "Export.h"
#include "Object.h"
#include "Variant.h"

namespace QuillFormatAPA {

// The declared type of a parameter or result, as a type library shows it.
struct TypeDesc {
  VarType type = VarType::Empty;  // Empty: Variant (or no result, see `none`)
  bool isArray = false;
  bool none = false;  // a method without result
  std::string name() const;
};

struct ParamInfo {
  std::string name;
  TypeDesc type;
  bool byRef = false;
  bool optional = false;
  bool paramArray = false;
  Variant defaultValue = Variant::missing();  // Missing: optional without default
};

enum class MemberKind : uint8_t {
  Method,
  PropertyGet,  // read-only property
  Property,     // property with read and write
};

// The remaining positional arguments of a call, for a member that takes any
// number of them (it must be the member's last parameter).
struct ParamArray {
  std::span<const Variant> values;
};

// The declaration of a parameter when a member is registered.
struct Param {
  Param(const char* n) : name(n) {}  // NOLINT: a bare name is the common case
  Param(const char* n, VarType arrayElement) : name(n), arrayElement(arrayElement) {}
  std::string_view name;
  bool optional = false;
  Variant defaultValue = Variant::missing();
  VarType arrayElement = VarType::Empty;
};
inline Param optional(const char* name, Variant defaultValue = Variant::missing()) {
  Param p(name);
  p.optional = true;
  p.defaultValue = std::move(defaultValue);
  return p;
}

namespace detail {

// Thrown by a member's argument conversion, so the table can name the argument.
struct BindError {
  size_t index;
  AutomationError error;
};

using Thunk = void (*)(Object& self, Variant* const* slots, Variant& result);

}  // namespace detail

struct MemberInfo {
  std::string name;
  MemberKind kind = MemberKind::Method;
  std::vector<ParamInfo> params;  // for a Property: the index parameters
  TypeDesc result;
  detail::Thunk get = nullptr;  // the method, or the property read
  detail::Thunk put = nullptr;  // the property write: index parameters, then the value
  bool simple = false;          // readable, no parameter array: arguments can bind in place
  size_t arity = 0;             // params.size(), kept for the call
};

// The members of one class, in dispatch order; member id = position. One
// table serves dispatch, name lookup and the machine-readable description.
class QFA_API MemberTable {
 public:
  MemberTable(std::string className, std::vector<MemberInfo> members);
  MemberTable(const MemberTable&) = delete;
  MemberTable& operator=(const MemberTable&) = delete;

  const std::string& className() const noexcept { return className_; }
  std::span<const MemberInfo> members() const noexcept { return members_; }
  DispId idOfName(std::string_view name) const noexcept;
  // Unique per table (an id scope, see Object::idScope); lets a call site
  // cache ids per class.
  uint64_t serial() const noexcept { return serial_; }

  // Binds `args` to the member's parameters and runs it. Never throws.
  Status invoke(Object& self, DispId id, CallKind kind, Args& args, Variant& result) const noexcept;
  // The same for a caller on the library's side: raises the member's error
  // as AutomationError. The common call (every parameter given in order, none
  // Missing) goes straight to the member.
  [[gnu::always_inline]] void call(Object& self, DispId id, CallKind kind, Args& args, Variant& result) const {
    Variant* slots[kMaxParams];
    if (id >= 0 && static_cast<size_t>(id) < members_.size()) {
      const MemberInfo& m = members_[static_cast<size_t>(id)];
      if (inPlace(m, kind, args, slots)) {
        try {
          m.get(self, slots, result);
        } catch (...) {
          failure(m, std::current_exception()).throwIfFailed();
        }
        return;
      }
    }
    invoke(self, id, kind, args, result).throwIfFailed();
  }
  // The most parameters a member declares, with room.
  static constexpr size_t kMaxParams = 16;

 private:
  // The common call, every parameter given in order and none Missing, needs
  // no binding beyond pointing `slots` at the arguments: whether this is one.
  static bool inPlace(const MemberInfo& m, CallKind kind, Args& args, Variant** slots) noexcept {
    const std::span<Variant> given = args.positional();
    if (kind == CallKind::PropertyPut || !m.simple || !args.named().empty() || given.size() != m.arity) return false;
    bool complete = true;
    for (size_t i = 0; i < m.arity; ++i) {
      slots[i] = &given[i];
      complete &= !given[i].isMissing();
    }
    return complete;
  }
  // A call whose arguments need binding to the member's parameters.
  [[gnu::noinline]] Status invokeBound(Object& self, const MemberInfo& m, bool write, Args& args,
                                       Variant& result) const noexcept;
  // The error a member's call raised, saying which member and argument.
  Status failure(const MemberInfo& m, std::exception_ptr error) const noexcept;

  std::string className_;
  std::vector<MemberInfo> members_;
  // Name lookup without regard to ASCII case: a name's length and three of
  // its letters pick a slot, which lists the members so hashed in dispatch
  // order; the first whose name matches is the member.
  static size_t slotOf(std::string_view name, size_t mask) noexcept;
  std::vector<uint32_t> slotStart_;  // per slot, where its ids begin in slotIds_ (one more at the end)
  std::vector<DispId> slotIds_;
  uint64_t serial_;
};

// ---- conversions between Variants and C++ parameter types ----------------

namespace detail {

template <class T>
struct Convert;
template <>
struct Convert<std::string> {
  static constexpr VarType type = VarType::String;
  static std::string from(const Variant& v) { return v.toString(); }
};
template <>
struct Convert<bool> {
  static constexpr VarType type = VarType::Boolean;
  static bool from(const Variant& v) { return v.toBool(); }
};
template <>
struct Convert<int16_t> {
  static constexpr VarType type = VarType::Integer;
  static int16_t from(const Variant& v) { return v.toInteger(); }
};
template <>
struct Convert<int32_t> {
  static constexpr VarType type = VarType::Long;
  static int32_t from(const Variant& v) { return v.toLong(); }
};
template <>
struct Convert<double> {
  static constexpr VarType type = VarType::Double;
  static double from(const Variant& v) { return v.toDouble(); }
};
template <>
struct Convert<ObjectRef> {
  static constexpr VarType type = VarType::Object;
  static ObjectRef from(const Variant& v) { return v.toObject(); }
};

// How one C++ parameter type P takes its argument from a slot and, when P is
// a non-const reference, gives the value back to a by-reference slot.
template <class P>
struct Arg {
  using B = std::remove_cvref_t<P>;
  static constexpr bool byRef =
      std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>>;
  using Holder = B;
  static TypeDesc type() { return {Convert<B>::type, false, false}; }
  static Holder take(Variant& slot) { return Convert<B>::from(slot); }
  static P pass(Holder& h) { return static_cast<P>(h); }
  static void giveBack(Variant& slot, Holder& h) {
    if constexpr (byRef) {
      if (!slot.isByRef()) return;
      Variant& target = slot.deref();
      // Text the member left as it was stays as the caller passed it (a loan stays a loan).
      if constexpr (std::is_same_v<B, std::string>)
        if (target.isString() && target.stringView() == h) return;
      target = Variant(std::move(h));
    }
  }
};

template <class T>
struct Arg<std::optional<T>> {
  static constexpr bool byRef = false;
  using Holder = std::optional<T>;
  static TypeDesc type() { return Arg<T>::type(); }
  static Holder take(Variant& slot) {
    if (slot.isMissing()) return std::nullopt;
    return Convert<T>::from(slot);
  }
  static std::optional<T> pass(Holder& h) { return h; }
  static void giveBack(Variant&, Holder&) {}
};

template <class T>
struct Arg<const std::optional<T>&> : Arg<std::optional<T>> {};

// Text is lent, not copied, when the argument holds text; other values are
// converted to text as for std::string.
template <>
struct Arg<std::string_view> {
  static constexpr bool byRef = false;
  struct Holder {
    std::string converted;
    std::string_view lent;
    bool isLent = false;
  };
  static TypeDesc type() { return {VarType::String, false, false}; }
  static Holder take(Variant& slot) {
    const Variant& v = slot.deref();
    if (v.isString()) return {{}, v.stringView(), true};
    return {v.toString(), {}, false};
  }
  static std::string_view pass(const Holder& h) { return h.isLent ? h.lent : std::string_view(h.converted); }
  static void giveBack(Variant&, Holder&) {}
};

// Variants and arrays are handed over in place, without a copy; through a
// non-const reference the member writes straight into the caller's value.
template <>
struct Arg<const Variant&> {
  static constexpr bool byRef = false;
  using Holder = const Variant*;
  static TypeDesc type() { return {}; }
  static Holder take(Variant& slot) { return &slot.deref(); }
  static const Variant& pass(Holder h) { return *h; }
  static void giveBack(Variant&, Holder) {}
};
template <>
struct Arg<Variant&> {
  static constexpr bool byRef = true;
  using Holder = Variant*;
  static TypeDesc type() { return {}; }
  static Holder take(Variant& slot) { return &slot.deref(); }
  static Variant& pass(Holder h) { return *h; }
  static void giveBack(Variant&, Holder) {}
};
template <>
struct Arg<const Array&> {
  static constexpr bool byRef = false;
  using Holder = const Array*;
  static TypeDesc type() { return {VarType::Empty, true}; }
  static Holder take(Variant& slot) { return &slot.array(); }
  static const Array& pass(Holder h) { return *h; }
  static void giveBack(Variant&, Holder) {}
};
template <>
struct Arg<Array&> {
  static constexpr bool byRef = true;
  using Holder = Array*;
  static TypeDesc type() { return {VarType::Empty, true}; }
  static Holder take(Variant& slot) {
    Variant& target = slot.deref();
    // An output array may arrive as an unassigned Variant from hosts that
    // cannot declare typed arrays.
    if (target.isEmpty()) target = Array();
    return &target.array();
  }
  static Array& pass(Holder h) { return *h; }
  static void giveBack(Variant&, Holder) {}
};
// The binder gathers the trailing positional arguments into one array.
template <>
struct Arg<ParamArray> {
  static constexpr bool byRef = false;
  using Holder = ParamArray;
  static TypeDesc type() { return {VarType::Empty, true}; }
  static Holder take(Variant& slot) { return {slot.array().elements()}; }
  static ParamArray pass(Holder h) { return h; }
  static void giveBack(Variant&, Holder) {}
};

template <class P>
inline constexpr bool isOptionalType = false;
template <class T>
inline constexpr bool isOptionalType<std::optional<T>> = true;
template <>
inline constexpr bool isOptionalType<ParamArray> = true;

template <class R>
Variant toResult(R&& r) {
  using B = std::remove_cvref_t<R>;
  if constexpr (std::is_same_v<B, Variant> || std::is_same_v<B, std::string> ||
                std::is_same_v<B, bool> || std::is_same_v<B, int16_t> ||
                std::is_same_v<B, int32_t> || std::is_same_v<B, double> ||
                std::is_same_v<B, Array> || std::is_same_v<B, ObjectRef>)
    return Variant(std::forward<R>(r));
  else
    return Variant(ObjectRef(std::forward<R>(r)));  // Ref<T>
}

template <class R>
TypeDesc resultType() {
  using B = std::remove_cvref_t<R>;
  if constexpr (std::is_void_v<R>) return {VarType::Empty, false, true};
  else if constexpr (std::is_same_v<B, Variant>) return {};
  else if constexpr (std::is_same_v<B, Array>) return {VarType::Empty, true};
  else if constexpr (std::is_same_v<B, std::string> || std::is_same_v<B, bool> ||
                     std::is_same_v<B, int16_t> || std::is_same_v<B, int32_t> ||
                     std::is_same_v<B, double> || std::is_same_v<B, ObjectRef>)
    return {Convert<B>::type};
  else return {VarType::Object};
}

template <class F>
struct MemberFn;
template <class C, class R, class... P>
struct MemberFn<R (C::*)(P...)> {
  using Class = C;
  using Result = R;
  using Params = std::tuple<P...>;
};
template <class C, class R, class... P>
struct MemberFn<R (C::*)(P...) const> : MemberFn<R (C::*)(P...)> {};

template <class P>
typename Arg<P>::Holder takeArg(Variant& slot, size_t index) {
  try {
    return Arg<P>::take(slot);
  } catch (const AutomationError& e) {
    throw BindError{index, e};
  }
}

template <auto M>
void thunk(Object& self, Variant* const* slots, Variant& result) {
  using F = MemberFn<decltype(M)>;
  auto& obj = static_cast<typename F::Class&>(self);
  [&]<class... P, size_t... I>(std::tuple<P...>*, std::index_sequence<I...>) {
    // Braced initialisation converts the arguments first to last.
    std::tuple<typename Arg<P>::Holder...> holders{takeArg<P>(*slots[I], I)...};
    if constexpr (std::is_void_v<typename F::Result>)
      (obj.*M)(Arg<P>::pass(std::get<I>(holders))...);
    else
      result = toResult((obj.*M)(Arg<P>::pass(std::get<I>(holders))...));
    (Arg<P>::giveBack(*slots[I], std::get<I>(holders)), ...);
  }(static_cast<typename F::Params*>(nullptr),
    std::make_index_sequence<std::tuple_size_v<typename F::Params>>{});
}

template <auto M>
std::vector<ParamInfo> describeParams(std::string_view member, std::initializer_list<Param> declared,
                                      size_t extra = 0);

QFA_API void checkArity(std::string_view member, size_t declared, size_t expected);

template <auto M>
std::vector<ParamInfo> describeParams(std::string_view member, std::initializer_list<Param> declared,
                                      size_t extra) {
  using F = MemberFn<decltype(M)>;
  constexpr size_t n = std::tuple_size_v<typename F::Params>;
  checkArity(member, declared.size() + extra, n);
  std::vector<ParamInfo> out;
  auto decl = declared.begin();
  [&]<class... P>(std::tuple<P...>*) {
    (
        [&] {
          if (out.size() == declared.size()) return;  // the trailing value of a property write
          ParamInfo info;
          info.name = std::string(decl->name);
          info.type = Arg<P>::type();
          if (info.type.isArray && decl->arrayElement != VarType::Empty)
            info.type.type = decl->arrayElement;
          info.byRef = Arg<P>::byRef;
          info.paramArray = std::is_same_v<std::remove_cvref_t<P>, ParamArray>;
          info.optional = decl->optional || isOptionalType<std::remove_cvref_t<P>>;
          info.defaultValue = decl->defaultValue;
          out.push_back(std::move(info));
          ++decl;
        }(),
        ...);
  }(static_cast<typename F::Params*>(nullptr));
  return out;
}

}  // namespace detail

// Builds the member table of class T from its C++ members, in dispatch order:
//   ClassBuilder<Main2>("Main2")
//       .method<&Main2::Execute>("Execute", {"command", optional("theParam")})
//       .get<&Main2::UpdateFrontMatter>("UpdateFrontMatter")
template <class T>
class ClassBuilder {
 public:
  explicit ClassBuilder(std::string className) : className_(std::move(className)) {}

  template <auto M>
  ClassBuilder& method(std::string name, std::initializer_list<Param> params = {}) {
    return add<M>(std::move(name), MemberKind::Method, params);
  }
  template <auto M>
  ClassBuilder& get(std::string name, std::initializer_list<Param> params = {}) {
    return add<M>(std::move(name), MemberKind::PropertyGet, params);
  }
  // A read-write property: the getter takes the index parameters, the setter
  // the same index parameters followed by the value.
  template <auto G, auto S>
  ClassBuilder& property(std::string name, std::initializer_list<Param> params = {}) {
    add<G>(std::move(name), MemberKind::Property, params);
    detail::describeParams<S>(members_.back().name, params, 1);
    members_.back().put = &detail::thunk<S>;
    return *this;
  }

  // The table lives as long as the process: objects may still be released
  // (and dispatch) while static objects are being destroyed.
  const MemberTable& build() { return *new MemberTable(std::move(className_), std::move(members_)); }

 private:
  template <auto M>
  ClassBuilder& add(std::string name, MemberKind kind, std::initializer_list<Param> params) {
    MemberInfo m;
    m.params = detail::describeParams<M>(name, params);
    m.name = std::move(name);
    m.kind = kind;
    m.result = detail::resultType<typename detail::MemberFn<decltype(M)>::Result>();
    m.get = &detail::thunk<M>;
    members_.push_back(std::move(m));
    return *this;
  }

  std::string className_;
  std::vector<MemberInfo> members_;
};

// Base for a class whose objects share one member table: Derived provides
// `static const MemberTable& members();`.
template <class Derived>
class Dispatchable : public Object {
 public:
  Dispatchable() : Object(&Derived::members()) {}
  Status invoke(DispId id, CallKind kind, Args& args, Variant& result) noexcept final {
    return Derived::members().invoke(*this, id, kind, args, result);
  }
};

}  // namespace QuillFormatAPA
