// The bytes of a drawing file as the tag model reads them: a string handed
// in, or a file read in two halves at once into memory that is not cleared
// first (filling a large buffer with zeros before reading over it is a
// tenth of a large file's load).
#ifndef TOVIK_DXF_SOURCE_TEXT_H_
#define TOVIK_DXF_SOURCE_TEXT_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace tovik::dxf {

class SourceText {
 public:
  SourceText() = default;
  explicit SourceText(std::string text) : text_(std::move(text)) {}
  // The whole file at `path`; throws ReadError when it cannot be opened or
  // read through.
  static SourceText ReadFile(const std::string& path);

  std::string_view view() const {
    return bytes_ ? std::string_view(bytes_.get(), size_) : std::string_view(text_);
  }
  std::size_t size() const { return view().size(); }

 private:
  std::string text_;
  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
};

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_SOURCE_TEXT_H_
