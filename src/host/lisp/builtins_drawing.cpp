// The lisp's functions that reach the drawing: system variables, entity
// names and their data lists, selection sets and the pick-first set, the
// named-object dictionary and groups, scripted user input, text boxes,
// loading files and commands.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/entities/entity.h"
#include "host/entities/kind.h"
#include "host/entities/kinds.h"
#include "host/lisp/builtins.h"
#include "host/lisp/interpreter.h"
#include "host/selection/selection_set.h"
#include "host/shapes/entity_shapes.h"
#include "host/shapes/spatial.h"
#include "host/tables/block.h"
#include "host/tables/dictionary.h"
#include "host/tables/group.h"
#include "host/tables/records.h"

namespace tovik::host::lisp {
namespace {

using Args = std::vector<ValuePtr>;
using geometry::Vec3;

constexpr std::string_view kGroupDictionary = "ACAD_GROUP";

// ------------------------------------------------------------ conversions
ValuePtr FromVariant(const Variant& v) {
  if (v.IsArray()) {
    std::vector<ValuePtr> items;
    for (const Variant& item : v.Array().Items()) items.push_back(FromVariant(item));
    return ListOf(items);
  }
  if (v.IsString()) return Str(v.RawString());
  if (v.IsObject() || v.IsEmpty() || v.IsNull()) return nullptr;
  if (v.Type() == VarType::kDouble || v.Type() == VarType::kSingle) return Real(CDbl(v));
  if (v.Type() == VarType::kBoolean) return CBool(v) ? Int(1) : Int(0);
  return Int(CLng(v));
}

Variant ToVariant(const ValuePtr& v) {
  if (!v) return Variant();
  switch (v->kind) {
    case Value::Kind::kInt:
      if (v->integer >= -32768 && v->integer <= 32767) return Variant(static_cast<int16_t>(v->integer));
      return Variant(v->integer);
    case Value::Kind::kReal: return Variant(v->real);
    case Value::Kind::kString: return Variant(v->text);
    case Value::Kind::kCons: {
      std::vector<double> numbers;
      for (const ValuePtr& x : ToVector(v)) numbers.push_back(NumberOf(x));
      return Variant(SafeArray::OfDoubles(numbers));
    }
    default: break;
  }
  BadArgument("stringp", v);
}

ValuePtr PointValue(const Vec3& p) { return ListOf({Real(p.x), Real(p.y), Real(p.z)}); }

Vec3 PointOf(const ValuePtr& v) {
  std::vector<ValuePtr> items = ToVector(v);
  if (items.size() < 2 || items.size() > 3) BadArgument("2D/3D point", v);
  return {NumberOf(items[0]), NumberOf(items[1]), items.size() == 3 ? NumberOf(items[2]) : 0.0};
}

// ---------------------------------------------------------------- entities
DbObject* ObjectOf(Interpreter& lisp, const ValuePtr& v) {
  if (!v || !v->Is(Value::Kind::kEname)) BadArgument("lentityp", v);
  DbObject* object = lisp.document().FindByHandle(v->handle);
  return object && !object->erased() ? object : nullptr;
}

Entity* EntityOf(Interpreter& lisp, const ValuePtr& v) {
  Entity* e = dynamic_cast<Entity*>(ObjectOf(lisp, v));
  if (!e) BadArgument("lentityp", v);
  return e;
}

// The drawing's main entities (those of model space and the layouts) in
// database (handle) order.
std::vector<Entity*> MainEntities(Document& doc) {
  std::vector<Entity*> all;
  for (BlockRecord* block : doc.blocks().items) {
    if (!block->IsLayout()) continue;
    for (Entity* e : block->entities()) {
      if (!e->erased()) all.push_back(e);
    }
  }
  std::sort(all.begin(), all.end(), [](const Entity* a, const Entity* b) { return a->handle() < b->handle(); });
  return all;
}

ValuePtr Pair(int code, ValuePtr value) { return Cons(Int(code), std::move(value)); }

// The data list of an entity: name, type, handle, layer and its main
// geometry groups, read through the entity's automation members (angles
// in radians, as the lisp gives them).
ValuePtr EntityData(Interpreter& lisp, Entity& e) {
  Document& doc = lisp.document();
  ObjectRef ref = doc.Ref(&e);
  std::string type(DxfNameOf(e));
  std::vector<ValuePtr> out = {Pair(-1, Ename(e.handle())), Pair(0, Str(type)), Pair(5, Str(e.HandleText()))};
  if (const LayerRecord* layer = e.props().layer) out.push_back(Pair(8, Str(layer->Name())));
  auto point = [&](int code, const char* member) {
    out.push_back(Pair(code, FromVariant(GetProperty(ref, member))));
  };
  auto number = [&](int code, const char* member) {
    out.push_back(Pair(code, Real(CDbl(GetProperty(ref, member)))));
  };
  auto text = [&](int code, const char* member) {
    out.push_back(Pair(code, Str(CStr(GetProperty(ref, member)))));
  };
  if (type == "LINE") {
    point(10, "StartPoint");
    point(11, "EndPoint");
  } else if (type == "CIRCLE" || type == "ARC") {
    point(10, "Center");
    number(40, "Radius");
    if (type == "ARC") {
      number(50, "StartAngle");
      number(51, "EndAngle");
    }
  } else if (type == "TEXT" || type == "MTEXT" || type == "ATTRIB" || type == "ATTDEF") {
    text(1, "TextString");
    point(10, "InsertionPoint");
    number(40, "Height");
    number(50, "Rotation");
    text(7, "StyleName");
    if (type == "ATTRIB" || type == "ATTDEF") text(2, "TagString");
  } else if (type == "INSERT") {
    text(2, "Name");
    point(10, "InsertionPoint");
    number(41, "XScaleFactor");
    number(42, "YScaleFactor");
    number(43, "ZScaleFactor");
    number(50, "Rotation");
  } else if (type == "LWPOLYLINE") {
    std::vector<double> xy = GetProperty(ref, "Coordinates").Array().ToDoubles();
    out.push_back(Pair(90, Int(static_cast<int32_t>(xy.size() / 2))));
    out.push_back(Pair(70, Int(CBool(GetProperty(ref, "Closed")) ? 1 : 0)));
    for (size_t i = 0; i + 1 < xy.size(); i += 2) {
      out.push_back(Pair(10, ListOf({Real(xy[i]), Real(xy[i + 1])})));
      out.push_back(Pair(42, Real(CDbl(CallMethod(ref, "GetBulge", {Variant(static_cast<int32_t>(i / 2))})))));
    }
  } else if (type == "POINT") {
    point(10, "Coordinates");
  } else if (type == "DIMENSION") {
    if (const auto* dim = dynamic_cast<const Dimension*>(&e); dim && dim->data().block) {
      out.push_back(Pair(2, Str(dim->data().block->Name())));
    }
  }
  return ListOf(out);
}

ValuePtr GroupData(Group& group) {
  std::vector<ValuePtr> out = {Pair(-1, Ename(group.handle())), Pair(0, Str("GROUP")),
                               Pair(5, Str(group.HandleText())), Pair(300, Str(group.data().description))};
  for (Entity* e : group.LiveMembers()) out.push_back(Pair(340, Ename(e->handle())));
  return ListOf(out);
}

Group* FindGroup(Document& doc, std::string_view name) {
  for (Group* g : doc.groups()) {
    if (!g->erased() && CaseInsensitiveEqual(g->data().name, name)) return g;
  }
  return nullptr;
}

// The data list of a non-graphical object: dictionaries list their keys
// (3) and entries (350); the root dictionary also lists the groups'
// dictionary, which the host keeps apart from its dictionaries.
ValuePtr ObjectData(Interpreter& lisp, const ValuePtr& name) {
  Document& doc = lisp.document();
  if (name->text == kGroupDictionary) {
    std::vector<ValuePtr> out = {Pair(-1, name), Pair(0, Str("DICTIONARY"))};
    for (Group* g : doc.groups()) {
      if (g->erased()) continue;
      out.push_back(Pair(3, Str(g->data().name)));
      out.push_back(Pair(350, Ename(g->handle())));
    }
    return ListOf(out);
  }
  DbObject* object = ObjectOf(lisp, name);
  if (!object) return nullptr;
  if (auto* e = dynamic_cast<Entity*>(object)) return EntityData(lisp, *e);
  if (auto* g = dynamic_cast<Group*>(object)) return GroupData(*g);
  std::vector<ValuePtr> out = {Pair(-1, name), Pair(5, Str(object->HandleText()))};
  if (auto* dict = dynamic_cast<Dictionary*>(object)) {
    out.insert(out.begin() + 1, Pair(0, Str("DICTIONARY")));
    if (dict == doc.named_objects() && !dict->Find(kGroupDictionary)) {
      out.push_back(Pair(3, Str(std::string(kGroupDictionary))));
      out.push_back(Pair(350, Ename(0, std::string(kGroupDictionary))));
    }
    for (const auto& [key, entry] : dict->data().entries) {
      if (!entry || entry->erased()) continue;
      out.push_back(Pair(3, Str(key)));
      out.push_back(Pair(350, Ename(entry->handle())));
    }
  }
  return ListOf(out);
}

ValuePtr Getvar(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 1);
  try {
    return FromVariant(lisp.document().GetSysVar(StringOf(a[0])));
  } catch (const AutomationError&) {
    return nullptr;  // an unknown variable reads as nil
  }
}

ValuePtr Setvar(Interpreter& lisp, const Args& a) {
  Arity(a, 2, 2);
  const std::string& name = StringOf(a[0]);
  try {
    lisp.document().SetSysVar(name, ToVariant(a[1]));
  } catch (const AutomationError&) {
    throw LispError("AutoCAD variable setting rejected: " + Print(a[0]) + " " + Print(a[1]));
  }
  return a[1];
}

ValuePtr Entlast(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 0);
  std::vector<Entity*> all = MainEntities(lisp.document());
  return all.empty() ? nullptr : Ename(all.back()->handle());
}

