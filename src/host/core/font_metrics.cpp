#include "host/core/font_metrics.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdint>
#include <vector>

namespace tovik::host {

struct FontMetrics::Library {
  FT_Library ft = nullptr;
  FcConfig* fc = nullptr;
  Library() {
    if (FT_Init_FreeType(&ft) != 0) ft = nullptr;
    fc = FcInitLoadConfigAndFonts();
  }
  ~Library() {
    if (fc) FcConfigDestroy(fc);
    if (ft) FT_Done_FreeType(ft);
  }
};

struct FontMetrics::Face {
  FT_Face face = nullptr;
  std::string file;
  // Font units per unit of capital height.
  double cap_units = 0;
  std::unordered_map<char32_t, double> advances;  // font units
  ~Face() {
    if (face) FT_Done_Face(face);
  }
};

FontMetrics::FontMetrics() : library_(std::make_unique<Library>()) {}
FontMetrics::~FontMetrics() {
  faces_.clear();  // before the FreeType library they come from
}

FontMetrics::Face& FontMetrics::FaceFor(std::string_view font_file) {
  auto it = faces_.find(std::string(font_file));
  if (it != faces_.end()) return *it->second;
  auto face = std::make_unique<Face>();
  if (library_->ft && library_->fc) {
    std::string family = FontFamilyOf(font_file);
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    FcConfigSubstitute(library_->fc, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result;
    FcPattern* match = FcFontMatch(library_->fc, pattern, &result);
    FcChar8* file = nullptr;
    if (match && FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch && file) {
      face->file = reinterpret_cast<const char*>(file);
    }
    if (match) FcPatternDestroy(match);
    FcPatternDestroy(pattern);
    if (!face->file.empty() && FT_New_Face(library_->ft, face->file.c_str(), 0, &face->face) != 0) {
      face->face = nullptr;
    }
    if (face->face) {
      FT_UInt h = FT_Get_Char_Index(face->face, 'H');
      if (h && FT_Load_Glyph(face->face, h, FT_LOAD_NO_SCALE) == 0) {
        face->cap_units = static_cast<double>(face->face->glyph->metrics.height);
      }
      if (face->cap_units <= 0) face->cap_units = face->face->units_per_EM * 0.7;
    }
  }
  return *faces_.emplace(std::string(font_file), std::move(face)).first->second;
}

std::string FontMetrics::FaceFile(std::string_view font_file) { return FaceFor(font_file).file; }

double FontMetrics::Width(std::string_view font_file, std::string_view utf8, double height) {
  Face& f = FaceFor(font_file);
  double units = 0;
  size_t count = 0;
  for (size_t i = 0; i < utf8.size();) {
    char32_t c = NextCodePoint(utf8, i);
    ++count;
    if (!f.face) continue;
    auto it = f.advances.find(c);
    if (it == f.advances.end()) {
      double advance = 0;
      FT_UInt glyph = FT_Get_Char_Index(f.face, c);
      if (FT_Load_Glyph(f.face, glyph, FT_LOAD_NO_SCALE) == 0) {
        advance = static_cast<double>(f.face->glyph->advance.x);
      }
      it = f.advances.emplace(c, advance).first;
    }
    units += it->second;
  }
  if (!f.face) return kFallbackCharWidth * height * static_cast<double>(count);
  return units / f.cap_units * height;
}

}  // namespace tovik::host
