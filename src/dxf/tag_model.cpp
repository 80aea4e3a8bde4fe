#include "dxf/tag_model.h"

#include <algorithm>

#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>

#include "dxf/encoding.h"

namespace tovik::dxf {

// Bump allocator for decoded and new text; blocks never move.
class TagModel::Arena {
 public:
  std::string_view Copy(std::string_view text) {
    constexpr std::size_t kBlockSize = 64 * 1024;
    if (text.empty()) return {};
    if (text.size() > left_) {
      std::size_t size = text.size() > kBlockSize / 4 ? text.size() : kBlockSize;
      blocks_.push_back(std::make_unique<char[]>(size));
      next_ = blocks_.back().get();
      left_ = size;
    }
    std::memcpy(next_, text.data(), text.size());
    std::string_view copy(next_, text.size());
    next_ += text.size();
    left_ -= text.size();
    return copy;
  }

 private:
  std::vector<std::unique_ptr<char[]>> blocks_;
  char* next_ = nullptr;
  std::size_t left_ = 0;
};

namespace {

std::string_view Trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

const Tag* FindCode(const Record& record, int code) { return record.Find(code); }

bool HasControlCharacter(std::string_view text) {
  for (char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 && c != '\t') return true;
  }
  return false;
}

}  // namespace

// Turns the token stream into sections, one record at a time.
class ModelBuilder {
 public:
  ModelBuilder(TagModel* model, TagArray* tags, std::string_view file_name, Faults faults)
      : model_(model), tags_(*tags), file_name_(file_name), faults_(faults) {}

  void Run() {
    while (at_ < tags_.size() && tags_[at_].code != 0) model_->leading_.push_back(tags_[at_++]);
    while (HasRecord()) {
      Record record = NextRecord();
      if (record.type == "EOF") break;
      if (record.type == "SECTION") {
        ReadSection(std::move(record));
        continue;
      }
      // Outside any section: a stray ENDSEC, or a record nothing owns.
      if (!first_stray_) first_stray_ = record.head;
      Repair(record.head, "expected SECTION, got " + Quote(record), "dropped");
      SkipFollowers(record);
    }
    JoinRepeatedSections();
    PlaceStrayObjects();
    PlaceStrayEntities();
    PlaceStrayVariables();
  }

  // Throws when the file held records but no section: nothing of a drawing
  // could be recovered.
  void RefuseWithoutSections() const {
    if (!model_->sections_.empty() || !first_stray_) return;
    Fail(*first_stray_, "expected SECTION, got " + QuoteForMessage(Trim(first_stray_->text)));
  }

 private:
  bool HasRecord() const { return at_ < tags_.size(); }

  std::string_view PeekType() const { return Trim(tags_[at_].text); }

  // True at the end of the tags or at a record that ends a section.
  bool AtSectionEnd() const {
    if (!HasRecord()) return true;
    std::string_view type = PeekType();
    return type == "ENDSEC" || type == "SECTION" || type == "EOF";
  }

  // Returns how many records start from here to the end of the section
  // (followers counted too, so never fewer than the section's records).
  std::size_t RecordsAhead() const {
    std::size_t count = 0;
    for (std::size_t i = at_; i < tags_.size(); ++i) {
      if (tags_[i].code != 0) continue;
      std::string_view type = Trim(tags_[i].text);
      if (type == "ENDSEC" || type == "SECTION" || type == "EOF") break;
      ++count;
    }
    return count;
  }

  Record NextRecord() {
    Record record;
    record.head = tags_[at_++];
    record.type = Trim(record.head.text);
    std::size_t start = at_;
    // The repairs below that look for groups 9 and 102 run only on the
    // few records that have them (this is read for every record).
    bool has_variable = false, has_app_group = false;
    for (; at_ < tags_.size() && tags_[at_].code != 0; ++at_) {
      has_variable |= tags_[at_].code == 9;
      has_app_group |= tags_[at_].code == 102;
    }
    record.tags = std::span<Tag>(tags_.data() + start, at_ - start);
    CompletePoints(record);
    if (has_app_group) {
      CloseAppGroups(record);
      DropEmptyExtensionLink(record);
    }
    DropGarbledMarkers(record);
    MarkSubclass(record);
    CompleteMarkers(record);
    KeepOneHandle(record);
    if (has_variable && !reading_header_ && record.type != "SECTION" && record.type != "XRECORD") {
      TakeStrayVariables(record);
    }
    return record;
  }

  // Group code 9 names header variables ("$NAME"); elsewhere it holds a
  // linetype element's text or a material's map file. A record holding
  // variables (two or more: the header's end and the next heads lost, or a
  // section in the wrong order) ends at the first, and the variables from
  // it on are the header's.
  void TakeStrayVariables(Record& record) {
    std::span<Tag> tags = record.tags;
    auto variable = [](const Tag& t) { return t.code == 9 && Trim(t.text).starts_with("$"); };
    auto first = std::find_if(tags.begin(), tags.end(), variable);
    if (first == tags.end() || std::count_if(first, tags.end(), variable) < 2) return;
    std::size_t at = static_cast<std::size_t>(first - tags.begin());
    Repair(*first, "header variables inside " + Quote(record), "moved to the header");
    stray_variables_.push_back(Made("", *first, std::vector<Tag>(first, tags.end())));
    record.tags = tags.first(at);
  }

  // Variables found outside the header join it where it lacks them (a
  // header is made when the file has none).
  void PlaceStrayVariables() {
    if (stray_variables_.empty()) return;
    std::vector<Section>& sections = model_->sections_;
    auto header = std::find_if(sections.begin(), sections.end(),
                               [](const Section& k) { return k.kind == SectionKind::kHeader; });
    if (header == sections.end()) {
      Section made;
      made.name = "HEADER";
      made.kind = SectionKind::kHeader;
      made.begin = Made("SECTION", stray_variables_.front().head, {Tag::String(2, "HEADER")});
      made.end = Made("ENDSEC", stray_variables_.front().head);
      header = sections.insert(sections.begin(), std::move(made));
    }
    for (Record& record : stray_variables_) {
      Section found;
      SplitHeader(&record, &found);
      for (HeaderVariable& v : found.variables) {
        bool known = std::any_of(header->variables.begin(), header->variables.end(),
                                 [&](const HeaderVariable& k) { return k.name == v.name; });
        if (!known) header->variables.push_back(std::move(v));
      }
    }
    stray_variables_.clear();
  }

