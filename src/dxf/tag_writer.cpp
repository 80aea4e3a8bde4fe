#include "dxf/tag_writer.h"

#include <cstring>

#include <charconv>
#include <memory>
#include <cstdio>
#include <stdexcept>

#include "dxf/encoding.h"

namespace tovik::dxf {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

void AppendLineEnd(LineEnd line_end, std::string* out) {
  if (line_end == LineEnd::kCrLf) *out += '\r';
  *out += '\n';
}

// Group codes are written right-aligned in three columns, as AutoCAD does;
// the code's line is built whole and appended at once (a record is mostly
// such short appends).
void AppendCodeLine(int code, LineEnd line_end, std::string* out) {
  char buffer[16] = {' ', ' ', ' '};
  char* begin = buffer + 3;
  auto result = std::to_chars(begin, buffer + 12, code);
  std::size_t length = static_cast<std::size_t>(result.ptr - begin);
  char* end = result.ptr;
  if (line_end == LineEnd::kCrLf) *end++ = '\r';
  *end++ = '\n';
  // Shorter codes take the padding in front of them.
  char* start = length < 3 ? begin - (3 - length) : begin;
  out->append(start, static_cast<std::size_t>(end - start));
}

void AppendDouble(double value, std::string* out) {
  char buffer[40];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  std::string_view text(buffer, static_cast<std::size_t>(result.ptr - buffer));
  std::size_t exponent = text.find('e');
  if (text.find('.') != std::string_view::npos) {
    out->append(text);
  } else if (exponent == std::string_view::npos) {
    out->append(text);
    out->append(".0");  // "1" reads as an integer in some programs
  } else {
    out->append(text.substr(0, exponent));
    out->append(".0");
    out->append(text.substr(exponent));
  }
}

bool IsPlainAscii(std::string_view text) {
  for (char c : text) {
    auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80 || (byte < 0x20 && byte != '\t')) return false;
  }
  return true;
}

class ModelWriter {
 public:
  ModelWriter(TextEncoder* encoder, const WriteOptions& options, std::string* out)
      : encoder_(encoder), options_(options), out_(out) {}

  void Tags(std::span<const Tag> tags) {
    for (const Tag& tag : tags) AppendTag(tag, encoder_, options_.line_end, out_);
  }

  void Write(const Record& record) {
    AppendTag(record.head, encoder_, options_.line_end, out_);
    Tags(record.tags);
    for (const Record& follower : record.followers) Write(follower);
  }

  void Write(const Section& section) {
    Write(section.begin);
    for (const HeaderVariable& variable : section.variables) {
      AppendTag(variable.name_tag, encoder_, options_.line_end, out_);
      if (variable.name == "$ACADVER" && !options_.version.empty() && !variable.tags.empty()) {
        Tag version = variable.tags[0];
        version.text = options_.version;
        AppendTag(version, encoder_, options_.line_end, out_);
        for (std::size_t i = 1; i < variable.tags.size(); ++i) {
          AppendTag(variable.tags[i], encoder_, options_.line_end, out_);
        }
      } else {
        Tags(variable.tags);
      }
    }
    for (const Table& table : section.tables) {
      Write(table.head);
      for (const Record& entry : table.entries) Write(entry);
      Write(table.end);
    }
    for (const Block& block : section.blocks) {
      Write(block.begin);
      for (const Record& entity : block.entities) Write(entity);
      Write(block.end);
    }
    for (const Record& record : section.records) Write(record);
    Write(section.end);
  }

 private:
  TextEncoder* encoder_;
  const WriteOptions& options_;
  std::string* out_;
};

}  // namespace

