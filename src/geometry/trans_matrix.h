// The companion geometry types exchanged through the interface:
//
// TransMatrix: a matrix of Doubles, sized by SetSize (4 x 4 for placements),
// one element set by SetValue, read by the default member Matrix(row,
// column), multiplied by Multiply. Points are column vectors: rows 0 to 2
// hold x, y and z; column 0 is the image of the X axis, column 1 of the Y
// axis, column 2 of the normal, column 3 the translation.
//
// UCS: a user coordinate system as an origin and three axis directions,
// each a point of three Doubles, read and assigned as properties.
#ifndef TOVIK_GEOMETRY_TRANS_MATRIX_H_
#define TOVIK_GEOMETRY_TRANS_MATRIX_H_

#include <memory>
#include <string_view>
#include <vector>

#include "frame/member_table.h"
#include "geometry/matrix.h"
#include "geometry/vec3.h"

namespace tovik {

class TransMatrix : public DispatchObject<TransMatrix> {
 public:
  static constexpr std::string_view kClassName = "TransMatrix";
  static std::shared_ptr<TransMatrix> Make() { return std::make_shared<TransMatrix>(); }

  std::string_view TypeName() const override { return kClassName; }
  // SetSize(Rows, Columns), SetValue(Row, Column, Value), Matrix(Row,
  // Column) (default), Rows, Columns, Multiply(Other): a new matrix.
  static const MemberTable<TransMatrix>& Members();

  // Resizes to rows x columns of zeros. Raises 5 for a negative size.
  void SetSize(int32_t rows, int32_t columns);
  // Element (row, column), from 0. Raises 9 outside the size.
  double At(int32_t row, int32_t column) const;
  void Set(int32_t row, int32_t column, double value);
  int32_t rows() const { return rows_; }
  int32_t columns() const { return columns_; }
  // this x other. Raises 5 when the inner sizes differ.
  std::shared_ptr<TransMatrix> Times(const TransMatrix& other) const;

  // A 4 x 4 matrix as a geometry matrix; the size must be 4 x 4 (raises 5).
  geometry::Matrix4 ToMatrix4() const;
  static std::shared_ptr<TransMatrix> FromMatrix4(const geometry::Matrix4& m);

 private:
  size_t Index(int32_t row, int32_t column) const;

  int32_t rows_ = 0;
  int32_t columns_ = 0;
  std::vector<double> values_;
};

class UCS : public DispatchObject<UCS> {
 public:
  static constexpr std::string_view kClassName = "UCS";
  static std::shared_ptr<UCS> Make() { return std::make_shared<UCS>(); }

  std::string_view TypeName() const override { return kClassName; }
  // Origin, XAxis, YAxis, ZAxis: points of three Doubles, read and assigned.
  // A new UCS is the world: origin (0, 0, 0) and the unit axes.
  static const MemberTable<UCS>& Members();

  geometry::Vec3 origin{};
  geometry::Vec3 x_axis{1, 0, 0};
  geometry::Vec3 y_axis{0, 1, 0};
  geometry::Vec3 z_axis{0, 0, 1};
};

}  // namespace tovik

#endif  // TOVIK_GEOMETRY_TRANS_MATRIX_H_
