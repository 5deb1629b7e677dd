// Copyright (c) 2026 the mimora developers.
#include "analysis/decode_eml.h"

#include <cerrno>
#include <memory>
#include <vector>

#include "analysis/mime_types.h"
#include "analysis/names.h"
#include "analysis/safe_name.h"
#include "analysis/write_body.h"
#include "codec/charset_table.h"
#include "diag/limits.h"
#include "diag/result.h"
#include "mime/parser.h"
#include "platform/platform.h"
#include "stream/copy_stream.h"
#include "stream/temporary_file.h"

namespace mimora {
namespace {

// A part that has nothing below it, and its place as mail clients count: "2.1".
struct Leaf {
  Bodypart* part;
  std::string place;
};

// The loader bounds how deep trees are, so that these two may call each other.
void CollectMessage(Bodypart& message, const std::string& place, std::vector<Leaf>& leaves);

void CollectPart(Bodypart& part, const std::string& place, std::vector<Leaf>& leaves) {
  const std::string lead = place.empty() ? "" : place + ".";
  for (size_t i = 0; i < part.Children.size(); ++i) {
    CollectPart(*part.Children[i], lead + std::to_string(i + 1), leaves);
  }
  if (part.EnclosedMessage != nullptr) CollectMessage(*part.EnclosedMessage, place, leaves);
  if (part.Children.empty() && part.EnclosedMessage == nullptr) leaves.push_back({&part, place});
}

void CollectMessage(Bodypart& message, const std::string& place, std::vector<Leaf>& leaves) {
  const bool multipart = !message.Children.empty();
  const std::string lead = place.empty() ? "" : place + ".";
  CollectPart(message, multipart ? place : lead + "1", leaves);
}

bool LoadedTree(Result result) {
  return result == kOk || result == kHeaderCut || result == kHeaderOdd || result == kNoBoundary;
}

// A file that is gone again unless it was written whole.
class NewFile {
 public:
  // The first name of a directory's that is free.
  NewFile(const std::string& directory, UniqueNames& names, const std::string& wanted) {
    do {
      const std::string path = directory + names.Next(wanted);
      out_ = std::make_unique<Moutstream>(FileSink{.name = path.c_str(), .must_be_new = true},
                                          kDefaultBufferSize);
    } while (out_->GetError() == EEXIST);
    path_ = out_->GetFileName();
    created_ = out_->GetError() == 0;
  }
  ~NewFile() {
    if (created_ && !whole_) platform::Remove(path_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  bool Created() const { return created_; }
  const std::string& Path() const { return path_; }
  Moutstream& Out() { return *out_; }

  // Ends the writing and keeps the file. Answers its size.
  int64_t Keep() {
    const int64_t size = out_->WritePos();
    out_.reset();
    whole_ = true;
    return size;
  }

 private:
  std::unique_ptr<Moutstream> out_;
  std::string path_;
  bool created_ = false;
  bool whole_ = false;
};

class EmlDecoder {
 public:
  EmlDecoder(const std::string& directory, std::string_view target_charset,
             const OnDecodedPart& on_part, uint32_t& count)
      : directory_(directory), target_charset_(target_charset), on_part_(on_part), count_(count) {
    if (!directory_.ends_with('/')) directory_ += '/';
  }

  void Decode(const Leaf& leaf) {
    Save(leaf, 0, [&](Moutstream& out) { return WriteBody(*leaf.part, out); });
    if (!leaf.part->TnefAttachments.empty()) return DecodeTnef(leaf);
    for (int32_t number = 1; leaf.part->Embedded(number) != nullptr; ++number) {
      Save(leaf, number,
           [&](Moutstream& out) { return SaveAttachment(*leaf.part, out, nullptr, number); });
    }
  }

  int32_t FirstFailure() const { return failure_; }

 private:
  // The stream is decoded once, however many files it holds.
  void DecodeTnef(const Leaf& leaf) {
    TemporaryFile decoded;
    const int32_t result = decoded.Fill(
        [&](Moutstream& out) { return WriteBodypartBodyToStream(*leaf.part, out, nullptr, {}); });
    if (result != kOk) return Fail(result);
    Minstream in(decoded.Source(), kDefaultBufferSize);
    if (in.GetError() != 0) return Fail(kTempNotOpened);
    for (int32_t number = 1; const EmbeddedAttachment* file = leaf.part->Embedded(number);
         ++number) {
      Save(leaf, number,
           [&](Moutstream& out) { return CopyRange(in, out, file->Offset, file->DecodedSize); });
    }
  }

  // Has one file written by WRITE.
  template <typename Write>
  void Save(const Leaf& leaf, int32_t number, Write write) {
    NewFile file(directory_, names_, NameOf(leaf, number));
    if (!file.Created()) return Fail(kOutputNotOpened);
    const int32_t result = write(file.Out());
    if (result != kOk) return Fail(result);
    const int64_t size = file.Keep();
    ++count_;
    if (on_part_) on_part_(*leaf.part, number, file.Path(), size);
  }

  int32_t WriteBody(Bodypart& part, Moutstream& out) const {
    BodyRequest request{.target_charset = target_charset_, .keep_embedded = false};
    const int32_t result = WriteBodypartBodyToStream(part, out, nullptr, request);
    if (result != kUnknownCharset) return result;
    // Nothing was written: the text is kept as it is.
    request.target_charset = {};
    return WriteBodypartBodyToStream(part, out, nullptr, request);
  }

  static std::string NameOf(const Leaf& leaf, int32_t number) {
    std::string name = SafeFileName(AttachmentName(*leaf.part, number, {}));
    if (!name.empty()) return name;
    name = "part-" + leaf.place;
    if (number != 0) return name + "-" + std::to_string(number);
    return name.append(ExtensionForType(leaf.part->TypeName()));
  }

  void Fail(int32_t result) {
    if (failure_ == kOk) failure_ = result;
  }

  std::string directory_;
  std::string_view target_charset_;
  const OnDecodedPart& on_part_;
  UniqueNames names_;
  uint32_t& count_;
  int32_t failure_ = kOk;
};

}  // namespace

int32_t DecodeEml(const char* file_name, const std::string& directory,
                  std::string_view target_charset, const OnDecodedPart& on_part, uint32_t& count) {
  count = 0;
  // The file system's root would go by that name.
  if (directory.empty()) return kOutputNotOpened;
  if (!target_charset.empty() && PageOfCharset(target_charset) == 0) return kUnknownCharset;
  Minstream in(FileSource{.name = file_name}, kDefaultBufferSize);
  if (!in.IsOpen()) return kInputNotOpened;
  Bodypart message;
  const Result loaded = Load(message, in);
  if (!LoadedTree(loaded)) return loaded;
  std::vector<Leaf> leaves;
  CollectMessage(message, "", leaves);
  EmlDecoder decoder(directory, target_charset, on_part, count);
  for (const Leaf& leaf : leaves) decoder.Decode(leaf);
  return decoder.FirstFailure() != kOk ? decoder.FirstFailure() : loaded;
}

}  // namespace mimora