  // The marker of the first part of an entity kind after AcDbEntity (sorted).
  static std::string_view EntityMarker(std::string_view type) {
    static constexpr std::pair<std::string_view, std::string_view> kMarkers[] = {
        {"3DFACE", "AcDbFace"},          {"3DSOLID", "AcDbModelerGeometry"},
        {"ARC", "AcDbCircle"},           {"ATTDEF", "AcDbText"},
        {"ATTRIB", "AcDbText"},          {"BODY", "AcDbModelerGeometry"},
        {"CIRCLE", "AcDbCircle"},        {"DIMENSION", "AcDbDimension"},
        {"ELLIPSE", "AcDbEllipse"},      {"HATCH", "AcDbHatch"},
        {"IMAGE", "AcDbRasterImage"},    {"INSERT", "AcDbBlockReference"},
        {"LEADER", "AcDbLeader"},        {"LINE", "AcDbLine"},
        {"LWPOLYLINE", "AcDbPolyline"},  {"MESH", "AcDbSubDMesh"},
        {"MLINE", "AcDbMline"},          {"MTEXT", "AcDbMText"},
        {"MULTILEADER", "AcDbMLeader"},  {"POINT", "AcDbPoint"},
        {"RAY", "AcDbRay"},              {"REGION", "AcDbModelerGeometry"},
        {"SHAPE", "AcDbShape"},          {"SOLID", "AcDbTrace"},
        {"SPLINE", "AcDbSpline"},        {"TEXT", "AcDbText"},
        {"TOLERANCE", "AcDbFcf"},        {"TRACE", "AcDbTrace"},
        {"VIEWPORT", "AcDbViewport"},    {"XLINE", "AcDbXline"},
    };
    auto by_kind = [](const auto& x, const auto& y) { return x.first < y.first; };
    static_assert(std::is_sorted(std::begin(kMarkers), std::end(kMarkers), by_kind));
    auto it = std::lower_bound(std::begin(kMarkers), std::end(kMarkers), std::pair{type, std::string_view()}, by_kind);
    return it != std::end(kMarkers) && it->first == type ? it->second : std::string_view();
  }

  // Groups of every entity, between AcDbEntity and the kind's own part.
  static bool IsEntityCommonCode(int code) {
    switch (code) {
      case 6: case 8: case 48: case 60: case 62: case 67: case 92: case 160: case 284: case 310:
      case 347: case 348: case 370: case 380: case 390: case 410: case 420: case 430: case 440:
        return true;
      default:
        return false;
    }
  }

