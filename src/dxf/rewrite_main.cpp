// tovik_dxf_rewrite IN OUT [--version ACxxxx] [--crlf]
//
// Loads a DXF file into the tag model and writes it back as ASCII DXF; the
// round-trip script compares the two files with an independent reader. The
// model's repairs are listed on the error stream.
#include <cstring>
#include <iostream>
#include <string>

#include "dxf/tag_model.h"
#include "dxf/tag_writer.h"

int main(int argc, char** argv) {
  using tovik::dxf::LineEnd;
  using tovik::dxf::TagModel;
  using tovik::dxf::WriteOptions;
  if (argc < 3) {
    std::cerr << "usage: tovik_dxf_rewrite IN OUT [--version ACxxxx] [--crlf]\n";
    return 2;
  }
  WriteOptions options;
  for (int i = 3; i < argc; ++i) {
    if (std::strcmp(argv[i], "--crlf") == 0) {
      options.line_end = LineEnd::kCrLf;
    } else if (std::strcmp(argv[i], "--version") == 0 && i + 1 < argc) {
      options.version = argv[++i];
    } else {
      std::cerr << "unknown option " << argv[i] << "\n";
      return 2;
    }
  }
  try {
    TagModel model = TagModel::LoadFile(argv[1]);
    for (const std::string& repair : model.repairs()) std::cerr << "repaired: " << repair << "\n";
    tovik::dxf::WriteDxfFile(model, argv[2], options);
  } catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
  return 0;
}
