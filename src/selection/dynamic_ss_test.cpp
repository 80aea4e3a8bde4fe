// DynamicSS membership on a real drawing: a randomised run against a plain
// ordered-list model, then the rules a model cannot state (containers,
// attribute links, errors through dispatch).
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "frame/collection.h"
#include "frame/conversions.h"
#include "frame/library_errors.h"
#include "host/entities/entity.h"
#include "selection/dynamic_ss.h"
#include "tests/support/errors.h"
#include "tests/support/host_fixture.h"

namespace tovik {
namespace {

class Membership : public LinkedHostTest {
 protected:
  void SetUp() override {
    LinkedHostTest::SetUp();
    set = DynamicSS::Create();
  }
  static Variant List(std::initializer_list<Variant> items) { return Variant(SafeArray::Of(items)); }
  static std::string Handle(const Variant& e) { return CStr(GetProperty(e.Object(), "Handle")); }
  std::vector<std::string> Keys() {
    std::vector<std::string> keys;
    SafeArray table_keys = set->EntityTable()->Keys();
    for (const Variant& k : table_keys.Items()) keys.push_back(CStr(k));
    return keys;
  }
  void Put(std::initializer_list<Variant> items) { CallMethod(set, "Add", {List(items)}); }
  std::shared_ptr<DynamicSS> set;
};

TEST_F(Membership, RandomStepsAgreeWithAnOrderedListModel) {
  std::vector<Variant> pool;
  for (int i = 0; i < 24; ++i) pool.emplace_back(Line(i, 0, i, 1));
  std::vector<std::string> model;  // the keys, in order
  std::set<std::string> dead;      // erased entities and unknown handles read
  std::mt19937 rng(7);
  auto has = [&](const std::string& h) { return std::ranges::find(model, h) != model.end(); };
  for (int step = 0; step < 3000; ++step) {
    const Variant& e = pool[rng() % pool.size()];
    const Variant& f = pool[rng() % pool.size()];
    const std::string h = Handle(e), g = Handle(f);
    const bool live = !dead.contains(h) && !dead.contains(g);
    const unsigned kind = rng() % 8;
    switch (kind) {
      case 0:
      case 1:  // a nested array and a repeat: each added once, in order
        if (!live) break;
        Put({e, List({f, e})});
        for (const std::string& x : {h, g}) {
          if (!has(x)) model.push_back(x);
        }
        break;
      case 2:
        if (!live) break;
        CallMethod(set, "Remove", {List({e})});
        std::erase(model, h);
        break;
      case 3:
        if (!live || !has(h) || has(g)) break;
        CallMethod(set, "Replace", {e, f});
        *std::ranges::find(model, h) = g;
        break;
      case 4:
        if (model.empty()) break;
        if (size_t i = rng() % model.size(); !dead.contains(model[i])) {
          EXPECT_EQ(Handle(GetProperty(set, "Item", {Variant(int32_t(i))})), model[i]);
        }
        break;
      case 5: {  // a keyed read of an unknown handle leaves an empty key
        std::string unknown = "F" + std::to_string(step);
        EXPECT_EQ(ErrorOf([&] { GetProperty(set, "Item", {Variant(unknown)}); }).Number(), 2411);
        if (!has(unknown)) model.push_back(unknown);
        dead.insert(unknown);
        break;
      }
      case 6:  // erased in the drawing: a dead entry until Clean
        if (!live || rng() % 3 != 0) break;
        CallMethod(e.Object(), "Delete");
        dead.insert(h);
        break;
      case 7:
        CallMethod(set, "Clean");
        std::erase_if(model, [&](const std::string& x) { return dead.contains(x); });
        if (rng() % 2) set = ObjectAs<DynamicSS>(CallMethod(set, "Copy", {Variant(true)}));
        break;
    }
    ASSERT_EQ(Keys(), model) << "step " << step << " kind " << kind;
    ASSERT_EQ(CLng(GetProperty(set, "Count")), static_cast<int32_t>(model.size()));
  }
}

TEST_F(Membership, ContainersAddEveryMemberAndSkipWhatIsThere) {
  Variant a(Line(0, 0, 1, 0)), b(Line(0, 1, 1, 1));
  ObjectRef block = AddBlock("B");
  CallMethod(block, "AddCircle", {Pt(0, 0), Variant(1.0)});
  ObjectRef group = CallMethod(GetProperty(doc, "Groups").Object(), "Add", {Variant("G")}).Object();
  CallMethod(group, "AppendItems", {List({b, a})});
  SafeArray from_one(VarType::kVariant, 1, 2);
  from_one.Set(1, a);
  struct Case {
    const char* what;
    Variant objects;
    int32_t count;
  } cases[] = {
      {"a group, in its order", List({Variant(group)}), 2},
      {"model space", List({Variant(ms)}), 2},
      {"a block definition", List({Variant(block)}), 1},
      {"a nested array read from index 0", List({List({a, b, a})}), 2},
      {"a nested array from 1 gives nothing", List({Variant(from_one)}), 0},
  };
  for (const Case& c : cases) {
    CallMethod(set, "Clear");
    CallMethod(set, "Add", {c.objects});
    EXPECT_EQ(CLng(GetProperty(set, "Count")), c.count) << c.what;
  }
  // The set itself and a copy of it add nothing new; a 1-based Collection
  // fails at its index 0.
  CallMethod(set, "Clear");
  Put({b, a});
  Put({Variant(ObjectRef(set)), Variant(CallMethod(set, "Copy", {Variant(true)}))});
  EXPECT_EQ(Keys(), (std::vector<std::string>{Handle(b), Handle(a)}));
  auto collection = std::make_shared<Collection>();
  collection->Add(a);
  EXPECT_EQ(ErrorOf([&] { Put({Variant(ObjectRef(collection))}); }).Number(), 9);
  // Copy() without NoEntityCopy makes new entities in the same order.
  auto copy = ObjectAs<DynamicSS>(CallMethod(set, "Copy"));
  ASSERT_EQ(copy->size(), 2);
  EXPECT_NE(Handle(copy->At(0)), Handle(b));
  EXPECT_EQ(CLng(GetProperty(ms, "Count")), 4);
}

TEST_F(Membership, ItemErrorsThroughDispatch) {
  ExpectError([&] { GetProperty(set, "Item", {Variant(int32_t{0})}); }, 9, "Subscript out of range",
              "Tovik_AutoCad_Pro");
  ExpectError([&] { CallMethod(set, "Item", {Variant("ABC")}); }, 2411,
              std::string(kInvalidDictionaryIndex));
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 1);  // the empty key stays until Clean
  CallMethod(set, "Clean");
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 0);
  Variant a(Line(0, 0, 1, 0)), b(Line(0, 1, 1, 1));
  Put({a});
  EXPECT_EQ(ErrorOf([&] { CallMethod(set, "Replace", {b, a}); }).Number(), 32811);
  Put({b});
  EXPECT_EQ(ErrorOf([&] { CallMethod(set, "Replace", {b, a}); }).Number(), 457);
  EXPECT_EQ(Keys(), (std::vector<std::string>{Handle(a), Handle(b)}));
  LetProperty(set, "Document", Variant(doc));  // even the same document empties the set
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 0);
  // Count is an Integer: one entry past 32,767 overflows.
  for (int32_t i = 0; i <= 32767; ++i) set->EntityTable()->Add(Variant(std::to_string(i) + "K"), Variant());
  ExpectError([&] { GetProperty(set, "Count"); }, 6, "Overflow", "Tovik_AutoCad_Pro");
}

