#include "frame/member_table.h"

#include "frame/runtime_text.h"

namespace tovik {

AutomationError DispatchFailure(CallFailure failure) {
  switch (failure) {
    case CallFailure::kTooFewArgs: return errors::ArgumentNotOptional();
    case CallFailure::kTooManyArgs: return errors::WrongArgumentCount();
    case CallFailure::kUnknownMember:
    case CallFailure::kNotReadable:
    case CallFailure::kNotWritable:
      break;
  }
  return errors::NotSupported();
}

std::string MemberKey(std::string_view name) {
  bool ascii = true;
  for (char c : name) {
    if (static_cast<unsigned char>(c) >= 0x80) {
      ascii = false;
      break;
    }
  }
  if (!ascii) return FoldCase(name);
  std::string key(name);
  for (char& c : key) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return key;
}

DispId MemberIndex::Find(std::string_view name) const {
  // Member names are short: fold ASCII names into a stack buffer so a
  // lookup allocates nothing.
  char buffer[64];
  if (name.size() <= sizeof(buffer)) {
    bool ascii = true;
    for (size_t i = 0; i < name.size(); ++i) {
      char c = name[i];
      if (static_cast<unsigned char>(c) >= 0x80) {
        ascii = false;
        break;
      }
      buffer[i] = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    }
    if (ascii) {
      auto it = ids_.find(std::string_view(buffer, name.size()));
      return it == ids_.end() ? kDispIdUnknown : it->second;
    }
  }
  auto it = ids_.find(MemberKey(name));
  return it == ids_.end() ? kDispIdUnknown : it->second;
}

std::string_view MemberIndex::NameOf(DispId id) const {
  if (id <= 0 || static_cast<size_t>(id) > names_.size()) return {};
  return names_[static_cast<size_t>(id) - 1];
}

DispId MemberIndex::Add(std::string_view name) {
  DispId id = static_cast<DispId>(names_.size() + 1);
  names_.emplace_back(name);
  // A name registered twice keeps its first id (the interface order).
  ids_.emplace(MemberKey(name), id);
  return id;
}

}  // namespace tovik
