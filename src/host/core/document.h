// A drawing: the database (every object, by handle and by ID), its tables
// and collections, system variables, the undo journal, the command line,
// and the scripted user input. IAcadDocument.
#ifndef TOVIK_HOST_CORE_DOCUMENT_H_
#define TOVIK_HOST_CORE_DOCUMENT_H_

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "frame/member_table.h"
#include "frame/runtime_text.h"
#include "geometry/vec3.h"
#include "host/core/db_object.h"
#include "host/core/handle_index.h"
#include "host/core/journal.h"

namespace tovik::host {
namespace dxf {
struct DxfSource;
}

class Application;
class BlockRecord;
class CloneSession;
class SpatialState;
class Dictionary;
class Entity;
class Group;
class LayerRecord;
class Layout;
class LinetypeRecord;
class MaterialRecord;
class NamedRecord;
class RegApp;
class TextStyleRecord;
class DimStyleRecord;
class SelectionSet;
class Utility;
class CollectionBase;

// Evaluates the parenthesised lisp expressions the command line receives.
class LispEvaluator {
 public:
  virtual ~LispEvaluator() = default;
  // Runs one complete expression (parentheses balanced) typed at
  // `document`'s command line.
  virtual void Evaluate(Document& document, std::string_view expression) = 0;
};

// One scripted answer to an interactive request (Utility.Get*, picks).
struct UserInput {
  enum class Kind : uint8_t { kPoint, kDistance, kKeyword, kEnter, kCancel, kPick };
  Kind kind = Kind::kCancel;
  geometry::Vec3 point;       // kPoint, and the picked point of kPick
  double distance = 0;        // kDistance: any typed number
  std::string keyword;        // kKeyword: any typed text
  std::shared_ptr<Entity> entity;  // kPick: the innermost entity picked
  // kPick of a nested entity: the containing references, innermost first.
  std::vector<std::shared_ptr<Entity>> containers;

  static UserInput Point(const geometry::Vec3& p) { return Make(Kind::kPoint, p); }
  static UserInput Distance(double d) {
    UserInput u = Make(Kind::kDistance, {});
    u.distance = d;
    return u;
  }
  static UserInput Keyword(std::string k) {
    UserInput u = Make(Kind::kKeyword, {});
    u.keyword = std::move(k);
    return u;
  }
  // A typed number (GetInteger, GetReal, GetDistance) and a typed text
  // (a keyword, or GetString's answer).
  static UserInput Number(double d) { return Distance(d); }
  static UserInput Text(std::string t) { return Keyword(std::move(t)); }
  static UserInput Enter() { return Make(Kind::kEnter, {}); }
  static UserInput Cancel() { return Make(Kind::kCancel, {}); }
  static UserInput Make(Kind kind, const geometry::Vec3& p) {
    UserInput u;
    u.kind = kind;
    u.point = p;
    return u;
  }
  static UserInput Pick(std::shared_ptr<Entity> entity, const geometry::Vec3& p,
                        std::vector<std::shared_ptr<Entity>> containers = {});
};

// Symbol tables are ordered lists of records, looked up by name
// case-insensitively (non-ASCII letters too).
template <class R>
struct RecordTable {
  std::vector<R*> items;
  R* Find(std::string_view name) const;
};

class Document : public DispatchObject<Document> {
 public:
  // A new drawing named `name` with the host's standard contents (layer "0",
  // model space, paper space "Layout1", standard styles, the named-object
  // dictionary). `id32_only`: answer only the 32-bit identity members.
  Document(Application* app, std::string name, bool id32_only);
  ~Document() override;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  // Completes construction (needs shared_from_this): creates the standard
  // contents. Called by Application.
  void Initialize();

  std::string_view TypeName() const override { return "IAcadDocument"; }
  static const MemberTable<Document>& Members();
  // Every member but Name raises once the document is closed.
  Variant Invoke(DispId id, InvokeKind kind, std::span<Variant> args) override;

  Application* application() const { return app_; }
  const std::string& name() const { return name_; }
  void set_full_name(std::string full_name);
  const std::string& full_name() const { return full_name_; }
  bool closed() const { return closed_; }
  // Marks every object dead (the document was closed).
  void Close();

