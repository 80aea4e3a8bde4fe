// What both automation servers share: the class factory, registration of
// classes (machine-wide by DllRegisterServer, per user by
// DllInstall(TRUE, L"user"), that is `regsvr32 /n /i:user`), and the DLL
// entry points built on them. Each server lists its classes (Classes()).
#ifndef TOVIK_WINDOWS_SERVER_H_
#define TOVIK_WINDOWS_SERVER_H_

#include <windows.h>

#include <span>
#include <string>
#include <string_view>

#include "frame/dispatch.h"

namespace tovik::com {

struct ServerClass {
  std::string_view clsid;
  std::string prog_id;      // "Tovik_AutoCad_Pro.DynamicSS"
  std::string description;  // the class key's text
  ObjectRef (*make)();      // nullptr: not creatable (registered for its type only)
};

// What a server DLL provides: its classes and its type library (none for
// the host).
struct ServerInfo {
  std::span<const ServerClass> classes;
  bool has_type_library = false;
};
const ServerInfo& Server();

// Called once when the DLL is loaded into a process.
void OnServerLoaded();

}  // namespace tovik::com

#endif  // TOVIK_WINDOWS_SERVER_H_
