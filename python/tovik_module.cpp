// The Python module `tovik`: the library and the headless host reached from
// Python as a COM client (win32com) reaches them on Windows, late-bound by
// member name:
//
//   app = tovik.Application()
//   doc = app.Documents.Open("plan.dxf")
//   line = doc.ModelSpace.AddLine((0, 0, 0), (10, 0, 0))
//   line.Layer = "WALLS"
//   low, high = line.GetBoundingBox()
//   doc.SaveAs("out.dxf")
//
// Properties read without parentheses and are assigned; methods are
// called; arguments a member writes back come back after the result (or
// alone when the member returns nothing); obj(i), obj.Item(i) and obj[i]
// index; `for x in collection` walks it. docs/python.md lists the
// conventions and where they differ from win32com.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "frame/autocad_enum.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "frame/library_state.h"
#include "frame/zactivex_com.h"
#include "host/core/application.h"
#include "host/core/host_events.h"
#include "host/dxf/dxf_file.h"
#include "type_library.h"

namespace py = pybind11;

namespace tovik::python {
namespace {

// An omitted argument in the middle of a call (tovik.Missing).
struct MissingArgument {};
// An object reference to nothing (tovik.Nothing); None passes Empty.
struct NothingReference {};

// A value of an exact automation type: tovik.VARIANT(vt, value).
struct TypedValue {
  int vt;
  py::object value;
};

// An automation object seen from Python.
struct PyDispatch {
  ObjectRef object;
};

Variant ToVariant(const py::handle& value);

Variant TypedToVariant(const TypedValue& typed) {
  Variant v = ToVariant(typed.value);
  switch (static_cast<VarType>(typed.vt & ~kArrayFlag)) {
    case VarType::kInteger: return Variant(CInt(v));
    case VarType::kLong: return Variant(CLng(v));
    case VarType::kSingle: return Variant(CSng(v));
    case VarType::kDouble: return Variant(CDbl(v));
    case VarType::kString: return Variant(CStr(v));
    case VarType::kBoolean: return Variant(CBool(v));
    case VarType::kByte: return Variant(CByte(v));
    default: return v;
  }
}

// The module's own Python types, looked up once: pybind11's isinstance
// hashes the C++ type name at every call, too slow for every argument.
struct ModuleTypes {
  PyTypeObject* missing = nullptr;
  PyTypeObject* dispatch = nullptr;
  PyTypeObject* typed = nullptr;
  PyTypeObject* nothing = nullptr;
};
ModuleTypes& Types() {
  static ModuleTypes types;
  return types;
}

Variant ToVariant(const py::handle& value) {
  PyObject* o = value.ptr();
  if (o == Py_None) return Variant();
  if (PyBool_Check(o)) return Variant(o == Py_True);
  if (PyFloat_Check(o)) return Variant(PyFloat_AS_DOUBLE(o));
  if (PyUnicode_Check(o)) return Variant(value.cast<std::string>());
  PyTypeObject* type = Py_TYPE(o);
  if (type == Types().dispatch) return Variant(value.cast<const PyDispatch&>().object);
  if (type == Types().missing) return Variant::Missing();
  if (type == Types().nothing) return Variant::Nothing();
  if (type == Types().typed) return TypedToVariant(value.cast<const TypedValue&>());
  if (PyLong_Check(o)) {
    long long n = value.cast<long long>();
    if (n >= INT32_MIN && n <= INT32_MAX) return Variant(static_cast<int32_t>(n));
    return Variant(static_cast<int64_t>(n));
  }
  if (PyTuple_Check(o) || PyList_Check(o)) {
    // A sequence of numbers only is a Double array (points, coordinate
    // lists); anything else a Variant array. Both from index 0.
    py::sequence seq = value.cast<py::sequence>();
    bool numbers = seq.size() > 0;
    for (const py::handle& item : seq) {
      numbers = numbers && (PyFloat_Check(item.ptr()) || (PyLong_Check(item.ptr()) && !PyBool_Check(item.ptr())));
    }
    if (numbers) {
      std::vector<double> values;
      for (const py::handle& item : seq) values.push_back(item.cast<double>());
      return Variant(SafeArray::OfDoubles(values));
    }
    std::vector<Variant> items;
    for (const py::handle& item : seq) items.push_back(ToVariant(item));
    return Variant(SafeArray::OfVariants(std::move(items)));
  }
  throw py::type_error("tovik cannot pass a " + std::string(py::str(value.get_type())) + " to a member");
}

py::object FromVariant(const Variant& v);

// A one-dimensional array becomes a tuple (its lower bound is not kept;
// see docs/python.md); more dimensions become nested tuples, row first.
py::object FromArray(const SafeArray& a) {
  if (a.Dims() <= 1) {
    py::tuple out(a.Items().size());
    for (size_t i = 0; i < a.Items().size(); ++i) out[i] = FromVariant(a.Items()[i]);
    return out;
  }
  const int32_t rows = a.UBound(1) - a.LBound(1) + 1, columns = a.Count() / std::max(rows, 1);
  py::tuple out(static_cast<size_t>(rows));
  for (int32_t r = 0; r < rows; ++r) {
    py::tuple row(static_cast<size_t>(columns));
    for (int32_t c = 0; c < columns; ++c) row[static_cast<size_t>(c)] = FromVariant(a.Items()[static_cast<size_t>(r * columns + c)]);
    out[static_cast<size_t>(r)] = row;
  }
  return out;
}

py::object FromVariant(const Variant& v) {
  if (v.IsArray()) return FromArray(v.Array());
  if (v.IsMissing()) return py::cast(MissingArgument{});
  switch (v.Type()) {
    case VarType::kEmpty:
    case VarType::kNull: return py::none();
    case VarType::kObject: return v.RawObject() ? py::cast(PyDispatch{v.RawObject()}) : py::none();
    case VarType::kBoolean: return py::bool_(CBool(v));
    case VarType::kString: return py::str(v.RawString());
    case VarType::kSingle:
    case VarType::kDouble:
    case VarType::kDate:
    case VarType::kCurrency: return py::float_(CDbl(v));
    default: return py::int_(v.RawInt());
  }
}

// Calls member `id` of `object` with the Python arguments, returning the
// result and what the member writes into its output arguments.
py::object Call(const ObjectRef& object, DispId id, InvokeKind kind, const py::args& args) {
  MemberInfo info = object->Describe(id);
  std::vector<Variant> values;
  for (const py::handle& a : args) values.push_back(ToVariant(a));
  // Outputs the caller left out are passed as Missing slots to be written.
  int last_out = -1;
  for (int i = 0; i < 32; ++i) {
    if (info.outs & (uint32_t{1} << i)) last_out = i;
  }
  while (static_cast<int>(values.size()) <= last_out) values.push_back(Variant::Missing());
  Variant result = object->Invoke(id, kind, values);
  if (info.outs == 0) return FromVariant(result);
  std::vector<py::object> out;
  if (!result.IsEmpty()) out.push_back(FromVariant(result));
  for (int i = 0; i <= last_out; ++i) {
    // An output the member left unwritten comes back as None.
    if (info.outs & (uint32_t{1} << i)) {
      const Variant& v = values[static_cast<size_t>(i)];
      out.push_back(v.IsMissing() ? py::none() : FromVariant(v));
    }
  }
  if (out.empty()) return py::none();
  if (out.size() == 1) return out.front();
  return py::tuple(py::cast(out));
}

DispId IdOf(const PyDispatch& self, const std::string& name) {
  DispId id = self.object->GetIdOfName(name);
  if (id == kDispIdUnknown) {
    throw py::attribute_error("'" + std::string(self.object->TypeName()) + "' has no member '" + name + "'");
  }
  return id;
}

// A method bound to its object, or a property that takes arguments.
struct BoundMember {
  ObjectRef object;
  DispId id;
  bool method;
};

py::object GetAttribute(const PyDispatch& self, const std::string& name) {
  DispId id = IdOf(self, name);
  MemberInfo info = self.object->Describe(id);
  if (!info.method && info.min_args == 0) {
    return FromVariant(self.object->Invoke(id, InvokeKind::kPropertyGet, {}));
  }
  return py::cast(BoundMember{self.object, id, info.method});
}

void SetAttribute(const PyDispatch& self, const std::string& name, const py::object& value) {
  DispId id = IdOf(self, name);
  Variant v = ToVariant(value);
  std::vector<Variant> args{v};
  self.object->Invoke(id, v.IsObject() ? InvokeKind::kPropertyPutRef : InvokeKind::kPropertyPut, args);
}

// Delivers the events of one object to a Python handler: event "Name"
// calls the handler's method "OnName" when it has one, with the event's
// arguments.
// The handler is held weakly: it owns the sink (below), not the other way.
class PyEventSink : public EventSink {
 public:
  explicit PyEventSink(const py::object& handler) : handler_(handler) {}
  void OnEvent(std::string_view event, std::span<Variant> args) override {
    py::gil_scoped_acquire gil;
    py::object handler = handler_();
    std::string name = "On" + std::string(event);
    if (handler.is_none() || !py::hasattr(handler, name.c_str())) return;
    py::list values;
    for (const Variant& v : args) values.append(FromVariant(v));
    handler.attr(name.c_str())(*values);
  }

