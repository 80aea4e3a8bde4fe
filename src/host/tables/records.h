// Symbol-table records: layers, linetypes, text styles, materials,
// registered applications, dimension styles, and layouts. Each keeps its
// data in a plain struct (what DXF maps and undo snapshots).
#ifndef TOVIK_HOST_TABLES_RECORDS_H_
#define TOVIK_HOST_TABLES_RECORDS_H_

#include <cstdint>
#include <string>

#include "geometry/vec3.h"
#include "host/core/color.h"
#include "host/core/db_object.h"

namespace tovik::host {

class BlockRecord;

// A record with a name, looked up case-insensitively in its table.
class NamedRecord : public DbObject {
 public:
  virtual const std::string& Name() const = 0;
};

class LinetypeRecord;
class MaterialRecord;

class LayerRecord final : public HostObject<LayerRecord, NamedRecord> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kLayer;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
    bool on = true;
    bool frozen = false;
    bool locked = false;
    bool plottable = true;
    CmColor color = CmColor::Aci(7);
    LinetypeRecord* linetype = nullptr;
    int16_t lineweight = -3;  // Default
    MaterialRecord* material = nullptr;
    std::string plot_style = "Color_7";
    std::string description;
  };
  std::string_view TypeName() const override { return "IAcadLayer"; }
  std::string_view ObjectName() const override { return "AcDbLayerTableRecord"; }
  static const MemberTable<LayerRecord>& Members();
  void Delete() override;
  const std::string& Name() const override { return data_.name; }
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

 private:
  Data data_;
};

class LinetypeRecord final : public HostObject<LinetypeRecord, NamedRecord> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kLinetype;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
    std::string description;
    double pattern_length = 0;
    std::vector<double> dashes;
  };
  std::string_view TypeName() const override { return "IAcadLineType"; }
  std::string_view ObjectName() const override { return "AcDbLinetypeTableRecord"; }
  static const MemberTable<LinetypeRecord>& Members();
  void Delete() override;
  const std::string& Name() const override { return data_.name; }
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

 private:
  Data data_;
};

class TextStyleRecord final : public HostObject<TextStyleRecord, NamedRecord> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kTextStyle;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
    std::string font_file = "txt";
    std::string big_font_file;
    std::string typeface;  // TrueType family; "" for an SHX style
    bool bold = false;
    bool italic = false;
    int32_t charset = 0;
    int32_t pitch_and_family = 0;
    double height = 0;  // 0: variable
    double width = 1;
    double oblique = 0;  // radians
    int16_t generation_flags = 0;  // Backward 2, UpsideDown 4
    double last_height = 2.5;
  };
  std::string_view TypeName() const override { return "IAcadTextStyle"; }
  std::string_view ObjectName() const override { return "AcDbTextStyleTableRecord"; }
  static const MemberTable<TextStyleRecord>& Members();
  void Delete() override;
  const std::string& Name() const override { return data_.name; }
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

 private:
  Data data_;
};

class MaterialRecord final : public HostObject<MaterialRecord, NamedRecord> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kMaterial;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
    std::string description;
  };
  std::string_view TypeName() const override { return "IAcadMaterial"; }
  std::string_view ObjectName() const override { return "AcDbMaterial"; }
  static const MemberTable<MaterialRecord>& Members();
  void Delete() override;
  const std::string& Name() const override { return data_.name; }
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

 private:
  Data data_;
};

class RegApp final : public HostObject<RegApp, NamedRecord> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kRegApp;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
  };
  std::string_view TypeName() const override { return "IAcadRegisteredApplication"; }
  std::string_view ObjectName() const override { return "AcDbRegAppTableRecord"; }
  static const MemberTable<RegApp>& Members();
  void Delete() override;
  const std::string& Name() const override { return data_.name; }
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

 private:
  Data data_;
};

class DimStyleRecord final : public HostObject<DimStyleRecord, NamedRecord> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kDimStyle;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
  };
  std::string_view TypeName() const override { return "IAcadDimStyle"; }
  std::string_view ObjectName() const override { return "AcDbDimStyleTableRecord"; }
  static const MemberTable<DimStyleRecord>& Members();
  const std::string& Name() const override { return data_.name; }
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

 private:
  Data data_;
};

// A layout ("Model", "Layout1"...) and the block that holds its entities.
class Layout final : public HostObject<Layout, NamedRecord> {
 public:
  static constexpr ObjectClass kClass = ObjectClass::kLayout;
  ObjectClass Class() const override { return kClass; }
  struct Data {
    std::string name;
    BlockRecord* block = nullptr;
    int32_t tab_order = 0;
  };
  std::string_view TypeName() const override { return "IAcadLayout"; }
  std::string_view ObjectName() const override { return "AcDbLayout"; }
  static const MemberTable<Layout>& Members();
  // Refused for Model and for the last paper layout; takes the layout's
  // block and entities with it.
  void Delete() override;
  const std::string& Name() const override { return data_.name; }
  const Data& data() const { return data_; }
  Data& mutable_data() { return data_; }

 private:
  Data data_;
};

// Layouts.Add: a new paper layout with its own block, last in tab order,
// not made current. A name in use raises Duplicate record name.
Layout* AddLayout(Document& doc, const Variant& name);

// A name a symbol-table Add, a rename or the host accepts: not empty, at
// most 255 characters, none of < > / \ " : ; ? * | , = `.
bool IsValidSymbolName(std::string_view name);

}  // namespace tovik::host

#endif  // TOVIK_HOST_TABLES_RECORDS_H_
