#include <gtest/gtest.h>

#include <thread>

#include "command/ClassFactory.h"
#include "host/CallSite.h"
#include "tables/TableMultilevelModel.h"
#include "tests/fakes/FakeService.h"
#include "tests/fakes/RecordingObject.h"

namespace QuillFormatAPA {
namespace {

using fakes::RecordedCall;
using fakes::RecordingObject;

struct Expected {
  const char* name;
  int columns;
  int rows;
  size_t notes;
};
const Expected kTables[] = {
    {"TableWord", 4, 11, 1},          {"TableModelComparison", 6, 25, 2}, {"TableLisrel", 4, 19, 1},
    {"TableCorrelation", 5, 11, 1},   {"TableAnova", 5, 12, 2},           {"TableNoncanonical", 8, 12, 2},
    {"TableRegression", 5, 15, 2},    {"TableHierarchRegression", 9, 16, 3},
    {"TableMultilevelModel", 6, 31, 2},
};

class StatisticsTableTest : public ::testing::Test {
 protected:
  // Runs `f` on a thread of its own (diagnostics keep per-thread state).
  template <class F>
  void run(F f) {
    std::thread t(f);
    t.join();
  }
  // The calls one AddRow makes.
  std::vector<RecordedCall> rowCalls(const ObjectRef& table, int16_t row) {
    auto target = make<RecordingObject>("Table");
    callByName(table, "AddRow", row, ObjectRef(target));
    return target->log()->calls;
  }