  // The extension-dictionary group names its dictionary (360): one naming
  // none links nothing, and readers refuse it.
  void DropEmptyExtensionLink(Record& record) {
    std::span<Tag> tags = record.tags;
    for (std::size_t i = 0; i < tags.size(); ++i) {
      if (tags[i].code != 102 || Trim(tags[i].text) != "{ACAD_XDICTIONARY") continue;
      std::size_t end = i + 1;
      bool named = false;
      while (end < tags.size() && tags[end].code != 102) named |= tags[end++].code == 360;
      if (named) return;
      Repair(tags[i], "extension-dictionary group naming no dictionary", "dropped");
      std::vector<Tag> kept(tags.begin(), tags.begin() + static_cast<std::ptrdiff_t>(i));
      std::size_t after = end < tags.size() ? end + 1 : end;
      kept.insert(kept.end(), tags.begin() + static_cast<std::ptrdiff_t>(after), tags.end());
      record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(kept)));
      return;
    }
  }

  // A subclass marker names a class: one holding other characters than a
  // name has (a damaged line) marks nothing and would split the data
  // that follows from its part.
  void DropGarbledMarkers(Record& record) {
    auto garbled = [](const Tag& t) {
      if (t.code != 100) return false;
      std::string_view text = Trim(t.text);
      return text.empty() || std::any_of(text.begin(), text.end(), [](char c) {
        return !((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '$');
      });
    };
    std::span<Tag> tags = record.tags;
    if (std::none_of(tags.begin(), tags.end(), garbled)) return;
    std::vector<Tag> kept;
    kept.reserve(tags.size());
    for (const Tag& t : tags) {
      if (garbled(t)) {
        Repair(t, "subclass marker " + Quote(t.text) + " is no class name", "dropped");
      } else {
        kept.push_back(t);
      }
    }
    record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(kept)));
  }

  // A record in the marked form (R13 on) that lost the marker of its own
  // part gets it back where it belongs: readers take the part's data only
  // after it. A symbol-table record's goes after AcDbSymbolTableRecord, an
  // entity's after the groups every entity has.
  void CompleteMarkers(Record& record) {
    std::span<Tag> tags = record.tags;
    std::string_view marker = SymbolTableRecordMarker(record.type);
    std::string_view after = "AcDbSymbolTableRecord";
    if (marker.empty()) {
      marker = EntityMarker(record.type);
      after = "AcDbEntity";
    }
    if (marker.empty()) return;
    if (after == "AcDbSymbolTableRecord") {
      // A symbol-table record has these two parts only: another marker (a
      // damaged one) would split the record's data from its part.
      auto stray = [&](const Tag& t) {
        return t.code == 100 && Trim(t.text) != after && Trim(t.text) != marker;
      };
      if (std::any_of(tags.begin(), tags.end(), stray)) {
        std::vector<Tag> kept;
        for (const Tag& t : tags) {
          if (stray(t)) {
            Repair(t, "subclass marker " + Quote(t.text) + " is no marker of " + Quote(record), "dropped");
          } else {
            kept.push_back(t);
          }
        }
        record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(kept)));
        tags = record.tags;
      }
    }
    std::size_t at = tags.size();
    bool based = false;
    std::size_t own = tags.size();
    for (std::size_t i = 0; i < tags.size(); ++i) {
      if (tags[i].code == 1001) break;
      if (tags[i].code != 100) continue;
      std::string_view text = Trim(tags[i].text);
      if ((text == marker || (record.type == "INSERT" && text == "AcDbMInsertBlock")) && own == tags.size()) own = i;
      if (text == after && !based) {
        at = i + 1;
        based = true;
      }
    }
    if (own < tags.size()) {
      // The own part needs the base marker before it: a symbol-table
      // record's right before, an entity's after its handle, application
      // groups and owner (the groups every entity has follow it).
      if (based) return;
      std::size_t put = own;
      if (after == "AcDbEntity") {
        put = 0;
        bool in_group = false;
        while (put < own) {
          const Tag& t = tags[put];
          if (t.code == 102) {
            in_group = t.text.starts_with("{");
          } else if (!in_group && t.code != 5 && t.code != 330 && t.code != 360) {
            break;
          }
          ++put;
        }
      }
      Repair(tags[put], Quote(record) + " without its subclass marker " + Quote(after), "added");
      std::vector<Tag> fixed(tags.begin(), tags.begin() + static_cast<std::ptrdiff_t>(put));
      Tag mark = Tag::String(100, after);
      mark.position = tags[put].position;
      fixed.push_back(mark);
      fixed.insert(fixed.end(), tags.begin() + static_cast<std::ptrdiff_t>(put), tags.end());
      record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(fixed)));
      return;
    }
    std::vector<Tag> markers;
    if (!based && after == "AcDbSymbolTableRecord") {
      // Markers damaged past reading: both go where the first one was.
      auto first = std::find_if(tags.begin(), tags.end(), [](const Tag& t) { return t.code == 100; });
      if (first == tags.end()) return;  // not in the marked form
      at = static_cast<std::size_t>(first - tags.begin());
      markers.push_back(Tag::String(100, after));
    } else if (!based) {
      return;  // not in the marked form, or no base marker
    }
    if (after == "AcDbEntity") {
      while (at < tags.size() && IsEntityCommonCode(tags[at].code)) ++at;
    }
    markers.push_back(Tag::String(100, marker));
    // A marker of the part that follows it (an ARC's AcDbArc) stays after.
    Repair(at < tags.size() ? tags[at] : record.head,
           Quote(record) + " without its subclass marker " + Quote(marker), "added");
    std::vector<Tag> fixed(tags.begin(), tags.begin() + static_cast<std::ptrdiff_t>(at));
    for (Tag& mark : markers) {
      mark.position = at < tags.size() ? tags[at].position : record.head.position;
      fixed.push_back(mark);
    }
    fixed.insert(fixed.end(), tags.begin() + static_cast<std::ptrdiff_t>(at), tags.end());
    record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(fixed)));
  }

  // A record has one handle: a later group code 5 (a damaged line that
  // swallowed the next record's start) is dropped. DIMSTYLE's handle is
  // 105, its 5 is data; a SORTENTSTABLE lists sort handles under 5.
  // A handle that is no hexadecimal number is dropped too: the record is
  // given a new one, as one without a handle is.
  void KeepOneHandle(Record& record) {
    if (record.type == "SECTION") return;
    const int code = record.type == "DIMSTYLE" ? 105 : 5;
    // A SORTENTSTABLE lists sort handles under 5 after its own.
    const bool many = record.type == "SORTENTSTABLE";
    std::span<Tag> tags = record.tags;
    // Only the record's own groups: extended data (from 1001) follows them.
    std::size_t own = 0;
    while (own < tags.size() && tags[own].code != 1001) ++own;
    std::size_t handles = 0;
    bool unreadable = false;
    for (std::size_t i = 0; i < own; ++i) {
      if (tags[i].code != code) continue;
      if (handles++ == 0) unreadable = tags[i].kind == ValueKind::kHandle && tags[i].integer == kNoHandle;
    }
    if (!unreadable && (handles < 2 || many)) return;
    std::vector<Tag> kept;
    kept.reserve(tags.size());
    bool seen = false;
    for (std::size_t i = 0; i < tags.size(); ++i) {
      if (i < own && tags[i].code == code) {
        if (!seen && unreadable) {
          Repair(tags[i], "handle " + Quote(tags[i].text) + " is no hexadecimal number",
                 "dropped, a new one is given");
          seen = true;
          continue;
        }
        if (seen && !many) {
          Repair(tags[i], "a second handle (group code " + std::to_string(code) + ") in one record",
                 "dropped");
          continue;
        }
        seen = true;
      }
      kept.push_back(tags[i]);
    }
    record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(kept)));
  }

  // Objects whose data other readers take only after their subclass
  // marker get it when the file left it out: after the handle, the
  // application groups and the owner.
  void MarkSubclass(Record& record) {
    std::string_view marker;
    if (record.type == "XRECORD") marker = "AcDbXrecord";
    if (record.type == "DICTIONARY" || record.type == "ACDBDICTIONARYWDFLT") marker = "AcDbDictionary";
    if (marker.empty()) return;
    std::span<Tag> tags = record.tags;
    for (const Tag& t : tags) {
      if (t.code == 100) return;
    }
    std::size_t at = 0;
    bool in_group = false;
    while (at < tags.size()) {
      const Tag& t = tags[at];
      if (t.code == 102) {
        in_group = t.text.starts_with("{");
      } else if (!in_group && t.code != 5 && t.code != 330 && t.code != 360) {
        break;
      }
      ++at;
    }
    Repair(at < tags.size() ? tags[at] : record.head,
           QuoteForMessage(record.type) + " without its subclass marker", "\"" + std::string(marker) + "\" added");
    std::vector<Tag> fixed(tags.begin(), tags.begin() + static_cast<std::ptrdiff_t>(at));
    Tag mark = Tag::String(100, marker);
    mark.position = at < tags.size() ? tags[at].position : record.head.position;
    fixed.push_back(mark);
    fixed.insert(fixed.end(), tags.begin() + static_cast<std::ptrdiff_t>(at), tags.end());
    record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(fixed)));
  }

  // An application group ("102 {NAME" ... "102 }") left open is closed
  // where the next group or subclass begins, or the record ends; a close
  // without an open is dropped. Only records whose 102 groups do not pair
  // are touched; after an XRECORD's subclass marker 102 tags are its data.
  void CloseAppGroups(Record& record) {
    std::span<Tag> all = record.tags;
    std::size_t limit = all.size();
    if (record.type == "XRECORD") {
      for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i].code == 100) {
          limit = i;
          break;
        }
      }
    }
    std::span<Tag> tags = all.first(limit);
    bool open = false, broken = false;
    auto closing = [](const Tag& t) { return Trim(t.text) == "}"; };
    for (const Tag& t : tags) {
      if (t.code == 102) {
        bool opening = t.text.starts_with("{");
        if (opening == open || (!opening && !closing(t))) broken = true;
        open = opening;
      } else if (t.code == 100 && open) {
        broken = true;
      }
    }
    if (!broken && !open) return;
    std::vector<Tag> fixed;
    fixed.reserve(tags.size() + 2);
    open = false;
    auto close = [&](const Tag& at) {
      Repair(at, "application group not closed (group code 102)", "closed");
      Tag end = Tag::String(102, "}");
      end.position = at.position;
      fixed.push_back(end);
      open = false;
    };
    for (const Tag& t : tags) {
      if (t.code == 102 && t.text.starts_with("{")) {
        if (open) close(t);
        open = true;
      } else if (t.code == 102 && !closing(t)) {
        Repair(t, "group code 102 neither opens nor closes an application group", "dropped");
        continue;
      } else if (t.code == 102) {
        if (!open) {
          Repair(t, "\"102 }\" without its group", "dropped");
          continue;
        }
        open = false;
      } else if (t.code == 100 && open) {
        close(t);
      }
      fixed.push_back(t);
    }
    if (open) close(limit < all.size() ? all[limit] : tags.back());
    fixed.insert(fixed.end(), all.begin() + static_cast<std::ptrdiff_t>(limit), all.end());
    record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(fixed)));
  }

  // The code of the y a point's x under `code` needs, or 0 for codes that
  // are no x.
  static int YCodeOf(int code) {
    if ((code >= 10 && code <= 18) || (code >= 110 && code <= 112) || code == 210 ||
        (code >= 1010 && code <= 1013)) {
      return code + 10;
    }
    return 0;
  }

  // A point whose x is not followed by its y takes 0 as y, one whose y
  // comes without its x takes 0 as x, as readers that take a missing z as
  // 0 do; other readers refuse such a file.
  void CompletePoints(Record& record) {
    std::span<Tag> tags = record.tags;
    auto lacks_y = [&](std::size_t i) {
      int y = YCodeOf(tags[i].code);
      return y != 0 && (i + 1 == tags.size() || tags[i + 1].code != y);
    };
    // (Extended data is left alone here: some writers put a point's y
    // apart from its x there.)
    auto lacks_x = [&](std::size_t i) {
      int x = tags[i].code - 10;
      return tags[i].code < 1000 && YCodeOf(x) == tags[i].code && (i == 0 || tags[i - 1].code != x);
    };
    std::size_t first = 0;
    while (first < tags.size() && !lacks_y(first) && !lacks_x(first)) ++first;
    if (first == tags.size()) return;
    std::vector<Tag> complete;
    complete.reserve(tags.size() + 2);
    for (std::size_t i = 0; i < tags.size(); ++i) {
      if (i >= first && lacks_x(i)) {
        int x = tags[i].code - 10;
        Repair(tags[i], "group code " + std::to_string(tags[i].code) + " has no x (group code " +
                            std::to_string(x) + ")", "x is 0");
        Tag made = Tag::Double(x, 0.0);
        made.position = tags[i].position;
        complete.push_back(made);
      }
      complete.push_back(tags[i]);
      if (i < first || !lacks_y(i)) continue;
      Repair(tags[i], "group code " + std::to_string(tags[i].code) + " has no y (group code " +
                          std::to_string(YCodeOf(tags[i].code)) + ")", "y is 0");
      Tag y = Tag::Double(YCodeOf(tags[i].code), 0.0);
      y.position = tags[i].position;
      complete.push_back(y);
    }
    record.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(complete)));
  }

  // A record the file lacks, made for a repair: "0 `type`" and `tags`,
  // placed where the fault was found. Text of the tags must outlive the
  // model (literals, the file's own text, or interned).
  Record Made(std::string_view type, const Tag& at, std::vector<Tag> tags = {}) {
    Record record;
    record.head = Tag::String(0, type);
    record.head.position = at.position;
    record.type = type;
    if (!tags.empty()) {
      for (Tag& t : tags) t.position = at.position;
      std::vector<Tag>& made = model_->made_tags_.emplace_back(std::move(tags));
      record.tags = std::span<Tag>(made);
    }
    return record;
  }

  // The nine standard tables, each holding entries of its own name.
  static bool IsStandardTable(std::string_view name) {
    for (std::string_view t : {"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE",
                               "BLOCK_RECORD"}) {
      if (name == t) return true;
    }
    return false;
  }
  // A record that belongs in the TABLES section only.
  static bool IsTableRecordType(std::string_view type) {
    return type == "TABLE" || type == "ENDTAB" || IsStandardTable(type);
  }

  void ReadSection(Record begin) {
    Section section;
    const Tag* name = FindCode(begin, 2);
    if (name == nullptr || begin.tags.front().code != 2) {
      std::size_t dropped = 0;
      while (!AtSectionEnd()) {
        SkipFollowers(NextRecord());
        ++dropped;
      }
      if (HasRecord() && PeekType() == "ENDSEC") NextRecord();
      Repair(begin.head, "SECTION without a name (group code 2)",
             "its " + std::to_string(dropped) + " records are dropped");
      return;
    }
    section.name = Trim(name->text);
    section.kind = SectionKindOf(section.name);
    if (section.kind == SectionKind::kOther && HasRecord() && !AtSectionEnd()) {
      // A section of no known name whose records are a drawing's (a
      // damaged name) is read as the section they belong in.
      // The first record of a kind the drawing knows decides.
      std::string_view first;
      for (std::size_t i = at_; i < tags_.size(); ++i) {
        if (tags_[i].code != 0) continue;
        std::string_view type = Trim(tags_[i].text);
        if (type == "ENDSEC" || type == "SECTION" || type == "EOF") break;
        if (SectionOfRecord(type) != "ENTITIES" || !EntityMarker(type).empty() || type == "POLYLINE") {
          first = type;
          break;
        }
      }
      std::string_view meant = first.empty() ? std::string_view() : SectionOfRecord(first);
      if (!meant.empty()) {
        Repair(begin.head, "section " + Quote(section.name) + " holds " + Quote(first) + " records",
               "read as section " + std::string(meant));
        section.name = meant;
        section.kind = SectionKindOf(meant);
        begin = Made("SECTION", begin.head, {Tag::String(2, meant)});
      }
    }
    reading_header_ = section.kind == SectionKind::kHeader;
    if (section.kind == SectionKind::kHeader) SplitHeader(&begin, &section);
    section.begin = std::move(begin);
    if (section.kind != SectionKind::kTables && section.kind != SectionKind::kBlocks) {
      section.records.reserve(RecordsAhead());
    }
    while (!AtSectionEnd()) {
      if (section.kind == SectionKind::kHeader && at_ + 1 < tags_.size() &&
          (tags_[at_ + 1].code == 9 || (tags_[at_ + 1].code == 0 && PeekType().empty()))) {
        // A damaged line read as a record's start among the variables (an
        // empty one, or one the variables follow): the variables after it
        // are the header's.
        Record stray = NextRecord();
        Repair(stray.head, Quote(stray) + " among the header variables", "dropped, the variables after it are read");
        SplitHeader(&stray, &section);
        continue;
      }
      if (section.kind == SectionKind::kHeader) {
        // The header holds variables only: a record after them means the
        // file lost the header's end and the next section's head. The
        // section the record belongs to begins there.
        std::string_view next = SectionOfRecord(PeekType());
        Tag at = tags_[at_];
        Repair(at, "section HEADER has no ENDSEC before " + Quote(PeekType()),
               "closed; section " + std::string(next) + " begins there");
        section.end = Made("ENDSEC", at);
        model_->sections_.push_back(std::move(section));
        ReadSection(Made("SECTION", at, {Tag::String(2, next)}));
        return;
      }
      switch (section.kind) {
        case SectionKind::kTables: ReadTable(&section); break;
        case SectionKind::kBlocks: ReadBlock(&section); break;
        case SectionKind::kClasses:
          // Only CLASS records belong here; anything else (a section that
          // lost its end running into the tables) would be written back
          // raw beside what the drawing holds.
          if (PeekType() != "CLASS") {
            Record stray = NextRecord();
            Repair(stray.head, "expected CLASS, got " + Quote(stray), "dropped");
            SkipFollowers(stray);
            break;
          }
          section.records.push_back(NextRecord());
          break;
        case SectionKind::kObjects:
          // Symbol tables and their records are no objects (a section that
          // lost its end running into the tables).
          if (IsTableRecordType(PeekType())) {
            Record stray = NextRecord();
            Repair(stray.head, "expected an object, got " + Quote(stray), "dropped");
            break;
          }
          // Entities join the ENTITIES section (a section head lost):
          // readers take everything here for an object.
          if (!EntityMarker(PeekType()).empty() || PeekType() == "POLYLINE") {
            std::vector<Record> found;
            PushGrouped(found, true);
            for (Record& r : found) stray_entities_.push_back(std::move(r));
            break;
          }
          PushGrouped(section.records);
          break;
        case SectionKind::kEntities: PushGrouped(section.records, true); break;
        default: PushGrouped(section.records); break;
      }
    }
    if (HasRecord() && PeekType() == "ENDSEC") {
      section.end = NextRecord();
    } else {
      Repair(section.begin.head, "section " + std::string(section.name) + " has no ENDSEC", "closed");
      section.end = Made("ENDSEC", section.begin.head);
    }
    model_->sections_.push_back(std::move(section));
    reading_header_ = false;
  }

  // Splits the HEADER record into its variables. A variable holds one
  // value (a point's coordinates being one): a variable without a value,
  // groups after the value and groups before the first variable belong to
  // nothing and are dropped, as other readers refuse them.
  void SplitHeader(Record* begin, Section* section) {
    std::span<Tag> tags = begin->tags;
    std::size_t first = 0;
    while (first < tags.size() && tags[first].code != 9) ++first;
    // The section's name and nothing else before the first variable.
    std::size_t head = first;
    for (std::size_t k = 0; k < first; ++k) {
      if (tags[k].code == 2) {
        if (k + 1 < first) {
          Repair(tags[k + 1], "header groups before the first variable",
                 std::to_string(first - k - 1) + " dropped");
        }
        head = k + 1;
        break;
      }
    }
    for (std::size_t i = first; i < tags.size();) {
      HeaderVariable variable;
      variable.name_tag = tags[i];
      variable.name = Trim(tags[i].text);
      std::size_t j = i + 1;
      while (j < tags.size() && tags[j].code != 9) ++j;
      std::size_t value_end = ValueEnd(tags, i + 1, j);
      if (value_end == i + 1) {
        Repair(tags[i], "header variable " + Quote(variable.name) + " has no value", "dropped");
      } else if (!variable.name.starts_with("$")) {
        Repair(tags[i], "header variable name " + Quote(variable.name) + " without its leading \"$\"", "dropped");
      } else {
        if (value_end < j) {
          std::size_t extra = j - value_end;
          Repair(tags[value_end], "header variable " + Quote(variable.name) + " has " + std::to_string(extra) +
                                      (extra == 1 ? " group" : " groups") + " after its value",
                 "dropped");
        }
        variable.tags.assign(tags.begin() + static_cast<std::ptrdiff_t>(i + 1),
                             tags.begin() + static_cast<std::ptrdiff_t>(value_end));
        section->variables.push_back(std::move(variable));
      }
      i = j;
    }
    begin->tags = tags.first(head);
  }

  // The end of the value that starts at `from` (before `end`): one group,
  // or a point's x with the y and z that follow it.
  static std::size_t ValueEnd(std::span<const Tag> tags, std::size_t from, std::size_t end) {
    if (from >= end) return from;
    std::size_t k = from + 1;
    int y = YCodeOf(tags[from].code);
    if (y != 0 && k < end && tags[k].code == y) {
      ++k;
      if (k < end && tags[k].code == y + 10) ++k;
    }
    return k;
  }

  void ReadTable(Section* section) {
    Table table;
    // The entry type that ends the table when another follows (none for a
    // table under another name).
    std::string_view entry_type;
    Tag first_entry;
    if (PeekType() == "TABLE") {
      table.head = NextRecord();
      // The standard tables hold entries of their own name only: another
      // kind means the file lost this table's end and the next one's head.
      if (IsStandardTable(table.Name())) entry_type = table.Name();
    } else if (PeekType() == "ENDTAB") {
      Repair(tags_[at_], "expected TABLE, got \"ENDTAB\"", "dropped");
      NextRecord();
      return;
    } else if (!IsTableRecordType(PeekType())) {
      // No table holds entities or objects: a record of another section
      // (one whose head was lost) is dropped with its followers.
      Record stray = NextRecord();
      Repair(stray.head, "expected TABLE, got " + Quote(stray), "dropped");
      SkipFollowers(stray);
      return;
    } else {
      entry_type = PeekType();
      first_entry = tags_[at_];
      Repair(tags_[at_], "expected TABLE, got " + Quote(entry_type),
             "a " + std::string(entry_type) + " table is made for the entries");
    }
    while (!AtSectionEnd() && PeekType() != "ENDTAB") {
      if (PeekType() == "TABLE") break;
      if (!entry_type.empty() && PeekType() != entry_type) break;
      Record entry = NextRecord();
      // Entries are found by name: one without a name group is none (a
      // block record, which entities name by handle, is named on load).
      if (entry.type != "BLOCK_RECORD" && IsStandardTable(entry.type) && FindCode(entry, 2) == nullptr) {
        Repair(entry.head, Quote(entry) + " entry without a name (group code 2)", "dropped");
        continue;
      }
      table.entries.push_back(std::move(entry));
    }
    if (table.head.type.empty()) table.head = MadeTableHead(entry_type, first_entry, table.entries);
    if (HasRecord() && PeekType() == "ENDTAB") {
      table.end = NextRecord();
    } else {
      Repair(table.head.head, "table " + Quote(table.Name()) + " has no ENDTAB", "closed");
      table.end = Made("ENDTAB", table.head.head);
    }
    // A table whose name is no table's but whose entries are all of one
    // standard kind (a mangled name) is a table of that kind.
    if (!IsTableRecordType(table.Name()) && !table.entries.empty()) {
      std::string_view kind = table.entries.front().type;
      bool one_kind = IsStandardTable(kind);
      for (const Record& entry : table.entries) one_kind = one_kind && entry.type == kind;
      if (one_kind) {
        Repair(table.head.head, "table " + Quote(table.Name()) + " holds " + Quote(kind) + " entries",
               "read as a " + Quote(kind) + " table");
        std::vector<Tag> head(table.head.tags.begin(), table.head.tags.end());
        Tag name = Tag::String(2, kind);
        name.position = table.head.head.position;
        auto named = std::find_if(head.begin(), head.end(), [](const Tag& t) { return t.code == 2; });
        if (named != head.end()) {
          *named = name;
        } else {
          head.insert(head.begin(), name);
        }
        table.head.tags = std::span<Tag>(model_->made_tags_.emplace_back(std::move(head)));
      }
    }
    // No drawing has other tables: one under another name (a damaged head)
    // is dropped with its entries, as other readers refuse the file.
    if (!IsStandardTable(table.Name())) {
      Repair(table.head.head, "table " + Quote(table.Name()) + " is none of the standard tables",
             "dropped with its " + std::to_string(table.entries.size()) + " entries");
      return;
    }
    // A second table of a standard kind (a table made for entries that
    // lost theirs, or one given twice) joins the first: readers take one.
    {
      for (Table& earlier : section->tables) {
        if (earlier.Name() != table.Name()) continue;
        Repair(table.head.head, "a second " + Quote(table.Name()) + " table", "its entries join the first");
        for (Record& entry : table.entries) earlier.entries.push_back(std::move(entry));
        return;
      }
    }
    section->tables.push_back(std::move(table));
  }

  // The TABLE record of entries that came without one. Entries of R13 and
  // later name their table as owner: the table takes that handle back, with
  // the subclass and count such a table has.
  Record MadeTableHead(std::string_view type, const Tag& at, const std::vector<Record>& entries) {
    std::vector<Tag> tags{Tag::String(2, type)};
    std::string_view owner = entries.empty() ? std::string_view() : entries.front().Owner();
    if (!owner.empty() && Trim(owner) != "0") {
      tags.push_back(Tag::String(5, Trim(owner)));
      tags.push_back(Tag::String(330, "0"));
      tags.push_back(Tag::String(100, "AcDbSymbolTable"));
    }
    tags.push_back(Tag::Integer(70, static_cast<std::int64_t>(entries.size())));
    return Made("TABLE", at, std::move(tags));
  }

  void ReadBlock(Section* section) {
    if (PeekType() != "BLOCK") {
      Record stray = ReadGrouped();
      Repair(stray.head, "expected BLOCK, got " + Quote(stray), "dropped");
      return;
    }
    Block block;
    block.begin = NextRecord();
    while (!AtSectionEnd() && PeekType() != "ENDBLK" && PeekType() != "BLOCK") {
      PushGrouped(block.entities, true);
    }
    if (HasRecord() && PeekType() == "ENDBLK") {
      block.end = NextRecord();
    } else {
      Repair(block.begin.head, "block " + Quote(block.Name()) + " has no ENDBLK", "closed");
      block.end = Made("ENDBLK", block.begin.head);
    }
    section->blocks.push_back(std::move(block));
  }

  // Reads a record with its followers into `records`; a VERTEX, ATTRIB or
  // SEQEND that follows no POLYLINE or INSERT is dropped (a writer would
  // put it after whatever record comes before it). Among entities
  // (`graphic`), a table record is dropped and an object set aside for the
  // OBJECTS section: readers take everything there for an entity.
  void PushGrouped(std::vector<Record>& records, bool graphic = false) {
    if (graphic && IsTableRecordType(PeekType())) {
      Record stray = NextRecord();
      Repair(stray.head, "expected an entity, got " + Quote(stray), "dropped");
      return;
    }
    if (graphic && !IsRecordTypeName(PeekType())) {
      // Record kinds are names in capitals: anything else is a damaged line.
      Record stray = NextRecord();
      Repair(stray.head, "expected an entity, got " + Quote(stray), "dropped");
      SkipFollowers(stray);
      return;
    }
    if (graphic && IsObjectType(PeekType())) {
      Record stray = NextRecord();
      if (Readable(stray)) stray_objects_.push_back(std::move(stray));
      return;
    }
    Record record = ReadGrouped();
    if (record.type == "VERTEX" || record.type == "ATTRIB" || record.type == "SEQEND") {
      std::string_view owner = record.type == "ATTRIB" ? "INSERT" : "POLYLINE";
      Repair(record.head, Quote(record) + " without its " + std::string(owner), "dropped");
      return;
    }
    if (Readable(record)) records.push_back(std::move(record));
  }

  // False (the record dropped, listed) for a standard object the host keeps
  // as it came whose data other readers cannot take.
  bool Readable(const Record& record) {
    // A hatch is its boundaries: one cut short before their count (91)
    // fills nothing, and readers refuse it.
    if (record.type == "HATCH" && FindCode(record, 91) == nullptr) {
      Repair(record.head, "\"HATCH\" without its boundaries (group code 91)", "dropped");
      return false;
    }
    // A mesh lists vertices, faces, edges and creases, each after its
    // count (92 to 95): one missing a count was cut short.
    if (record.type == "MESH") {
      for (int code : {92, 93, 94, 95}) {
        if (FindCode(record, code) != nullptr) continue;
        Repair(record.head, "\"MESH\" cut short (no group code " + std::to_string(code) + ")", "dropped");
        return false;
      }
    }
    // Class definitions belong in CLASSES; the writer lists the classes a
    // drawing needs.
    if (record.type == "CLASS") {
      Repair(record.head, "\"CLASS\" outside the CLASSES section", "dropped");
      return false;
    }
    // Every visual style ends with its internal-use flag (291) and the
    // properties after it: one without it was cut short.
    if (record.type == "VISUALSTYLE" && FindCode(record, 291) == nullptr) {
      Repair(record.head, "\"VISUALSTYLE\" cut short (no group code 291)", "dropped");
      return false;
    }
    std::string_view marker = DataMarkerOf(record.type);
    if (marker.empty()) return true;
    bool marked = false;
    for (const Tag& t : record.tags) marked = marked || (t.code == 100 && AsciiEqualIgnoringCase(Trim(t.text), marker));
    if (!marked) {
      Repair(record.head, Quote(record) + " without its subclass marker " + Quote(marker) +
                              " (its data cannot be told apart)", "dropped");
      return false;
    }
    // A multiline style draws its lines from its elements (49 offset
    // each): one without any is no style readers accept.
    if (record.type == "MLINESTYLE" && FindCode(record, 49) == nullptr) {
      Repair(record.head, Quote(record) + " without line elements (group code 49)", "dropped");
      return false;
    }
    return true;
  }

  static bool AsciiEqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
      auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
      return lower(x) == lower(y);
    });
  }

  // The section a record of kind `type` belongs in.
  static std::string_view SectionOfRecord(std::string_view type) {
    if (type == "CLASS") return "CLASSES";
    if (IsTableRecordType(type)) return "TABLES";
    if (type == "BLOCK" || type == "ENDBLK") return "BLOCKS";
    if (IsObjectType(type)) return "OBJECTS";
    return "ENTITIES";
  }

  static bool IsRecordTypeName(std::string_view type) {
    return !type.empty() && std::all_of(type.begin(), type.end(), [](char c) {
      return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$' || c == '-';
    });
  }

  // Kinds of the OBJECTS section (sorted: looked up for every entity).
  static bool IsObjectType(std::string_view type) {
    static constexpr std::string_view kObjects[] = {
        "ACAD_PROXY_OBJECT", "ACDBDETAILVIEWSTYLE", "ACDBDICTIONARYWDFLT", "ACDBPLACEHOLDER",
        "ACDBSECTIONVIEWSTYLE", "DATATABLE", "DETAILVIEWSTYLE",
        "DGNDEFINITION", "DICTIONARY", "DIMASSOC", "DWFDEFINITION", "FIELD", "FIELDLIST", "GEODATA", "GROUP",
        "IDBUFFER", "LAYER_FILTER", "LAYER_INDEX", "LAYOUT", "LIGHTLIST", "MATERIAL", "MENTALRAYRENDERSETTINGS",
        "PDFDEFINITION", "RAPIDRTRENDERSETTINGS", "RENDERENVIRONMENT", "RENDERGLOBAL", "RENDERSETTINGS",
        "SECTIONVIEWSTYLE", "SORTENTSTABLE", "SPATIAL_FILTER",
        "SPATIAL_INDEX", "WIPEOUTVARIABLES", "XRECORD"};
    static_assert(std::is_sorted(std::begin(kObjects), std::end(kObjects)));
    return std::binary_search(std::begin(kObjects), std::end(kObjects), type) || !DataMarkerOf(type).empty();
  }

  // A section given twice (a file written in pieces, or one whose end and
  // next head were lost) joins the first of its name: its records follow
  // the first's, its tables' entries join the tables of the same name, its
  // header variables count where the first lacks them.
  void JoinRepeatedSections() {
    std::vector<Section>& sections = model_->sections_;
    std::vector<Section> kept;
    kept.reserve(sections.size());
    for (Section& section : sections) {
      auto first = std::find_if(kept.begin(), kept.end(), [&](const Section& k) {
        return section.kind != SectionKind::kOther && k.kind == section.kind;
      });
      if (first == kept.end()) {
        kept.push_back(std::move(section));
        continue;
      }
      Repair(section.begin.head, "a second " + std::string(section.name) + " section",
             "joined to the first (" + Place(first->begin.head) + ")");
      for (Record& r : section.records) first->records.push_back(std::move(r));
      for (Block& b : section.blocks) first->blocks.push_back(std::move(b));
      for (Table& t : section.tables) {
        auto same = std::find_if(first->tables.begin(), first->tables.end(),
                                 [&](const Table& k) { return k.Name() == t.Name(); });
        if (same == first->tables.end()) {
          first->tables.push_back(std::move(t));
        } else {
          for (Record& e : t.entries) same->entries.push_back(std::move(e));
        }
      }
      for (HeaderVariable& v : section.variables) {
        bool known = std::any_of(first->variables.begin(), first->variables.end(),
                                 [&](const HeaderVariable& k) { return k.name == v.name; });
        if (!known) first->variables.push_back(std::move(v));
      }
    }
    sections = std::move(kept);
  }

  // Entities found among the objects join the ENTITIES section (dropped
  // when the file has none).
  void PlaceStrayEntities() {
    if (stray_entities_.empty()) return;
    Section* entities = nullptr;
    for (Section& section : model_->sections_) {
      if (section.kind == SectionKind::kEntities) entities = &section;
    }
    for (Record& record : stray_entities_) {
      Repair(record.head, Quote(record) + " among the objects",
             entities != nullptr ? "moved to the ENTITIES section" : "dropped (the file has no ENTITIES section)");
      if (entities != nullptr) entities->records.push_back(std::move(record));
    }
    stray_entities_.clear();
  }

  // Objects found among the entities join the OBJECTS section (dropped
  // when the file has none).
  void PlaceStrayObjects() {
    if (stray_objects_.empty()) return;
    Section* objects = nullptr;
    for (Section& section : model_->sections_) {
      if (section.kind == SectionKind::kObjects) objects = &section;
    }
    for (Record& record : stray_objects_) {
      Repair(record.head, Quote(record) + " among the entities",
             objects != nullptr ? "moved to the OBJECTS section" : "dropped (the file has no OBJECTS section)");
      if (objects != nullptr) objects->records.push_back(std::move(record));
    }
    stray_objects_.clear();
  }

  // The subclass marker standard objects the host keeps as they came hold
  // their data after: readers refuse such an object without it.
  static std::string_view DataMarkerOf(std::string_view type) {
    // Sorted by kind: looked up for every record.
    static constexpr std::pair<std::string_view, std::string_view> kMarkers[] = {
        {"CELLSTYLEMAP", "AcDbCellStyleMap"},
        {"DICTIONARYVAR", "DictionaryVariables"},
        {"IMAGEDEF", "AcDbRasterImageDef"},
        {"IMAGEDEF_REACTOR", "AcDbRasterImageDefReactor"},
        {"MLEADERSTYLE", "AcDbMLeaderStyle"},
        {"MLINESTYLE", "AcDbMlineStyle"},
        {"PLOTSETTINGS", "AcDbPlotSettings"},
        {"RASTERVARIABLES", "AcDbRasterVariables"},
        {"SCALE", "AcDbScale"},
        {"SUN", "AcDbSun"},
        {"TABLESTYLE", "AcDbTableStyle"},
        {"VISUALSTYLE", "AcDbVisualStyle"},
    };
    auto by_kind = [](const auto& x, const auto& y) { return x.first < y.first; };
    static_assert(std::is_sorted(std::begin(kMarkers), std::end(kMarkers), by_kind));
    auto it = std::lower_bound(std::begin(kMarkers), std::end(kMarkers), std::pair{type, std::string_view()}, by_kind);
    return it != std::end(kMarkers) && it->first == type ? it->second : std::string_view();
  }

  Record ReadGrouped() {
    Record record = NextRecord();
    std::string_view follower;
    if (record.type == "POLYLINE") follower = "VERTEX";
    if (record.type == "INSERT") follower = "ATTRIB";
    if (follower.empty()) return record;
    while (HasRecord() && PeekType() == follower) record.followers.push_back(NextRecord());
    // A POLYLINE always ends with SEQEND, an INSERT when its 66 flag says
    // attributes follow: readers look for it even when nothing came before.
    const Tag* follow = record.type == "INSERT" ? FindCode(record, 66) : nullptr;
    bool closed = record.type == "POLYLINE" || (follow != nullptr && follow->IsInteger() && follow->integer != 0);
    if (HasRecord() && PeekType() == "SEQEND") {
      record.followers.push_back(NextRecord());
    } else if (!record.followers.empty() || closed) {
      Repair(record.head,
             record.followers.empty()
                 ? QuoteForMessage(record.type) + " without its SEQEND"
                 : std::string(follower) + " records of " + std::string(record.type) + " are not closed by SEQEND",
             "closed");
      record.followers.push_back(Made("SEQEND", record.head));
    }
    return record;
  }

  // Steps over the followers a dropped record would have had.
  void SkipFollowers(const Record& record) {
    if (record.type != "POLYLINE" && record.type != "INSERT") return;
    while (HasRecord() && (PeekType() == "VERTEX" || PeekType() == "ATTRIB" || PeekType() == "SEQEND")) {
      bool end = PeekType() == "SEQEND";
      NextRecord();
      if (end) break;
    }
  }

  static std::string Quote(const Record& record) { return QuoteForMessage(record.type); }
  static std::string Quote(std::string_view text) { return QuoteForMessage(text); }

  std::string Place(const Tag& at) const {
    return (model_->format_ == FileFormat::kBinary ? "byte " : "line ") + std::to_string(at.position);
  }

  // Lists the repair of `fault`; with Faults::kThrow, throws it instead.
  void Repair(const Tag& at, const std::string& fault, const std::string& remedy) {
    if (faults_ == Faults::kThrow) Fail(at, fault);
    model_->repairs_.push_back(Place(at) + ": " + fault + ": " + remedy);
  }

  [[noreturn]] void Fail(const Tag& at, const std::string& what) const {
    PositionKind kind = model_->format_ == FileFormat::kBinary ? PositionKind::kByteOffset
                                                               : PositionKind::kLine;
    throw ReadError(file_name_, kind, at.position, at.code, what);
  }

  TagModel* model_;
  TagArray& tags_;
  std::string_view file_name_;
  Faults faults_;
  std::size_t at_ = 0;
  std::optional<Tag> first_stray_;
  // Objects read among the entities, for the OBJECTS section, and the
  // other way round.
  std::vector<Record> stray_objects_;
  std::vector<Record> stray_entities_;
  // Header variables read outside the header, one record per find.
  std::vector<Record> stray_variables_;
  // True while the records read are the header's.
  bool reading_header_ = false;
};

