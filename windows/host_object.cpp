#include "host_object.h"

#include <oleauto.h>

#include <new>
#include <vector>

#include "bridge.h"
#include "class_ids.h"
#include "com_object.h"
#include "com_value.h"
#include "frame/automation_error.h"
#include "frame/runtime_text.h"

namespace tovik::com {
namespace {

// IID_IDispatchEx, which mingw-w64's uuid library lacks.
const IID kDispatchExIid = {0xa6ef9860, 0xc720, 0x11d0, {0x93, 0x37, 0x00, 0xa0, 0xc9, 0x0d, 0xca, 0xa9}};

}  // namespace

// Receives the events of a host object and raises them on its stand-in:
// the source asks for each event's DISPID by name, so ids are given out in
// the order names are first asked for.
class EventReceiver final : public IDispatch {
 public:
  explicit EventReceiver(EventSource* target) : target_(target) {}
  void Detach() { target_ = nullptr; }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
    IID events{};
    std::wstring text = Wide(kEventsIid);
    IIDFromString(text.c_str(), &events);
    if (riid == IID_IUnknown || riid == IID_IDispatch || riid == events) {
      *out = static_cast<IDispatch*>(this);
      AddRef();
      return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&refs_)); }
  ULONG STDMETHODCALLTYPE Release() override {
    LONG n = InterlockedDecrement(&refs_);
    if (n == 0) delete this;
    return static_cast<ULONG>(n);
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    if (count != 1) return DISP_E_UNKNOWNNAME;
    std::string name = Narrow(names[0]);
    for (size_t i = 0; i < names_.size(); ++i) {
      if (CaseInsensitiveEqual(names_[i], name)) {
        ids[0] = static_cast<DISPID>(i + 1);
        return S_OK;
      }
    }
    names_.push_back(name);
    ids[0] = static_cast<DISPID>(names_.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*,
                                   EXCEPINFO*, UINT*) override {
    if (id < 1 || static_cast<size_t>(id) > names_.size()) return DISP_E_MEMBERNOTFOUND;
    if (!target_) return S_OK;
    try {
      std::vector<Variant> args;
      for (UINT i = 0; i < params->cArgs; ++i) args.push_back(FromVariant(params->rgvarg[params->cArgs - 1 - i]));
      std::vector<Variant> before = args;
      target_->Raise(names_[static_cast<size_t>(id) - 1], args);
      for (UINT i = 0; i < params->cArgs; ++i) {
        VARIANT* source = &params->rgvarg[params->cArgs - 1 - i];
        if ((V_VT(source) & VT_BYREF) && !args[i].SameAs(before[i])) WriteBack(args[i], source);
      }
      return S_OK;
    } catch (const AutomationError& e) {
      return ReportError(e);
    } catch (...) {
      return E_FAIL;
    }
  }

 private:
  EventSource* target_;
  std::vector<std::string> names_;
  LONG refs_ = 1;
};

ObjectRef HostObject::Wrap(IDispatch* dispatch) {
  return std::make_shared<HostObject>(dispatch);
}

HostObject::HostObject(IDispatch* dispatch) : dispatch_(dispatch) {
  dispatch_->AddRef();
  if (FAILED(dispatch_->QueryInterface(kDispatchExIid, reinterpret_cast<void**>(&dispatch_ex_)))) {
    dispatch_ex_ = nullptr;
  }
  // The IUnknown of an object is its identity for as long as it lives; the
  // reference taken here is given back at once, the IDispatch keeps it alive.
  if (SUCCEEDED(dispatch_->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity_)))) {
    identity_->Release();
  }
}

HostObject::~HostObject() {
  if (connection_) {
    connection_->Unadvise(cookie_);
    connection_->Release();
  }
  if (receiver_) {
    receiver_->Detach();
    receiver_->Release();
  }
  if (dispatch_ex_) dispatch_ex_->Release();
  dispatch_->Release();
}

std::string_view HostObject::TypeName() const {
  if (!type_name_known_) {
    type_name_known_ = true;
    ITypeInfo* info = nullptr;
    if (SUCCEEDED(dispatch_->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info)) && info) {
      BSTR name = nullptr;
      if (SUCCEEDED(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr)) && name) {
        type_name_ = Narrow(name);
      }
      SysFreeString(name);
      info->Release();
    }
    if (type_name_.empty()) type_name_ = "Object";
  }
  return type_name_;
}

DispId HostObject::GetIdOfName(std::string_view name) const {
  std::string key = FoldCase(name);
  auto it = ids_.find(key);
  if (it != ids_.end()) return it->second;
  std::wstring wide = Wide(name);
  DISPID id = DISPID_UNKNOWN;
  HRESULT hr;
  if (dispatch_ex_) {
    BSTR bstr = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    hr = dispatch_ex_->GetDispID(bstr, fdexNameCaseInsensitive, &id);
    SysFreeString(bstr);
  } else {
    LPOLESTR names[] = {wide.data()};
    hr = dispatch_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  }
  if (FAILED(hr)) id = kDispIdUnknown;
  ids_.emplace(std::move(key), id);
  return id;
}

