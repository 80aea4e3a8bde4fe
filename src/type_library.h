// The type library Tovik_AutoCad_Pro: its ten public classes in type-
// library order, how a client obtains each, and creation by ProgID
// ("Tovik_AutoCad_Pro.DynamicSS") as the runtime's CreateObject does it.
#ifndef TOVIK_TYPE_LIBRARY_H_
#define TOVIK_TYPE_LIBRARY_H_

#include <span>
#include <string>
#include <string_view>

#include "frame/dispatch.h"

namespace tovik {

inline constexpr std::string_view kTypeLibraryName = "Tovik_AutoCad_Pro";
inline constexpr std::string_view kTypeLibraryVersion = "3.00";

// How a client obtains instances of a class.
enum class Instancing {
  // Global: usable without an explicit instance (the library keeps one
  // implicit instance, made on first use); also creatable.
  kGlobalMultiUse,
  // Creatable with New or CreateObject.
  kMultiUse,
  // Made only by factory members of other classes; CreateObject refuses.
  kPublicNotCreatable,
};

struct ClassInfo {
  std::string_view name;
  Instancing instancing;
  // The member that makes instances of a class that is not creatable
  // ("DynamicSS.Dimensions"); empty for creatable classes.
  std::string_view factory;
  // Makes a new instance, as creating the class does; nullptr while the
  // class's code is not part of this build.
  ObjectRef (*make)();
};

// The ten classes, in type-library order.
std::span<const ClassInfo> Classes();

// The class named `name` (case-insensitive), or nullptr.
const ClassInfo* FindClass(std::string_view name);

// Text of an instancing rule: "global, creatable", "creatable",
// "not creatable".
std::string_view InstancingText(Instancing instancing);

// CreateObject(prog_id): a new instance of the class that
// "Tovik_AutoCad_Pro.<Class>" names (case-insensitive). Raises 429
// "ActiveX component can't create object" for an unknown ProgID and for a
// class that is not creatable.
ObjectRef CreateObject(std::string_view prog_id);

// The implicit instance of global class `class_name`, made on first use
// and kept in the library state. Raises 429 for a class that is not global.
ObjectRef GlobalObject(std::string_view class_name);

}  // namespace tovik

#endif  // TOVIK_TYPE_LIBRARY_H_
