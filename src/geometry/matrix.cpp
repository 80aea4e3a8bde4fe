#include "geometry/matrix.h"

#include <cmath>

namespace tovik::geometry {

Matrix4::Matrix4() : m_{} {
  for (int i = 0; i < 4; ++i) m_[i][i] = 1.0;
}

Matrix4 Matrix4::Translation(const Vec3& offset) {
  Matrix4 r;
  for (int i = 0; i < 3; ++i) r.m_[i][3] = offset[i];
  return r;
}

Matrix4 Matrix4::Scaling(const Vec3& factors, const Vec3& base) {
  Matrix4 r;
  for (int i = 0; i < 3; ++i) {
    r.m_[i][i] = factors[i];
    r.m_[i][3] = base[i] - factors[i] * base[i];  // keeps base fixed
  }
  return r;
}

Matrix4 Matrix4::Scaling(double factor, const Vec3& base) {
  return Scaling(Vec3{factor, factor, factor}, base);
}

std::optional<Matrix4> Matrix4::Rotation(const Vec3& point, const Vec3& direction,
                                         double angle) {
  if (!std::isfinite(angle) || !geometry::IsFinite(point)) return std::nullopt;
  const std::optional<Vec3> axis = Normalized(direction);
  if (!axis) return std::nullopt;
  // Rodrigues' rotation formula: R = cI + s[k]x + (1-c) k kᵀ.
  const double c = std::cos(angle), s = std::sin(angle), t = 1.0 - c;
  const double x = axis->x, y = axis->y, z = axis->z;
  Matrix4 r(std::array<std::array<double, 4>, 4>{{
      {t * x * x + c, t * x * y - s * z, t * x * z + s * y, 0.0},
      {t * x * y + s * z, t * y * y + c, t * y * z - s * x, 0.0},
      {t * x * z - s * y, t * y * z + s * x, t * z * z + c, 0.0},
      {0.0, 0.0, 0.0, 1.0},
  }});
  // Keep point fixed: p' = R (p - point) + point.
  const Vec3 moved = r.TransformVector(point);
  for (int i = 0; i < 3; ++i) r.m_[i][3] = point[i] - moved[i];
  return r;
}

std::optional<Matrix4> Matrix4::Mirror(const Vec3& point, const Vec3& normal) {
  if (!geometry::IsFinite(point)) return std::nullopt;
  const std::optional<Vec3> n = Normalized(normal);
  if (!n) return std::nullopt;
  // Householder reflection H = I - 2 n nᵀ, then keep point fixed.
  Matrix4 r;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) r.m_[i][j] -= 2.0 * (*n)[i] * (*n)[j];
  const double d = 2.0 * Dot(point, *n);
  for (int i = 0; i < 3; ++i) r.m_[i][3] = d * (*n)[i];
  return r;
}

Matrix4 Matrix4::FromAxes(const Vec3& x, const Vec3& y, const Vec3& z, const Vec3& origin) {
  Matrix4 r;
  for (int i = 0; i < 3; ++i) {
    r.m_[i][0] = x[i];
    r.m_[i][1] = y[i];
    r.m_[i][2] = z[i];
    r.m_[i][3] = origin[i];
  }
  return r;
}

Matrix4 operator*(const Matrix4& a, const Matrix4& b) {
  Matrix4 r;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k) sum += a.m_[i][k] * b.m_[k][j];
      r.m_[i][j] = sum;
    }
  return r;
}

Vec3 Matrix4::TransformPoint(const Vec3& p) const {
  Vec3 r;
  for (int i = 0; i < 3; ++i) r[i] = m_[i][0] * p.x + m_[i][1] * p.y + m_[i][2] * p.z + m_[i][3];
  const double w = m_[3][0] * p.x + m_[3][1] * p.y + m_[3][2] * p.z + m_[3][3];
  if (w != 1.0) r = r / w;
  return r;
}

Vec3 Matrix4::TransformVector(const Vec3& v) const {
  Vec3 r;
  for (int i = 0; i < 3; ++i) r[i] = m_[i][0] * v.x + m_[i][1] * v.y + m_[i][2] * v.z;
  return r;
}

