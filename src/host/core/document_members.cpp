// The automation members of a document.
#include <cctype>

#include "frame/conversions.h"
#include "host/copying/copy_objects.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/input/utility.h"
#include "host/selection/selection_set.h"
#include "host/surface/args.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

// The DXF version a SaveAs file type asks for (AcSaveAsType: acR12_dxf 1,
// ac2000_dxf 13, ac2004_dxf 25, ac2007_dxf 37, ac2010_dxf 49, ac2013_dxf 61,
// ac2018_dxf 65); empty for any other type: the host's own version.
std::string DxfVersionOfSaveAsType(int32_t type) {
  switch (type) {
    case 1: return "AC1009";
    case 13: return "AC1015";
    case 25: return "AC1018";
    case 37: return "AC1021";
    case 49: return "AC1024";
    case 61: return "AC1027";
    case 65: return "AC1032";
    default: return "";
  }
}


// A handle text: hex digits only, any case, at most 16.
std::optional<uint64_t> ParseHandle(std::string_view text) {
  if (text.empty() || text.size() > 16) return std::nullopt;
  uint64_t value = 0;
  for (char c : text) {
    int digit;
    if (c >= '0' && c <= '9') digit = c - '0';
    else if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
    else if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
    else return std::nullopt;
    value = value * 16 + static_cast<uint64_t>(digit);
  }
  return value;
}

Variant ObjectFromId(Document& s, const Variant& v, std::string_view member) {
  if (!v.IsNumber() || v.IsBoolean()) throw InvalidArgument("ObjectID", member);
  DbObject* o = s.FindById(CLngLng(v));
  if (!o) throw HostError(HostFailure::kInvalidObjectId);
  return Variant(s.Ref(o));
}

void LetActiveLayout(Document& s, CallArgs&, Variant& v) {
  auto layout = ObjectAs<Layout>(v);
  if (!layout || layout->document() != &s || layout->erased()) {
    throw InvalidArgument("ActiveLayout", "ActiveLayout");
  }
  if (layout.get() != s.active_layout()) s.SetActiveLayout(layout.get());
}

void LetActiveLayer(Document& s, CallArgs&, Variant& v) {
  auto layer = ObjectAs<LayerRecord>(v);
  if (!layer || layer->document() != &s || layer->erased()) {
    throw InvalidArgument("ActiveLayer", "ActiveLayer");
  }
  s.SetActiveLayer(layer.get());
}

void RegisterCollections(MemberTable<Document>& t) {
  t.Property("Blocks", [](Document& s, CallArgs&) { return Variant(s.Collection("Blocks")); });
  t.Property("Layers", [](Document& s, CallArgs&) { return Variant(s.Collection("Layers")); });
  t.Property("TextStyles",
             [](Document& s, CallArgs&) { return Variant(s.Collection("TextStyles")); });
  t.Property("Linetypes",
             [](Document& s, CallArgs&) { return Variant(s.Collection("Linetypes")); });
  t.Property("Materials",
             [](Document& s, CallArgs&) { return Variant(s.Collection("Materials")); });
  t.Property("RegisteredApplications", [](Document& s, CallArgs&) {
    return Variant(s.Collection("RegisteredApplications"));
  });
  t.Property("DimStyles",
             [](Document& s, CallArgs&) { return Variant(s.Collection("DimStyles")); });
  t.Property("Layouts", [](Document& s, CallArgs&) { return Variant(s.Collection("Layouts")); });
  t.Property("Groups", [](Document& s, CallArgs&) { return Variant(s.Collection("Groups")); });
  t.Property("Dictionaries",
             [](Document& s, CallArgs&) { return Variant(s.Collection("Dictionaries")); });
  t.Property("SelectionSets", [](Document& s, CallArgs&) {
    return Variant(s.Collection("SelectionSets"));
  });
  t.Property("Utility", [](Document& s, CallArgs&) { return Variant(ObjectRef(s.utility())); });
  t.Property("PickfirstSelectionSet", [](Document& s, CallArgs&) {
    return Variant(ObjectRef(s.pickfirst()->Self()));
  });
}

}  // namespace