  Ref<fakes::FakeService> service = make<fakes::FakeService>();
  fakes::ServiceRegistration registration{service};
};

// Catches metadata written at the wrong place, or a row count that does not
// match the rows that emit anything.
TEST_F(StatisticsTableTest, MetadataMatchesTheRows) {
  run([&] {
    for (const Expected& e : kTables) {
      SCOPED_TRACE(e.name);
      ObjectRef table = createObject(std::string("QuillFormatAPA.") + e.name);
      ASSERT_TRUE(table);
      Array metadata = Array::vector(0, 13, VarType::String);
      for (int32_t i = 0; i <= 13; ++i) metadata.set(i, "x");
      callByName(table, "initTableSpecificMetadata", byRef(metadata));
      EXPECT_EQ(metadata.get(1).toString(), std::to_string(e.columns));
      EXPECT_EQ(metadata.get(2).toString(), std::to_string(e.rows));
      EXPECT_EQ(metadata.get(4).toString(), "1");
      EXPECT_EQ(metadata.get(5).toString(), std::string(e.name) == "TableMultilevelModel" ? "10" : "x");
      EXPECT_EQ(metadata.get(3).toString(), "x");
      EXPECT_FALSE(metadata.get(0).toString().empty());
      for (int16_t row = 1; row <= e.rows; ++row) EXPECT_FALSE(rowCalls(table, row).empty()) << row;
      for (int16_t row : {int16_t(0), int16_t(-1), int16_t(e.rows + 1)}) EXPECT_TRUE(rowCalls(table, row).empty()) << row;
    }
  });
  EXPECT_EQ(service->dumps, 0);
}

// Catches a row that types past the last column once its moves are counted,
// a rule across the wrong width, or a closing rule that is not the last row's
// first call.
TEST_F(StatisticsTableTest, RowsStayInsideTheTableAndCloseWithTheThickRule) {
  run([&] {
    for (const Expected& e : kTables) {
      SCOPED_TRACE(e.name);
      ObjectRef table = createObject(std::string("QuillFormatAPA.") + e.name);
      for (int16_t row = 1; row <= e.rows; ++row) {
        SCOPED_TRACE(row);
        int cursor = 0;
        const auto calls = rowCalls(table, row);
        for (const RecordedCall& c : calls) {
          if (c.member == "TypeIntoSelectedCell" || c.member == "TypeIntoSelectedCellLeftJustify") {
            cursor += static_cast<int>(c.positional.size());
            EXPECT_LE(cursor, e.columns);
          } else if (c.member == "MoveRight") {
            const Variant* count = c.namedArg("Count");
            cursor += count ? count->toInteger() : c.positional.empty() ? 1 : c.positional[0].toInteger();
          } else if (c.member == "AddSpanner") {
            cursor += c.positional.at(1).toInteger();
          } else if (c.member == "UnderLineRow") {
            EXPECT_EQ(c.positional.at(0).toInteger(), e.columns);
            const Variant* thicker = c.namedArg("thickerLine");
            EXPECT_EQ(thicker != nullptr, row == e.rows);
            if (row == e.rows) {
              EXPECT_EQ(&c, &calls.front());
            }
          }
        }
      }
    }
  });
}

// Catches notes out of order: the general note first, then the probability notes.
TEST_F(StatisticsTableTest, GeneralNoteFirst) {
  run([&] {
    for (const Expected& e : kTables) {
      SCOPED_TRACE(e.name);
      auto target = make<RecordingObject>("Table");
      callByName(createObject(std::string("QuillFormatAPA.") + e.name), "AddTableNotes", ObjectRef(target));
      const auto& calls = target->log()->calls;
      ASSERT_EQ(calls.size(), e.notes);
      for (size_t i = 0; i < calls.size(); ++i)
        EXPECT_EQ(calls[i].text().ends_with(i == 0 ? "generalNote:=True)" : "generalNote:=False)"), true) << i;
    }
  });
}

std::vector<std::string> texts(const std::vector<RecordedCall>& calls) {
  std::vector<std::string> out;
  for (const RecordedCall& c : calls) out.push_back(c.text());
  return out;
}

// The rows whose particulars a slip would lose.
TEST_F(StatisticsTableTest, RowsWithParticulars) {
  run([&] {
    ObjectRef regression = createObject("QuillFormatAPA.TableRegression");
    EXPECT_EQ(texts(rowCalls(regression, 3)),
              (std::vector<std::string>{
                  "UnderLineRow(5, addSpaceAfter:=True)", "UnderLineCell(Column:=2, row:=3)",
                  "TypeIntoSelectedCell(\"Variable\", \"Model 1 B\", \"B\", \" \", \"95% CI\")"}));
    EXPECT_EQ(texts(rowCalls(regression, 15)).front(), "UnderLineRow(5, thickerLine:=True, addSpaceAfter:=True)");

    ObjectRef hierarch = createObject("QuillFormatAPA.TableHierarchRegression");
    EXPECT_EQ(rowCalls(hierarch, 10).back().positional.back().toString(), " .08|_dagger_");
    auto notes = make<RecordingObject>("Table");
    callByName(hierarch, "AddTableNotes", ObjectRef(notes));
    EXPECT_TRUE(notes->log()->calls.at(2).positional.at(0).toString().starts_with("_dagger_|p|"));
    EXPECT_EQ(texts(rowCalls(hierarch, 2)).size(), 6u);  // a move before each of the three spanners

    ObjectRef multilevel = createObject("QuillFormatAPA.TableMultilevelModel");
    EXPECT_EQ(texts(rowCalls(multilevel, 13)), texts(rowCalls(multilevel, 21)));
    EXPECT_EQ(rowCalls(multilevel, 22).front().positional.front().toString(),
              "   Intercept/intercept (sigma_squareda0)");
    EXPECT_EQ(rowCalls(multilevel, 26).front().positional.front().toString(), "      (sigma_squareda3)");
    EXPECT_EQ(rowCalls(multilevel, 30).front().positional.front().toString(), "   Intercept/intercept w0");
    EXPECT_EQ(texts(rowCalls(multilevel, 14))[1], "MoveRight(4)");
    EXPECT_EQ(TableMultilevelModel().sigmaSquared(""), "(sigma_squared)");

    ObjectRef correlation = createObject("QuillFormatAPA.TableCorrelation");
    EXPECT_EQ(texts(rowCalls(correlation, 4))[1], "MoveRight()");
    EXPECT_EQ(texts(rowCalls(correlation, 5))[1], "MoveRight(Count:=2)");
    EXPECT_EQ(texts(rowCalls(correlation, 6))[2], "MoveRight(Count:=3)");
    EXPECT_EQ(texts(rowCalls(correlation, 2)), (std::vector<std::string>{
                                                   "AddSpanner(\"Students (n = 200)\", 5, addSpaceBeforeAfter:=False, "
                                                   "underline:=False)"}));
    Array metadata = Array::vector(0, 13, VarType::String);
    callByName(correlation, "initTableSpecificMetadata", byRef(metadata));
    EXPECT_EQ(metadata.get(0).toString(), "Intercorrelations Between\r\nSubscales for Students and Older Adults");

    ObjectRef anova = createObject("QuillFormatAPA.TableAnova");
    EXPECT_EQ(rowCalls(anova, 1).at(1).positional.at(1).toString(), "df");
    EXPECT_EQ(rowCalls(anova, 8).at(0).positional.at(2).toString(), "   3.27|**");
  });
}

// Catches a lower bound ignored: element k sits at lower bound + k.
TEST_F(StatisticsTableTest, MetadataCountsFromTheLowerBound) {
  run([&] {
    Array metadata = Array::vector(1, 14, VarType::String);
    callByName(createObject("QuillFormatAPA.TableAnova"), "initTableSpecificMetadata", byRef(metadata));
    EXPECT_EQ(metadata.get(1).toString(), "Analysis of Variance for Classical Conditioning");
    EXPECT_EQ(metadata.get(2).toString(), "5");
    EXPECT_EQ(metadata.get(5).toString(), "1");
    // Bounds at the top of the index range: out of range, not an overflow.
    Array high = Array::vector(INT32_MAX - 1, INT32_MAX, VarType::String);
    callByName(createObject("QuillFormatAPA.TableAnova"), "initTableSpecificMetadata", byRef(high));
    const std::vector<std::string> dumps = service->linesStartingWith("vbwBeforeDump");
    ASSERT_EQ(dumps.size(), 1u);
    EXPECT_NE(dumps[0].find("Subscript out of range"), std::string::npos) << dumps[0];
  });
}

// Catches the table form's presets written in the wrong places, a too-short
// array making a table anyway, and indices outside 1 to 9 making one.
TEST_F(StatisticsTableTest, TableTemplate) {
  run([&] {
    ObjectRef main = createObject("QuillFormatAPA.Main2");
    Array names, tooltips;
    EXPECT_EQ(callByName(main, "TableFormMetaData", byRef(names), byRef(tooltips)).toInteger(), 1);
    EXPECT_EQ(names.size(), 9u);
    EXPECT_EQ(tooltips.size(), 9u);
    EXPECT_EQ(names.get(8).toString(), "&Noncanonical");

    Array metadata = Array::vector(0, 13, VarType::String);
    for (int32_t i = 0; i <= 13; ++i) metadata.set(i, "x");
    ObjectRef table = callByName(main, "TableTemplate", int16_t{9}, byRef(metadata)).toObject();
    ASSERT_TRUE(table);
    EXPECT_EQ(table->typeName(), "TableNoncanonical");
    EXPECT_EQ(toStrings(metadata), (std::vector<std::string>{"x", "x", "x", "x", "x", "x", "True", "x", "x", "True",
                                                             "Note.", "x", "x", "True"}));
    Array presets = Array::vector(0, 13, VarType::String);
    EXPECT_FALSE(callByName(main, "TableTemplate", int16_t{10}, byRef(presets)).toObject());
    EXPECT_EQ(presets.get(13).toString(), "True");
    Array tooShort = Array::vector(0, 12, VarType::String);
    EXPECT_FALSE(callByName(main, "TableTemplate", int16_t{1}, byRef(tooShort)).toObject());
  });
  EXPECT_EQ(service->linesStartingWith("vbwBeforeDump"),
            (std::vector<std::string>{"vbwBeforeDump QuillFormatAPA DocumentBuilder TableTemplate[Get] 9 Subscript "
                                      "out of range 0"}));
}

}  // namespace
}  // namespace QuillFormatAPA
