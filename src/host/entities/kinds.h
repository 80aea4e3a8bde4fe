// The entity kinds. Each keeps its geometry in a plain Data struct (WCS
// points unless a field says OCS; angles in radians) that the DXF mapping
// and the geometry step read and write directly through data() and
// mutable_data() (no undo, no checks: for loaders). Automation changes go
// through the members, which check and record undo.
#ifndef TOVIK_HOST_ENTITIES_KINDS_H_
#define TOVIK_HOST_ENTITIES_KINDS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "geometry/vec3.h"
#include "host/entities/entity.h"
#include "host/tables/block.h"

namespace tovik::host {

class BlockRecord;
class TextStyleRecord;
class DimStyleRecord;

inline constexpr geometry::Vec3 kZAxis{0, 0, 1};

// Declares the typed-data plumbing every kind shares.
#define TOVIK_HOST_ENTITY_KIND(Class, kind_value, type_name, object_name)       \
 public:                                                                       \
  static constexpr EntityKind kKind = EntityKind::kind_value;                  \
  EntityKind Kind() const override { return kKind; }                           \
  std::string_view TypeName() const override { return type_name; }             \
  std::string_view ObjectName() const override { return object_name; }         \
  static const MemberTable<Class>& Members();                                   \
  const Data& data() const { return data_; }                                   \
  Data& mutable_data() { return data_; }                                       \
  Entity* CloneInto(BlockRecord* block) const override {                       \
    return CloneEntity(*this, block);                                          \
  }                                                                            \
                                                                               \
 private:                                                                      \
  Data data_;                                                                  \
                                                                               \
 public:

class Line final : public HostObject<Line, Entity> {
 public:
  struct Data {
    geometry::Vec3 start, end;
    geometry::Vec3 normal = kZAxis;
    double thickness = 0;
  };
  TOVIK_HOST_ENTITY_KIND(Line, kLine, "IAcadLine", "AcDbLine")
};

class Circle final : public HostObject<Circle, Entity> {
 public:
  struct Data {
    geometry::Vec3 center;  // WCS
    double radius = 1;
    geometry::Vec3 normal = kZAxis;
    double thickness = 0;
  };
  TOVIK_HOST_ENTITY_KIND(Circle, kCircle, "IAcadCircle", "AcDbCircle")
};

class Arc final : public HostObject<Arc, Entity> {
 public:
  struct Data {
    geometry::Vec3 center;  // WCS
    double radius = 1;
    double start_angle = 0;  // OCS, [0, 2π)
    double end_angle = 0;
    geometry::Vec3 normal = kZAxis;
    double thickness = 0;
  };
  TOVIK_HOST_ENTITY_KIND(Arc, kArc, "IAcadArc", "AcDbArc")
};

class Ellipse final : public HostObject<Ellipse, Entity> {
 public:
  struct Data {
    geometry::Vec3 center;
    geometry::Vec3 major_axis{1, 0, 0};  // WCS vector
    geometry::Vec3 normal = kZAxis;
    double radius_ratio = 1;
    double start_param = 0;  // DXF 41
    double end_param = geometry::kTwoPi;  // DXF 42
  };
  TOVIK_HOST_ENTITY_KIND(Ellipse, kEllipse, "IAcadEllipse", "AcDbEllipse")
};

class LwPolyline final : public HostObject<LwPolyline, Entity> {
 public:
  struct Vertex {
    geometry::Vec2 point;  // OCS
    double bulge = 0;
    double start_width = 0;
    double end_width = 0;
  };
  struct Data {
    std::vector<Vertex> vertices;
    bool closed = false;
    bool plinegen = false;
    double constant_width = 0;
    double elevation = 0;
    double thickness = 0;
    geometry::Vec3 normal = kZAxis;
  };
  TOVIK_HOST_ENTITY_KIND(LwPolyline, kLwPolyline, "IAcadLWPolyline", "AcDbPolyline")
};

class PointEntity final : public HostObject<PointEntity, Entity> {
 public:
  struct Data {
    geometry::Vec3 position;
    geometry::Vec3 normal = kZAxis;
    double thickness = 0;
  };
  TOVIK_HOST_ENTITY_KIND(PointEntity, kPoint, "IAcadPoint", "AcDbPoint")
};

// What single-line text, attribute definitions and references share.
struct TextData {
  std::string text;
  geometry::Vec3 insertion;  // WCS (DXF 10 is OCS)
  geometry::Vec3 alignment;  // WCS (DXF 11); unused for Left
  double height = 2.5;
  double rotation = 0;
  double width_factor = 1;
  double oblique = 0;
  TextStyleRecord* style = nullptr;
  int32_t alignment_mode = 0;  // acAlignment 0..14
  bool backward = false;
  bool upside_down = false;
  geometry::Vec3 normal = kZAxis;
  double thickness = 0;
};

class Text final : public HostObject<Text, Entity> {
 public:
  using Data = TextData;
  TOVIK_HOST_ENTITY_KIND(Text, kText, "IAcadText", "AcDbText")
};

// Attribute mode bits.
inline constexpr int32_t kAttInvisible = 1;
inline constexpr int32_t kAttConstant = 2;
inline constexpr int32_t kAttVerify = 4;
inline constexpr int32_t kAttPreset = 8;
inline constexpr int32_t kAttLockPosition = 16;
inline constexpr int32_t kAttMultipleLine = 32;

class AttributeDef final : public HostObject<AttributeDef, Entity> {
 public:
  struct Data : TextData {
    std::string tag;
    std::string prompt;
    int32_t mode = 0;
  };
  TOVIK_HOST_ENTITY_KIND(AttributeDef, kAttributeDef, "IAcadAttribute", "AcDbAttributeDefinition")
};

class AttributeRef final : public HostObject<AttributeRef, Entity> {
 public:
  struct Data : TextData {
    std::string tag;
    int32_t mode = 0;
  };
  TOVIK_HOST_ENTITY_KIND(AttributeRef, kAttributeRef, "IAcadAttributeReference", "AcDbAttribute")
  // An attribute reference is deleted with its block reference only.
  void Delete() override;
};

class MText final : public HostObject<MText, Entity> {
 public:
  struct Data {
    std::string text;
    geometry::Vec3 insertion;
    geometry::Vec3 normal = kZAxis;
    double height = 2.5;
    double width = 0;
    double rotation = 0;
    int32_t attachment = 1;  // top left
    int32_t drawing_direction = 1;
    double line_spacing_factor = 1;
    TextStyleRecord* style = nullptr;
    // How a drawing file gave the rotation, so that it is written back in
    // that form: not at all, as an angle (50) or as a direction vector (11).
    enum class DirectionForm : uint8_t { kNone, kAngle, kVector };
    DirectionForm direction_form = DirectionForm::kNone;
  };
  TOVIK_HOST_ENTITY_KIND(MText, kMText, "IAcadMText", "AcDbMText")
};

class XRecord;
class BlockRef;
// The record in which a dynamic block reference keeps its own value of the
// parameter with node `node`, as the host program writes it: the XRECORD
// under that node's number in its extension dictionary's
// AcDbBlockRepresentation / AppDataCache / ACAD_ENHANCEDBLOCKDATA; nullptr
// when there is none.
XRecord* EnhancedBlockData(const BlockRef& ref, int32_t node);
// The points a record holds (code 10 followed by its 20 and 30), in order,
// each with the position of its 10 in the record's data.
struct RecordPoint {
  size_t at = 0;
  geometry::Vec3 point;
};
std::vector<RecordPoint> RecordPoints(const XRecord& record);

class BlockRef final : public HostObject<BlockRef, Entity> {
 public:
  struct Data {
    BlockRecord* block = nullptr;
    geometry::Vec3 insertion;  // WCS
    geometry::Vec3 scale{1, 1, 1};
    double rotation = 0;
    geometry::Vec3 normal = kZAxis;
    // Dynamic blocks: the definition the reference was made from (its
    // EffectiveName) and the properties; empty for a static block.
    BlockRecord* dynamic_source = nullptr;
    std::vector<DynamicProperty> dynamic_properties;
    // Scale contributed by dynamic parameters (1 for static blocks).
    geometry::Vec3 dynamic_scale{1, 1, 1};
    // Multiple insert (MINSERT) grid; 1 x 1 for an ordinary reference.
    int32_t columns = 1;
    int32_t rows = 1;
    double column_spacing = 0;
    double row_spacing = 0;
  };
  static constexpr EntityKind kKind = EntityKind::kBlockRef;
  EntityKind Kind() const override { return kKind; }
  std::string_view TypeName() const override;
  std::string_view ObjectName() const override;
  static const MemberTable<BlockRef>& Members();
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }
  Entity* CloneInto(BlockRecord* block) const override;

