// ZActiveXCOM: receives the host-event object from the client add-in,
// stores it as the library-wide host link, hands it on to the maker's
// sibling libraries, and listens to its events so that the library's forms
// behave well around modal host states, window changes and closing
// drawings.
//
// Owns: its event connection and the collection of remembered forms.
// Borrows: the host-event object (also stored in the library state).
#ifndef TOVIK_FRAME_ZACTIVEX_COM_H_
#define TOVIK_FRAME_ZACTIVEX_COM_H_

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "frame/collection.h"
#include "frame/dispatch.h"
#include "frame/member_table.h"

namespace tovik {

// The library's application title (the type library's project name).
inline constexpr std::string_view kAppTitle = "Tovik_AutoCad_Pro";
// The maker's name and web address, as Author reports them.
inline constexpr std::string_view kAuthorText = "Tovik Engineering - https://www.tovik.com";

// The maker's libraries that share one host-event object, in the order
// InitZActiveX hands it on. The entry naming this library is skipped.
inline constexpr std::array<std::string_view, 3> kSiblingLibraryTitles = {
    "Tovik_Commons",
    "Tovik_Geometry",
    "Tovik_AutoCad_Pro",
};

class ZActiveXCOM : public DispatchObject<ZActiveXCOM>, public EventSink {
 public:
  static constexpr std::string_view kClassName = "ZActiveXCOM";

  // A new instance with the next instance number; no event source.
  ZActiveXCOM();
  ~ZActiveXCOM() override;
  // The implicit instance of this global class.
  static ObjectRef MakeGlobal() { return std::make_shared<ZActiveXCOM>(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<ZActiveXCOM>& Members();

  // InitZActiveX([ZActiveX]): listens to z_activex's events from now on,
  // stores it as the library's host-event object and hands it on to the
  // sibling libraries (each skipped silently when missing or failing).
  // Missing or Nothing clears the host link. By reference, not changed.
  // Raises 13 when the argument is not an object that raises events.
  // REQUIRES: this instance is owned by a shared_ptr.
  void InitZActiveX(Variant& z_activex);
  // The maker's name and web address.
  std::string Author() const { return std::string(kAuthorText); }
  // The application title and this instance's number, joined by a blank.
  std::string AppTitle() const;

  // The object whose events this instance handles, or Nothing.
  const ObjectRef& event_source() const { return event_source_; }
  // The forms remembered since the host began to close (Nothing before).
  const std::shared_ptr<Collection>& remembered_forms() const {
    return remembered_forms_;
  }

  // Receives the host-event object's events; each handler runs under a
  // resume-next trap and never raises.
  void OnEvent(std::string_view event, std::span<Variant> args) override;

 private:
  void SetEventSource(const ObjectRef& source);
  void HandOnToSiblings(Variant& z_activex);

  void OnAcadWindowChanged(const Variant& state);
  void OnEnterModal();
  void OnLeaveModal();
  void OnThisDrawingActivate();
  void OnThisDrawingBeginClose();
  void OnBeginClose();
  void OnTerminate();
  void OnObjectModified(const Variant& text);

  ObjectRef event_source_;
  int cookie_ = 0;
  std::shared_ptr<Collection> remembered_forms_;
  int32_t number_;
};

}  // namespace tovik

#endif  // TOVIK_FRAME_ZACTIVEX_COM_H_
