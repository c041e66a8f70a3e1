#pragma once

#include <string>
#include <vector>

#include "quillpaper/references/AuthorNames.h"
#include "quillpaper/PropertyBag.h"
#include "quillpaper/references/ReferenceFormatter.h"

namespace quillpaper {

// The template's generic reference object: every field of one reference as
// a property, the common parts it parses itself (the author list), the
// author and title strings, and, as controller, the date and page tests.
class ReferenceSource : public PropertyBag {
 public:
  // `entry`: the reference as typed, to which the parsed parts are compared;
  // `settings`: the formatter settings of its entry class (they may come once
  // the entry's type is known).
  ReferenceSource(Ref<FormatterSettings> settings, std::string entry)
      : settings_(std::move(settings)), entry_(std::move(entry)) {}
  void useSettings(Ref<FormatterSettings> settings) { settings_ = std::move(settings); }
  std::string_view typeName() const noexcept override { return "Reference"; }
  // Every data source numbers its fields alike (see knownNames()).
  uint64_t idScope() const noexcept override;

  const std::vector<PersonName>& authors() const { return authors_.names; }
  const NameList& authorList() const { return authors_; }
  // The address as parsed (without "doi:" or "Retrieved from").
  const std::string& address() const { return address_; }
  bool addressIsDoi() const;
  // The address as a URL a browser opens ("http://" added where it was taken off).
  std::string url() const;
  // The name of the site before the address, if any, and the address.
  std::pair<std::string, std::string> labelAndAddress() const;
  // A retrieval date the entry was typed with: it is written whatever the
  // entry class's date format, so that no typed word is lost.
  void keepAccessDate(std::string date) { typedAccessDate_ = std::move(date); }
  // The name of the site the entry was typed with before its address.
  void keepSiteName(std::string site) { siteName_ = std::move(site); }
  // The retrieval statement as the reference shows it.
  std::string retrievalStatement() const;

 protected:
  std::span<const std::string_view> knownNames() const override;
  bool readComputed(const std::string& key, Variant& value) const override;
  bool writeComputed(const std::string& key, const Variant& value) override;
  bool call(const std::string& name, Args& args, Variant& result) override;

 private:
  std::string parseCommon(int mode, std::string& text);

  Ref<FormatterSettings> settings_;
  Ref<OutputTemplate> tests_ = make<OutputTemplate>();
  std::string entry_;
  NameList authors_;
  std::string address_;
  std::string typedAccessDate_;
  std::string siteName_;
};

}  // namespace quillpaper
