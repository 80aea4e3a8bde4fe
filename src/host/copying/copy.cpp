// Copies of entities inside one drawing and across drawings: properties
// and extended data come along; across drawings the records and blocks
// they name are found by name in the target or brought over.
#include "host/copying/clone.h"

#include <cstdlib>

#include "host/entities/kinds.h"
#include "host/tables/dictionary.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

// Notes a copy or mapping in the session of the drawing copied into.
void Note(DbObject* key, DbObject* value, bool cloned) {
  if (CloneSession* session = value->document()->clone_session()) session->Note(key, value, cloned);
}

template <class R>
RecordTable<R>& TableOf(Document& doc);
template <>
RecordTable<LayerRecord>& TableOf(Document& doc) { return doc.layers(); }
template <>
RecordTable<LinetypeRecord>& TableOf(Document& doc) { return doc.linetypes(); }
template <>
RecordTable<MaterialRecord>& TableOf(Document& doc) { return doc.materials(); }
template <>
RecordTable<TextStyleRecord>& TableOf(Document& doc) { return doc.text_styles(); }
template <>
RecordTable<DimStyleRecord>& TableOf(Document& doc) { return doc.dim_styles(); }

// The record of `into` standing for `source`: one of that name (kept as it
// is, as the host keeps the target's definition), or a copy.
template <class R>
R* ImportRecord(Document& into, R* source) {
  if (!source || source->document() == &into) return source;
  if (CloneSession* session = into.clone_session()) {
    if (DbObject* done = session->Find(source)) return static_cast<R*>(done);
  }
  RecordTable<R>& table = TableOf<R>(into);
  if (R* found = table.Find(source->Name())) {
    Note(source, found, false);
    return found;
  }
  R* copy = into.Create<R>();
  copy->mutable_data() = source->data();
  into.AddRecord(table, copy);
  Note(source, copy, true);
  if constexpr (std::is_same_v<R, LayerRecord>) {
    auto& d = copy->mutable_data();
    d.linetype = ImportRecord(into, d.linetype);
    d.material = ImportRecord(into, d.material);
  }
  return copy;
}

// What a kind's own data names in its drawing, mapped into the copy's.
void ImportKindRecords(Document& into, Entity* copy) {
  switch (copy->Kind()) {
    case EntityKind::kText: {
      auto* t = static_cast<Text*>(copy);
      t->mutable_data().style = ImportRecord(into, t->mutable_data().style);
      break;
    }
    case EntityKind::kAttributeDef: {
      auto* d = static_cast<AttributeDef*>(copy);
      d->mutable_data().style = ImportRecord(into, d->mutable_data().style);
      break;
    }
    case EntityKind::kAttributeRef: {
      auto* r = static_cast<AttributeRef*>(copy);
      r->mutable_data().style = ImportRecord(into, r->mutable_data().style);
      break;
    }
    case EntityKind::kMText: {
      auto* m = static_cast<MText*>(copy);
      m->mutable_data().style = ImportRecord(into, m->mutable_data().style);
      break;
    }
    case EntityKind::kDimension: {
      auto* dim = static_cast<Dimension*>(copy);
      dim->mutable_data().style = ImportRecord(into, dim->mutable_data().style);
      break;
    }
    case EntityKind::kBlockRef: {
      auto* ref = static_cast<BlockRef*>(copy);
      auto& data = ref->mutable_data();
      if (data.block) data.block = ImportBlock(into, data.block);
      if (data.dynamic_source) data.dynamic_source = ImportBlock(into, data.dynamic_source);
      break;
    }
    case EntityKind::kLine:
    case EntityKind::kCircle:
    case EntityKind::kArc:
    case EntityKind::kEllipse:
    case EntityKind::kLwPolyline:
    case EntityKind::kPoint:
    case EntityKind::kHatch:
    case EntityKind::kWipeout:
    case EntityKind::kRasterImage:
    case EntityKind::kGeneric:
      break;  // these kinds name no records of their own
  }
}

}  // namespace

