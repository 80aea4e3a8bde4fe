#include "frame/dispatch.h"

#include <gtest/gtest.h>

#include "tests/support/errors.h"
#include "tests/support/properties.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/member_table.h"

namespace tovik {
namespace {

// A small automation class: a named list of numbers with a default member,
// an out argument and an event.
class NumberList : public DispatchObject<NumberList> {
 public:
  std::string_view TypeName() const override { return "NumberList"; }
  static const MemberTable<NumberList>& Members() {
    static const MemberTable<NumberList> table = [] {
      MemberTable<NumberList> t;
      t.Property(
          "Name", [](NumberList& s, CallArgs&) { return Variant(s.name_); },
          [](NumberList& s, CallArgs&, Variant& v) { s.name_ = CStr(v); });
      t.Property("Count", [](NumberList& s, CallArgs&) {
        return Variant(static_cast<int32_t>(s.items_.size()));
      });
      t.Property(
          "Item",
          [](NumberList& s, CallArgs& a) {
            int32_t i = CLng(a[0]);
            if (i < 0 || i >= static_cast<int32_t>(s.items_.size())) {
              throw errors::SubscriptOutOfRange();
            }
            return Variant(s.items_[static_cast<size_t>(i)]);
          },
          nullptr, nullptr, 1, 1);
      t.Default("Item");
      t.Method(
          "Add",
          [](NumberList& s, CallArgs& a) {
            s.items_.push_back(a.Has(0) ? CDbl(a[0]) : 0.0);
            Variant count(static_cast<int32_t>(s.items_.size()));
            s.events_.Raise("Added", std::span<Variant>(&count, 1));
            return Variant();
          },
          0, 1);
      // Writes the sum into its by-reference argument.
      t.Method(
          "Sum",
          [](NumberList& s, CallArgs& a) {
            double sum = 0;
            for (double d : s.items_) sum += d;
            a[0] = Variant(sum);
            return Variant(true);
          },
          1, 1);
      // SumInto([Scale][, Out]): writes the sum into Out first, then reads
      // Scale (1 when omitted) and returns the scaled sum.
      t.Method(
          "SumInto",
          [](NumberList& s, CallArgs& a) {
            Variant& scale = a[0];
            Variant& out = a[1];
            double sum = 0;
            for (double d : s.items_) sum += d;
            out = Variant(sum);
            return Variant(sum * (scale.IsMissing() ? 1.0 : CDbl(scale)));
          },
          0, 2);
      // A member with a Cyrillic name, found case-insensitively.
      t.Property("Длина", [](NumberList& s, CallArgs&) {
        return Variant(static_cast<int32_t>(s.items_.size()));
      });
      return t;
    }();
    return table;
  }
  std::vector<Variant> Enumerate() override {
    std::vector<Variant> out;
    for (double d : items_) out.emplace_back(d);
    return out;
  }
  EventSource* Events() override { return &events_; }

