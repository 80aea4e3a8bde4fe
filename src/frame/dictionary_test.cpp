#include "frame/dictionary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"

namespace tovik {
namespace {

std::vector<std::string> KeyTexts(const Dictionary& d) {
  std::vector<std::string> out;
  SafeArray keys = d.Keys();
  for (const Variant& k : keys.Items()) out.push_back(CStr(k));
  return out;
}

void ExpectError(const std::function<void()>& statement, int32_t number,
                 const std::string& description) {
  try {
    statement();
    ADD_FAILURE() << "no error, expected " << number;
  } catch (const AutomationError& e) {
    EXPECT_EQ(e.Number(), number);
    EXPECT_EQ(e.Description(), description);
  }
}

TEST(Dictionary, KeepsInsertionOrderThroughRemoveAndRename) {
  Dictionary d;
  d.Add(Variant("c"), Variant(int32_t{1}));
  d.Add(Variant("a"), Variant(int32_t{2}));
  d.Add(Variant("b"), Variant(int32_t{3}));
  d.Remove(Variant("a"));
  d.Add(Variant("a"), Variant(int32_t{4}));
  d.Rename(Variant("c"), Variant("z"));
  EXPECT_EQ(KeyTexts(d), (std::vector<std::string>{"z", "b", "a"}));
  // The renamed key keeps its item and position; the old key is gone.
  EXPECT_EQ(CLng(d.ItemAt(0)), 1);
  EXPECT_FALSE(d.Exists(Variant("c")));
  EXPECT_EQ(CLng(d.Item(Variant("a"))), 4);
  SafeArray items = d.Items();
  EXPECT_EQ(items.LBound(), 0);
  EXPECT_EQ(items.UBound(), 2);
  EXPECT_EQ(CLng(items.At(1)), 3);
}

TEST(Dictionary, ReadingAMissingKeyAddsItWithEmpty) {
  Dictionary d;
  d.Add(Variant("x"), Variant(1.0));
  Variant read = d.Item(Variant("ghost"));
  EXPECT_TRUE(read.IsEmpty());
  EXPECT_EQ(d.Count(), 2);
  EXPECT_TRUE(d.Exists(Variant("ghost")));
  // Exists itself never adds.
  EXPECT_FALSE(d.Exists(Variant("other")));
  EXPECT_EQ(d.Count(), 2);
}

TEST(Dictionary, KeyIdentityAcrossTypes) {
  auto obj1 = std::make_shared<Dictionary>();
  auto obj2 = std::make_shared<Dictionary>();
  struct Case {
    const char* what;
    Variant first;
    Variant second;
    bool same_key;
  };
  const Case cases[] = {
      {"Integer 1 and Double 1", Variant(int16_t{1}), Variant(1.0), true},
      {"Long 1 and Boolean True differ", Variant(int32_t{1}), Variant(true), false},
      {"True is -1", Variant(true), Variant(int32_t{-1}), true},
      {"1 and \"1\" differ", Variant(int32_t{1}), Variant("1"), false},
      {"case matters in binary mode", Variant("Abc"), Variant("aBC"), false},
      {"one object twice", Variant(ObjectRef(obj1)), Variant(ObjectRef(obj1)), true},
      {"two objects", Variant(ObjectRef(obj1)), Variant(ObjectRef(obj2)), false},
      {"Empty and \"\" differ", Variant(), Variant(""), false},
      {"0 and -0", Variant(0.0), Variant(-0.0), true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Dictionary d;
    d.Add(c.first, Variant("first"));
    EXPECT_EQ(d.Exists(c.second), c.same_key);
  }
}

TEST(Dictionary, TextCompareFoldsCaseBeyondAscii) {
  Dictionary d;
  d.SetCompareMode(Dictionary::kTextCompare);
  d.Add(Variant("\xD0\x81\xD0\xBB\xD0\xBA\xD0\xB0"), Variant(1.0));  // "Ёлка"
  EXPECT_TRUE(d.Exists(Variant("\xD1\x91\xD0\x9B\xD0\x9A\xD0\x90")));  // "ёЛКА"
  EXPECT_TRUE(d.Exists(Variant("\xD0\x81\xD0\x9B\xD0\x9A\xD0\x90")));
  // The key keeps the spelling it was added with.
  EXPECT_EQ(CStr(d.KeyAt(0)), "\xD0\x81\xD0\xBB\xD0\xBA\xD0\xB0");
  ExpectError([&] { d.Add(Variant("\xD1\x91\xD0\xBB\xD0\xBA\xD0\xB0"), Variant(2.0)); },
              457, "This key is already associated with an element of this collection");
}

TEST(Dictionary, ErrorsOfTheScriptingRuntime) {
  Dictionary d;
  d.Add(Variant("a"), Variant(1.0));
  d.Add(Variant("b"), Variant(2.0));
  ExpectError([&] { d.Add(Variant("a"), Variant(3.0)); }, 457,
              "This key is already associated with an element of this collection");
  ExpectError([&] { d.Remove(Variant("zz")); }, 32811, "Element not found");
  ExpectError([&] { d.Rename(Variant("zz"), Variant("y")); }, 32811, "Element not found");
  ExpectError([&] { d.Rename(Variant("a"), Variant("b")); }, 457,
              "This key is already associated with an element of this collection");
  // CompareMode can change only while the dictionary is empty.
  ExpectError([&] { d.SetCompareMode(Dictionary::kTextCompare); }, 5,
              "Invalid procedure call or argument");
  ExpectError([&] { d.Add(Variant(SafeArray::OfDoubles({1})), Variant()); }, 13,
              "Type mismatch");
  d.RemoveAll();
  d.SetCompareMode(Dictionary::kTextCompare);
  EXPECT_EQ(d.CompareMode(), 1);
}

// Random Add, Remove, Rename and keyed reads in text compare mode, checked
// step by step against a plain vector of (key, value) in insertion order.
TEST(Dictionary, RandomStepsMatchAnOrderedVectorModel) {
  std::mt19937 random(20240611);
  const char* keys[] = {"a", "B", "c", "D", "e", "A", "b", "C"};  // case pairs
  auto same = [](const std::string& x, const std::string& y) {
    return x.size() == y.size() &&
           std::equal(x.begin(), x.end(), y.begin(),
                      [](char p, char q) { return std::tolower(p) == std::tolower(q); });
  };
  Dictionary d;
  d.SetCompareMode(Dictionary::kTextCompare);
  std::vector<std::pair<std::string, int>> model;
  auto find = [&](const std::string& k) {
    return std::find_if(model.begin(), model.end(),
                        [&](const auto& e) { return same(e.first, k); });
  };
  for (int step = 0; step < 2000; ++step) {
    std::string k = keys[random() % 8];
    std::string k2 = keys[random() % 8];
    int op = static_cast<int>(random() % 5);
    SCOPED_TRACE("step " + std::to_string(step) + " op " + std::to_string(op) + " " + k);
    bool present = find(k) != model.end();
    try {
      switch (op) {
        case 0:
          d.Add(Variant(k), Variant(int32_t{step}));
          ASSERT_FALSE(present);
          model.emplace_back(k, step);
          break;
        case 1:
          d.Remove(Variant(k));
          ASSERT_TRUE(present);
          model.erase(find(k));
          break;
        case 2: {
          Variant v = d.Item(Variant(k));
          if (present) {
            ASSERT_EQ(CLng(v), find(k)->second);
          } else {
            ASSERT_TRUE(v.IsEmpty());
            model.emplace_back(k, 0);  // the read added it, Empty reads as 0
          }
          break;
        }
        case 3:
          d.Rename(Variant(k), Variant(k2));
          ASSERT_TRUE(present);
          ASSERT_TRUE(find(k2) == model.end() || same(k, k2));
          find(k)->first = k2;
          break;
        case 4: {  // one pass removing every key that folds to k's letter
          auto doomed = [&](const std::string& x) { return std::tolower(x[0]) == std::tolower(k[0]); };
          int32_t removed = d.RemoveWhere([&](const Variant& key, const Variant&) { return doomed(CStr(key)); });
          ASSERT_EQ(removed, static_cast<int32_t>(std::erase_if(model, [&](const auto& e) { return doomed(e.first); })));
          break;
        }
      }
    } catch (const AutomationError& e) {
      // The only failures: a duplicate (Add, Rename onto another key) or a
      // missing key (Remove, Rename).
      bool duplicate = e.Number() == 457;
      bool missing = e.Number() == 32811;
      ASSERT_TRUE((duplicate && (op == 0 ? present : find(k2) != model.end())) ||
                  (missing && !present));
    }
    ASSERT_EQ(d.Count(), static_cast<int32_t>(model.size()));
    for (size_t i = 0; i < model.size(); ++i) {
      ASSERT_EQ(CStr(d.KeyAt(static_cast<int32_t>(i))), model[i].first);
    }
  }
}

TEST(Dictionary, ThroughTheDispatchInterface) {
  ObjectRef d = std::make_shared<Dictionary>();
  EXPECT_EQ(TypeName(Variant(d)), "Dictionary");
  LetProperty(d, "CompareMode", Variant(int32_t{1}));
  CallMethod(d, "Add", {Variant("Key1"), Variant(10.0)});
  // Item is the default member: d("KEY1").
  Variant key("KEY1");
  EXPECT_EQ(CDbl(d->Invoke(kDispIdValue, InvokeKind::kPropertyGet,
                           std::span<Variant>(&key, 1))),
            10.0);
  LetProperty(d, "Item", Variant(20.0), {Variant("key2")});
  LetProperty(d, "Key", Variant("renamed"), {Variant("key1")});
  EXPECT_EQ(CLng(GetProperty(d, "Count")), 2);
  EXPECT_TRUE(CBool(CallMethod(d, "Exists", {Variant("RENAMED")})));
  std::vector<Variant> keys = ForEach(d);  // For Each walks keys
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_EQ(CStr(keys[0]), "renamed");
  EXPECT_EQ(CStr(keys[1]), "key2");
  Variant items = CallMethod(d, "Items");
  EXPECT_EQ(TypeName(items), "Variant()");
  EXPECT_EQ(CDbl(items.Array().At(1)), 20.0);
  CallMethod(d, "Remove", {Variant("Renamed")});
  CallMethod(d, "RemoveAll");
  EXPECT_EQ(CLng(GetProperty(d, "Count")), 0);
}

}  // namespace
}  // namespace tovik
