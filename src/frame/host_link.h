// The library's link to the host: the host-event object handed in by
// ZActiveXCOM.InitZActiveX, and what is reached through it. Nothing here is
// cached: the host application and its active document are asked afresh at
// every call, so a member always acts on the drawing active at that moment.
#ifndef TOVIK_FRAME_HOST_LINK_H_
#define TOVIK_FRAME_HOST_LINK_H_

#include <string_view>

#include "frame/dispatch.h"

namespace tovik {

// Name of the group the library keeps in each drawing.
inline constexpr std::string_view kLibraryGroupName = "TOVIK_COM";

// The stored host-event object, or Nothing (an empty reference).
ObjectRef HostEvents();

// True when a host-event object is stored.
bool HasHostEvents();

// The host application the host-event object serves (its Application
// property), under a resume-next trap: Nothing without a host link.
ObjectRef HostApplication();

// The active drawing: HostApplication().ActiveDocument, asked afresh, under
// a resume-next trap: Nothing without a host link or without an open
// drawing.
ObjectRef CurrentDrawing();

// The group "TOVIK_COM" of `document`'s Groups. When the lookup fails (no
// such group) a group of that name is added and returned; when it exists
// and renew is True it is deleted and a fresh empty one added; otherwise it
// is returned as it is. Host failures other than the lookup reach the
// caller.
ObjectRef LibraryGroup(const ObjectRef& document, bool renew);

}  // namespace tovik

#endif  // TOVIK_FRAME_HOST_LINK_H_
