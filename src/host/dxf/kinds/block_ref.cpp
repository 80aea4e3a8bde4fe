// Block references (INSERT, with a multiple insert's grid): read, written
// whole, and the groups patched into the records read.
#include "host/dxf/kinds/kinds.h"

#include "host/dxf/read/loader.h"
#include "host/dxf/write/writer.h"
#include "host/tables/block.h"

namespace tovik::host::dxf {

using geometry::Vec3;

std::shared_ptr<Entity> LoadBlockRef(Loader& loader, const Record& record, const RecordFields& r) {
  auto e = loader.Make<BlockRef>();
  auto& d = e->mutable_data();
  d.block = loader.BlockNamed(r.StringOr(2));
  if (d.block == nullptr && r.StringOr(2).empty()) {
    d.block = loader.EmptyBlockNamed(loader.FreeBlockName("*U"));
    loader.Repair("INSERT " + std::string(record.Handle()) + " names no block: an empty block \"" +
                  d.block->Name() + "\" is made for it");
  }
  if (d.block == nullptr) {
    // The reference and its attributes are kept; the block it names
    // becomes an empty one, so that every copy is a sound drawing.
    d.block = loader.EmptyBlockNamed(r.StringOr(2));
    loader.Repair("INSERT " + std::string(record.Handle()) + " names missing block \"" +
                  std::string(r.StringOr(2)) + "\": an empty block of that name is made");
  }
  d.normal = NormalOf(r);
  d.insertion = Wcs(PointOr(r, 10), d.normal);
  d.scale = {RealOr(r, 41, 1), RealOr(r, 42, 1), RealOr(r, 43, 1)};
  d.rotation = RealOr(r, 50, 0) * kDegToRad;
  d.columns = static_cast<int32_t>(IntOr(r, 70, 1));
  d.rows = static_cast<int32_t>(IntOr(r, 71, 1));
  d.column_spacing = RealOr(r, 44, 0);
  d.row_spacing = RealOr(r, 45, 0);
  return e;
}

void DbWriter::EmitBlockRefGeometry(const BlockRef& o) {
  const auto& d = o.data();
  bool grid = d.columns > 1 || d.rows > 1;
  PutString(100, grid ? "AcDbMInsertBlock" : "AcDbBlockReference");
  bool attributes = false;
  for (const AttributeRef* a : o.attributes()) attributes |= Written(a);
  if (attributes) PutInt(66, 1);
  PutString(2, d.block != nullptr ? d.block->Name() : "");
  PutPoint(10, ToOcs(d.insertion, d.normal));
  if (d.scale.x != 1) PutReal(41, d.scale.x);
  if (d.scale.y != 1) PutReal(42, d.scale.y);
  if (d.scale.z != 1) PutReal(43, d.scale.z);
  if (d.rotation != 0) PutReal(50, d.rotation * kRadToDeg);
  if (grid) {
    PutInt(70, d.columns);
    PutInt(71, d.rows);
    PutReal(44, d.column_spacing);
    PutReal(45, d.row_spacing);
  }
  PutNormal(d.normal);
}

void ModelledBlockRef(const BlockRef& o, ModelledGroups& g) {
  const auto& d = o.data();
  if (d.block) g.Text(2, d.block->Name());
  g.Point(10, ToOcs(d.insertion, d.normal));
  if (d.scale.x != 1) g.Real(41, d.scale.x);
  if (d.scale.y != 1) g.Real(42, d.scale.y);
  if (d.scale.z != 1) g.Real(43, d.scale.z);
  if (d.rotation != 0) g.Real(50, d.rotation * kRadToDeg);
}

}  // namespace tovik::host::dxf