 private:
  py::weakref handler_;
};

// A new instance of handler_class receiving object's events as long as it
// lives (win32com's DispatchWithEvents keeps them apart the same way).
py::object WithEvents(const PyDispatch& object, const py::object& handler_class) {
  EventSource* events = object.object->Events();
  // The host application raises its events through its host-event object.
  if (auto app = std::dynamic_pointer_cast<host::Application>(object.object); app && !events) {
    events = app->events()->Events();
  }
  if (events == nullptr) throw py::type_error(std::string(object.object->TypeName()) + " raises no events");
  py::object handler = handler_class();
  auto sink = std::make_shared<PyEventSink>(handler);
  // The source holds the sink weakly: the connection ends with the sink.
  events->Connect(sink);
  // The handler owns the sink; the connection ends with the handler.
  ObjectRef source = object.object;
  handler.attr("_tovik_connection") = py::capsule(new std::pair<std::shared_ptr<PyEventSink>, ObjectRef>(sink, source),
                                                  [](void* p) {
                                                    delete static_cast<std::pair<std::shared_ptr<PyEventSink>, ObjectRef>*>(p);
                                                  });
  return handler;
}

// The member list of an object, one line per member (tovik.help).
std::string MemberListing(const Dispatch& object) {
  std::string out = std::string(object.TypeName()) + "\n";
  for (const std::string& name : object.MemberNames()) {
    MemberInfo info = object.Describe(object.GetIdOfName(name));
    out += "  " + name + (info.method ? "(" : (info.max_args > 0 ? "[" : ""));
    if (info.method || info.max_args > 0) {
      out += std::to_string(info.min_args);
      if (info.max_args != info.min_args) out += ".." + std::to_string(info.max_args);
      out += info.method ? " arguments)" : " arguments]";
    }
    if (info.outs != 0) {
      out += "  outputs:";
      for (int i = 0; i < 32; ++i) {
        if (info.outs & (uint32_t{1} << i)) out += " " + std::to_string(i + 1);
      }
    }
    out += info.method ? "" : "  property";
    out += "\n";
  }
  return out;
}

// A class of the type stubs: every member of `object`, a property as an
// attribute, a method as a function.
void StubClass(std::string& out, const Dispatch& object, std::vector<std::string>& done) {
  std::string name(object.TypeName());
  if (std::find(done.begin(), done.end(), name) != done.end()) return;
  done.push_back(name);
  out += "\nclass " + name + "(CDispatch):\n";
  std::vector<std::string> seen;
  for (const std::string& member : object.MemberNames()) {
    if (std::find(seen.begin(), seen.end(), member) != seen.end()) continue;
    seen.push_back(member);
    MemberInfo info = object.Describe(object.GetIdOfName(member));
    if (info.method || info.min_args > 0) {
      out += "    def " + member + "(self, *args: Any) -> Any: ...\n";
    } else {
      out += "    " + member + ": Any\n";
    }
  }
  if (seen.empty()) out += "    ...\n";
}

// The text of tovik.pyi: the module's functions, the library's classes by
// ProgID and the host's kinds met in a drawing holding one of each.
std::string StubText() {
  std::string out =
      "# Generated from the member tables by tovik._stubs(): members complete in\n"
      "# editors; every value is Any, as a late-bound client sees it.\n"
      "from typing import Any, Iterator, Literal, overload\n\n"
      "class AutomationError(Exception):\n    number: int\n    description: str\n    source: str\n    hresult: int\n\n"
      "class VARIANT:\n    varianttype: int\n    value: Any\n    def __init__(self, vt: int, value: Any) -> None: ...\n\n"
      "class _MissingType: ...\nMissing: _MissingType\n"
      "class _NothingType: ...\nNothing: _NothingType\n\n"
      "class CDispatch:\n    def __getattr__(self, name: str) -> Any: ...\n    def __setattr__(self, name: str, value: Any) -> None: ...\n"
      "    def __call__(self, *args: Any) -> Any: ...\n    def __getitem__(self, index: Any) -> Any: ...\n"
      "    def __iter__(self) -> Iterator[Any]: ...\n\n"
      "def Application() -> IAcadApplication: ...\n"
      "def ResetLibrary() -> None: ...\n"
      "def WithEvents(object: CDispatch, handler_class: Any) -> Any: ...\n"
      "def help(object: CDispatch) -> None: ...\n"
      "def _stubs() -> str: ...\n";
  std::vector<std::string> done;
  std::string overloads;
  for (const ClassInfo& info : Classes()) {
    if (!info.make) continue;
    ObjectRef object = info.make();
    StubClass(out, *object, done);
    overloads += "@overload\ndef Dispatch(prog_id: Literal[\"Tovik_AutoCad_Pro." + std::string(info.name) + "\"]) -> " +
                 std::string(object->TypeName()) + ": ...\n";
  }
  out += "\n" + overloads + "@overload\ndef Dispatch(prog_id: str) -> CDispatch: ...\n";
  // The host's kinds, from a drawing holding one of each common entity.
  auto app = host::Application::Create();
  ObjectRef doc = app->ActiveDocumentRef();
  ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
  auto point = [](double x) { return Variant(SafeArray::OfDoubles({x, 0, 0})); };
  CallMethod(GetProperty(doc, "Blocks").Object(), "Add", {point(0), Variant("B")});
  std::vector<ObjectRef> objects = {ObjectRef(app), doc, ms, GetProperty(doc, "PaperSpace").Object(),
                                    GetProperty(doc, "Utility").Object()};
  for (const char* collection : {"Layers", "Blocks", "Groups", "Dictionaries", "Layouts", "SelectionSets",
                                 "TextStyles", "Linetypes", "Documents"}) {
    ObjectRef owner = std::string(collection) == "Documents" ? ObjectRef(app) : doc;
    ObjectRef c = GetProperty(owner, collection).Object();
    objects.push_back(c);
    if (CLng(GetProperty(c, "Count")) > 0) objects.push_back(CallMethod(c, "Item", {Variant(int32_t{0})}).Object());
  }
  objects.push_back(CallMethod(GetProperty(doc, "Blocks").Object(), "Item", {Variant("B")}).Object());
  objects.push_back(CallMethod(GetProperty(doc, "Groups").Object(), "Add", {Variant("G")}).Object());
  objects.push_back(CallMethod(GetProperty(doc, "Dictionaries").Object(), "Add", {Variant("D")}).Object());
  objects.push_back(CallMethod(ms, "AddLine", {point(0), point(1)}).Object());
  objects.push_back(CallMethod(ms, "AddCircle", {point(0), Variant(1.0)}).Object());
  objects.push_back(CallMethod(ms, "AddArc", {point(0), Variant(1.0), Variant(0.0), Variant(1.0)}).Object());
  objects.push_back(CallMethod(ms, "AddText", {Variant("t"), point(0), Variant(1.0)}).Object());
  objects.push_back(CallMethod(ms, "AddMText", {point(0), Variant(5.0), Variant("m")}).Object());
  objects.push_back(CallMethod(ms, "AddPoint", {point(0)}).Object());
  objects.push_back(CallMethod(ms, "AddLightWeightPolyline", {Variant(SafeArray::OfDoubles({0, 0, 1, 0}))}).Object());
  objects.push_back(CallMethod(ms, "InsertBlock", {point(0), Variant("B"), Variant(1.0), Variant(1.0), Variant(1.0),
                                                   Variant(0.0)})
                        .Object());
  objects.push_back(CallMethod(ms, "AddHatch", {Variant(int32_t{1}), Variant("SOLID"), Variant(false)}).Object());
  objects.push_back(GetProperty(objects.back(), "TrueColor").Object());
  for (const ObjectRef& object : objects) StubClass(out, *object, done);
  return out;
}

py::object Application() {
  auto app = host::Application::Create();
  host::dxf::InstallDxfFileIo(*app);
  // The library talks to this host, as an add-in linked to it would.
  Variant link(ObjectRef(app->events()));
  GlobalInstance<ZActiveXCOM>()->InitZActiveX(link);
  return py::cast(PyDispatch{ObjectRef(app)});
}

}  // namespace
}  // namespace tovik::python

