// The links of records written back: a record read from the file names
// other objects by handle (dictionary entries, group members, draw-order
// pairs, reactors, its extension dictionary). Before such a record is
// written, what names an erased object is left out and what the drawing
// gained is added, so no written handle dangles and nothing new is
// unreachable.
#include <algorithm>

#include "frame/runtime_text.h"
#include "host/dxf/binding.h"
#include "host/dxf/write/writer.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/draw_order.h"
#include "host/tables/group.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
bool DbWriter::Dangling(uint64_t handle) const {
  auto it = bound_by_handle_->find(handle);
  return it != bound_by_handle_->end() && !Written(it->second);
}

bool DbWriter::Present(uint64_t handle) const {
  if (const DbObject* o = doc_.FindByHandle(handle)) return Written(o);
  return raw_handles_->count(handle) != 0;
}

std::vector<DictEntry> DbWriter::StandardEntries(std::string_view key) const {
  std::vector<DictEntry> out;
  if (key == "ACAD_GROUP") {
    for (Group* g : doc_.groups()) {
      if (Written(g)) out.push_back({g->Name(), g->handle(), g});
    }
  } else if (key == "ACAD_LAYOUT") {
    for (Layout* l : doc_.layouts().items) {
      if (Written(l)) out.push_back({l->Name(), l->handle(), l});
    }
  } else if (key == "ACAD_MATERIAL") {
    for (MaterialRecord* m : doc_.materials().items) {
      if (Written(m)) out.push_back({m->Name(), m->handle(), m});
    }
  }
  return out;
}

std::vector<DictEntry> DbWriter::EntriesOf(const Dictionary& dict) const {
  for (std::string_view key : {"ACAD_GROUP", "ACAD_LAYOUT", "ACAD_MATERIAL"}) {
    if (dict.handle() == StandardHandle(key)) return StandardEntries(key);
  }
  std::vector<DictEntry> out;
  for (const auto& [key, object] : dict.data().entries) {
    if (Written(object)) out.push_back({key, object->handle(), object});
  }
  if (&dict == doc_.named_objects()) {
    for (const StandardObject& s : standard_) {
      bool named = std::any_of(out.begin(), out.end(), [&](const DictEntry& e) {
        return CaseInsensitiveEqual(e.key, s.key);
      });
      if (s.generated && !named) out.push_back({s.key, s.handle, nullptr});
    }
  }
  return out;
}

