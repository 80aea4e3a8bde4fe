// Where the DXF writer's text goes: the tags of the records written, the
// text kept alive while a record is written, and the entry points that
// hand the drawing to a string or a file. The body is held in pieces until
// the header, written last, has gone out first.
#include <algorithm>
#include <fstream>

#include "host/core/host_error.h"
#include "dxf/tag_writer.h"
#include "host/dxf/binding.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/write/writer.h"

namespace tovik::host::dxf {
namespace {

// The size of the pieces the body is held in until the header is written:
// large enough that handing one over costs little, small enough that the
// body never needs one buffer as large as the file.
constexpr size_t kPieceSize = size_t{1} << 20;

}  // namespace

std::string_view DbWriter::Keep(std::string text) { return kept_.emplace_back(std::move(text)); }

std::span<Tag> DbWriter::KeepTags(std::vector<Tag> tags) { return kept_tags_.emplace_back(std::move(tags)); }

void DbWriter::Put(const Tag& tag) {
  if (drop_true_colours_) {
    // An XRECORD's groups are its owner's data, whatever their codes.
    if (tag.code == 0) {
      in_xrecord_ = tag.text == "XRECORD";
    } else if (tag.code >= 420 && tag.code <= 449 && !in_xrecord_) {
      ++dropped_colours_;
      return;
    }
  }
  if (tag.kind == ValueKind::kString && encoder_ == nullptr) {
    std::string_view escaped = source_.model.EscapedFormOf(tag.text);
    if (!escaped.empty()) {
      Tag copy = tag;
      copy.text = escaped;
      AppendTag(copy, nullptr, LineEnd::kLf, out_);
    } else {
      AppendTag(tag, nullptr, LineEnd::kLf, out_);
    }
  } else {
    AppendTag(tag, encoder_.get(), LineEnd::kLf, out_);
  }
  if (holding_body_ && out_->size() >= kPieceSize) StartPiece();
}

void DbWriter::StartPiece() {
  // A deque: the pieces already written stay where they are, so out_ never
  // dangles and no piece is copied as the body grows.
  out_ = &pieces_.emplace_back();
  // Room for the piece and the tag that overflows it, usually one line.
  out_->reserve(kPieceSize + 4096);
}

void DbWriter::PutString(int code, std::string_view text) {
  if (spelling_ != nullptr && (code == 2 || code == 3 || code == 6 || code == 7 || code == 8)) {
    const Tag* written = spelling_->Find(code);
    if (written != nullptr && written->text != text && FoldName(written->text) == FoldName(text)) {
      Put(*written);
      return;
    }
  }
  if (text.find_first_of("\r\n") == std::string_view::npos) {
    Put(Tag::String(code, Keep(std::string(text))));
    return;
  }
  std::string one_line;
  for (char c : text) {
    if (c == '\n') {
      one_line += "^J";
    } else if (c != '\r') {
      one_line += c;
    }
  }
  Put(Tag::String(code, Keep(std::move(one_line))));
}

void DbWriter::PutHandle(int code, uint64_t handle) { Put(Tag::String(code, Keep(HexOf(handle)))); }

void DbWriter::PutPoint(int code, const geometry::Vec3& p) {
  PutReal(code, p.x);
  PutReal(code + 10, p.y);
  PutReal(code + 20, p.z);
}

void DbWriter::PutRecordTags(const Record& record) {
  Put(record.head);
  for (const Tag& t : record.tags) Put(t);
}

// ---------------------------------------------------------------- entry points

namespace {

// The source `document` was read from, or an empty model for a drawing not
// read from DXF: every section, table and record is then generated from
// the database.
std::shared_ptr<DxfSource> SourceOrEmpty(const Document& document) {
  std::shared_ptr<DxfSource> source = SourceOf(document);
  if (source == nullptr) {
    source = std::make_shared<DxfSource>(TagModel::Load(std::string("  0\nEOF\n"), "new"));
  }
  return source;
}

}  // namespace

std::string_view VersionCodeOf(std::string_view release) {
  constexpr std::pair<std::string_view, std::string_view> kReleases[] = {
      {"R12", "AC1009"},   {"R2000", "AC1015"}, {"R2004", "AC1018"}, {"R2007", "AC1021"},
      {"R2010", "AC1024"}, {"R2013", "AC1027"}, {"R2018", "AC1032"},
  };
  for (const auto& [name, code] : kReleases) {
    if (FoldName(release) == FoldName(name)) return code;
  }
  return {};
}

namespace {

// Raises the error of a version this writer cannot write.
void CheckVersion(const std::string& version) {
  constexpr std::string_view kWritten[] = {"AC1009", "AC1015", "AC1018", "AC1021",
                                           "AC1024", "AC1027", "AC1032"};
  if (version.empty() || std::find(std::begin(kWritten), std::end(kWritten), version) != std::end(kWritten)) {
    return;
  }
  throw AutomationError(kReadFailedNumber,
                        "DXF version " + version + " cannot be written (AC1009 and AC1015 to AC1032 can)",
                        std::string(kHostErrorSource));
}

// The drawing as DXF text in `format`: R12 is made from the R2000 text.
std::string Written(const Document& document, const SaveFormat& format, std::vector<std::string>* notes) {
  bool r12 = format.version == "AC1009";
  std::shared_ptr<DxfSource> source = SourceOrEmpty(document);
  std::string out;
  // About the size of the file read: the text does not have to move as it
  // grows (pages reserved but never written cost nothing).
  out.reserve(source->model.source_size() + source->model.source_size() / 8 + (1 << 16));
  DbWriter writer(document, *source, r12 ? std::string_view("AC1015") : std::string_view(format.version));
  writer.Run([&out](std::string_view piece) { out.append(piece); });
  std::vector<std::string> written_notes = writer.TakeNotes();
  if (r12) {
    // The notes of the R2000 text hold for the R12 one made from it.
    for (std::string& note : written_notes) {
      for (size_t at = note.find("AC1015"); at != std::string::npos; at = note.find("AC1015", at)) {
        note.replace(at, 6, "AC1009");
      }
    }
    out = R12FromR2000(out, &written_notes);
  }
  if (notes != nullptr) notes->insert(notes->end(), written_notes.begin(), written_notes.end());
  if (format.binary) return AsciiToBinaryDxf(out, r12);
  return out;
}

}  // namespace

std::string WriteDrawing(const Document& document, const SaveFormat& format,
                         std::vector<std::string>* notes) {
  CheckVersion(format.version);
  return Written(document, format, notes);
}

void WriteDrawingFile(const Document& document, const std::string& path, const SaveFormat& format,
                      std::vector<std::string>* notes) {
  CheckVersion(format.version);
  bool whole = format.binary || format.version == "AC1009";
  // The file is opened with the first piece, once the whole drawing is
  // written: a drawing that cannot be written leaves an existing file alone.
  std::ofstream file;
  bool opened = false;
  auto write = [&](std::string_view piece) {
    if (!opened) {
      file.open(path, std::ios::binary | std::ios::trunc);
      opened = true;
    }
    if (file) file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
  };
  if (whole) {
    // Binary and R12 are made from the whole text.
    write(Written(document, format, notes));
  } else {
    std::shared_ptr<DxfSource> source = SourceOrEmpty(document);
    DbWriter writer(document, *source, format.version);
    writer.Run(write);
    std::vector<std::string> written_notes = writer.TakeNotes();
    if (notes != nullptr) notes->insert(notes->end(), written_notes.begin(), written_notes.end());
  }
  if (opened && file) file.close();
  if (!opened || !file) {
    throw AutomationError(kReadFailedNumber, path + ": cannot write the file",
                          std::string(kHostErrorSource));
  }
}

}  // namespace tovik::host::dxf
