#include "command/ClassFactory.h"

#include <array>

#include "command/Main2.h"
#include "references/Esource.h"
#include "references/NonPeriodical.h"
#include "references/Periodical.h"
#include "tables/TableAnova.h"
#include "tables/TableCorrelation.h"
#include "tables/TableHierarchRegression.h"
#include "tables/TableLisrel.h"
#include "tables/TableModelComparison.h"
#include "tables/TableMultilevelModel.h"
#include "tables/TableNoncanonical.h"
#include "tables/TableRegression.h"
#include "tables/TableWord.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA {

namespace {

template <class T>
constexpr PublicClass publicClass(std::string_view name) {
  return {name, [] { return ObjectRef(make<T>()); }, &T::members};
}

const std::array kClasses{
    PublicClass{"QuillFormatAPA.Main2", [] { return ObjectRef(Main2::create()); }, &Main2::members},
    publicClass<Periodical>("QuillFormatAPA.Periodical"),
    publicClass<NonPeriodical>("QuillFormatAPA.NonPeriodical"),
    publicClass<Esource>("QuillFormatAPA.Esource"),
    publicClass<TableWord>("QuillFormatAPA.TableWord"),
    publicClass<TableModelComparison>("QuillFormatAPA.TableModelComparison"),
    publicClass<TableLisrel>("QuillFormatAPA.TableLisrel"),
    publicClass<TableCorrelation>("QuillFormatAPA.TableCorrelation"),
    publicClass<TableAnova>("QuillFormatAPA.TableAnova"),
    publicClass<TableNoncanonical>("QuillFormatAPA.TableNoncanonical"),
    publicClass<TableRegression>("QuillFormatAPA.TableRegression"),
    publicClass<TableHierarchRegression>("QuillFormatAPA.TableHierarchRegression"),
    publicClass<TableMultilevelModel>("QuillFormatAPA.TableMultilevelModel"),
};

}  // namespace

std::span<const PublicClass> publicClasses() noexcept { return kClasses; }

const PublicClass* findClass(std::string_view className) noexcept {
  for (const PublicClass& c : kClasses)
    if (QuillStrings::strings().equalsIgnoreCase(c.name, className)) return &c;
  return nullptr;
}

ObjectRef createObject(std::string_view className) {
  const PublicClass* c = findClass(className);
  return c ? c->create() : ObjectRef();
}

}  // namespace QuillFormatAPA
