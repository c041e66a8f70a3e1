#include "Array.h"

#include <climits>
#include <cstdint>
#include <string>

namespace QuillFormatAPA {

namespace {

[[noreturn]] void outOfRange(int32_t index) {
  throw AutomationError(kSubscriptOutOfRange, "index " + std::to_string(index));
}

// The number of elements from `lower` to `upper`, counted in 64 bits: the
// bounds may be anywhere in the 32-bit range.
int32_t countOf(int32_t lower, int32_t upper) {
  const int64_t count = int64_t{upper} - lower + 1;
  if (count < 0) throw AutomationError(kSubscriptOutOfRange, "upper bound below lower bound");
  if (count > INT32_MAX) throw AutomationError(kOverflow, "more than 2,147,483,647 elements");
  return static_cast<int32_t>(count);
}

}  // namespace

Array Array::vector(int32_t lower, int32_t upper, VarType elementType) {
  Array a(elementType);
  a.redim(lower, upper);
  return a;
}

Array Array::matrix(int32_t lower1, int32_t upper1, int32_t lower2, int32_t upper2,
                    VarType elementType) {
  Array a(elementType);
  a.redim(lower1, upper1, lower2, upper2);
  return a;
}

Array Array::list(std::initializer_list<Variant> values) {
  return list(std::span<const Variant>(values.begin(), values.size()));
}

Array Array::list(std::span<const Variant> values) {
  Array a;
  a.dims_ = 1;
  a.count_[0] = static_cast<int32_t>(values.size());
  a.data_.assign(values.begin(), values.end());
  return a;
}

int32_t Array::lowerBound(int dimension) const {
  if (dimension < 1 || dimension > dims_) throw AutomationError(kSubscriptOutOfRange, "dimension");
  return lower_[dimension - 1];
}

int32_t Array::upperBound(int dimension) const {
  if (dimension < 1 || dimension > dims_) throw AutomationError(kSubscriptOutOfRange, "dimension");
  return static_cast<int32_t>(int64_t{lower_[dimension - 1]} + count_[dimension - 1] - 1);
}

size_t Array::offset(int32_t i) const {
  if (dims_ != 1) outOfRange(i);
  const int64_t k = int64_t{i} - lower_[0];
  if (k < 0 || k >= count_[0]) outOfRange(i);
  return static_cast<size_t>(k);
}

size_t Array::offset(int32_t i, int32_t j) const {
  if (dims_ != 2) outOfRange(i);
  const int64_t k = int64_t{i} - lower_[0];
  const int64_t l = int64_t{j} - lower_[1];
  if (k < 0 || k >= count_[0]) outOfRange(i);
  if (l < 0 || l >= count_[1]) outOfRange(j);
  return static_cast<size_t>(k + l * count_[0]);
}

const Variant& Array::get(int32_t i) const { return data_[offset(i)]; }
const Variant& Array::get(int32_t i, int32_t j) const { return data_[offset(i, j)]; }
void Array::set(int32_t i, const Variant& value) { data_[offset(i)] = convert(value); }
void Array::set(int32_t i, int32_t j, const Variant& value) { data_[offset(i, j)] = convert(value); }

Variant Array::convert(const Variant& v) const {
  switch (elementType_) {
    case VarType::Boolean: return v.toBool();
    case VarType::Integer: return v.toInteger();
    case VarType::Long: return v.toLong();
    case VarType::Double: return v.toDouble();
    case VarType::String: return v.toString();
    case VarType::Object: return v.toObject();
    default: return v.deref();
  }
}

Variant Array::defaultElement() const {
  switch (elementType_) {
    case VarType::Boolean: return false;
    case VarType::Integer: return int16_t{0};
    case VarType::Long: return int32_t{0};
    case VarType::Double: return 0.0;
    case VarType::String: return std::string();
    case VarType::Object: return Variant::nothing();
    default: return Variant();
  }
}

void Array::redim(int32_t lower, int32_t upper, bool preserve) {
  const int32_t count = countOf(lower, upper);
  if (preserve && dims_ == 1) {
    // The platform keeps elements by position when the lower bound moves.
    data_.resize(static_cast<size_t>(count), defaultElement());
  } else {
    data_.assign(static_cast<size_t>(count), defaultElement());
  }
  dims_ = 1;
  lower_[0] = lower;
  count_[0] = count;
  lower_[1] = count_[1] = 0;
}

void Array::redim(int32_t lower1, int32_t upper1, int32_t lower2, int32_t upper2) {
  const int32_t c1 = countOf(lower1, upper1);
  const int32_t c2 = countOf(lower2, upper2);
  data_.assign(static_cast<size_t>(c1) * static_cast<size_t>(c2), defaultElement());
  dims_ = 2;
  lower_[0] = lower1;
  count_[0] = c1;
  lower_[1] = lower2;
  count_[1] = c2;
}

bool operator==(const Array& a, const Array& b) {
  if (a.dims_ != b.dims_ || a.data_.size() != b.data_.size()) return false;
  for (int d = 0; d < a.dims_; ++d)
    if (a.lower_[d] != b.lower_[d] || a.count_[d] != b.count_[d]) return false;
  for (size_t i = 0; i < a.data_.size(); ++i)
    if (!(a.data_[i] == b.data_[i])) return false;
  return true;
}

Array stringArray(std::span<const std::string> values) {
  Array a = Array::vector(0, static_cast<int32_t>(values.size()) - 1, VarType::String);
  for (size_t i = 0; i < values.size(); ++i) a.set(static_cast<int32_t>(i), values[i]);
  return a;
}

int32_t indexAt(const Array& array, int32_t k) {
  const int64_t index = int64_t{array.lowerBound()} + k;
  if (index > INT32_MAX || index < INT32_MIN) throw AutomationError(kSubscriptOutOfRange, "index beyond 2,147,483,647");
  return static_cast<int32_t>(index);
}

std::vector<std::string> toStrings(const Array& array) {
  std::vector<std::string> out;
  if (array.dimensions() == 0) return out;
  if (array.dimensions() != 1) throw AutomationError(kSubscriptOutOfRange, "dimension");
  out.reserve(array.size());
  for (const Variant& v : array.elements()) out.push_back(v.toString());
  return out;
}

}  // namespace QuillFormatAPA
