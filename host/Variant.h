#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <new>

#include "Export.h"
#include "Object.h"

namespace QuillFormatAPA {

class Array;

enum class VarType : uint8_t {
  Empty,    // never assigned
  Null,     // no valid data
  Missing,  // an optional argument the caller left out
  Boolean,
  Integer,  // 16-bit
  Long,     // 32-bit
  Double,
  String,   // UTF-8
  Object,   // an object reference, possibly Nothing
  Array,
  ByRef,    // a slot referring to another Variant (an argument passed by reference)
};

QFA_API std::string_view typeName(VarType t) noexcept;

// A value as the automation platform passes it. Conversions follow the
// platform: booleans print as "True"/"False", numbers that do not fit a
// 16-bit integer overflow (6), text that is not a number where a number is
// needed is a type mismatch (13).
class QFA_API Variant {
 public:
  Variant() noexcept {}
  Variant(bool b) noexcept : kind_(Kind::Boolean) { setScalar(b); }
  Variant(int16_t i) noexcept : kind_(Kind::Integer) { setScalar(i); }
  Variant(int32_t i) noexcept : kind_(Kind::Long) { setScalar(i); }
  Variant(double d) noexcept : kind_(Kind::Double) { setScalar(d); }
  Variant(std::string s) noexcept : kind_(Kind::String) { new (&u_.s) std::string(std::move(s)); }
  Variant(const char* s) : Variant(std::string(s)) {}
  Variant(ObjectRef o) noexcept : kind_(Kind::Object) { u_.obj = o.detach(); }
  template <class T>
  Variant(Ref<T> o) noexcept : Variant(ObjectRef(std::move(o))) {}
  Variant(Array a);

  static Variant null() noexcept { return Variant(Kind::Null); }
  static Variant missing() noexcept { return Variant(Kind::Missing); }
  static Variant nothing() noexcept { return Variant(ObjectRef()); }
  // A string argument that refers to text the caller keeps alive for the
  // duration of a call. A copy or a move of the Variant owns its text, so
  // whatever keeps an argument beyond the call keeps its own.
  static Variant borrow(std::string_view text) noexcept {
    Variant v(Kind::Borrowed);
    v.u_.lent.data = text.data();
    v.u_.lent.size = text.size();
    return v;
  }
  // A loan of the text `v` holds (see borrow()), or else a copy of `v`.
  static Variant lend(const Variant& v) {
    if (v.kind_ == Kind::String) return borrow(v.u_.s);
    if (v.kind_ == Kind::Borrowed) return borrow(v.u_.lent.view());
    return v;
  }
  // Takes `v` as it is, a loan included: for the argument slots of one call,
  // which live no longer than the call and its loans.
  void assignWithin(Variant&& v) noexcept {
    if (v.kind_ == Kind::Borrowed) {
      reset();
      kind_ = Kind::Borrowed;
      u_.lent = v.u_.lent;
    } else {
      *this = std::move(v);
    }
  }
  // Whether following this slot's references reaches `other`.
  bool reaches(const Variant& other) const noexcept {
    for (const Variant* v = this;; v = v->u_.ref) {
      if (v == &other) return true;
      if (v->kind_ != Kind::ByRef) return false;
    }
  }
  // A by-reference slot: reads and writes go to `target`.
  static Variant byRef(Variant& target) noexcept {
    Variant v(Kind::ByRef);
    v.setScalar(&target);
    return v;
  }

  Variant(const Variant& o) {
    if (o.kind_ < Kind::Borrowed)
      copyScalar(o);
    else
      copyFrom(o);
  }
  Variant(Variant&& o) {
    if (o.kind_ < Kind::Borrowed)
      copyScalar(o);
    else
      moveFrom(o);
  }
  Variant& operator=(const Variant& o) {
    if (this != &o) {
      Variant copy(o);
      *this = std::move(copy);
    }
    return *this;
  }
  Variant& operator=(Variant&& o) {
    if (this != &o) {
      reset();
      if (o.kind_ < Kind::Borrowed)
        copyScalar(o);
      else
        moveFrom(o);
    }
    return *this;
  }
  ~Variant() { reset(); }

