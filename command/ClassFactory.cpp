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

struct Creatable {
  std::string_view name;
  ObjectRef (*create)();
};

template <class T>
ObjectRef create() {
  return make<T>();
}

const std::array kClasses{
    Creatable{"QuillFormatAPA.Main2", [] { return ObjectRef(Main2::create()); }},
    Creatable{"QuillFormatAPA.Periodical", create<Periodical>},
    Creatable{"QuillFormatAPA.NonPeriodical", create<NonPeriodical>},
    Creatable{"QuillFormatAPA.Esource", create<Esource>},
    Creatable{"QuillFormatAPA.TableWord", create<TableWord>},
    Creatable{"QuillFormatAPA.TableModelComparison", create<TableModelComparison>},
    Creatable{"QuillFormatAPA.TableLisrel", create<TableLisrel>},
    Creatable{"QuillFormatAPA.TableCorrelation", create<TableCorrelation>},
    Creatable{"QuillFormatAPA.TableAnova", create<TableAnova>},
    Creatable{"QuillFormatAPA.TableNoncanonical", create<TableNoncanonical>},
    Creatable{"QuillFormatAPA.TableRegression", create<TableRegression>},
    Creatable{"QuillFormatAPA.TableHierarchRegression", create<TableHierarchRegression>},
    Creatable{"QuillFormatAPA.TableMultilevelModel", create<TableMultilevelModel>},
};

const std::array<std::string_view, kClasses.size()> kNames = [] {
  std::array<std::string_view, kClasses.size()> names{};
  for (size_t i = 0; i < kClasses.size(); ++i) names[i] = kClasses[i].name;
  return names;
}();

}  // namespace

std::span<const std::string_view> classNames() noexcept { return kNames; }

ObjectRef createObject(std::string_view className) {
  for (const Creatable& c : kClasses)
    if (QuillStrings::strings().equalsIgnoreCase(c.name, className)) return c.create();
  return ObjectRef();
}

}  // namespace QuillFormatAPA
