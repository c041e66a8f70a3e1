#include "tables/TableWord.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableWord::layout() {
  static const TableLayout s{
      "TableWord",
      "Inductively Developed Thematic Categories",
      4,
      {
          {rule(false), TC({"Category", "Thematic category", "Key terms", "Characteristic Level 3 responses"})},
          {TL({"Family traditionalism", kBlank, kBlank,
               "Q1. How \"should\" husbands, wives, and children act? What is the \"right way\" to act? What are "
               "certain family members supposed to do?"})},
          {TL({"F1", "Macho privilege", "Man, woman, say, house OR mother",
               "The husband is the one who gives \"orders.\" The wife never says what she feels. The children "
               "should \"obey,\" no matter what."})},
          {TL({"F2", "Family trust and respect", "Respect OR trust OR work OR help",
               "Always share everything equally and there should be respect among everyone/between couples and "
               "children."})},
          {TL({"F3", "Family unity", "Family OR unity", "Above all, there should be family unity."})},
          {TL({"F4", "Values traditions", "Tradition OR continue OR important",
               "If she is a true believer, she should always participate in the traditions."})},
          {TL({"Rural lifestyle", kBlank, kBlank,
               "Q2. Many \"traditional\" people like Maria believe that life in a small rural town is better than "
               "life in a big city. Please tell me some of these beliefs."})},
          {TL({"R1", "Small town life is better", "Small town OR everybody knows each other",
               "Because there is so much violence in the big city. . . . You know your town and people and you "
               "trust each other like family."})},
          {TL({"R2", "Big city opportunities", "Live OR believe OR big cities OR better",
               "Better to live in a big city because there are more jobs and educational opportunities."})},
          {TL({"R3", "Rural tranquility", "Life OR less stress OR rural",
               "I agree that life in a small town is better because in a small town life is more peaceful. There "
               "is less gang activity and overall life is more peaceful."})},
          {closingRule(false),
           TL({"R4", "It depends", "It depends OR more opportunities OR the city",
               "Sometimes it is true that rural life is better. However, it's also true that a big city can help "
               "you or can destroy you; that depends on you."})},
      },
      {{"This word table example is from APA 5.16, pg. 149.", true}},
      std::nullopt};
  return s;
}

}  // namespace QuillFormatAPA