ValuePtr Entnext(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 1);
  std::vector<Entity*> all = MainEntities(lisp.document());
  if (a.empty()) return all.empty() ? nullptr : Ename(all.front()->handle());
  if (!a[0] || !a[0]->Is(Value::Kind::kEname)) BadArgument("lentityp", a[0]);
  auto it = std::upper_bound(all.begin(), all.end(), a[0]->handle,
                             [](uint64_t h, const Entity* e) { return h < e->handle(); });
  return it == all.end() ? nullptr : Ename((*it)->handle());
}

ValuePtr Handent(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 1);
  const std::string& text = StringOf(a[0]);
  char* end = nullptr;
  uint64_t handle = std::strtoull(text.c_str(), &end, 16);
  if (text.empty() || *end != '\0') return nullptr;
  DbObject* object = lisp.document().FindByHandle(handle);
  return object && !object->erased() ? Ename(handle) : nullptr;
}

ValuePtr Entget(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 2);
  if (!a[0] || !a[0]->Is(Value::Kind::kEname)) BadArgument("lentityp", a[0]);
  return ObjectData(lisp, a[0]);
}

ValuePtr Namedobjdict(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 0);
  return Ename(lisp.document().named_objects()->handle());
}

ValuePtr Dictsearch(Interpreter& lisp, const Args& a) {
  Arity(a, 2, 3);
  const std::string& key = StringOf(a[1]);
  if (!a[0] || !a[0]->Is(Value::Kind::kEname)) BadArgument("lentityp", a[0]);
  if (a[0]->text == kGroupDictionary) {
    Group* g = FindGroup(lisp.document(), key);
    return g ? GroupData(*g) : nullptr;
  }
  auto* dict = dynamic_cast<Dictionary*>(ObjectOf(lisp, a[0]));
  if (!dict) BadArgument("lentityp", a[0]);
  if (DbObject* entry = dict->Find(key); entry && !entry->erased()) return ObjectData(lisp, Ename(entry->handle()));
  if (dict == lisp.document().named_objects() && CaseInsensitiveEqual(key, kGroupDictionary)) {
    return ObjectData(lisp, Ename(0, std::string(kGroupDictionary)));
  }
  return nullptr;
}

