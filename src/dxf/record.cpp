#include "dxf/record.h"

#include <utility>

namespace tovik::dxf {
namespace {

constexpr int kSubclassMarker = 100;
constexpr int kAppDataMarker = 102;
constexpr int kOwnerCode = 330;
constexpr int kXdataMarker = 1001;

std::string_view TrimText(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

bool OpensGroup(const Tag& tag) { return tag.code == kAppDataMarker && tag.text.starts_with("{"); }

bool ClosesGroup(const Tag& tag) {
  return tag.code == kAppDataMarker && TrimText(tag.text) == "}";
}

}  // namespace

const Tag* Record::Find(int code) const {
  for (const Tag& tag : tags) {
    if (tag.code == code) return &tag;
  }
  return nullptr;
}

std::vector<const Tag*> Record::FindAll(int code) const {
  std::vector<const Tag*> found;
  for (const Tag& tag : tags) {
    if (tag.code == code) found.push_back(&tag);
  }
  return found;
}

std::string_view Record::StringOr(int code, std::string_view fallback) const {
  const Tag* tag = Find(code);
  return tag != nullptr ? tag->text : fallback;
}

std::optional<double> Record::DoubleOf(int code) const {
  for (const Tag& tag : tags) {
    if (tag.code == code && tag.IsDouble()) return tag.real;
  }
  return std::nullopt;
}

std::optional<std::int64_t> Record::IntegerOf(int code) const {
  for (const Tag& tag : tags) {
    if (tag.code == code && tag.IsInteger()) return tag.integer;
  }
  return std::nullopt;
}

std::string_view Record::Handle() const {
  for (const Tag& tag : Body()) {
    if (tag.code == 5 || tag.code == 105) return TrimText(tag.text);
  }
  return {};
}

std::string_view Record::Owner() const {
  bool in_group = false;
  for (const Tag& tag : Body()) {
    if (OpensGroup(tag)) {
      in_group = true;
    } else if (ClosesGroup(tag)) {
      in_group = false;
    } else if (!in_group && tag.code == kOwnerCode) {
      return TrimText(tag.text);
    }
  }
  return {};
}

std::span<const Tag> Record::Body() const {
  std::size_t end = 0;
  while (end < tags.size() && tags[end].code != kXdataMarker) ++end;
  return std::span<const Tag>(tags.data(), end);
}

std::vector<TagSegment> Record::Subclasses() const {
  std::span<const Tag> body = Body();
  std::vector<TagSegment> segments;
  std::size_t start = 0;
  std::string_view name;
  for (std::size_t i = 0; i <= body.size(); ++i) {
    if (i == body.size() || body[i].code == kSubclassMarker) {
      segments.push_back({name, body.subspan(start, i - start)});
      if (i < body.size()) name = body[i].text;
      start = i + 1;
    }
  }
  return segments;
}

std::optional<std::span<const Tag>> Record::Subclass(std::string_view marker) const {
  // Scans in place: loaders ask for a part of every record.
  std::span<const Tag> body = Body();
  for (std::size_t i = 0; i < body.size(); ++i) {
    if (body[i].code != kSubclassMarker || body[i].text != marker) continue;
    std::size_t end = i + 1;
    while (end < body.size() && body[end].code != kSubclassMarker) ++end;
    return body.subspan(i + 1, end - i - 1);
  }
  return std::nullopt;
}

std::vector<TagSegment> Record::XdataBlocks() const {
  std::vector<TagSegment> blocks;
  std::span<const Tag> all(tags);
  std::size_t i = Body().size();
  while (i < all.size()) {
    std::size_t start = i + 1;
    std::size_t end = start;
    while (end < all.size() && all[end].code != kXdataMarker) ++end;
    blocks.push_back({all[i].text, all.subspan(start, end - start)});
    i = end;
  }
  return blocks;
}

std::optional<std::span<const Tag>> Record::Xdata(std::string_view app) const {
  std::span<const Tag> all(tags);
  for (std::size_t i = Body().size(); i < all.size();) {
    std::size_t end = i + 1;
    while (end < all.size() && all[end].code != kXdataMarker) ++end;
    if (all[i].text == app) return all.subspan(i + 1, end - i - 1);
    i = end;
  }
  return std::nullopt;
}

std::vector<TagSegment> Record::AppDataGroups() const {
  std::vector<TagSegment> groups;
  std::span<const Tag> body = Body();
  for (std::size_t i = 0; i < body.size(); ++i) {
    if (!OpensGroup(body[i])) continue;
    std::size_t end = i + 1;
    while (end < body.size() && !ClosesGroup(body[end])) ++end;
    groups.push_back({TrimText(body[i].text.substr(1)), body.subspan(i + 1, end - i - 1)});
    i = end;
  }
  return groups;
}

std::optional<std::span<const Tag>> Record::AppData(std::string_view name) const {
  // One pass, the end of the body (the first 1001) found on the way: the
  // loader asks this of every record.
  const std::size_t size = tags.size();
  for (std::size_t i = 0; i < size && tags[i].code != kXdataMarker; ++i) {
    if (!OpensGroup(tags[i])) continue;
    std::size_t end = i + 1;
    while (end < size && tags[end].code != kXdataMarker && !ClosesGroup(tags[end])) ++end;
    if (TrimText(tags[i].text.substr(1)) == name) {
      return std::span<const Tag>(tags.data() + i + 1, end - i - 1);
    }
    // A group left open runs to the end of the body.
    if (end == size || tags[end].code == kXdataMarker) break;
    i = end;
  }
  return std::nullopt;
}

std::string_view SymbolTableRecordMarker(std::string_view type) {
  static constexpr std::pair<std::string_view, std::string_view> kMarkers[] = {
      {"APPID", "AcDbRegAppTableRecord"},       {"BLOCK_RECORD", "AcDbBlockTableRecord"},
      {"DIMSTYLE", "AcDbDimStyleTableRecord"},  {"LAYER", "AcDbLayerTableRecord"},
      {"LTYPE", "AcDbLinetypeTableRecord"},     {"STYLE", "AcDbTextStyleTableRecord"},
      {"UCS", "AcDbUCSTableRecord"},            {"VIEW", "AcDbViewTableRecord"},
      {"VPORT", "AcDbViewportTableRecord"},
  };
  for (const auto& [kind, marker] : kMarkers) {
    if (kind == type) return marker;
  }
  return {};
}

}  // namespace tovik::dxf
