// The Utility object's coordinate translation.
#ifndef TOVIK_HOST_INPUT_UTILITY_GEOMETRY_H_
#define TOVIK_HOST_INPUT_UTILITY_GEOMETRY_H_

#include "frame/member_table.h"

namespace tovik::host {

class Utility;

// TranslateCoordinates.
void AddUtilityGeometryMembers(MemberTable<Utility>& t);

}  // namespace tovik::host

#endif  // TOVIK_HOST_INPUT_UTILITY_GEOMETRY_H_
