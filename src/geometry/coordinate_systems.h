// Pure coordinate translations between WCS, UCS, DCS, PSDCS and OCS, the
// maths behind Utility.TranslateCoordinates. The caller gathers the drawing
// state (UCSORG/UCSXDIR/UCSYDIR, the active view, the floating viewport) into
// a CoordinateContext; nothing here reads a drawing.
#ifndef TOVIK_GEOMETRY_COORDINATE_SYSTEMS_H_
#define TOVIK_GEOMETRY_COORDINATE_SYSTEMS_H_

#include <optional>

#include "geometry/matrix.h"
#include "geometry/ocs.h"
#include "geometry/vec3.h"

namespace tovik::geometry {

// The interface's AcCoordinateSystem codes.
enum class CoordinateSystem {
  kWorld = 0,
  kUcs = 1,
  kDisplayDcs = 2,
  kPaperSpaceDcs = 3,
  kOcs = 4,
};

// The current UCS: origin and axis directions in WCS (UCSORG, UCSXDIR,
// UCSYDIR). The axes need not be unit length; Z = X × Y.
struct Ucs {
  Vec3 origin;
  Vec3 x_dir{1.0, 0.0, 0.0};
  Vec3 y_dir{0.0, 1.0, 0.0};
};

// The active view as the system variables hold it: TARGET and VIEWDIR are
// UCS values (turned into WCS through the context's UCS); twist is VIEWTWIST
// in radians. view_direction points from the target toward the viewer.
struct View {
  Vec3 target;
  Vec3 view_direction{0.0, 0.0, 1.0};
  double twist = 0.0;
};

// A floating viewport, for PSDCS: its centre on paper (C), the view centre
// in its DCS (c, z taken as 0), and s = viewport paper height / VIEWSIZE.
struct PaperViewport {
  Vec3 paper_centre;
  Vec2 view_centre;
  double scale = 1.0;
};

// Everything a translation may need.
struct CoordinateContext {
  Ucs ucs;
  View view;
  // The floating viewport; absent means none is active and PSDCS = DCS.
  std::optional<PaperViewport> viewport;
  // The OCS normal (WCS); needed when either side is kOcs.
  std::optional<Vec3> ocs_normal;
};

// Why a translation has no answer.
enum class TranslateStatus {
  kOk,
  kOcsToOcs,         // OCS→OCS is refused
  kPaperSpacePair,   // PSDCS pairs only with DCS (or itself)
  kMissingOcsNormal, // an OCS side without ocs_normal
  kDegenerate,       // zero or non-finite axes, normal, scale or point
};

// Checks that the pair of systems is allowed and the context has what it
// needs, without translating. kDegenerate is only reported by Translate.
TranslateStatus ValidateTranslation(CoordinateSystem from, CoordinateSystem to,
                                    const CoordinateContext& context);

// Translates point from one system to another, going through WCS.
// displacement = true treats it as a vector: origins (UCSORG, TARGET, the
// viewport and view centres) are dropped while rotation and scale apply.
// Same→same returns the point unchanged (except OCS→OCS, refused).
// nullopt when ValidateTranslation fails or the context or point is
// degenerate (zero axes, zero view direction, scale 0, NaN).
std::optional<Vec3> TranslateCoordinates(const Vec3& point, CoordinateSystem from,
                                         CoordinateSystem to, bool displacement,
                                         const CoordinateContext& context);

// The UCS axes made orthonormal: X normalised, Z = X×Y normalised,
// Y = Z×X. nullopt when X or Y is zero, parallel or non-finite.
std::optional<Axes> UcsAxes(const Ucs& ucs);
// UCS→WCS matrix (P = O + x·X + y·Y + z·Z).
std::optional<Matrix4> UcsToWcsMatrix(const Ucs& ucs);
// The DCS axes (Xd, Yd, D̂) and origin T in WCS, for the view seen from the
// given UCS. nullopt for a zero view direction or a degenerate UCS.
std::optional<Matrix4> DcsToWcsMatrix(const View& view, const Ucs& ucs);
// DCS→PSDCS matrix: P_ps = C + s·(P_dcs − c). nullopt when s is not a
// finite nonzero number.
std::optional<Matrix4> DcsToPsdcsMatrix(const PaperViewport& viewport);

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_COORDINATE_SYSTEMS_H_
