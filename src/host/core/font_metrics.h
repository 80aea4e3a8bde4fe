// The widths of texts in the faces their styles name, from the fonts
// themselves. On Linux fontconfig finds the face for the family a style's font file
// names (its file name without the extension: "arial.ttf" asks for Arial,
// "romans.shx" for "romans"), falling back to its default face (DejaVu Sans
// on Debian) when the machine lacks it; FreeType reads the advances. On
// Windows GDI picks the face by family name and gives the advances.
//
// A text's height is the height of its capitals: widths are scaled so that
// the face's "H" is that tall. Without a usable face (no fonts at all) a
// character is taken as 0.6 of the height wide.
#ifndef TOVIK_HOST_CORE_FONT_METRICS_H_
#define TOVIK_HOST_CORE_FONT_METRICS_H_

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tovik::host {

// The width of a character when no face can be read, per unit of height.
inline constexpr double kFallbackCharWidth = 0.6;

// The family a style's font file names: its file name without folders and
// without the extension ("sans" for none).
inline std::string FontFamilyOf(std::string_view font_file) {
  size_t slash = font_file.find_last_of("/\\");
  if (slash != std::string_view::npos) font_file.remove_prefix(slash + 1);
  size_t dot = font_file.rfind('.');
  if (dot != std::string_view::npos) font_file = font_file.substr(0, dot);
  return font_file.empty() ? std::string("sans") : std::string(font_file);
}

// The next code point of UTF-8 text (a malformed byte counts as itself).
inline char32_t NextCodePoint(std::string_view s, size_t& i) {
  auto b = static_cast<unsigned char>(s[i++]);
  int extra = b >= 0xF0 ? 3 : b >= 0xE0 ? 2 : b >= 0xC0 ? 1 : 0;
  char32_t c = extra == 3 ? b & 0x07 : extra == 2 ? b & 0x0F : extra == 1 ? b & 0x1F : b;
  for (int k = 0; k < extra && i < s.size(); ++k) {
    c = (c << 6) | (static_cast<unsigned char>(s[i++]) & 0x3F);
  }
  return c;
}

// The widths a platform's font machinery gives; FontMetrics is built on
// FreeType and fontconfig on Linux and on GDI on Windows.
class FontMetrics {
 public:
  FontMetrics();
  ~FontMetrics();
  FontMetrics(const FontMetrics&) = delete;
  FontMetrics& operator=(const FontMetrics&) = delete;

  // The advance width of `utf8` in the face for `font_file`, for capitals
  // `height` tall.
  double Width(std::string_view font_file, std::string_view utf8, double height);
  // The file of the face used for `font_file` ("" when none).
  std::string FaceFile(std::string_view font_file);

 private:
  struct Face;
  Face& FaceFor(std::string_view font_file);

  struct Library;
  std::unique_ptr<Library> library_;
  // Faces by the font file name asked for, made on first use.
  std::unordered_map<std::string, std::unique_ptr<Face>> faces_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_FONT_METRICS_H_