  // 32-bit identity mode: ObjectID, OwnerID and ObjectIDToObject are not
  // supported (438); ObjectID32, OwnerID32, ObjectIDToObject32 answer.
  bool id32_only() const { return id32_only_; }
  // The first object ID of this document's range.
  int32_t id_base() const { return id_base_; }
  void set_id32_only(bool on) { id32_only_ = on; }

  // Makes room for `count` more objects in the handle index, so that a
  // reader adding many at once does not rebuild it as it grows.
  void ReserveObjects(size_t count) {
    by_handle_.Reserve(count);
    objects_.reserve(objects_.size() + count);
  }

  // ---------------------------------------------------------- the database
  // Creates an object of kind T, gives it the next handle (or `handle` when
  // nonzero, for loaders) and an ID, and records its creation for undo.
  template <class T, class... A>
  T* Create(A&&... args) {
    auto object = std::make_shared<T>(std::forward<A>(args)...);
    T* raw = object.get();
    Register(std::move(object), 0);
    return raw;
  }
  // Registers `object` under `handle` (0: the next handle). A handle in use
  // raises Invalid handle. Records the creation for undo.
  void Register(std::shared_ptr<DbObject> object, uint64_t handle);
  // Moves `object` to `handle` (loaders: a standard record takes the handle
  // a file gives it). A handle in use by another object raises Invalid handle.
  void ReassignHandle(DbObject* object, uint64_t handle);
  // The live object with that handle / ID, or nullptr.
  DbObject* FindByHandle(uint64_t handle) const;
  DbObject* FindById(int64_t id) const;
  // The next handle to be handed out ($HANDSEED); raising it is allowed,
  // lowering below a used handle is not.
  uint64_t handle_seed() const { return next_handle_; }
  void set_handle_seed(uint64_t seed);
  // Number of objects ever registered (erased ones included).
  size_t object_count() const { return objects_.size(); }
  // The counted reference to a registered object.
  std::shared_ptr<DbObject> Ref(const DbObject* object) const;
  template <class T>
  std::shared_ptr<T> RefAs(const T* object) const {
    return std::static_pointer_cast<T>(Ref(object));
  }

  Journal& journal() { return journal_; }
  // Records an undo closure in the current step.
  void Record(std::function<void()> undo) { journal_.Record(std::move(undo)); }

  // ------------------------------------------------------------- tables
  RecordTable<BlockRecord>& blocks() { return blocks_; }
  RecordTable<LayerRecord>& layers() { return layers_; }
  RecordTable<LinetypeRecord>& linetypes() { return linetypes_; }
  RecordTable<TextStyleRecord>& text_styles() { return text_styles_; }
  RecordTable<MaterialRecord>& materials() { return materials_; }
  RecordTable<RegApp>& regapps() { return regapps_; }
  RecordTable<DimStyleRecord>& dim_styles() { return dim_styles_; }
  RecordTable<Layout>& layouts() { return layouts_; }
  std::vector<Group*>& groups() { return groups_; }
  Dictionary* named_objects() const { return named_objects_; }

  // Adds `record` to `table` at the end (or at `index`); recorded for undo.
  template <class R>
  void AddRecord(RecordTable<R>& table, R* record);
  // Takes `record` out of `table`; recorded for undo.
  template <class R>
  void RemoveRecord(RecordTable<R>& table, R* record);

  BlockRecord* model_space() const { return model_space_; }
  // The block of the active paper layout.
  BlockRecord* paper_space() const;
  // The block new entities go to by the current space (ActiveSpace).
  BlockRecord* current_space() const;
  Layout* active_layout() const { return active_layout_; }
  // Makes `layout` current (TILEMODE follows); a paper layout also becomes
  // the one PaperSpace answers. Recorded for undo.
  void SetActiveLayout(Layout* layout);
  // Makes paper layout `layout` the one PaperSpace answers, without changing
  // the active layout: its block takes the name "*Paper_Space" and the block
  // that had it takes the freed name. Recorded for undo.
  void SetPaperLayout(Layout* layout);
  bool model_active() const;
  // MSpace: a floating viewport is active in the paper layout. Setting it
  // while the Model tab is current raises Not applicable.
  bool mspace() const { return mspace_; }
  void SetMSpace(bool on);

