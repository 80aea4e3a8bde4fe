#include "host/tables/records.h"

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/surface/member_helpers.h"
#include "host/tables/block.h"

namespace tovik::host {

bool IsValidSymbolName(std::string_view name) {
  if (name.empty() || name.size() > 255) return false;
  return name.find_first_of("<>/\\\":;?*|,=`") == std::string_view::npos;
}

namespace {

// Renames a record of `table`; a clash raises Duplicate record name.
template <class R>
void Rename(R& s, RecordTable<R>& table, const Variant& v) {
  std::string name = StringArg(v, {"Name", "Name"});
  if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
  R* other = table.Find(name);
  if (other && other != &s) throw HostError(HostFailure::kDuplicateRecordName);
  s.Touch();
  s.mutable_data().name = name;
}

bool AnyEntity(Document& doc, const std::function<bool(const Entity&)>& test) {
  for (BlockRecord* block : doc.blocks().items) {
    for (const Entity* e : block->entities()) {
      if (test(*e)) return true;
    }
  }
  return false;
}

template <class R>
void EraseRecord(R& s, RecordTable<R>& table) {
  s.CheckLive();
  s.document()->RemoveRecord(table, &s);
  s.DbObject::Erase();
}

}  // namespace

// ----------------------------------------------------------------- layer

void LayerRecord::Delete() {
  CheckLive();
  Document& doc = *doc_;
  if (data_.name == "0" || CaseInsensitiveEqual(data_.name, "DEFPOINTS") ||
      doc.active_layer() == this || doc.LayerInUse(this)) {
    throw HostError(HostFailure::kObjectReferenced);
  }
  EraseRecord(*this, doc.layers());
}

const MemberTable<LayerRecord>& LayerRecord::Members() {
  static const MemberTable<LayerRecord> table = [] {
    MemberTable<LayerRecord> t;
    using K = LayerRecord;
    t.Property("Name", GetStringField<K, &K::Data::name>, [](K& s, CallArgs&, Variant& v) {
      if (s.data_.name == "0" || CaseInsensitiveEqual(s.data_.name, "DEFPOINTS")) {
        throw HostError(HostFailure::kInvalidInput);
      }
      Rename(s, s.document()->layers(), v);
    });
    t.Property("LayerOn", GetBoolField<K, &K::Data::on>, LetBoolField<K, &K::Data::on, "LayerOn">);
    t.Property("Freeze", GetBoolField<K, &K::Data::frozen>, [](K& s, CallArgs&, Variant& v) {
      bool on = BoolArg(v, {"Freeze", "Freeze"});
      // The current layer cannot be frozen.
      if (on && s.document()->active_layer() == &s) throw HostError(HostFailure::kInvalidLayer);
      s.Touch();
      s.data_.frozen = on;
    });
    t.Property("Lock", GetBoolField<K, &K::Data::locked>, LetBoolField<K, &K::Data::locked, "Lock">);
    t.Property("Plottable", GetBoolField<K, &K::Data::plottable>,
               LetBoolField<K, &K::Data::plottable, "Plottable">);
    t.Property("Description", GetStringField<K, &K::Data::description>,
               LetStringField<K, &K::Data::description, "Description">);
    auto let_color = [](K& s, CallArgs&, Variant& v) {
      CmColor c = ColorArg(v, "TrueColor");
      // A layer has a real colour: ByLayer and ByBlock are refused.
      if (c.method == kColorByLayer || c.method == kColorByBlock) {
        throw HostError(HostFailure::kInvalidInput);
      }
      s.Touch();
      s.data_.color = c;
    };
    t.Property("TrueColor", [](K& s, CallArgs&) { return ColorValue(s.data_.color); }, let_color,
               let_color);
    t.Property("Color", [](K& s, CallArgs&) { return Variant(int32_t{s.data_.color.index}); },
               [](K& s, CallArgs&, Variant& v) {
                 int32_t i = LongArg(v, {"Color", "Color"});
                 if (i < 1 || i > 255) throw HostError(HostFailure::kInvalidInput);
                 s.Touch();
                 s.data_.color = CmColor::Aci(static_cast<int16_t>(i));
               });
    t.Property("Linetype", [](K& s, CallArgs&) { return Variant(s.data_.linetype->Name()); },
               [](K& s, CallArgs&, Variant& v) {
                 std::string name = StringArg(v, {"Linetype", "Linetype"});
                 LinetypeRecord* lt = s.document()->linetypes().Find(name);
                 if (!lt || lt == s.document()->bylayer_linetype() ||
                     lt == s.document()->byblock_linetype()) {
                   throw HostError(HostFailure::kKeyNotFound);
                 }
                 s.Touch();
                 s.data_.linetype = lt;
               });
    t.Property("Lineweight", [](K& s, CallArgs&) { return Variant(int32_t{s.data_.lineweight}); },
               [](K& s, CallArgs&, Variant& v) {
                 int32_t w = LongArg(v, {"Lineweight", "Lineweight"});
                 if (w < -3 || w > 211) throw HostError(HostFailure::kInvalidInput);
                 s.Touch();
                 s.data_.lineweight = static_cast<int16_t>(w);
               });
    t.Property("Material", [](K& s, CallArgs&) { return Variant(s.data_.material->Name()); },
               [](K& s, CallArgs&, Variant& v) {
                 std::string name = StringArg(v, {"Material", "Material"});
                 MaterialRecord* m = s.document()->materials().Find(name);
                 if (!m) throw HostError(HostFailure::kKeyNotFound);
                 s.Touch();
                 s.data_.material = m;
               });
    t.Property("PlotStyleName", GetStringField<K, &K::Data::plot_style>,
               LetStringField<K, &K::Data::plot_style, "PlotStyleName">);
    t.Property("Used", [](K& s, CallArgs&) {
      return Variant(s.document()->active_layer() == &s || s.document()->LayerInUse(&s));
    });
    return t;
  }();
  return table;
}

// -------------------------------------------------------------- linetype

void LinetypeRecord::Delete() {
  CheckLive();
  Document& doc = *doc_;
  bool fixed = this == doc.bylayer_linetype() || this == doc.byblock_linetype() ||
               this == doc.continuous_linetype();
  bool used = AnyEntity(doc, [this](const Entity& e) { return e.props().linetype == this; });
  for (LayerRecord* l : doc.layers().items) used = used || l->data().linetype == this;
  if (fixed || used) throw HostError(HostFailure::kObjectReferenced);
  EraseRecord(*this, doc.linetypes());
}

const MemberTable<LinetypeRecord>& LinetypeRecord::Members() {
  static const MemberTable<LinetypeRecord> table = [] {
    MemberTable<LinetypeRecord> t;
    using K = LinetypeRecord;
    t.Property("Name", GetStringField<K, &K::Data::name>,
               [](K& s, CallArgs&, Variant& v) { Rename(s, s.document()->linetypes(), v); });
    t.Property("Description", GetStringField<K, &K::Data::description>,
               LetStringField<K, &K::Data::description, "Description">);
    return t;
  }();
  return table;
}

// ------------------------------------------------------------ text style

void TextStyleRecord::Delete() {
  CheckLive();
  Document& doc = *doc_;
  bool used = this == doc.active_text_style() || AnyEntity(doc, [this](const Entity& e) {
                if (auto* t = As<Text>(&e)) return t->data().style == this;
                if (auto* m = As<MText>(&e)) return m->data().style == this;
                if (auto* a = As<AttributeDef>(&e)) return a->data().style == this;
                return false;
              });
  if (used || data_.name == "Standard") throw HostError(HostFailure::kObjectReferenced);
  EraseRecord(*this, doc.text_styles());
}

const MemberTable<TextStyleRecord>& TextStyleRecord::Members() {
  static const MemberTable<TextStyleRecord> table = [] {
    MemberTable<TextStyleRecord> t;
    using K = TextStyleRecord;
    // Name is read-only on text styles.
    t.Property("Name", GetStringField<K, &K::Data::name>);
    t.Property("Height", GetDoubleField<K, &K::Data::height>,
               LetDoubleField<K, &K::Data::height, "Height", Check::kNonNegative>);
    t.Property("Width", GetDoubleField<K, &K::Data::width>,
               LetDoubleField<K, &K::Data::width, "Width", Check::kPositive>);
    t.Property("ObliqueAngle", GetDoubleField<K, &K::Data::oblique>,
               LetDoubleField<K, &K::Data::oblique, "ObliqueAngle">);
    t.Property("FontFile", GetStringField<K, &K::Data::font_file>,
               LetStringField<K, &K::Data::font_file, "FontFile">);
    t.Property("BigFontFile", GetStringField<K, &K::Data::big_font_file>,
               LetStringField<K, &K::Data::big_font_file, "BigFontFile">);
    t.Property("LastHeight", GetDoubleField<K, &K::Data::last_height>,
               LetDoubleField<K, &K::Data::last_height, "LastHeight", Check::kPositive>);
    t.Property("TextGenerationFlag",
               [](K& s, CallArgs&) { return Variant(int32_t{s.data_.generation_flags}); },
               [](K& s, CallArgs&, Variant& v) {
                 int32_t f = LongArg(v, {"TextGenerationFlag", "TextGenerationFlag"});
                 if (f & ~6) throw HostError(HostFailure::kInvalidInput);
                 s.Touch();
                 s.data_.generation_flags = static_cast<int16_t>(f);
               });
    t.Method(
        "SetFont",
        [](K& s, CallArgs& a) {
          std::string face = StringArg(a[0], {"Typeface", "SetFont"});
          bool bold = BoolArg(a[1], {"Bold", "SetFont"});
          bool italic = BoolArg(a[2], {"Italic", "SetFont"});
          int32_t charset = LongArg(a[3], {"CharSet", "SetFont"});
          int32_t pitch = LongArg(a[4], {"PitchAndFamily", "SetFont"});
          s.Touch();
          s.data_.typeface = face;
          s.data_.bold = bold;
          s.data_.italic = italic;
          s.data_.charset = charset;
          s.data_.pitch_and_family = pitch;
          if (!face.empty()) s.data_.font_file.clear();
          return Variant();
        },
        5, 5);
    t.Method(
        "GetFont",
        [](K& s, CallArgs& a) {
          a[0] = Variant(s.data_.typeface);
          a[1] = Variant(s.data_.bold);
          a[2] = Variant(s.data_.italic);
          a[3] = Variant(s.data_.charset);
          a[4] = Variant(s.data_.pitch_and_family);
          return Variant();
        },
        5, 5)
        .Outs({0, 1, 2, 3, 4});
    return t;
  }();
  return table;
}

// ------------------------------------------------ material, app, others

void MaterialRecord::Delete() {
  CheckLive();
  Document& doc = *doc_;
  bool used = AnyEntity(doc, [this](const Entity& e) { return e.props().material == this; });
  for (LayerRecord* l : doc.layers().items) used = used || l->data().material == this;
  if (used || doc.materials().items.size() <= 3 || this == doc.bylayer_material() ||
      data_.name == "ByBlock" || data_.name == "Global") {
    throw HostError(HostFailure::kObjectReferenced);
  }
  EraseRecord(*this, doc.materials());
}

const MemberTable<MaterialRecord>& MaterialRecord::Members() {
  static const MemberTable<MaterialRecord> table = [] {
    MemberTable<MaterialRecord> t;
    using K = MaterialRecord;
    t.Property("Name", GetStringField<K, &K::Data::name>,
               [](K& s, CallArgs&, Variant& v) { Rename(s, s.document()->materials(), v); });
    t.Property("Description", GetStringField<K, &K::Data::description>,
               LetStringField<K, &K::Data::description, "Description">);
    return t;
  }();
  return table;
}

void RegApp::Delete() {
  CheckLive();
  Document& doc = *doc_;
  if (data_.name == "ACAD") throw HostError(HostFailure::kObjectReferenced);
  // Refused while any object's extended data uses it.
  for (size_t id = 0; id < doc.object_count(); ++id) {
    DbObject* o = doc.FindById(doc.id_base() + kObjectIdStride * static_cast<int32_t>(id));
    if (!o || !o->xdata()) continue;
    for (const XDataRun& run : *o->xdata()) {
      if (run.app == this) throw HostError(HostFailure::kObjectReferenced);
    }
  }
  EraseRecord(*this, doc.regapps());
}

const MemberTable<RegApp>& RegApp::Members() {
  static const MemberTable<RegApp> table = [] {
    MemberTable<RegApp> t;
    using K = RegApp;
    // Extended data refers to the record, so a rename carries every
    // object's data to the new name.
    t.Property("Name", GetStringField<K, &K::Data::name>, [](K& s, CallArgs&, Variant& v) {
      std::string name = StringArg(v, {"Name", "Name"});
      if (name.size() > 31) throw HostError(HostFailure::kInvalidInput);
      if (s.data_.name == "ACAD") throw HostError(HostFailure::kInvalidInput);
      Rename(s, s.document()->regapps(), v);
    });
    return t;
  }();
  return table;
}

const MemberTable<DimStyleRecord>& DimStyleRecord::Members() {
  static const MemberTable<DimStyleRecord> table = [] {
    MemberTable<DimStyleRecord> t;
    using K = DimStyleRecord;
    t.Property("Name", GetStringField<K, &K::Data::name>,
               [](K& s, CallArgs&, Variant& v) { Rename(s, s.document()->dim_styles(), v); });
    return t;
  }();
  return table;
}

}  // namespace tovik::host