// ----------------------------------------------------------- selection sets
ValuePtr NewPickSet(Interpreter& lisp, std::vector<std::shared_ptr<Entity>> members) {
  auto v = std::make_shared<Value>();
  v->kind = Value::Kind::kPickSet;
  v->pickset = std::make_shared<PickSet>();
  v->pickset->members = std::move(members);
  v->pickset->number = lisp.NextPickSetNumber();
  return v;
}

PickSet& PickSetOf(const ValuePtr& v) {
  if (!v || !v->Is(Value::Kind::kPickSet)) BadArgument("lselsetp", v);
  return *v->pickset;
}

std::vector<std::shared_ptr<Entity>> Live(const std::vector<std::shared_ptr<Entity>>& entities) {
  std::vector<std::shared_ptr<Entity>> out;
  for (const auto& e : entities) {
    if (e && !e->erased()) out.push_back(e);
  }
  return out;
}

// (ssget "_I") the pick-first set, (ssget "_P") the previous selection,
// (ssget "_X") every main entity; nil when empty.
ValuePtr Ssget(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 3);
  Document& doc = lisp.document();
  std::string mode = a.empty() || !a[0] || !a[0]->Is(Value::Kind::kString) ? "" : UCase(a[0]->text);
  while (!mode.empty() && (mode[0] == '_' || mode[0] == '.')) mode.erase(0, 1);
  std::vector<std::shared_ptr<Entity>> found;
  if (mode == "I") {
    found = doc.pickfirst()->Live();
  } else if (mode == "P") {
    found = Live(SpatialOf(doc).previous());
  } else if (mode == "X") {
    for (Entity* e : MainEntities(doc)) found.push_back(doc.RefAs(e));
  } else {
    throw LispError("ssget mode not available headless: " + (a.empty() ? std::string("nil") : Print(a[0])));
  }
  return found.empty() ? nullptr : NewPickSet(lisp, std::move(found));
}

