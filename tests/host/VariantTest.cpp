#include <gtest/gtest.h>

#include <functional>

#include "host/Array.h"
#include "host/Variant.h"

namespace QuillFormatAPA {
namespace {

// Returns the error number a conversion raises, or 0.
int errorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const AutomationError& e) {
    return e.number();
  }
  return 0;
}

// Catches conversions that accept what the platform refuses, or refuse what it accepts.
TEST(VariantTest, ConversionsFollowThePlatform) {
  struct Row {
    Variant in;
    std::string asString;  // "!n" when toString raises n
    int toIntegerError;
    int16_t asInteger;
  };
  const Row rows[] = {
      {true, "True", 0, -1},
      {false, "False", 0, 0},
      {Variant(), "", 0, 0},
      {int16_t{-7}, "-7", 0, -7},
      {int32_t{32767}, "32767", 0, 32767},
      {int32_t{32768}, "32768", kOverflow, 0},
      {int32_t{-32769}, "-32769", kOverflow, 0},
      {2.5, "2.5", 0, 2},  // half to even
      {3.5, "3.5", 0, 4},
      {1e20, "1E+20", kOverflow, 0},
      {" 12 ", " 12 ", 0, 12},
      {"&H7F", "&H7F", 0, 127},
      {"1e3", "1e3", 0, 1000},
      {"12abc", "12abc", kTypeMismatch, 0},
      {"", "", kTypeMismatch, 0},
      {"inf", "inf", kTypeMismatch, 0},
      {Variant::null(), "!94", kInvalidUseOfNull, 0},
      {Variant::missing(), "!449", kArgumentNotOptional, 0},
      {Variant::nothing(), "!13", kTypeMismatch, 0},
      {Array::vector(0, 1), "!13", kTypeMismatch, 0},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.asString);
    if (r.asString.starts_with("!")) {
      EXPECT_EQ(errorOf([&] { (void)r.in.toString(); }), std::stoi(r.asString.substr(1)));
    } else {
      EXPECT_EQ(r.in.toString(), r.asString);
    }
    EXPECT_EQ(errorOf([&] { (void)r.in.toInteger(); }), r.toIntegerError);
    if (r.toIntegerError == 0) {
      EXPECT_EQ(r.in.toInteger(), r.asInteger);
    }
  }
}

// Catches a Boolean reading that accepts arbitrary text.
TEST(VariantTest, BooleanReadings) {
  EXPECT_TRUE(Variant("True").toBool());
  EXPECT_TRUE(Variant(" true ").toBool());
  EXPECT_FALSE(Variant("False").toBool());
  EXPECT_TRUE(Variant("-1").toBool());
  EXPECT_FALSE(Variant(0.0).toBool());
  EXPECT_EQ(errorOf([] { (void)Variant("yes").toBool(); }), kTypeMismatch);
}

// Catches an object conversion that lets a plain value through.
TEST(VariantTest, ObjectRequired) {
  EXPECT_EQ(errorOf([] { (void)Variant("x").toObject(); }), kObjectRequired);
  EXPECT_EQ(errorOf([] { (void)Variant().toObject(); }), kObjectRequired);
  EXPECT_FALSE(Variant::nothing().toObject());
}

// Catches a borrowed string that dangles once copied, and a by-reference slot
// that writes into a copy instead of its target.
TEST(VariantTest, BorrowedTextAndReferenceSlots) {
  Variant copy;
  {
    std::string text = "lent";
    Variant lent = Variant::borrow(text);
    copy = lent;
    text = "changed";
  }
  EXPECT_EQ(copy.toString(), "lent");

  Variant target = int16_t{1};
  Variant slot = Variant::byRef(target);
  EXPECT_EQ(slot.type(), VarType::Integer);
  EXPECT_EQ(slot.slotType(), VarType::ByRef);
  slot.deref() = "two";
  EXPECT_EQ(target.toString(), "two");
  EXPECT_EQ(slot.toString(), "two");
}

TEST(VariantTest, NumberFormatting) {
  EXPECT_EQ(formatNumber(-3), "-3");
  EXPECT_EQ(formatNumber(0.1), "0.1");
  EXPECT_EQ(formatNumber(-0.0), "0");
  EXPECT_EQ(Variant(1.5).toString(), "1.5");
}

}  // namespace
}  // namespace QuillFormatAPA

namespace QuillFormatAPA {
namespace {

// The platform's date test, as retrieval statements use it. Catches days
// and months that do not exist, and texts that merely hold figures.
TEST(VariantTest, DatesAreDaysThatExist) {
  for (const char* date : {"May 5, 2010", "5 May 2010", "2010, May 5", "Jan. 31, 2009", "December 2009",
                           "5/31/2008", "31/5/2008", "2008-05-31", "February 29, 2008", "February 29"})
    EXPECT_TRUE(isDate(date)) << date;
  for (const char* no : {"31/31/2008", "13/13/2008", "February 30, 2008", "February 29, 2009", "April 31, 2010",
                         "May 5, 2010, 2011", "2008", "May", "5/5", "10.1037/a0012345", "1 2 3 4", "Mayday 5, 2010"})
    EXPECT_FALSE(isDate(no)) << no;
}

}  // namespace
}  // namespace QuillFormatAPA
