// Copying an entity into a block of this or another drawing.
#ifndef TOVIK_HOST_CLONE_H_
#define TOVIK_HOST_CLONE_H_

#include <memory>

#include "host/block.h"
#include "host/document.h"
#include "host/entity.h"

namespace tovik::host {

// Gives `copy` the properties and extended data of `source`; across
// drawings the records they name are found or created by name.
void CopyEntityBase(const Entity& source, Entity* copy);

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

#endif  // TOVIK_HOST_CLONE_H_
