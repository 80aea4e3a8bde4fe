// The two companions of a DynamicSS: SSDimensions (measures of the set)
// and SSAnimation (moving, tiling and zooming the set). Neither can be
// created by a client: each comes only from its owner's Dimensions or
// Animation property, made together with the owner.
//
// A companion points back to its owner without owning it (a weak
// reference), so the set and its companions never keep each other alive;
// Owner() turns it into a counted reference for the length of one call.
#ifndef TOVIK_SELECTION_SS_COMPANIONS_H_
#define TOVIK_SELECTION_SS_COMPANIONS_H_

#include <memory>
#include <string_view>

#include "frame/member_table.h"

namespace tovik {

class DynamicSS;

class SSDimensions : public DispatchObject<SSDimensions> {
 public:
  static constexpr std::string_view kClassName = "SSDimensions";
  // A companion of owner (not owned).
  explicit SSDimensions(std::weak_ptr<DynamicSS> owner) : owner_(std::move(owner)) {}

  std::string_view TypeName() const override { return kClassName; }
  // The measuring members (Part of the selection family) register here.
  static const MemberTable<SSDimensions>& Members();

  // The owning set for the length of a call, or nullptr once it is gone.
  std::shared_ptr<DynamicSS> Owner() const { return owner_.lock(); }

 private:
  std::weak_ptr<DynamicSS> owner_;
};

class SSAnimation : public DispatchObject<SSAnimation> {
 public:
  static constexpr std::string_view kClassName = "SSAnimation";
  // A companion of owner (not owned).
  explicit SSAnimation(std::weak_ptr<DynamicSS> owner) : owner_(std::move(owner)) {}

  std::string_view TypeName() const override { return kClassName; }
  // The moving, tiling and zooming members register here.
  static const MemberTable<SSAnimation>& Members();

  // The owning set for the length of a call, or nullptr once it is gone.
  std::shared_ptr<DynamicSS> Owner() const { return owner_.lock(); }

 private:
  std::weak_ptr<DynamicSS> owner_;
};

}  // namespace tovik

#endif  // TOVIK_SELECTION_SS_COMPANIONS_H_
