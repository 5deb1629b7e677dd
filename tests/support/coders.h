// Copyright (c) 2026 the mimora developers.
//
// What is asked of every coder of a transfer encoding.
#ifndef MIMORA_TESTS_SUPPORT_CODERS_H_
#define MIMORA_TESTS_SUPPORT_CODERS_H_

#include <random>

#include "codec/transfer_encoding.h"
#include "support/cpu_levels.h"
#include "support/sources.h"

namespace mimora::testing {

using StreamCoder = std::function<int32_t(Minstream&, Moutstream&)>;

struct CoderCase {
  const char* name;
  std::string_view text;
  std::string_view want;
};

inline StreamCoder DecoderOf(std::string_view encoding) {
  return [encoding](Minstream& in, Moutstream& out) {
    return TransferEncodingDecode(in, out, encoding);
  };
}

inline std::string Coded(const StreamCoder& coder, std::string_view text) {
  Minstream in(SourceOf(text));
  Moutstream out(MemorySink{});
  EXPECT_EQ(coder(in, out), 0);
  return TextOf(out);
}

// From every source, into memory and into a stream that only counts.
inline void ExpectCoded(const StreamCoder& coder, std::string_view text, std::string_view want) {
  const auto expect_coded = [&](Minstream& in) {
    Moutstream out(MemorySink{});
    EXPECT_EQ(coder(in, out), 0);
    EXPECT_EQ(TextOf(out), want);
    in.Seek(0);
    Moutstream counting(CountingSink{});
    EXPECT_EQ(coder(in, counting), 0);
    EXPECT_EQ(counting.WritePos(), std::ssize(want));
  };
  ForEveryCpuLevel([&] { ForEverySource(text, expect_coded); });
}

template <typename Cases>
void ExpectAllCoded(const StreamCoder& coder, const Cases& cases) {
  for (const CoderCase& c : cases) {
    SCOPED_TRACE(c.name);
    ExpectCoded(coder, c.text, c.want);
  }
}

// The pieces are texts or characters.
template <typename Pieces>
std::string RandomText(std::mt19937& random, size_t count, const Pieces& pieces) {
  std::string text;
  while (count-- > 0) text += pieces[random() % std::size(pieces)];
  return text;
}

// Some characters, as often as not none, become any others.
inline void Damage(std::mt19937& random, std::string& text) {
  for (size_t count = random() % 6; count > 3 && !text.empty(); --count)
    text[random() % text.size()] = static_cast<char>(random());
}

// All coders get the same random pieces of at most LONGEST bytes.
template <typename... Coder>
void FeedInPieces(std::mt19937& random, size_t longest, std::string_view text, Coder&... coders) {
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, 1 + random() % longest);
    (coders.Feed(piece), ...);
    text.remove_prefix(piece.size());
  }
  (coders.Finish(), ...);
}

// A write callback whose context points to the number of bytes it still takes.
inline int64_t WriteWhileThereIsRoom(intptr_t context, const void*, int64_t length) {
  int64_t& room = *reinterpret_cast<int64_t*>(context);
  if (length > room) return errno = ENOSPC, -1;
  room -= length;
  return length;
}

// Reading fails at every byte of the text, then writing at every byte of what becomes of it.
inline void ExpectErrorsToBeReportedAndKept(const StreamCoder& coder, std::string_view text) {
  for (int64_t at = 0; at <= std::ssize(text); ++at) {
    SCOPED_TRACE(::testing::Message() << "reading fails after " << at << " bytes");
    DripSource source(text, 4, at);
    Minstream in(source.Reading(), 16);
    Moutstream out(MemorySink{});
    EXPECT_EQ(coder(in, out), -1);
    EXPECT_EQ(in.GetError(), EIO);
  }
  const int64_t size = std::ssize(Coded(coder, text));
  EXPECT_GT(size, 0);
  for (int64_t room = 0; room <= size; ++room) {
    SCOPED_TRACE(::testing::Message() << "room for " << room << " of " << size << " bytes");
    Minstream in(SourceOf(text));
    int64_t left = room;
    const auto context = reinterpret_cast<intptr_t>(&left);
    Moutstream out(CallbackSink{.context = context, .write = WriteWhileThereIsRoom}, 5);
    EXPECT_EQ(coder(in, out), room < size ? -2 : 0);
    EXPECT_EQ(coder(in, out), room < size ? -2 : 0) << "when called again";
    EXPECT_EQ(out.GetError(), room < size ? ENOSPC : 0);
  }
}

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_SUPPORT_CODERS_H_
