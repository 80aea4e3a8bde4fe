// Layouts: the Model layout and the paper layouts, each with the block that
// holds its entities. The active paper layout's block is always named
// "*Paper_Space" (IAcadPaperSpace); the other paper layouts' blocks are
// "*Paper_Space0", "*Paper_Space1"... and trade names when the active paper
// layout changes, as the host's block table does.
#include <algorithm>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/entity.h"
#include "host/surface/args.h"
#include "host/surface/member_helpers.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

constexpr std::string_view kActivePaperBlock = "*Paper_Space";
// The host's limit on layouts in one drawing (Model included).
constexpr size_t kMaxLayouts = 256;

bool IsModel(const Layout& layout) {
  return layout.data().block == layout.document()->model_space();
}

// The paper layouts in tab order.
std::vector<Layout*> PaperTabs(Document& doc) {
  std::vector<Layout*> tabs;
  for (Layout* l : doc.layouts().items) {
    if (!IsModel(*l)) tabs.push_back(l);
  }
  std::stable_sort(tabs.begin(), tabs.end(), [](const Layout* a, const Layout* b) {
    return a->data().tab_order < b->data().tab_order;
  });
  return tabs;
}

// Numbers the paper tabs 1..n in the order given (undoable).
void Renumber(const std::vector<Layout*>& tabs) {
  for (size_t i = 0; i < tabs.size(); ++i) {
    int32_t order = static_cast<int32_t>(i + 1);
    if (tabs[i]->data().tab_order == order) continue;
    tabs[i]->Touch();
    tabs[i]->mutable_data().tab_order = order;
  }
}

void LetTabOrder(Layout& s, CallArgs&, Variant& v) {
  int32_t order = LongArg(v, {"TabOrder", "TabOrder"});
  // Model is always the first tab (0); paper tabs run 1..n without gaps.
  if (IsModel(s)) throw HostError(HostFailure::kNotApplicable);
  std::vector<Layout*> tabs = PaperTabs(*s.document());
  if (order < 1 || static_cast<size_t>(order) > tabs.size()) {
    throw HostError(HostFailure::kInvalidInput);
  }
  std::erase(tabs, &s);
  tabs.insert(tabs.begin() + (order - 1), &s);
  Renumber(tabs);
}

void LetName(Layout& s, CallArgs&, Variant& v) {
  std::string name = StringArg(v, {"Name", "Name"});
  if (IsModel(s)) throw HostError(HostFailure::kNotApplicable);
  if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
  Layout* other = s.document()->layouts().Find(name);
  if (other && other != &s) throw HostError(HostFailure::kDuplicateRecordName);
  s.Touch();
  s.mutable_data().name = std::move(name);
}

}  // namespace

void Document::SetActiveLayout(Layout* layout) {
  Layout* old_layout = active_layout_;
  Layout* old_paper = paper_layout_;
  bool old_mspace = mspace_;
  if (layout->data().block != model_space_) SetPaperLayout(layout);
  if (layout->data().block == model_space_) mspace_ = false;
  active_layout_ = layout;
  sysvars_["TILEMODE"] = Variant(int16_t{model_active() ? int16_t{1} : int16_t{0}});
  Record([this, old_layout, old_paper, old_mspace] {
    active_layout_ = old_layout;
    paper_layout_ = old_paper;
    mspace_ = old_mspace;
    sysvars_["TILEMODE"] = Variant(int16_t{model_active() ? int16_t{1} : int16_t{0}});
  });
}

void Document::SetPaperLayout(Layout* layout) {
  if (layout == paper_layout_) return;
  // The block of the paper layout made current takes "*Paper_Space"; the
  // one that had it takes the newcomer's old name.
  Layout* old_paper = paper_layout_;
  BlockRecord* incoming = layout->data().block;
  BlockRecord* outgoing = paper_layout_ ? paper_layout_->data().block : nullptr;
  std::string freed = incoming->data().name;
  incoming->Touch();
  incoming->mutable_data().name = std::string(kActivePaperBlock);
  if (outgoing && outgoing != incoming) {
    outgoing->Touch();
    outgoing->mutable_data().name = std::move(freed);
  }
  paper_layout_ = layout;
  Record([this, old_paper] { paper_layout_ = old_paper; });
}

Layout* AddLayout(Document& doc, const Variant& name_arg) {
  std::string name = StringArg(name_arg, {"Name", "Add"});
  if (!IsValidSymbolName(name)) throw HostError(HostFailure::kInvalidInput);
  // Layouts live in a dictionary, not a symbol table: a name in use is
  // refused rather than handed back.
  if (doc.layouts().Find(name)) throw HostError(HostFailure::kDuplicateRecordName);
  if (doc.layouts().items.size() >= kMaxLayouts) throw HostError(HostFailure::kInvalidInput);
  std::string block_name;
  for (int n = 0;; ++n) {
    block_name = std::string(kActivePaperBlock) + std::to_string(n);
    if (!doc.blocks().Find(block_name)) break;
  }
  BlockRecord* block = doc.AddBlock(std::move(block_name), {});
  Layout* layout = doc.Create<Layout>();
  layout->mutable_data().name = std::move(name);
  layout->mutable_data().block = block;
  layout->mutable_data().tab_order = static_cast<int32_t>(PaperTabs(doc).size() + 1);
  block->mutable_data().layout = layout;
  doc.AddRecord(doc.layouts(), layout);
  return layout;
}

void Layout::Delete() {
  CheckLive();
  Document& doc = *doc_;
  std::vector<Layout*> tabs = PaperTabs(doc);
  // Model cannot go, and one paper layout always remains.
  if (IsModel(*this) || tabs.size() <= 1) throw HostError(HostFailure::kNotApplicable);
  BlockRecord* block = data_.block;
  // The layout's entities go with it: one on a locked layer refuses the
  // whole deletion before anything changes.
  for (const Entity* e : block->entities()) e->CheckWritable();
  std::erase(tabs, this);
  if (doc.paper_space() == block) {
    // The next paper tab takes over "*Paper_Space", and the display when
    // this layout was showing.
    if (doc.active_layout() == this) {
      doc.SetActiveLayout(tabs.front());
    } else {
      doc.SetPaperLayout(tabs.front());
    }
  }
  for (Entity* e : std::vector<Entity*>(block->entities())) {
    if (!e->erased()) e->Erase();
  }
  doc.RemoveRecord(doc.blocks(), block);
  block->DbObject::Erase();
  doc.RemoveRecord(doc.layouts(), this);
  DbObject::Erase();
  Renumber(tabs);
}

const MemberTable<Layout>& Layout::Members() {
  static const MemberTable<Layout> table = [] {
    MemberTable<Layout> t;
    using K = Layout;
    t.Property("Name", GetStringField<K, &K::Data::name>, LetName);
    t.Property("Block", [](K& s, CallArgs&) { return Variant(s.document()->Ref(s.data_.block)); });
    t.Property("ModelType", [](K& s, CallArgs&) { return Variant(IsModel(s)); });
    t.Property("TabOrder", [](K& s, CallArgs&) { return Variant(s.data_.tab_order); },
               LetTabOrder);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
