// Document.CopyObjects: deep copies of entities beside their originals or
// into a block of this or another drawing, and the IDPairs that say what
// the copy made of each object it met. Document.Import: a DXF file's model
// space merged into this drawing, placed at the insertion point and scaled
// (other kinds the host imports, WMF, SAT and EPS, have no reader in the
// headless host).
#include "host/copying/copy_objects.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "frame/runtime_text.h"
#include "host/copying/clone.h"
#include "host/core/application.h"
#include "host/core/host_error.h"
#include "host/shapes/geometry_members.h"
#include "host/surface/args.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

constexpr std::string_view kMember = "CopyObjects";

// An object ID as the document hands it out: Long_PTR (VT_I8), or a Long
// in an older 32-bit build.
Variant IdValue(const Document& doc, const DbObject* o) {
  return doc.id32_only() ? Variant(o->id()) : Variant(int64_t{o->id()});
}

// The sources: entities of this drawing (not attribute references) that
// share one owner. Checked before anything is copied.
std::vector<Entity*> Sources(Document& doc, const Variant& objects) {
  std::vector<Entity*> sources;
  const DbObject* owner = nullptr;
  for (const ObjectRef& o : ObjectsArg(objects, {"Objects", kMember})) {
    auto* e = AsEntity(o.get());
    if (!e || e->erased() || e->document() != &doc || !e->block()) {
      throw InvalidArgument("Objects", kMember);
    }
    if (owner && e->owner() != owner) throw HostError(HostFailure::kInvalidOwner);
    owner = e->owner();
    sources.push_back(e);
  }
  return sources;
}

// IDPairs: every object the copy met, primary ones first in input order.
Variant IdPairs(Document& doc, std::vector<ClonePair> pairs) {
  std::stable_partition(pairs.begin(), pairs.end(),
                        [](const ClonePair& p) { return p.primary; });
  SafeArray out(VarType::kVariant, 0, static_cast<int32_t>(pairs.size()));
  for (size_t i = 0; i < pairs.size(); ++i) {
    out.Set(static_cast<int32_t>(i), Variant(ObjectRef(std::make_shared<IdPair>(doc, pairs[i]))));
  }
  return Variant(std::move(out));
}

}  // namespace

IdPair::IdPair(Document& doc, const ClonePair& pair)
    : app_(doc.application()->Self()),
      key_(IdValue(doc, pair.key)),
      value_(IdValue(doc, pair.value)),
      key32_(pair.key->id()),
      value32_(pair.value->id()),
      cloned_(pair.cloned),
      primary_(pair.primary) {}

const MemberTable<IdPair>& IdPair::Members() {
  static const MemberTable<IdPair> table = [] {
    MemberTable<IdPair> t;
    t.Property("Key", [](IdPair& s, CallArgs&) { return s.key_; });
    t.Property("Value", [](IdPair& s, CallArgs&) { return s.value_; });
    t.Property("Key32", [](IdPair& s, CallArgs&) { return Variant(s.key32_); });
    t.Property("Value32", [](IdPair& s, CallArgs&) { return Variant(s.value32_); });
    t.Property("IsCloned", [](IdPair& s, CallArgs&) { return Variant(s.cloned_); });
    // A copy is owned by the target (its owner translated); a record
    // mapped onto the target's own keeps its owner.
    t.Property("IsOwnerXlated", [](IdPair& s, CallArgs&) { return Variant(s.cloned_); });
    t.Property("IsPrimary", [](IdPair& s, CallArgs&) { return Variant(s.primary_); });
    t.Property("Application", [](IdPair& s, CallArgs&) { return Variant(s.app_); });
    return t;
  }();
  return table;
}

Variant CopyObjects(Document& doc, CallArgs& a) {
  std::vector<Entity*> sources = Sources(doc, a[0]);
  BlockRecord* target = nullptr;
  // Missing, Nothing or Empty: beside the originals.
  if (a.Has(1) && !a[1].IsNothing() && !a[1].IsEmpty()) {
    target = AsObject<BlockRecord>(ObjectArg(a[1], {"Owner", kMember}).get());
    if (!target || target->erased()) throw InvalidArgument("Owner", kMember);
  }
  // The target drawing's changes are one step of its own undo history.
  Document* into = target ? target->document() : &doc;
  CallScope target_call(into != &doc ? &into->journal() : nullptr);
  CloneSession session(*into);
  std::vector<ObjectRef> copies;
  for (Entity* e : sources) {
    BlockRecord* block = target ? target : e->block();
    Entity* copy = e->CloneInto(block);
    copies.push_back(block->document()->Ref(copy));
  }
  session.TranslateXDataHandles();
  for (ClonePair& pair : session.pairs()) {
    pair.primary = std::find(sources.begin(), sources.end(), pair.key) != sources.end();
  }
  if (a.size() > 2) a[2] = IdPairs(doc, session.pairs());
  return ObjectsValue(copies);
}

