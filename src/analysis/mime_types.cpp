// Copyright (c) 2026 the mimora developers.
#include "analysis/mime_types.h"

#include "platform/ascii.h"
#include "platform/platform.h"

namespace mimora {
namespace {

struct Row {
  std::string_view type;
  std::string_view extension;
};

// For inventing the names of attachments. Types that are not here give none, on purpose.
constexpr Row kRows[] = {
    {"text/plain", ".TXT"},
    {"text/richtext", ".RTF"},
    {"text/enriched", ".ETF"},
    {"text/html", ".HTM"},
    {"text/sgml", ".SGM"},
    {"text/asp", ".ASP"},
    {"text/h323", ".323"},
    {"text/xml", ".XML"},
    {"audio/basic", ".AU"},
    {"audio/aiff", ".AIF"},
    {"audio/x-aiff", ".AIF"},
    {"audio/wav", ".WAV"},
    {"audio/x-wav", ".WAV"},
    {"audio/x_pu_wav", ".WAV"},
    {"audio/x-pn-realaudio", ".RA"},
    {"application/postscript", ".PS"},
    {"application/zip", ".ZIP"},
    {"application/x-zip-compressed", ".ZIP"},
    {"application/gzip", ".GZ"},
    {"application/x-gzip", ".GZ"},
    {"application/x-javascript", ".JS"},
    {"application/tar", ".TAR"},
    {"application/x-tar", ".TAR"},
    {"application/msword", ".DOC"},
    {"application/vnd.ms-excel", ".XLS"},
    {"image/jpeg", ".JPG"},
    {"image/gif", ".GIF"},
    {"image/tiff", ".TIF"},
    {"image/bmp", ".BMP"},
    {"image/x-ico", ".ICO"},
    {"image/x-fax", ".FAX"},
    {"video/mpeg", ".MPG"},
    {"video/avi", ".AVI"},
    {"video/quicktime", ".MOV"},
    {"message/rfc822", ".EML"},
};

}  // namespace

std::string_view ExtensionForType(std::string_view type) {
  for (const Row& row : kRows) {
    if (EqualIgnoringCase(row.type, type)) return row.extension;
  }
  return {};
}

std::optional<std::string> TypeForExtension(std::string_view extension) {
  if (!extension.starts_with('.') || extension.size() == 1) return std::nullopt;
  if (auto type = platform::RegisteredType(extension.substr(1))) return type;
  for (const Row& row : kRows) {
    if (EqualIgnoringCase(row.extension, extension)) return std::string(row.type);
  }
  return std::nullopt;
}

std::optional<std::string> AttachmentType(const Bodypart& part, int32_t number) {
  if (number == 0) return part.TypeName();
  const EmbeddedAttachment* file = part.Embedded(number);
  const size_t dot = file != nullptr ? file->Name.rfind('.') : std::string::npos;
  return dot != std::string::npos ? TypeForExtension(file->Name.substr(dot)) : std::nullopt;
}

}  // namespace mimora
