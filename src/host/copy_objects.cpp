// Document.CopyObjects: deep copies of entities beside their originals or
// into a block of this or another drawing, and the IDPairs that say what
// the copy made of each object it met.
#include "host/copy_objects.h"

#include <algorithm>

#include "host/application.h"
#include "host/args.h"
#include "host/clone.h"
#include "host/host_error.h"

namespace tovik::host {
namespace {

constexpr std::string_view kMember = "CopyObjects";

// An object ID as the document hands it out: Long_PTR (VT_I8), or a Long
// in an older 32-bit build.
Variant IdValue(const Document& doc, const DbObject* o) {
  return doc.id32_only() ? Variant(o->id()) : Variant(int64_t{o->id()});
}

// The sources: entities of this drawing (not attribute references) that
// share one owner. Checked before anything is copied.
std::vector<Entity*> Sources(Document& doc, const Variant& objects) {
  std::vector<Entity*> sources;
  const DbObject* owner = nullptr;
  for (const ObjectRef& o : ObjectsArg(objects, {"Objects", kMember})) {
    auto* e = dynamic_cast<Entity*>(o.get());
    if (!e || e->erased() || e->document() != &doc || !e->block()) {
      throw InvalidArgument("Objects", kMember);
    }
    if (owner && e->owner() != owner) throw HostError(HostFailure::kInvalidOwner);
    owner = e->owner();
    sources.push_back(e);
  }
  return sources;
}

// IDPairs: every object the copy met, primary ones first in input order.
Variant IdPairs(Document& doc, std::vector<ClonePair> pairs) {
  std::stable_partition(pairs.begin(), pairs.end(),
                        [](const ClonePair& p) { return p.primary; });
  SafeArray out(VarType::kVariant, 0, static_cast<int32_t>(pairs.size()));
  for (size_t i = 0; i < pairs.size(); ++i) {
    out.Set(static_cast<int32_t>(i), Variant(ObjectRef(std::make_shared<IdPair>(doc, pairs[i]))));
  }
  return Variant(std::move(out));
}

}  // namespace

IdPair::IdPair(Document& doc, const ClonePair& pair)
    : app_(doc.application()->Self()),
      key_(IdValue(doc, pair.key)),
      value_(IdValue(doc, pair.value)),
      key32_(pair.key->id()),
      value32_(pair.value->id()),
      cloned_(pair.cloned),
      primary_(pair.primary) {}

const MemberTable<IdPair>& IdPair::Members() {
  static const MemberTable<IdPair> table = [] {
    MemberTable<IdPair> t;
    t.Property("Key", [](IdPair& s, CallArgs&) { return s.key_; });
    t.Property("Value", [](IdPair& s, CallArgs&) { return s.value_; });
    t.Property("Key32", [](IdPair& s, CallArgs&) { return Variant(s.key32_); });
    t.Property("Value32", [](IdPair& s, CallArgs&) { return Variant(s.value32_); });
    t.Property("IsCloned", [](IdPair& s, CallArgs&) { return Variant(s.cloned_); });
    // A copy is owned by the target (its owner translated); a record
    // mapped onto the target's own keeps its owner.
    t.Property("IsOwnerXlated", [](IdPair& s, CallArgs&) { return Variant(s.cloned_); });
    t.Property("IsPrimary", [](IdPair& s, CallArgs&) { return Variant(s.primary_); });
    t.Property("Application", [](IdPair& s, CallArgs&) { return Variant(s.app_); });
    return t;
  }();
  return table;
}

Variant CopyObjects(Document& doc, CallArgs& a) {
  std::vector<Entity*> sources = Sources(doc, a[0]);
  BlockRecord* target = nullptr;
  // Missing, Nothing or Empty: beside the originals.
  if (a.Has(1) && !a[1].IsNothing() && !a[1].IsEmpty()) {
    target = dynamic_cast<BlockRecord*>(ObjectArg(a[1], {"Owner", kMember}).get());
    if (!target || target->erased()) throw InvalidArgument("Owner", kMember);
  }
  // The target drawing's changes are one step of its own undo history.
  Document* into = target ? target->document() : &doc;
  CallScope target_call(into != &doc ? &into->journal() : nullptr);
  CloneSession session;
  std::vector<ObjectRef> copies;
  for (Entity* e : sources) {
    BlockRecord* block = target ? target : e->block();
    Entity* copy = e->CloneInto(block);
    copies.push_back(block->document()->Ref(copy));
  }
  session.TranslateXDataHandles();
  for (ClonePair& pair : session.pairs()) {
    pair.primary = std::find(sources.begin(), sources.end(), pair.key) != sources.end();
  }
  if (a.size() > 2) a[2] = IdPairs(doc, session.pairs());
  return ObjectsValue(copies);
}

}  // namespace tovik::host
