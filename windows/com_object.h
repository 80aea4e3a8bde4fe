// ComObject: a library (or headless host) object as a COM automation
// object. IDispatch over the object's dispatch interface (names looked up
// case-insensitively, non-ASCII letters too; DISPIDs are member-table
// positions; named arguments by the type library's names a1, a2, ...;
// omitted arguments as Missing; by-reference arguments written back when
// the member changed them; DISPID_VALUE as the default member; _NewEnum for
// For Each), errors as 0x800A0000 + number with the error object set,
// connection points for the object's events, and the type name through
// GetTypeInfo.
#ifndef TOVIK_WINDOWS_COM_OBJECT_H_
#define TOVIK_WINDOWS_COM_OBJECT_H_

#include <ocidl.h>
#include <oaidl.h>
#include <windows.h>

#include <map>
#include <memory>

#include "frame/automation_error.h"
#include "frame/dispatch.h"

namespace tovik::com {

class ConnectionPoint;

class ComObject final : public IDispatch, public ISupportErrorInfo, public IConnectionPointContainer {
 public:
  // The COM face of `object`, AddRef'ed: the same one while it is alive.
  static ComObject* Wrap(const ObjectRef& object);
  // The library object behind `unknown` when it is a face made by this
  // module, else nullptr.
  static ObjectRef Unwrap(IUnknown* unknown);

  const ObjectRef& object() const { return object_; }

  // IUnknown
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  // IDispatch
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override;
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags,
                                   DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                   UINT* arg_error) override;
  // ISupportErrorInfo
  HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) override;
  // IConnectionPointContainer
  HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** out) override;
  HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID riid, IConnectionPoint** out) override;

 private:
  explicit ComObject(ObjectRef object);
  ~ComObject();

  ObjectRef object_;
  // The address of a constant of the module that made this face.
  const void* marker_;
  LONG refs_ = 1;
  ConnectionPoint* connection_point_ = nullptr;  // made on first request
};

// An AddRef'ed IDispatch for `object` (nullptr for Nothing): the object a
// stand-in stands for, or the COM face of a library object.
IDispatch* DispatchOf(const ObjectRef& object);

// Sets the error object from `error` and returns the HRESULT clients see:
// 0x800A0000 + number for the runtime's and the library's numbers, the
// number itself for a host error that carries an HRESULT.
HRESULT ReportError(const AutomationError& error);

// The automation error an HRESULT returned by a call stands for, with the
// text and source of the exception information or of the error object.
AutomationError ErrorOf(HRESULT hr, EXCEPINFO* excep);

}  // namespace tovik::com

#endif  // TOVIK_WINDOWS_COM_OBJECT_H_
