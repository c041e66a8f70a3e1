#pragma once

#include <span>
#include <string_view>

#include "Variant.h"

namespace QuillFormatAPA {

struct NamedArg {
  std::string_view name;
  Variant value;
};

// The arguments of one late-bound call: positional ones first to last, then
// named ones. The caller owns the storage for the duration of the call; a
// by-reference argument is a Variant::byRef slot pointing at the caller's value.
class Args {
 public:
  Args() noexcept = default;
  explicit Args(std::span<Variant> positional, std::span<NamedArg> named = {}) noexcept
      : positional_(positional), named_(named) {}

  std::span<Variant> positional() const noexcept { return positional_; }
  std::span<NamedArg> named() const noexcept { return named_; }
  size_t count() const noexcept { return positional_.size() + named_.size(); }

 private:
  std::span<Variant> positional_;
  std::span<NamedArg> named_;
};

}  // namespace QuillFormatAPA
