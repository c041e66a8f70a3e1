#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/Args.h"
#include "host/MemberTable.h"

namespace quillpaper {

using namespace QuillFormatAPA;

// An object of the template whose settings are free-form properties: any
// name can be written and read back (indexed ones, "disableKey(1)", too),
// next to members that do something. A property never written reads as
// Empty. Names are case-insensitive.
class PropertyBag : public Object {
 public:
  // A property keeps its id for the bag's life: ids may be cached per bag
  // (per class, for a class whose names are known: see knownNames()).
  uint64_t idScope() const noexcept override { return idScope_; }
  DispId idOfName(std::string_view name) const noexcept override;
  Status invoke(DispId id, CallKind kind, Args& args, Variant& result) noexcept override;

  // Host-side access to the properties.
  Variant property(std::string_view name) const;
  std::string text(std::string_view name) const { return property(name).toString(); }
  void setProperty(std::string_view name, Variant value);
  const std::map<std::string, Variant>& properties() const { return values_; }

 protected:
  // The names of an object whose members are known, lower case and sorted:
  // a misspelt one is an unknown member (438), and a name's id is its place
  // in the list, the same for every object of the class (whose idScope() may
  // then be the class's). Empty for a bag that takes whatever is written to it.
  virtual std::span<const std::string_view> knownNames() const { return {}; }
  // The members that do something; ids below the table's size go to them.
  virtual const MemberTable* methods() const noexcept { return nullptr; }
  // A read the subclass answers itself (a computed property); false to read the bag.
  virtual bool readComputed(const std::string& key, Variant& value) const;
  // A write the subclass takes itself; false to store in the bag.
  virtual bool writeComputed(const std::string& key, const Variant& value);
  // A call the subclass answers itself, whatever its arguments (named ones
  // of any name included); `name` is lower case. False: not such a call.
  virtual bool call(const std::string& name, Args& args, Variant& result);

 private:
  static std::string key(std::string_view name);
  mutable std::vector<std::string> names_;  // property ids, offset by the method count
  const uint64_t idScope_ = newIdScope();
  std::map<std::string, Variant> values_;
};

}  // namespace quillpaper
