// The DXF side of each entity kind, one file per kind family in this folder
// (curves, text, block_ref, hatch, dimension, image, generic): how a record
// of the kind becomes a live entity (Load...), how the entity is written
// whole (DbWriter::Emit...Geometry, declared with the writer) and which of
// its groups the host models when it patches the record it read
// (Modelled...). The kind table (host/entities/kind.h) names the kinds and
// their markers; the dispatchers switch over EntityKind: LoadKind in
// read/entities.cpp, DbWriter::EmitEntityGeometry in write/entities.cpp and
// DbWriter::Modelled in write/patch.cpp.
#ifndef TOVIK_HOST_DXF_KINDS_KINDS_H_
#define TOVIK_HOST_DXF_KINDS_KINDS_H_

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/record_fields.h"
#include "geometry/ocs.h"
#include "host/dxf/binding.h"
#include "host/entities/kinds.h"

namespace tovik::host::dxf {

class DbWriter;
class Loader;

// ------------------------------------------------------------ reading
// The normal of an entity record (210), +Z when absent.
template <class Fields>
geometry::Vec3 NormalOf(const Fields& r) {
  return PointOr(r, 210, kZAxis);
}
// A point of an entity's OCS in world coordinates.
inline geometry::Vec3 Wcs(const geometry::Vec3& p, const geometry::Vec3& normal) {
  if (IsZAxis(normal)) return p;
  return geometry::OcsToWcs(p, normal).value_or(p);
}

// A live entity for a record of each kind; nullptr when the record must
// stay as it was read (a reference to a block the file lacks).
std::shared_ptr<Entity> LoadLine(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadCircle(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadArc(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadEllipse(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadPoint(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadLwPolyline(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadText(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadAttributeDef(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadMText(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadBlockRef(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadDimension(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadHatch(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadWipeout(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadRasterImage(Loader& loader, const Record& record, const RecordFields& r);
std::shared_ptr<Entity> LoadGeneric(Loader& loader, const Record& record, const RecordFields& r);
// What text, attribute definitions and attribute references share;
// `vertical_code` is the group of the vertical alignment (73 or 74).
void FillText(const RecordFields& r, TextData& d, Loader& loader, int vertical_code);
// The generic kind of a record of DXF type `type` (polylines by their flags).
GenericKind GenericKindOf(std::string_view type, const RecordFields& r);

// ------------------------------------------------------------ patching
// The groups the host models for an object, gathered as tags in DXF order.
class ModelledGroups {
 public:
  ModelledGroups(DbWriter& writer, std::vector<Tag>* tags) : writer_(writer), tags_(tags) {}
  void Real(int code, double value);
  // x under `code`, y and z under code + 10 and + 20.
  void Point(int code, const geometry::Vec3& p);
  // `text` is viewed, not copied: it is a live object's, which outlives
  // the record being written.
  void Text(int code, const std::string& text);
  void Text(int code, std::string&& text) = delete;
  void Integer(int code, int64_t value);

 private:
  DbWriter& writer_;
  std::vector<Tag>* tags_;
};

// The kind's own groups the host models (after the common properties).
void ModelledLine(const Line& o, ModelledGroups& g);
void ModelledCircle(const Circle& o, ModelledGroups& g);
void ModelledArc(const Arc& o, ModelledGroups& g);
void ModelledPoint(const PointEntity& o, ModelledGroups& g);
void ModelledEllipse(const Ellipse& o, ModelledGroups& g);
// Text, an attribute definition or an attribute reference.
void ModelledText(const Entity& entity, ModelledGroups& g);
void ModelledMText(const MText& o, ModelledGroups& g);
void ModelledBlockRef(const BlockRef& o, ModelledGroups& g);

// What the patcher compares whole and writes anew when it changed.
// Whether the polyline's vertices differ from those of the record.
bool VerticesChanged(const LwPolyline::Data& d, std::span<const Tag> body);
// The text of a multiline text record: its 3 chunks, then its 1.
std::string TextOfRecord(const Record& record);
// True, with the body's range of boundary groups, when the hatch's loops
// differ from those the record holds and must be rewritten.
bool LoopsToRewrite(const Record& record, const Hatch::Data& hatch, size_t* begin, size_t* end);

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_KINDS_KINDS_H_
