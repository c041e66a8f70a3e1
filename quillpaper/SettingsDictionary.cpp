#include "quillpaper/SettingsDictionary.h"

namespace quillpaper {

const MemberTable& SettingsDictionary::members() {
  static const MemberTable& table = ClassBuilder<SettingsDictionary>("Dictionary")
                                .method<&SettingsDictionary::Add>("Add", {"key", "item"})
                                .method<&SettingsDictionary::Exists>("Exists", {"key"})
                                .property<&SettingsDictionary::Item, &SettingsDictionary::setItem>("Item", {"key"})
                                .get<&SettingsDictionary::Count>("Count")
                                .build();
  return table;
}

SettingsDictionary::Key SettingsDictionary::keyOf(const Variant& key) {
  if (key.isString()) return std::string(key.stringView());
  if (key.isNumeric()) return key.toDouble();
  throw AutomationError(kInvalidProcedureCall, "a dictionary key is text or a number");
}

bool SettingsDictionary::Exists(const Variant& key) const { return entries_.count(keyOf(key)) > 0; }

Variant SettingsDictionary::Item(const Variant& key) const {
  auto it = entries_.find(keyOf(key));
  return it == entries_.end() ? Variant() : it->second;
}

void SettingsDictionary::setItem(const Variant& key, const Variant& value) { entries_[keyOf(key)] = value.deref(); }

void SettingsDictionary::Add(const Variant& key, const Variant& value) {
  if (!entries_.emplace(keyOf(key), value.deref()).second)
    throw AutomationError(kKeyAlreadyAssociated, key.toString());
}

std::string SettingsDictionary::text(const std::string& key, const std::string& fallback) const {
  auto it = entries_.find(key);
  return it == entries_.end() || !it->second.isString() ? fallback : it->second.toString();
}

double SettingsDictionary::number(const std::string& key, double fallback) const {
  auto it = entries_.find(key);
  if (it == entries_.end()) return fallback;
  double d = fallback;
  return parseNumber(it->second.toString(), d) ? d : fallback;
}

}  // namespace quillpaper
