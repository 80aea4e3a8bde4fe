// A drawing made by another program is loaded, edited through the automation
// surface, saved, and compared with the original by an independent reader
// (ezdxf, through shared/tools/dxf-summary): the comparison must list exactly
// the edits made, nothing else.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/dxf/dxf_file.h"
#include "host/surface/args.h"
#include "tests/support/dxf_checks.h"

namespace tovik::host::dxf {
namespace {

const std::string kDrawing = CorpusDrawing("ezdxf/text.dxf");

TEST(DxfEditCompare, AnIndependentReaderSeesExactlyTheEditsAndNothingElse) {
  SKIP_WITHOUT_DRAWING(kDrawing);
  SKIP_WITHOUT_EZDXF();
  auto app = Application::Create({.open_drawing = false});
  InstallDxfFileIo(*app);
  ObjectRef docs = GetProperty(ObjectRef(app), "Documents").Object();
  ObjectRef doc = CallMethod(docs, "Open", {Variant(kDrawing)}).Object();

  // The drawing's one block reference (handle 756, block "att_block", four
  // attributes) is moved by (10, 5) and put on a new layer; its first
  // attribute gets a new text; a LINE gets extended data; another LINE is
  // erased; a CIRCLE is drawn.
  ObjectRef insert = CallMethod(doc, "HandleToObject", {Variant(std::string("756"))}).Object();
  CallMethod(insert, "Move", {PointValue({0, 0, 0}), PointValue({10, 5, 0})});
  CallMethod(GetProperty(doc, "Layers").Object(), "Add", {Variant(std::string("EDITED"))});
  LetProperty(insert, "Layer", Variant(std::string("EDITED")));
  Variant attributes = CallMethod(insert, "GetAttributes", {});
  ObjectRef first = attributes.Array().Items()[0].Object();
  std::string attribute_handle = GetProperty(first, "Handle").RawString();
  LetProperty(first, "TextString", Variant(std::string("changed")));

  ObjectRef tagged = CallMethod(doc, "HandleToObject", {Variant(std::string("38B"))}).Object();
  SafeArray types(VarType::kInteger, 0, 2), values(VarType::kVariant, 0, 2);
  types.Set(0, Variant(int16_t{1001}));
  types.Set(1, Variant(int16_t{1000}));
  values.Set(0, Variant(std::string("TOVIK_TEST")));
  values.Set(1, Variant(std::string("note")));
  CallMethod(tagged, "SetXData", {Variant(types), Variant(values)});

  CallMethod(CallMethod(doc, "HandleToObject", {Variant(std::string("38D"))}).Object(), "Delete", {});
  ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
  ObjectRef added = CallMethod(ms, "AddCircle", {PointValue({3, 4, 0}), Variant(2.5)}).Object();
  std::string added_handle = GetProperty(added, "Handle").RawString();

  std::string out = ::testing::TempDir() + "/text_edited.dxf";
  CallMethod(doc, "SaveAs", {Variant(out)});

  int status = 0;
  std::string report = DxfSummary("--compare " + kDrawing + " " + out, &status);
  EXPECT_EQ(status, 1) << report;  // 1: differences found
  std::set<std::string> got = DifferenceLines(report);
  const std::string ms_name = "(block '*Model_Space', layer '0')";
  const std::set<std::string> exact = {
      "[layer] layer 'EDITED' added",
      "[xdata] LINE #38B " + ms_name + ": xdata 'TOVIK_TEST' added",
      "[entity] INSERT #756 " + ms_name + ": layer '0' -> 'EDITED'",
      "[geometry/attribs] ATTRIB #" + attribute_handle + " " + ms_name +
          ": dxf.text: 'VALUE-up-down' -> 'changed'",
      "[entity] lost LINE #38D " + ms_name,
      "[entity] added CIRCLE #" + added_handle + " " + ms_name,
      "[layout] layout 'Model': entities {'ATTDEF': 4, 'INSERT': 1, 'LINE': 47, 'LWPOLYLINE': 78, "
      "'MTEXT': 30, 'TEXT': 62} -> {'ATTDEF': 4, 'CIRCLE': 1, 'INSERT': 1, 'LINE': 46, "
      "'LWPOLYLINE': 78, 'MTEXT': 30, 'TEXT': 62}",
  };
  for (const std::string& line : exact) {
    SCOPED_TRACE(line);
    EXPECT_EQ(got.erase(line), 1u) << report;
  }
  // The reference and its four attributes moved by (10, 5): x and y of each
  // insertion point changed by exactly that, nothing else about them.
  const std::string moved[] = {"INSERT #756", "ATTRIB #757", "ATTRIB #759", "ATTRIB #75A", "ATTRIB #75B"};
  for (const std::string& who : moved) {
    for (int axis = 0; axis < 2; ++axis) {
      std::string start = "[geometry/attribs] " + who + " " + ms_name + ": dxf.insert[" +
                          std::to_string(axis) + "]: ";
      SCOPED_TRACE(start);
      auto found = std::find_if(got.begin(), got.end(),
                                [&](const std::string& l) { return l.starts_with(start); });
      ASSERT_NE(found, got.end()) << report;
      std::string values = found->substr(start.size());
      size_t arrow = values.find(" -> ");
      ASSERT_NE(arrow, std::string::npos);
      double before = std::stod(values.substr(0, arrow));
      double after = std::stod(values.substr(arrow + 4));
      EXPECT_NEAR(after - before, axis == 0 ? 10.0 : 5.0, 1e-9);
      got.erase(found);
    }
  }
  // Whatever is left is a change nobody made.
  EXPECT_TRUE(got.empty()) << report;
}

}  // namespace
}  // namespace tovik::host::dxf
