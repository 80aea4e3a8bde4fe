#include "geometry/trans_matrix.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "geometry/vector_service.h"

namespace tovik {

void TransMatrix::SetSize(int32_t rows, int32_t columns) {
  if (rows < 0 || columns < 0) throw errors::InvalidCall();
  rows_ = rows;
  columns_ = columns;
  values_.assign(static_cast<size_t>(rows) * static_cast<size_t>(columns), 0.0);
}

size_t TransMatrix::Index(int32_t row, int32_t column) const {
  if (row < 0 || row >= rows_ || column < 0 || column >= columns_) {
    throw errors::SubscriptOutOfRange();
  }
  return static_cast<size_t>(row) * static_cast<size_t>(columns_) + static_cast<size_t>(column);
}

double TransMatrix::At(int32_t row, int32_t column) const { return values_[Index(row, column)]; }

void TransMatrix::Set(int32_t row, int32_t column, double value) {
  values_[Index(row, column)] = value;
}

std::shared_ptr<TransMatrix> TransMatrix::Times(const TransMatrix& other) const {
  if (columns_ != other.rows_) throw errors::InvalidCall();
  auto product = Make();
  product->SetSize(rows_, other.columns_);
  for (int32_t r = 0; r < rows_; ++r) {
    for (int32_t c = 0; c < other.columns_; ++c) {
      double sum = 0;
      for (int32_t k = 0; k < columns_; ++k) sum += At(r, k) * other.At(k, c);
      product->Set(r, c, sum);
    }
  }
  return product;
}

geometry::Matrix4 TransMatrix::ToMatrix4() const {
  if (rows_ != 4 || columns_ != 4) throw errors::InvalidCall();
  geometry::Matrix4 m;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) m(r, c) = At(r, c);
  }
  return m;
}

std::shared_ptr<TransMatrix> TransMatrix::FromMatrix4(const geometry::Matrix4& m) {
  auto out = Make();
  out->SetSize(4, 4);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) out->Set(r, c, m(r, c));
  }
  return out;
}

const MemberTable<TransMatrix>& TransMatrix::Members() {
  static const MemberTable<TransMatrix> table = [] {
    MemberTable<TransMatrix> t;
    t.Method(
        "SetSize",
        [](TransMatrix& m, CallArgs& a) {
          m.SetSize(CLng(a[0]), CLng(a[1]));
          return Variant();
        },
        2, 2);
    t.Method(
        "SetValue",
        [](TransMatrix& m, CallArgs& a) {
          m.Set(CLng(a[0]), CLng(a[1]), CDbl(a[2]));
          return Variant();
        },
        3, 3);
    t.Property(
        "Matrix", [](TransMatrix& m, CallArgs& a) { return Variant(m.At(CLng(a[0]), CLng(a[1]))); },
        [](TransMatrix& m, CallArgs& a, Variant& v) { m.Set(CLng(a[0]), CLng(a[1]), CDbl(v)); },
        nullptr, 2, 2);
    t.Default("Matrix");
    t.Property("Rows", [](TransMatrix& m, CallArgs&) { return Variant(m.rows()); });
    t.Property("Columns", [](TransMatrix& m, CallArgs&) { return Variant(m.columns()); });
    t.Method(
        "Multiply",
        [](TransMatrix& m, CallArgs& a) {
          auto other = ObjectAs<TransMatrix>(a[0]);
          if (!other) throw errors::TypeMismatch();
          return Variant(ObjectRef(m.Times(*other)));
        },
        1, 1);
    return t;
  }();
  return table;
}

namespace {

template <geometry::Vec3 UCS::*Field>
void AxisProperty(MemberTable<UCS>& t, std::string_view name) {
  t.Property(
      name, [](UCS& u, CallArgs&) { return PointOf(u.*Field); },
      [](UCS& u, CallArgs&, Variant& v) { u.*Field = VectorOf(v); });
}

}  // namespace

const MemberTable<UCS>& UCS::Members() {
  static const MemberTable<UCS> table = [] {
    MemberTable<UCS> t;
    AxisProperty<&UCS::origin>(t, "Origin");
    AxisProperty<&UCS::x_axis>(t, "XAxis");
    AxisProperty<&UCS::y_axis>(t, "YAxis");
    AxisProperty<&UCS::z_axis>(t, "ZAxis");
    return t;
  }();
  return table;
}

}  // namespace tovik