std::optional<Record> DbWriter::Relinked(const Record& record, const DbObject* object) {
  std::span<const Tag> body = record.Body();
  const auto* dict = AsObject<Dictionary>(object);
  const auto* group = AsObject<Group>(object);
  const auto* sortents = AsObject<SortentsTable>(object);
  const auto* entity = AsEntity(object);
  const std::vector<const Group*>* groups = entity ? GroupsOf(entity) : nullptr;
  bool has_app_data = false;
  for (const Tag& t : body) has_app_data |= t.code == 102;
  bool gained_xdict = object != nullptr && Written(object->xdict()) &&
                      !record.AppData("ACAD_XDICTIONARY");
  // A block record of a file before R2000 names no layout yet.
  const auto* block = AsObject<BlockRecord>(object);
  bool gained_layout = block != nullptr && record.type == "BLOCK_RECORD" && record.Find(340) == nullptr &&
                       Written(block->data().layout);
  // An entity names the block record it lies in as owner: one the reader
  // moved there (its owner missing, or no block record) is written so.
  const BlockRecord* home = entity != nullptr ? entity->block() : nullptr;
  uint64_t owner = home != nullptr ? OwnerOf(record) : 0;
  bool rehomed = owner != 0 && owner != home->handle();
  // A layout names its block record after its own marker: one the reader
  // tied to a space (its block record lost) is written so.
  const auto* layout = AsObject<Layout>(object);
  uint64_t layout_block = layout != nullptr && layout->data().block != nullptr && Written(layout->data().block)
                              ? layout->data().block->handle()
                              : 0;
  bool retied = false;
  if (layout_block != 0) {
    bool own = false, named = false;
    for (const Tag& t : body) {
      if (t.code == 100) own = t.text == "AcDbLayout";
      if (own && t.code == 330) {
        named = true;
        retied = HandleValue(&t) != layout_block;
        break;
      }
    }
    retied |= !named && std::any_of(body.begin(), body.end(),
                                    [](const Tag& t) { return t.code == 100 && t.text == "AcDbLayout"; });
  }
  if (!has_app_data && !dict && !group && !sortents && !gained_xdict && !gained_layout &&
      groups == nullptr && !rehomed && !retied) {
    return std::nullopt;
  }
  bool changed = false;
  std::vector<Tag> out;
  out.reserve(record.tags.size() + 8);
  auto handle_tag = [&](int code, uint64_t h) { return Tag::String(code, Keep(HexOf(h))); };

  // Reactors and extension dictionary.
  std::vector<uint64_t> reactors_to_add;
  if (groups != nullptr) {
    auto reactors = record.AppData("ACAD_REACTORS");
    for (const Group* g : *groups) {
      bool named = false;
      if (reactors) {
        for (const Tag& t : *reactors) named |= HandleValue(&t) == g->handle();
      }
      if (!named) reactors_to_add.push_back(g->handle());
    }
  }
  bool in_layout = false;
  for (size_t i = 0; i < body.size(); ++i) {
    const Tag& t = body[i];
    // A layout part without its block record gets it at its end.
    if (retied && in_layout && (t.code == 100 || t.code == 331)) {
      out.push_back(handle_tag(330, layout_block));
      retied = false;
      changed = true;
    }
    if (t.code == 100) in_layout = t.text == "AcDbLayout";
    if (retied && in_layout && t.code == 330) {
      out.push_back(handle_tag(330, layout_block));
      retied = false;
      changed = true;
      continue;
    }
    if (rehomed && t.code == 330) {
      out.push_back(handle_tag(330, home->handle()));
      rehomed = false;
      changed = true;
      continue;
    }
    if (!(t.code == 102 && t.text.starts_with("{"))) {
      out.push_back(t);
      continue;
    }
    size_t end = i + 1;
    while (end < body.size() && !(body[end].code == 102 && body[end].text == "}")) ++end;
    std::span<const Tag> inner = body.subspan(i + 1, std::min(end, body.size()) - i - 1);
    if (t.text == "{ACAD_XDICTIONARY") {
      bool gone = std::any_of(inner.begin(), inner.end(),
                              [&](const Tag& x) { return x.code == 360 && Dangling(HandleValue(&x)); });
      changed |= gone;
      if (!gone) out.insert(out.end(), body.begin() + static_cast<std::ptrdiff_t>(i),
                            body.begin() + static_cast<std::ptrdiff_t>(std::min(end + 1, body.size())));
    } else {
      bool reactors = t.text == "{ACAD_REACTORS";
      out.push_back(t);
      for (const Tag& x : inner) {
        bool gone = reactors && x.code == 330 && Dangling(HandleValue(&x));
        changed |= gone;
        if (!gone) out.push_back(x);
      }
      if (reactors) {
        for (uint64_t h : reactors_to_add) out.push_back(handle_tag(330, h));
        changed |= !reactors_to_add.empty();
        reactors_to_add.clear();
      }
      if (end < body.size()) out.push_back(body[end]);
    }
    i = end;
  }
  if (retied && in_layout) {
    out.push_back(handle_tag(330, layout_block));
    changed = true;
  }
  // Groups the record lacks go right after its own handle.
  std::vector<Tag> groups_added;
  if (!reactors_to_add.empty()) {
    groups_added.push_back(Tag::String(102, "{ACAD_REACTORS"));
    for (uint64_t h : reactors_to_add) groups_added.push_back(handle_tag(330, h));
    groups_added.push_back(Tag::String(102, "}"));
  }
  if (gained_xdict) {
    groups_added.push_back(Tag::String(102, "{ACAD_XDICTIONARY"));
    groups_added.push_back(handle_tag(360, object->xdict()->handle()));
    groups_added.push_back(Tag::String(102, "}"));
  }
  if (!groups_added.empty()) {
    changed = true;
    auto at = std::find_if(out.begin(), out.end(), [](const Tag& x) { return x.code == 5 || x.code == 105; });
    at = at == out.end() ? out.begin() : at + 1;
    out.insert(at, groups_added.begin(), groups_added.end());
  }

  if (gained_layout) {
    auto name = std::find_if(out.begin(), out.end(), [](const Tag& x) { return x.code == 2; });
    if (name != out.end()) {
      out.insert(name + 1, handle_tag(340, block->data().layout->handle()));
      changed = true;
    }
  }
  if (dict != nullptr) {
    changed |= RelinkDictionary(*dict, &out);
  } else if (group != nullptr) {
    changed |= RelinkGroup(*group, &out);
  } else if (sortents != nullptr) {
    changed |= RelinkSortents(*sortents, &out);
  }
  if (!changed) return std::nullopt;
  Record copy;
  copy.head = record.head;
  copy.type = record.type;
  for (size_t k = body.size(); k < record.tags.size(); ++k) out.push_back(record.tags[k]);
  copy.tags = KeepTags(std::move(out));
  return copy;
}

