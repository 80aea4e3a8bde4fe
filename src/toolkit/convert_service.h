// ConvertService: the companion commons library's value conversions, as an
// automation object. The library keeps one shared instance, made on first
// use (GlobalInstance<ConvertService>()).
#ifndef TOVIK_TOOLKIT_CONVERT_SERVICE_H_
#define TOVIK_TOOLKIT_CONVERT_SERVICE_H_

#include <memory>
#include <string_view>

#include "frame/member_table.h"

namespace tovik {

// ValueAsDouble: a number, a Boolean or a text that reads as a number
// (CDbl's rules) as a Double; Empty is 0. Anything else raises 13.
double ValueAsDouble(const Variant& value);

class ConvertService : public DispatchObject<ConvertService> {
 public:
  static constexpr std::string_view kClassName = "ConvertService";
  static ObjectRef MakeGlobal() { return std::make_shared<ConvertService>(); }

  std::string_view TypeName() const override { return kClassName; }
  // ValueAsDouble(Value).
  static const MemberTable<ConvertService>& Members();
};

}  // namespace tovik

#endif  // TOVIK_TOOLKIT_CONVERT_SERVICE_H_
