#include "type_library.h"

#include <memory>

#include "document/acad_doc_space.h"
#include "document/acad_transaction.h"
#include "frame/autocad_enum.h"
#include "frame/automation_error.h"
#include "frame/library_state.h"
#include "frame/runtime_text.h"
#include "frame/zactivex_com.h"
#include "preview/dwg_picture.h"
#include "selection/dynamic_ss.h"
#include "selection/ss_companions.h"
#include "toolkit/acad_space.h"
#include "xdata/xdata.h"

namespace tovik {
namespace {

ObjectRef MakeAcadSpace() { return std::make_shared<AcadSpace>(); }
ObjectRef MakeDynamicSS() { return DynamicSS::Create(); }
ObjectRef MakeAutoCADEnum() { return std::make_shared<AutoCAD_Enum>(); }
ObjectRef MakeZActiveXCOM() { return std::make_shared<ZActiveXCOM>(); }
ObjectRef MakeDwgPicture() { return std::make_shared<DwgPicture>(); }

// Companions are made by their owning set; a lone one has no owner.
ObjectRef MakeSSDimensions() {
  return std::make_shared<SSDimensions>(std::weak_ptr<DynamicSS>());
}
ObjectRef MakeSSAnimation() {
  return std::make_shared<SSAnimation>(std::weak_ptr<DynamicSS>());
}

ObjectRef MakeXdata() { return Xdata::Make(); }
ObjectRef MakeAcadDocSpace() { return AcadDocSpace::Make(); }
ObjectRef MakeAcadTransaction() { return AcadTransaction::Make(); }

const ClassInfo kClasses[] = {
    {"AcadSpace", Instancing::kGlobalMultiUse, "", MakeAcadSpace},
    {"DynamicSS", Instancing::kMultiUse, "", MakeDynamicSS},
    {"SSDimensions", Instancing::kPublicNotCreatable, "DynamicSS.Dimensions",
     MakeSSDimensions},
    {"SSAnimation", Instancing::kPublicNotCreatable, "DynamicSS.Animation",
     MakeSSAnimation},
    {"AutoCAD_Enum", Instancing::kGlobalMultiUse, "", MakeAutoCADEnum},
    {"AcadTransaction", Instancing::kPublicNotCreatable,
     "AcadDocSpace.GetAcadTransaction", MakeAcadTransaction},
    {"AcadDocSpace", Instancing::kGlobalMultiUse, "", MakeAcadDocSpace},
    {"Xdata", Instancing::kGlobalMultiUse, "", MakeXdata},
    {"DwgPicture", Instancing::kPublicNotCreatable, "AcadSpace.NewDwgPicture",
     MakeDwgPicture},
    {"ZActiveXCOM", Instancing::kGlobalMultiUse, "", MakeZActiveXCOM},
};

AutomationError CannotCreate() { return errors::Runtime(kErrCannotCreate); }

}  // namespace

std::span<const ClassInfo> Classes() { return kClasses; }

const ClassInfo* FindClass(std::string_view name) {
  for (const ClassInfo& info : kClasses) {
    if (CaseInsensitiveEqual(info.name, name)) return &info;
  }
  return nullptr;
}

std::string_view InstancingText(Instancing instancing) {
  switch (instancing) {
    case Instancing::kGlobalMultiUse: return "global, creatable";
    case Instancing::kMultiUse: return "creatable";
    case Instancing::kPublicNotCreatable: return "not creatable";
  }
  return "";
}

ObjectRef CreateObject(std::string_view prog_id) {
  size_t dot = prog_id.find('.');
  if (dot == std::string_view::npos ||
      !CaseInsensitiveEqual(prog_id.substr(0, dot), kTypeLibraryName)) {
    throw CannotCreate();
  }
  const ClassInfo* info = FindClass(prog_id.substr(dot + 1));
  if (!info || info->instancing == Instancing::kPublicNotCreatable || !info->make) {
    throw CannotCreate();
  }
  return info->make();
}

ObjectRef GlobalObject(std::string_view class_name) {
  const ClassInfo* info = FindClass(class_name);
  if (!info || info->instancing != Instancing::kGlobalMultiUse || !info->make) {
    throw CannotCreate();
  }
  ObjectRef& slot = Library().global_instances[std::string(info->name)];
  if (!slot) slot = info->make();
  return slot;
}

}  // namespace tovik
