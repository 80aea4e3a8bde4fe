#include "geometry/coordinate_systems.h"

#include <gtest/gtest.h>

#include <numbers>
#include <random>

#include "tests/support/geometry.h"

namespace tovik::geometry {
namespace {

using CS = CoordinateSystem;

// A UCS at (10,0,0) turned 90° about Z: X = WCS Y, Y = WCS −X.
CoordinateContext TurnedUcs() {
  CoordinateContext c;
  c.ucs = Ucs{{10, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
  return c;
}

TEST(TranslateCoordinates, UcsPointsAndDisplacements) {
  const CoordinateContext c = TurnedUcs();
  // (10,0,0) + 1·(0,1,0) + 2·(−1,0,0) + 3·(0,0,1).
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 2, 3}, CS::kUcs, CS::kWorld, false, c), (Vec3{8, 1, 3}));
  // A displacement drops the origin.
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 2, 3}, CS::kUcs, CS::kWorld, true, c), (Vec3{-2, 1, 3}));
  EXPECT_VEC_CLOSE(*TranslateCoordinates({8, 1, 3}, CS::kWorld, CS::kUcs, false, c), (Vec3{1, 2, 3}));
}

TEST(TranslateCoordinates, OcsGoesThroughWcs) {
  CoordinateContext c = TurnedUcs();
  c.ocs_normal = Vec3{0, 0, -1};
  // OCS of −Z: Ax = (−1,0,0), Ay = (0,1,0): (1,2,3) → WCS (−1,2,−3);
  // then UCS: P − O = (−11,2,−3) → (·X, ·Y, ·Z) = (2, 11, −3).
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 2, 3}, CS::kOcs, CS::kWorld, false, c), (Vec3{-1, 2, -3}));
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 2, 3}, CS::kOcs, CS::kUcs, false, c), (Vec3{2, 11, -3}));
  // No origin: displacement makes no difference for OCS↔WCS.
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 2, 3}, CS::kOcs, CS::kWorld, true, c), (Vec3{-1, 2, -3}));
}

TEST(TranslateCoordinates, DcsPlanViewIsWcsShiftedByTarget) {
  CoordinateContext c;
  c.view.target = {5, 5, 0};
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 1, 0}, CS::kDisplayDcs, CS::kWorld, false, c), (Vec3{6, 6, 0}));
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 1, 0}, CS::kDisplayDcs, CS::kWorld, true, c), (Vec3{1, 1, 0}));
}

TEST(TranslateCoordinates, DcsTwistTurnsContentCounterClockwise) {
  CoordinateContext c;
  c.view.target = {5, 5, 0};
  c.view.twist = kPi / 2;
  // Xd = cos θ·Ax − sin θ·Ay = (0,−1,0); Yd = sin θ·Ax + cos θ·Ay = (1,0,0).
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 0, 0}, CS::kDisplayDcs, CS::kWorld, false, c), (Vec3{5, 4, 0}));
  // A point east of the target shows north of it: content turned by +90°.
  EXPECT_VEC_CLOSE(*TranslateCoordinates({6, 5, 0}, CS::kWorld, CS::kDisplayDcs, false, c), (Vec3{0, 1, 0}));
}

TEST(TranslateCoordinates, DcsFrontViewMapsWorldZToScreenY) {
  CoordinateContext c;
  c.view.view_direction = {0, -1, 0};  // viewer at −Y looking north
  // D̂ = (0,−1,0): Ax = (0,0,1)×D̂ = (1,0,0), Ay = D̂×Ax = (0,0,1).
  EXPECT_VEC_CLOSE(*TranslateCoordinates({2, 3, 4}, CS::kDisplayDcs, CS::kWorld, false, c), (Vec3{2, -4, 3}));
}

TEST(TranslateCoordinates, ViewStateIsReadInUcs) {
  // TARGET and VIEWDIR are UCS values: with the turned UCS a UCS plan view
  // target (1,0,0) is WCS (10,1,0), and DCS x runs along the UCS X (WCS Y).
  CoordinateContext c = TurnedUcs();
  c.view.target = {1, 0, 0};
  EXPECT_VEC_CLOSE(*TranslateCoordinates({0, 0, 0}, CS::kDisplayDcs, CS::kWorld, false, c), (Vec3{10, 1, 0}));
  // The view direction (0,0,1) stays WCS Z, so DCS is the arbitrary-axis
  // frame of Z: the WCS axes shifted by the target (UCS turn not applied).
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 0, 0}, CS::kDisplayDcs, CS::kWorld, false, c), (Vec3{11, 1, 0}));
}

TEST(TranslateCoordinates, PaperSpaceDcsScalesAboutTheViewportCentre) {
  CoordinateContext c;
  c.viewport = PaperViewport{{100, 50, 0}, {10, 20}, 0.5};
  // P_ps = C + s·(P − c) = (100,50,0) + 0.5·(2,4,2).
  EXPECT_VEC_CLOSE(*TranslateCoordinates({12, 24, 2}, CS::kDisplayDcs, CS::kPaperSpaceDcs, false, c),
                   (Vec3{101, 52, 1}));
  EXPECT_VEC_CLOSE(*TranslateCoordinates({101, 52, 1}, CS::kPaperSpaceDcs, CS::kDisplayDcs, false, c),
                   (Vec3{12, 24, 2}));
  EXPECT_VEC_CLOSE(*TranslateCoordinates({12, 24, 2}, CS::kDisplayDcs, CS::kPaperSpaceDcs, true, c),
                   (Vec3{6, 12, 1}));
  // Without a floating viewport PSDCS is DCS.
  c.viewport.reset();
  EXPECT_VEC_CLOSE(*TranslateCoordinates({12, 24, 2}, CS::kDisplayDcs, CS::kPaperSpaceDcs, false, c),
                   (Vec3{12, 24, 2}));
}