Variant HostObject::Invoke(DispId id, InvokeKind kind, std::span<Variant> args) {
  if (id == kDispIdUnknown) throw errors::NotSupported();
  return CallDispatch(dispatch_, id, kind, args);
}

std::vector<Variant> HostObject::Enumerate() {
  DISPPARAMS none = {nullptr, nullptr, 0, 0};
  VARIANT result;
  VariantInit(&result);
  EXCEPINFO excep = {};
  HRESULT hr = dispatch_->Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_USER_DEFAULT,
                                 DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none, &result, &excep, nullptr);
  if (FAILED(hr)) throw ErrorOf(hr, &excep);
  IUnknown* unknown = V_VT(&result) == VT_UNKNOWN || V_VT(&result) == VT_DISPATCH ? V_UNKNOWN(&result) : nullptr;
  IEnumVARIANT* walk = nullptr;
  if (!unknown || FAILED(unknown->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(&walk)))) {
    VariantClear(&result);
    throw errors::NotSupported();
  }
  std::vector<Variant> items;
  VARIANT item;
  VariantInit(&item);
  ULONG fetched = 0;
  try {
    while (walk->Next(1, &item, &fetched) == S_OK && fetched == 1) {
      items.push_back(FromVariant(item));
      VariantClear(&item);
    }
  } catch (...) {
    VariantClear(&item);
    walk->Release();
    VariantClear(&result);
    throw;
  }
  walk->Release();
  VariantClear(&result);
  return items;
}

EventSource* HostObject::Events() {
  if (!events_tried_) {
    events_tried_ = true;
    IConnectionPointContainer* container = nullptr;
    if (SUCCEEDED(dispatch_->QueryInterface(IID_IConnectionPointContainer,
                                            reinterpret_cast<void**>(&container)))) {
      IID events{};
      std::wstring text = Wide(kEventsIid);
      IIDFromString(text.c_str(), &events);
      if (SUCCEEDED(container->FindConnectionPoint(events, &connection_))) {
        receiver_ = new EventReceiver(&events_);
        if (FAILED(connection_->Advise(receiver_, &cookie_))) {
          connection_->Release();
          connection_ = nullptr;
        }
      }
      container->Release();
    }
  }
  return connection_ ? &events_ : nullptr;
}

Variant CallDispatch(IDispatch* dispatch, DISPID id, InvokeKind kind, std::span<Variant> args) {
  bool put = kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef;
  size_t count = args.size();
  // Each argument is passed by reference to a holder; a Missing one by
  // value, as clients pass an omitted argument; the value assigned by a
  // property put by value under DISPID_PROPERTYPUT.
  std::vector<VARIANT> holders(count);
  std::vector<VARIANT> before(count);
  std::vector<VARIANTARG> passed(count);
  for (size_t i = 0; i < count; ++i) {
    VariantInit(&holders[i]);
    VariantInit(&before[i]);
  }
  auto clear = [&] {
    for (size_t i = 0; i < count; ++i) {
      VariantClear(&holders[i]);
      VariantClear(&before[i]);
    }
  };
  try {
    for (size_t i = 0; i < count; ++i) {
      ToVariant(args[i], &holders[i]);
      VARIANTARG& slot = passed[count - 1 - i];
      bool by_value = args[i].IsMissing() || (put && i + 1 == count);
      if (by_value) {
        slot = holders[i];
      } else {
        VariantCopy(&before[i], &holders[i]);
        V_VT(&slot) = VT_BYREF | VT_VARIANT;
        V_VARIANTREF(&slot) = &holders[i];
      }
    }
  } catch (...) {
    clear();
    throw;
  }
  DISPID put_id = DISPID_PROPERTYPUT;
  DISPPARAMS params = {count ? passed.data() : nullptr, put ? &put_id : nullptr,
                       static_cast<UINT>(count), put ? 1u : 0u};
  WORD flags = kind == InvokeKind::kPropertyPutRef ? DISPATCH_PROPERTYPUTREF
               : kind == InvokeKind::kPropertyPut  ? DISPATCH_PROPERTYPUT
                                                   : DISPATCH_METHOD | DISPATCH_PROPERTYGET;
  VARIANT result;
  VariantInit(&result);
  EXCEPINFO excep = {};
  UINT arg_error = 0;
  HRESULT hr = dispatch->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                put ? nullptr : &result, &excep, &arg_error);
  if (FAILED(hr)) {
    clear();
    throw ErrorOf(hr, &excep);
  }
  try {
    for (size_t i = 0; i < count; ++i) {
      if (V_VT(&passed[count - 1 - i]) == (VT_BYREF | VT_VARIANT) && !SameVariant(holders[i], before[i])) {
        args[i] = FromVariant(holders[i]);
      }
    }
    Variant value = FromVariant(result);
    VariantClear(&result);
    clear();
    return value;
  } catch (...) {
    VariantClear(&result);
    clear();
    throw;
  }
}

}  // namespace tovik::com