const MemberTable<Document>& Document::Members() {
  static const MemberTable<Document> table = [] {
    MemberTable<Document> t;
    using K = Document;
    t.Property("Name", [](K& s, CallArgs&) { return Variant(s.name_); });
    t.Property("FullName", [](K& s, CallArgs&) {
      return Variant(s.full_name_ == s.name_ ? std::string() : s.full_name_);
    });
    t.Property("Path", [](K& s, CallArgs&) {
      size_t slash = s.full_name_.find_last_of("/\\");
      return Variant(slash == std::string::npos ? std::string() : s.full_name_.substr(0, slash));
    });
    t.Property("Application", [](K& s, CallArgs&) { return Variant(ObjectRef(s.app_->Self())); });
    t.Property("ModelSpace", [](K& s, CallArgs&) { return Variant(s.Ref(s.model_space_)); });
    t.Property("PaperSpace", [](K& s, CallArgs&) { return Variant(s.Ref(s.paper_space())); });
    t.Property("ActiveLayout", [](K& s, CallArgs&) { return Variant(s.Ref(s.active_layout_)); },
               LetActiveLayout, LetActiveLayout);
    t.Property(
        "ActiveSpace",
        [](K& s, CallArgs&) { return Variant(int32_t{s.model_active() ? 1 : 0}); },
        [](K& s, CallArgs&, Variant& v) {
          int32_t space = LongArg(v, {"ActiveSpace", "ActiveSpace"});
          if (space != 0 && space != 1) throw HostError(HostFailure::kInvalidInput);
          s.SetSysVar("TILEMODE", Variant(static_cast<int16_t>(space)));
        });
    t.Property("MSpace", [](K& s, CallArgs&) { return Variant(s.mspace_); },
               [](K& s, CallArgs&, Variant& v) { s.SetMSpace(BoolArg(v, {"MSpace", "MSpace"})); });
    t.Property("ActiveLayer", [](K& s, CallArgs&) { return Variant(s.Ref(s.active_layer_)); },
               LetActiveLayer, LetActiveLayer);
    t.Property("ActiveTextStyle",
               [](K& s, CallArgs&) { return Variant(s.Ref(s.active_text_style_)); });
    RegisterCollections(t);
    t.Method(
        "GetVariable",
        [](K& s, CallArgs& a) { return s.GetSysVar(StringArg(a[0], {"Name", "GetVariable"})); },
        1, 1);
    t.Method(
        "SetVariable",
        [](K& s, CallArgs& a) {
          s.SetSysVar(StringArg(a[0], {"Name", "SetVariable"}), a[1]);
          return Variant();
        },
        2, 2);
    t.Method(
        "SendCommand",
        [](K& s, CallArgs& a) {
          s.SendCommand(StringArg(a[0], {"Command", "SendCommand"}));
          return Variant();
        },
        1, 1);
    t.Method("StartUndoMark", [](K& s, CallArgs&) {
      s.StartUndoMark();
      return Variant();
    });
    t.Method("EndUndoMark", [](K& s, CallArgs&) {
      s.EndUndoMark();
      return Variant();
    });
    t.Method(
        "HandleToObject",
        [](K& s, CallArgs& a) -> Variant {
          std::string text = StringArg(a[0], {"Handle", "HandleToObject"});
          std::optional<uint64_t> handle = ParseHandle(text);
          DbObject* o = handle ? s.FindByHandle(*handle) : nullptr;
          if (!o) throw HostError(HostFailure::kInvalidHandle);
          return Variant(s.Ref(o));
        },
        1, 1);
    t.Method(
        "ObjectIDToObject",
        [](K& s, CallArgs& a) {
          if (s.id32_only_) throw errors::NotSupported();
          return ObjectFromId(s, a[0], "ObjectIDToObject");
        },
        1, 1);
    t.Method(
        "ObjectIDToObject32",
        [](K& s, CallArgs& a) { return ObjectFromId(s, a[0], "ObjectIDToObject32"); }, 1, 1);
    t.Method("CopyObjects", CopyObjects, 1, 3).Outs({2});
    t.Method("Import", ImportFile, 3, 3);
    t.Method("Regen", [](K&, CallArgs&) { return Variant(); }, 0, 1);
    t.Method(
        "SaveAs",
        [](K& s, CallArgs& a) {
          std::string path = StringArg(a[0], {"FullFileName", "SaveAs"});
          const DrawingFileIo& io = s.application()->file_io();
          if (!io.save) throw HostError(HostFailure::kNotApplicable);
          SaveFormat format;
          if (a.Has(1)) format.version = DxfVersionOfSaveAsType(LongArg(a[1], {"FileType", "SaveAs"}));
          io.save(s, path, format);
          s.set_full_name(path);
          return Variant();
        },
        1, 4);
    t.Method("Save", [](K& s, CallArgs&) {
      const DrawingFileIo& io = s.application()->file_io();
      if (!io.save || s.full_name().empty()) throw HostError(HostFailure::kNotApplicable);
      io.save(s, s.full_name(), SaveFormat{});
      return Variant();
    });
    t.Method(
        "Close",
        [](K& s, CallArgs&) {
          s.app_->CloseDocument(std::static_pointer_cast<Document>(s.shared_from_this()));
          return Variant();
        },
        0, 2);
    t.Method("Activate", [](K& s, CallArgs&) {
      s.app_->Activate(std::static_pointer_cast<Document>(s.shared_from_this()));
      return Variant();
    });
    return t;
  }();
  return table;
}

}  // namespace tovik::host
