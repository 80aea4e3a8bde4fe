// Checks of the COM bridge that a script cannot make: calls as VBA and C++
// clients make them (typed by-reference variables, named arguments, arrays
// with other lower bounds and more dimensions), the exception information
// and the error object, and the way back through a stand-in. Run under Wine
// by scripts/windows-test.sh; ends with "N passed, N failed".
#include <windows.h>
// windows.h first: oleauto.h needs its types.
#include <oleauto.h>

#include <cstdio>
#include <string>
#include <vector>

#include "com_object.h"
#include "dxf/code_page.h"
#include "frame/char_class.h"
#include "frame/runtime_text.h"
#include "host/core/font_metrics.h"
#include "preview/picture_box.h"
#include "com_value.h"
#include "frame/host_link.h"
#include "frame/library_state.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host_object.h"
#include "type_library.h"

namespace {

int passed = 0;
int failed = 0;

void Check(const char* name, bool ok) {
  if (ok) {
    ++passed;
  } else {
    ++failed;
    std::printf("FAIL: %s\n", name);
  }
}

using tovik::ObjectRef;
using tovik::SafeArray;
using tovik::Variant;
using tovik::VarType;

DISPID IdOf(IDispatch* object, const wchar_t* name) {
  DISPID id = DISPID_UNKNOWN;
  LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
  object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  return id;
}

// Calls `name` with arguments given first to last (reversed here, as COM
// passes them) and named arguments at the front.
HRESULT Call(IDispatch* object, const wchar_t* name, std::vector<VARIANT> args, VARIANT* result,
             EXCEPINFO* excep = nullptr, std::vector<DISPID> named = {}) {
  // Named arguments sit at the front in COM's order: move them there.
  std::vector<VARIANT> passed_args;
  size_t positional = args.size() - named.size();
  for (size_t k = 0; k < named.size(); ++k) passed_args.push_back(args[positional + k]);
  for (size_t i = 0; i < positional; ++i) passed_args.push_back(args[positional - 1 - i]);
  DISPPARAMS params = {passed_args.data(), named.empty() ? nullptr : named.data(),
                       static_cast<UINT>(passed_args.size()), static_cast<UINT>(named.size())};
  EXCEPINFO local = {};
  return object->Invoke(IdOf(object, name), IID_NULL, LOCALE_USER_DEFAULT,
                        DISPATCH_METHOD | DISPATCH_PROPERTYGET, &params, result,
                        excep ? excep : &local, nullptr);
}

VARIANT ByRef(VARIANT* target) {
  VARIANT v;
  V_VT(&v) = VT_BYREF | VT_VARIANT;
  V_VARIANTREF(&v) = target;
  return v;
}

VARIANT Missing() {
  VARIANT v;
  V_VT(&v) = VT_ERROR;
  V_ERROR(&v) = DISP_E_PARAMNOTFOUND;
  return v;
}

VARIANT Object(IDispatch* d) {
  VARIANT v;
  V_VT(&v) = VT_DISPATCH;
  V_DISPATCH(&v) = d;
  return v;
}

void Values() {
  using namespace tovik::com;
  // A typed array with lower bound 5 goes out typed and keeps its bounds.
  SafeArray doubles(VarType::kDouble, 5, 3);
  doubles.Set(5, Variant(1.5));
  doubles.Set(7, Variant(-2.0));
  VARIANT out;
  VariantInit(&out);
  ToVariant(Variant(doubles), &out);
  LONG lower = 0, upper = 0;
  SafeArrayGetLBound(V_ARRAY(&out), 1, &lower);
  SafeArrayGetUBound(V_ARRAY(&out), 1, &upper);
  Check("a Double array goes out typed with its bounds",
        V_VT(&out) == (VT_ARRAY | VT_R8) && lower == 5 && upper == 7);
  Variant back = FromVariant(out);
  Check("and comes back the same", back.SameAs(Variant(doubles)) && back.Array().ElementType() == VarType::kDouble);
  VariantClear(&out);

  // Two dimensions: element (r, c) is the same on both sides.
  SafeArray grid(VarType::kVariant, {{1, 2}, {0, 3}});
  grid.Set({2, 1}, Variant("two-one"));
  grid.Set({1, 2}, Variant(int32_t{12}));
  VariantInit(&out);
  ToVariant(Variant(grid), &out);
  LONG at[2] = {2, 1};
  VARIANT element;
  VariantInit(&element);
  SafeArrayGetElement(V_ARRAY(&out), at, &element);
  Check("a two-dimensional array keeps each element's place",
        V_VT(&element) == VT_BSTR && std::wstring(V_BSTR(&element)) == L"two-one");
  VariantClear(&element);
  Check("and comes back the same", FromVariant(out).SameAs(Variant(grid)));
  VariantClear(&out);

  // Nested arrays, Missing, True, Nothing.
  Variant nested(SafeArray::Of({Variant(SafeArray::Of({Variant(int16_t{1})})), Variant("x")}));
  VariantInit(&out);
  ToVariant(nested, &out);
  Check("nested arrays", FromVariant(out).SameAs(nested));
  VariantClear(&out);
  VARIANT missing = Missing();
  Check("an omitted argument is Missing", FromVariant(missing).IsMissing());
  VariantInit(&out);
  ToVariant(Variant(true), &out);
  Check("True is VARIANT_TRUE", V_VT(&out) == VT_BOOL && V_BOOL(&out) == VARIANT_TRUE);
  VariantInit(&out);
  ToVariant(Variant::Nothing(), &out);
  Check("Nothing is a null object", V_VT(&out) == VT_DISPATCH && V_DISPATCH(&out) == nullptr);
}

void Calls(const std::shared_ptr<tovik::host::Application>& app) {
  using namespace tovik::com;
  IDispatch* space = DispatchOf(tovik::CreateObject("Tovik_AutoCad_Pro.AcadSpace"));
  IDispatch* xdata = DispatchOf(tovik::CreateObject("Tovik_AutoCad_Pro.Xdata"));

  // ArrDbls2ArrPoints(list, points, a3:=True): a named argument.
  VARIANT list;
  VariantInit(&list);
  ToVariant(Variant(SafeArray::OfDoubles({1, 2, 3, 4})), &list);
  VARIANT points;
  VariantInit(&points);
  VARIANT yes;
  V_VT(&yes) = VT_BOOL;
  V_BOOL(&yes) = VARIANT_TRUE;
  DISPID ids[2];
  LPOLESTR names[] = {const_cast<LPOLESTR>(L"ArrDbls2ArrPoints"), const_cast<LPOLESTR>(L"A3")};
  Check("argument names are a1, a2, ...",
        space->GetIDsOfNames(IID_NULL, names, 2, LOCALE_USER_DEFAULT, ids) == S_OK && ids[1] == 2);
  HRESULT hr = Call(space, L"ArrDbls2ArrPoints", {list, ByRef(&points), yes}, nullptr, nullptr, {2});
  Variant got = FromVariant(points);
  Check("a named argument reaches its place",
        hr == S_OK && got.IsArray() && got.Array().Count() == 2 &&
            got.Array().At(1).Array().At(2).SameAs(Variant(0.0)));
  VariantClear(&points);
  VariantClear(&list);

  // Typed by-reference variables, as VBA passes Dim h As Double.
  VARIANT doc = Object(DispatchOf(ObjectRef(app->active_document())));
  double height = -1, width = -1;
  VARIANT h, w;
  V_VT(&h) = VT_BYREF | VT_R8;
  V_R8REF(&h) = &height;
  V_VT(&w) = VT_BYREF | VT_R8;
  V_R8REF(&w) = &width;
  VARIANT centre;
  VariantInit(&centre);
  hr = Call(space, L"GetAcadScreenWCS", {doc, ByRef(&centre), Missing(), h, w}, nullptr);
  Check("typed by-reference outputs are written", hr == S_OK && height > 0 && width > 0);
  Check("and a Variant one", V_VT(&centre) == (VT_ARRAY | VT_R8) || V_VT(&centre) == (VT_ARRAY | VT_VARIANT));
  VariantClear(&centre);
  VariantClear(&doc);

  // The library's error: exception information and error object.
  IDispatch* line = DispatchOf(tovik::CallMethod(
      tovik::GetProperty(ObjectRef(app->active_document()), "ModelSpace").Object(), "AddLine",
      {Variant(SafeArray::OfDoubles({0, 0, 0})), Variant(SafeArray::OfDoubles({1, 0, 0}))}).Object());
  VARIANT name, value, type;
  V_VT(&name) = VT_BSTR;
  V_BSTR(&name) = SysAllocString(L"NoSuchVariable");
  V_VT(&value) = VT_I2;
  V_I2(&value) = 1;
  V_VT(&type) = VT_I4;
  V_I4(&type) = 1000;
  EXCEPINFO excep = {};
  hr = Call(xdata, L"SetAppXData", {Object(line), name, value, type}, nullptr, &excep);
  Check("an error is an exception", hr == DISP_E_EXCEPTION && excep.scode == static_cast<HRESULT>(0x800A096B));
  Check("with its text and source",
        excep.bstrDescription && std::wstring(excep.bstrDescription) ==
                                     L"SetXdata fails. Variable names NoSuchVariable not found" &&
            excep.bstrSource && std::wstring(excep.bstrSource) == L"Tovik COM");
  IErrorInfo* info = nullptr;
  BSTR text = nullptr;
  Check("and in the error object", GetErrorInfo(0, &info) == S_OK && info &&
                                       SUCCEEDED(info->GetDescription(&text)) && text &&
                                       std::wstring(text).find(L"NoSuchVariable") != std::wstring::npos);
  SysFreeString(text);
  if (info) info->Release();
  SysFreeString(excep.bstrDescription);
  SysFreeString(excep.bstrSource);
  SysFreeString(V_BSTR(&name));
  Check("an unknown name", IdOf(space, L"NoSuchMember") == DISPID_UNKNOWN);

  // The way back: a stand-in calls through IDispatch, reads outputs back
  // and turns failures into the library's errors.
  ObjectRef stand_in = HostObject::Wrap(space);
  Variant args[2] = {Variant(SafeArray::OfDoubles({5, 6, 7})), Variant()};
  tovik::CallMethodRef(stand_in, "arrdbls2arrpoints", args);
  Check("a stand-in's call reads its outputs back", args[1].IsArray() && args[1].Array().Count() == 1);
  try {
    tovik::CallMethod(HostObject::Wrap(xdata), "SetAppXData",
                      {Variant(ObjectRef(HostObject::Wrap(line))), Variant("NoSuchVariable"), Variant(int16_t{1}),
                       Variant(int32_t{1000})});
    Check("a stand-in's failure raises", false);
  } catch (const tovik::AutomationError& e) {
    Check("a stand-in's failure raises the callee's error",
          e.Number() == 2411 && e.Source() == "Tovik COM" && e.Description().find("NoSuchVariable") != std::string::npos);
  }
  Check("a face of this server comes back as the object itself",
        tovik::SameObject(ComObject::Unwrap(space), FromVariant(Object(space)).RawObject()));
  line->Release();
  xdata->Release();
  space->Release();
}

// The platform's own services behind the library's seams.
void Seams() {
  using namespace tovik;
  Check("letters fold beyond ASCII", chars::Fold(0x0416) == 0x0436 && chars::Fold(0x00C4) == 0x00E4 &&
                                         chars::Upper(0x03C3) == 0x03A3);
  Check("and compare so", CaseInsensitiveEqual("\xD0\x96\xD0\x81\xD0\x9B\xD0\xA2\xD0\xAB\xD0\x99",
                                               "\xD0\xB6\xD1\x91\xD0\xBB\xD1\x82\xD1\x8B\xD0\xB9"));
  Check("letters and digits", chars::IsLetter(0x0416) && !chars::IsLetter('1') && chars::IsDigit(0x0663));
  dxf::CodePageConverter cyrillic("UTF-8", "CP1251");
  std::string text;
  cyrillic.ConvertLenient("\xC6", &text);
  Check("a code page decodes", cyrillic.ok() && text == "\xD0\x96");
  dxf::CodePageConverter latin("CP1252", "UTF-8");
  std::string bytes;
  Check("and encodes exactly or not at all",
        latin.ConvertExact("\xC3\xA9", &bytes) && bytes == "\xE9" && !latin.ConvertExact("\xD0\x96", &bytes));
  host::FontMetrics fonts;
  double one = fonts.Width("arial.ttf", "H", 1.0), two = fonts.Width("arial.ttf", "HH", 1.0);
  Check("text widths from a face", one > 0.3 && one < 1.5 && two > 1.99 * one && two < 2.01 * one);
  // A red line on the row boundary y = 50 of a 200 x 100 pixel box.
  PictureBox box(200, 100, ScaleMode::kPixels);
  box.DrawLine(0, 50, 200, 50, 0x0000FF);
  std::vector<uint32_t> px = box.Pixels();
  uint32_t on = px[50 * 200 + 20] & 0xFFFFFF, off = px[10 * 200 + 20] & 0xFFFFFF;
  Check("the picture box draws in colour", (on >> 16) == 0xFF && (on & 0xFF) < 0xC0 && off == 0xFFFFFF);
  char folder[MAX_PATH];
  GetTempPathA(MAX_PATH, folder);
  std::string png = std::string(folder) + "tovik_bridge_check.png";
  Check("and saves PNG", box.SavePicture(png) && GetFileAttributesA(png.c_str()) != INVALID_FILE_ATTRIBUTES);
  Check("but not SVG", !box.SavePicture(std::string(folder) + "tovik_bridge_check.svg"));
  DeleteFileA(png.c_str());
}

}  // namespace

int main() {
  CoInitialize(nullptr);
  {
    auto app = tovik::host::Application::Create();
    tovik::Library().host_events = app->events();
    Values();
    Calls(app);
    Seams();
    tovik::ResetLibraryState();
  }
  CoUninitialize();
  std::printf("%d passed, %d failed\n", passed, failed);
  return failed ? 1 : 0;
}