bool DbWriter::RelinkDictionary(const Dictionary& dictionary, std::vector<Tag>* tags) {
  // Entries the host keeps stay where the file put them (under the host's
  // key); those it dropped go; new ones follow the last pair.
  const Dictionary* dict = &dictionary;
  std::vector<Tag>& out = *tags;
  bool changed = false;
  auto handle_tag = [&](int code, uint64_t h) { return Tag::String(code, Keep(HexOf(h))); };
  std::vector<DictEntry> want = EntriesOf(*dict);
  std::vector<bool> used(want.size(), false);
  // The host holds every group, layout and material: an entry of their
  // dictionaries naming an object it keeps raw (another kind under a
  // handle given twice) names none.
  bool host_kept = false;
  for (std::string_view key : {"ACAD_GROUP", "ACAD_LAYOUT", "ACAD_MATERIAL"}) {
    host_kept |= dict->handle() == StandardHandle(key);
  }
  std::vector<Tag> rebuilt;
  size_t insert_at = std::string::npos;
  int pair_code = dict->owner() != nullptr && !AsObject<Dictionary>(dict->owner()) ? 360 : 350;
  for (size_t k = 0; k < out.size(); ++k) {
    const Tag& t = out[k];
    if (t.code == 3 && k + 1 < out.size() && (out[k + 1].code == 350 || out[k + 1].code == 360)) {
      const Tag& h = out[k + 1];
      pair_code = h.code;
      uint64_t handle = HandleValue(&h);
      auto bound = bound_by_handle_->find(handle);
      if (bound == bound_by_handle_->end() && (host_kept || raw_handles_->count(handle) == 0)) {
        changed = true;  // names nothing in the file: the reader dropped it
        ++k;
        continue;
      }
      if (bound == bound_by_handle_->end()) {
        rebuilt.push_back(t);  // an object the host keeps raw
        rebuilt.push_back(h);
      } else {
        auto w = std::find_if(want.begin(), want.end(),
                              [&](const DictEntry& e) { return e.object == bound->second; });
        if (w == want.end()) {
          changed = true;
        } else {
          used[static_cast<size_t>(w - want.begin())] = true;
          // A key the host does not know (empty) keeps the file's.
          bool same_key = w->key == t.text || w->key.empty();
          changed |= !same_key;
          rebuilt.push_back(same_key ? t : Tag::String(3, Keep(w->key)));
          rebuilt.push_back(h);
        }
      }
      ++k;
      insert_at = rebuilt.size();
      continue;
    }
    rebuilt.push_back(t);
    if (t.code == 281 || (t.code == 280 && insert_at == std::string::npos)) insert_at = rebuilt.size();
  }
  if (insert_at == std::string::npos) insert_at = rebuilt.size();
  std::vector<Tag> added;
  for (size_t w = 0; w < want.size(); ++w) {
    bool in_file = want[w].object == nullptr
                       ? std::any_of(rebuilt.begin(), rebuilt.end(),
                                     [&](const Tag& x) { return (x.code == 350 || x.code == 360) && HandleValue(&x) == want[w].handle; })
                       : used[w];
    if (in_file) continue;
    added.push_back(Tag::String(3, Keep(want[w].key)));
    added.push_back(handle_tag(pair_code, want[w].handle));
  }
  if (!added.empty()) {
    changed = true;
    rebuilt.insert(rebuilt.begin() + static_cast<std::ptrdiff_t>(insert_at), added.begin(), added.end());
  }
  out = std::move(rebuilt);
  return changed;
}

