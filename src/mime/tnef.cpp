// Copyright (c) 2026 the mimora developers.
#include "mime/tnef.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "diag/limits.h"

namespace mimora {
namespace {

constexpr uint32_t kSignature = 0x223E9F78;
constexpr int64_t kChecksumSize = 2;

// A file that its sender gave no name.
constexpr std::string_view kUntitled = "Untitled Attachment";

enum Level : uint8_t { kMessageLevel = 1, kAttachmentLevel = 2 };

enum Attribute : uint32_t {
  kRenderingData = 0x00069002,  // opens an attachment
  kTitle = 0x00018010,
  kData = 0x0006800F,
  kProperties = 0x00069005,
};

enum PropertyId : uint16_t { kLongFileName = 0x3707, kFirstNamedProperty = 0x8000 };

enum PropertyType : uint16_t {
  kNull = 0x0001,
  kInteger16 = 0x0002,
  kInteger32 = 0x0003,
  kFloat = 0x0004,
  kDouble = 0x0005,
  kCurrency = 0x0006,
  kApplicationTime = 0x0007,
  kError = 0x000A,
  kBoolean = 0x000B,
  kObject = 0x000D,
  kInteger64 = 0x0014,
  kString8 = 0x001E,
  kUnicode = 0x001F,
  kSystemTime = 0x0040,
  kGuid = 0x0048,
  kBinary = 0x0102,
  kMultiValue = 0x1000,
};

bool HasLength(uint16_t type) {
  return type == kString8 || type == kUnicode || type == kObject || type == kBinary;
}

// The bytes that a value of a type without a length takes; -1 for a type that is not known.
int64_t FixedSize(uint16_t type) {
  switch (type) {
    case kNull:
      return 0;
    case kInteger16:
    case kInteger32:
    case kFloat:
    case kError:
    case kBoolean:
      return 4;
    case kDouble:
    case kCurrency:
    case kApplicationTime:
    case kInteger64:
    case kSystemTime:
      return 8;
    case kGuid:
      return 16;
    default:
      return -1;
  }
}

// Texts end at their first zero.
std::string CutAtZero(std::string text) {
  text.resize(std::min(text.find('\0'), text.size()));
  return text;
}

// Reads little-endian numbers and texts up to an end that may be narrowed. After the first read
// beyond it everything fails.
class Reader {
 public:
  Reader(Minstream& in, int64_t size) : in_(in), end_(size) {}

  int64_t Position() const { return position_; }
  int64_t Left() const { return end_ - position_; }
  bool Good() const { return good_; }

  uint8_t U8() { return static_cast<uint8_t>(Number(1)); }
  uint16_t U16() { return static_cast<uint16_t>(Number(2)); }
  uint32_t U32() { return Number(4); }

  // Makes everything fail from here on.
  void GiveUp() { good_ = false; }

  bool Skip(int64_t length) {
    if (!Claim(length)) return false;
    good_ = in_.ReadBlock(nullptr, length) == length;
    return good_;
  }

  // The first LENGTH bytes of which at most kLongestTnefName are kept.
  std::string Text(int64_t length) {
    if (!Claim(length)) return {};
    std::string text;
    const int64_t kept = std::min(length, kLongestTnefName);
    in_.ReadToString(text, kept);
    good_ = std::ssize(text) == kept && in_.ReadBlock(nullptr, length - kept) == length - kept;
    return text;
  }

  // Reads nothing beyond a place until the former end is put back.
  int64_t NarrowTo(int64_t end) { return std::exchange(end_, end); }
  // Puts the end back and goes on behind what was narrowed, whatever happened inside.
  void WidenTo(int64_t end) {
    const int64_t rest = Left();
    end_ = end;
    good_ = true;
    // Not by seeking: that could not tell a stream that is shorter than it should be.
    position_ += rest;
    good_ = in_.ReadBlock(nullptr, rest) == rest;
  }

 private:
  bool Claim(int64_t length) {
    good_ = good_ && length >= 0 && length <= Left();
    if (good_) position_ += length;
    return good_;
  }

  uint32_t Number(int64_t size) {
    char bytes[4] = {};
    if (!Claim(size)) return 0;
    good_ = in_.ReadBlock(bytes, size) == size;
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<uint8_t>(bytes[i]);
    return value;
  }

