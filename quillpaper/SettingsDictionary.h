#pragma once

#include <map>
#include <string>
#include <variant>

#include "host/MemberTable.h"

namespace quillpaper {

using namespace QuillFormatAPA;

// The template's settings dictionary: keys are strings or whole numbers, and
// the number 1 is a different key from the text "1". Adding a key that is
// there already fails with 457.
class SettingsDictionary : public Dispatchable<SettingsDictionary> {
 public:
  static const MemberTable& members();

  bool Exists(const Variant& key) const;
  Variant Item(const Variant& key) const;
  void setItem(const Variant& key, const Variant& value);
  void Add(const Variant& key, const Variant& value);
  int32_t Count() const { return static_cast<int32_t>(entries_.size()); }

  // Host-side reads.
  std::string text(const std::string& key, const std::string& fallback = "") const;
  double number(const std::string& key, double fallback) const;

 private:
  using Key = std::variant<double, std::string>;
  static Key keyOf(const Variant& key);
  std::map<Key, Variant> entries_;
};

}  // namespace quillpaper
