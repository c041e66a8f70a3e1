#include <gtest/gtest.h>

#include "host/Array.h"

namespace QuillFormatAPA {
namespace {

int errorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const AutomationError& e) {
    return e.number();
  }
  return 0;
}

// Catches bounds that ignore the lower bound or let one index past either end.
TEST(ArrayTest, BoundsCountFromTheLowerBound) {
  Array a = Array::vector(1, 3, VarType::String);
  EXPECT_EQ(a.lowerBound(), 1);
  EXPECT_EQ(a.upperBound(), 3);
  EXPECT_EQ(a.get(1).toString(), "");  // typed elements start as their type's default
  a.set(3, "c");
  EXPECT_EQ(a.get(3).toString(), "c");
  for (int32_t bad : {0, 4, -1})
    EXPECT_EQ(errorOf([&] { (void)a.get(bad); }), kSubscriptOutOfRange) << bad;
  EXPECT_EQ(errorOf([&] { (void)a.upperBound(2); }), kSubscriptOutOfRange);
  EXPECT_EQ(errorOf([&] { (void)a.get(1, 1); }), kSubscriptOutOfRange);
}

// Catches elements stored without the declared element type's conversion.
TEST(ArrayTest, ElementsTakeTheDeclaredType) {
  Array words = Array::vector(0, 1, VarType::Integer);
  words.set(0, "12");
  EXPECT_EQ(words.get(0).type(), VarType::Integer);
  EXPECT_EQ(errorOf([&] { words.set(1, int32_t{40000}); }), kOverflow);
  EXPECT_EQ(errorOf([&] { words.set(1, "twelve"); }), kTypeMismatch);
}

TEST(ArrayTest, RedimAndEmptyArrays) {
  Array a = Array::vector(0, 2);
  a.set(0, "keep");
  a.redim(0, 4, true);
  EXPECT_EQ(a.get(0).toString(), "keep");
  EXPECT_EQ(a.size(), 5u);
  a.redim(0, 1);
  EXPECT_TRUE(a.get(0).isEmpty());

  Array empty = Array::vector(0, -1);
  EXPECT_EQ(empty.size(), 0u);
  EXPECT_EQ(empty.upperBound(), -1);
  EXPECT_EQ(errorOf([] { Array::vector(0, -2); }), kSubscriptOutOfRange);
}

// Catches a matrix whose second index is ignored or whose bounds are swapped.
TEST(ArrayTest, TwoDimensions) {
  Array m = Array::matrix(0, 3, 0, 6, VarType::String);
  m.set(3, 6, "last");
  m.set(0, 1, "first row");
  EXPECT_EQ(m.get(3, 6).toString(), "last");
  EXPECT_EQ(m.get(0, 1).toString(), "first row");
  EXPECT_EQ(m.get(1, 0).toString(), "");
  EXPECT_EQ(m.upperBound(2), 6);
  EXPECT_EQ(errorOf([&] { (void)m.get(0, 7); }), kSubscriptOutOfRange);
  EXPECT_EQ(errorOf([&] { (void)m.get(4, 0); }), kSubscriptOutOfRange);
}

}  // namespace
}  // namespace QuillFormatAPA
