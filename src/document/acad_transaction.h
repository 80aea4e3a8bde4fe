// AcadTransaction: the one transaction of a drawing. It gives nested callers
// a counter-based undo bracket and a counter-based layer-unlock bracket, so
// that only the outermost Start/End pair reaches the host, and it holds the
// drawing's unit preferences and keeps them saved in the drawing.
//
// There is one instance per drawing, kept in the host-event object's
// named-object store under "AcadTransaction" with the drawing as owner, so
// every library of the maker in the host shares its counters
// (AcadDocSpace.GetAcadTransaction). The transaction borrows its document
// until Close7 and owns its UnitSetting.
//
// State kept in the drawing, not here:
//   - the unit setting, as the variable "UnitSetting" (a table) on the
//     drawing's model space;
//   - on each layer that was locked when unlocking began, the variable
//     "OrgLock" = True, so a drawing saved or left while unlocked still
//     carries what EndUnlockLayers needs to relock it.
#ifndef TOVIK_DOCUMENT_ACAD_TRANSACTION_H_
#define TOVIK_DOCUMENT_ACAD_TRANSACTION_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "frame/member_table.h"
#include "geometry/unit_setting.h"

namespace tovik {

class AcadTransaction : public DispatchObject<AcadTransaction> {
 public:
  static constexpr std::string_view kClassName = "AcadTransaction";
  // The key of the transaction in the named-object store.
  static constexpr std::string_view kStoreKey = "AcadTransaction";

  AcadTransaction();
  ~AcadTransaction() override;
  static std::shared_ptr<AcadTransaction> Make() { return std::make_shared<AcadTransaction>(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<AcadTransaction>& Members();

  // Library-only: gives a new transaction its document.
  void SetDocument(ObjectRef document) { document_ = std::move(document); }

  // AcadDocument: the drawing served; Nothing after Close7.
  const ObjectRef& AcadDocument() const { return document_; }
  // Name: the document's Name. Raises 91 after Close7.
  std::string Name() const;

  // UnitSetting(Refresh): the drawing's unit setting, made on first use and
  // loaded then (and again when `refresh` is True) from the variable
  // "UnitSetting" of the document's ModelSpace, when it is there. Changes
  // made to it later are written back to the drawing at once. Raises the
  // host's error when the drawing cannot be read and 5 when the stored
  // table is not a unit setting.
  std::shared_ptr<tovik::UnitSetting> UnitSetting(bool refresh = false);

  // StartUndoMark: opens one level of the undo bracket; the first level
  // calls the document's StartUndoMark. Raises 6 (overflow) at 32767 levels
  // (nothing changes); host failures reach the caller after the level has
  // been counted.
  void StartUndoMark();
  // EndUndoMark: closes one level; closing the last calls the document's
  // EndUndoMark. Nothing happens when no level is open.
  void EndUndoMark();
  // StartUnlockLayers: opens one level of the unlock bracket; the first
  // level marks every locked layer with "OrgLock" = True and unlocks it.
  // Raises 6 at 32767 levels.
  void StartUnlockLayers();
  // EndUnlockLayers: closes one level; closing the last relocks every layer
  // carrying "OrgLock" = True and removes the mark. Layers without it stay
  // as they are.
  void EndUnlockLayers();
  // Close7: closes an open undo bracket and an open unlock bracket however
  // deep (one host EndUndoMark, one relock), then detaches the document and
  // the unit setting. Never raises. The transaction stays in the store.
  void Close7();
  // Undo: sends "Undo 1 " (the blank ends the command) to the document.
  void Undo();

  int16_t undo_depth() const { return undo_depth_; }
  int16_t unlock_depth() const { return unlock_depth_; }

 private:
  class UnitSettingListener;

  void UnlockLayers();
  void RelockLayers();
  // Writes the held unit setting to model space's "UnitSetting" variable.
  void SaveUnitSetting();
  void DropUnitSetting();
  ObjectRef ModelSpace() const;

  ObjectRef document_;
  int16_t undo_depth_ = 0;
  int16_t unlock_depth_ = 0;
  std::shared_ptr<tovik::UnitSetting> unit_setting_;
  // Connected to unit_setting_'s events while it is held.
  std::shared_ptr<UnitSettingListener> listener_;
};

}  // namespace tovik

#endif  // TOVIK_DOCUMENT_ACAD_TRANSACTION_H_