void AppendTag(const Tag& tag, TextEncoder* encoder, LineEnd line_end, std::string* out) {
  AppendCodeLine(tag.code, line_end, out);
  switch (tag.kind) {
    case ValueKind::kString:
      if (IsPlainAscii(tag.text)) {
        out->append(tag.text);
      } else if (encoder != nullptr) {
        encoder->Append(tag.text, out);
      } else {
        EncodeForDxf(tag.text, false, out);
      }
      break;
    case ValueKind::kDouble:
      if (tag.text.empty()) {
        AppendDouble(tag.real, out);
      } else {
        out->append(tag.text);
      }
      break;
    case ValueKind::kInt16:
    case ValueKind::kInt32:
    case ValueKind::kInt64:
    case ValueKind::kBool:
      if (tag.text.empty()) {
        char buffer[24];
        auto result = std::to_chars(buffer, buffer + sizeof buffer, tag.integer);
        out->append(buffer, static_cast<std::size_t>(result.ptr - buffer));
      } else {
        out->append(tag.text);
      }
      break;
    case ValueKind::kBinary:
      if (tag.raw_binary) {
        for (unsigned char byte : tag.text) {
          *out += kHexDigits[byte >> 4];
          *out += kHexDigits[byte & 15];
        }
      } else {
        out->append(tag.text);
      }
      break;
    case ValueKind::kHandle:
    case ValueKind::kInvalid:
      EncodeForDxf(tag.text, encoder != nullptr, out);
      break;
  }
  AppendLineEnd(line_end, out);
}

std::string WriteDxf(const TagModel& model, const WriteOptions& options) {
  std::string_view version = options.version.empty() ? model.version() : options.version;
  std::unique_ptr<TextEncoder> encoder;
  if (!IsUtf8Version(version)) encoder = std::make_unique<TextEncoder>(model.code_page());
  std::string out;
  out.reserve(1 << 20);
  ModelWriter writer(encoder.get(), options, &out);
  writer.Tags(model.leading());
  for (const Section& section : model.sections()) writer.Write(section);
  Tag eof = Tag::String(0, "EOF");
  AppendTag(eof, encoder.get(), options.line_end, &out);
  return out;
}

void WriteDxfFile(const TagModel& model, const std::string& path, const WriteOptions& options) {
  std::string text = WriteDxf(model, options);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) throw std::runtime_error("cannot write " + path);
  bool ok = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  ok = std::fclose(file) == 0 && ok;
  if (!ok) throw std::runtime_error("cannot write " + path);
}

namespace {

template <class T>
void AppendLittleEndian(T value, std::string* out) {
  char bytes[sizeof(T)];
  std::memcpy(bytes, &value, sizeof(T));
  out->append(bytes, sizeof(T));
}

}  // namespace

std::string AsciiToBinaryDxf(std::string_view ascii, bool one_byte_codes) {
  TokenStream stream = Tokenize(ascii, "the written drawing");
  std::string out(kBinarySentinel);
  out.reserve(ascii.size());
  auto put_code = [&](int code) {
    if (one_byte_codes && code < 255) {
      out += static_cast<char>(code);
    } else {
      if (one_byte_codes) out += static_cast<char>(0xFF);
      AppendLittleEndian(static_cast<std::int16_t>(code), &out);
    }
  };
  for (const Tag& tag : stream.tags) {
    put_code(tag.code);
    switch (tag.kind) {
      case ValueKind::kString:
      case ValueKind::kHandle:
        out.append(tag.text);
        out += '\0';
        break;
      case ValueKind::kDouble: AppendLittleEndian(tag.real, &out); break;
      case ValueKind::kInt16: AppendLittleEndian(static_cast<std::int16_t>(tag.integer), &out); break;
      case ValueKind::kInt32: AppendLittleEndian(static_cast<std::int32_t>(tag.integer), &out); break;
      case ValueKind::kInt64: AppendLittleEndian(tag.integer, &out); break;
      case ValueKind::kBool: out += static_cast<char>(tag.integer); break;
      case ValueKind::kBinary: {
        std::string bytes = tag.BinaryBytes();
        // A length byte: a longer chunk is split into tags of 255 bytes.
        for (std::size_t at = 0; at == 0 || at < bytes.size(); at += 255) {
          std::size_t n = std::min<std::size_t>(255, bytes.size() - at);
          if (at > 0) put_code(tag.code);
          out += static_cast<char>(n);
          out.append(bytes, at, n);
        }
        break;
      }
      case ValueKind::kInvalid: break;
    }
  }
  return out;
}

}  // namespace tovik::dxf
