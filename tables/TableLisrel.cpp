#include "tables/TableLisrel.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableLisrel::layout() {
  static const TableLayout s{
      "TableLisrel",
      "Factor Loadings and Uniqueness for Confirmatory Factor Model of Type A Behavior Pattern Variables",
      4,
      {
          {rule(false), TC({"Measure and variable", "Unstandardized factor loading", "SE", "Uniqueness"})},
          {TC({"SI--Speech Characteristics"})},
          {TC({"  Loud and explosive", ".60", "--", ".32"})},
          {TC({"  Rapid and accelerating", ".63", ".04", ".29"})},
          {TC({"  Response latency", ".71", ".04", ".16"})},
          {TC({"  Verbal competitiveness", ".82", ".05", ".25"})},
          {TC({"SI--Answer Content"})},
          {TC({"  Competitiveness", ".60", "--", ".34"})},
          {TC({"  Speed", ".59", ".04", ".27"})},
          {TC({"  Impatience", ".67", ".05", ".28"})},
          {TC({"SI--Hostility"})},
          {TC({"  Stylistic rating", ".60", "--", ".22"})},
          {TC({"  Content rating", ".60", ".05", ".17"})},
          {TC({"Thurstone Activity Scale"})},
          {TC({"  Variable 1", ".60", "--", ".73"})},
          {TC({"  Variable 2", ".88", ".08", ".39"})},
          {TC({"  Variable 3", ".71", ".07", ".54"})},
          {TC({"  Variable 4", ".69", ".07", ".74"})},
          {closingRule(false), TC({"  Variable 5", ".74", ".07", ".31"})},
      },
      {{"This LISREL table example is from APA 5th edition 3.69, pg. 164, but is still valid for the 6th edition. "
        "Dashes indicate the standard error was not estimated. SI = Structured Interview.",
        true}},
      std::nullopt};
  return s;
}

}  // namespace QuillFormatAPA
