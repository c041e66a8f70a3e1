#pragma once

#include <string>
#include <vector>

#include "quillpaper/AuthorNames.h"
#include "quillpaper/PropertyBag.h"
#include "quillpaper/ReferenceFormatter.h"

namespace quillpaper {

// The template's generic reference object: every field of one reference as
// a property, the common parts it parses itself (the author list), the
// author and title strings, and, as controller, the date and page tests.
class ReferenceSource : public PropertyBag {
 public:
  // `entry`: the reference as typed, to which the parsed parts are compared.
  ReferenceSource(Ref<FormatterSettings> settings, std::string entry)
      : settings_(std::move(settings)), entry_(std::move(entry)) {}
  std::string_view typeName() const noexcept override { return "Reference"; }

  const std::vector<PersonName>& authors() const { return authors_; }
  // The address as parsed (without "doi:" or "Retrieved from").
  const std::string& address() const { return address_; }
  bool addressIsDoi() const;
  // The address as a URL a browser opens ("http://" added where it was taken off).
  std::string url() const;
  // The name of the site before the address, if any, and the address.
  std::pair<std::string, std::string> labelAndAddress() const;
  // The retrieval statement as the reference shows it.
  std::string retrievalStatement() const;

 protected:
  bool readComputed(const std::string& key, Variant& value) const override;
  bool writeComputed(const std::string& key, const Variant& value) override;
  bool call(const std::string& name, Args& args, Variant& result) override;

 private:
  std::string parseCommon(int mode, std::string& text);

  Ref<FormatterSettings> settings_;
  Ref<OutputTemplate> tests_ = make<OutputTemplate>();
  std::string entry_;
  std::vector<PersonName> authors_;
  bool authorsShortened_ = false;
  std::string address_;
};

}  // namespace quillpaper
