#include "com_value.h"

#include <oleauto.h>

#include <cstring>
#include <vector>

#include "com_object.h"
#include "frame/automation_error.h"
#include "frame/dispatch.h"
#include "frame/wide_text_windows.h"
#include "host_object.h"

namespace tovik::com {
namespace {

// The element type a library array of `type` is stored with in a SAFEARRAY.
VARTYPE ElementVt(VarType type) {
  switch (type) {
    case VarType::kInteger: return VT_I2;
    case VarType::kLong: return VT_I4;
    case VarType::kLongLong: return VT_I8;
    case VarType::kSingle: return VT_R4;
    case VarType::kDouble: return VT_R8;
    case VarType::kCurrency: return VT_CY;
    case VarType::kDate: return VT_DATE;
    case VarType::kString: return VT_BSTR;
    case VarType::kObject: return VT_DISPATCH;
    case VarType::kError: return VT_ERROR;
    case VarType::kBoolean: return VT_BOOL;
    case VarType::kByte: return VT_UI1;
    default: return VT_VARIANT;
  }
}

VarType ElementType(VARTYPE vt) {
  switch (vt) {
    case VT_I2: return VarType::kInteger;
    case VT_I4: case VT_INT: case VT_UI2: case VT_I1: return VarType::kLong;
    case VT_I8: case VT_UI4: case VT_UINT: return VarType::kLongLong;
    case VT_R4: return VarType::kSingle;
    case VT_R8: case VT_DECIMAL: return VarType::kDouble;
    case VT_CY: return VarType::kCurrency;
    case VT_DATE: return VarType::kDate;
    case VT_BSTR: return VarType::kString;
    case VT_DISPATCH: case VT_UNKNOWN: return VarType::kObject;
    case VT_ERROR: return VarType::kError;
    case VT_BOOL: return VarType::kBoolean;
    case VT_UI1: return VarType::kByte;
    default: return VarType::kVariant;
  }
}

Variant FromObject(IUnknown* unknown) {
  if (!unknown) return Variant::Nothing();
  if (ObjectRef mine = ComObject::Unwrap(unknown)) return Variant(mine);
  IDispatch* dispatch = nullptr;
  if (FAILED(unknown->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)))) {
    throw errors::TypeMismatch();
  }
  ObjectRef stand_in = HostObject::Wrap(dispatch);
  dispatch->Release();
  return Variant(stand_in);
}

Variant FromSafeArray(SAFEARRAY* psa, VARTYPE vt) {
  if (!psa) return Variant(SafeArray::Empty(ElementType(vt)));
  UINT dims = SafeArrayGetDim(psa);
  if (vt == VT_EMPTY) SafeArrayGetVartype(psa, &vt);
  std::vector<ArrayBound> bounds(dims);
  for (UINT d = 0; d < dims; ++d) {
    LONG lower = 0, upper = -1;
    SafeArrayGetLBound(psa, d + 1, &lower);
    SafeArrayGetUBound(psa, d + 1, &upper);
    bounds[d] = {static_cast<int32_t>(lower), static_cast<int32_t>(upper - lower + 1)};
  }
  VarType type = ElementType(vt);
  SafeArray array = dims == 1 ? SafeArray(type, bounds[0].lower, bounds[0].count)
                              : SafeArray(type, bounds);
  // Elements walk row by row (the last index fastest), the library's order.
  std::vector<LONG> index(dims);
  for (UINT d = 0; d < dims; ++d) index[d] = bounds[d].lower;
  int32_t total = array.Count();
  std::vector<Variant> items;
  items.reserve(static_cast<size_t>(total));
  for (int32_t n = 0; n < total; ++n) {
    VARIANT element;
    VariantInit(&element);
    HRESULT hr;
    if (vt == VT_VARIANT) {
      hr = SafeArrayGetElement(psa, index.data(), &element);
    } else if (vt == VT_DECIMAL) {
      DECIMAL d;
      hr = SafeArrayGetElement(psa, index.data(), &d);
      V_VT(&element) = VT_R8;
      if (SUCCEEDED(hr)) VarR8FromDec(&d, &V_R8(&element));
    } else if (vt == VT_RECORD) {
      throw errors::TypeMismatch();
    } else {
      V_VT(&element) = vt;
      hr = SafeArrayGetElement(psa, index.data(), &V_UI1(&element));
    }
    if (FAILED(hr)) throw errors::TypeMismatch();
    items.push_back(FromVariant(element));
    VariantClear(&element);
    for (int d = static_cast<int>(dims) - 1; d >= 0; --d) {
      if (++index[d] < bounds[d].lower + bounds[d].count) break;
      index[d] = bounds[d].lower;
    }
  }
  if (dims == 1) {
    for (int32_t n = 0; n < total; ++n) array.Set(bounds[0].lower + n, std::move(items[n]));
  } else {
    std::vector<int32_t> at(dims);
    for (UINT d = 0; d < dims; ++d) at[d] = bounds[d].lower;
    for (int32_t n = 0; n < total; ++n) {
      // SafeArray::Set takes an initializer list; walk the offsets by hand.
      switch (dims) {
        case 2: array.Set({at[0], at[1]}, std::move(items[n])); break;
        case 3: array.Set({at[0], at[1], at[2]}, std::move(items[n])); break;
        default: throw errors::TypeMismatch();
      }
      for (int d = static_cast<int>(dims) - 1; d >= 0; --d) {
        if (++at[d] < bounds[d].lower + bounds[d].count) break;
        at[d] = bounds[d].lower;
      }
    }
  }
  return Variant(std::move(array));
}

