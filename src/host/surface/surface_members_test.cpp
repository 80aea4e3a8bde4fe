// Every host member the library calls answers by name on the kind it is
// called on (spelled as the library spells it: names fold case), and an
// erased object refuses each of them with the host's error.
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tovik::host
