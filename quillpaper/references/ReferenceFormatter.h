#pragma once

#include <map>
#include <string>
#include <vector>

#include "quillpaper/references/AuthorNames.h"
#include "quillpaper/FormattedText.h"
#include "quillpaper/PropertyBag.h"

namespace quillpaper {

// One component template of the reference formatter (`outputTemplates(i)`,
// `citationOutputTemplate`): its rules are the named arguments of Reset.
class ComponentTemplate : public PropertyBag {
 public:
  std::string_view typeName() const noexcept override { return "ComponentTemplate"; }

 protected:
  bool call(const std::string& name, Args& args, Variant& result) override;
};

// An entry's output template: one row per item, and the join of the items
// into one formatted reference.
class OutputTemplate : public PropertyBag {
 public:
  std::string_view typeName() const noexcept override { return "OutputTemplate"; }

  int lastIndex() const { return lastIndex_; }
  bool isFormatted(int item) const;
  // The class's list of texts given to Reset ("(n.d.).||Afterword.||...").
  const std::vector<std::string>& texts() const { return texts_; }

  // The formatted entry: each present item with the prefix (first item only),
  // then the separator before the next present item or the terminator.
  // `plain[i]` or `formatted[i]` hold item i; `checks[i]` chooses the second
  // set of a row marked for checking.
  std::vector<TextRun> join(const std::vector<std::string>& plain, const std::vector<std::vector<TextRun>>& formatted,
                            const std::vector<bool>& checks) const;

 protected:
  bool call(const std::string& name, Args& args, Variant& result) override;

 private:
  struct Row {
    bool formatted = false;
    bool checking = false;
    std::vector<std::string> strings;  // prefix, separators, terminator (twice when checking)
  };
  int lastIndex_ = -1;
  std::vector<std::string> texts_;
  std::map<int, Row> rows_;
};

// The reference formatter's settings object.
class FormatterSettings : public PropertyBag {
 public:
  std::string_view typeName() const noexcept override { return "FormatterSettings"; }

  ComponentTemplate& component(int index);
  OutputTemplate& output() { return *output_; }
  // The author list's rules, from the author template (outputTemplates(0)).
  AuthorStyle authorStyle();

 protected:
  bool readComputed(const std::string& key, Variant& value) const override;
  bool writeComputed(const std::string& key, const Variant& value) override;

 private:
  mutable std::map<int, Ref<ComponentTemplate>> components_;
  Ref<OutputTemplate> output_ = make<OutputTemplate>();
  Ref<ComponentTemplate> citation_ = make<ComponentTemplate>();
};

}  // namespace quillpaper