TEST_F(Membership, AttributeReferencesLinkToTheirBlockReference) {
  ObjectRef block = AddBlock("TAG");
  for (const char* tag : {"A", "B"}) {
    CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{0}), Variant(""), Pt(0, 0),
                                       Variant(tag), Variant("v")});
  }
  ObjectRef ref = Insert(ms, "TAG", {5, 5, 0});
  Variant atts = CallMethod(ref, "GetAttributes");
  Variant att = atts.Array().At(0);
  Put({att, atts.Array().At(1)});
  EXPECT_FALSE(CBool(CallMethod(set, "IsInCollection", {Variant(ref)})));
  EXPECT_TRUE(CBool(CallMethod(set, "IsInCollection", {Variant(ref), Variant(true)})));
  Variant converted = CallMethod(set, "ToArray", {Variant(true)});
  ASSERT_EQ(converted.Array().Count(), 2);
  for (const Variant& e : converted.Array().Items()) EXPECT_TRUE(SameObject(e.Object(), ref));
  CallMethod(set, "Clear");
  Put({Variant(ref)});
  EXPECT_TRUE(CBool(CallMethod(set, "IsInCollection", {att, Variant(true)})));
  CallMethod(set, "Clear");
  EXPECT_TRUE(CallMethod(set, "ToArray").IsEmpty());
}

TEST_F(Membership, LockedLayersAndTypeNamesAreFilteredOut) {
  ObjectRef layer = CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant("LOCKED")}).Object();
  std::vector<Variant> lines;
  for (int i = 0; i < 4; ++i) lines.emplace_back(Line(i, 0, i, 1));
  for (int i = 0; i < 3; ++i) LetProperty(lines[i].Object(), "Layer", Variant("LOCKED"));
  Variant text = CallMethod(ms, "AddText", {Variant("t"), Pt(0, 0), Variant(1.0)});
  Put({lines[0], lines[1], lines[2], lines[3], text});
  CallMethod(set, "RemoveLockedEnts");
  EXPECT_EQ(document().command_log(), "");
  LetProperty(layer, "Lock", Variant(true));
  CallMethod(set, "RemoveLockedEnts");
  EXPECT_EQ(document().command_log(), "\r\n3 object(s) on locked layer removed.");
  EXPECT_EQ(Keys(), (std::vector<std::string>{Handle(lines[3]), Handle(text)}));
  CallMethod(set, "RemoveTypeName", {Variant("iacadline")});  // case-sensitive: nothing
  EXPECT_EQ(CLng(GetProperty(set, "Count")), 2);
  CallMethod(set, "RemoveTypeName", {Variant("IAcad[LP]ine")});
  EXPECT_EQ(Keys(), (std::vector<std::string>{Handle(text)}));
  std::vector<Variant> walked = ForEach(set);
  ASSERT_EQ(walked.size(), 1u);
  EXPECT_TRUE(SameObject(walked[0].Object(), text.Object()));
}

}  // namespace
}  // namespace tovik
