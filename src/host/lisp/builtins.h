// Helpers shared by the lisp's built-in functions.
#ifndef TOVIK_HOST_LISP_BUILTINS_H_
#define TOVIK_HOST_LISP_BUILTINS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/lisp/lisp_value.h"

namespace tovik::host::lisp {

// "too few arguments" / "too many arguments" outside min..max.
void Arity(const std::vector<ValuePtr>& args, size_t min, size_t max);
// The string / integer held by v; "bad argument type: stringp v" or
// "fixnump v" otherwise.
const std::string& StringOf(const ValuePtr& v);
int32_t IntOf(const ValuePtr& v);
// Registers a built-in function under its upper-cased name.
void Define(Globals& globals, std::string_view name, Builtin function);

}  // namespace tovik::host::lisp

#endif  // TOVIK_HOST_LISP_BUILTINS_H_
