#include "dxf/source_text.h"

#include <fstream>

#include "dxf/beside.h"
#include "dxf/tag.h"

namespace tovik::dxf {
namespace {

// Files below this are read in one piece: a second thread costs more than
// it saves.
constexpr std::size_t kTwoReadersFrom = std::size_t{2} << 20;

// Reads `size` bytes from `offset` of `path` into `out`; false on failure.
bool ReadRange(const std::string& path, std::size_t offset, std::size_t size, char* out) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  in.seekg(static_cast<std::streamoff>(offset));
  return static_cast<bool>(in.read(out, static_cast<std::streamsize>(size)));
}

}  // namespace

SourceText SourceText::ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) throw ReadError(path, PositionKind::kNone, 0, -1, "cannot open the file");
  std::streamoff end = in.tellg();
  if (end < 0) throw ReadError(path, PositionKind::kNone, 0, -1, "cannot read the file");
  in.close();
  SourceText text;
  text.size_ = static_cast<std::size_t>(end);
  // Never a null pointer, even for an empty file: view() tells the forms
  // apart by it.
  text.bytes_.reset(new char[text.size_ + 1]);
  bool read = true;
  if (text.size_ < kTwoReadersFrom) {
    read = ReadRange(path, 0, text.size_, text.bytes_.get());
  } else {
    // Each half's pages are first touched by the thread reading it.
    std::size_t half = text.size_ / 2;
    bool second = false;
    RunBeside([&] { second = ReadRange(path, half, text.size_ - half, text.bytes_.get() + half); },
              [&] { read = ReadRange(path, 0, half, text.bytes_.get()); });
    read = read && second;
  }
  if (!read) throw ReadError(path, PositionKind::kNone, 0, -1, "cannot read the file");
  return text;
}

}  // namespace tovik::dxf
