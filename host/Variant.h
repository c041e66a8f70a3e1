#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

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
  Variant() noexcept = default;
  Variant(bool b) noexcept : v_(b) {}
  Variant(int16_t i) noexcept : v_(i) {}
  Variant(int32_t i) noexcept : v_(i) {}
  Variant(double d) noexcept : v_(d) {}
  Variant(std::string s) noexcept : v_(std::move(s)) {}
  Variant(const char* s) : v_(std::string(s)) {}
  Variant(ObjectRef o) noexcept : v_(std::move(o)) {}
  template <class T>
  Variant(Ref<T> o) noexcept : v_(ObjectRef(std::move(o))) {}
  Variant(Array a);

  static Variant null() noexcept;
  static Variant missing() noexcept;
  static Variant nothing() noexcept { return Variant(ObjectRef()); }
  // A string argument that refers to text the caller keeps alive for the
  // duration of a call. Copying or moving the Variant makes an owned copy.
  static Variant borrow(std::string_view text) noexcept;
  // A by-reference slot: reads and writes go to `target`.
  static Variant byRef(Variant& target) noexcept;

  Variant(const Variant& o);
  Variant(Variant&& o) noexcept;
  Variant& operator=(const Variant& o);
  Variant& operator=(Variant&& o) noexcept;
  ~Variant();

  // The type of this slot itself (ByRef for a reference slot).
  VarType slotType() const noexcept;
  // The type of the value, following a by-reference slot.
  VarType type() const noexcept { return deref().slotType(); }
  const Variant& deref() const noexcept;
  Variant& deref() noexcept;
  bool isByRef() const noexcept { return slotType() == VarType::ByRef; }

  bool isEmpty() const noexcept { return type() == VarType::Empty; }
  bool isMissing() const noexcept { return type() == VarType::Missing; }
  bool isString() const noexcept { return type() == VarType::String; }
  bool isObject() const noexcept { return type() == VarType::Object; }
  bool isArray() const noexcept { return type() == VarType::Array; }
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
  struct EmptyTag {};
  struct NullTag {};
  struct MissingTag {};
  struct Borrowed {
    std::string_view text;
  };
  struct ArrayBox {
    std::unique_ptr<Array> array;
    explicit ArrayBox(Array a);
    ArrayBox(const ArrayBox& o);
    ArrayBox(ArrayBox&& o) noexcept;
    ArrayBox& operator=(const ArrayBox& o);
    ArrayBox& operator=(ArrayBox&& o) noexcept;
    ~ArrayBox();
  };
  using Storage = std::variant<EmptyTag, NullTag, MissingTag, bool, int16_t, int32_t, double,
                               std::string, Borrowed, ObjectRef, ArrayBox, Variant*>;

  explicit Variant(Storage s) noexcept : v_(std::move(s)) {}
  void copyFrom(const Variant& o);
  [[noreturn]] void mismatch(std::string_view wanted) const;

  Storage v_;
};

// The platform's formatting of a double ("1.5", "1E+20", "-3").
QFA_API std::string formatNumber(double d);
// Parses text as the platform does where a number is needed: surrounding
// blanks allowed, a sign, digits, a fraction, an exponent, &H hex or &O octal.
QFA_API bool parseNumber(std::string_view text, double& out) noexcept;

}  // namespace QuillFormatAPA
