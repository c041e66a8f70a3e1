#include "Variant.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "Array.h"

namespace QuillFormatAPA {

std::string_view typeName(VarType t) noexcept {
  switch (t) {
    case VarType::Empty: return "Empty";
    case VarType::Null: return "Null";
    case VarType::Missing: return "Missing";
    case VarType::Boolean: return "Boolean";
    case VarType::Integer: return "Integer";
    case VarType::Long: return "Long";
    case VarType::Double: return "Double";
    case VarType::String: return "String";
    case VarType::Object: return "Object";
    case VarType::Array: return "Array";
    case VarType::ByRef: return "ByRef";
  }
  return "Unknown";
}

// ---- storage -------------------------------------------------------------

Variant::ArrayBox::ArrayBox(Array a) : array(std::make_unique<Array>(std::move(a))) {}
Variant::ArrayBox::ArrayBox(const ArrayBox& o) : array(std::make_unique<Array>(*o.array)) {}
Variant::ArrayBox& Variant::ArrayBox::operator=(const ArrayBox& o) {
  array = std::make_unique<Array>(*o.array);
  return *this;
}
Variant::ArrayBox::ArrayBox(ArrayBox&& o) noexcept = default;
Variant::ArrayBox& Variant::ArrayBox::operator=(ArrayBox&& o) noexcept = default;
Variant::ArrayBox::~ArrayBox() = default;

Variant::Variant(Array a) : v_(ArrayBox(std::move(a))) {}
Variant::~Variant() = default;

Variant Variant::null() noexcept { return Variant(Storage(NullTag{})); }
Variant Variant::missing() noexcept { return Variant(Storage(MissingTag{})); }
Variant Variant::borrow(std::string_view text) noexcept { return Variant(Storage(Borrowed{text})); }
Variant Variant::byRef(Variant& target) noexcept { return Variant(Storage(&target)); }

void Variant::copyFrom(const Variant& o) {
  if (const auto* b = std::get_if<Borrowed>(&o.v_))
    v_ = std::string(b->text);
  else
    v_ = o.v_;
}

Variant::Variant(const Variant& o) { copyFrom(o); }
Variant::Variant(Variant&& o) noexcept {
  if (const auto* b = std::get_if<Borrowed>(&o.v_))
    v_ = std::string(b->text);
  else
    v_ = std::move(o.v_);
}
Variant& Variant::operator=(const Variant& o) {
  if (this != &o) copyFrom(o);
  return *this;
}
Variant& Variant::operator=(Variant&& o) noexcept {
  if (this == &o) return *this;
  if (const auto* b = std::get_if<Borrowed>(&o.v_))
    v_ = std::string(b->text);
  else
    v_ = std::move(o.v_);
  return *this;
}

VarType Variant::slotType() const noexcept {
  switch (v_.index()) {
    case 0: return VarType::Empty;
    case 1: return VarType::Null;
    case 2: return VarType::Missing;
    case 3: return VarType::Boolean;
    case 4: return VarType::Integer;
    case 5: return VarType::Long;
    case 6: return VarType::Double;
    case 7:
    case 8: return VarType::String;
    case 9: return VarType::Object;
    case 10: return VarType::Array;
    default: return VarType::ByRef;
  }
}

const Variant& Variant::deref() const noexcept {
  const Variant* v = this;
  while (const auto* p = std::get_if<Variant*>(&v->v_)) v = *p;
  return *v;
}
Variant& Variant::deref() noexcept {
  Variant* v = this;
  while (auto* p = std::get_if<Variant*>(&v->v_)) v = *p;
  return *v;
}

bool Variant::isNumeric() const noexcept {
  switch (type()) {
    case VarType::Boolean:
    case VarType::Integer:
    case VarType::Long:
    case VarType::Double: return true;
    default: return false;
  }
}

void Variant::mismatch(std::string_view wanted) const {
  const VarType t = type();
  if (t == VarType::Null) throw AutomationError(kInvalidUseOfNull);
  if (t == VarType::Missing) throw AutomationError(kArgumentNotOptional);
  throw AutomationError(kTypeMismatch,
                        std::string(typeName(t)) + " where " + std::string(wanted) + " is needed");
}

// ---- numbers -------------------------------------------------------------

bool parseNumber(std::string_view text, double& out) noexcept {
  auto blank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  if (text.size() > 2 && text[0] == '&' && (text[1] == 'H' || text[1] == 'h' || text[1] == 'O' ||
                                            text[1] == 'o')) {
    const int base = (text[1] == 'H' || text[1] == 'h') ? 16 : 8;
    int64_t v = 0;
    auto [p, ec] = std::from_chars(text.data() + 2, text.data() + text.size(), v, base);
    if (ec != std::errc() || p != text.data() + text.size()) return false;
    // &H literals are 16-bit when they fit, as the platform reads them.
    if (v <= 0xFFFF && v > 0x7FFF) v -= 0x10000;
    out = static_cast<double>(v);
    return true;
  }
  // Check the shape first: from_chars alone would accept "inf" and "nan".
  size_t i = 0;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  size_t digits = 0;
  while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i, ++digits;
  if (i < text.size() && text[i] == '.') {
    ++i;
    while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i, ++digits;
  }
  if (digits == 0) return false;
  std::string buf(text);
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E' || text[i] == 'd' || text[i] == 'D')) {
    buf[i] = 'e';
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    size_t expDigits = 0;
    while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i, ++expDigits;
    if (expDigits == 0) return false;
  }
  if (i != text.size()) return false;
  const char* begin = buf.c_str();
  if (*begin == '+') ++begin;
  auto [p, ec] = std::from_chars(begin, buf.c_str() + buf.size(), out);
  return ec == std::errc() && std::isfinite(out);
}

