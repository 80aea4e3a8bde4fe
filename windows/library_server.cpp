// The library's server, Tovik_AutoCad_Pro: the ten classes under
// "Tovik_AutoCad_Pro.<Class>", creatable ones made as CreateObject makes
// them, the type library embedded as resource 1, and the window functions
// of Windows itself for the library's platform.
#include <vector>

#include "class_ids.h"
#include "frame/library_state.h"
#include "server.h"
#include "type_library.h"
#include "win32_platform.h"

namespace tovik::com {
namespace {

template <size_t I>
ObjectRef Make() {
  return CreateObject(std::string(kTypeLibraryName) + "." + std::string(kLibraryClasses[I].name));
}

template <size_t... I>
std::vector<ServerClass> ClassList(std::index_sequence<I...>) {
  std::vector<ServerClass> list;
  (list.push_back(ServerClass{
       kLibraryClasses[I].clsid,
       std::string(kTypeLibraryName) + "." + std::string(kLibraryClasses[I].name),
       "Tovik AutoCAD " + std::string(kLibraryClasses[I].name),
       FindClass(kLibraryClasses[I].name)->instancing == Instancing::kPublicNotCreatable ? nullptr
                                                                                        : &Make<I>}),
   ...);
  return list;
}

}  // namespace

const ServerInfo& Server() {
  static const std::vector<ServerClass> classes =
      ClassList(std::make_index_sequence<std::size(kLibraryClasses)>());
  static const ServerInfo info{classes, true};
  return info;
}

void OnServerLoaded() { Library().platform = std::make_shared<Win32Platform>(); }

}  // namespace tovik::com
