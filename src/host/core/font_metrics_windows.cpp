// Text widths on Windows: GDI makes a font of the family at a large em size
// on a memory device context and measures the advances there; the capital
// height is the black box of "H".
#include <windows.h>

#include <cstdint>

#include "frame/wide_text_windows.h"
#include "host/core/font_metrics.h"

namespace tovik::host {
namespace {

// Em size the advances are measured at, in logical units.
constexpr int kEmUnits = 2048;

}  // namespace

struct FontMetrics::Library {
  HDC dc = CreateCompatibleDC(nullptr);
  ~Library() {
    if (dc) DeleteDC(dc);
  }
};

struct FontMetrics::Face {
  HFONT font = nullptr;
  std::string file;  // the face name GDI chose
  double cap_units = 0;
  std::unordered_map<char32_t, double> advances;
  ~Face() {
    if (font) DeleteObject(font);
  }
};

FontMetrics::FontMetrics() : library_(std::make_unique<Library>()) {}
FontMetrics::~FontMetrics() { faces_.clear(); }

FontMetrics::Face& FontMetrics::FaceFor(std::string_view font_file) {
  auto it = faces_.find(std::string(font_file));
  if (it != faces_.end()) return *it->second;
  auto face = std::make_unique<Face>();
  HDC dc = library_->dc;
  if (dc) {
    std::wstring family = WideOf(FontFamilyOf(font_file));
    if (family.size() >= LF_FACESIZE) family.resize(LF_FACESIZE - 1);
    LOGFONTW lf = {};
    lf.lfHeight = -kEmUnits;
    lf.lfCharSet = DEFAULT_CHARSET;
    lf.lfOutPrecision = OUT_TT_PRECIS;
    lf.lfQuality = ANTIALIASED_QUALITY;
    wcsncpy(lf.lfFaceName, family.c_str(), LF_FACESIZE - 1);
    face->font = CreateFontIndirectW(&lf);
    if (face->font) {
      HGDIOBJ old = SelectObject(dc, face->font);
      wchar_t name[LF_FACESIZE] = {};
      if (GetTextFaceW(dc, LF_FACESIZE, name) > 0) face->file = Utf8Of(name);
      GLYPHMETRICS gm = {};
      MAT2 identity = {{0, 1}, {0, 0}, {0, 0}, {0, 1}};
      if (GetGlyphOutlineW(dc, L'H', GGO_METRICS, &gm, 0, nullptr, &identity) != GDI_ERROR) {
        face->cap_units = static_cast<double>(gm.gmBlackBoxY);
      }
      if (face->cap_units <= 0) face->cap_units = kEmUnits * 0.7;
      SelectObject(dc, old);
    }
  }
  return *faces_.emplace(std::string(font_file), std::move(face)).first->second;
}

std::string FontMetrics::FaceFile(std::string_view font_file) { return FaceFor(font_file).file; }

double FontMetrics::Width(std::string_view font_file, std::string_view utf8, double height) {
  Face& f = FaceFor(font_file);
  double units = 0;
  size_t count = 0;
  HGDIOBJ old = f.font ? SelectObject(library_->dc, f.font) : nullptr;
  for (size_t i = 0; i < utf8.size();) {
    char32_t c = NextCodePoint(utf8, i);
    ++count;
    if (!f.font) continue;
    auto it = f.advances.find(c);
    if (it == f.advances.end()) {
      wchar_t units16[2];
      int n = 1;
      if (c < 0x10000) {
        units16[0] = static_cast<wchar_t>(c);
      } else {
        char32_t v = c - 0x10000;
        units16[0] = static_cast<wchar_t>(0xD800 + (v >> 10));
        units16[1] = static_cast<wchar_t>(0xDC00 + (v & 0x3FF));
        n = 2;
      }
      SIZE size = {};
      double advance = GetTextExtentPoint32W(library_->dc, units16, n, &size) ? size.cx : 0;
      it = f.advances.emplace(c, advance).first;
    }
    units += it->second;
  }
  if (old) SelectObject(library_->dc, old);
  if (!f.font) return kFallbackCharWidth * height * static_cast<double>(count);
  return units / f.cap_units * height;
}

}  // namespace tovik::host
