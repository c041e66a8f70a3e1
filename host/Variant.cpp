#include "Variant.h"

#include <algorithm>
#include <cctype>
#include <vector>
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

Variant::Variant(Array a) : kind_(Kind::Array) { u_.array = new Array(std::move(a)); }

void Variant::copyFrom(const Variant& o) {
  switch (o.kind_) {
    case Kind::Borrowed: new (&u_.s) std::string(o.u_.lent.view()); kind_ = Kind::String; break;
    case Kind::String: new (&u_.s) std::string(o.u_.s); kind_ = Kind::String; break;
    case Kind::Object:
      u_.obj = o.u_.obj;
      if (u_.obj) u_.obj->addRef();
      kind_ = Kind::Object;
      break;
    case Kind::Array: u_.array = new Array(*o.u_.array); kind_ = Kind::Array; break;
    default: copyScalar(o);
  }
}

void Variant::moveFrom(Variant& o) {
  switch (o.kind_) {
    case Kind::Borrowed:
      // A loan is for the call it was made for: what is moved elsewhere may
      // outlive it, so it takes the text with it.
      new (&u_.s) std::string(o.u_.lent.data, o.u_.lent.size);
      kind_ = Kind::String;
      return;
    case Kind::String: new (&u_.s) std::string(std::move(o.u_.s)); kind_ = Kind::String; break;
    case Kind::Object: u_.obj = o.u_.obj; kind_ = Kind::Object; break;
    case Kind::Array: u_.array = o.u_.array; kind_ = Kind::Array; break;
    default: copyScalar(o); return;
  }
  // The source gave up what it owned.
  if (o.kind_ == Kind::String) o.u_.s.~basic_string();
  o.kind_ = Kind::Empty;
}

void Variant::release() noexcept {
  switch (kind_) {
    case Kind::String: u_.s.~basic_string(); break;
    case Kind::Object:
      if (u_.obj) u_.obj->release();
      break;
    case Kind::Array: delete u_.array; break;
    default: break;
  }
}

VarType Variant::slotType() const noexcept {
  switch (kind_) {
    case Kind::Empty: return VarType::Empty;
    case Kind::Null: return VarType::Null;
    case Kind::Missing: return VarType::Missing;
    case Kind::Boolean: return VarType::Boolean;
    case Kind::Integer: return VarType::Integer;
    case Kind::Long: return VarType::Long;
    case Kind::Double: return VarType::Double;
    case Kind::ByRef: return VarType::ByRef;
    case Kind::Borrowed:
    case Kind::String: return VarType::String;
    case Kind::Object: return VarType::Object;
    case Kind::Array: return VarType::Array;
  }
  return VarType::Empty;
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
  switch (v.kind_) {
    case Kind::Empty: return 0;
    case Kind::Boolean: return v.u_.b ? -1 : 0;
    case Kind::Integer: return v.u_.i16;
    case Kind::Long: return v.u_.i32;
    case Kind::Double: return v.u_.d;
    case Kind::String:
    case Kind::Borrowed: {
      double d = 0;
      if (!parseNumber(v.stringView(), d)) v.mismatch("a number");
      return d;
    }
    default: v.mismatch("a number");
  }
}

int16_t Variant::toInteger() const {
  const Variant& v = deref();
  if (v.kind_ == Kind::Integer) return v.u_.i16;
  return narrow<int16_t>(v.toDouble());
}

int32_t Variant::toLong() const {
  const Variant& v = deref();
  if (v.kind_ == Kind::Long) return v.u_.i32;
  if (v.kind_ == Kind::Integer) return v.u_.i16;
  return narrow<int32_t>(v.toDouble());
}

