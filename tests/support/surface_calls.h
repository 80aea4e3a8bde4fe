// A drawing holding one object of every host kind the library calls, for the
// tests of the automation surface (every member answers by name, on the
// kind the library calls it on, with its error paths).
#ifndef TOVIK_TESTS_SUPPORT_SURFACE_CALLS_H_
#define TOVIK_TESTS_SUPPORT_SURFACE_CALLS_H_

#include <string>
#include <vector>

#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {

// How a case reaches its member.
enum class Op : uint8_t { kGet, kLet, kSet, kCall };

// One failing call: `member` of `object`, with `args` (for kLet/kSet the
// value assigned), and the host's error text it must raise.
struct ErrorCase {
  const char* what;
  ObjectRef object;
  const char* member;
  Op op;
  std::vector<Variant> args;
  std::string text;
};

// The number that goes with each error text (the host's table, the
// runtime's dispatch errors, and Invalid argument's E_INVALIDARG).
int32_t NumberOfText(const std::string& text);

// Runs every case and checks number and text.
void ExpectErrors(const std::vector<ErrorCase>& cases);

class SurfaceTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    blocks = GetProperty(doc, "Blocks").Object();
    block = CallMethod(blocks, "Add", {Pt(0, 0), Variant("B")}).Object();
    attdef = CallMethod(block, "AddAttribute", {Variant(1.0), Variant(int32_t{0}), Variant("P?"),
                                                Pt(1, 0), Variant("TAG"), Variant("v")})
                 .Object();
    CallMethod(block, "AddLine", {Pt(0, 0), Pt(1, 1)});
    auto* def = static_cast<BlockRecord*>(block.get());
    def->mutable_data().dynamic_properties = {
        DynProp("Distance1", Variant(10.0), 2),
    };
    ref = CallMethod(ms, "InsertBlock",
                     {Pt(5, 5), Variant("B"), Variant(1.0), Variant(1.0), Variant(1.0)})
              .Object();
    attref = CallMethod(ref, "GetAttributes").Array().Items()[0].RawObject();
    dynprop = CallMethod(ref, "GetDynamicBlockProperties").Array().Items()[0].RawObject();
    line = Line(0, 0, 10, 0);
    pline = CallMethod(ms, "AddLightWeightPolyline", {DoublesValue({0, 0, 4, 0, 4, 3})}).Object();
    circle = CallMethod(ms, "AddCircle", {Pt(20, 0), Variant(2.0)}).Object();
    arc = CallMethod(ms, "AddArc", {Pt(30, 0), Variant(2.0), Variant(0.0), Variant(1.0)}).Object();
    text = CallMethod(ms, "AddText", {Variant("abc"), Pt(0, 20), Variant(2.5)}).Object();
    hatch = CallMethod(ms, "AddHatch", {Variant(int32_t{1}), Variant("ANSI31"), Variant(false)})
                .Object();
    Document& d = document();
    auto* dim = d.Create<Dimension>();
    d.InitEntity(dim);
    dim->mutable_data().p13 = {0, 0, 0};
    dim->mutable_data().p14 = {7, 0, 0};
    d.model_space()->Append(dim);
    dimension = d.Ref(dim);
    color = GetProperty(line, "TrueColor").Object();
    style = CallMethod(GetProperty(doc, "TextStyles").Object(), "Item", {Variant("Standard")})
                .Object();
    utility = GetProperty(doc, "Utility").Object();
    group = CallMethod(GetProperty(doc, "Groups").Object(), "Add", {Variant("G")}).Object();
    set = CallMethod(GetProperty(doc, "SelectionSets").Object(), "Add", {Variant("S")}).Object();
    dictionary =
        CallMethod(GetProperty(doc, "Dictionaries").Object(), "Add", {Variant("D")}).Object();
  }

  ObjectRef blocks, block, attdef, ref, attref, dynprop, line, pline, circle, arc, text, hatch,
      dimension, color, style, utility, group, set, dictionary;
};

}  // namespace tovik::host

#endif  // TOVIK_TESTS_SUPPORT_SURFACE_CALLS_H_