PYBIND11_MODULE(tovik, m) {
  using namespace tovik;
  using namespace tovik::python;
  m.doc() = "Tovik AutoCAD: the automation library and its headless host, reached late-bound by member name.";

  static py::exception<AutomationError> automation_error(m, "AutomationError");
  py::register_exception_translator([](std::exception_ptr p) {
    try {
      if (p) std::rethrow_exception(p);
    } catch (const AutomationError& e) {
      // The HRESULT a COM client sees: the runtime's numbers inside
      // 0x800A0000, the host's as they are.
      int32_t number = e.Number();
      uint32_t hresult = number > 0 && number < 0x10000 ? 0x800A0000u | static_cast<uint32_t>(number)
                                                       : static_cast<uint32_t>(number);
      py::object error = py::handle(automation_error.ptr())(e.Description());
      error.attr("number") = number;
      error.attr("description") = e.Description();
      error.attr("source") = e.Source();
      error.attr("hresult") = hresult;
      PyErr_SetObject(automation_error.ptr(), error.ptr());
    }
  });

  auto missing_type = py::class_<MissingArgument>(m, "_MissingType");
  missing_type.def("__repr__", [](const MissingArgument&) { return "tovik.Missing"; });
  Types().missing = reinterpret_cast<PyTypeObject*>(missing_type.ptr());
  m.attr("Missing") = py::cast(MissingArgument{});
  auto nothing_type = py::class_<NothingReference>(m, "_NothingType");
  nothing_type.def("__repr__", [](const NothingReference&) { return "tovik.Nothing"; });
  Types().nothing = reinterpret_cast<PyTypeObject*>(nothing_type.ptr());
  m.attr("Nothing") = py::cast(NothingReference{});

  auto typed_type = py::class_<TypedValue>(m, "VARIANT");
  typed_type.def(py::init<int, py::object>(), py::arg("vt"), py::arg("value"))
      .def_readonly("varianttype", &TypedValue::vt)
      .def_readonly("value", &TypedValue::value);
  Types().typed = reinterpret_cast<PyTypeObject*>(typed_type.ptr());

  py::class_<BoundMember>(m, "_Member")
      .def("__call__", [](const BoundMember& b, const py::args& args) {
        return Call(b.object, b.id, b.method ? InvokeKind::kMethod : InvokeKind::kPropertyGet, args);
      });

  auto dispatch_type = py::class_<PyDispatch>(m, "CDispatch");
  Types().dispatch = reinterpret_cast<PyTypeObject*>(dispatch_type.ptr());
  // Members are looked up first, before Python's own attribute search
  // (which would build an AttributeError for every member read); names
  // starting with "_" are Python's.
  static py::object object_getattribute = py::module_::import("builtins").attr("object").attr("__getattribute__");
  dispatch_type.def("__getattribute__", [](const py::object& self, const std::string& name) -> py::object {
        if (!name.empty() && name[0] == '_') return object_getattribute(self, name);
        return GetAttribute(self.cast<const PyDispatch&>(), name);
      })
      .def("__setattr__", &SetAttribute)
      .def("__call__", [](const PyDispatch& self, const py::args& args) {
        return Call(self.object, kDispIdValue, InvokeKind::kPropertyGet, args);
      })
      .def("__getitem__", [](const PyDispatch& self, const py::object& index) {
        return Call(self.object, kDispIdValue, InvokeKind::kPropertyGet, py::make_tuple(index));
      })
      .def("__iter__", [](const PyDispatch& self) {
        py::list items;
        for (const Variant& v : self.object->Enumerate()) items.append(FromVariant(v));
        return py::iter(items);
      })
      .def("__eq__", [](const PyDispatch& a, const py::object& b) {
        return py::isinstance<PyDispatch>(b) && SameObject(a.object, b.cast<const PyDispatch&>().object);
      })
      .def("__hash__", [](const PyDispatch& self) { return std::hash<const void*>()(self.object.get()); })
      .def("__dir__", [](const PyDispatch& self) { return self.object->MemberNames(); })
      .def("__repr__", [](const PyDispatch& self) {
        return "<tovik.CDispatch " + std::string(self.object->TypeName()) + ">";
      })
      .def_property_readonly("_typename", [](const PyDispatch& self) { return std::string(self.object->TypeName()); });

  m.def("Application", &Application, "A new headless host with one drawing open; the library is linked to it.");
  m.def(
      "Dispatch",
      [](const std::string& prog_id) { return py::cast(PyDispatch{CreateObject(prog_id)}); },
      py::arg("prog_id"), "CreateObject: a new instance of \"Tovik_AutoCad_Pro.<Class>\".");
  m.def("ResetLibrary", &ResetLibraryState, "Drops the library's shared state (host link, implicit instances).");
  m.def(
      "help", [](const PyDispatch& object) { py::print(MemberListing(*object.object), py::arg("end") = ""); },
      py::arg("object"), "Prints the object's members: methods with their argument counts and outputs, properties.");
  m.def("_stubs", &StubText, "The text of tovik.pyi, generated from the member tables.");
  m.def("WithEvents", &WithEvents, py::arg("object"), py::arg("handler_class"),
        "A new handler_class instance whose OnName methods receive object's events while it lives.");
  // The host's enumerations the library publishes, as win32com's constants.
  py::dict constants;
  for (const EnumInfo& e : PublishedEnumerations()) {
    for (const EnumMember& member : e.members) constants[py::str(std::string(member.name))] = member.value;
  }
  py::object namespace_type = py::module_::import("types").attr("SimpleNamespace");
  m.attr("constants") = namespace_type(**constants);
}