std::string_view Table::Name() const { return Trim(head.StringOr(2)); }

std::string_view Block::Name() const { return Trim(begin.StringOr(2)); }

SectionKind SectionKindOf(std::string_view name) {
  constexpr std::pair<std::string_view, SectionKind> kNames[] = {
      {"HEADER", SectionKind::kHeader},     {"CLASSES", SectionKind::kClasses},
      {"TABLES", SectionKind::kTables},     {"BLOCKS", SectionKind::kBlocks},
      {"ENTITIES", SectionKind::kEntities}, {"OBJECTS", SectionKind::kObjects},
      {"THUMBNAILIMAGE", SectionKind::kThumbnailImage}, {"ACDSDATA", SectionKind::kAcdsData},
  };
  for (const auto& [known, kind] : kNames) {
    if (name == known) return kind;
  }
  return SectionKind::kOther;
}

TagModel::TagModel() : arena_(std::make_unique<Arena>()) {}
TagModel::TagModel(TagModel&&) noexcept = default;
TagModel& TagModel::operator=(TagModel&&) noexcept = default;
TagModel::~TagModel() = default;

namespace {

// Returns the raw value of header variable `name` from the token stream,
// found exactly where version() and code_page() will look after loading:
// the first section named HEADER, the first tag after "9 `name`".
std::string_view RawHeaderValue(const TagArray& tags, std::string_view name) {
  std::size_t i = 0;
  while (i + 1 < tags.size() && !(tags[i].code == 0 && Trim(tags[i].text) == "SECTION" &&
                                  tags[i + 1].code == 2 && Trim(tags[i + 1].text) == "HEADER")) {
    ++i;
  }
  for (i += 2; i + 1 < tags.size() && tags[i].code != 0; ++i) {
    if (tags[i].code == 9 && Trim(tags[i].text) == name) {
      const Tag& value = tags[i + 1];
      return value.code == 0 || value.code == 9 ? std::string_view() : Trim(value.text);
    }
  }
  return {};
}

}  // namespace