  LayerRecord* active_layer() const { return active_layer_; }
  // Makes `layer` current; a frozen layer raises Invalid layer.
  void SetActiveLayer(LayerRecord* layer);
  TextStyleRecord* active_text_style() const { return active_text_style_; }
  LinetypeRecord* bylayer_linetype() const { return bylayer_linetype_; }
  LinetypeRecord* byblock_linetype() const { return byblock_linetype_; }
  LinetypeRecord* continuous_linetype() const { return continuous_linetype_; }
  MaterialRecord* bylayer_material() const { return bylayer_material_; }
  // The properties a new entity gets: current layer, ByLayer everything.
  void InitEntity(Entity* entity);

  // The registered application of that name, registered when missing
  // (recorded for undo).
  RegApp* EnsureRegApp(std::string_view name);
  // A block named "*U<n>" with the next free n.
  BlockRecord* AddAnonymousBlock(const geometry::Vec3& origin);
  // Creates a named block (REQUIRES: the name is free and valid).
  BlockRecord* AddBlock(std::string name, const geometry::Vec3& origin);
  // Interns a plot style name.
  const std::string* InternPlotStyle(std::string_view name);

  // Whether `layer` holds objects in any block (Layer.Delete refuses).
  bool LayerInUse(const LayerRecord* layer) const;
  // Whether any block reference (in any block) points to `block`.
  bool BlockReferenced(const BlockRecord* block) const;
  // The record references of `props` mapped into this document by name,
  // creating the missing records (copies from another drawing).
  void ImportProps(Entity* entity, const Document& from);

  // -------------------------------------------------- system variables
  // GetVariable / SetVariable (see sysvars.cpp for the table).
  Variant GetSysVar(std::string_view name);
  void SetSysVar(std::string_view name, const Variant& value);

  // ------------------------------------------------------- command line
  // Types `text` at the command line (SendCommand).
  void SendCommand(std::string_view text);
  // Installs the evaluator of lisp expressions (nullptr: expressions are
  // only logged).
  void set_lisp_evaluator(std::shared_ptr<LispEvaluator> lisp) { lisp_ = std::move(lisp); }
  // Everything written to the command line: prompts and echoed input.
  const std::string& command_log() const { return command_log_; }
  void WriteCommandLine(std::string_view text) { command_log_ += text; }
  // The undo marks: StartUndoMark / EndUndoMark.
  void StartUndoMark() { journal_.StartGroup(); }
  void EndUndoMark() { journal_.EndGroup(); }
  // Undoes the last `steps` steps; returns how many were undone.
  int Undo(int steps) { return journal_.Undo(steps); }

  // ------------------------------------------------------ user input
  // Queues a scripted answer for the next interactive request.
  void QueueInput(UserInput input) { input_.push_back(std::move(input)); }
  // Takes the next answer; a Cancel when none is queued.
  UserInput NextInput();
  size_t queued_input() const { return input_.size(); }
  // The keyword (or "" for Enter) of the last Get* that raised "User input
  // is a keyword"; GetInput returns it.
  std::string& last_keyword() { return last_keyword_; }

  // ---------------------------------------------------- collections
  std::shared_ptr<Utility> utility();
  SelectionSet* pickfirst();
  // ------------------------------------------------- geometry services
  // State the geometry members keep per drawing (spatial index, previous
  // selection), created by them on first use.
  std::shared_ptr<SpatialState>& spatial_state() { return spatial_state_; }
  // The DXF reader's record of the file a drawing was read from, kept so
  // that saving can write back what the host does not model.
  std::shared_ptr<dxf::DxfSource>& dxf_source() { return dxf_source_; }
  const std::shared_ptr<dxf::DxfSource>& dxf_source() const { return dxf_source_; }
  // The copying operation under way into this drawing, if any (it maps the
  // records and blocks brought over once per operation).
  CloneSession* clone_session() const { return clone_session_; }
  void set_clone_session(CloneSession* session) { clone_session_ = session; }
  // Told of every object created, touched (before a change), erased,
  // brought back or restored by undo; the geometry services install it.
  void set_change_observer(std::function<void(DbObject*)> observer) {
    change_observer_ = std::move(observer);
  }
  void NoteChanged(DbObject* object) {
    if (change_observer_) change_observer_(object);
  }
  // The automation collection objects (one each per document).
  ObjectRef Collection(std::string_view kind);
  std::vector<std::shared_ptr<SelectionSet>>& selection_sets() { return selection_sets_; }

