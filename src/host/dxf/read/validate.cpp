// Structural checks of a DXF model before it is mapped to live objects.
#include "host/dxf/read/validate.h"

#include <algorithm>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "dxf/flat_map.h"
#include "host/dxf/binding.h"

namespace tovik::host::dxf {
namespace {

// Calls `visit` for every record of the model (followers included).
void ForEachRecord(const TagModel& model, const std::function<void(const Record&)>& visit) {
  std::function<void(const Record&)> walk = [&](const Record& r) {
    visit(r);
    for (const Record& f : r.followers) walk(f);
  };
  for (const Section& section : model.sections()) {
    for (const Table& table : section.tables) {
      walk(table.head);
      for (const Record& e : table.entries) walk(e);
    }
    for (const Block& block : section.blocks) {
      walk(block.begin);
      for (const Record& e : block.entities) walk(e);
      walk(block.end);
    }
    for (const Record& r : section.records) walk(r);
  }
}

PositionKind PositionKindOf(const TagModel& model) {
  return model.format() == FileFormat::kAscii ? PositionKind::kLine : PositionKind::kByteOffset;
}

std::string PlaceText(const TagModel& model, uint32_t position) {
  return (model.format() == FileFormat::kAscii ? "line " : "byte ") + std::to_string(position);
}

}  // namespace

ModelHandles ValidateModel(TagModel& model, std::string_view file_name, Faults faults) {
  ModelHandles handles;
  FlatMap<uint64_t, uint32_t>& seen = handles.positions;
  // About one handle a record: make room once.
  size_t records = 0;
  for (const Section& section : model.sections()) {
    records += section.records.size();
    for (const Record& r : section.records) records += r.followers.size();
    for (const Table& table : section.tables) records += table.entries.size() + 1;
    for (const Block& block : section.blocks) records += block.entities.size() + 2;
  }
  seen.reserve(records);
  // Records whose handle a record earlier in the file has: they get new
  // handles above every handle the file mentions, once all are known. The
  // model's order is not always the file's (a record a repair moved), so
  // the handles given twice are sorted out by position after the pass.
  std::unordered_set<uint64_t> twice;
  ForEachRecord(model, [&](const Record& r) {
    // Handles the file only mentions count toward the largest too (a
    // dangling reference a repair drops): no new object may take one.
    for (const Tag& t : r.tags) {
      if (t.kind == ValueKind::kHandle && t.integer > 0) {
        handles.max = std::max(handles.max, static_cast<uint64_t>(t.integer));
      }
    }
    const Tag* tag = r.Find(5);
    if (tag == nullptr) tag = r.Find(105);
    uint64_t h = HandleValue(tag);
    if (h == 0) return;
    auto [it, fresh] = seen.try_emplace(h, tag->position);
    if (!fresh) {
      twice.insert(h);
      it->second = std::min(it->second, tag->position);
      std::string fault = "duplicate handle " + HexOf(h) + " (also used at " +
                          PlaceText(model, it->second) + ")";
      if (faults == Faults::kThrow) {
        throw ReadError(file_name, PositionKindOf(model), tag->position, tag->code, fault);
      }
    }
    handles.max = std::max(handles.max, h);
  });
  std::vector<std::pair<uint32_t, const Record*>> holders;
  if (!twice.empty()) {
    ForEachRecord(model, [&](const Record& r) {
      const Tag* tag = r.Find(5);
      if (tag == nullptr) tag = r.Find(105);
      if (uint64_t h = HandleValue(tag); h != 0 && twice.count(h)) holders.emplace_back(tag->position, &r);
    });
    std::stable_sort(holders.begin(), holders.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
  }
  std::vector<const Record*> duplicates;
  std::unordered_set<uint64_t> kept;
  for (const auto& [position, r] : holders) {
    const Tag* tag = r->Find(5) ? r->Find(5) : r->Find(105);
    if (!kept.insert(HandleValue(tag)).second) duplicates.push_back(r);
  }
  for (const Record* r : duplicates) {
    // References elsewhere keep meaning the first record; the record's own
    // followers (attributes, vertices, their SEQEND) name it as owner.
    Tag* tag = const_cast<Tag*>(r->Find(5) ? r->Find(5) : r->Find(105));
    uint64_t old = static_cast<uint64_t>(tag->integer);
    uint64_t fresh = ++handles.max;
    std::string hex = HexOf(fresh);
    handles.repairs.push_back(PlaceText(model, tag->position) + ": duplicate handle " +
                              std::string(tag->text) + " (also used at " +
                              PlaceText(model, seen.at(old)) + "): the record gets handle " + hex);
    tag->integer = static_cast<int64_t>(fresh);
    tag->text = model.Intern(hex);
    seen.try_emplace(fresh, tag->position);
    for (const Record& f : r->followers) {
      for (Tag& t : f.tags) {
        if (t.code == 330 && t.kind == ValueKind::kHandle && static_cast<uint64_t>(t.integer) == old) {
          t.integer = static_cast<int64_t>(fresh);
          t.text = tag->text;
        }
      }
    }
  }

  // Block nesting: name -> (inserted name, position of the INSERT).
  const Section* blocks = model.FindSection("BLOCKS");
  if (blocks == nullptr) return handles;
  std::unordered_map<std::string, std::vector<std::pair<std::string, uint32_t>>> inserts;
  // Messages name blocks as the file spells them.
  std::unordered_map<std::string, std::string_view> spelled;
  for (const Block& block : blocks->blocks) {
    spelled.emplace(FoldName(block.Name()), block.Name());
    auto& list = inserts[FoldName(block.Name())];
    for (const Record& e : block.entities) {
      if (e.type == "INSERT") list.emplace_back(FoldName(e.StringOr(2)), e.Find(2) ? e.Find(2)->position : e.head.position);
    }
  }
  // Iterative depth-first search with colours: 1 on the path, 2 done.
  std::unordered_map<std::string, int> colour;
  for (const Block& block : blocks->blocks) {
    std::string root = FoldName(block.Name());
    if (colour[root] != 0) continue;
    struct Frame {
      std::string name;
      size_t next = 0;
    };
    std::vector<Frame> stack{{root}};
    colour[root] = 1;
    while (!stack.empty()) {
      Frame& top = stack.back();
      auto& list = inserts[top.name];
      if (top.next == list.size()) {
        colour[top.name] = 2;
        stack.pop_back();
        continue;
      }
      const auto& [child, position] = list[top.next++];
      int c = colour[child];
      if (c == 1) {
        auto name = [&](const std::string& folded) {
          auto it = spelled.find(folded);
          return it != spelled.end() ? std::string(it->second) : folded;
        };
        std::string path;
        for (const Frame& f : stack) path += name(f.name) + " -> ";
        throw ReadError(file_name, PositionKindOf(model), position, 2,
                        "block \"" + name(child) + "\" contains itself (" + path + name(child) + ")");
      }
      if (c == 0 && inserts.count(child)) {
        colour[child] = 1;
        stack.push_back({child});
      }
    }
  }
  return handles;
}

}  // namespace tovik::host::dxf
