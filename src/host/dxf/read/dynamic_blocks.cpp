// Dynamic blocks: the parameters of a dynamic block definition (objects of
// the BLOCK...PARAMETER kinds in its evaluation graph) become the property
// list of the definition and of every reference to it or to one of its
// anonymous copies. Covered: visibility (the states as allowed values, the
// first as value), rotation (angle, with the entities its rotate actions
// turn), linear, polar and XY (distance), flip and lookup (integer/string);
// others appear by name with a Double value.
#include <cmath>
#include <optional>
#include <span>
#include <unordered_map>

#include "host/dxf/binding.h"
#include "host/dxf/read/loader.h"
#include "host/tables/dictionary.h"

namespace tovik::host::dxf {
namespace {

// The property a parameter record gives; its name is the 300 of
// AcDbBlockElement.
DynamicProperty PropertyOf(const Record& r, Document& doc) {
  DynamicProperty p;
  std::string_view type = r.type;
  if (auto expr = r.Subclass("AcDbEvalExpr")) {
    for (const Tag& t : *expr) {
      if (t.code == 90) {
        p.node = static_cast<int32_t>(t.integer);
        break;
      }
    }
  }
  if (auto element = r.Subclass("AcDbBlockElement")) {
    for (const Tag& t : *element) {
      if (t.code == 300) {
        p.name = std::string(t.text);
        break;
      }
    }
  }
  if (type == "BLOCKVISIBILITYPARAMETER") {
    if (auto sub = r.Subclass("AcDbBlockVisibilityParameter")) {
      // 331: the governed entities; then per state 303 its name and 332
      // the entities it shows.
      auto entity = [&](const Tag& t) { return AsEntity(doc.FindByHandle(HandleValue(&t))); };
      for (const Tag& t : *sub) {
        if (t.code == 303) {
          p.allowed_values.emplace_back(std::string(t.text));
          p.shown.emplace_back();
        }
        if (t.code == 302) p.description = std::string(t.text);
        if (t.code == 331) {
          if (const Entity* e = entity(t)) p.governed.push_back(e);
        }
        if (t.code == 332 && !p.shown.empty()) {
          if (const Entity* e = entity(t)) p.shown.back().push_back(e);
        }
      }
    }
    p.value = p.allowed_values.empty() ? Variant(std::string()) : p.allowed_values.front();
  } else if (type == "BLOCKROTATIONPARAMETER") {
    // The definition is drawn at the angle from its unturned end (1011 of
    // AcDbBlockRotationParameter) to its end point (1011 of the two-point
    // parameter), about the base point (1010).
    p.units_type = 1;
    auto point = [](std::optional<std::span<const Tag>> tags, int code) {
      geometry::Vec3 out;
      if (!tags) return out;
      for (const Tag& t : *tags) {
        if (t.code == code) out.x = t.real;
        if (t.code == code + 10) out.y = t.real;
        if (t.code == code + 20) out.z = t.real;
      }
      return out;
    };
    auto two_point = r.Subclass("AcDbBlock2PtParameter");
    geometry::Vec3 base = point(two_point, 1010), end = point(two_point, 1011) - base;
    geometry::Vec3 unturned = point(r.Subclass("AcDbBlockRotationParameter"), 1011) - base;
    double angle = std::atan2(end.y, end.x) - std::atan2(unturned.y, unturned.x);
    if (geometry::Length(end) == 0 || geometry::Length(unturned) == 0) angle = 0;
    angle = std::fmod(angle, 2 * geometry::kPi);
    p.drawn_angle = angle < 0 ? angle + 2 * geometry::kPi : angle;
    p.value = Variant(p.drawn_angle);
  } else if (type == "BLOCKLINEARPARAMETER" || type == "BLOCKPOLARPARAMETER" ||
             type == "BLOCKXYPARAMETER") {
    p.units_type = 2;
    p.value = Variant(RealOr(r, 1040, 0));
  } else if (type == "BLOCKFLIPPARAMETER") {
    p.value = Variant(int16_t{0});
  } else if (type == "BLOCKLOOKUPPARAMETER") {
    p.value = Variant(std::string());
  } else {
    p.value = Variant(0.0);
  }
  return p;
}

}  // namespace

void Loader::LoadDynamicProperties() {
  Section* objects = source_.model.FindSection("OBJECTS");
  if (objects == nullptr) return;
  std::unordered_map<uint64_t, const Record*> by_handle;
  for (const Record& r : objects->records) by_handle[HandleOf(r)] = &r;
  // Parameter or action -> evaluation graph -> extension dictionary ->
  // block record.
  auto block_of = [&](const Record& r) {
    uint64_t owner = OwnerOf(r);
    BlockRecord* block = nullptr;
    for (int depth = 0; depth < 4 && owner != 0 && block == nullptr; ++depth) {
      block = AsObject<BlockRecord>(doc_.FindByHandle(owner));
      if (block != nullptr) break;
      if (DbObject* o = doc_.FindByHandle(owner); o != nullptr && o->owner() != nullptr) {
        block = AsObject<BlockRecord>(o->owner());
        if (block != nullptr) break;
      }
      auto it = by_handle.find(owner);
      owner = it == by_handle.end() ? 0 : OwnerOf(*it->second);
    }
    return block;
  };
  std::unordered_map<BlockRecord*, std::vector<DynamicProperty>> found;
  for (const Record& r : objects->records) {
    std::string_view type = r.type;
    if (!type.starts_with("BLOCK") || !type.ends_with("PARAMETER") || type == "BLOCKBASEPOINTPARAMETER") {
      continue;
    }
    BlockRecord* block = block_of(r);
    if (block == nullptr) continue;
    DynamicProperty p = PropertyOf(r, doc_);
    if (!p.name.empty()) found[block].push_back(std::move(p));
  }
  // Rotate actions: the entities they turn (330 of AcDbBlockAction) go to
  // the rotation parameter whose node they take the angle from (94).
  for (const Record& r : objects->records) {
    if (r.type != "BLOCKROTATEACTION") continue;
    BlockRecord* block = block_of(r);
    auto properties = found.find(block);
    auto action = r.Subclass("AcDbBlockAction");
    auto rotation = r.Subclass("AcDbBlockRotationAction");
    if (properties == found.end() || !action || !rotation) continue;
    int32_t node = 0;
    for (const Tag& t : *rotation) {
      if (t.code == 94) node = static_cast<int32_t>(t.integer);
    }
    for (DynamicProperty& p : properties->second) {
      if (p.node != node || p.units_type != 1) continue;
      for (const Tag& t : *action) {
        if (t.code != 330) continue;
        if (const Entity* e = AsEntity(doc_.FindByHandle(HandleValue(&t)))) p.turned.push_back(e);
      }
    }
  }
  for (auto& [block, properties] : found) {
    DynamicProperty origin;
    origin.name = "Origin";
    origin.read_only = true;
    origin.show = false;
    origin.value = Variant(SafeArray::OfDoubles({0.0, 0.0, 0.0}));
    properties.insert(properties.begin(), origin);
    block->mutable_data().dynamic_properties = properties;
  }
  for (BlockRecord* block : doc_.blocks().items) {
    for (Entity* e : block->entities()) {
      auto* ref = As<BlockRef>(e);
      if (ref == nullptr || ref->data().block == nullptr) continue;
      BlockRecord* def = ref->data().block;
      BlockRecord* source = def->IsDynamic() ? def : def->data().dynamic_source;
      if (source == nullptr || !source->IsDynamic()) continue;
      ref->mutable_data().dynamic_source = source;
      ref->mutable_data().dynamic_properties = source->data().dynamic_properties;
    }
  }
}

void Loader::LoadDynamicValues() {
  // A reference's own values, from the record the host program keeps them
  // in (the parameter's XRECORD): a visibility state (code 1) when it is
  // one of the states; a rotation's angle from its points (10: the base,
  // the turned end, the axis, the unturned end), counter-clockwise in
  // [0, 2π).
  for (BlockRecord* block : doc_.blocks().items) {
    for (Entity* e : block->entities()) {
      auto* ref = As<BlockRef>(e);
      if (ref == nullptr || !ref->IsDynamic()) continue;
      for (DynamicProperty& p : ref->mutable_data().dynamic_properties) {
        const XRecord* record = EnhancedBlockData(*ref, p.node);
        if (record == nullptr) continue;
        const auto& d = record->data();
        if (p.units_type == 1) {
          std::vector<RecordPoint> points = RecordPoints(*record);
          if (points.size() < 4) continue;
          geometry::Vec3 turned = points[1].point - points[0].point, unturned = points[3].point - points[0].point;
          double angle = std::atan2(turned.y, turned.x) - std::atan2(unturned.y, unturned.x);
          angle = std::fmod(angle, 2 * geometry::kPi);
          if (angle < 0) angle += 2 * geometry::kPi;
          p.value = Variant(angle);
          continue;
        }
        if (p.allowed_values.empty() || !p.value.IsString()) continue;
        for (size_t k = 0; k < d.codes.size(); ++k) {
          if (d.codes[k] != 1) continue;
          for (const Variant& state : p.allowed_values) {
            if (state.SameAs(d.values[k])) p.value = state;
          }
        }
      }
    }
  }
}

}  // namespace tovik::host::dxf
