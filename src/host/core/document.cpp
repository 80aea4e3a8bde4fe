#include "host/core/document.h"

#include <algorithm>

#include "host/core/application.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/input/utility.h"
#include "host/selection/selection_set.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/records.h"

namespace tovik::host {

void InitSysVars(Document& doc);

UserInput UserInput::Pick(std::shared_ptr<Entity> entity, const geometry::Vec3& p,
                          std::vector<std::shared_ptr<Entity>> containers) {
  UserInput input;
  input.kind = Kind::kPick;
  input.point = p;
  input.entity = std::move(entity);
  input.containers = std::move(containers);
  return input;
}

Document::Document(Application* app, std::string name, bool id32_only)
    : app_(app),
      name_(name),
      full_name_(std::move(name)),
      id32_only_(id32_only),
      id_base_(app ? app->NextIdBase() : kObjectIdBase32) {}

Document::~Document() {
  for (auto& object : objects_) object->doc_ = nullptr;
}

void Document::Initialize() {
  CreateStandardContents();
  InitSysVars(*this);
  // The standard contents are not an undoable step.
  journal_ = Journal();
}

void Document::set_full_name(std::string full_name) {
  full_name_ = std::move(full_name);
  size_t slash = full_name_.find_last_of("/\\");
  name_ = slash == std::string::npos ? full_name_ : full_name_.substr(slash + 1);
}

void Document::Close() {
  if (closed_) return;
  closed_ = true;
  for (auto& object : objects_) object->doc_ = nullptr;
  selection_sets_.clear();
}

Variant Document::Invoke(DispId id, InvokeKind kind, std::span<Variant> args) {
  if (closed_ && Members().NameOf(id) != "Name") throw HostError(HostFailure::kNoDocument);
  CallScope scope(closed_ ? nullptr : &journal_);
  return DispatchObject<Document>::Invoke(id, kind, args);
}

// ----------------------------------------------------------- registry

void Document::Register(std::shared_ptr<DbObject> object, uint64_t handle) {
  if (handle == 0) handle = next_handle_;
  if (by_handle_.Find(handle) != nullptr) throw HostError(HostFailure::kInvalidHandle);
  size_t slot = objects_.size();
  object->doc_ = this;
  object->handle_ = handle;
  object->id_ = id_base_ + kObjectIdStride * static_cast<int32_t>(slot);
  by_handle_.Insert(handle, object.get());
  next_handle_ = std::max(next_handle_, handle + 1);
  DbObject* raw = object.get();
  objects_.push_back(std::move(object));
  journal_.Record([this, raw] {
    raw->erased_ = true;
    NoteChanged(raw);
  });
  NoteChanged(raw);
}

void Document::ReassignHandle(DbObject* object, uint64_t handle) {
  if (object->handle_ == handle) return;
  if (handle == 0 || by_handle_.Find(handle) != nullptr) throw HostError(HostFailure::kInvalidHandle);
  by_handle_.Erase(object->handle_);
  object->handle_ = handle;
  by_handle_.Insert(handle, object);
  next_handle_ = std::max(next_handle_, handle + 1);
}

DbObject* Document::FindByHandle(uint64_t handle) const {
  DbObject* object = by_handle_.Find(handle);
  return object == nullptr || object->erased() ? nullptr : object;
}

DbObject* Document::FindById(int64_t id) const {
  int64_t offset = id - id_base_;
  if (offset < 0 || offset % kObjectIdStride != 0) return nullptr;
  size_t slot = static_cast<size_t>(offset / kObjectIdStride);
  if (slot >= objects_.size() || objects_[slot]->erased()) return nullptr;
  return objects_[slot].get();
}

void Document::set_handle_seed(uint64_t seed) {
  if (seed < next_handle_) throw HostError(HostFailure::kInvalidHandle);
  next_handle_ = seed;
}

std::shared_ptr<DbObject> Document::Ref(const DbObject* object) const {
  if (!object) return nullptr;
  size_t slot = static_cast<size_t>((object->id_ - id_base_) / kObjectIdStride);
  return objects_.at(slot);
}

// ------------------------------------------------------ standard contents

void Document::CreateStandardContents() {
  auto add_linetype = [&](const char* name, const char* description) {
    auto* lt = Create<LinetypeRecord>();
    lt->mutable_data().name = name;
    lt->mutable_data().description = description;
    AddRecord(linetypes_, lt);
    return lt;
  };
  byblock_linetype_ = add_linetype("ByBlock", "");
  bylayer_linetype_ = add_linetype("ByLayer", "");
  continuous_linetype_ = add_linetype("Continuous", "Solid line");
  for (const char* name : {"ByLayer", "ByBlock", "Global"}) {
    auto* m = Create<MaterialRecord>();
    m->mutable_data().name = name;
    AddRecord(materials_, m);
  }
  bylayer_material_ = materials_.items[0];
  auto* layer0 = Create<LayerRecord>();
  layer0->mutable_data().name = "0";
  layer0->mutable_data().linetype = continuous_linetype_;
  layer0->mutable_data().material = materials_.items[2];
  AddRecord(layers_, layer0);
  active_layer_ = layer0;
  auto* standard = Create<TextStyleRecord>();
  standard->mutable_data().name = "Standard";
  standard->mutable_data().font_file = "txt";
  AddRecord(text_styles_, standard);
  active_text_style_ = standard;
  auto* acad = Create<RegApp>();
  acad->mutable_data().name = "ACAD";
  AddRecord(regapps_, acad);
  auto* dim = Create<DimStyleRecord>();
  dim->mutable_data().name = "Standard";
  AddRecord(dim_styles_, dim);
  named_objects_ = Create<Dictionary>();

  auto add_layout = [&](const char* layout_name, const char* block_name, int order) {
    auto* block = Create<BlockRecord>();
    block->mutable_data().name = block_name;
    AddRecord(blocks_, block);
    auto* layout = Create<Layout>();
    layout->mutable_data().name = layout_name;
    layout->mutable_data().block = block;
    layout->mutable_data().tab_order = order;
    block->mutable_data().layout = layout;
    AddRecord(layouts_, layout);
    return layout;
  };
  Layout* model = add_layout("Model", "*Model_Space", 0);
  model_space_ = model->data().block;
  paper_layout_ = add_layout("Layout1", "*Paper_Space", 1);
  add_layout("Layout2", "*Paper_Space0", 2);
  active_layout_ = model;
}

// ------------------------------------------------------- current state

BlockRecord* Document::paper_space() const { return paper_layout_->data().block; }

bool Document::model_active() const { return active_layout_->data().block == model_space_; }

BlockRecord* Document::current_space() const {
  if (model_active() || mspace_) return model_space_;
  return paper_space();
}

void Document::SetMSpace(bool on) {
  if (model_active()) throw HostError(HostFailure::kNotApplicable);
  bool old = mspace_;
  mspace_ = on;
  Record([this, old] { mspace_ = old; });
}

void Document::SetActiveLayer(LayerRecord* layer) {
  if (layer->data().frozen) throw HostError(HostFailure::kInvalidLayer);
  LayerRecord* old = active_layer_;
  active_layer_ = layer;
  Record([this, old] { active_layer_ = old; });
}

void Document::InitEntity(Entity* entity) {
  EntityProps& p = entity->mutable_props();
  p.layer = active_layer_;
  p.linetype = bylayer_linetype_;
  p.material = bylayer_material_;
}

const std::string* Document::InternPlotStyle(std::string_view name) {
  if (name == "ByLayer") return nullptr;
  return &*plot_styles_.emplace(name).first;
}

RegApp* Document::EnsureRegApp(std::string_view name) {
  if (RegApp* app = regapps_.Find(name)) return app;
  auto* app = Create<RegApp>();
  app->mutable_data().name = std::string(name);
  AddRecord(regapps_, app);
  return app;
}

BlockRecord* Document::AddBlock(std::string name, const geometry::Vec3& origin) {
  auto* block = Create<BlockRecord>();
  block->mutable_data().name = std::move(name);
  block->mutable_data().origin = origin;
  AddRecord(blocks_, block);
  return block;
}

BlockRecord* Document::AddAnonymousBlock(const geometry::Vec3& origin) {
  std::string name;
  do {
    name = "*U" + std::to_string(next_anonymous_block_++);
  } while (blocks_.Find(name));
  return AddBlock(std::move(name), origin);
}

// ------------------------------------------------------------ queries

bool Document::LayerInUse(const LayerRecord* layer) const {
  for (const BlockRecord* block : blocks_.items) {
    for (const Entity* e : block->entities()) {
      if (e->props().layer == layer) return true;
      if (const auto* ref = As<BlockRef>(e)) {
        for (const AttributeRef* att : ref->attributes()) {
          if (!att->erased() && att->props().layer == layer) return true;
        }
      }
    }
  }
  return false;
}

bool Document::BlockReferenced(const BlockRecord* block) const {
  for (const BlockRecord* b : blocks_.items) {
    for (const Entity* e : b->entities()) {
      const auto* ref = As<BlockRef>(e);
      if (ref && ref->data().block == block) return true;
    }
  }
  return false;
}

UserInput Document::NextInput() {
  if (input_.empty()) return UserInput::Cancel();
  UserInput input = std::move(input_.front());
  input_.pop_front();
  return input;
}

std::shared_ptr<Utility> Document::utility() {
  if (!utility_) utility_ = std::make_shared<Utility>(this);
  return utility_;
}

SelectionSet* Document::pickfirst() {
  if (!pickfirst_) pickfirst_ = std::make_shared<SelectionSet>(this, "PICKFIRST");
  return pickfirst_.get();
}

}  // namespace tovik::host
