// The automation server's own state, one per server DLL: the module, the
// COM faces of the library's objects now alive, and the server locks. The
// library's state stays in LibraryState; this is only the bridge's.
// Apartment-threaded: every call arrives on the thread that made the object.
#ifndef TOVIK_WINDOWS_BRIDGE_H_
#define TOVIK_WINDOWS_BRIDGE_H_

#include <windows.h>

#include <unordered_map>

#include "frame/dispatch.h"

namespace tovik::com {

class ComObject;

struct BridgeState {
  HMODULE module = nullptr;
  // The COM face of each library object handed out and still referenced,
  // so the same object always goes out as the same COM object (the Is
  // operator compares COM identities).
  std::unordered_map<const Dispatch*, ComObject*> faces;
  // The headless host's server: the host application running in this
  // process, made on first request.
  ObjectRef running_host;
  // Objects and class-factory locks alive: the DLL unloads only at zero.
  LONG live = 0;
};

BridgeState& Bridge();

}  // namespace tovik::com

#endif  // TOVIK_WINDOWS_BRIDGE_H_