std::string formatNumber(double d) {
  if (d == std::floor(d) && std::fabs(d) < 1e15) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.0f", d);
    return std::string(buf) == "-0" ? "0" : buf;
  }
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.15G", d);
  return buf;
}

namespace {

// The platform rounds half to even when it narrows a fraction to an integer.
template <class Int>
Int narrow(double d) {
  const double r = std::nearbyint(d);
  if (!(r >= static_cast<double>(std::numeric_limits<Int>::min()) &&
        r <= static_cast<double>(std::numeric_limits<Int>::max())))
    throw AutomationError(kOverflow);
  return static_cast<Int>(r);
}

}  // namespace

double Variant::toDouble() const {
  const Variant& v = deref();
  switch (v.v_.index()) {
    case 0: return 0;
    case 3: return std::get<bool>(v.v_) ? -1 : 0;
    case 4: return std::get<int16_t>(v.v_);
    case 5: return std::get<int32_t>(v.v_);
    case 6: return std::get<double>(v.v_);
    case 7:
    case 8: {
      double d = 0;
      if (!parseNumber(v.stringView(), d)) v.mismatch("a number");
      return d;
    }
    default: v.mismatch("a number");
  }
}

int16_t Variant::toInteger() const {
  const Variant& v = deref();
  if (const auto* i = std::get_if<int16_t>(&v.v_)) return *i;
  return narrow<int16_t>(v.toDouble());
}

int32_t Variant::toLong() const {
  const Variant& v = deref();
  if (const auto* i = std::get_if<int32_t>(&v.v_)) return *i;
  if (const auto* i = std::get_if<int16_t>(&v.v_)) return *i;
  return narrow<int32_t>(v.toDouble());
}

bool Variant::toBool() const {
  const Variant& v = deref();
  switch (v.v_.index()) {
    case 0: return false;
    case 3: return std::get<bool>(v.v_);
    case 4:
    case 5:
    case 6: return v.toDouble() != 0;
    case 7:
    case 8: {
      std::string_view s = v.stringView();
      while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
      while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
      auto equalsNoCase = [&](std::string_view w) {
        if (s.size() != w.size()) return false;
        for (size_t i = 0; i < s.size(); ++i)
          if (std::tolower(static_cast<unsigned char>(s[i])) != w[i]) return false;
        return true;
      };
      if (equalsNoCase("true")) return true;
      if (equalsNoCase("false")) return false;
      double d = 0;
      if (!parseNumber(s, d)) v.mismatch("a Boolean");
      return d != 0;
    }
    default: v.mismatch("a Boolean");
  }
}

std::string Variant::toString() const {
  const Variant& v = deref();
  switch (v.v_.index()) {
    case 0: return {};
    case 3: return std::get<bool>(v.v_) ? "True" : "False";
    case 4: return std::to_string(std::get<int16_t>(v.v_));
    case 5: return std::to_string(std::get<int32_t>(v.v_));
    case 6: return formatNumber(std::get<double>(v.v_));
    case 7: return std::get<std::string>(v.v_);
    case 8: return std::string(std::get<Borrowed>(v.v_).text);
    default: v.mismatch("a String");
  }
}

std::string_view Variant::stringView() const {
  const Variant& v = deref();
  if (const auto* s = std::get_if<std::string>(&v.v_)) return *s;
  if (const auto* b = std::get_if<Borrowed>(&v.v_)) return b->text;
  v.mismatch("a String");
}

ObjectRef Variant::toObject() const {
  const Variant& v = deref();
  if (const auto* o = std::get_if<ObjectRef>(&v.v_)) return *o;
  if (v.slotType() == VarType::Missing) throw AutomationError(kArgumentNotOptional);
  throw AutomationError(kObjectRequired, std::string(typeName(v.slotType())) + " is not an object");
}

const Array& Variant::array() const {
  const Variant& v = deref();
  if (const auto* a = std::get_if<ArrayBox>(&v.v_)) return *a->array;
  v.mismatch("an array");
}

Array& Variant::array() {
  Variant& v = deref();
  if (auto* a = std::get_if<ArrayBox>(&v.v_)) return *a->array;
  v.mismatch("an array");
}

bool operator==(const Variant& a, const Variant& b) {
  const Variant& x = a.deref();
  const Variant& y = b.deref();
  if (x.type() != y.type()) return false;
  switch (x.type()) {
    case VarType::Empty:
    case VarType::Null:
    case VarType::Missing: return true;
    case VarType::Boolean: return x.toBool() == y.toBool();
    case VarType::Integer:
    case VarType::Long:
    case VarType::Double: return x.toDouble() == y.toDouble();
    case VarType::String: return x.stringView() == y.stringView();
    case VarType::Object: return x.toObject() == y.toObject();
    case VarType::Array: return x.array() == y.array();
    case VarType::ByRef: break;
  }
  return false;
}

}  // namespace QuillFormatAPA
