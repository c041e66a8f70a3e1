#include "tests/fakes/FakeDictionary.h"

namespace QuillFormatAPA::fakes {

const MemberTable& FakeDictionary::members() {
  static const MemberTable& table = ClassBuilder<FakeDictionary>("Dictionary")
                                .method<&FakeDictionary::Add>("Add", {"key", "item"})
                                .method<&FakeDictionary::Exists>("Exists", {"key"})
                                .property<&FakeDictionary::Item, &FakeDictionary::setItem>("Item", {"key"})
                                .get<&FakeDictionary::Count>("Count")
                                .build();
  return table;
}

bool FakeDictionary::sameKey(const Variant& a, const Variant& b) {
  if (a.isString() != b.isString()) return false;
  if (a.isString()) return a.stringView() == b.stringView();
  return a.toDouble() == b.toDouble();
}

const Variant* FakeDictionary::find(const Variant& key) const {
  for (const Entry& e : entries_)
    if (sameKey(e.key, key)) return &e.value;
  return nullptr;
}

bool FakeDictionary::Exists(const Variant& key) const { return find(key) != nullptr; }

Variant FakeDictionary::Item(const Variant& key) const {
  const Variant* v = find(key);
  return v ? *v : Variant();
}

void FakeDictionary::setItem(const Variant& key, const Variant& value) {
  for (Entry& e : entries_)
    if (sameKey(e.key, key)) {
      e.value = value;
      return;
    }
  entries_.push_back({key, value});
}

void FakeDictionary::Add(const Variant& key, const Variant& value) {
  if (Exists(key)) throw AutomationError(kKeyAlreadyAssociated, key.toString());
  entries_.push_back({key, value});
}

std::vector<std::string> FakeDictionary::keyTexts() const {
  std::vector<std::string> out;
  for (const Entry& e : entries_) out.push_back(e.key.isString() ? "\"" + e.key.toString() + "\"" : e.key.toString());
  return out;
}

}  // namespace QuillFormatAPA::fakes
