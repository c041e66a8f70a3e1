#pragma once

#include <string>
#include <vector>

#include "host/MemberTable.h"

namespace QuillFormatAPA::fakes {

// The template's settings dictionary: string keys and integer keys are
// different keys ("1" is not 1); Add of a present key fails with 457.
class FakeDictionary : public Dispatchable<FakeDictionary> {
 public:
  static const MemberTable& members();

  bool Exists(const Variant& key) const;
  Variant Item(const Variant& key) const;
  void setItem(const Variant& key, const Variant& value);
  void Add(const Variant& key, const Variant& value);
  int32_t Count() const { return static_cast<int32_t>(entries_.size()); }

  // Test helpers.
  const Variant* find(const Variant& key) const;
  // Keys in insertion order, strings quoted ("\"MarginTop\"", "1").
  std::vector<std::string> keyTexts() const;

 private:
  struct Entry {
    Variant key;
    Variant value;
  };
  static bool sameKey(const Variant& a, const Variant& b);
  std::vector<Entry> entries_;
};

}  // namespace QuillFormatAPA::fakes