TagModel TagModel::Load(std::string buffer, std::string_view file_name, Faults faults) {
  return Load(SourceText(std::move(buffer)), file_name, faults);
}

TagModel TagModel::Load(SourceText text, std::string_view file_name, Faults faults) {
  TagModel model;
  model.buffer_ = std::make_unique<SourceText>(std::move(text));
  TokenStream stream = Tokenize(model.buffer_->view(), file_name, faults);
  model.format_ = stream.format;
  model.repairs_ = std::move(stream.repairs);
  TagArray& tags = stream.tags;
  std::string_view version = RawHeaderValue(tags, "$ACADVER");
  TextDecoder decoder(RawHeaderValue(tags, "$DWGCODEPAGE"), IsUtf8Version(version));
  std::string decoded;
  std::string escaped;
  std::string carets;
  bool binary = stream.format == FileFormat::kBinary;
  for (Tag& tag : tags) {
    if (tag.kind != ValueKind::kString) continue;
    if (!decoder.Decode(tag.text, &decoded, &escaped)) tag.text = model.arena_->Copy(decoded);
    // Binary DXF stores a line break inside text as the byte itself, ASCII
    // DXF as ^J; the model holds the ASCII form whatever the source.
    if (binary && HasControlCharacter(tag.text)) {
      carets.clear();
      EncodeForDxf(tag.text, false, &carets);
      tag.text = model.arena_->Copy(carets);
      if (!escaped.empty()) {
        carets.clear();
        EncodeForDxf(escaped, false, &carets);
        escaped.swap(carets);
      }
    }
    if (!escaped.empty()) model.escaped_forms_.emplace(tag.text.data(), model.arena_->Copy(escaped));
  }
  // The records view slices of the tag array: it moves into the model
  // (its storage stays where it is) before they are built.
  model.tags_ = std::move(tags);
  ModelBuilder builder(&model, &model.tags_, file_name, faults);
  builder.Run();
  if (model.sections_.empty() && !model.repairs_.empty() && faults == Faults::kRepair) {
    // Nothing of a drawing was recovered from a damaged file: its first
    // fault is the error.
    Tokenize(model.buffer_->view(), file_name, Faults::kThrow);
  }
  builder.RefuseWithoutSections();
  return model;
}

