#include "host/input/utility.h"
#include "host/input/utility_geometry.h"

#include "frame/conversions.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/entities/kinds.h"
#include "host/shapes/geometry_members.h"
#include "host/surface/args.h"

namespace tovik::host {
namespace {

void WritePrompt(Document& doc, CallArgs& a, size_t index) {
  if (a.Has(index) && a[index].IsString()) doc.WriteCommandLine(a[index].RawString());
}

// The next answer for a Get* request: a keyword or Enter raises "User input
// is a keyword" (GetInput then returns it), a cancel or an empty queue
// raises the cancel error.
UserInput Answer(Document& doc, UserInput::Kind wanted) {
  UserInput input = doc.NextInput();
  switch (input.kind) {
    case UserInput::Kind::kKeyword:
      doc.last_keyword() = input.keyword;
      throw HostError(HostFailure::kUserInputIsKeyword);
    case UserInput::Kind::kEnter:
      doc.last_keyword().clear();
      throw HostError(HostFailure::kUserInputIsKeyword);
    case UserInput::Kind::kCancel: throw HostError(HostFailure::kCancelled);
    default: break;
  }
  if (input.kind != wanted) throw HostError(HostFailure::kCancelled);
  return input;
}

Variant GetSubEntity(Utility& s, CallArgs& a) {
  Document& doc = *s.document();
  WritePrompt(doc, a, 4);
  s.TakeInputControl();
  UserInput input = Answer(doc, UserInput::Kind::kPick);
  if (!input.entity || input.entity->erased()) throw HostError(HostFailure::kCancelled);
  a[0] = Variant(ObjectRef(input.entity));
  a[1] = PointValue(input.point);
  if (input.containers.empty()) return Variant();  // matrix and context stay Empty
  // The transform of the containing references, outermost applied last.
  std::vector<double> m{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  auto multiply = [](const std::vector<double>& l, const std::vector<double>& r) {
    std::vector<double> out(16, 0.0);
    for (int i = 0; i < 4; ++i)
      for (int j = 0; j < 4; ++j)
        for (int k = 0; k < 4; ++k) out[i * 4 + j] += l[i * 4 + k] * r[k * 4 + j];
    return out;
  };
  for (const auto& container : input.containers) {
    auto* ref = As<BlockRef>(container.get());
    if (!ref) continue;
    const auto& d = ref->data();
    double c = std::cos(d.rotation), sn = std::sin(d.rotation);
    geometry::Vec3 o = d.block->data().origin;
    // T(insertion) * R(rotation) * S(scale) * T(-origin)
    std::vector<double> r{c * d.scale.x, -sn * d.scale.y, 0, 0,
                          sn * d.scale.x, c * d.scale.y, 0, 0,
                          0, 0, d.scale.z, 0, 0, 0, 0, 1};
    r[3] = d.insertion.x - (r[0] * o.x + r[1] * o.y);
    r[7] = d.insertion.y - (r[4] * o.x + r[5] * o.y);
    r[11] = d.insertion.z - r[10] * o.z;
    m = multiply(r, m);
  }
  SafeArray matrix(VarType::kDouble, {{0, 4}, {0, 4}});
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) matrix.Set({i, j}, Variant(m[i * 4 + j]));
  a[2] = Variant(std::move(matrix));
  SafeArray ids(VarType::kVariant, 0, static_cast<int32_t>(input.containers.size()));
  for (size_t i = 0; i < input.containers.size(); ++i) {
    int32_t id = input.containers[i]->id();
    ids.Set(static_cast<int32_t>(i),
            doc.id32_only() ? Variant(id) : Variant(static_cast<int64_t>(id)));
  }
  a[3] = Variant(std::move(ids));
  return Variant();
}

}  // namespace

const MemberTable<Utility>& Utility::Members() {
  static const MemberTable<Utility> table = [] {
    MemberTable<Utility> t;
    using K = Utility;
    AddUtilityInputMembers(t);
    t.Method(
        "GetEntity",
        [](K& s, CallArgs& a) {
          WritePrompt(*s.doc_, a, 2);
          s.TakeInputControl();
          UserInput input = Answer(*s.doc_, UserInput::Kind::kPick);
          if (!input.entity || input.entity->erased()) throw HostError(HostFailure::kCancelled);
          // GetEntity returns the outermost entity picked.
          ObjectRef picked = input.containers.empty() ? ObjectRef(input.entity)
                                                      : ObjectRef(input.containers.back());
          a[0] = Variant(picked);
          a[1] = PointValue(input.point);
          return Variant();
        },
        2, 3)
        .Outs({0, 1});
    t.Method("GetSubEntity", GetSubEntity, 4, 5).Outs({0, 1, 2, 3});
    t.Method(
        "Prompt",
        [](K& s, CallArgs& a) {
          s.doc_->WriteCommandLine(StringArg(a[0], {"Message", "Prompt"}));
          return Variant();
        },
        1, 1);
    AddUtilityGeometryMembers(t);
    return t;
  }();
  return table;
}

}  // namespace tovik::host
