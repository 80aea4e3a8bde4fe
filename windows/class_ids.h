// The identifiers the automation servers are known by: the type library,
// each class and its dispatch interface, the headless host's classes and
// the events interface. Fixed for good: clients and registries keep them.
#ifndef TOVIK_WINDOWS_CLASS_IDS_H_
#define TOVIK_WINDOWS_CLASS_IDS_H_

#include <span>
#include <string_view>

namespace tovik::com {

// Tovik_AutoCad_Pro, version 3.00.
inline constexpr std::string_view kLibraryId = "{7E313F09-DF7D-43A6-A469-02D1B1E9B25E}";
inline constexpr unsigned short kLibraryMajor = 3;
inline constexpr unsigned short kLibraryMinor = 0;

struct ClassIds {
  std::string_view name;   // the class name, as the type library lists it
  std::string_view clsid;  // the coclass
  std::string_view iid;    // its dispatch interface (_Name)
};

// The ten classes, in type-library order.
inline constexpr ClassIds kLibraryClasses[] = {
    {"AcadSpace", "{F603AD3F-1C61-46B6-8095-62DC6536E84B}", "{FBB9872E-B3D8-45C0-9F10-F82B551CF921}"},
    {"DynamicSS", "{E05F1E64-B5E1-457E-B1A0-2323D70E2E2C}", "{8576B4D8-195F-4502-93C1-AD9098923BF4}"},
    {"SSDimensions", "{17083C5E-5CAC-4E54-BA31-C9DFF112F1D0}", "{770DC570-3471-4BA6-901D-317351F84892}"},
    {"SSAnimation", "{1070F131-6F36-4FDE-929B-01B11A4B6FDC}", "{5D6A0CD7-47CD-4634-89A2-7FB0353627B9}"},
    {"AutoCAD_Enum", "{DF24A740-10F6-47A3-9FFF-5F5E7C75DA1B}", "{2F1244CB-FBF9-4658-B2BD-1330496AA4FC}"},
    {"AcadTransaction", "{405225D8-E88C-4AA0-AA75-95D73153177A}", "{03590C57-8E63-4B52-92A8-4B902B56D443}"},
    {"AcadDocSpace", "{CC7AB3AE-25F5-4FF8-B6A7-4E6FD4E67717}", "{29D69507-2272-4770-AD54-CD86C486C825}"},
    {"Xdata", "{72D2BAB2-B56B-4E6D-B85A-4C67B68E65D5}", "{60EAB22C-A862-4B9A-AF08-B894D6EFEDE0}"},
    {"DwgPicture", "{97B2915C-D15F-431A-AD17-6F39224F251F}", "{706BD10B-6C28-4E39-9C3B-7658B8414CE1}"},
    {"ZActiveXCOM", "{DD9F057E-878B-4260-AC07-00C8AFE4FD82}", "{E336FE54-39A9-4B1C-9B51-7146AD8A7E85}"},
};

// The headless host: TovikHost.Application (the running host of the
// process) and TovikHost.ZActiveX (its host-event object).
inline constexpr std::string_view kHostApplicationClsid = "{8F36705B-9170-450D-824C-BE4E56A675BB}";
inline constexpr std::string_view kHostEventsClsid = "{F7A1E507-54DE-4EEB-9CB6-07A4A660A14A}";

// The events interface every event source answers through its connection
// point: a sink is asked for the DISPID of each event by name.
inline constexpr std::string_view kEventsIid = "{C457B12C-9355-40A8-8D21-8D76B3D8E7D1}";

}  // namespace tovik::com

#endif  // TOVIK_WINDOWS_CLASS_IDS_H_
