// AcadDocSpace: blocks from the block library, layers by mark, the default
// text style and layers, and the library's scratch anonymous blocks, kept
// hidden in the drawing behind an invisible holder reference.
#include <array>

#include "document/acad_doc_space.h"
#include "document/spaces.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dictionary.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_state.h"
#include "frame/runtime_text.h"
#include "xdata/xdata.h"

namespace tovik {
namespace {

// The layer-mark table: mark, layer name, colour index ("" for none).
constexpr std::array<const char*, 2> kLayerMarks = {"Rebar\tRebar\t1", "DET_STEEL\tDET_STEEL\t1"};
constexpr std::string_view kScratchBlock = "Tovik Anonyblock";
constexpr std::string_view kTextStyle = "Tovik Studio";
constexpr std::string_view kTextFont = "Microsoft Sans Serif";
constexpr std::string_view kNoPrintLayer = "Not to Print";
constexpr std::string_view kHolderVariable = "InvisibleRef";

ObjectRef Drawing(ObjectRef& drawing) {
  if (!drawing) drawing = CurrentDrawing();
  return drawing;
}

Variant Origin() { return Variant(SafeArray::OfDoubles({0, 0, 0})); }

// collection.Item(name), made when missing: a block is loaded from the
// drawing file `path` when there is one, a layer added (a refused name
// reaches the caller). `created` tells whether the item is new.
ObjectRef GetOrLoadItem(const ObjectRef& collection, const std::string& name,
                        const std::string& path, bool& created) {
  ObjectRef item;
  ResumeNext trap;
  if (trap([&] { item = CallMethod(collection, "Item", {Variant(name)}).Object(); })) return item;
  created = true;
  if (Like(collection->TypeName(), "IAcadBlocks*").value_or(false)) {
    if (!path.empty()) {
      trap([&] {
        LoadBlockFromFile(CurrentDrawing(), path);
        item = CallMethod(collection, "Item", {Variant(name)}).Object();
      });
    }
    return item;
  }
  return CallMethod(collection, "Add", {Variant(name)}).Object();
}

// The layer `name` ("X-" before it with x_prefix), made when missing. The
// colour a new layer would take is worked out but, as the operation always
// did, not given to it.
ObjectRef LayerByMark(AcadDocSpace& self, std::string name, ObjectRef& drawing,
                      int16_t color_index, bool x_prefix) {
  if (x_prefix) name = "X-" + name;
  bool created = false;
  ObjectRef layer =
      GetOrLoadItem(GetProperty(Drawing(drawing), "Layers").Object(), name, "", created);
  if (created && (x_prefix || color_index >= 0)) self.GetColor(x_prefix ? 8 : color_index);
  return layer;
}

// The library's mark dictionary, kept in the host-event object's store.
std::shared_ptr<Dictionary> LayerMarks() {
  ObjectRef store = HostEvents();
  auto marks = ObjectAs<Dictionary>(CallMethod(store, "GetNamedObject", {Variant("JLayer")}));
  if (marks) return marks;
  marks = std::make_shared<Dictionary>();
  marks->SetCompareMode(1);  // text compare: marks match without regard to case
  for (const char* row : kLayerMarks) {
    std::vector<std::string> f = Split(row, "\t");
    int16_t color = f.size() > 2 && !f[2].empty() ? CInt(Variant(f[2])) : int16_t{-1};
    marks->Add(Variant(f[0]), Variant(SafeArray::Of({Variant(f[1]), Variant(color)})));
  }
  CallMethod(store, "SetNamedObject", {Variant("JLayer"), Variant(ObjectRef(marks))});
  return marks;
}

ObjectRef BlockNamed(const ObjectRef& drawing, const Variant& name) {
  return CallMethod(GetProperty(drawing, "Blocks").Object(), "Item", {name}).Object();
}

// The invisible holder's block, made with its two inner references (the
// invisible space and the container of scratch blocks) when the drawing
// has none or its reference was erased.
ObjectRef InvisibleHolder(AcadDocSpace& self, const ObjectRef& drawing) {
  auto xdata = GlobalInstance<Xdata>();
  ObjectRef holder;
  ResumeNext trap;
  trap([&] {
    Variant handle = xdata->GetAppXdata(Variant(drawing), kHolderVariable, Variant(""), xHandle);
    ObjectRef ref = CallMethod(drawing, "HandleToObject", {handle}).Object();
    holder = BlockNamed(drawing, GetProperty(ref, "Name"));
  });
  if (holder) return holder;
  ObjectRef model = GetProperty(drawing, "ModelSpace").Object();
  holder = self.NewAnonyBlock(drawing, false);
  self.NewAnonyBlock(holder, true);  // item 0: the invisible space
  self.NewAnonyBlock(holder, true);  // item 1: the container of scratch blocks
  ObjectRef ref = CallMethod(model, "InsertBlock", {Origin(), GetProperty(holder, "Name"),
                                                    Variant(1.0), Variant(1.0), Variant(1.0),
                                                    Variant(0.0)})
                      .Object();
  LetProperty(ref, "Visible", Variant(false));
  LetProperty(ref, "Layer", Variant("0"));
  xdata->SetAppXData(Variant(drawing), kHolderVariable, GetProperty(ref, "Handle"), xHandle);
  return holder;
}

ObjectRef HolderItem(AcadDocSpace& self, const ObjectRef& drawing, int32_t index) {
  ObjectRef holder = InvisibleHolder(self, drawing);
  return BlockNamed(drawing, GetProperty(CallMethod(holder, "Item", {Variant(index)}).Object(), "Name"));
}

}  // namespace

ObjectRef AcadDocSpace::JBlock(const std::string& bmark, ObjectRef& acad_drawing) {
  ObjectRef block;
  ResumeNext trap;
  trap([&] {
    std::string folder = BlockLibraryFolder();
    ObjectRef blocks = GetProperty(Drawing(acad_drawing), "Blocks").Object();
    bool created = false;
    block = GetOrLoadItem(blocks, bmark, LibraryBlockFile(folder, bmark), created);
  });
  return block;
}

ObjectRef AcadDocSpace::GetColor(int16_t color_index) {
  ObjectRef layers = GetProperty(CurrentDrawing(), "Layers").Object();
  ObjectRef color =
      GetProperty(CallMethod(layers, "Item", {Variant("0")}).Object(), "TrueColor").Object();
  LetProperty(color, "ColorIndex", Variant(color_index));
  return color;
}

ObjectRef AcadDocSpace::JLayer(const std::string& la_mark, ObjectRef& acad_drawing, bool x_prefix) {
  std::shared_ptr<Dictionary> marks = LayerMarks();
  if (!marks->Exists(Variant(la_mark))) return nullptr;
  const SafeArray& row = marks->Item(Variant(la_mark)).Array();
  return LayerByMark(*this, CStr(row.At(0)), acad_drawing, CInt(row.At(1)), x_prefix);
}

ObjectRef AcadDocSpace::DefaultTextStyle() {
  ObjectRef style;
  ResumeNext trap;
  ObjectRef styles;
  trap([&] { styles = GetProperty(CurrentDrawing(), "TextStyles").Object(); });
  if (trap([&] { style = CallMethod(styles, "Item", {Variant(kTextStyle)}).Object(); })) {
    return style;
  }
  trap([&] {
    style = CallMethod(styles, "Add", {Variant(kTextStyle)}).Object();
    // Height 0: the height is asked for each text.
    LetProperty(style, "Height", Variant(0.0));
    CallMethod(style, "SetFont", {Variant(kTextFont), Variant(false), Variant(false),
                                  Variant(int32_t{0}), Variant(int32_t{34})});
  });
  return style;
}

ObjectRef AcadDocSpace::DefaultNoPrintLayer() {
  ObjectRef drawing;
  ObjectRef layer = LayerByMark(*this, std::string(kNoPrintLayer), drawing, 9, false);
  // The one further property: the layer is never plotted.
  LetProperty(layer, "Plottable", Variant(false));
  return layer;
}

ObjectRef AcadDocSpace::DefaultLayer(const std::string& lname, ObjectRef& acad_drawing,
                                     int16_t color_index) {
  return LayerByMark(*this, lname, acad_drawing, color_index, false);
}

void AcadDocSpace::ClearBlockEntities(const ObjectRef& ablock) {
  ResumeNext trap;
  while (trap([&] {
    CallMethod(CallMethod(ablock, "Item", {Variant(int32_t{0})}).Object(), "Delete");
  })) {
  }
}

ObjectRef AcadDocSpace::NewAnonyBlock(const ObjectRef& ablock_or_dwg, bool retain_bref) {
  ObjectRef target, drawing;
  if (ablock_or_dwg->TypeName() == "IAcadDocument") {
    drawing = ablock_or_dwg;
    target = CurrentSpaceOf(drawing);
  } else {
    target = ablock_or_dwg;
    drawing = GetProperty(target, "Document").Object();
  }
  ObjectRef scratch, ref;
  ResumeNext trap;
  trap([&] {
    scratch = CallMethod(GetProperty(drawing, "Blocks").Object(), "Add",
                         {Origin(), Variant(kScratchBlock)})
                  .Object();
  });
  trap([&] {
    ref = CallMethod(target, "InsertBlock", {Origin(), Variant(kScratchBlock), Variant(1.0),
                                             Variant(1.0), Variant(1.0), Variant(0.0)})
              .Object();
  });
  CallMethod(ref, "ConvertToAnonymousBlock");
  ObjectRef anonymous = BlockNamed(CurrentDrawing(), GetProperty(ref, "Name"));
  LetProperty(GetProperty(CurrentDrawing(), "ActiveLayer").Object(), "Lock", Variant(false));
  ClearBlockEntities(anonymous);
  if (!retain_bref) trap([&] { CallMethod(ref, "Delete"); });
  trap([&] { CallMethod(scratch, "Delete"); });
  return anonymous;
}

ObjectRef AcadDocSpace::InvisibleSpace(ObjectRef& acad_drawing) {
  return HolderItem(*this, Drawing(acad_drawing), 0);
}

ObjectRef AcadDocSpace::TempAnonyBlock(ObjectRef& acad_drawing, const std::string& id_comment,
                                       bool clear_block) {
  ObjectRef drawing = Drawing(acad_drawing);
  ObjectRef container = HolderItem(*this, drawing, 1);
  ObjectRef found;
  ResumeNext trap;
  for (int32_t i = 0; !found; ++i) {
    ObjectRef definition;
    if (!trap([&] {
          ObjectRef item = CallMethod(container, "Item", {Variant(i)}).Object();
          definition = BlockNamed(drawing, GetProperty(item, "Name"));
        })) {
      break;
    }
    if (CStr(GetProperty(definition, "Comments")) == id_comment) found = definition;
  }
  if (!found) {
    found = NewAnonyBlock(container, true);
    LetProperty(found, "Comments", Variant(id_comment));
  }
  if (clear_block) ClearBlockEntities(found);
  return found;
}

void AcadDocSpace::PurgeTempAnonyBlocks(ObjectRef& acad_drawing) {
  ObjectRef drawing = Drawing(acad_drawing);
  ObjectRef container = HolderItem(*this, drawing, 1);
  ResumeNext trap;
  for (int32_t index = 0;;) {
    ObjectRef item;
    if (!trap([&] { item = CallMethod(container, "Item", {Variant(index)}).Object(); })) return;
    bool deleted = trap([&] {
      ObjectRef definition = BlockNamed(drawing, GetProperty(item, "Name"));
      CallMethod(item, "Delete");
      CallMethod(definition, "Delete");
    });
    if (!deleted) {
      trap.Clear();
      ++index;
    }
  }
}

}  // namespace tovik
