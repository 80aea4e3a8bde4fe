#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {
namespace {

using IdentityTest = HostTest;

TEST_F(IdentityTest, ObjectIdsFindTheirObjectsInThisDrawing) {
  ObjectRef line = Line(0, 0, 1, 1);
  Variant id = GetProperty(line, "ObjectID");
  EXPECT_EQ(id.Type(), VarType::kLongLong);  // Long_PTR on a 64-bit host
  Variant id32 = GetProperty(line, "ObjectID32");
  EXPECT_EQ(id32.Type(), VarType::kLong);
  EXPECT_EQ(CLngLng(id), CLngLng(id32));
  EXPECT_TRUE(SameObject(CallMethod(doc, "ObjectIDToObject", {id}).Object(), line));
  EXPECT_TRUE(SameObject(CallMethod(doc, "ObjectIDToObject32", {id32}).Object(), line));
  EXPECT_EQ(CLngLng(GetProperty(line, "OwnerID")), CLngLng(GetProperty(ms, "ObjectID")));
  // Stable: the same ID on every read, and after undoing a change.
  LetProperty(line, "EndPoint", Pt(3, 3));
  CallMethod(doc, "SendCommand", {Variant("U ")});
  EXPECT_EQ(CLngLng(GetProperty(line, "ObjectID")), CLngLng(id));
  // Another drawing never answers this drawing's IDs, however many objects
  // it holds: each drawing has IDs of its own.
  ObjectRef other = app_->AddDocument();
  ObjectRef other_ms = GetProperty(other, "ModelSpace").Object();
  for (int i = 0; i < 5; ++i) CallMethod(other_ms, "AddLine", {Pt(0, 0), Pt(1, i)});
  ObjectRef other_line = CallMethod(other_ms, "Item", {Variant(int32_t{0})}).Object();
  EXPECT_NE(CLngLng(GetProperty(other_line, "ObjectID")), CLngLng(id));
  AutomationError r = ErrorOf([&] { CallMethod(other, "ObjectIDToObject", {id}); });
  EXPECT_EQ(r.Description(), "Invalid object ID");
  r = ErrorOf([&] { CallMethod(other, "ObjectIDToObject32", {id32}); });
  EXPECT_EQ(r.Description(), "Invalid object ID");
  r = ErrorOf([&] { CallMethod(doc, "ObjectIDToObject", {GetProperty(other_line, "ObjectID")}); });
  EXPECT_EQ(r.Description(), "Invalid object ID");
  CallMethod(line, "Delete");
  r = ErrorOf([&] { CallMethod(doc, "ObjectIDToObject", {id}); });
  EXPECT_EQ(r.Description(), "Invalid object ID");
  r = ErrorOf([&] { CallMethod(doc, "ObjectIDToObject", {Variant("12")}); });
  EXPECT_EQ(r.Description(), "Invalid argument ObjectID in ObjectIDToObject");
}

TEST_F(IdentityTest, OneWrapperPerObject) {
  ObjectRef line = Line(0, 0, 1, 1);
  EXPECT_TRUE(SameObject(CallMethod(ms, "Item", {Variant(int16_t{0})}).Object(), line));
  EXPECT_TRUE(SameObject(GetProperty(doc, "ModelSpace").Object(), ms));
  EXPECT_TRUE(SameObject(GetProperty(doc, "Layers").Object(), GetProperty(doc, "Layers").Object()));
  // TrueColor is a detached copy each time.
  EXPECT_FALSE(SameObject(GetProperty(line, "TrueColor").Object(),
                          GetProperty(line, "TrueColor").Object()));
}

}  // namespace
}  // namespace tovik::host
