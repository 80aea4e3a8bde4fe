// The library's side of the mailbox to the host's lisp: request variables
// written, "(TOVIK_COM) " typed, answer variables read, each on the drawing
// that is current at that step.
#include "frame/conversions.h"
#include "frame/host_link.h"
#include "toolkit/acad_space.h"
#include "toolkit/commons.h"

namespace tovik {
namespace {

constexpr std::string_view kTrigger = "(TOVIK_COM) ";

void SetVar(std::string_view name, Variant value) {
  CallMethod(CurrentDrawing(), "SetVariable", {Variant(std::string(name)), std::move(value)});
}

Variant GetVar(std::string_view name) {
  return CallMethod(CurrentDrawing(), "GetVariable", {Variant(std::string(name))});
}

void Request(std::string_view word) {
  SetVar("USERS1", Variant(std::string(word)));
  CallMethod(CurrentDrawing(), "SendCommand", {Variant(std::string(kTrigger))});
}

// The object whose handle the lisp side left in USERS2; Nothing for "".
ObjectRef AnsweredEntity() {
  std::string handle = CStr(GetVar("USERS2"));
  if (handle.empty()) return nullptr;
  return CallMethod(CurrentDrawing(), "HandleToObject", {Variant(handle)}).Object();
}

}  // namespace

void AcadSpace::VL_RunLisp(const std::string& lisp) {
  std::string path = CommonsWorkingFolder() + "\\RunLisp.lsp";
  WriteTextFile(path, lisp);
  for (char& c : path) {
    if (c == '\\') c = '/';
  }
  SetVar("USERS1", Variant("RunLisp"));
  SetVar("USERS2", Variant(path));
  CallMethod(CurrentDrawing(), "SendCommand", {Variant(std::string(kTrigger))});
  DeleteTextFile(path);
}

void AcadSpace::VL_ClearSSSetFirst() { Request("ClearSSSetFirst"); }

int16_t AcadSpace::VL_SelectColor() {
  Request("Color");
  return CInt(GetVar("USERI1"));
}

ObjectRef AcadSpace::VL_EntNext(const ObjectRef& ent) {
  SetVar("USERS1", Variant("EntNext"));
  SetVar("USERS2", GetProperty(ent, "Handle"));
  CallMethod(CurrentDrawing(), "SendCommand", {Variant(std::string(kTrigger))});
  return AnsweredEntity();
}

ObjectRef AcadSpace::VL_EntLast() {
  Request("EntLast");
  return AnsweredEntity();
}

Variant AcadSpace::VL_CursorPoint() {
  Request("CursorPoint");
  double x = CDbl(GetVar("USERR1"));
  double y = CDbl(GetVar("USERR2"));
  double z = CDbl(GetVar("USERR3"));
  return Variant(SafeArray::OfDoubles({x, y, z}));
}

}  // namespace tovik