TEST(TranslateCoordinates, RefusedPairsAndMissingData) {
  CoordinateContext c;
  EXPECT_EQ(ValidateTranslation(CS::kOcs, CS::kWorld, c), TranslateStatus::kMissingOcsNormal);
  EXPECT_EQ(ValidateTranslation(CS::kUcs, CS::kOcs, c), TranslateStatus::kMissingOcsNormal);
  c.ocs_normal = Vec3{0, 0, 1};
  EXPECT_EQ(ValidateTranslation(CS::kOcs, CS::kOcs, c), TranslateStatus::kOcsToOcs);
  EXPECT_EQ(ValidateTranslation(CS::kWorld, CS::kPaperSpaceDcs, c), TranslateStatus::kPaperSpacePair);
  EXPECT_EQ(ValidateTranslation(CS::kPaperSpaceDcs, CS::kUcs, c), TranslateStatus::kPaperSpacePair);
  EXPECT_EQ(ValidateTranslation(CS::kPaperSpaceDcs, CS::kDisplayDcs, c), TranslateStatus::kOk);
  EXPECT_EQ(ValidateTranslation(CS::kUcs, CS::kUcs, c), TranslateStatus::kOk);
  EXPECT_FALSE(TranslateCoordinates({1, 2, 3}, CS::kOcs, CS::kOcs, false, c).has_value());
  EXPECT_FALSE(TranslateCoordinates({1, 2, 3}, CS::kWorld, CS::kPaperSpaceDcs, false, c).has_value());
  // Same → same is a copy, even with a nonsense UCS.
  c.ucs.x_dir = {0, 0, 0};
  EXPECT_VEC_CLOSE(*TranslateCoordinates({1, 2, 3}, CS::kUcs, CS::kUcs, false, c), (Vec3{1, 2, 3}));
}

TEST(TranslateCoordinates, DegenerateContextGivesNullopt) {
  CoordinateContext c;
  c.ucs.x_dir = {0, 0, 0};
  EXPECT_FALSE(TranslateCoordinates({1, 2, 3}, CS::kUcs, CS::kWorld, false, c).has_value());
  c = CoordinateContext{};
  c.ucs.y_dir = {2, 0, 0};  // parallel to X
  EXPECT_FALSE(TranslateCoordinates({1, 2, 3}, CS::kWorld, CS::kUcs, false, c).has_value());
  c = CoordinateContext{};
  c.view.view_direction = {0, 0, 0};
  EXPECT_FALSE(TranslateCoordinates({1, 2, 3}, CS::kDisplayDcs, CS::kWorld, false, c).has_value());
  c = CoordinateContext{};
  c.viewport = PaperViewport{{0, 0, 0}, {0, 0}, 0.0};
  EXPECT_FALSE(TranslateCoordinates({1, 2, 3}, CS::kPaperSpaceDcs, CS::kDisplayDcs, false, c).has_value());
  c = CoordinateContext{};
  EXPECT_FALSE(TranslateCoordinates({std::nan(""), 2, 3}, CS::kUcs, CS::kWorld, false, c).has_value());
}

TEST(TranslateCoordinates, EveryAllowedPairRoundTrips) {
  std::mt19937 rng(5);
  const CS systems[] = {CS::kWorld, CS::kUcs, CS::kDisplayDcs, CS::kOcs};
  for (int i = 0; i < 20; ++i) {
    CoordinateContext c;
    c.ucs = Ucs{testing::RandomVec(rng), testing::RandomVec(rng), testing::RandomVec(rng)};
    c.view = View{testing::RandomVec(rng), testing::RandomVec(rng), 0.7 * i};
    c.ocs_normal = testing::RandomVec(rng);
    const Vec3 p = testing::RandomVec(rng, -100, 100);
    for (CS from : systems)
      for (CS to : systems) {
        if (from == CS::kOcs && to == CS::kOcs) continue;
        for (bool displacement : {false, true}) {
          SCOPED_TRACE(::testing::Message() << i << ": " << static_cast<int>(from) << "→"
                                            << static_cast<int>(to) << " d=" << displacement);
          const std::optional<Vec3> there = TranslateCoordinates(p, from, to, displacement, c);
          ASSERT_TRUE(there.has_value());
          const std::optional<Vec3> back = TranslateCoordinates(*there, to, from, displacement, c);
          ASSERT_TRUE(back.has_value());
          EXPECT_VEC_CLOSE(*back, p);
          // Rigid frames keep lengths of displacements.
          if (displacement) {
            EXPECT_NEAR(Length(*there), Length(p), kGeoTol);
          }
        }
      }
  }
}

}  // namespace
}  // namespace tovik::geometry
