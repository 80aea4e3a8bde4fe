// Copying entities into a block of this or another drawing (Copy,
// CopyObjects, Explode, Import).
#ifndef TOVIK_HOST_COPYING_CLONE_H_
#define TOVIK_HOST_COPYING_CLONE_H_

#include <memory>
#include <unordered_map>
#include <vector>

#include "host/core/document.h"
#include "host/entities/entity.h"
#include "host/tables/block.h"

namespace tovik::host {

// One object a copy met: copied (cloned) or, for a record of another
// drawing, mapped onto the target's record of that name.
struct ClonePair {
  DbObject* key = nullptr;    // the source
  DbObject* value = nullptr;  // its copy, or the record it maps to
  bool cloned = true;
  bool primary = false;
};

// The objects one copying operation copied or mapped, source to target:
// a record or block of another drawing is brought over once however many
// copies name it. The session is the target document's for its life
// (Document::clone_session); without one, copies still bring what they
// need, pair by pair.
class CloneSession {
 public:
  explicit CloneSession(Document& into);
  ~CloneSession();
  CloneSession(const CloneSession&) = delete;
  CloneSession& operator=(const CloneSession&) = delete;

  void Note(DbObject* key, DbObject* value, bool cloned);
  // The copy or mapping of `key`, or nullptr.
  DbObject* Find(const DbObject* key) const;
  std::vector<ClonePair>& pairs() { return pairs_; }
  // Points the extended-data handles (1005) of every copy that name an
  // object copied in this session at that object's copy; others stay.
  void TranslateXDataHandles();

 private:
  std::vector<ClonePair> pairs_;
  std::unordered_map<const DbObject*, size_t> index_;
  Document& into_;
  CloneSession* outer_;
};

// Gives `copy` the properties and extended data of `source`; across
// drawings the records it names (layer, linetype, material, text and
// dimension style, application) and the blocks it references are found by
// name in the target or brought over, and the copy is noted in the current
// session.
void CopyEntityBase(const Entity& source, Entity* copy);

// The block of `into` that stands for `source` (of another drawing): the
// session's copy, the block of that name, or a new copy of the definition
// with its entities. Anonymous blocks always get a new "*U" copy.
BlockRecord* ImportBlock(Document& into, const BlockRecord* source);

template <class K>
Entity* CloneEntity(const K& source, BlockRecord* block) {
  Document* doc = block->document();
  K* copy = doc->Create<K>();
  copy->mutable_data() = source.data();
  CopyEntityBase(source, copy);
  block->Append(copy);
  return copy;
}

}  // namespace tovik::host

#endif  // TOVIK_HOST_COPYING_CLONE_H_
