// The filter view of an entity: its values by DXF group code, as the
// entity's DXF record would hold them, for selection filters.
#ifndef TOVIK_HOST_SELECTION_ENTITY_FILTER_H_
#define TOVIK_HOST_SELECTION_ENTITY_FILTER_H_

#include <string_view>

#include "host/selection/selection_filter.h"

namespace tovik::host {

class Entity;


// Answers codes 0 (type), 1 (text), 2 (block or pattern name), 6 (an
// explicitly set linetype only), 7 (text style), 8 (layer), 10/11 (the
// primary and second points, WCS), 38 (elevation), 39 (thickness), 40
// (radius or text height), 41-43 (block scales), 48 (linetype scale), 50/51
// (angles in degrees), 60 (1 when invisible), 62 (colour index as stored:
// 256 ByLayer, 0 ByBlock), 67 (1 in paper space), 70 (polyline flags), 90
// (vertex count), 210 (normal), 370 (lineweight), 410 (layout name) and
// 1001 (applications with extended data). Other codes are absent.
class EntityFilterSubject final : public FilterSubject {
 public:
  explicit EntityFilterSubject(const Entity& entity) : entity_(entity) {}
  void ValuesOf(int code, std::vector<FilterValue>* out) const override;

 private:
  const Entity& entity_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_SELECTION_ENTITY_FILTER_H_