CloneSession::CloneSession(Document& into) : into_(into), outer_(into.clone_session()) {
  into.set_clone_session(this);
}
CloneSession::~CloneSession() { into_.set_clone_session(outer_); }

void CloneSession::Note(DbObject* key, DbObject* value, bool cloned) {
  if (index_.count(key)) return;
  index_.emplace(key, pairs_.size());
  pairs_.push_back({key, value, cloned, false});
}

DbObject* CloneSession::Find(const DbObject* key) const {
  auto it = index_.find(key);
  return it == index_.end() ? nullptr : pairs_[it->second].value;
}

void CloneSession::TranslateXDataHandles() {
  for (const ClonePair& pair : pairs_) {
    if (!pair.cloned || !pair.value->xdata()) continue;
    const Document* from = pair.key->document();
    XData runs = *pair.value->xdata();
    bool changed = false;
    for (XDataRun& run : runs) {
      for (XDataItem& item : run.items) {
        if (item.code != 1005 || !item.value.IsString()) continue;
        const std::string& text = item.value.RawString();
        char* end = nullptr;
        const uint64_t handle = std::strtoull(text.c_str(), &end, 16);
        if (text.empty() || *end != '\0') continue;
        DbObject* target = from ? from->FindByHandle(handle) : nullptr;
        DbObject* copy = target ? Find(target) : nullptr;
        if (!copy || copy == target) continue;
        item.value = Variant(copy->HandleText());
        changed = true;
      }
    }
    if (changed) pair.value->SetXData(std::make_shared<const XData>(std::move(runs)));
  }
}

BlockRecord* ImportBlock(Document& into, const BlockRecord* source) {
  if (source->document() == &into) return const_cast<BlockRecord*>(source);
  if (CloneSession* session = into.clone_session()) {
    if (DbObject* done = session->Find(source)) return static_cast<BlockRecord*>(done);
  }
  auto* key = const_cast<BlockRecord*>(source);
  if (!source->IsAnonymous()) {
    if (BlockRecord* found = into.blocks().Find(source->Name())) {
      Note(key, found, false);
      return found;
    }
  }
  BlockRecord* copy = source->IsAnonymous() ? into.AddAnonymousBlock(source->data().origin)
                                            : into.AddBlock(source->Name(), source->data().origin);
  std::string name = copy->Name();
  copy->mutable_data() = source->data();
  copy->mutable_data().name = std::move(name);
  copy->mutable_data().layout = nullptr;
  // Noted before the contents, so that what they name finds the copy.
  Note(key, copy, true);
  if (BlockRecord* origin = copy->data().dynamic_source) {
    copy->mutable_data().dynamic_source = ImportBlock(into, origin);
  }
  for (const Entity* e : source->entities()) {
    if (!e->erased()) e->CloneInto(copy);
  }
  return copy;
}

void Document::ImportProps(Entity* entity, const Document& from) {
  (void)from;
  EntityProps& p = entity->mutable_props();
  p.layer = ImportRecord(*this, p.layer);
  p.linetype = ImportRecord(*this, p.linetype);
  p.material = ImportRecord(*this, p.material);
  if (p.plot_style) p.plot_style = InternPlotStyle(*p.plot_style);
}

void CopyEntityBase(const Entity& source, Entity* copy) {
  copy->mutable_props() = source.props();
  Document* into = copy->document();
  const bool across = source.document() != into;
  if (across) {
    into->ImportProps(copy, *source.document());
    ImportKindRecords(*into, copy);
  }
  if (const XData* xdata = source.xdata()) {
    XData runs = *xdata;
    if (across) {
      for (XDataRun& run : runs) run.app = into->EnsureRegApp(run.app->Name());
    }
    copy->SetXData(std::make_shared<const XData>(std::move(runs)));
  }
  if (const RawTags* extra = source.extra()) copy->SetExtra(*extra);
  Note(const_cast<Entity*>(&source), copy, true);
}

}  // namespace tovik::host
