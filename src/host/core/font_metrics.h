// The widths of texts in the faces their styles name, from the fonts
// themselves: fontconfig finds the face for the family a style's font file
// names (its file name without the extension: "arial.ttf" asks for Arial,
// "romans.shx" for "romans"), falling back to its default face (DejaVu Sans
// on Debian) when the machine lacks it; FreeType reads the advances.
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