  // The sysvar store (name upper-cased -> value).
  std::unordered_map<std::string, Variant>& sysvar_values() { return sysvars_; }

 private:
  friend class Application;
  void CreateStandardContents();

  Application* app_;
  std::string name_;
  std::string full_name_;
  bool id32_only_;
  int32_t id_base_;
  bool closed_ = false;

  std::vector<std::shared_ptr<DbObject>> objects_;  // slot = (id - base) / stride
  HandleIndex by_handle_;
  uint64_t next_handle_ = 0x20;
  Journal journal_;

  RecordTable<BlockRecord> blocks_;
  RecordTable<LayerRecord> layers_;
  RecordTable<LinetypeRecord> linetypes_;
  RecordTable<TextStyleRecord> text_styles_;
  RecordTable<MaterialRecord> materials_;
  RecordTable<RegApp> regapps_;
  RecordTable<DimStyleRecord> dim_styles_;
  RecordTable<Layout> layouts_;
  std::vector<Group*> groups_;
  Dictionary* named_objects_ = nullptr;
  std::unordered_set<std::string> plot_styles_;
  int next_anonymous_block_ = 1;

  BlockRecord* model_space_ = nullptr;
  Layout* active_layout_ = nullptr;
  Layout* paper_layout_ = nullptr;  // the paper layout last made current
  bool mspace_ = false;
  LayerRecord* active_layer_ = nullptr;
  TextStyleRecord* active_text_style_ = nullptr;
  LinetypeRecord* bylayer_linetype_ = nullptr;
  LinetypeRecord* byblock_linetype_ = nullptr;
  LinetypeRecord* continuous_linetype_ = nullptr;
  MaterialRecord* bylayer_material_ = nullptr;

  std::unordered_map<std::string, Variant> sysvars_;
  std::string command_log_;
  std::string pending_command_;
  std::string pending_input_;
  std::shared_ptr<LispEvaluator> lisp_;
  std::deque<UserInput> input_;
  std::string last_keyword_;

  std::unordered_map<std::string, ObjectRef> collections_;
  std::shared_ptr<Utility> utility_;
  std::shared_ptr<SelectionSet> pickfirst_;
  std::vector<std::shared_ptr<SelectionSet>> selection_sets_;
  std::shared_ptr<SpatialState> spatial_state_;
  std::shared_ptr<dxf::DxfSource> dxf_source_;
  CloneSession* clone_session_ = nullptr;
  std::function<void(DbObject*)> change_observer_;
};

// IDs: the document's base + stride * slot, all below 2^31 so both identity
// forms agree. Each document of an application takes its own range of IDs
// (as the host's IDs never name objects of two open drawings): range k
// starts at kObjectIdBase32 + k * kObjectIdRange, for 2^22 objects; after
// kObjectIdRanges documents the ranges are used again.
inline constexpr int32_t kObjectIdBase32 = 0x00100000;
inline constexpr int32_t kObjectIdStride = 8;
inline constexpr int32_t kObjectIdRange = 0x02000000;
inline constexpr int32_t kObjectIdRanges = 63;

template <class R>
R* RecordTable<R>::Find(std::string_view name) const {
  for (R* r : items) {
    if (CaseInsensitiveEqual(r->Name(), name)) return r;
  }
  return nullptr;
}

template <class R>
void Document::AddRecord(RecordTable<R>& table, R* record) {
  table.items.push_back(record);
  Record([&table, record] { std::erase(table.items, record); });
}

template <class R>
void Document::RemoveRecord(RecordTable<R>& table, R* record) {
  auto it = std::find(table.items.begin(), table.items.end(), record);
  if (it == table.items.end()) return;
  size_t index = static_cast<size_t>(it - table.items.begin());
  table.items.erase(it);
  Record([&table, record, index] {
    table.items.insert(table.items.begin() + static_cast<std::ptrdiff_t>(index), record);
  });
}

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_DOCUMENT_H_