bool DbWriter::RelinkGroup(const Group& group_object, std::vector<Tag>* tags) {
  // The members are written anew when they changed; description and
  // selectable flag are patched in place.
  const Group* group = &group_object;
  std::vector<Tag>& out = *tags;
  bool changed = false;
  auto handle_tag = [&](int code, uint64_t h) { return Tag::String(code, Keep(HexOf(h))); };
  std::vector<uint64_t> members;
  for (const Entity* e : group->LiveMembers()) {
    if (Written(e)) members.push_back(e->handle());
  }
  std::vector<uint64_t> in_file;
  for (const Tag& t : out) {
    if (t.code == 340) in_file.push_back(HandleValue(&t));
  }
  std::vector<Tag> rebuilt;
  bool placed = false;
  auto place = [&] {
    for (uint64_t h : members) rebuilt.push_back(handle_tag(340, h));
    placed = true;
  };
  const auto& d = group->data();
  for (const Tag& t : out) {
    if (t.code == 340) {
      if (in_file != members && !placed) place();
      if (in_file == members) rebuilt.push_back(t);
      continue;
    }
    if (t.code == 300 && t.text != d.description) {
      rebuilt.push_back(Tag::String(300, Keep(d.description)));
      changed = true;
      continue;
    }
    if (t.code == 71 && (t.integer != 0) != d.selectable) {
      rebuilt.push_back(Tag::Integer(71, d.selectable ? 1 : 0));
      changed = true;
      continue;
    }
    rebuilt.push_back(t);
  }
  if (in_file != members) {
    changed = true;
    if (!placed) place();
  }
  out = std::move(rebuilt);
  return changed;
}

bool DbWriter::RelinkSortents(const SortentsTable& table, std::vector<Tag>* tags) {
  // The table is unchanged while the host draws the block in the order the
  // file's pairs give it: the pairs stay, minus those of erased entities.
  // Otherwise the host's draw order is written whole: the k-th entity drawn
  // takes the k-th smallest handle as its sort key.
  bool dropped = false;
  for (size_t k = 0; k + 1 < tags->size(); ++k) {
    const Tag& t = (*tags)[k];
    if (t.code == 331 && (*tags)[k + 1].code == 5) {
      dropped = dropped || Dangling(HandleValue(&t));
      ++k;
    }
  }
  // The order the file's pairs give (its other entities keyed by their own
  // handles), against the host's order now.
  std::unordered_map<uint64_t, uint64_t> file_keys;
  for (size_t k = 0; k + 1 < tags->size(); ++k) {
    if ((*tags)[k].code == 331 && (*tags)[k + 1].code == 5) {
      file_keys[HandleValue(&(*tags)[k])] = HandleValue(&(*tags)[k + 1]);
    }
  }
  std::vector<std::pair<uint64_t, uint64_t>> keyed;  // (key, entity)
  std::vector<uint64_t> now;
  for (const Entity* e : table.FullOrder()) {
    if (!Written(e)) continue;
    now.push_back(e->handle());
    auto it = file_keys.find(e->handle());
    keyed.emplace_back(it != file_keys.end() ? it->second : e->handle(), e->handle());
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<uint64_t> by_file;
  for (const auto& [key, e] : keyed) by_file.push_back(e);
  bool same = by_file == now;
  if (same && !dropped) return false;
  std::vector<uint64_t> order;
  for (const Entity* e : table.FullOrder()) {
    if (Written(e)) order.push_back(e->handle());
  }
  std::vector<uint64_t> keys = order;
  std::sort(keys.begin(), keys.end());
  std::vector<Tag> rebuilt;
  bool placed = false;
  for (size_t k = 0; k < tags->size(); ++k) {
    const Tag& t = (*tags)[k];
    bool pair = t.code == 331 && k + 1 < tags->size() && (*tags)[k + 1].code == 5;
    if (!pair) {
      rebuilt.push_back(t);
      continue;
    }
    if (same) {
      if (!Dangling(HandleValue(&t))) {
        rebuilt.push_back(t);
        rebuilt.push_back((*tags)[k + 1]);
      }
    } else if (!placed) {
      for (size_t n = 0; n < order.size(); ++n) {
        rebuilt.push_back(Tag::String(331, Keep(HexOf(order[n]))));
        rebuilt.push_back(Tag::String(5, Keep(HexOf(keys[n]))));
      }
      placed = true;
    }
    ++k;
  }
  *tags = std::move(rebuilt);
  return true;
}

}  // namespace tovik::host::dxf