namespace {

constexpr std::string_view kImport = "Import";

std::string Extension(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  return ext.empty() ? ext : ext.substr(1);
}

// The file's base point (INSBASE), or the origin.
geometry::Vec3 BasePoint(Document& source) {
  const Variant v = source.GetSysVar("INSBASE");
  if (!v.IsArray()) return {};
  const std::vector<double> d = v.Array().ToDoubles();
  return d.size() >= 3 ? geometry::Vec3{d[0], d[1], d[2]} : geometry::Vec3{};
}

}  // namespace

Variant ImportFile(Document& doc, CallArgs& a) {
  const std::string path = StringArg(a[0], {"FileName", kImport});
  const geometry::Vec3 at = PointArg(a[1], {"InsertionPoint", kImport});
  const double scale = DoubleArg(a[2], {"ScaleFactor", kImport});
  if (!(scale > 0) || !std::isfinite(scale)) throw HostError(HostFailure::kInvalidInput);
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) throw HostError(HostFailure::kFileNotFound);
  const std::string ext = Extension(path);
  if (CaseInsensitiveEqual(ext, "wmf") || CaseInsensitiveEqual(ext, "sat") ||
      CaseInsensitiveEqual(ext, "eps")) {
    // Kinds the host imports but the headless host cannot read.
    throw HostError(HostFailure::kNotApplicable);
  }
  if (!CaseInsensitiveEqual(ext, "dxf")) throw HostError(HostFailure::kInvalidInput);
  const DrawingFileIo& io = doc.application()->file_io();
  if (!io.open) throw HostError(HostFailure::kNotApplicable);
  // The file is read into a drawing of its own that nobody else sees, its
  // entities placed there, then copied over with what they name.
  std::shared_ptr<Document> source = io.open(*doc.application(), path);
  const geometry::Matrix4 place = geometry::Matrix4::Translation(at) *
                                  geometry::Matrix4::Scaling(scale) *
                                  geometry::Matrix4::Translation(-BasePoint(*source));
  std::vector<Entity*> entities;
  for (Entity* e : source->model_space()->entities()) {
    if (!e->erased()) entities.push_back(e);
  }
  // Placed in the file's own drawing, its layer locks lifted meanwhile.
  std::vector<LayerRecord*> locked;
  for (LayerRecord* layer : source->layers().items) {
    if (layer->data().locked) locked.push_back(layer);
    layer->mutable_data().locked = false;
  }
  for (Entity* e : entities) TransformEntity(*e, place, true);
  for (LayerRecord* layer : locked) layer->mutable_data().locked = true;
  CloneSession session(doc);
  for (Entity* e : entities) e->CloneInto(doc.model_space());
  session.TranslateXDataHandles();
  return Variant(ObjectRef());  // Nothing: only a WMF import returns a reference
}

BlockRecord* BlockFromDrawingFile(Document& doc, const std::string& path) {
  const std::string ext = Extension(path);
  const bool drawing_ext = CaseInsensitiveEqual(ext, "dwg") || CaseInsensitiveEqual(ext, "dxf");
  if (!drawing_ext && path.find_first_of("/\\") == std::string::npos) return nullptr;
  std::filesystem::path file(path);
  const std::string name = file.stem().string();
  if (BlockRecord* existing = doc.blocks().Find(name)) return existing;
  std::error_code ec;
  if (!std::filesystem::is_regular_file(file, ec) && CaseInsensitiveEqual(ext, "dwg")) {
    file.replace_extension(".dxf");
  }
  if (!std::filesystem::is_regular_file(file, ec)) throw HostError(HostFailure::kFileNotFound);
  const DrawingFileIo& io = doc.application()->file_io();
  if (!io.open) throw HostError(HostFailure::kNotApplicable);
  std::shared_ptr<Document> source = io.open(*doc.application(), file.string());
  BlockRecord* block = doc.AddBlock(name, BasePoint(*source));
  CloneSession session(doc);
  for (Entity* e : source->model_space()->entities()) {
    if (!e->erased()) e->CloneInto(block);
  }
  session.TranslateXDataHandles();
  return block;
}

}  // namespace tovik::host
