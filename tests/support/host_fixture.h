// The test fixture of everything that runs against a drawing: a fresh
// headless host for every test, with Drawing1 active. The library state is
// reset before and after each test; LinkedHostTest also links the library
// to the host as a client add-in links it (ZActiveXCOM.InitZActiveX on the
// implicit instance with the host's host-event object).
#ifndef TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_
#define TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "frame/library_state.h"
#include "frame/platform.h"
#include "frame/value_helpers.h"
#include "frame/zactivex_com.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/surface/args.h"
#include "tests/support/errors.h"

namespace tovik {

// A 3-Double point.
inline Variant Pt(double x, double y, double z = 0) { return host::PointValue({x, y, z}); }

// An Integer (VT_I2) array, as extended data and filter codes are passed.
inline Variant Codes(std::initializer_list<int16_t> codes) {
  SafeArray a(VarType::kInteger, 0, static_cast<int32_t>(codes.size()));
  int32_t i = 0;
  for (int16_t c : codes) a.Set(i++, Variant(c));
  return Variant(std::move(a));
}

// The handles of `objects`, and those of the members of a collection (a
// selection set, a group, a block): sets compare regardless of order.
inline std::set<std::string> HandlesOf(std::initializer_list<ObjectRef> objects) {
  std::set<std::string> out;
  for (const auto& o : objects) out.insert(CStr(GetProperty(o, "Handle")));
  return out;
}
inline std::set<std::string> MemberHandles(const ObjectRef& collection) {
  std::set<std::string> out;
  for (const Variant& e : ForEach(collection)) out.insert(CStr(GetProperty(e.Object(), "Handle")));
  return out;
}

// A dynamic-block property for a test definition.
inline host::DynamicProperty DynProp(std::string name, Variant value, int32_t units_type = 0,
                                     bool read_only = false, bool show = true,
                                     std::vector<Variant> allowed = {}) {
  host::DynamicProperty p;
  p.name = std::move(name);
  p.value = std::move(value);
  p.units_type = units_type;
  p.read_only = read_only;
  p.show = show;
  p.allowed_values = std::move(allowed);
  return p;
}

class HostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetLibraryState();
    app_ = host::Application::Create();
    doc = app_->ActiveDocumentRef();
    ms = GetProperty(doc, "ModelSpace").Object();
    if (link_at_start_) Link();
  }
  void TearDown() override { ResetLibraryState(); }

  // InitZActiveX(host-event object) on the implicit ZActiveXCOM instance.
  void Link() {
    Variant link(ObjectRef(app_->events()));
    GlobalInstance<ZActiveXCOM>()->InitZActiveX(link);
  }

  // The host's active document, reached as the library reaches it.
  ObjectRef ActiveDocument() const { return app_->ActiveDocumentRef(); }
  host::Document& document() { return *app_->active_document(); }
  // A new drawing, made active.
  ObjectRef NewDrawing() { return app_->AddDocument(); }

  // A line in model space of Drawing1.
  ObjectRef Line(double x1, double y1, double x2, double y2) {
    return CallMethod(ms, "AddLine", {Pt(x1, y1), Pt(x2, y2)}).Object();
  }
  // A lightweight polyline in model space through x0, y0, x1, y1...
  ObjectRef Polyline(std::initializer_list<double> xy) {
    return CallMethod(ms, "AddLightWeightPolyline", {Variant(SafeArray::OfDoubles(xy))}).Object();
  }
  // A new block definition with its origin at (0, 0, 0).
  ObjectRef AddBlock(const char* name) {
    return CallMethod(GetProperty(doc, "Blocks").Object(), "Add", {Pt(0, 0), Variant(name)}).Object();
  }
  // A reference to block `name` in `space`.
  static ObjectRef Insert(const ObjectRef& space, const char* name, geometry::Vec3 at,
                          geometry::Vec3 scale = {1, 1, 1}, double rotation = 0) {
    return CallMethod(space, "InsertBlock", {Pt(at.x, at.y, at.z), Variant(name), Variant(scale.x),
                                             Variant(scale.y), Variant(scale.z), Variant(rotation)})
        .Object();
  }
  // An entity of a kind that only comes from drawing files, made as the
  // reader makes it and appended to model space.
  template <class K>
  K* Loaded(typename K::Data data) {
    K* e = document().Create<K>();
    document().InitEntity(e);
    e->mutable_data() = std::move(data);
    document().model_space()->Append(e);
    return e;
  }
  // A ray or construction line as a drawing file brings it in: base point
  // and unit direction.
  ObjectRef Infinite(host::GenericKind kind, geometry::Vec3 base, geometry::Vec3 direction) {
    host::GenericEntity::Data d;
    d.kind = kind;
    d.dxf_name = kind == host::GenericKind::kRay ? "RAY" : "XLINE";
    d.points = {base, *geometry::Normalized(direction)};
    return document().Ref(Loaded<host::GenericEntity>(std::move(d)));
  }

  // A line in model space of `document` from (x, 0, 0) to (x + 1, 1, 0).
  static ObjectRef AddLine(const ObjectRef& document, double x) {
    ObjectRef space = GetProperty(document, "ModelSpace").Object();
    return CallMethod(space, "AddLine", {MakePoint(x, 0, 0), MakePoint(x + 1, 1, 0)}).Object();
  }

  // The window calls recorded so far.
  static const HeadlessPlatform& Windows() {
    return static_cast<const HeadlessPlatform&>(*Library().platform);
  }

  // Set in a fixture's constructor to link the library at start.
  bool link_at_start_ = false;
  std::shared_ptr<host::Application> app_;
  ObjectRef doc;
  ObjectRef ms;
};

// HostTest with the library linked to the host from the start.
class LinkedHostTest : public HostTest {
 protected:
  LinkedHostTest() { link_at_start_ = true; }
};

}  // namespace tovik

#endif  // TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_
