#include "typelib_idl.h"

#include <sstream>
#include <string_view>

#include "class_ids.h"
#include "frame/autocad_enum.h"
#include "frame/library_state.h"
#include "type_library.h"
#include "xdata/xdata.h"

namespace tovik::com {
namespace {

constexpr EnumMember kXdataTypeMembers[] = {
    {"xString", xString},   {"xTable", xTable},     {"xLayerName", xLayerName},
    {"xHandle", xHandle},   {"xBoolean", xBoolean}, {"xMultilinesText", xMultilinesText},
    {"xPoint", xPoint},     {"XVector", XVector},   {"xDouble", xDouble},
    {"xDistance", xDistance}, {"xInteger", xInteger}, {"xLong", xLong},
};

std::string_view Bare(std::string_view guid) { return guid.substr(1, guid.size() - 2); }

// "a1, [in, out, optional] VARIANT* a2" for arguments first..last of a member.
void Arguments(std::ostream& out, const MemberInfo& info, bool all_required) {
  for (int i = 0; i < info.max_args; ++i) {
    if (i) out << ", ";
    bool optional = !all_required && i >= info.min_args;
    out << "[in, out" << (optional ? ", optional" : "") << "] VARIANT* a" << i + 1;
  }
}

void Interface(std::ostream& out, const ClassIds& ids, Dispatch& object) {
  out << "    [uuid(" << Bare(ids.iid) << "), helpstring(\"" << ids.name
      << " members, in slot order\")]\n"
      << "    dispinterface _" << ids.name << " {\n        properties:\n        methods:\n";
  std::vector<std::string> names = object.MemberNames();
  for (size_t k = 0; k < names.size(); ++k) {
    DispId id = static_cast<DispId>(k + 1);
    MemberInfo info = object.Describe(id);
    std::string indent = "            ";
    if (info.method) {
      out << indent << "[id(" << id << ")] VARIANT " << names[k] << "(";
      Arguments(out, info, false);
      out << ");\n";
      continue;
    }
    if (info.readable) {
      out << indent << "[id(" << id << "), propget] VARIANT " << names[k] << "(";
      Arguments(out, info, false);
      out << ");\n";
    }
    for (auto [can, kind] : {std::pair{info.can_let, "propput"}, std::pair{info.can_set, "propputref"}}) {
      if (!can) continue;
      out << indent << "[id(" << id << "), " << kind << "] void " << names[k] << "(";
      Arguments(out, info, true);
      out << (info.max_args ? ", " : "") << "[in] VARIANT rhs);\n";
    }
  }
  out << "    };\n\n";
}

void Enumeration(std::ostream& out, std::string_view name, std::span<const EnumMember> members) {
  out << "    typedef enum " << name << " {\n";
  for (size_t i = 0; i < members.size(); ++i) {
    out << "        " << members[i].name << " = " << members[i].value
        << (i + 1 < members.size() ? ",\n" : "\n");
  }
  out << "    } " << name << ";\n\n";
}

}  // namespace

std::string TypeLibraryIdl() {
  std::ostringstream out;
  out << "// The type library of the Tovik AutoCAD automation library, made from the\n"
         "// classes' member tables by tovik_typelib_idl: do not edit by hand.\n"
         "import \"oaidl.idl\";\n\n"
      << "[\n    uuid(" << Bare(kLibraryId) << "),\n    version(" << kLibraryMajor << "."
      << kLibraryMinor << "),\n    helpstring(\"Tovik AutoCAD " << kTypeLibraryVersion
      << "\")\n]\nlibrary " << kTypeLibraryName << "\n{\n    importlib(\"stdole2.tlb\");\n\n";
  for (const EnumInfo& e : PublishedEnumerations()) Enumeration(out, e.name, e.members);
  Enumeration(out, "XdataType", kXdataTypeMembers);
  for (const ClassIds& ids : kLibraryClasses) {
    const ClassInfo* info = FindClass(ids.name);
    ObjectRef object = info->make();
    Interface(out, ids, *object);
    out << "    [uuid(" << Bare(ids.clsid) << ")";
    if (info->instancing == Instancing::kGlobalMultiUse) out << ", appobject";
    if (info->instancing == Instancing::kPublicNotCreatable) out << ", noncreatable";
    out << "]\n    coclass " << ids.name << " {\n        [default] dispinterface _" << ids.name
        << ";\n    };\n\n";
  }
  ResetLibraryState();
  out << "};\n";
  return out.str();
}

}  // namespace tovik::com
