#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "Export.h"
#include "Variant.h"

namespace QuillFormatAPA {

// An array as the automation platform has them: one or two dimensions, each
// with its own lower bound, elements of one declared type (VarType::Empty
// declares Variant elements). Element k of a one-dimensional array sits at
// lowerBound() + k. Any index outside the bounds raises 9.
class QFA_API Array {
 public:
  // An array that is declared but not yet dimensioned.
  explicit Array(VarType elementType = VarType::Empty) noexcept : elementType_(elementType) {}
  // A one-dimensional array with indices lower..upper (upper may be lower-1: empty).
  static Array vector(int32_t lower, int32_t upper, VarType elementType = VarType::Empty);
  static Array matrix(int32_t lower1, int32_t upper1, int32_t lower2, int32_t upper2,
                      VarType elementType = VarType::Empty);
  // A zero-based array of Variants holding `values`, as a literal list makes one.
  static Array list(std::initializer_list<Variant> values);
  static Array list(std::span<const Variant> values);

  VarType elementType() const noexcept { return elementType_; }
  int dimensions() const noexcept { return dims_; }
  // Bounds of dimension 1 or 2; 9 for a dimension the array does not have.
  int32_t lowerBound(int dimension = 1) const;
  int32_t upperBound(int dimension = 1) const;
  size_t size() const noexcept { return data_.size(); }

  const Variant& get(int32_t i) const;
  const Variant& get(int32_t i, int32_t j) const;
  // Stores `value` converted to the element type.
  void set(int32_t i, const Variant& value);
  void set(int32_t i, int32_t j, const Variant& value);

  // Re-dimensions; without `preserve` every element is reset to its default.
  // With `preserve` the contents of the kept indices survive (one dimension only).
  void redim(int32_t lower, int32_t upper, bool preserve = false);
  void redim(int32_t lower1, int32_t upper1, int32_t lower2, int32_t upper2);

  // The elements in storage order (first index fastest for matrices).
  std::span<const Variant> elements() const noexcept { return data_; }

  friend QFA_API bool operator==(const Array& a, const Array& b);

 private:
  size_t offset(int32_t i) const;
  size_t offset(int32_t i, int32_t j) const;
  Variant convert(const Variant& v) const;
  Variant defaultElement() const;

  VarType elementType_;
  int dims_ = 0;
  int32_t lower_[2] = {0, 0};
  int32_t count_[2] = {0, 0};
  std::vector<Variant> data_;
};

// The index of element `k` of a one-dimensional array counted from its lower
// bound; 9 when the bounds sit so high that no index can hold it.
QFA_API int32_t indexAt(const Array& array, int32_t k);

// A zero-based String array holding `values` in order.
QFA_API Array stringArray(std::span<const std::string> values);
// The strings of a one-dimensional array, lowest index first.
QFA_API std::vector<std::string> toStrings(const Array& array);

}  // namespace QuillFormatAPA