std::optional<Vec3> Matrix4::TransformNormal(const Vec3& n) const {
  // (A⁻¹)ᵀ n, built from the columns' cross products (the cofactors). This is
  // the true perpendicular of the transformed plane, on the side the points
  // n pointed at went to. Under a mirroring transform the transformed in-plane
  // axes become left-handed about it, so curves must reverse their sweep.
  const Vec3 c0{m_[0][0], m_[1][0], m_[2][0]};
  const Vec3 c1{m_[0][1], m_[1][1], m_[2][1]};
  const Vec3 c2{m_[0][2], m_[1][2], m_[2][2]};
  const double det = LinearDeterminant();
  if (!std::isfinite(det) || det == 0.0) return std::nullopt;
  // (A⁻¹)ᵀ n = (n.x (c1×c2) + n.y (c2×c0) + n.z (c0×c1)) / det.
  const Vec3 r = (Cross(c1, c2) * n.x + Cross(c2, c0) * n.y + Cross(c0, c1) * n.z) / det;
  return Normalized(r);
}

double Matrix4::LinearDeterminant() const {
  const auto& m = m_;
  return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
         m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
         m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

namespace {

// Determinant of the 3x3 minor that skips row r and column c.
double Minor(const std::array<std::array<double, 4>, 4>& m, int r, int c) {
  double a[3][3];
  for (int i = 0, ii = 0; i < 4; ++i) {
    if (i == r) continue;
    for (int j = 0, jj = 0; j < 4; ++j) {
      if (j == c) continue;
      a[ii][jj++] = m[i][j];
    }
    ++ii;
  }
  return a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) -
         a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
         a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
}

}  // namespace

double Matrix4::Determinant() const {
  double det = 0.0;
  for (int j = 0; j < 4; ++j) det += ((j % 2) ? -1.0 : 1.0) * m_[0][j] * Minor(m_, 0, j);
  return det;
}

std::optional<Matrix4> Matrix4::Inverse() const {
  if (!IsFinite()) return std::nullopt;
  // Adjugate / determinant. Singularity is judged against Hadamard's bound
  // (|det| ≤ the product of the row lengths), so a uniformly tiny but
  // invertible scale still inverts while a flattened one does not.
  double bound = 1.0;
  for (const auto& row : m_)
    bound *= std::sqrt(row[0] * row[0] + row[1] * row[1] + row[2] * row[2] + row[3] * row[3]);
  const double det = Determinant();
  if (!std::isfinite(det) || std::fabs(det) <= 1e-12 * bound) return std::nullopt;
  Matrix4 r;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      r.m_[j][i] = (((i + j) % 2) ? -1.0 : 1.0) * Minor(m_, i, j) / det;
  if (!r.IsFinite()) return std::nullopt;
  return r;
}

std::optional<double> Matrix4::UniformScale() const {
  const Vec3 c0{m_[0][0], m_[1][0], m_[2][0]};
  const Vec3 c1{m_[0][1], m_[1][1], m_[2][1]};
  const Vec3 c2{m_[0][2], m_[1][2], m_[2][2]};
  const double s = Length(c0);
  if (!std::isfinite(s) || s <= kAbsTol) return std::nullopt;
  const double tol = 1e-9 * s;
  if (std::fabs(Length(c1) - s) > tol || std::fabs(Length(c2) - s) > tol) return std::nullopt;
  if (std::fabs(Dot(c0, c1)) > tol * s || std::fabs(Dot(c1, c2)) > tol * s ||
      std::fabs(Dot(c0, c2)) > tol * s)
    return std::nullopt;
  return s;
}

Matrix4 Matrix4::Transposed() const {
  Matrix4 r;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) r.m_[i][j] = m_[j][i];
  return r;
}

bool Matrix4::IsFinite() const {
  for (const auto& row : m_)
    for (double v : row)
      if (!std::isfinite(v)) return false;
  return true;
}

bool IsClose(const Matrix4& a, const Matrix4& b, double abs_tol, double rel_tol) {
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      if (!IsClose(a(i, j), b(i, j), abs_tol, rel_tol)) return false;
  return true;
}

void PrintTo(const Matrix4& m, std::ostream* os) {
  *os << "[";
  for (int i = 0; i < 4; ++i) {
    *os << (i ? "; " : "");
    for (int j = 0; j < 4; ++j) *os << (j ? ", " : "") << m(i, j);
  }
  *os << "]";
}

}  // namespace tovik::geometry
