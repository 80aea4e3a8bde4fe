// Dynamic blocks: the parameters of a dynamic block definition (objects of
// the BLOCK...PARAMETER kinds in its evaluation graph) become the property
// list of the definition and of every reference to it or to one of its
// anonymous copies. Covered: visibility (the states as allowed values, the
// first as value), rotation (angle), linear, polar and XY (distance), flip
// and lookup (integer/string); others appear by name with a Double value.
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
    p.units_type = 1;
    p.value = Variant(0.0);
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
  std::unordered_map<BlockRecord*, std::vector<DynamicProperty>> found;
  for (const Record& r : objects->records) {
    std::string_view type = r.type;
    if (!type.starts_with("BLOCK") || !type.ends_with("PARAMETER") || type == "BLOCKBASEPOINTPARAMETER") {
      continue;
    }
    // Parameter -> evaluation graph -> extension dictionary -> block record.
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
    if (block == nullptr) continue;
    DynamicProperty p = PropertyOf(r, doc_);
    if (!p.name.empty()) found[block].push_back(std::move(p));
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
  // A reference's own visibility state, from the record the host program
  // keeps it in (code 1 of the parameter's XRECORD), when it is one of the
  // states.
  for (BlockRecord* block : doc_.blocks().items) {
    for (Entity* e : block->entities()) {
      auto* ref = As<BlockRef>(e);
      if (ref == nullptr || !ref->IsDynamic()) continue;
      for (DynamicProperty& p : ref->mutable_data().dynamic_properties) {
        if (p.allowed_values.empty() || !p.value.IsString()) continue;
        const XRecord* record = EnhancedBlockData(*ref, p.node);
        if (record == nullptr) continue;
        const auto& d = record->data();
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
