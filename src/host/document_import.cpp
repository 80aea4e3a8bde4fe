// Document.Import: a DXF file's model space merged into this drawing,
// placed at the insertion point and scaled. Other kinds the host imports
// (WMF, SAT, EPS) have no reader in the headless host.
#include "host/document_import.h"

#include <cmath>
#include <filesystem>

#include "frame/runtime_text.h"
#include "host/application.h"
#include "host/args.h"
#include "host/clone.h"
#include "host/geometry_members.h"
#include "host/host_error.h"
#include "host/records.h"

namespace tovik::host {
namespace {

constexpr std::string_view kMember = "Import";

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
  const std::string path = StringArg(a[0], {"FileName", kMember});
  const geometry::Vec3 at = PointArg(a[1], {"InsertionPoint", kMember});
  const double scale = DoubleArg(a[2], {"ScaleFactor", kMember});
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
  const DrawingFileIo& io = GetDrawingFileIo();
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
  CloneSession session;
  for (Entity* e : entities) e->CloneInto(doc.model_space());
  session.TranslateXDataHandles();
  return Variant(ObjectRef());  // Nothing: only a WMF import returns a reference
}

}  // namespace tovik::host
