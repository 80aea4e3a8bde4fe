// A block definition (block table record): model space, paper space
// layouts, named and anonymous blocks. Owns the order of its entities.
#ifndef TOVIK_HOST_TABLES_BLOCK_H_
#define TOVIK_HOST_TABLES_BLOCK_H_

#include <cstdint>
#include <string>
#include <vector>

#include "geometry/vec3.h"
#include "host/tables/records.h"

namespace tovik::host {

class Entity;
class Layout;

// A dynamic-block property: a definition carries the list its references
// start with; a reference carries its own values.
struct DynamicProperty {
  std::string name;
  Variant value;
  int32_t units_type = 0;  // acNoUnits 0, acAngular 1, acDistance 2, acArea 3
  bool read_only = false;
  bool show = true;
  std::string description;
  std::vector<Variant> allowed_values;  // empty: any value
  // The parameter's node in the definition's evaluation graph (0: none); a
  // reference keeps its own value of it in its extension dictionary.
  int32_t node = 0;
  // Visibility parameters: the definition's entities the parameter governs,
  // and those shown in each state (in the order of allowed_values); an
  // entity it does not govern is always shown.
  std::vector<const Entity*> governed;
  std::vector<std::vector<const Entity*>> shown;
  // Rotation parameters: the definition's entities their rotate actions
  // turn about the parameter's base point, and the angle the definition
  // itself is drawn at (a copy at angle a turns them by a minus it).
  std::vector<const Entity*> turned;
  double drawn_angle = 0;
};

class BlockRecord final : public HostObject<BlockRecord, NamedRecord> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kBlockRecord;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
    geometry::Vec3 origin;  // base point (DXF BLOCK 10)
    int32_t units = 0;      // AcInsertUnits
    std::string comments;   // DXF BLOCK 4
    bool explodable = true;
    bool is_xref = false;
    std::string xref_path;
    Layout* layout = nullptr;  // set for model space and paper layouts
    // A dynamic block's properties; references inserted from it get a copy.
    std::vector<DynamicProperty> dynamic_properties;
    // An anonymous copy of a dynamic block ("AcDbBlockRepBTag"): the block
    // it was made from.
    BlockRecord* dynamic_source = nullptr;
  };
  std::string_view TypeName() const override;
  std::string_view ObjectName() const override { return "AcDbBlockTableRecord"; }
  static const MemberTable<BlockRecord>& Members();
  const std::string& Name() const override { return data_.name; }
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

  bool IsLayout() const { return data_.layout != nullptr; }
  bool IsModelSpace() const;
  // An anonymous block ("*U..", "*D.." ...): the name starts with '*' and
  // is not a layout.
  bool IsAnonymous() const;
  bool IsDynamic() const { return !data_.dynamic_properties.empty(); }
  // Refused for layouts and referenced blocks; erases the definition and
  // its entities.
  void Delete() override;
  std::vector<Variant> Enumerate() override;

  // Entities in creation (database) order.
  const std::vector<Entity*>& entities() const { return entities_; }
  // Appends `entity` (its owner becomes this block); recorded for undo.
  void Append(Entity* entity);
  // Takes `entity` out of the list (erase); recorded for undo.
  void Detach(Entity* entity);
  // The entities in draw order: the draw-order table's order when the block
  // has one, creation order otherwise.
  std::vector<Entity*> DrawOrder() const;

 private:
  Data data_;
  std::vector<Entity*> entities_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_TABLES_BLOCK_H_
