// Collection: positions from 1, keys ignoring case, and the errors for duplicate keys, bad
// positions and unknown keys.
#include "korvex/runtime/Collection.h"
#include "korvex/runtime/Error.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace korvex {
namespace {

TEST(Collection, PositionsKeysAndInsertion)
{
    Collection c;
    c.Add("first", "One");
    c.Add("third");
    c.Add("second", "Two", {}, 1);  // after position 1
    c.Add("zeroth", {}, "one");      // before the item keyed "One", ignoring case
    EXPECT_EQ(c.Count(), 4);
    EXPECT_EQ(c.Items(), (QList<Variant>{"zeroth", "first", "second", "third"}));
    EXPECT_EQ(c.Item(1), Variant("zeroth"));
    EXPECT_EQ(c.Item("TWO"), Variant("second"));
    EXPECT_EQ(c.Item(Variant(std::int16_t{4})), Variant("third")) << "any whole-number type is a position";
    EXPECT_EQ(c.Item(2.6), Variant("second")) << "a fractional position is rounded";

    c.Remove("one");
    EXPECT_EQ(c.Items(), (QList<Variant>{"zeroth", "second", "third"}));
    EXPECT_FALSE(c.Contains("One")) << "a removed item's key is free again";
    c.Add("again", "ONE");
    EXPECT_EQ(c.Item("one"), Variant("again"));
    c.Remove(1);
    EXPECT_EQ(c.Item(1), Variant("second"));
}

TEST(Collection, ErrorsAreTheLanguagesOwn)
{
    Collection c;
    c.Add(1, "k");
    c.Add(2, "");  // an empty text is a key like any other
    EXPECT_EQ(test::ErrorOf([&] { c.Add(3, "K"); }), vbErrDuplicateKey);
    EXPECT_EQ(test::ErrorOf([&] { c.Add(3, ""); }), vbErrDuplicateKey);
    EXPECT_EQ(test::ErrorOf([&] { c.Add(3, 7); }), vbErrTypeMismatch) << "a key must be text";
    EXPECT_EQ(test::ErrorOf([&] { c.Add(3, {}, 1, 1); }), vbErrInvalidProcedureCall) << "before and after together";
    EXPECT_EQ(test::ErrorOf([&] { c.Item(0); }), vbErrSubscriptOutOfRange);
    EXPECT_EQ(test::ErrorOf([&] { c.Item(3); }), vbErrSubscriptOutOfRange);
    EXPECT_EQ(test::ErrorOf([&] { c.Item("nope"); }), vbErrInvalidProcedureCall);
    EXPECT_EQ(test::ErrorOf([&] { c.Remove("nope"); }), vbErrInvalidProcedureCall);
    EXPECT_EQ(test::ErrorOf([&] { c.Add(3, {}, 9); }), vbErrSubscriptOutOfRange);
    EXPECT_EQ(c.Count(), 2) << "failed calls leave the collection as it was";
}

}  // namespace
}  // namespace korvex
