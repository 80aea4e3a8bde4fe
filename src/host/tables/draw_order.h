// The draw-order table of a block.
#ifndef TOVIK_HOST_TABLES_DRAW_ORDER_H_
#define TOVIK_HOST_TABLES_DRAW_ORDER_H_

#include <string>
#include <vector>

#include "host/core/db_object.h"

namespace tovik::host {

class BlockRecord;
class Entity;

// IAcadSortentsTable (AcDbSortentsTable): the draw order of one block.
// `order` lists the entities in draw order as last set; entities not in it
// (created later) are drawn above, in creation order.
class SortentsTable final : public HostObject<SortentsTable, DbObject> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kSortentsTable;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    BlockRecord* block = nullptr;
    std::vector<Entity*> order;
  };
  std::string_view TypeName() const override { return "IAcadSortentsTable"; }
  std::string_view ObjectName() const override { return "AcDbSortentsTable"; }
  static const MemberTable<SortentsTable>& Members();
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

  // Every live entity of the block, bottom first.
  std::vector<Entity*> FullOrder() const;
  // Replaces the order (recorded for undo).
  void SetOrder(std::vector<Entity*> order);

 private:
  Data data_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_TABLES_DRAW_ORDER_H_
