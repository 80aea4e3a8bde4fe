// The source of the type library Tovik_AutoCad_Pro, made from the classes'
// own member tables so that every member keeps its DISPID (its position in
// its table) in the 32- and 64-bit servers alike.
#ifndef TOVIK_WINDOWS_TYPELIB_IDL_H_
#define TOVIK_WINDOWS_TYPELIB_IDL_H_

#include <string>

namespace tovik::com {

// The IDL text: the enumerations, each class's dispatch interface in slot
// order (arguments are Variants passed by reference, as the library takes
// them; the argument counts and optional tails are the members' own) and
// the coclasses with their creation rules (appobject for global classes,
// noncreatable for those made only by other classes).
std::string TypeLibraryIdl();

}  // namespace tovik::com

#endif  // TOVIK_WINDOWS_TYPELIB_IDL_H_
