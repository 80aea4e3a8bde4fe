#include "frame/collection.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"

namespace tovik {
namespace {

std::string Joined(Collection& c) {
  std::string out;
  for (const Variant& v : c.Enumerate()) out += CStr(v);
  return out;
}

TEST(Collection, BeforeAndAfterPlaceItemsByIndexOrKey) {
  const Variant none = Variant::Missing();
  Collection c;
  c.Add(Variant("a"), Variant("ka"));
  c.Add(Variant("e"), Variant("ke"));
  c.Add(Variant("c"), none, Variant(int32_t{2}));      // before item 2 ("e")
  c.Add(Variant("b"), none, none, Variant("KA"));      // after key "ka", any case
  c.Add(Variant("d"), none, Variant("kE"));            // before key "ke"
  EXPECT_EQ(Joined(c), "abcde");
  // After the last item appends.
  c.Add(Variant("f"), none, none, Variant(int32_t{5}));
  EXPECT_EQ(Joined(c), "abcdef");
}

TEST(Collection, ItemIsOneBasedAndKeysIgnoreCase) {
  Collection c;
  c.Add(Variant(10.0), Variant("Ten"));
  c.Add(Variant(20.0));
  c.Add(Variant(30.0), Variant("\xD0\x9B\xD0\xB8\xD1\x81\xD1\x82"));  // "Лист"
  EXPECT_EQ(CDbl(c.Item(Variant(int16_t{1}))), 10.0);
  EXPECT_EQ(CDbl(c.Item(Variant(3.0))), 30.0);
  EXPECT_EQ(CDbl(c.Item(Variant("TEN"))), 10.0);
  EXPECT_EQ(CDbl(c.Item(Variant("\xD0\xBB\xD0\x98\xD0\xA1\xD0\xA2"))), 30.0);  // "лИСТ"
  c.Remove(Variant("ten"));
  EXPECT_EQ(c.Count(), 2);
  EXPECT_EQ(CDbl(c.Item(Variant(int32_t{1}))), 20.0);
  // A removed key can be used again.
  c.Add(Variant(40.0), Variant("ten"));
  EXPECT_EQ(CDbl(c.Item(Variant("Ten"))), 40.0);
}

TEST(Collection, ErrorsOfTheRuntime) {
  const Variant none = Variant::Missing();
  Collection c;
  c.Add(Variant("a"), Variant("k"));
  c.Add(Variant("b"));
  struct Case {
    const char* what;
    std::function<void()> statement;
    int32_t number;
    const char* description;
  };
  const Case cases[] = {
      {"duplicate key, other case", [&] { c.Add(Variant("x"), Variant("K")); }, 457,
       "This key is already associated with an element of this collection"},
      // Positions run 1..Count: 0 and Count + 1 are out.
      {"index 0", [&] { c.Item(Variant(int32_t{0})); }, 9, "Subscript out of range"},
      {"index Count + 1", [&] { c.Item(Variant(int32_t{3})); }, 9, "Subscript out of range"},
      {"unknown key", [&] { c.Item(Variant("nope")); }, 5,
       "Invalid procedure call or argument"},
      {"remove unknown key", [&] { c.Remove(Variant("nope")); }, 5,
       "Invalid procedure call or argument"},
      {"remove index 3", [&] { c.Remove(Variant(int32_t{3})); }, 9, "Subscript out of range"},
      {"before and after both", [&] {
         c.Add(Variant("x"), none, Variant(int32_t{1}), Variant(int32_t{1}));
       }, 5, "Invalid procedure call or argument"},
      {"before an unknown key", [&] { c.Add(Variant("x"), none, Variant("nope")); }, 5,
       "Invalid procedure call or argument"},
      {"a key that is no String", [&] { c.Add(Variant("x"), Variant(int32_t{7})); }, 13,
       "Type mismatch"},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.what);
    try {
      k.statement();
      ADD_FAILURE() << "no error";
    } catch (const AutomationError& e) {
      EXPECT_EQ(e.Number(), k.number);
      EXPECT_EQ(e.Description(), k.description);
    }
  }
  // No failed call changed the collection.
  EXPECT_EQ(Joined(c), "ab");
}

TEST(Collection, ThroughTheDispatchInterface) {
  ObjectRef c = std::make_shared<Collection>();
  EXPECT_EQ(TypeName(Variant(c)), "Collection");
  CallMethod(c, "Add", {Variant("first"), Variant("one")});
  CallMethod(c, "Add", {Variant("zeroth"), Variant::Missing(), Variant("ONE")});
  EXPECT_EQ(CLng(GetProperty(c, "Count")), 2);
  Variant index(int32_t{1});
  EXPECT_EQ(CStr(c->Invoke(kDispIdValue, InvokeKind::kMethod, std::span<Variant>(&index, 1))),
            "zeroth");
  std::vector<Variant> items = ForEach(c);
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(CStr(items[1]), "first");
  CallMethod(c, "Remove", {Variant(int32_t{1})});
  EXPECT_EQ(CStr(CallMethod(c, "Item", {Variant("one")})), "first");
}

}  // namespace
}  // namespace tovik
