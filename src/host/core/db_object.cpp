#include "host/core/db_object.h"

#include <cstdio>

#include "frame/conversions.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/core/xdata.h"
#include "host/tables/dictionary.h"

namespace tovik::host {

std::string DbObject::HandleText() const {
  char buffer[24];
  std::snprintf(buffer, sizeof(buffer), "%llX", static_cast<unsigned long long>(handle_));
  return buffer;
}

Journal* DbObject::journal() const { return doc_ ? &doc_->journal() : nullptr; }

void DbObject::CheckLive() const {
  if (erased()) throw HostError(HostFailure::kObjectErased);
}

void DbObject::Touch() {
  CheckLive();
  CheckWritable();
  Journal* j = journal();
  if (j && j->FirstTouch(this)) j->Record(Restorer());
  NotifyChanged();
}

void DbObject::TouchUnchanged() {
  CheckLive();
  CheckWritable();
  if (Journal* j = journal()) j->NoteStep();
}

void DbObject::NotifyChanged() {
  if (doc_) doc_->NoteChanged(this);
}

void DbObject::Erase() {
  Touch();
  erased_ = true;
  auto self = std::static_pointer_cast<DbObject>(shared_from_this());
  doc_->Record([self] { self->Unerase(); });
}

void DbObject::Unerase() {
  erased_ = false;
  NotifyChanged();
}

void DbObject::SetXData(std::shared_ptr<const XData> xdata) {
  core_.xdata = xdata && !xdata->empty() ? std::move(xdata) : nullptr;
}

void DbObject::SetExtra(RawTags tags) {
  core_.extra = tags.empty() ? nullptr : std::make_shared<const RawTags>(std::move(tags));
}

Dictionary* DbObject::GetOrCreateXDict() {
  if (core_.xdict && !core_.xdict->erased()) return core_.xdict;
  Touch();
  Dictionary* dict = doc_->Create<Dictionary>();
  dict->set_owner(this);
  core_.xdict = dict;
  return dict;
}

bool AnswersWhenErased(DispId id) {
  if (id < kObjectIdBase) return false;
  std::string_view name = DbObject::ObjectMembers().NameOf(id - kObjectIdBase);
  return name == "Handle" || name == "ObjectName";
}

namespace {

Variant OwnerIdOf(const DbObject& s) {
  return Variant(s.owner() ? s.owner()->id() : int32_t{0});
}

void RequireId64(const DbObject& s) {
  if (s.document() && s.document()->id32_only()) throw errors::NotSupported();
}

}  // namespace

const MemberTable<DbObject>& DbObject::ObjectMembers() {
  static const MemberTable<DbObject> table = [] {
    MemberTable<DbObject> t;
    t.Property("Handle", [](DbObject& s, CallArgs&) { return Variant(s.HandleText()); });
    t.Property("ObjectName", [](DbObject& s, CallArgs&) {
      return Variant(std::string(s.ObjectName()));
    });
    t.Property("ObjectID", [](DbObject& s, CallArgs&) {
      RequireId64(s);
      return Variant(int64_t{s.id()});
    });
    t.Property("ObjectID32", [](DbObject& s, CallArgs&) { return Variant(s.id()); });
    t.Property("OwnerID", [](DbObject& s, CallArgs&) {
      RequireId64(s);
      return Variant(int64_t{CLng(OwnerIdOf(s))});
    });
    t.Property("OwnerID32", [](DbObject& s, CallArgs&) { return OwnerIdOf(s); });
    t.Property("Document", [](DbObject& s, CallArgs&) {
      return Variant(ObjectRef(s.document()->Self()));
    });
    t.Property("Application", [](DbObject& s, CallArgs&) {
      return Variant(ObjectRef(s.document()->application()->Self()));
    });
    t.Method("Delete", [](DbObject& s, CallArgs&) {
      s.Delete();
      return Variant();
    });
    t.Method(
        "GetXData",
        [](DbObject& s, CallArgs& a) {
          GetXDataInto(s, a[0], a[1], a[2]);
          return Variant();
        },
        3, 3)
        .Outs({1, 2});
    t.Method(
        "SetXData",
        [](DbObject& s, CallArgs& a) {
          SetXDataFrom(s, a[0], a[1]);
          return Variant();
        },
        2, 2);
    t.Method("GetExtensionDictionary", [](DbObject& s, CallArgs&) {
      return Variant(s.document()->Ref(s.GetOrCreateXDict()));
    });
    t.Property("HasExtensionDictionary", [](DbObject& s, CallArgs&) {
      return Variant(s.xdict() != nullptr && !s.xdict()->erased());
    });
    return t;
  }();
  return table;
}

void DbObject::Delete() {
  Erase();
}

}  // namespace tovik::host
