#include "host/tables/dictionary.h"
#include "host/tables/draw_order.h"

#include <algorithm>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/surface/args.h"
#include "host/surface/collection_util.h"
#include "host/tables/block.h"

namespace tovik::host {

// ------------------------------------------------------------ Dictionary

DbObject* Dictionary::Find(std::string_view key) const {
  for (const auto& [k, object] : data_.entries) {
    if (CaseInsensitiveEqual(k, key) && !object->erased()) return object;
  }
  return nullptr;
}

void Dictionary::Put(std::string_view key, DbObject* object) {
  Touch();
  auto it = std::find_if(data_.entries.begin(), data_.entries.end(),
                         [&](const auto& e) { return CaseInsensitiveEqual(e.first, key); });
  object->set_owner(this);
  if (it != data_.entries.end()) {
    DbObject* old = it->second;
    it->second = object;
    if (!old->erased()) old->DbObject::Erase();
  } else {
    data_.entries.emplace_back(std::string(key), object);
  }
}

DbObject* Dictionary::Take(std::string_view key) {
  auto it = std::find_if(data_.entries.begin(), data_.entries.end(),
                         [&](const auto& e) { return CaseInsensitiveEqual(e.first, key); });
  if (it == data_.entries.end()) return nullptr;
  Touch();
  DbObject* object = it->second;
  data_.entries.erase(it);
  return object;
}

DbObject* Dictionary::AddObject(std::string_view key, std::string_view class_name) {
  DbObject* object = nullptr;
  if (CaseInsensitiveEqual(class_name, "AcDbDictionary")) {
    object = doc_->Create<Dictionary>();
  } else if (CaseInsensitiveEqual(class_name, "AcDbXrecord")) {
    object = doc_->Create<XRecord>();
  } else if (CaseInsensitiveEqual(class_name, "AcDbSortentsTable")) {
    auto* table = doc_->Create<SortentsTable>();
    // A block's extension dictionary orders that block.
    table->mutable_data().block = AsObject<BlockRecord>(owner_);
    object = table;
  } else {
    throw HostError(HostFailure::kInvalidInput);
  }
  Put(key, object);
  return object;
}

std::vector<Variant> Dictionary::Enumerate() {
  CheckLive();
  std::vector<Variant> out;
  for (const auto& e : data_.entries) {
    if (!e.second->erased()) out.emplace_back(doc_->Ref(e.second));
  }
  return out;
}

namespace {

std::vector<std::pair<std::string, DbObject*>> LiveEntries(const Dictionary& d) {
  std::vector<std::pair<std::string, DbObject*>> out;
  for (const auto& e : d.data().entries) {
    if (!e.second->erased()) out.push_back(e);
  }
  return out;
}

std::string KeyArg(const Variant& v, std::string_view member) {
  std::string key = StringArg(v, {"Keyword", member});
  if (key.empty()) throw InvalidArgument("Keyword", member);
  return key;
}

}  // namespace

const MemberTable<Dictionary>& Dictionary::Members() {
  static const MemberTable<Dictionary> table = [] {
    MemberTable<Dictionary> t;
    using K = Dictionary;
    t.Property("Count", [](K& s, CallArgs&) {
      return Variant(static_cast<int32_t>(LiveEntries(s).size()));
    });
    t.Method(
        "Item",
        [](K& s, CallArgs& a) {
          auto entries = LiveEntries(s);
          size_t i = ItemPosition(a[0], entries.size(),
                                  [&](size_t k) -> std::string_view { return entries[k].first; });
          return Variant(s.doc_->Ref(entries[i].second));
        },
        1, 1);
    t.Default("Item");
    t.Method(
        "AddObject",
        [](K& s, CallArgs& a) {
          std::string key = KeyArg(a[0], "AddObject");
          std::string cls = StringArg(a[1], {"ObjectName", "AddObject"});
          return Variant(s.doc_->Ref(s.AddObject(key, cls)));
        },
        2, 2);
    t.Method(
        "AddXRecord",
        [](K& s, CallArgs& a) {
          std::string key = KeyArg(a[0], "AddXRecord");
          return Variant(s.doc_->Ref(s.AddObject(key, "AcDbXrecord")));
        },
        1, 1);
    t.Method(
        "GetObject",
        [](K& s, CallArgs& a) -> Variant {
          std::string key = StringArg(a[0], {"Name", "GetObject"});
          DbObject* o = s.Find(key);
          if (!o) throw HostError(HostFailure::kKeyNotFound);
          return Variant(s.doc_->Ref(o));
        },
        1, 1);
    t.Method(
        "Remove",
        [](K& s, CallArgs& a) -> Variant {
          std::string key = StringArg(a[0], {"Name", "Remove"});
          if (!s.Find(key)) throw HostError(HostFailure::kKeyNotFound);
          return Variant(s.doc_->Ref(s.Take(key)));
        },
        1, 1);
    t.Method(
        "Rename",
        [](K& s, CallArgs& a) -> Variant {
          std::string old_name = StringArg(a[0], {"OldName", "Rename"});
          std::string new_name = KeyArg(a[1], "Rename");
          if (!s.Find(old_name)) throw HostError(HostFailure::kKeyNotFound);
          if (s.Find(new_name) && !CaseInsensitiveEqual(old_name, new_name)) {
            throw HostError(HostFailure::kDuplicateRecordName);
          }
          s.Touch();
          for (auto& e : s.data_.entries) {
            if (CaseInsensitiveEqual(e.first, old_name)) e.first = new_name;
          }
          return Variant();
        },
        2, 2);
    t.Method(
        "Replace",
        [](K& s, CallArgs& a) -> Variant {
          std::string key = StringArg(a[0], {"OldName", "Replace"});
          auto* obj = dynamic_cast<DbObject*>(ObjectArg(a[1], {"NewObject", "Replace"}).get());
          if (!obj || obj->document() != s.doc_) throw InvalidArgument("NewObject", "Replace");
          if (!s.Find(key)) throw HostError(HostFailure::kKeyNotFound);
          s.Put(key, obj);
          return Variant();
        },
        2, 2);
    t.Method(
        "GetName",
        [](K& s, CallArgs& a) -> Variant {
          ObjectRef obj = ObjectArg(a[0], {"Object", "GetName"});
          for (const auto& e : LiveEntries(s)) {
            if (e.second == obj.get()) return Variant(e.first);
          }
          throw HostError(HostFailure::kKeyNotFound);
        },
        1, 1);
    t.Property("Name", [](K&, CallArgs&) { return Variant(""); });
    return t;
  }();
  return table;
}

// -------------------------------------------------------------- XRecord

const MemberTable<XRecord>& XRecord::Members() {
  static const MemberTable<XRecord> table = [] {
    MemberTable<XRecord> t;
    using K = XRecord;
    t.Method(
        "SetXRecordData",
        [](K& s, CallArgs& a) {
          if (!a[0].IsArray() || !a[1].IsArray() ||
              a[0].Array().Count() != a[1].Array().Count()) {
            throw InvalidArgument("XRecordDataType", "SetXRecordData");
          }
          Data d;
          for (const Variant& c : a[0].Array().Items()) {
            if (!c.IsNumber()) throw InvalidArgument("XRecordDataType", "SetXRecordData");
            d.codes.push_back(CInt(c));
          }
          d.values = a[1].Array().Items();
          s.Touch();
          s.data_ = std::move(d);
          return Variant();
        },
        2, 2);
    t.Method(
        "GetXRecordData",
        [](K& s, CallArgs& a) {
          // With no data the outs stay as they are.
          if (s.data_.codes.empty()) return Variant();
          SafeArray codes(VarType::kInteger, 0, static_cast<int32_t>(s.data_.codes.size()));
          for (size_t i = 0; i < s.data_.codes.size(); ++i) {
            codes.Set(static_cast<int32_t>(i), Variant(s.data_.codes[i]));
          }
          a[0] = Variant(std::move(codes));
          a[1] = Variant(SafeArray::OfVariants(s.data_.values));
          return Variant();
        },
        2, 2)
        .Outs({0, 1});
    return t;
  }();
  return table;
}

}  // namespace tovik::host
