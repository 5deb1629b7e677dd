// Copyright (c) 2026 the mimora developers.
#include <gmime/gmime.h>

#include "program.h"

namespace mimora::bench {
namespace {

// A sink that only counts.
GMimeStream* NewCounter() {
  GMimeStream* counter = g_mime_stream_null_new();
  g_mime_stream_null_set_count_newlines(GMIME_STREAM_NULL(counter), FALSE);
  return counter;
}

GMimeStream* Counter() {
  static GMimeStream* counter = NewCounter();
  return counter;
}

Contents CountLeaf(GMimePart* part) {
  const int64_t size =
      g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(part), Counter());
  return {1, size};
}

Contents Count(GMimeObject* object) {
  if (GMIME_IS_PART(object)) return CountLeaf(GMIME_PART(object));
  if (GMIME_IS_MESSAGE_PART(object)) {
    GMimeMessage* message = g_mime_message_part_get_message(GMIME_MESSAGE_PART(object));
    return Count(g_mime_message_get_mime_part(message));
  }
  Contents contents;
  const int children = g_mime_multipart_get_count(GMIME_MULTIPART(object));
  for (int i = 0; i < children; ++i) {
    contents += Count(g_mime_multipart_get_part(GMIME_MULTIPART(object), i));
  }
  return contents;
}

// A stream over the message's bytes, without a copy of them.
Contents Load(const Message& message) {
  GByteArray bytes = {reinterpret_cast<guint8*>(const_cast<char*>(message.text.data())),
                      static_cast<guint>(message.text.size())};
  GMimeStream* stream = g_mime_stream_mem_new();
  g_mime_stream_mem_set_byte_array(GMIME_STREAM_MEM(stream), &bytes);
  GMimeParser* parser = g_mime_parser_new_with_stream(stream);
  GMimeMessage* parsed = g_mime_parser_construct_message(parser, nullptr);
  const Contents contents = parsed ? Count(g_mime_message_get_mime_part(parsed)) : Contents();
  if (parsed) g_object_unref(parsed);
  g_object_unref(parser);
  g_object_unref(stream);
  return contents;
}

int64_t Filter(std::string_view input, GMimeContentEncoding encoding, bool encode) {
  GMimeFilter* filter = g_mime_filter_basic_new(encoding, encode);
  int64_t bytes = 0;
  ForEachPiece(input, [&](std::string_view piece, bool last) {
    const auto run = last ? g_mime_filter_complete : g_mime_filter_filter;
    char* out = nullptr;
    size_t size = 0;
    size_t room_before = 0;
    run(filter, const_cast<char*>(piece.data()), piece.size(), 0, &out, &size, &room_before);
    bytes += static_cast<int64_t>(size);
  });
  g_object_unref(filter);
  return bytes;
}

template <GMimeContentEncoding encoding, bool encode>
RunCoder Prepare(std::string_view input) {
  return [input] { return Filter(input, encoding, encode); };
}

}  // namespace

Program MakeProgram() {
  g_mime_init();
  return {"gmime",
          {{"memory", Load}},
          {{"base64-decode", Prepare<GMIME_CONTENT_ENCODING_BASE64, false>},
           {"base64-encode", Prepare<GMIME_CONTENT_ENCODING_BASE64, true>},
           {"quoted-printable-decode", Prepare<GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE, false>},
           {"quoted-printable-encode", Prepare<GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE, true>},
           {"uuencode-decode", Prepare<GMIME_CONTENT_ENCODING_UUENCODE, false>}}};
}

}  // namespace mimora::bench
