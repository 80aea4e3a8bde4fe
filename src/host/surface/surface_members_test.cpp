// Every host member the library calls answers by name on the kind it is
// called on (spelled as the library spells it: names fold case), and an
// erased object refuses each of them with the host's error.
#include <gtest/gtest.h>

#include <algorithm>

#include "frame/runtime_text.h"
#include "host/core/host_error.h"
#include "tests/support/surface_calls.h"

namespace tovik::host {
namespace {

struct KindMembers {
  const char* kind;
  ObjectRef object;
  std::vector<const char*> members;
};

// Once erased, an entity answers Handle and ObjectName only: every other
// member the library calls raises "Object was erased", arguments unread.
TEST_F(SurfaceTest, ErasedEntitiesRefuseEveryMemberButHandle) {
  const char* members[] = {
      "ObjectID", "ObjectID32", "OwnerID", "Document", "Layer", "Linetype", "LinetypeScale",
      "Lineweight", "TrueColor", "Material", "PlotStyleName", "Visible", "GetBoundingBox",
      "Copy", "Delete", "Explode", "Highlight", "Update", "GetExtensionDictionary", "Normal",
      "Coordinates", "Closed", "InsertionPoint", "Name", "GetAttributes", "TextString"};
  ObjectRef objects[] = {line, pline, ref, text};
  for (const ObjectRef& o : objects) CallMethod(o, "Delete");
  for (const ObjectRef& o : objects) {
    EXPECT_FALSE(CStr(GetProperty(o, "Handle")).empty());
    for (const char* member : members) {
      if (o->GetIdOfName(member) == kDispIdUnknown) continue;
      SCOPED_TRACE(std::string(TypeName(Variant(o))) + "." + member);
      AutomationError r = ErrorOf([&] { GetProperty(o, member); });
      EXPECT_EQ(r.Number(), kScodeObjectErased);
      EXPECT_EQ(r.Description(), "Object was erased");
    }
  }
  // The attribute reference went with its block reference.
  EXPECT_EQ(ErrorOf([&] { GetProperty(attref, "TextString"); }).Number(), kScodeObjectErased);
}

// What a client with type information learns of a member: its kind, its
// argument counts and which arguments it writes back, on every table an
// entity answers from.
TEST_F(SurfaceTest, MembersDescribeTheirKindArgumentsAndOutputs) {
  const struct {
    const char* member;
    bool method;
    int min_args, max_args;
    uint32_t outs;
  } cases[] = {
      {"getboundingbox", true, 2, 2, 0b11},  // an entity member
      {"GetXData", true, 3, 3, 0b110},       // a member of every object
      {"StartPoint", false, 0, 0, 0},        // the line's own
      {"Move", true, 2, 2, 0},
  };
  for (const auto& c : cases) {
    MemberInfo info = line->Describe(line->GetIdOfName(c.member));
    EXPECT_TRUE(CaseInsensitiveEqual(info.name, c.member)) << c.member;
    EXPECT_EQ(info.method, c.method) << c.member;
    EXPECT_EQ(info.min_args, c.min_args) << c.member;
    EXPECT_EQ(info.max_args, c.max_args) << c.member;
    EXPECT_EQ(info.outs, c.outs) << c.member;
  }
  std::vector<std::string> names = line->MemberNames();
  EXPECT_NE(std::find(names.begin(), names.end(), "Handle"), names.end());
  EXPECT_EQ(line->Describe(kDispIdUnknown).name, "");
}

}  // namespace
}  // namespace tovik::host
