#include "com_object.h"

#include <oleauto.h>
#include <olectl.h>

#include <new>
#include <string>
#include <vector>

#include "bridge.h"
#include "class_ids.h"
#include "com_value.h"
#include "frame/runtime_text.h"
#include "host_object.h"

namespace tovik::com {
namespace {

// Faces made by this module answer this interface with themselves; the
// marker's address tells a face of this module from one of another server.
// {4F6B1D52-8C1A-4C55-9E2B-6A3D0E7F1B20}
const IID kFaceIid = {0x4f6b1d52, 0x8c1a, 0x4c55, {0x9e, 0x2b, 0x6a, 0x3d, 0x0e, 0x7f, 0x1b, 0x20}};
const int kModuleMarker = 0;

// An error number in the automation range: 0x800A0000 + number.
constexpr HRESULT kControlBase = static_cast<HRESULT>(0x800A0000u);

IID IidOf(std::string_view text) {
  IID iid{};
  std::wstring wide = Wide(text);
  IIDFromString(wide.c_str(), &iid);
  return iid;
}

// A type description that knows only its name: what TypeName asks.
class NamedTypeInfo final : public ITypeInfo {
 public:
  explicit NamedTypeInfo(std::string_view name) : name_(Wide(name)) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
    if (riid == IID_IUnknown || riid == IID_ITypeInfo) {
      *out = static_cast<ITypeInfo*>(this);
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
  HRESULT STDMETHODCALLTYPE GetTypeAttr(TYPEATTR** attr) override {
    auto* a = new (std::nothrow) TYPEATTR{};
    if (!a) return E_OUTOFMEMORY;
    a->typekind = TKIND_DISPATCH;
    a->memidConstructor = MEMBERID_NIL;
    a->memidDestructor = MEMBERID_NIL;
    a->cbSizeVft = 7 * sizeof(void*);
    *attr = a;
    return S_OK;
  }
  void STDMETHODCALLTYPE ReleaseTypeAttr(TYPEATTR* attr) override { delete attr; }
  HRESULT STDMETHODCALLTYPE GetDocumentation(MEMBERID id, BSTR* name, BSTR* doc, DWORD* help,
                                             BSTR* file) override {
    if (id != MEMBERID_NIL) return TYPE_E_ELEMENTNOTFOUND;
    if (name) *name = SysAllocString(name_.c_str());
    if (doc) *doc = nullptr;
    if (help) *help = 0;
    if (file) *file = nullptr;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFuncDesc(UINT, FUNCDESC**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetVarDesc(UINT, VARDESC**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetNames(MEMBERID, BSTR*, UINT, UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetRefTypeOfImplType(UINT, HREFTYPE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetImplTypeFlags(UINT, INT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(LPOLESTR*, UINT, MEMBERID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Invoke(PVOID, MEMBERID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetDllEntry(MEMBERID, INVOKEKIND, BSTR*, BSTR*, WORD*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetRefTypeInfo(HREFTYPE, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE AddressOfMember(MEMBERID, INVOKEKIND, PVOID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID, PVOID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetMops(MEMBERID, BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetContainingTypeLib(ITypeLib**, UINT*) override { return E_NOTIMPL; }
  void STDMETHODCALLTYPE ReleaseFuncDesc(FUNCDESC*) override {}
  void STDMETHODCALLTYPE ReleaseVarDesc(VARDESC*) override {}

 private:
  std::wstring name_;
  LONG refs_ = 1;
};

// For Each over a collection: the items taken when the walk began.
class ItemEnumerator final : public IEnumVARIANT {
 public:
  explicit ItemEnumerator(std::vector<Variant> items, size_t at = 0)
      : items_(std::make_shared<std::vector<Variant>>(std::move(items))), at_(at) {
    InterlockedIncrement(&Bridge().live);
  }
  ItemEnumerator(std::shared_ptr<std::vector<Variant>> items, size_t at) : items_(std::move(items)), at_(at) {
    InterlockedIncrement(&Bridge().live);
  }
  ~ItemEnumerator() { InterlockedDecrement(&Bridge().live); }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
    if (riid == IID_IUnknown || riid == IID_IEnumVARIANT) {
      *out = static_cast<IEnumVARIANT*>(this);
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
  HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* out, ULONG* fetched) override {
    ULONG n = 0;
    try {
      for (; n < count && at_ < items_->size(); ++n, ++at_) {
        VariantInit(&out[n]);
        ToVariant((*items_)[at_], &out[n]);
      }
    } catch (...) {
      return E_FAIL;
    }
    if (fetched) *fetched = n;
    return n == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    at_ += count;
    if (at_ > items_->size()) {
      at_ = items_->size();
      return S_FALSE;
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    at_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** out) override {
    *out = new (std::nothrow) ItemEnumerator(items_, at_);
    return *out ? S_OK : E_OUTOFMEMORY;
  }

 private:
  std::shared_ptr<std::vector<Variant>> items_;
  size_t at_;
  LONG refs_ = 1;
};

// A client's sink connected to an object's events: each event is passed
// on by name (the sink is asked for its DISPID), arguments by reference.
class SinkForwarder final : public EventSink {
 public:
  explicit SinkForwarder(IDispatch* sink) : sink_(sink) { sink_->AddRef(); }
  ~SinkForwarder() override { sink_->Release(); }
  void OnEvent(std::string_view event, std::span<Variant> args) override {
    std::wstring name = Wide(event);
    LPOLESTR names[] = {name.data()};
    DISPID id = DISPID_UNKNOWN;
    if (FAILED(sink_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id))) return;
    CallDispatch(sink_, id, InvokeKind::kMethod, args);
  }

 private:
  IDispatch* sink_;
};

}  // namespace

// The connection point of an object's events.
class ConnectionPoint final : public IConnectionPoint {
 public:
  ConnectionPoint(ComObject* container, ObjectRef object)
      : container_(container), object_(std::move(object)) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
    if (riid == IID_IUnknown || riid == IID_IConnectionPoint) {
      *out = static_cast<IConnectionPoint*>(this);
      AddRef();
      return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
  }
  // The point lives as long as its container.
  ULONG STDMETHODCALLTYPE AddRef() override { return container_->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return container_->Release(); }
  HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) override {
    *iid = IidOf(kEventsIid);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer** out) override {
    *out = container_;
    container_->AddRef();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override {
    if (!sink || !cookie) return E_POINTER;
    IDispatch* dispatch = nullptr;
    if (FAILED(sink->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)))) {
      return CONNECT_E_CANNOTCONNECT;
    }
    auto forwarder = std::make_shared<SinkForwarder>(dispatch);
    dispatch->Release();
    int id = object_->Events()->Connect(forwarder);
    sinks_[id] = std::move(forwarder);
    *cookie = static_cast<DWORD>(id);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override {
    auto it = sinks_.find(static_cast<int>(cookie));
    if (it == sinks_.end()) return CONNECT_E_NOCONNECTION;
    object_->Events()->Disconnect(static_cast<int>(cookie));
    sinks_.erase(it);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

  void DisconnectAll() {
    for (auto& [cookie, sink] : sinks_) object_->Events()->Disconnect(cookie);
    sinks_.clear();
  }

 private:
  ComObject* container_;
  ObjectRef object_;
  std::map<int, std::shared_ptr<SinkForwarder>> sinks_;
};

ComObject::ComObject(ObjectRef object) : object_(std::move(object)), marker_(&kModuleMarker) {
  InterlockedIncrement(&Bridge().live);
  Bridge().faces[object_.get()] = this;
}

ComObject::~ComObject() {
  if (connection_point_) {
    connection_point_->DisconnectAll();
    delete connection_point_;
  }
  Bridge().faces.erase(object_.get());
  InterlockedDecrement(&Bridge().live);
}

ComObject* ComObject::Wrap(const ObjectRef& object) {
  auto it = Bridge().faces.find(object.get());
  if (it != Bridge().faces.end()) {
    it->second->AddRef();
    return it->second;
  }
  return new ComObject(object);
}

ObjectRef ComObject::Unwrap(IUnknown* unknown) {
  void* face = nullptr;
  if (FAILED(unknown->QueryInterface(kFaceIid, &face)) || !face) return nullptr;
  auto* mine = static_cast<ComObject*>(face);
  // Both servers are built from this source, so the marker sits at the same
  // place in a face of either; a face of the other server keeps its object
  // (made by its own copy of the library) to itself.
  ObjectRef object = mine->marker_ == &kModuleMarker ? mine->object_ : nullptr;
  mine->Release();
  return object;
}

HRESULT ComObject::QueryInterface(REFIID riid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (riid == IID_IUnknown || riid == IID_IDispatch) {
    *out = static_cast<IDispatch*>(this);
  } else if (riid == IID_ISupportErrorInfo) {
    *out = static_cast<ISupportErrorInfo*>(this);
  } else if (riid == IID_IConnectionPointContainer && object_->Events()) {
    *out = static_cast<IConnectionPointContainer*>(this);
  } else if (riid == kFaceIid) {
    *out = this;
  } else {
    return E_NOINTERFACE;
  }
  AddRef();
  return S_OK;
}

ULONG ComObject::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&refs_)); }

ULONG ComObject::Release() {
  LONG n = InterlockedDecrement(&refs_);
  if (n == 0) delete this;
  return static_cast<ULONG>(n);
}

HRESULT ComObject::GetTypeInfoCount(UINT* count) {
  if (!count) return E_POINTER;
  *count = 1;
  return S_OK;
}

HRESULT ComObject::GetTypeInfo(UINT index, LCID, ITypeInfo** info) {
  if (!info) return E_POINTER;
  *info = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  *info = new (std::nothrow) NamedTypeInfo(object_->TypeName());
  return *info ? S_OK : E_OUTOFMEMORY;
}

HRESULT ComObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  if (!names || !ids || count == 0) return E_INVALIDARG;
  HRESULT hr = S_OK;
  std::string name = Narrow(names[0]);
  if (CaseInsensitiveEqual(name, "_NewEnum")) {
    ids[0] = DISPID_NEWENUM;
  } else {
    ids[0] = object_->GetIdOfName(name);
    if (ids[0] == kDispIdUnknown) hr = DISP_E_UNKNOWNNAME;
  }
  // Arguments are named as the type library names them: a1, a2, ...
  for (UINT i = 1; i < count; ++i) {
    std::string arg = Narrow(names[i]);
    ids[i] = DISPID_UNKNOWN;
    if (arg.size() >= 2 && (arg[0] == 'a' || arg[0] == 'A')) {
      int n = 0;
      bool digits = true;
      for (char c : arg.substr(1)) {
        if (c < '0' || c > '9' || n > 1000) digits = false;
        else n = n * 10 + (c - '0');
      }
      if (digits && n >= 1) ids[i] = n - 1;
    }
    if (ids[i] == DISPID_UNKNOWN) hr = DISP_E_UNKNOWNNAME;
  }
  return hr;
}

HRESULT ComObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                          VARIANT* result, EXCEPINFO* excep, UINT* arg_error) {
  if (!params) return E_INVALIDARG;
  // Script hosts read a member's error from the exception information
  // (Wine's VBScript only from there); others from the error object.
  auto fail = [excep](const AutomationError& e) {
    HRESULT hr = ReportError(e);
    if (!excep) return hr;
    *excep = {};
    excep->scode = hr;
    excep->bstrDescription = MakeBstr(e.Description());
    excep->bstrSource = MakeBstr(e.Source());
    return DISP_E_EXCEPTION;
  };
  try {
    if (id == DISPID_NEWENUM) {
      if (!result) return E_INVALIDARG;
      V_VT(result) = VT_UNKNOWN;
      V_UNKNOWN(result) = new ItemEnumerator(object_->Enumerate());
      return S_OK;
    }
    InvokeKind kind = (flags & DISPATCH_PROPERTYPUTREF) ? InvokeKind::kPropertyPutRef
                      : (flags & DISPATCH_PROPERTYPUT)  ? InvokeKind::kPropertyPut
                      : (flags & DISPATCH_METHOD)       ? InvokeKind::kMethod
                                                        : InvokeKind::kPropertyGet;
    bool put = kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef;
    UINT total = params->cArgs;
    UINT named = params->cNamedArgs;
    UINT positional = total - named;
    // Arguments arrive last first; named ones sit at the front.
    std::vector<Variant> args;
    std::vector<VARIANT*> sources;
    for (UINT i = 0; i < positional; ++i) {
      VARIANT* source = &params->rgvarg[total - 1 - i];
      args.push_back(FromVariant(*source));
      sources.push_back(source);
    }
    Variant assigned;
    bool has_assigned = false;
    for (UINT k = 0; k < named; ++k) {
      DISPID position = params->rgdispidNamedArgs[k];
      VARIANT* source = &params->rgvarg[k];
      if (position == DISPID_PROPERTYPUT) {
        assigned = FromVariant(*source);
        has_assigned = true;
        continue;
      }
      if (position < 0 || position > 1000) {
        if (arg_error) *arg_error = k;
        return DISP_E_PARAMNOTFOUND;
      }
      auto at = static_cast<size_t>(position);
      if (args.size() <= at) {
        args.resize(at + 1, Variant::Missing());
        sources.resize(at + 1, nullptr);
      }
      args[at] = FromVariant(*source);
      sources[at] = source;
    }
    if (put) {
      if (!has_assigned) {
        if (args.empty()) return DISP_E_PARAMNOTOPTIONAL;
        assigned = std::move(args.back());
        args.pop_back();
        sources.pop_back();
      }
      args.push_back(std::move(assigned));
    }
    std::vector<Variant> before = args;
    Variant value = object_->Invoke(id, kind, args);
    for (size_t i = 0; i < sources.size(); ++i) {
      if (sources[i] && (V_VT(sources[i]) & VT_BYREF) && !args[i].SameAs(before[i])) {
        HRESULT hr = WriteBack(args[i], sources[i]);
        if (FAILED(hr)) return fail(errors::TypeMismatch());
      }
    }
    if (result) {
      VariantInit(result);
      ToVariant(value, result);
    }
    return S_OK;
  } catch (const AutomationError& e) {
    return fail(e);
  } catch (const std::bad_alloc&) {
    return fail(errors::Runtime(7));
  } catch (const std::exception& e) {
    return fail(AutomationError(51, e.what()));  // internal error
  }
}

HRESULT ComObject::InterfaceSupportsErrorInfo(REFIID) { return S_OK; }

HRESULT ComObject::EnumConnectionPoints(IEnumConnectionPoints** out) {
  if (out) *out = nullptr;
  return E_NOTIMPL;
}

HRESULT ComObject::FindConnectionPoint(REFIID riid, IConnectionPoint** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (!object_->Events()) return CONNECT_E_NOCONNECTION;
  if (riid != IidOf(kEventsIid) && riid != IID_IDispatch) return CONNECT_E_NOCONNECTION;
  if (!connection_point_) connection_point_ = new ConnectionPoint(this, object_);
  *out = connection_point_;
  connection_point_->AddRef();
  return S_OK;
}

IDispatch* DispatchOf(const ObjectRef& object) {
  if (!object) return nullptr;
  if (auto* stand_in = dynamic_cast<HostObject*>(object.get())) {
    IDispatch* dispatch = stand_in->dispatch();
    dispatch->AddRef();
    return dispatch;
  }
  return ComObject::Wrap(object);
}

HRESULT ReportError(const AutomationError& error) {
  int32_t number = error.Number();
  HRESULT hr = number > 0 && number < 0x10000 ? static_cast<HRESULT>(kControlBase | number)
                                              : static_cast<HRESULT>(number);
  ICreateErrorInfo* create = nullptr;
  if (SUCCEEDED(CreateErrorInfo(&create))) {
    std::wstring description = Wide(error.Description());
    std::wstring source = Wide(error.Source());
    create->SetDescription(description.data());
    create->SetSource(source.data());
    create->SetGUID(IID_IDispatch);
    IErrorInfo* info = nullptr;
    if (SUCCEEDED(create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)))) {
      SetErrorInfo(0, info);
      info->Release();
    }
    create->Release();
  }
  return hr;
}

AutomationError ErrorOf(HRESULT hr, EXCEPINFO* excep) {
  std::string description, source;
  HRESULT code = hr;
  if (hr == DISP_E_EXCEPTION && excep) {
    if (excep->pfnDeferredFillIn) excep->pfnDeferredFillIn(excep);
    code = excep->scode ? excep->scode : static_cast<HRESULT>(kControlBase | excep->wCode);
    if (excep->bstrDescription) description = Narrow(excep->bstrDescription);
    if (excep->bstrSource) source = Narrow(excep->bstrSource);
  } else {
    IErrorInfo* info = nullptr;
    if (GetErrorInfo(0, &info) == S_OK && info) {
      BSTR text = nullptr, from = nullptr;
      if (SUCCEEDED(info->GetDescription(&text)) && text) description = Narrow(text);
      if (SUCCEEDED(info->GetSource(&from)) && from) source = Narrow(from);
      SysFreeString(text);
      SysFreeString(from);
      info->Release();
    }
  }
  if (excep) {
    SysFreeString(excep->bstrDescription);
    SysFreeString(excep->bstrSource);
    SysFreeString(excep->bstrHelpFile);
    excep->bstrDescription = excep->bstrSource = excep->bstrHelpFile = nullptr;
  }
  // Failures of the call itself are the runtime's errors.
  int32_t runtime = 0;
  switch (code) {
    case DISP_E_UNKNOWNNAME: case DISP_E_MEMBERNOTFOUND: runtime = kErrNotSupported; break;
    case DISP_E_TYPEMISMATCH: runtime = kErrTypeMismatch; break;
    case DISP_E_BADPARAMCOUNT: runtime = kErrWrongArgCount; break;
    case DISP_E_PARAMNOTOPTIONAL: runtime = kErrArgNotOptional; break;
    case DISP_E_OVERFLOW: runtime = kErrOverflow; break;
    case DISP_E_BADINDEX: runtime = kErrSubscript; break;
    case E_OUTOFMEMORY: runtime = 7; break;
    default: break;
  }
  if ((static_cast<uint32_t>(code) & 0xFFFF0000u) == 0x800A0000u) runtime = code & 0xFFFF;
  if (runtime) {
    if (description.empty()) return errors::Runtime(runtime);
    return AutomationError(runtime, description, source);
  }
  return errors::Host(code, description, source);
}

}  // namespace tovik::com