  // The attribute references, in order (erased ones included until undo
  // can no longer bring them back).
  const std::vector<AttributeRef*>& attributes() const { return attributes_; }
  // Appends an attribute reference owned by this reference (loaders and
  // InsertBlock); recorded for undo.
  void AppendAttribute(AttributeRef* attribute);
  bool IsDynamic() const { return data_.dynamic_source != nullptr; }
  // Name shown by EffectiveName.
  const std::string& EffectiveName() const;
  void Erase() override;
  void Unerase() override;
  void CheckWritable() const override;

 private:
  Data data_;
  std::vector<AttributeRef*> attributes_;
};

// One loop of a hatch boundary: a closed outline in the hatch's OCS,
// kept as a polyline with bulges (circles and arcs as bulged segments).
struct HatchLoop {
  bool outer = true;
  std::vector<geometry::Vec2> points;
  std::vector<double> bulges;
  int32_t flags = 0;  // DXF 92
};

class Hatch final : public HostObject<Hatch, Entity> {
 public:
  struct Data {
    int32_t pattern_type = 1;  // UserDefined 0, PreDefined 1, CustomDefined 2
    std::string pattern_name = "ANSI31";
    bool associative = false;
    int32_t object_type = 0;  // acHatchObject 0, acGradientObject 1
    double pattern_scale = 1;
    double pattern_angle = 0;
    double elevation = 0;
    geometry::Vec3 normal = kZAxis;
    std::vector<HatchLoop> loops;
    int32_t hatch_style = 0;
  };
  TOVIK_HOST_ENTITY_KIND(Hatch, kHatch, "IAcadHatch", "AcDbHatch")
};

