// Every drawing of the shared corpus loads into the tag model and writes
// back with the same tags: same codes in the same order, numbers with the
// same text (ASCII) or the same value (binary), strings with the same text
// once decoded to UTF-8.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "dxf/encoding.h"
#include "dxf/tag_model.h"
#include "dxf/tag_writer.h"
#include "dxf/tokenizer.h"

namespace tovik::dxf {
namespace {

std::string ReadAll(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

std::vector<std::filesystem::path> CorpusFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(std::string(TOVIK_SHARED_DIR) + "/dxf")) {
    if (entry.is_regular_file() && entry.path().extension() == ".dxf") {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The raw value of header variable `name` in a token stream.
std::string_view HeaderValue(const TokenStream& stream, std::string_view name) {
  for (std::size_t i = 0; i + 1 < stream.tags.size(); ++i) {
    if (stream.tags[i].code == 9 && stream.tags[i].text == name) return stream.tags[i + 1].text;
  }
  return {};
}

// A token stream with strings decoded to UTF-8, kept alive with its text.
struct DecodedStream {
  TokenStream stream;
  std::vector<std::string> strings;  // decoded text, index-aligned with tags
};

DecodedStream TokenizeDecoded(const std::string& buffer) {
  DecodedStream decoded{Tokenize(buffer, "file"), {}};
  TextDecoder decoder(HeaderValue(decoded.stream, "$DWGCODEPAGE"),
                      IsUtf8Version(HeaderValue(decoded.stream, "$ACADVER")));
  decoded.strings.resize(decoded.stream.tags.size());
  for (std::size_t i = 0; i < decoded.stream.tags.size(); ++i) {
    const Tag& tag = decoded.stream.tags[i];
    std::string out;
    decoded.strings[i] =
        (tag.kind != ValueKind::kString || decoder.Decode(tag.text, &out)) ? std::string(tag.text)
                                                                          : out;
  }
  return decoded;
}

// Binary DXF has control bytes inside text where ASCII DXF has ^@..^_.
std::string CaretForm(std::string_view text) {
  std::string out;
  for (char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 && c != '\t') {
      out += '^';
      out += static_cast<char>(c + 0x40);
    } else {
      out += c;
    }
  }
  return out;
}

// Compares the tags of the original file with those of the written one and
// returns the first difference, or an empty string.
std::string FirstDifference(const DecodedStream& original, const DecodedStream& written) {
  const TagArray& a = original.stream.tags;
  const TagArray& b = written.stream.tags;
  bool binary = original.stream.format == FileFormat::kBinary;
  // The writer always ends in "0 EOF"; a file that had none gains it.
  std::size_t count = a.size();
  bool gained_eof = !original.stream.saw_eof && b.size() == count + 1;
  if (a.size() != b.size() && !gained_eof) {
    return "tag count " + std::to_string(a.size()) + " became " + std::to_string(b.size());
  }
  for (std::size_t i = 0; i < count; ++i) {
    const Tag& x = a[i];
    const Tag& y = b[i];
    std::string where = "tag " + std::to_string(i) + " (code " + std::to_string(x.code) + "): ";
    if (x.code != y.code) return where + "code became " + std::to_string(y.code);
    bool same = true;
    if (x.kind == ValueKind::kString) {
      same = (binary ? CaretForm(original.strings[i]) : original.strings[i]) == written.strings[i];
    } else if (x.kind == ValueKind::kBinary) {
      same = x.BinaryBytes() == y.BinaryBytes();
    } else if (!binary) {
      same = x.text == y.text;  // numbers and handles keep their exact text
    } else if (x.kind == ValueKind::kDouble) {
      same = std::memcmp(&x.real, &y.real, sizeof x.real) == 0;
    } else if (x.kind == ValueKind::kHandle) {
      same = x.text == y.text;
    } else {
      same = x.integer == y.integer;
    }
    if (!same) {
      return where + QuoteForMessage(original.strings[i].empty() ? x.text : original.strings[i]) +
             " became " + QuoteForMessage(y.text);
    }
  }
  return {};
}

TEST(RoundTrip, EveryCorpusFileWritesBackTagForTag) {
  std::vector<std::filesystem::path> files = CorpusFiles();
  // The corpus README lists 36 drawings; fewer means the folder moved.
  ASSERT_EQ(files.size(), 36u);
  for (const auto& path : files) {
    SCOPED_TRACE(path.string());
    std::string original = ReadAll(path);
    std::string written;
    try {
      TagModel model = TagModel::Load(original, path.filename().string());
      written = WriteDxf(model);
    } catch (const ReadError& error) {
      ADD_FAILURE() << "cannot read: " << error.what();
      continue;
    }
    DecodedStream before = TokenizeDecoded(original);
    DecodedStream after = TokenizeDecoded(written);
    EXPECT_EQ(after.stream.format, FileFormat::kAscii);
    EXPECT_EQ(FirstDifference(before, after), "");
    // Writing the written file again changes nothing at all.
    EXPECT_EQ(WriteDxf(TagModel::Load(written, "written")), written);
  }
}

TEST(RoundTrip, CrLfOutputReadsBackAsTheSameTags) {
  std::string original = ReadAll(std::string(TOVIK_SHARED_DIR) + "/dxf/netdxf/sample.dxf");
  TagModel model = TagModel::Load(original, "sample.dxf");
  std::string crlf = WriteDxf(model, {.version = {}, .line_end = LineEnd::kCrLf});
  std::string lf = WriteDxf(model);
  // Every LF gains a CR, nothing else changes.
  EXPECT_EQ(crlf.size(), lf.size() + static_cast<std::size_t>(std::count(lf.begin(), lf.end(), '\n')));
  EXPECT_EQ(WriteDxf(TagModel::Load(crlf, "crlf")), lf);
}

}  // namespace
}  // namespace tovik::dxf
