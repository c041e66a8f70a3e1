#include "quillpaper/PropertyBag.h"

#include <algorithm>

namespace quillpaper {

std::string PropertyBag::key(std::string_view name) {
  std::string k(name);
  for (char& c : k)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return k;
}

DispId PropertyBag::idOfName(std::string_view name) const noexcept {
  const MemberTable* table = methods();
  const DispId base = table ? static_cast<DispId>(table->members().size()) : 0;
  if (table) {
    const DispId id = table->idOfName(name);
    if (id != kUnknownDispId) return id;
  }
  try {
    const std::string k = key(name);
    // An object whose members are known answers a name it lacks as any object does.
    if (const std::span<const std::string_view> known = knownNames(); !known.empty()) {
      const auto it = std::lower_bound(known.begin(), known.end(), k);
      return it != known.end() && *it == k ? base + static_cast<DispId>(it - known.begin()) : kUnknownDispId;
    }
    auto it = std::find(names_.begin(), names_.end(), k);
    if (it != names_.end()) return base + static_cast<DispId>(it - names_.begin());
    names_.push_back(k);
    return base + static_cast<DispId>(names_.size() - 1);
  } catch (...) {
    return kUnknownDispId;
  }
}

Status PropertyBag::invoke(DispId id, CallKind kind, Args& args, Variant& result) noexcept {
  const MemberTable* table = methods();
  const DispId base = table ? static_cast<DispId>(table->members().size()) : 0;
  if (table && id < base) return table->invoke(*this, id, kind, args, result);
  const std::span<const std::string_view> known = knownNames();
  const size_t count = known.empty() ? names_.size() : known.size();
  if (id < base || static_cast<size_t>(id - base) >= count) return AutomationError(kUnknownMember);
  try {
    std::string k(known.empty() ? std::string_view(names_[static_cast<size_t>(id - base)])
                                : known[static_cast<size_t>(id - base)]);
    if (has(kind, CallKind::Method) && call(k, args, result)) return {};
    // An indexed property keeps each index apart: "disablekey(1)".
    std::span<Variant> positional = args.positional();
    const size_t indexCount = kind == CallKind::PropertyPut ? positional.size() - 1 : positional.size();
    if (kind == CallKind::PropertyPut && positional.empty()) return AutomationError(kArgumentNotOptional, k);
    for (size_t i = 0; i < indexCount; ++i) k += "(" + positional[i].toString() + ")";
    if (kind == CallKind::PropertyPut) {
      if (!writeComputed(k, positional.back().deref())) values_[k] = positional.back().deref();
      return {};
    }
    if (!readComputed(k, result)) {
      auto it = values_.find(k);
      result = it == values_.end() ? Variant() : it->second;
    }
    return {};
  } catch (const AutomationError& e) {
    return e;
  } catch (const std::exception& e) {
    return AutomationError(kInternalError, e.what());
  }
}

bool PropertyBag::readComputed(const std::string&, Variant&) const { return false; }
bool PropertyBag::call(const std::string&, Args&, Variant&) { return false; }
bool PropertyBag::writeComputed(const std::string&, const Variant&) { return false; }

Variant PropertyBag::property(std::string_view name) const {
  Variant v;
  const std::string k = key(name);
  if (readComputed(k, v)) return v;
  auto it = values_.find(k);
  return it == values_.end() ? Variant() : it->second;
}

void PropertyBag::setProperty(std::string_view name, Variant value) {
  const std::string k = key(name);
  if (!writeComputed(k, value)) values_[k] = std::move(value);
}

}  // namespace quillpaper