ValuePtr Ssadd(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 2);
  if (a.empty()) return NewPickSet(lisp, {});
  std::shared_ptr<Entity> entity = lisp.document().RefAs(EntityOf(lisp, a[0]));
  if (a.size() == 1) return NewPickSet(lisp, {entity});
  PickSet& set = PickSetOf(a[1]);
  if (std::find(set.members.begin(), set.members.end(), entity) == set.members.end()) {
    set.members.push_back(entity);
  }
  return a[1];
}

ValuePtr Sslength(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return Int(static_cast<int32_t>(PickSetOf(a[0]).members.size()));
}

ValuePtr Ssname(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  const PickSet& set = PickSetOf(a[0]);
  int32_t i = IntOf(a[1]);
  if (i < 0 || static_cast<size_t>(i) >= set.members.size()) return nullptr;
  return Ename(set.members[static_cast<size_t>(i)]->handle());
}

// (sssetfirst gripset pickset): the pick-first set becomes pickset's
// members (empty for nil).
ValuePtr Sssetfirst(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 2);
  SelectionSet* pickfirst = lisp.document().pickfirst();
  pickfirst->Clear();
  if (a.size() == 2 && a[1]) {
    for (const auto& e : Live(PickSetOf(a[1]).members)) pickfirst->Add(e);
  }
  return ListOf(a);
}

// -------------------------------------------------------------------- input
UserInput NextInput(Interpreter& lisp) {
  UserInput input = lisp.document().NextInput();
  if (input.kind == UserInput::Kind::kCancel) throw LispError("Function cancelled");
  return input;
}

// (acad_colordlg index [flag]): the colour the user chose (a typed number
// in the scripted input), or nil when the dialog is cancelled.
ValuePtr AcadColordlg(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 2);
  IntOf(a[0]);
  UserInput input = lisp.document().NextInput();
  if (input.kind != UserInput::Kind::kDistance) return nullptr;
  return Int(static_cast<int32_t>(std::lround(input.distance)));
}

// (grread [track ...]): (5 point) for a tracked cursor position, (3 point)
// for a pick, (2 code) for a typed key.
ValuePtr Grread(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 3);
  UserInput input = NextInput(lisp);
  switch (input.kind) {
    case UserInput::Kind::kPoint: return ListOf({Int(!a.empty() && a[0] ? 5 : 3), PointValue(input.point)});
    case UserInput::Kind::kPick: return ListOf({Int(3), PointValue(input.point)});
    case UserInput::Kind::kEnter: return ListOf({Int(2), Int(13)});
    default: {
      std::string typed = input.kind == UserInput::Kind::kKeyword ? input.keyword : "";
      return ListOf({Int(2), Int(typed.empty() ? 13 : static_cast<unsigned char>(typed[0]))});
    }
  }
}

ValuePtr Getpoint(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 2);
  for (const ValuePtr& v : a) {
    if (v && v->Is(Value::Kind::kString)) lisp.Write(v->text);
  }
  UserInput input = NextInput(lisp);
  if (input.kind == UserInput::Kind::kPoint || input.kind == UserInput::Kind::kPick) {
    return PointValue(input.point);
  }
  return nullptr;
}

