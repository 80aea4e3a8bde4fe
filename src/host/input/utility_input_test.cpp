#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {
namespace {

class UserInputTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    util = GetProperty(doc, "Utility").Object();
  }
  void Queue(std::initializer_list<UserInput> answers) {
    for (const UserInput& u : answers) document().QueueInput(u);
  }
  void Init(int32_t bits, const char* keywords = nullptr) {
    if (keywords) {
      CallMethod(util, "InitializeUserInput", {Variant(bits), Variant(keywords)});
    } else {
      CallMethod(util, "InitializeUserInput", {Variant(bits)});
    }
  }
  // The keyword error a request ends with, and what GetInput gives then.
  std::string KeywordOf(const char* member) {
    AutomationError r = ErrorOf([&] { CallMethod(util, member); });
    EXPECT_EQ(r.Number(), kScodeUserInputKeyword) << member;
    EXPECT_EQ(r.Description(), "User input is a keyword");
    return CStr(CallMethod(util, "GetInput"));
  }

  ObjectRef util;
};

TEST_F(UserInputTest, NumbersObeyNoZeroNoNegativeAndIntegerRules) {
  struct Case {
    const char* member;
    int32_t bits;
    std::vector<double> typed;  // refused ones first, the accepted one last
    double expected;
  } cases[] = {
      {"GetReal", 0, {-2.5}, -2.5},
      {"GetReal", 2, {0, 0, 3}, 3},
      {"GetReal", 4, {-1, 0}, 0},
      {"GetReal", 6, {0, -1, 0.5}, 0.5},
      {"GetInteger", 6, {2.5, 0, -3, 40000, 7}, 7},
      {"GetInteger", 0, {-32768}, -32768},
      {"GetDistance", 6, {0, -2, 12.5}, 12.5},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.member) + " bits " + std::to_string(c.bits));
    Init(c.bits);
    for (double v : c.typed) document().QueueInput(UserInput::Number(v));
    Variant got = CallMethod(util, c.member);
    EXPECT_DOUBLE_EQ(CDbl(got), c.expected);
    EXPECT_EQ(document().queued_input(), 0u);  // the refused answers were used up
    if (std::string(c.member) == "GetInteger") {
      EXPECT_EQ(got.Type(), VarType::kLong);
    }
  }
  // The bits apply to the next request only.
  Init(6);
  Queue({UserInput::Number(1)});
  CallMethod(util, "GetReal");
  Queue({UserInput::Number(0)});
  EXPECT_DOUBLE_EQ(CDbl(CallMethod(util, "GetReal")), 0);
  EXPECT_NE(document().command_log().find("Value must be nonzero."), std::string::npos);
}

TEST_F(UserInputTest, EnterIsAKeywordUnlessNullInputIsRefused) {
  Queue({UserInput::Enter()});
  EXPECT_EQ(KeywordOf("GetPoint"), "");
  Init(1);
  Queue({UserInput::Enter(), UserInput::Point({1, 2, 3})});
  EXPECT_EQ(CallMethod(util, "GetPoint").Array().ToDoubles(), (std::vector<double>{1, 2, 3}));
  // Refused and nothing else queued: the user's Escape.
  Init(1);
  Queue({UserInput::Enter()});
  EXPECT_EQ(ErrorOf([&] { CallMethod(util, "GetInteger"); }).Number(), kScodeCancelled);
  // GetKeyword returns "" for Enter rather than raising.
  Init(0, "Yes No");
  Queue({UserInput::Enter()});
  EXPECT_EQ(CStr(CallMethod(util, "GetKeyword")), "");
}

TEST_F(UserInputTest, KeywordsMatchTheirAbbreviationsAndReturnTheFullName) {
  struct Case {
    const char* keywords;
    const char* typed;
    const char* expected;  // "" : refused
  } cases[] = {
      {"LType Color", "lt", "LType"},
      {"LType Color", "LTYP", "LType"},
      {"LType Color", "ltypes", ""},
      {"LType Color", "l", ""},
      {"LType Color", "c", "Color"},
      {"eXit Undo", "x", "eXit"},
      {"eXit Undo", "EXIT", "eXit"},
      {"eXit Undo", "ex", ""},
      {"LTYPE,LT Width", "lty", "LTYPE"},
      {"LTYPE,LT Width", "l", ""},
      {"Line Arc _Ligne Arc", "li", "Ligne"},
      {"Line Arc _Ligne Arc", "_Ligne", "Ligne"},
      {"LINE ARC", "LIN", ""},
      {"LINE ARC", "line", "LINE"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.keywords) + " / " + c.typed);
    Init(0, c.keywords);
    Queue({UserInput::Text(c.typed), UserInput::Point({4, 5, 6})});
    if (*c.expected) {
      EXPECT_EQ(KeywordOf("GetPoint"), c.expected);
      EXPECT_EQ(document().queued_input(), 1u);
      document().NextInput();
    } else {
      // Refused at the prompt: the point queued next answers.
      EXPECT_EQ(CallMethod(util, "GetPoint").Array().ToDoubles(),
                (std::vector<double>{4, 5, 6}));
    }
  }
  // Arbitrary input (128) takes any text as it was typed.
  Init(128, "Yes No");
  Queue({UserInput::Text("maybe so")});
  EXPECT_EQ(KeywordOf("GetReal"), "maybe so");
  // A keyword list may also come as an array of texts.
  SafeArray list(VarType::kVariant, 0, 2);
  list.Set(0, Variant("Big"));
  list.Set(1, Variant("Small"));
  CallMethod(util, "InitializeUserInput", {Variant(int32_t{1}), Variant(std::move(list))});
  Queue({UserInput::Text("s")});
  EXPECT_EQ(CStr(CallMethod(util, "GetKeyword")), "Small");
}