bool Variant::toBool() const {
  const Variant& v = deref();
  switch (v.kind_) {
    case Kind::Empty: return false;
    case Kind::Boolean: return v.u_.b;
    case Kind::Integer:
    case Kind::Long:
    case Kind::Double: return v.toDouble() != 0;
    case Kind::String:
    case Kind::Borrowed: {
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
  switch (v.kind_) {
    case Kind::Empty: return {};
    case Kind::Boolean: return v.u_.b ? "True" : "False";
    case Kind::Integer: return std::to_string(v.u_.i16);
    case Kind::Long: return std::to_string(v.u_.i32);
    case Kind::Double: return formatNumber(v.u_.d);
    case Kind::String: return v.u_.s;
    case Kind::Borrowed: return std::string(v.u_.lent.view());
    default: v.mismatch("a String");
  }
}

std::string_view Variant::stringView() const {
  const Variant& v = deref();
  if (v.kind_ == Kind::String) return v.u_.s;
  if (v.kind_ == Kind::Borrowed) return v.u_.lent.view();
  v.mismatch("a String");
}

ObjectRef Variant::toObject() const {
  const Variant& v = deref();
  if (v.kind_ == Kind::Object) return ObjectRef(v.u_.obj);
  if (v.kind_ == Kind::Missing) throw AutomationError(kArgumentNotOptional);
  throw AutomationError(kObjectRequired, std::string(typeName(v.slotType())) + " is not an object");
}

const Array& Variant::array() const {
  const Variant& v = deref();
  if (v.kind_ == Kind::Array) return *v.u_.array;
  v.mismatch("an array");
}

Array& Variant::array() {
  Variant& v = deref();
  if (v.kind_ == Kind::Array) return *v.u_.array;
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

namespace QuillFormatAPA {

namespace {

// The month a word names (1 to 12, "Jan." and "january" alike), or 0.
int monthOf(std::string_view word) {
  static const char* months[] = {"january", "february", "march",     "april",   "may",      "june",
                                 "july",    "august",   "september", "october", "november", "december"};
  std::string lower;
  for (char c : word)
    if (c != '.') lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (lower.size() < 3) return 0;
  for (int m = 0; m < 12; ++m)
    if (std::string_view(months[m]).starts_with(lower)) return m + 1;
  return 0;
}

bool allDigits(std::string_view s) {
  return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The days of a month; February has 29 when the year is not known.
int daysIn(int month, int year) {
  static const int days[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month != 2 || year == 0) return days[month - 1];
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return leap ? 29 : 28;
}

bool isDay(int day, int month, int year) { return month >= 1 && month <= 12 && day >= 1 && day <= daysIn(month, year); }

}  // namespace

bool isDate(std::string_view text) noexcept {
  // Two or three words separated by blanks, commas, slashes, hyphens or full
  // stops: a year, a month (named or in figures), a day.
  std::string_view words[3];
  size_t count = 0;
  size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && std::string_view(" ,/-.").find(text[i]) != std::string_view::npos) ++i;
    size_t j = i;
    while (j < text.size() && std::string_view(" ,/-.").find(text[j]) == std::string_view::npos) ++j;
    if (j > i) {
      if (count == 3) return false;
      words[count++] = text.substr(i, j - i);
    }
    i = j;
  }
  if (count < 2) return false;
  int year = 0, month = 0, years = 0, months = 0;
  int numbers[2] = {0, 0};
  int figures = 0;
  for (size_t k = 0; k < count; ++k) {
    const std::string_view w = words[k];
    if (const int m = monthOf(w)) {
      month = m;
      ++months;
    } else if (allDigits(w) && w.size() == 4) {
      year = (w[0] - '0') * 1000 + (w[1] - '0') * 100 + (w[2] - '0') * 10 + (w[3] - '0');
      ++years;
    } else if (allDigits(w) && w.size() <= 2 && figures < 2) {
      numbers[figures++] = w.size() == 1 ? w[0] - '0' : (w[0] - '0') * 10 + (w[1] - '0');
    } else {
      return false;
    }
  }
  if (years > 1 || months > 1) return false;
  // A named month: with a year, a day, or both; the day must be one of the month's.
  if (months == 1) return years + figures >= 1 && figures <= 1 && (figures == 0 || isDay(numbers[0], month, year));
  // All figures: a year, a month and a day, in the order of either custom.
  return years == 1 && figures == 2 &&
         (isDay(numbers[1], numbers[0], year) || isDay(numbers[0], numbers[1], year));
}

}  // namespace QuillFormatAPA