SAFEARRAY* ToSafeArray(const SafeArray& array) {
  VARTYPE vt = ElementVt(array.ElementType());
  int dims = array.Dims();
  std::vector<SAFEARRAYBOUND> bounds(static_cast<size_t>(dims));
  for (int d = 0; d < dims; ++d) {
    bounds[d].lLbound = array.LBound(d + 1);
    bounds[d].cElements = static_cast<ULONG>(array.UBound(d + 1) - array.LBound(d + 1) + 1);
  }
  SAFEARRAY* psa = SafeArrayCreate(vt, static_cast<UINT>(dims), bounds.data());
  if (!psa) throw errors::Runtime(7);  // out of memory
  std::vector<LONG> index(static_cast<size_t>(dims));
  for (int d = 0; d < dims; ++d) index[d] = bounds[d].lLbound;
  for (const Variant& item : array.Items()) {
    VARIANT element;
    VariantInit(&element);
    ToVariant(item, &element);
    HRESULT hr;
    if (vt == VT_VARIANT) {
      hr = SafeArrayPutElement(psa, index.data(), &element);
    } else {
      VARIANT typed;
      VariantInit(&typed);
      hr = VariantChangeType(&typed, &element, 0, vt);
      if (SUCCEEDED(hr)) {
        void* data = vt == VT_BSTR ? static_cast<void*>(V_BSTR(&typed))
                     : vt == VT_DISPATCH ? static_cast<void*>(V_DISPATCH(&typed))
                                         : static_cast<void*>(&V_UI1(&typed));
        hr = SafeArrayPutElement(psa, index.data(), data);
      }
      VariantClear(&typed);
    }
    VariantClear(&element);
    if (FAILED(hr)) {
      SafeArrayDestroy(psa);
      throw errors::TypeMismatch();
    }
    for (int d = dims - 1; d >= 0; --d) {
      if (++index[d] < bounds[d].lLbound + static_cast<LONG>(bounds[d].cElements)) break;
      index[d] = bounds[d].lLbound;
    }
  }
  return psa;
}

}  // namespace

std::wstring Wide(std::string_view utf8) { return WideOf(utf8); }

std::string Narrow(const wchar_t* text, int length) { return Utf8Of(text, length); }