TEST_F(UserInputTest, DistancesComeTypedOrPickedFromTheBasePoint) {
  Queue({UserInput::Point({3, 4, 12})});
  EXPECT_DOUBLE_EQ(CDbl(CallMethod(util, "GetDistance", {Pt(0, 0, 0)})), 13);
  Init(64);  // flat: Z ignored
  Queue({UserInput::Point({3, 4, 12})});
  EXPECT_DOUBLE_EQ(CDbl(CallMethod(util, "GetDistance", {Pt(0, 0, 0)})), 5);
  // Without a base point the first pick is the base.
  Queue({UserInput::Point({1, 1, 0}), UserInput::Point({4, 5, 0})});
  EXPECT_DOUBLE_EQ(CDbl(CallMethod(util, "GetDistance")), 5);
  // A zero distance picked under no-zero is refused too.
  Init(2);
  Queue({UserInput::Point({1, 1, 0}), UserInput::Number(2)});
  EXPECT_DOUBLE_EQ(CDbl(CallMethod(util, "GetDistance", {Pt(1, 1, 0)})), 2);
  // GetCorner needs its base point; a number does not answer a point.
  Queue({UserInput::Number(2), UserInput::Point({7, 8, 0})});
  EXPECT_EQ(CallMethod(util, "GetCorner", {Pt(0, 0)}).Array().ToDoubles(),
            (std::vector<double>{7, 8, 0}));
  EXPECT_NE(document().command_log().find("Invalid point."), std::string::npos);
}

TEST_F(UserInputTest, GetStringTakesTextAndIgnoresTheControlBits) {
  Init(1);
  Queue({UserInput::Text("two words"), UserInput::Text("two words"), UserInput::Enter()});
  EXPECT_EQ(CStr(CallMethod(util, "GetString", {Variant(false)})), "two");
  EXPECT_EQ(CStr(CallMethod(util, "GetString", {Variant(true), Variant("Name: ")})),
            "two words");
  EXPECT_EQ(CStr(CallMethod(util, "GetString", {Variant(true)})), "");
}

TEST_F(UserInputTest, BadArgumentsAreRefusedBeforeAnyAnswerIsTaken) {
  struct Case {
    const char* member;
    std::vector<Variant> args;
    int32_t number;
    const char* text;
  } cases[] = {
      {"InitializeUserInput", {Variant("x")}, 13, "Type mismatch"},
      {"InitializeUserInput", {Variant(int32_t{256})}, kScodeInvalidArgument,
       "Invalid argument Bits in InitializeUserInput"},
      {"InitializeUserInput", {Variant(int32_t{0}), Variant(1.5)}, kScodeInvalidArgument,
       "Invalid argument KeyWordList in InitializeUserInput"},
      {"InitializeUserInput", {}, 449, "Argument not optional"},
      {"GetPoint", {Variant(1.0)}, kScodeInvalidArgument, "Invalid argument Point in GetPoint"},
      {"GetDistance", {Variant("p")}, kScodeInvalidArgument,
       "Invalid argument Point in GetDistance"},
      {"GetCorner", {}, 449, "Argument not optional"},
      {"GetString", {}, 449, "Argument not optional"},
      {"GetReal", {Variant("a"), Variant("b")}, 450, "Wrong number of arguments or invalid property assignment"},
  };
  Queue({UserInput::Number(1)});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.member);
    AutomationError r = ErrorOf([&] {
      std::vector<Variant> args = c.args;
      CallMethodRef(util, c.member, args);
    });
    EXPECT_EQ(r.Number(), c.number);
    EXPECT_EQ(r.Description(), c.text);
    EXPECT_EQ(document().queued_input(), 1u);
  }
}

}  // namespace
}  // namespace tovik::host