// The dimension kinds and their type names.
enum class DimensionKind : uint8_t {
  kRotated, kAligned, kAngular, kAngular3Point, kRadial, kRadialLarge,
  kDiametric, kOrdinate, kArcLength,
};

class Dimension final : public HostObject<Dimension, Entity> {
 public:
  struct Data {
    DimensionKind kind = DimensionKind::kRotated;
    // DXF definition points: 10 dimension line, 11 text, 13/14 extension
    // origins (or 15/16 for radial, angular and arc kinds). WCS.
    geometry::Vec3 p10, p11, p13, p14, p15, p16;
    double rotation = 0;  // DXF 50 (rotated dimensions), radians
    std::string text_override;
    double text_rotation = 0;
    DimStyleRecord* style = nullptr;
    geometry::Vec3 normal = kZAxis;
    BlockRecord* block = nullptr;  // the "*D" picture, if any
  };
  static constexpr EntityKind kKind = EntityKind::kDimension;
  EntityKind Kind() const override { return kKind; }
  std::string_view TypeName() const override;
  std::string_view ObjectName() const override;
  static const MemberTable<Dimension>& Members();
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }
  Entity* CloneInto(BlockRecord* block) const override;  // gives the copy its own picture
  // The measured value: a length in drawing units or an angle in radians.
  double Measurement() const;

 private:
  Data data_;
};

// Wipeouts and raster images: a picture frame placed by its corner and
// its pixel vectors, with an optional clip boundary.
struct ImageData {
  geometry::Vec3 origin;           // DXF 10
  geometry::Vec3 u{1, 0, 0};       // DXF 11: one pixel along the width
  geometry::Vec3 v{0, 1, 0};       // DXF 12: one pixel along the height
  double width_pixels = 1;         // DXF 13
  double height_pixels = 1;
  std::vector<geometry::Vec2> clip;  // DXF 14, pixel coordinates
  std::string image_path;
  int32_t display_flags = 7;
  double rotation = 0;
};

class Wipeout final : public HostObject<Wipeout, Entity> {
 public:
  using Data = ImageData;
  TOVIK_HOST_ENTITY_KIND(Wipeout, kWipeout, "IAcadWipeout", "AcDbWipeout")
};

class RasterImage final : public HostObject<RasterImage, Entity> {
 public:
  using Data = ImageData;
  TOVIK_HOST_ENTITY_KIND(RasterImage, kRasterImage, "IAcadRasterImage", "AcDbRasterImage")
};

// The kinds kept whole without a model of their own geometry beyond
// points: old-style polylines, splines, rays, construction lines,
// viewports, regions, solids... (GenericKind, in kind.h).

class GenericEntity final : public HostObject<GenericEntity, Entity> {
 public:
  struct Data {
    GenericKind kind = GenericKind::kUnknown;
    std::string dxf_name;               // as read ("SPLINE")
    std::vector<geometry::Vec3> points;  // vertices, control or corner points
    std::vector<double> bulges;          // per vertex (2D polylines)
    std::vector<double> reals;           // widths, knots, weights, sizes
    // Splines: the first control_count points are the control points, the
    // rest the fit points; knots (40), weights (41, empty when all are 1)
    // and the degree (71).
    size_t control_count = 0;
    std::vector<double> knots;
    std::vector<double> weights;
    int32_t degree = 3;
    int32_t flags = 0;                   // DXF 70
    bool closed = false;
    geometry::Vec3 normal = kZAxis;
    double thickness = 0;
    double elevation = 0;
  };
  static constexpr EntityKind kKind = EntityKind::kGeneric;
  EntityKind Kind() const override { return kKind; }
  std::string_view TypeName() const override;
  std::string_view ObjectName() const override;
  static const MemberTable<GenericEntity>& Members();
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }
  Entity* CloneInto(BlockRecord* block) const override { return CloneEntity(*this, block); }

 private:
  Data data_;
};

}  // namespace tovik::host

#include "host/copying/clone.h"

#endif  // TOVIK_HOST_ENTITIES_KINDS_H_
