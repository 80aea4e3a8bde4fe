// The two companions of a DynamicSS: SSDimensions (the box around the set)
// and SSAnimation (moving, scaling, tiling, sorting and zooming the set).
// Neither can be created by a client: each comes only from its owner's
// Dimensions or Animation property, made together with the owner.
//
// A companion points back to its owner without owning it (a weak
// reference), so the set and its companions never keep each other alive;
// each call turns it into a counted reference for its length. A companion
// whose set is gone raises 91 (object variable not set) on every call.
#ifndef TOVIK_SELECTION_SS_COMPANIONS_H_
#define TOVIK_SELECTION_SS_COMPANIONS_H_

#include <memory>
#include <string_view>

#include "frame/dictionary.h"
#include "frame/member_table.h"

namespace tovik {

class DynamicSS;

class SSDimensions : public DispatchObject<SSDimensions> {
 public:
  static constexpr std::string_view kClassName = "SSDimensions";
  // A companion of owner (not owned).
  explicit SSDimensions(std::weak_ptr<DynamicSS> owner) : owner_(std::move(owner)) {}

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<SSDimensions>& Members();

  // The owning set for the length of a call; raises 91 once it is gone.
  std::shared_ptr<DynamicSS> Owner() const;

  // mCollection: the owner's entity table, live.
  std::shared_ptr<Dictionary> mCollection() const;

  // The box around the owner's visible members, in world coordinates.
  struct BoxOptions {
    bool non_zero_z = false;    // keep the box's z (else both z are 0)
    double shrink_scale = 1.0;  // a factor about the centre, or a margin
    bool shrink_absolute = false;  // shrink_scale is a margin in units
  };
  struct BoxOut {
    Variant& min_p;
    Variant& max_p;
    Variant& center;
    double& height;
    double& width;
  };
  // GetBoundingBox: an empty set sets height and width to 0 and writes
  // nothing else. Otherwise the members' boxes are merged (a member whose
  // extents cannot be read counts by its insertion point, or not at all;
  // hidden members do not count); a flat box is widened by 1/8 of its
  // diagonal on each side across its flat axis (y first, else x); z is
  // flattened unless non_zero_z; then the margin or the factor is applied.
  // When no member counted, the later steps work on what min_p and max_p
  // held (13 when those are not points).
  void GetBoundingBox(BoxOut out, const BoxOptions& options);
  // Centre: the box's midpoint (z 0 when suppress_z); Empty for an empty
  // set. Height / Width: the box's sizes; 0 for an empty set.
  Variant Centre(bool suppress_z);
  double Height();
  double Width();

 private:
  std::weak_ptr<DynamicSS> owner_;
  // The corners of the last box Height, Width or Centre measured.
  Variant last_min_, last_max_;
};

class SSAnimation : public DispatchObject<SSAnimation> {
 public:
  static constexpr std::string_view kClassName = "SSAnimation";
  // A companion of owner (not owned).
  explicit SSAnimation(std::weak_ptr<DynamicSS> owner) : owner_(std::move(owner)) {}

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<SSAnimation>& Members();

  // The owning set for the length of a call; raises 91 once it is gone.
  std::shared_ptr<DynamicSS> Owner() const;

  // Host Move / Rotate3D / ScaleEntity on every member in set order; the
  // first host error stops the walk (members before it stay changed).
  void Move(const Variant& from, const Variant& to);
  void Rotate3D(const Variant& p1, const Variant& p2, double angle);
  void ScaleAll(const Variant& base, double factor);
  // Each member scaled about its own reference point: a line's midpoint,
  // the centre of a circle, arc or ellipse, the insertion point of a block
  // reference, text, multiline text or attribute definition. Other kinds
  // have none, and the host refuses to scale them.
  void ScaleEach(double factor);
  // Interactive move: from start (the set's centre when Missing) the user
  // picks points until a request fails; each new point moves the set
  // there. `new_point`, when given, gets the last point picked.
  void Moving(const Variant& start, Variant* new_point);
  // Centres the set in the rectangle ll..ur and scales it about the
  // rectangle's centre by the larger of the width and height ratios times
  // zoom_percent / 100 (so it fills one axis and may pass the other);
  // returns that factor. A set of zero width or height raises 11 (or 6).
  double MoveAndStretch(const Variant& ll, const Variant& ur, int16_t zoom_percent);
  // One column: each member's box moved so its right edge is on x = 0,
  // the first one's bottom on y = 0, each next one on top of the last.
  void TileArrangement();
  // Reorders the set by its members' boxes: with horz_then_vert, rows
  // (boxes overlapping in y) first, then columns; left_right and downward
  // give the direction. All True is reading order.
  void Sort2D(bool horz_then_vert, bool left_right, bool downward);
  // Zooms the host's view to the set's box scaled by scale (1.2 when
  // scale <= 0). A set outside the current space raises 2411.
  void ZoomTo(double scale);

 private:
  std::weak_ptr<DynamicSS> owner_;
  // The flags of the last Sort2D.
  bool horz_then_vert_ = true;
  bool left_right_ = true;
  bool downward_ = true;
};

}  // namespace tovik

#endif  // TOVIK_SELECTION_SS_COMPANIONS_H_
