// Draw order read from a drawing's ACAD_SORTENTS table (entities are drawn
// by their sort keys, entities the table does not name by their handles),
// and the layouts a drawing defines.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"

namespace tovik::host::dxf {
namespace {

const std::string kCorpus = std::string(TOVIK_SHARED_DIR) + "/dxf/";

// Model space's handles in the order the drawing's table draws them.
std::vector<std::string> DrawOrder(const ObjectRef& doc) {
  ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
  ObjectRef xd = CallMethod(ms, "GetExtensionDictionary").Object();
  ObjectRef table = CallMethod(xd, "GetObject", {Variant(std::string("ACAD_SORTENTS"))}).Object();
  std::vector<Variant> args{Variant(), Variant(true)};
  CallMethodRef(table, "GetFullDrawOrder", args);
  std::vector<std::string> handles;
  for (const Variant& v : args[0].Array().Items()) handles.push_back(GetProperty(v.RawObject(), "Handle").RawString());
  return handles;
}

TEST(DxfDrawOrder, LoadedDrawingsDrawInTheOrderAnIndependentReaderComputes) {
  if (!std::filesystem::exists(kCorpus + "ezdxf/hatches_1.dxf")) GTEST_SKIP() << "corpus not present";
  auto app = Application::Create({.open_drawing = false});
  InstallDxfFileIo(*app);
  ObjectRef docs = GetProperty(ObjectRef(app), "Documents").Object();

  // Every entity of hatches_1.dxf has a sort key; the order is ezdxf 0.18's
  // (reorder.ascending over the model space's redraw order).
  ObjectRef hatches = CallMethod(docs, "Open", {Variant(kCorpus + "ezdxf/hatches_1.dxf")}).Object();
  const std::vector<std::string> expected = {
      "25A", "223", "266", "224", "225", "293", "226", "227", "248", "228", "229",
      "277", "251", "252", "27F", "267", "2AD", "2A1", "2A2", "2A3", "2A4", "2CD",
      "2BA", "2BB", "2BC", "2BD", "2C0", "2E0", "2CE", "2ED", "2D6", "2D7"};
  EXPECT_EQ(DrawOrder(hatches), expected);

  // sample_AC1018_ascii.dxf re-keys 8 of its 163 entities (353 takes key
  // 35A, 35A takes 354, ...), which then sit between entities the table
  // does not name: pairs of them swap places at positions 17-18, 20-21,
  // 22-23 and 24-25 (ezdxf 0.18 again).
  ObjectRef sample = CallMethod(docs, "Open", {Variant(kCorpus + "acadsharp/sample_AC1018_ascii.dxf")}).Object();
  std::vector<std::string> order = DrawOrder(sample);
  ASSERT_EQ(order.size(), 163u);
  const std::pair<size_t, const char*> placed[] = {
      {17, "35A"}, {18, "353"}, {20, "36E"}, {21, "36C"},
      {22, "371"}, {23, "36F"}, {24, "376"}, {25, "372"}, {0, "28E"}, {7, "2CF"}};
  for (const auto& [at, handle] : placed) {
    SCOPED_TRACE(handle);
    EXPECT_EQ(order[at], handle);
  }
}

TEST(DxfLayouts, LoadedLayoutsHaveTheirNamesAndTabOrder) {
  if (!std::filesystem::exists(kCorpus + "acadsharp/sample_AC1018_ascii.dxf")) GTEST_SKIP() << "corpus not present";
  auto app = Application::Create({.open_drawing = false});
  InstallDxfFileIo(*app);
  ObjectRef docs = GetProperty(ObjectRef(app), "Documents").Object();
  ObjectRef doc = CallMethod(docs, "Open", {Variant(kCorpus + "acadsharp/sample_AC1018_ascii.dxf")}).Object();
  ObjectRef layouts = GetProperty(doc, "Layouts").Object();
  // As ezdxf 0.18 lists them: each name with its tab.
  const std::pair<const char*, int> expected[] = {{"Model", 0}, {"Layout1", 1}, {"Layout2", 2}, {"MyLayout", 3}};
  EXPECT_EQ(GetProperty(layouts, "Count").RawInt(), 4);
  for (const auto& [name, tab] : expected) {
    SCOPED_TRACE(name);
    ObjectRef layout = CallMethod(layouts, "Item", {Variant(std::string(name))}).Object();
    EXPECT_EQ(GetProperty(layout, "Name").RawString(), name);
    EXPECT_EQ(GetProperty(layout, "TabOrder").RawInt(), tab);
  }
}

}  // namespace
}  // namespace tovik::host::dxf
