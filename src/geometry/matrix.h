// Affine 4x4 transforms.
//
// Convention: COLUMN vectors, p' = M * p, stored row-major as m[row][col].
// The translation sits in the last column (m[0][3], m[1][3], m[2][3]) and
// the bottom row is (0, 0, 0, 1) for affine matrices, as in AutoCAD's
// TransformBy and GetSubEntity matrices. A * B applies B first, then A.
#ifndef TOVIK_GEOMETRY_MATRIX_H_
#define TOVIK_GEOMETRY_MATRIX_H_

#include <array>
#include <optional>
#include <ostream>

#include "geometry/vec3.h"

namespace tovik::geometry {

// A 4x4 matrix of doubles; value type, identity by default.
class Matrix4 {
 public:
  // The identity.
  Matrix4();
  // From 16 values given row by row.
  explicit Matrix4(const std::array<std::array<double, 4>, 4>& rows) : m_(rows) {}

  static Matrix4 Identity() { return Matrix4(); }
  // Moves every point by offset.
  static Matrix4 Translation(const Vec3& offset);
  // Scales by (sx, sy, sz) about base (non-uniform allowed; zero or negative
  // factors give a singular or mirroring matrix, callers decide).
  static Matrix4 Scaling(const Vec3& factors, const Vec3& base = {});
  // Scales uniformly by factor about base.
  static Matrix4 Scaling(double factor, const Vec3& base = {});
  // Turns by angle (radians) about the axis through point along direction,
  // counter-clockwise when the axis points at the viewer (right-hand rule).
  // nullopt when direction is zero or anything is not finite.
  static std::optional<Matrix4> Rotation(const Vec3& point, const Vec3& direction, double angle);
  // Reflects across the plane through point with the given normal.
  // nullopt when the normal is zero or anything is not finite.
  static std::optional<Matrix4> Mirror(const Vec3& point, const Vec3& normal);
  // The matrix whose columns are x, y, z and origin: maps (1,0,0) to
  // origin + x and so on. Turns a coordinate frame into frame→world.
  static Matrix4 FromAxes(const Vec3& x, const Vec3& y, const Vec3& z, const Vec3& origin = {});

  // Element access, m[row][col].
  double operator()(int row, int col) const { return m_[row][col]; }
  double& operator()(int row, int col) { return m_[row][col]; }
  const std::array<std::array<double, 4>, 4>& rows() const { return m_; }

  // Matrix product: (a * b) applies b first.
  friend Matrix4 operator*(const Matrix4& a, const Matrix4& b);
  friend bool operator==(const Matrix4&, const Matrix4&) = default;

  // Applies the full transform to a point (projective divide when the bottom
  // row is not (0,0,0,1); a zero divisor gives non-finite coordinates).
  Vec3 TransformPoint(const Vec3& p) const;
  // Applies only the linear part (no translation): displacements, axes.
  Vec3 TransformVector(const Vec3& v) const;
  // Transforms a plane normal by the inverse transpose of the linear part and
  // normalises it; nullopt when the matrix is singular or n is zero.
  std::optional<Vec3> TransformNormal(const Vec3& n) const;

  // Determinant of the whole 4x4 matrix.
  double Determinant() const;
  // Determinant of the upper-left 3x3 (linear) part; negative when the
  // transform mirrors (changes handedness).
  double LinearDeterminant() const;
  // True when the linear part reverses orientation (det < 0).
  bool IsMirroring() const { return LinearDeterminant() < 0.0; }
  // The factor s when the linear part is s times a rotation or reflection
  // (an arc stays an arc); nullopt for non-uniform, sheared or singular parts.
  std::optional<double> UniformScale() const;
  // The inverse; nullopt when singular (|det| tiny relative to the entries)
  // or not finite.
  std::optional<Matrix4> Inverse() const;
  // The transpose.
  Matrix4 Transposed() const;
  // True when every element is finite.
  bool IsFinite() const;

 private:
  std::array<std::array<double, 4>, 4> m_;
};

// True when corresponding elements are IsClose.
bool IsClose(const Matrix4& a, const Matrix4& b, double abs_tol = kAbsTol, double rel_tol = kRelTol);
void PrintTo(const Matrix4& m, std::ostream* os);

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_MATRIX_H_
