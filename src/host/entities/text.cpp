// Members of single-line text, attribute definitions and references, and
// multiline text.
#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/entities/kinds.h"
#include "host/surface/member_helpers.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

// Members every single-line text kind has.
template <class K>
void RegisterTextMembers(MemberTable<K>& t) {
  t.Property("TextString", GetStringField<K, &K::Data::text>,
             LetStringField<K, &K::Data::text, "TextString">);
  t.Property("Height", GetDoubleField<K, &K::Data::height>,
             LetDoubleField<K, &K::Data::height, "Height", Check::kPositive>);
  t.Property("ScaleFactor", GetDoubleField<K, &K::Data::width_factor>,
             LetDoubleField<K, &K::Data::width_factor, "ScaleFactor", Check::kPositive>);
  t.Property("Rotation", GetDoubleField<K, &K::Data::rotation>,
             LetDoubleField<K, &K::Data::rotation, "Rotation">);
  t.Property("ObliqueAngle", GetDoubleField<K, &K::Data::oblique>,
             [](K& s, CallArgs&, Variant& v) {
               double a = DoubleArg(v, {"ObliqueAngle", "ObliqueAngle"});
               // Within ±85 degrees.
               if (!(std::fabs(a) <= 85.0 * std::numbers::pi / 180.0 + 1e-12)) {
                 throw HostError(HostFailure::kInvalidInput);
               }
               s.Touch();
               s.mutable_data().oblique = a;
             });
  t.Property(
      "StyleName", [](K& s, CallArgs&) { return Variant(s.data().style->Name()); },
      [](K& s, CallArgs&, Variant& v) {
        std::string name = StringArg(v, {"StyleName", "StyleName"});
        TextStyleRecord* style = s.document()->text_styles().Find(name);
        if (!style) throw HostError(HostFailure::kKeyNotFound);
        s.Touch();
        s.mutable_data().style = style;
      });
  t.Property(
      "Alignment", [](K& s, CallArgs&) { return Variant(s.data().alignment_mode); },
      [](K& s, CallArgs&, Variant& v) {
        int32_t mode = LongArg(v, {"Alignment", "Alignment"});
        if (mode < 0 || mode > 14) throw HostError(HostFailure::kInvalidInput);
        s.Touch();
        auto& d = s.mutable_data();
        // Leaving Left: the anchor starts where the insertion point was.
        if (d.alignment_mode == 0 && mode != 0) d.alignment = d.insertion;
        d.alignment_mode = mode;
      });
  t.Property(
      "InsertionPoint", GetPointField<K, &K::Data::insertion>,
      [](K& s, CallArgs&, Variant& v) {
        geometry::Vec3 p = PointArg(v, {"InsertionPoint", "InsertionPoint"});
        int32_t mode = s.data().alignment_mode;
        // Writable only for Left, Aligned and Fit; derived for the others.
        if (mode != 0 && mode != 3 && mode != 5) throw HostError(HostFailure::kNotApplicable);
        s.Touch();
        s.mutable_data().insertion = p;
      });
  t.Property(
      "TextAlignmentPoint",
      [](K& s, CallArgs&) {
        // Reads (0,0,0) for Left.
        return PointValue(s.data().alignment_mode == 0 ? geometry::Vec3{} : s.data().alignment);
      },
      [](K& s, CallArgs&, Variant& v) {
        geometry::Vec3 p = PointArg(v, {"TextAlignmentPoint", "TextAlignmentPoint"});
        if (s.data().alignment_mode == 0) throw HostError(HostFailure::kNotApplicable);
        s.Touch();
        s.mutable_data().alignment = p;
        // The text is placed around its anchor: the insertion point follows.
        if (s.data().alignment_mode != 3 && s.data().alignment_mode != 5) {
          s.mutable_data().insertion = p;
        }
      });
  t.Property("UpsideDown", GetBoolField<K, &K::Data::upside_down>,
             LetBoolField<K, &K::Data::upside_down, "UpsideDown">);
  t.Property("Backward", GetBoolField<K, &K::Data::backward>,
             LetBoolField<K, &K::Data::backward, "Backward">);
  AddNormalMember(t);
  AddThicknessMember(t);
}

template <class K, int32_t Bit>
Variant GetModeBit(K& s, CallArgs&) {
  return Variant((s.data().mode & Bit) != 0);
}
template <class K, int32_t Bit>
void LetModeBit(K& s, CallArgs&, Variant& v) {
  bool on = BoolArg(v, {"Mode", "Mode"});
  s.Touch();
  if (on) {
    s.mutable_data().mode |= Bit;
  } else {
    s.mutable_data().mode &= ~Bit;
  }
}

