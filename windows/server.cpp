// The DLL entry points of an automation server and what they share.
#include "server.h"

#include <oleauto.h>
#include <olectl.h>

#include <new>
#include <string>

#include "bridge.h"
#include "class_ids.h"
#include "com_object.h"
#include "com_value.h"
#include "frame/automation_error.h"

// Exported by oleaut32 (Vista and later) but not declared by mingw-w64.
extern "C" {
DECLSPEC_IMPORT HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* help);
DECLSPEC_IMPORT HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID libid, WORD major, WORD minor,
                                                        LCID lcid, SYSKIND kind);
}

namespace tovik::com {
namespace {

GUID GuidOf(std::string_view text) {
  GUID guid{};
  std::wstring wide = Wide(text);
  CLSIDFromString(wide.c_str(), &guid);
  return guid;
}

std::wstring ModulePath() {
  wchar_t path[MAX_PATH * 2] = {};
  GetModuleFileNameW(Bridge().module, path, MAX_PATH * 2);
  return path;
}

class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(const ServerClass& cls) : cls_(cls) { InterlockedIncrement(&Bridge().live); }
  ~ClassFactory() { InterlockedDecrement(&Bridge().live); }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
    if (riid == IID_IUnknown || riid == IID_IClassFactory) {
      *out = static_cast<IClassFactory*>(this);
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
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    try {
      ObjectRef object = cls_.make();
      ComObject* face = ComObject::Wrap(object);
      HRESULT hr = face->QueryInterface(riid, out);
      face->Release();
      return hr;
    } catch (const AutomationError& e) {
      return ReportError(e);
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    } catch (...) {
      return E_FAIL;
    }
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    if (lock) InterlockedIncrement(&Bridge().live);
    else InterlockedDecrement(&Bridge().live);
    return S_OK;
  }

 private:
  const ServerClass& cls_;
  LONG refs_ = 1;
};

LONG SetText(HKEY root, const std::wstring& key, const wchar_t* name, const std::wstring& value) {
  HKEY handle = nullptr;
  LONG rc = RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &handle, nullptr);
  if (rc != ERROR_SUCCESS) return rc;
  rc = RegSetValueExW(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                      static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
  RegCloseKey(handle);
  return rc;
}

// Writes (or removes) the classes under `classes_key` of `root`
// ("Software\Classes" of the machine or of the user).
HRESULT RegisterClasses(HKEY root, bool add) {
  const std::wstring base = L"Software\\Classes\\";
  std::wstring dll = ModulePath();
  for (const ServerClass& cls : Server().classes) {
    std::wstring clsid = Wide(cls.clsid);
    std::wstring prog_id = Wide(cls.prog_id);
    std::wstring class_key = base + L"CLSID\\" + clsid;
    if (!add) {
      RegDeleteTreeW(root, class_key.c_str());
      if (cls.make) RegDeleteTreeW(root, (base + prog_id).c_str());
      continue;
    }
    LONG rc = SetText(root, class_key, nullptr, Wide(cls.description));
    rc = rc ? rc : SetText(root, class_key + L"\\InprocServer32", nullptr, dll);
    rc = rc ? rc : SetText(root, class_key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
    if (Server().has_type_library) {
      rc = rc ? rc : SetText(root, class_key + L"\\TypeLib", nullptr, Wide(kLibraryId));
      rc = rc ? rc : SetText(root, class_key + L"\\Version", nullptr, L"3.0");
    }
    if (cls.make) {
      rc = rc ? rc : SetText(root, class_key + L"\\ProgID", nullptr, prog_id);
      rc = rc ? rc : SetText(root, base + prog_id, nullptr, Wide(cls.description));
      rc = rc ? rc : SetText(root, base + prog_id + L"\\CLSID", nullptr, clsid);
    }
    if (rc != ERROR_SUCCESS) return SELFREG_E_CLASS;
  }
  return S_OK;
}

HRESULT RegisterTypeLibrary(bool add, bool per_user) {
  if (!Server().has_type_library) return S_OK;
  std::wstring dll = ModulePath();
  if (add) {
    ITypeLib* library = nullptr;
    HRESULT hr = LoadTypeLibEx(dll.c_str(), REGKIND_NONE, &library);
    if (FAILED(hr)) return SELFREG_E_TYPELIB;
    hr = per_user ? RegisterTypeLibForUser(library, dll.data(), nullptr)
                  : RegisterTypeLib(library, dll.data(), nullptr);
    library->Release();
    return FAILED(hr) ? SELFREG_E_TYPELIB : S_OK;
  }
  GUID libid = GuidOf(kLibraryId);
  SYSKIND kind = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;
  if (per_user) UnRegisterTypeLibForUser(libid, kLibraryMajor, kLibraryMinor, 0, kind);
  else UnRegisterTypeLib(libid, kLibraryMajor, kLibraryMinor, 0, kind);
  return S_OK;
}

HRESULT Register(bool add, bool per_user) {
  HKEY root = per_user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
  HRESULT hr = RegisterClasses(root, add);
  if (FAILED(hr)) return hr;
  return RegisterTypeLibrary(add, per_user);
}

}  // namespace

}  // namespace tovik::com

using tovik::com::Bridge;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    Bridge().module = instance;
    DisableThreadLibraryCalls(instance);
    tovik::com::OnServerLoaded();
  }
  return TRUE;
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID riid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  for (const tovik::com::ServerClass& cls : tovik::com::Server().classes) {
    if (!cls.make || tovik::com::GuidOf(cls.clsid) != clsid) continue;
    auto* factory = new (std::nothrow) tovik::com::ClassFactory(cls);
    if (!factory) return E_OUTOFMEMORY;
    HRESULT hr = factory->QueryInterface(riid, out);
    factory->Release();
    return hr;
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

// The library keeps state across calls (the host link, the implicit
// instances of its global classes): once loaded it stays for the life of
// the process.
extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() { return S_FALSE; }

extern "C" HRESULT STDAPICALLTYPE DllRegisterServer() { return tovik::com::Register(true, false); }

extern "C" HRESULT STDAPICALLTYPE DllUnregisterServer() { return tovik::com::Register(false, false); }

// regsvr32 /n /i:user registers for the current user only (no
// administrator rights needed); /u /n /i:user removes that registration.
extern "C" HRESULT STDAPICALLTYPE DllInstall(BOOL install, LPCWSTR command_line) {
  bool per_user = command_line && _wcsicmp(command_line, L"user") == 0;
  return tovik::com::Register(install != FALSE, per_user);
}