BSTR MakeBstr(std::string_view utf8) {
  std::wstring wide = Wide(utf8);
  return SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

Variant FromVariant(const VARIANT& in) {
  const VARIANT* v = &in;
  while (V_VT(v) == (VT_BYREF | VT_VARIANT)) v = V_VARIANTREF(v);
  VARTYPE vt = V_VT(v);
  if (vt & VT_ARRAY) {
    SAFEARRAY* psa = (vt & VT_BYREF) ? *V_ARRAYREF(v) : V_ARRAY(v);
    return FromSafeArray(psa, vt & VT_TYPEMASK);
  }
  VARIANT plain;
  VariantInit(&plain);
  if (vt & VT_BYREF) {
    if (FAILED(VariantCopyInd(&plain, const_cast<VARIANT*>(v)))) throw errors::TypeMismatch();
    v = &plain;
    vt = V_VT(v);
  }
  Variant out;
  switch (vt) {
    case VT_EMPTY: break;
    case VT_NULL: out = Variant::Null(); break;
    case VT_I2: out = Variant(static_cast<int16_t>(V_I2(v))); break;
    case VT_I4: out = Variant(static_cast<int32_t>(V_I4(v))); break;
    case VT_INT: out = Variant(static_cast<int32_t>(V_INT(v))); break;
    case VT_I1: out = Variant(static_cast<int16_t>(V_I1(v))); break;
    case VT_UI2: out = Variant(static_cast<int32_t>(V_UI2(v))); break;
    case VT_UI4: out = Variant(static_cast<int64_t>(V_UI4(v))); break;
    case VT_UINT: out = Variant(static_cast<int64_t>(V_UINT(v))); break;
    case VT_I8: out = Variant(static_cast<int64_t>(V_I8(v))); break;
    case VT_UI8: out = Variant(static_cast<int64_t>(V_UI8(v))); break;
    case VT_R4: out = Variant(V_R4(v)); break;
    case VT_R8: out = Variant(V_R8(v)); break;
    case VT_CY: {
      double d = 0;
      VarR8FromCy(V_CY(v), &d);
      out = Variant(d);
      break;
    }
    case VT_DECIMAL: {
      double d = 0;
      VarR8FromDec(const_cast<DECIMAL*>(&V_DECIMAL(v)), &d);
      out = Variant(d);
      break;
    }
    case VT_DATE: out = Variant::Date(V_DATE(v)); break;
    case VT_BSTR: out = Variant(Narrow(V_BSTR(v), static_cast<int>(SysStringLen(V_BSTR(v))))); break;
    case VT_DISPATCH: out = FromObject(V_DISPATCH(v)); break;
    case VT_UNKNOWN: out = FromObject(V_UNKNOWN(v)); break;
    case VT_ERROR: out = Variant::Error(V_ERROR(v)); break;
    case VT_BOOL: out = Variant(V_BOOL(v) != VARIANT_FALSE); break;
    case VT_UI1: out = Variant::Byte(V_UI1(v)); break;
    default:
      VariantClear(&plain);
      throw errors::TypeMismatch();
  }
  VariantClear(&plain);
  return out;
}

void ToVariant(const Variant& value, VARIANT* out) {
  if (value.IsArray()) {
    V_VT(out) = VT_ARRAY | ElementVt(value.Array().ElementType());
    V_ARRAY(out) = ToSafeArray(value.Array());
    return;
  }
  switch (value.Type()) {
    case VarType::kEmpty: V_VT(out) = VT_EMPTY; return;
    case VarType::kNull: V_VT(out) = VT_NULL; return;
    case VarType::kInteger: V_VT(out) = VT_I2; V_I2(out) = static_cast<SHORT>(value.RawInt()); return;
    case VarType::kLong: V_VT(out) = VT_I4; V_I4(out) = static_cast<LONG>(value.RawInt()); return;
    case VarType::kLongLong: V_VT(out) = VT_I8; V_I8(out) = value.RawInt(); return;
    case VarType::kSingle: V_VT(out) = VT_R4; V_R4(out) = static_cast<float>(value.RawDouble()); return;
    case VarType::kDouble: V_VT(out) = VT_R8; V_R8(out) = value.RawDouble(); return;
    case VarType::kCurrency: V_VT(out) = VT_CY; VarCyFromR8(value.RawDouble(), &V_CY(out)); return;
    case VarType::kDate: V_VT(out) = VT_DATE; V_DATE(out) = value.RawDouble(); return;
    case VarType::kString: V_VT(out) = VT_BSTR; V_BSTR(out) = MakeBstr(value.RawString()); return;
    case VarType::kError: V_VT(out) = VT_ERROR; V_ERROR(out) = value.RawError(); return;
    case VarType::kBoolean:
      V_VT(out) = VT_BOOL;
      V_BOOL(out) = value.RawBool() ? VARIANT_TRUE : VARIANT_FALSE;
      return;
    case VarType::kByte: V_VT(out) = VT_UI1; V_UI1(out) = static_cast<BYTE>(value.RawInt()); return;
    case VarType::kObject:
      V_VT(out) = VT_DISPATCH;
      V_DISPATCH(out) = DispatchOf(value.RawObject());
      return;
    default: V_VT(out) = VT_EMPTY; return;
  }
}

HRESULT WriteBack(const Variant& value, VARIANT* by_ref) {
  VARTYPE vt = V_VT(by_ref);
  if (!(vt & VT_BYREF)) return S_OK;
  VARIANT fresh;
  VariantInit(&fresh);
  ToVariant(value, &fresh);
  if (vt == (VT_BYREF | VT_VARIANT)) {
    VARIANT* target = V_VARIANTREF(by_ref);
    VariantClear(target);
    *target = fresh;  // ownership moves into the caller's variable
    return S_OK;
  }
  VARTYPE base = vt & ~VT_BYREF;
  if (base & VT_ARRAY) {
    if ((V_VT(&fresh) & VT_ARRAY) == 0) {
      VariantClear(&fresh);
      return DISP_E_TYPEMISMATCH;
    }
    SAFEARRAY** slot = V_ARRAYREF(by_ref);
    if (*slot) SafeArrayDestroy(*slot);
    *slot = V_ARRAY(&fresh);
    return S_OK;
  }
  VARIANT typed;
  VariantInit(&typed);
  HRESULT hr = VariantChangeType(&typed, &fresh, 0, base);
  VariantClear(&fresh);
  if (FAILED(hr)) return hr;
  switch (base) {
    case VT_BSTR:
      SysFreeString(*V_BSTRREF(by_ref));
      *V_BSTRREF(by_ref) = V_BSTR(&typed);
      return S_OK;
    case VT_DISPATCH:
      if (*V_DISPATCHREF(by_ref)) (*V_DISPATCHREF(by_ref))->Release();
      *V_DISPATCHREF(by_ref) = V_DISPATCH(&typed);
      return S_OK;
    case VT_UNKNOWN:
      if (*V_UNKNOWNREF(by_ref)) (*V_UNKNOWNREF(by_ref))->Release();
      *V_UNKNOWNREF(by_ref) = V_UNKNOWN(&typed);
      return S_OK;
    case VT_I1: case VT_UI1: *V_UI1REF(by_ref) = V_UI1(&typed); return S_OK;
    case VT_I2: case VT_UI2: case VT_BOOL: *V_I2REF(by_ref) = V_I2(&typed); return S_OK;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: case VT_ERROR:
      *V_I4REF(by_ref) = V_I4(&typed);
      return S_OK;
    case VT_R4: *V_R4REF(by_ref) = V_R4(&typed); return S_OK;
    case VT_R8: case VT_DATE: *V_R8REF(by_ref) = V_R8(&typed); return S_OK;
    case VT_I8: case VT_UI8: case VT_CY: *V_I8REF(by_ref) = V_I8(&typed); return S_OK;
    default:
      VariantClear(&typed);
      return DISP_E_TYPEMISMATCH;
  }
}

bool SameVariant(const VARIANT& a, const VARIANT& b) {
  if (V_VT(&a) != V_VT(&b)) return false;
  VARTYPE vt = V_VT(&a);
  if (vt == VT_BSTR) {
    UINT n = SysStringLen(V_BSTR(&a));
    return n == SysStringLen(V_BSTR(&b)) &&
           (n == 0 || std::memcmp(V_BSTR(&a), V_BSTR(&b), n * sizeof(OLECHAR)) == 0);
  }
  if (vt == VT_DECIMAL) return std::memcmp(&V_DECIMAL(&a), &V_DECIMAL(&b), sizeof(DECIMAL)) == 0;
  return V_I8(&a) == V_I8(&b) || (vt <= VT_NULL);
}

}  // namespace tovik::com