// (textbox data): the lower-left and upper-right corners of the text's
// box, relative to its insertion point in its own unturned frame.
ValuePtr Textbox(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 1);
  std::vector<ValuePtr> items = ToVector(a[0]);
  auto group = [&](int code) -> ValuePtr {
    for (const ValuePtr& p : items) {
      if (p && p->Is(Value::Kind::kCons) && p->car && p->car->Is(Value::Kind::kInt) && p->car->integer == code) {
        return p->cdr;
      }
    }
    return nullptr;
  };
  TextData data;
  if (ValuePtr name = group(-1)) {
    auto* text = dynamic_cast<Text*>(EntityOf(lisp, name));
    if (!text) BadArgument("text entity", name);
    data = text->data();
  } else {
    data.text = group(1) ? StringOf(group(1)) : "";
    if (ValuePtr h = group(40)) data.height = NumberOf(h);
    if (ValuePtr w = group(41)) data.width_factor = NumberOf(w);
    data.style = lisp.document().text_styles().Find(group(7) ? StringOf(group(7)) : "Standard");
  }
  std::optional<std::vector<Vec3>> box = TextBox(data, data.text);
  if (!box) return ListOf({PointValue({0, 0, 0}), PointValue({0, 0, 0})});
  // Into the text's frame: translate by the insertion, turn back.
  const double c = std::cos(-data.rotation), s = std::sin(-data.rotation);
  auto local = [&](const Vec3& p) {
    Vec3 d = p - data.insertion;
    return Vec3{d.x * c - d.y * s, d.x * s + d.y * c, 0};
  };
  Vec3 low = local((*box)[0]), high = local((*box)[2]);
  return ListOf({PointValue({std::min(low.x, high.x), std::min(low.y, high.y), 0}),
                 PointValue({std::max(low.x, high.x), std::max(low.y, high.y), 0})});
}

// ------------------------------------------------------------------ geometry
ValuePtr Polar(Interpreter&, const Args& a) {
  Arity(a, 3, 3);
  Vec3 p = PointOf(a[0]);
  double angle = NumberOf(a[1]), distance = NumberOf(a[2]);
  return PointValue({p.x + distance * std::cos(angle), p.y + distance * std::sin(angle), p.z});
}

ValuePtr Angle(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  Vec3 p = PointOf(a[0]), q = PointOf(a[1]);
  double angle = std::atan2(q.y - p.y, q.x - p.x);
  return Real(angle < 0 ? angle + 2 * std::numbers::pi : angle);
}

ValuePtr Distance(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  return Real(geometry::Distance(PointOf(a[0]), PointOf(a[1])));
}

// --------------------------------------------------------- files, commands
ValuePtr Load(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 2);
  const std::string& path = StringOf(a[0]);
  if (a.size() == 2) {
    try {
      return lisp.LoadFile(path);
    } catch (const LispError& e) {
      if (std::string(e.what()).rfind("LOAD failed", 0) != 0) throw;
      return a[1];
    }
  }
  return lisp.LoadFile(path);
}

// (command ...): "_.SELECT" with a selection set makes that set the
// previous selection; anything else is typed at the command line, each
// argument ended by Enter.
ValuePtr Command(Interpreter& lisp, const Args& a) {
  Document& doc = lisp.document();
  std::string first = !a.empty() && a[0] && a[0]->Is(Value::Kind::kString) ? UCase(a[0]->text) : "";
  while (!first.empty() && (first[0] == '_' || first[0] == '.')) first.erase(0, 1);
  if (first == "SELECT") {
    std::vector<std::shared_ptr<Entity>> chosen;
    for (size_t i = 1; i < a.size(); ++i) {
      if (a[i] && a[i]->Is(Value::Kind::kPickSet)) {
        for (const auto& e : Live(a[i]->pickset->members)) chosen.push_back(e);
      } else if (a[i] && a[i]->Is(Value::Kind::kEname)) {
        chosen.push_back(doc.RefAs(EntityOf(lisp, a[i])));
      }
    }
    SpatialOf(doc).previous() = std::move(chosen);
    SpatialOf(doc).previous_space() = doc.current_space();
    return nullptr;
  }
  std::string typed;
  for (const ValuePtr& v : a) {
    if (!v) continue;
    typed += (v->Is(Value::Kind::kString) ? v->text : Print(v)) + " ";
  }
  doc.SendCommand(typed);
  return nullptr;
}

}  // namespace

void AddDrawingFunctions(Globals& g) {
  Define(g, "getvar", Getvar);
  Define(g, "setvar", Setvar);
  Define(g, "entlast", Entlast);
  Define(g, "entnext", Entnext);
  Define(g, "handent", Handent);
  Define(g, "entget", Entget);
  Define(g, "namedobjdict", Namedobjdict);
  Define(g, "dictsearch", Dictsearch);
  Define(g, "ssget", Ssget);
  Define(g, "ssadd", Ssadd);
  Define(g, "sslength", Sslength);
  Define(g, "ssname", Ssname);
  Define(g, "sssetfirst", Sssetfirst);
  Define(g, "acad_colordlg", AcadColordlg);
  Define(g, "grread", Grread);
  Define(g, "getpoint", Getpoint);
  Define(g, "textbox", Textbox);
  Define(g, "polar", Polar);
  Define(g, "angle", Angle);
  Define(g, "distance", Distance);
  Define(g, "load", Load);
  Define(g, "command", Command);
}

}  // namespace tovik::host::lisp
