#include <gtest/gtest.h>

#include "quillpaper/TableMarkup.h"
#include "quillpaper/WordTable.h"

namespace quillpaper {
namespace {

// Runs written compactly: "_x_" italic, "^x^" raised, "~x~" lowered.
std::string compact(const std::vector<StyledRun>& runs) {
  std::string out;
  for (const StyledRun& r : runs) {
    if (r.italic) out += "_" + r.text + "_";
    else if (r.superscript) out += "^" + r.text + "^";
    else if (r.subscript) out += "~" + r.text + "~";
    else out += r.text;
  }
  return out;
}

// Each marker of the statistics tables and what a reader sees.
TEST(TableMarkupTest, MarkersRenderAsTheTextsImply) {
  const std::pair<const char*, const char*> rows[] = {
      {"  443.18|*", "  443.18^*^"},
      {"   3.27|**", "   3.27^**^"},
      {"Age|2", "Age^2^"},
      {"n|a", "_n_^a^"},
      {"R|2", "_R_^2^"},
      {"Total R|2", "Total _R_^2^"},
      {"delta_R|2", "Δ_R_^2^"},
      {"delta_F", "Δ_F_"},
      {"delta_NFI", "ΔNFI"},
      {"chi_squared", "χ^2^"},
      {"chi_squared_diff", "χ^2^~diff~"},
      {"eta", "η"},
      {"beta", "β"},
      {"   Age/age (sigma_squareda1)", "   Age/age (σ^2^~a1~)"},
      {"(sigma_squared)", "(σ^2^)"},
      {" .08|_dagger_", " .08^†^"},
      {"_dagger_|p| < .10. *|p| < .05.", "^†^_p_ < .10. *_p_ < .05."},
      {"*|p| < .05. **|p| < .01.", "*_p_ < .05. **_p_ < .01."},
      {"Values in parentheses. |S| = subjects.", "Values in parentheses. _S_ = subjects."},
      {"|a|Numbers of children. |b|One girl.", "^a^Numbers of children. ^b^One girl."},
      {"   Control variables|a", "   Control variables^a^"},
      {" 216|b", " 216^b^"},
      {"df", "_df_"},
      {"SE", "_SE_"},
      // A statistical symbol standing as a word is italic; words holding its letters are not.
      {"Model 1 B", "Model 1 _B_"},
      {"Students (n = 200)", "Students (_n_ = 200)"},
      {"Boys and Men", "Boys and Men"},
      // A minus sign, the interaction's "×", an em dash.
      {"-.09", "\u2212.09"},
      {"(-1.20)", "(\u22121.20)"},
      {"[-0.14, -0.03]", "[\u22120.14, \u22120.03]"},
      {"18-25", "18-25"},
      {"A X S", "A \u00d7 _S_"},
      {"--", "\u2014"},
      {"", ""},
  };
  for (const auto& [in, expected] : rows) EXPECT_EQ(compact(renderTableMarkup(in)), expected) << in;
}

// Catches a spanner that runs past the table, rules on the wrong row, or a
// cursor that does not start each row at its first cell.
TEST(WordTableTest, CursorRulesAndSpanners) {
  WordTable t(3, 4);
  t.selectRow(1);
  t.MoveRight(1);
  t.AddSpanner("Group", 9, true, true);  // reaches past the last column: stops there
  t.selectRow(2);
  t.UnderLineRow(4, false, true);
  Variant cells[] = {Variant("a"), Variant("b")};
  t.TypeIntoSelectedCell(ParamArray{cells});
  t.selectRow(3);
  t.UnderLineRow(4, true, false);
  t.UnderLineCell(2, 1);
  const doc::TableBlock& b = *t.block();
  EXPECT_EQ(b.rows[0].cells[1].span, 3);
  EXPECT_TRUE(b.rows[0].cells[3].covered);
  EXPECT_TRUE(b.rows[0].cells[1].ruleBelow);
  EXPECT_EQ(b.rows[1].cells[1].text, "b");
  EXPECT_TRUE(b.rows[1].spaceAfter);
  EXPECT_TRUE(b.rows[2].cells[3].thickRule);
  EXPECT_FALSE(b.rows[1].cells[0].thickRule);
  Variant tooMany[] = {Variant("1"), Variant("2"), Variant("3"), Variant("4"), Variant("5")};
  EXPECT_THROW(t.TypeIntoSelectedCell(ParamArray{tooMany}), AutomationError);
}

}  // namespace
}  // namespace quillpaper