 private:
  std::string name_;
  std::vector<double> items_;
  EventSource events_;
};

class Recorder : public EventSink {
 public:
  void OnEvent(std::string_view event, std::span<Variant> args) override {
    log.push_back(std::string(event) + ":" + CStr(args[0]));
  }
  std::vector<std::string> log;
};

TEST(Dispatch, MembersAreFoundByNameInAnyCase) {
  ObjectRef list = std::make_shared<NumberList>();
  LetProperty(list, "name", Variant("Heights"));
  EXPECT_EQ(CStr(GetProperty(list, "NAME")), "Heights");
  CallMethod(list, "ADD", {Variant(2.0)});
  ExpectProperties(list, {{"длина", 1}, {"ДЛИНА", 1}});
  EXPECT_EQ(TypeName(Variant(list)), "NumberList");
}

// Member names folded eight bytes at a time: around the letters' edges
// ('@' and '`', '[' and '{' differ from letters by the case bit), across
// word boundaries, beyond the short-name buffer, and outside ASCII.
TEST(Dispatch, MemberNamesFoldOnlyLetters) {
  struct Index : MemberIndex {
    using MemberIndex::Add;
  } index;
  const std::string long_name(60, 'Q');
  const std::vector<std::string> names = {"A", "Zed", "AttRef_Get", "GetDynamicBlockProperties",
                                          "X@[Z", long_name, "Длина", "ÉtatCivil"};
  for (const std::string& name : names) index.Add(name);
  EXPECT_EQ(index.Add("zed"), static_cast<DispId>(names.size() + 1));  // a new id...
  EXPECT_EQ(index.Find("ZED"), 2);                                      // ...the first kept
  const struct {
    std::string query;
    DispId id;
  } cases[] = {
      {"a", 1}, {"zED", 2}, {"ATTREF_GET", 3}, {"getdynamicblockPROPERTIES", 4}, {"x@[z", 5},
      {std::string(60, 'q'), 6}, {"ДЛИНА", 7}, {"étatcivil", 8},
      {"X`[Z", kDispIdUnknown}, {"X@{Z", kDispIdUnknown}, {"GetDynamicBlockPropertie", kDispIdUnknown},
      {std::string(59, 'q'), kDispIdUnknown}, {"", kDispIdUnknown}, {"Ze", kDispIdUnknown},
  };
  for (const auto& c : cases) EXPECT_EQ(index.Find(c.query), c.id) << c.query;
  // The table grows and keeps every name.
  for (int i = 0; i < 300; ++i) index.Add("Member" + std::to_string(i));
  for (int i = 0; i < 300; ++i) {
    EXPECT_EQ(index.Find("MEMBER" + std::to_string(i)), static_cast<DispId>(names.size() + 2 + i));
  }
}

TEST(Dispatch, CallFailuresUseTheRuntimeNumbers) {
  ObjectRef list = std::make_shared<NumberList>();
  EXPECT_EQ(ErrorOf([&] { GetProperty(list, "Nope"); }).Number(), kErrNotSupported);
  // Count is read-only: assigning it is not supported.
  EXPECT_EQ(ErrorOf([&] { LetProperty(list, "Count", Variant(int32_t{3})); }).Number(),
            kErrNotSupported);
  EXPECT_EQ(ErrorOf([&] { CallMethod(list, "Add", {Variant(1.0), Variant(2.0)}); }).Number(),
            kErrWrongArgCount);
  EXPECT_EQ(ErrorOf([&] { CallMethod(list, "Sum"); }).Number(), kErrArgNotOptional);
  EXPECT_EQ(ErrorOf([&] { GetProperty(ObjectRef(), "Name"); }).Number(), kErrObjectNotSet);
}

TEST(Dispatch, OmittedOptionalArgumentsReadAsMissing) {
  ObjectRef list = std::make_shared<NumberList>();
  CallMethod(list, "Add");
  CallMethod(list, "Add", {Variant::Missing()});
  EXPECT_EQ(CLng(GetProperty(list, "Count")), 2);
  EXPECT_EQ(CDbl(GetProperty(list, "Item", {Variant(int16_t{1})})), 0.0);
  // Each omitted argument is a Missing of its own: writing the omitted Out
  // leaves the omitted Scale Missing.
  CallMethod(list, "Add", {Variant(3.0)});
  EXPECT_EQ(CDbl(CallMethod(list, "SumInto")), 3.0);
}

TEST(Dispatch, ByReferenceArgumentsAreWrittenBack) {
  ObjectRef list = std::make_shared<NumberList>();
  CallMethod(list, "Add", {Variant(1.5)});
  CallMethod(list, "Add", {Variant(2.0)});
  Variant sum;
  CallMethodRef(list, "Sum", std::span<Variant>(&sum, 1));
  EXPECT_EQ(TypeName(sum), "Double");
  EXPECT_EQ(CDbl(sum), 3.5);
}

TEST(Dispatch, DefaultMemberAndEnumeration) {
  auto list = std::make_shared<NumberList>();
  CallMethod(list, "Add", {Variant(4.0)});
  CallMethod(list, "Add", {Variant(5.0)});
  Variant index(int16_t{1});
  EXPECT_EQ(CDbl(list->Invoke(kDispIdValue, InvokeKind::kPropertyGet,
                              std::span<Variant>(&index, 1))),
            5.0);
  std::vector<Variant> items = ForEach(list);
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(CDbl(items[0]), 4.0);
  // A Variant holding the object converts through its default member, which
  // here needs an argument.
  EXPECT_EQ(ErrorOf([&] { CDbl(Variant(ObjectRef(list))); }).Number(), kErrArgNotOptional);
}

TEST(Dispatch, EventsReachConnectedSinksWhileTheyLive) {
  auto list = std::make_shared<NumberList>();
  auto recorder = std::make_shared<Recorder>();
  list->Events()->Connect(recorder);
  CallMethod(list, "Add", {Variant(1.0)});
  {
    auto second = std::make_shared<Recorder>();
    list->Events()->Connect(second);
    CallMethod(list, "Add", {Variant(1.0)});
    EXPECT_EQ(second->log.size(), 1u);
  }
  CallMethod(list, "Add", {Variant(1.0)});  // the second sink is gone
  EXPECT_EQ(recorder->log, (std::vector<std::string>{"Added:1", "Added:2", "Added:3"}));
  EXPECT_EQ(list->Events()->SinkCount(), 1);
}

TEST(ErrorTrap, ResumeNextSkipsFailingStatementsAndKeepsTheirTargets) {
  ObjectRef list = std::make_shared<NumberList>();
  std::string name = "unchanged";
  int32_t count = -1;
  ResumeNext trap;
  trap([&] { name = CStr(GetProperty(list, "NoSuchMember")); });
  trap([&] { count = CLng(GetProperty(list, "Count")); });
  EXPECT_EQ(name, "unchanged");
  EXPECT_EQ(count, 0);
  EXPECT_EQ(trap.Number(), kErrNotSupported);
  trap.Clear();
  EXPECT_EQ(trap.Number(), 0);
}

TEST(ErrorTrap, CleanupRunsOnlyOnFailure) {
  int restored = 0;
  EXPECT_TRUE(OnErrorGoTo([] {}, [&](const AutomationError&) { ++restored; }));
  EXPECT_FALSE(OnErrorGoTo([] { throw errors::Library("Invalid VariableTable"); },
                           [&](const AutomationError& e) {
                             EXPECT_EQ(e.Number(), 2411);
                             ++restored;
                           }));
  EXPECT_EQ(restored, 1);
}

}  // namespace
}  // namespace tovik
