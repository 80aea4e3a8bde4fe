// The headless host's server: TovikHost.Application gives the host running
// in this process (made on first request, with DXF drawings for Open and
// SaveAs), TovikHost.ZActiveX its host-event object, the object an add-in
// hands to the library's ZActiveXCOM.InitZActiveX.
#include <vector>

#include "bridge.h"
#include "class_ids.h"
#include "host/core/application.h"
#include "host/dxf/dxf_file.h"
#include "server.h"

namespace tovik::com {
namespace {

// The host running in this process (kept in the server's state for the
// life of the process).
std::shared_ptr<host::Application> Running() {
  ObjectRef& slot = Bridge().running_host;
  if (!slot) {
    auto app = host::Application::Create();
    host::dxf::InstallDxfFileIo(*app);
    slot = app;
  }
  return std::static_pointer_cast<host::Application>(slot);
}

ObjectRef MakeApplication() { return Running(); }
ObjectRef MakeHostEvents() { return Running()->events(); }

}  // namespace

const ServerInfo& Server() {
  static const std::vector<ServerClass> classes = {
      {kHostApplicationClsid, "TovikHost.Application", "Tovik headless host application",
       &MakeApplication},
      {kHostEventsClsid, "TovikHost.ZActiveX", "Tovik headless host event object", &MakeHostEvents},
  };
  static const ServerInfo info{classes, false};
  return info;
}

void OnServerLoaded() {}

}  // namespace tovik::com
