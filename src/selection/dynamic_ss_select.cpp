// DynamicSS filled through the host's own selection machinery. The host
// selects only into a named selection set, so each selecting member goes
// through the one host set "DynamicSS": the set is cleared (which also
// deletes that host set), a fresh host set is made, one host selection
// call fills it, and its entities are added in the host set's order.
#include <array>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "selection/dynamic_ss.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

constexpr int32_t kSelectFence = 2;
constexpr int32_t kSelectPrevious = 3;
constexpr int32_t kSelectWindowPolygon = 6;
constexpr int32_t kWorld = 0;
constexpr int32_t kUcs = 1;

// The polyline's 2D vertices as a flat 3D list in the user coordinate
// system: (x, y) pairs become (x, y, 0) triples until a read fails, then
// every point goes from world to user coordinates.
Variant PolylineOutline(const ObjectRef& pline) {
  std::vector<double> points;
  ResumeNext trap;
  trap([&] {
    Variant coords = GetProperty(pline, "Coordinates");
    const SafeArray& xy = coords.Array();
    for (int32_t i = xy.LBound(); i + 1 <= xy.UBound(); i += 2) {
      points.insert(points.end(), {CDbl(xy.At(i)), CDbl(xy.At(i + 1)), 0.0});
    }
  });
  Variant list(SafeArray::OfDoubles(points));
  AcadSpace::TranslateCoordinates(GetProperty(pline, "Document").Object(), list, kWorld, kUcs,
                                  Variant(int32_t{3}));
  return list;
}

// Calls set.member(head..., [filter_type, filter_data]): the filters are
// passed only when FilterType was given.
void CallWithFilters(const ObjectRef& set, std::string_view member, std::vector<Variant> head,
                     Variant& filter_type, Variant& filter_data) {
  if (!filter_type.IsMissing()) {
    head.push_back(filter_type);
    head.push_back(filter_data);
  }
  CallMethodRef(set, member, head);
}

}  // namespace

template <class Select>
void DynamicSS::SelectThrough(Select&& select) {
  Clear();
  select(HostSelectionSet());
  Add(Variant(SafeArray::Of({Variant(HostSelectionSet())})));
}

void DynamicSS::SelectW(CallArgs& args) {
  // Always all five arguments; omitted ones go on as Missing.
  std::array<Variant, 5> select_args{args[0], args[1], args[2], args[3], args[4]};
  SelectThrough([&](const ObjectRef& set) { CallMethodRef(set, "Select", select_args); });
}

void DynamicSS::SelectByFilteringFrom(DynamicSS& previous, Variant& filter_type,
                                      Variant& filter_data) {
  Clear();
  previous.ToPreviousSS();
  std::array<Variant, 5> select_args{Variant(kSelectPrevious), Variant::Missing(),
                                     Variant::Missing(), filter_type, filter_data};
  // The filtered selection stays in the host set: nothing is added here.
  CallMethodRef(HostSelectionSet(), "Select", select_args);
}

void DynamicSS::SelectAtPoint(const Variant& point, Variant& filter_type, Variant& filter_data) {
  SelectThrough([&](const ObjectRef& set) {
    ObjectRef utility = GetProperty(document_, "Utility").Object();
    Variant ucs_point = CallMethod(utility, "TranslateCoordinates",
                                   {point, Variant(kWorld), Variant(kUcs), Variant(false)});
    CallWithFilters(set, "SelectAtPoint", {ucs_point}, filter_type, filter_data);
  });
}

void DynamicSS::SelectByPolygon(int32_t mode, Variant& points, Variant& filter_type,
                                Variant& filter_data) {
  SelectThrough([&](const ObjectRef& set) {
    CallWithFilters(set, "SelectByPolygon", {Variant(mode), points}, filter_type, filter_data);
  });
}

void DynamicSS::SelectOnScreen(Variant& filter_type, Variant& filter_data) {
  SelectThrough([&](const ObjectRef& set) {
    CallWithFilters(set, "SelectOnScreen", {}, filter_type, filter_data);
  });
}

void DynamicSS::SelectPickFirstSS() {
  Clear();
  Add(Variant(SafeArray::Of({GetProperty(CurrentDrawing(), "PickfirstSelectionSet")})));
}

void DynamicSS::SelectByBoundPline(const ObjectRef& pline, Variant& filter_type,
                                   Variant& filter_data) {
  Variant outline = PolylineOutline(pline);
  SelectByPolygon(kSelectWindowPolygon, outline, filter_type, filter_data);
}

// Fence mode: what the polyline's path crosses, not what lies inside it.
void DynamicSS::SelectByCrossPline(const ObjectRef& pline, Variant& filter_type,
                                   Variant& filter_data) {
  Variant outline = PolylineOutline(pline);
  SelectByPolygon(kSelectFence, outline, filter_type, filter_data);
}

void DynamicSS::HandToHost(std::string_view mode) {
  if (Count() == 0) return;
  ObjectRef group = LibraryGroup(document_, true);
  CallMethod(group, "AppendItems", {ToArray(Variant(true))});
  CallMethod(document_, "SetVariable", {Variant("USERS1"), Variant(std::string(mode))});
  CallMethod(document_, "SendCommand", {Variant("(TOVIK_COM) ")});
}

void DynamicSS::ToPickSet() { HandToHost("ToPickSet"); }

void DynamicSS::ToPreviousSS() { HandToHost("ToPrevious"); }

}  // namespace tovik
