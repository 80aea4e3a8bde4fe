// Selection by window, crossing, polygon, fence and point on a selection set.
#ifndef TOVIK_HOST_SELECTION_SELECTION_MEMBERS_H_
#define TOVIK_HOST_SELECTION_SELECTION_MEMBERS_H_

#include "frame/member_table.h"

namespace tovik::host {

class SelectionSet;

// Select, SelectByPolygon, SelectAtPoint and SelectOnScreen.
void AddSelectionMembers(MemberTable<SelectionSet>& t);

}  // namespace tovik::host

#endif  // TOVIK_HOST_SELECTION_SELECTION_MEMBERS_H_
