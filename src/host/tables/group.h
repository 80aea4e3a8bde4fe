// Groups: named, ordered sets of entities.
#ifndef TOVIK_HOST_TABLES_GROUP_H_
#define TOVIK_HOST_TABLES_GROUP_H_

#include <string>
#include <vector>

#include "host/core/db_object.h"

namespace tovik::host {

class Entity;

// IAcadGroup (AcDbGroup): a named, ordered set of entities. Erased members
// drop out of Count and Item.
class Group final : public HostObject<Group, DbObject> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kGroup;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
    std::string description;
    bool selectable = true;
    bool anonymous = false;
    std::vector<Entity*> members;
  };
  std::string_view TypeName() const override { return "IAcadGroup"; }
  std::string_view ObjectName() const override { return "AcDbGroup"; }
  static const MemberTable<Group>& Members();
  std::vector<Variant> Enumerate() override;
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }
  const std::string& Name() const { return data_.name; }
  // The live members in order.
  std::vector<Entity*> LiveMembers() const;
  // Removes the group from the drawing; its entities stay.
  void Delete() override;

 private:
  Data data_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_TABLES_GROUP_H_
