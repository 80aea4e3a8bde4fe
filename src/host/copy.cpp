// Copies of entities inside one drawing and across drawings (Copy,
// CopyObjects): properties and extended data come along; across drawings
// the layers, linetypes, materials and applications they name are found or
// created by name.
#include "host/clone.h"
#include "host/records.h"

namespace tovik::host {
namespace {

template <class R>
R* FindOrCopy(Document& into, RecordTable<R>& table, const R* source) {
  if (!source) return nullptr;
  if (R* found = table.Find(source->Name())) return found;
  R* copy = into.Create<R>();
  copy->mutable_data() = source->data();
  into.AddRecord(table, copy);
  return copy;
}

}  // namespace

void Document::ImportProps(Entity* entity, const Document& from) {
  (void)from;
  EntityProps& p = entity->mutable_props();
  LayerRecord* layer = FindOrCopy(*this, layers_, p.layer);
  if (layer != p.layer && layer->data().linetype &&
      layer->data().linetype->document() != this) {
    layer->mutable_data().linetype =
        FindOrCopy(*this, linetypes_, layer->data().linetype);
    layer->mutable_data().material = materials_.Find("Global");
  }
  p.layer = layer;
  p.linetype = FindOrCopy(*this, linetypes_, p.linetype);
  p.material = FindOrCopy(*this, materials_, p.material);
  if (p.plot_style) p.plot_style = InternPlotStyle(*p.plot_style);
}

void CopyEntityBase(const Entity& source, Entity* copy) {
  copy->mutable_props() = source.props();
  Document* into = copy->document();
  if (source.document() != into) into->ImportProps(copy, *source.document());
  if (const XData* xdata = source.xdata()) {
    XData runs = *xdata;
    if (source.document() != into) {
      for (XDataRun& run : runs) run.app = into->EnsureRegApp(run.app->Name());
    }
    copy->SetXData(std::make_shared<const XData>(std::move(runs)));
  }
  if (const RawTags* extra = source.extra()) copy->SetExtra(*extra);
}

}  // namespace tovik::host