  // The type of this slot itself (ByRef for a reference slot).
  VarType slotType() const noexcept;
  // The type of the value, following a by-reference slot.
  VarType type() const noexcept { return deref().slotType(); }
  const Variant& deref() const noexcept {
    const Variant* v = this;
    while (v->kind_ == Kind::ByRef) v = v->u_.ref;
    return *v;
  }
  Variant& deref() noexcept {
    Variant* v = this;
    while (v->kind_ == Kind::ByRef) v = v->u_.ref;
    return *v;
  }
  bool isByRef() const noexcept { return kind_ == Kind::ByRef; }
  // Whether this is a loan of exactly `text` (see borrow()).
  bool lends(std::string_view text) const noexcept {
    return kind_ == Kind::Borrowed && u_.lent.data == text.data() && u_.lent.size == text.size();
  }

  bool isEmpty() const noexcept { return deref().kind_ == Kind::Empty; }
  bool isMissing() const noexcept { return deref().kind_ == Kind::Missing; }
  bool isString() const noexcept {
    const Kind k = deref().kind_;
    return k == Kind::String || k == Kind::Borrowed;
  }
  bool isObject() const noexcept { return deref().kind_ == Kind::Object; }
  bool isArray() const noexcept { return deref().kind_ == Kind::Array; }
  bool isNumeric() const noexcept;

  // Conversions; each raises AutomationError when the platform would.
  bool toBool() const;
  int16_t toInteger() const;
  int32_t toLong() const;
  double toDouble() const;
  std::string toString() const;
  // An object reference; Nothing is a null Ref; anything else is 424.
  ObjectRef toObject() const;

  // The text of a String value without copying; raises 13 for other types.
  std::string_view stringView() const;
  // The array held; raises 13 when the value is not an array.
  const Array& array() const;
  Array& array();

  // Same type and same value (strings by content, objects by identity).
  friend QFA_API bool operator==(const Variant& a, const Variant& b);

 private:
  // Kinds before Borrowed copy as plain bits; from String on they own something.
  enum class Kind : uint8_t { Empty, Null, Missing, Boolean, Integer, Long, Double, ByRef, Borrowed, String, Object, Array };
  // The words of a borrowed text are copied one by one: a copy as one 16-byte
  // move of two separately written words defeats store forwarding.
  struct Lent {
    const char* data;
    size_t size;
    std::string_view view() const noexcept { return {data, size}; }
  };
  union Storage {
    Storage() noexcept : raw(0) {}
    ~Storage() {}
    uint64_t raw;
    bool b;
    int16_t i16;
    int32_t i32;
    double d;
    Variant* ref;
    Lent lent;
    std::string s;
    Object* obj;  // a counted reference; null is Nothing
    Array* array;  // owned
  };

  explicit Variant(Kind k) noexcept : kind_(k) {}
  // Scalars are written as one 8-byte word: a narrower store followed by the
  // word-wide read of a copy would stall the processor's store forwarding.
  template <class T>
  void setScalar(T value) noexcept {
    uint64_t word = 0;
    std::memcpy(&word, &value, sizeof value);
    u_.raw = word;
  }
  void copyScalar(const Variant& o) noexcept {
    kind_ = o.kind_;
    u_.raw = o.u_.raw;
  }
  void copyFrom(const Variant& o);
  void moveFrom(Variant& o);
  void reset() noexcept {
    if (kind_ >= Kind::String) release();
    kind_ = Kind::Empty;
  }
  void release() noexcept;
  [[noreturn]] void mismatch(std::string_view wanted) const;

  Kind kind_ = Kind::Empty;
  Storage u_;
};

// The platform's general date recognition: whether `text` reads as a date,
// with or without a day ("1999, February 16", "February 16, 1999",
// "16 February 1999", "2008-10-12", "10/12/2008", "October 2008").
QFA_API bool isDate(std::string_view text) noexcept;

// The platform's formatting of a double ("1.5", "1E+20", "-3").
QFA_API std::string formatNumber(double d);
// Parses text as the platform does where a number is needed: surrounding
// blanks allowed, a sign, digits, a fraction, an exponent, &H hex or &O octal.
QFA_API bool parseNumber(std::string_view text, double& out) noexcept;

}  // namespace QuillFormatAPA