  Minstream& in_;
  int64_t position_ = 0;
  int64_t end_;
  bool good_ = true;
};

class Table {
 public:
  Table(Minstream& in, int64_t size, size_t most, std::vector<EmbeddedAttachment>& files)
      : reader_(in, size), most_(most), files_(files) {}

  bool Read() {
    if (reader_.U32() != kSignature) return false;
    reader_.U16();  // the key of the message
    while (reader_.Good() && reader_.Left() > 0) ReadAttribute();
    CloseFile();
    return true;
  }

 private:
  void ReadAttribute() {
    const uint8_t level = reader_.U8();
    const uint32_t attribute = reader_.U32();
    const int64_t claimed = reader_.U32();
    // One that claims more than there is has what is there.
    const int64_t length = std::min(claimed, reader_.Left());
    if (!reader_.Good() || (level != kMessageLevel && level != kAttachmentLevel)) {
      return reader_.GiveUp();
    }
    const int64_t end = reader_.NarrowTo(reader_.Position() + length);
    if (level == kAttachmentLevel) ReadAttachmentAttribute(attribute, length);
    reader_.WidenTo(end);
    if (reader_.Left() > 0) reader_.Skip(kChecksumSize);
  }

  void ReadAttachmentAttribute(uint32_t attribute, int64_t length) {
    switch (attribute) {
      case kRenderingData:
        CloseFile();
        break;
      case kTitle:
        title_ = CutAtZero(reader_.Text(length));
        break;
      case kData:
        if (length == 0) break;
        file_.Offset = reader_.Position();
        file_.DecodedSize = length;
        break;
      case kProperties:
        ReadProperties();
        break;
      default:
        break;
    }
  }

  void ReadProperties() {
    const uint32_t count = reader_.U32();
    for (uint32_t i = 0; i < count && reader_.Good(); ++i) ReadProperty();
  }

  void ReadProperty() {
    const uint16_t type = reader_.U16();
    const uint16_t id = reader_.U16();
    if (id >= kFirstNamedProperty) SkipPropertyName();
    const auto base = static_cast<uint16_t>(type & ~kMultiValue);
    const bool several = (type & kMultiValue) != 0;
    if (HasLength(base)) {
      const uint32_t values = reader_.U32();
      for (uint32_t i = 0; i < values && reader_.Good(); ++i) ReadLongValue(base, id);
    } else {
      const int64_t values = several ? reader_.U32() : 1;
      const int64_t size = FixedSize(base);
      // A type that is not known has a length that is not known: nothing behind it can be read.
      if (size < 0) return reader_.GiveUp();
      reader_.Skip(values * size);
    }
  }

  void SkipPropertyName() {
    constexpr int64_t kGuidSize = 16;
    constexpr uint32_t kByNumber = 0;
    reader_.Skip(kGuidSize);
    if (reader_.U32() == kByNumber) {
      reader_.U32();
    } else {
      SkipPadded(reader_.U32());
    }
  }

  void ReadLongValue(uint16_t type, uint16_t id) {
    const uint32_t length = reader_.U32();
    if (id != kLongFileName || (type != kString8 && type != kUnicode)) return SkipPadded(length);
    const std::string text = reader_.Text(length);
    SkipPadding(length);
    long_name_ = CutAtZero(type == kUnicode ? TranslateText(text, kUtf16Page, kUtf8Page) : text);
  }

  void SkipPadded(int64_t length) {
    reader_.Skip(length);
    SkipPadding(length);
  }

  // Values fill whole groups of four bytes.
  void SkipPadding(int64_t length) { reader_.Skip((4 - length % 4) % 4); }

  void CloseFile() {
    file_.Name = !long_name_.empty() ? std::move(long_name_) : std::move(title_);
    const bool listed = !file_.Name.empty() && file_.DecodedSize > 0 && file_.Name != kUntitled &&
                        files_.size() < most_;
    if (listed) files_.push_back(std::move(file_));
    file_ = {};
    title_.clear();
    long_name_.clear();
  }

  Reader reader_;
  const size_t most_;
  std::vector<EmbeddedAttachment>& files_;
  EmbeddedAttachment file_;
  std::string title_;
  std::string long_name_;
};

}  // namespace

bool ReadTnefAttachments(Minstream& in, int64_t size, size_t most,
                         std::vector<EmbeddedAttachment>& files) {
  return Table(in, size, most, files).Read();
}

}  // namespace mimora