TagModel TagModel::LoadFile(const std::string& path) { return Load(SourceText::ReadFile(path), path); }

std::string_view TagModel::version() const {
  const HeaderVariable* variable = FindVariable("$ACADVER");
  return variable != nullptr && !variable->tags.empty() ? Trim(variable->tags[0].text)
                                                        : std::string_view();
}

std::string_view TagModel::code_page() const {
  const HeaderVariable* variable = FindVariable("$DWGCODEPAGE");
  return variable != nullptr && !variable->tags.empty() ? Trim(variable->tags[0].text)
                                                        : std::string_view();
}

Section* TagModel::FindSection(std::string_view name) {
  for (Section& section : sections_) {
    if (section.name == name) return &section;
  }
  return nullptr;
}

const Section* TagModel::FindSection(std::string_view name) const {
  return const_cast<TagModel*>(this)->FindSection(name);
}

const HeaderVariable* TagModel::FindVariable(std::string_view name) const {
  const Section* header = FindSection("HEADER");
  if (header == nullptr) return nullptr;
  for (const HeaderVariable& variable : header->variables) {
    if (variable.name == name) return &variable;
  }
  return nullptr;
}

std::string_view TagModel::Intern(std::string_view text) { return arena_->Copy(text); }

std::string_view TagModel::EscapedFormOf(std::string_view text) const {
  if (escaped_forms_.empty() || text.empty()) return {};
  auto found = escaped_forms_.find(text.data());
  return found != escaped_forms_.end() ? found->second : std::string_view();
}

}  // namespace tovik::dxf