template <class K>
void RegisterAttributeMembers(MemberTable<K>& t, bool constant_writable) {
  t.Property("TagString", GetStringField<K, &K::Data::tag>, [](K& s, CallArgs&, Variant& v) {
    std::string tag = StringArg(v, {"TagString", "TagString"});
    if (tag.empty() || tag.find_first_of(" !") != std::string::npos) {
      throw HostError(HostFailure::kInvalidInput);
    }
    s.Touch();
    s.mutable_data().tag = UCase(tag);
  });
  t.Property("Invisible", GetModeBit<K, kAttInvisible>, LetModeBit<K, kAttInvisible>);
  if (constant_writable) {
    t.Property("Constant", GetModeBit<K, kAttConstant>, LetModeBit<K, kAttConstant>);
  } else {
    t.Property("Constant", GetModeBit<K, kAttConstant>);
  }
  t.Property("Verify", GetModeBit<K, kAttVerify>, LetModeBit<K, kAttVerify>);
  t.Property("Preset", GetModeBit<K, kAttPreset>, LetModeBit<K, kAttPreset>);
  t.Property("LockPosition", GetModeBit<K, kAttLockPosition>,
             LetModeBit<K, kAttLockPosition>);
  t.Property("MTextAttribute", GetModeBit<K, kAttMultipleLine>,
             LetModeBit<K, kAttMultipleLine>);
}

}  // namespace

const MemberTable<Text>& Text::Members() {
  static const MemberTable<Text> table = [] {
    MemberTable<Text> t;
    RegisterTextMembers(t);
    return t;
  }();
  return table;
}

const MemberTable<AttributeDef>& AttributeDef::Members() {
  static const MemberTable<AttributeDef> table = [] {
    MemberTable<AttributeDef> t;
    using K = AttributeDef;
    RegisterTextMembers(t);
    RegisterAttributeMembers(t, true);
    t.Property("PromptString", GetStringField<K, &K::Data::prompt>,
               LetStringField<K, &K::Data::prompt, "PromptString">);
    t.Property("Mode", [](K& s, CallArgs&) { return Variant(s.data().mode); },
               [](K& s, CallArgs&, Variant& v) {
                 int32_t mode = LongArg(v, {"Mode", "Mode"});
                 if (mode < 0 || mode > 63) throw HostError(HostFailure::kInvalidInput);
                 s.Touch();
                 s.mutable_data().mode = mode;
               });
    return t;
  }();
  return table;
}

const MemberTable<AttributeRef>& AttributeRef::Members() {
  static const MemberTable<AttributeRef> table = [] {
    MemberTable<AttributeRef> t;
    RegisterTextMembers(t);
    RegisterAttributeMembers(t, false);
    return t;
  }();
  return table;
}

void AttributeRef::Delete() {
  // Attribute references go with their block reference only.
  throw HostError(HostFailure::kNotApplicable);
}

const MemberTable<MText>& MText::Members() {
  static const MemberTable<MText> table = [] {
    MemberTable<MText> t;
    using K = MText;
    t.Property("TextString", GetStringField<K, &K::Data::text>,
               LetStringField<K, &K::Data::text, "TextString">);
    t.Property("InsertionPoint", GetPointField<K, &K::Data::insertion>,
               LetPointField<K, &K::Data::insertion, "InsertionPoint">);
    t.Property("Height", GetDoubleField<K, &K::Data::height>,
               LetDoubleField<K, &K::Data::height, "Height", Check::kPositive>);
    t.Property("Width", GetDoubleField<K, &K::Data::width>,
               LetDoubleField<K, &K::Data::width, "Width", Check::kNonNegative>);
    t.Property("Rotation", GetDoubleField<K, &K::Data::rotation>,
               LetDoubleField<K, &K::Data::rotation, "Rotation">);
    t.Property("AttachmentPoint", [](K& s, CallArgs&) { return Variant(s.data().attachment); },
               [](K& s, CallArgs&, Variant& v) {
                 int32_t a = LongArg(v, {"AttachmentPoint", "AttachmentPoint"});
                 if (a < 1 || a > 9) throw HostError(HostFailure::kInvalidInput);
                 s.Touch();
                 s.mutable_data().attachment = a;
               });
    t.Property("StyleName", [](K& s, CallArgs&) { return Variant(s.data().style->Name()); },
               [](K& s, CallArgs&, Variant& v) {
                 std::string name = StringArg(v, {"StyleName", "StyleName"});
                 TextStyleRecord* style = s.document()->text_styles().Find(name);
                 if (!style) throw HostError(HostFailure::kKeyNotFound);
                 s.Touch();
                 s.mutable_data().style = style;
               });
    AddNormalMember(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
