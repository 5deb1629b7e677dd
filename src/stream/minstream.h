// Copyright (c) 2026 the mimora developers.
//
// The library's one source of bytes: a block of memory, a file, or the caller's callbacks. It can
// be fenced by a read limit, and it stops by itself in front of a multipart delimiter line.
//
// A stream belongs to one thread at a time; Lock and Unlock are for callers that share one.
#ifndef MIMORA_STREAM_MINSTREAM_H_
#define MIMORA_STREAM_MINSTREAM_H_

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "diag/checks.h"
#include "diag/limits.h"
#include "platform/platform.h"
#include "stream/delimiters.h"

namespace mimora {

constexpr int64_t kNoReadLimit = -1;

// Everything: longer than any stream.
constexpr int64_t kWholeStream = INT64_MAX;

// A source may be moved only if it can be asked to.
struct CallbackSource {
  intptr_t context = 0;
  int64_t (*read)(intptr_t, void*, int64_t) = nullptr;            // either this
  int64_t (*readptr)(intptr_t, const void**, int64_t) = nullptr;  // or this
  void (*seek)(intptr_t, int64_t) = nullptr;
  int64_t (*tell)(intptr_t) = nullptr;
};

// The bytes stay the caller's, alive and unchanged as long as the stream.
struct MemorySource {
  const void* data = nullptr;
  int64_t length = 0;
};

struct FileSource {
  const char* name = nullptr;         // either this
  int open_file = platform::kNoFile;  // or this, which is not written meanwhile
};

enum class LineEnd { kNone, kCr, kLf, kCrLf };

class Minstream {
 public:
  explicit Minstream(MemorySource source);
  // A file that cannot be opened makes a stream that is not open and has the error latched.
  Minstream(FileSource source, int64_t buffer_size);
  Minstream(CallbackSource source, int64_t buffer_size);
  ~Minstream();
  Minstream(const Minstream&) = delete;
  Minstream& operator=(const Minstream&) = delete;

  bool IsOpen() const { return ok_; }

  // All bytes of a memory stream; nothing for others.
  std::optional<std::string_view> Memory() const {
    if (mode_ != kMemory) return std::nullopt;
    return std::string_view(data_, static_cast<size_t>(filled_));
  }

  // The errno value of the last open or read that failed, 0 for none.
  int32_t GetError() const { return error_; }

  // ---- Reading. Everything stops at the end of the data, at the read limit, and in front of a
  // ---- delimiter line; the line end in front of it belongs to the delimiter.

  // The bytes that can be delivered now, without a copy: at least one, unless nothing is left.
  // They are not taken yet. The view lives until the next operation other than Take.
  std::string_view NextRun() { return NextRun(kLongestRun); }

  // Takes the first COUNT bytes (at least 1) of that run.
  void Take(size_t count) {
    index_ += static_cast<int64_t>(count);
    last_character_ = data_[index_ - 1];
  }

  bool GetChar(char& c);

  // A line without its line end, which may be CR LF, LF or a lone CR. The view lives until the
  // next operation. False when there is no line.
  bool ReadLine(std::string_view& line, LineEnd* line_end = nullptr);

  // Copies up to LENGTH bytes, or passes over them when there is no destination.
  int64_t ReadBlock(char* destination, int64_t length);

  // Appends up to LENGTH bytes.
  void ReadToString(std::string& text, int64_t length);

  void Skip() { ReadBlock(nullptr, kWholeStream); }

  // ---- Position

  // Of the next byte, counted from the source's own position 0.
  int64_t Position();

  // The place counts as the start of a line. A position that no stream can have is ignored, in
  // memory every one that is not inside the data.
  void Seek(int64_t position);

  // An absolute position. Has no effect on a memory stream: callers rely on reading those whole.
  void SetReadLimit(int64_t position);
  int64_t ReadLimit() const { return read_limit_; }

  // ---- Delimiters

  // Arms one delimiter, and disarms all others; an empty text disarms. Nothing changes when it is
  // the one in force.
  void SetBoundary(std::string_view delimiter);
  std::string GetBoundary() const {
    return delimiters_.Empty() ? std::string() : std::string(delimiters_.Innermost());
  }

  // Arms a further delimiter inside those in force, and gives the former ones back. After a hit the
  // delimiter line is looked at again. A hit on the one that goes is cleared.
  void EnterBoundary(std::string_view delimiter);
  void LeaveBoundary();
  size_t BoundaryCount() const { return delimiters_.Count(); }

  // After a hit nothing can be read until it is cleared.
  bool BoundaryHit() const { return hit_; }
  // Whether it is the innermost delimiter that was hit.
  bool InnermostHit() const { return hit_ && hit_level_ + 1 == delimiters_.Count(); }
  bool ClosingHit() const { return hit_closes_; }
  // The delimiter line, without its line end; a very long one is cut. The view lives until the hit
  // is cleared.
  std::string_view BoundaryLine() const { return boundary_line_; }
  // Where the delimiter begins: the line end in front of it, when it has one.
  int64_t BoundaryPosition() const { return boundary_position_; }
  // How many bytes that line end has.
  int64_t BoundaryLineEndSize() const { return hit_line_end_; }
  void ClearBoundaryHit();

  // ---- Sharing

  void Lock() { lock_.lock(); }
  void Unlock() { lock_.unlock(); }

 private:
  enum Mode : int32_t { kMemory = 0, kBuffered = 1 };

  static constexpr int64_t kNowhere = -1;

  // Runs of a memory stream are cut here, so that who reads them finds them still in the cache.
  static constexpr int64_t kLongestRun = 32768;
  // For a line: a delimiter that is armed behind it makes worthless what was found out about the
  // bytes ahead, and many parts may stand there, each in another.
  static constexpr int64_t kShortRun = 1024;

  std::string_view NextRun(int64_t longest) {
    if (plain_ <= index_ && !FindPlainRun(longest)) return {};
    return {data_ + index_, static_cast<size_t>(plain_ - index_)};
  }

  void LogCreation(int64_t size) const;
  void AllocateBuffer(int64_t size);
  bool Grow(int64_t capacity);
  void CheckOwner() const;
  void Compact();
  int64_t CallRead(char* destination, int64_t request);
  bool SeekSource(int64_t position);
  void FindStartPosition();
  // How far into the buffer reads may go. In memory buffer_end_ is 0 and never beyond a limit.
  int64_t EffectiveEnd() const {
    if (read_limit_ < 0 || buffer_end_ <= read_limit_) return filled_;
    return std::max<int64_t>(read_limit_ - (buffer_end_ - filled_), 0);
  }
  bool FillBuffer();
  int32_t ErrorOfRead(int64_t count, int64_t request) const;
  // Brings COUNT bytes into view behind the index, as far as there are any.
  bool Ensure(int64_t count) { return EffectiveEnd() - index_ >= count || FillUpTo(count); }
  bool FillUpTo(int64_t count);
  bool FindPlainRun(int64_t longest);
  bool ReadLineInPieces(std::string_view& line, LineEnd* line_end);
  int64_t PlainLength(int64_t longest);
  void ForgetRun();
  int64_t LineEndSizeAt(int64_t skip);
  bool HitAtIndex();
  bool IsPlainAt(const char* p, const char* end) const;
  DelimiterMatch MatchAt(const char* p, const char* end) const;
  DelimiterMatch DecideMatch(int64_t skip, size_t levels);
  void ReadDelimiterLine(DelimiterMatch match);
  void ReadRestOfLine();

  uint32_t tag_ = kInstreamSignature;
  Mode mode_ = kBuffered;
  bool ok_ = false;
  bool position_known_ = false;
  bool ended_ = false;  // the source said so; it is not asked again before a seek
  bool hit_ = false;
  bool hit_closes_ = false;
  char last_character_ = '\n';  // the very first byte counts as the start of a line
  int32_t error_ = 0;
  int file_ = platform::kNoFile;
  int64_t file_size_ = kNowhere;  // when it was opened
  // Who positioned the stream; null: nobody yet.
  const void* owner_ = nullptr;
  uint32_t owner_thread_ = 0;

  const char* data_ = nullptr;  // the caller's bytes, or the buffer
  int64_t capacity_ = 0;
  int64_t filled_ = 0;
  int64_t index_ = 0;
  int64_t plain_ = 0;       // data_[index_, plain_) holds no part of a delimiter
  int64_t buffer_end_ = 0;  // position behind the last byte in the buffer; 0 in memory
  int64_t read_limit_ = kNoReadLimit;
  std::unique_ptr<char[]> buffer_;
  CallbackSource source_;

  Delimiters delimiters_;
  // The delimiter line that the last run ends at, when it does; in the buffer.
  DelimiterMatch ahead_;
  int64_t ahead_at_ = kNowhere;
  size_t hit_level_ = 0;
  int64_t hit_line_end_ = 0;
  int64_t boundary_position_ = 0;
  std::string_view boundary_line_;
  std::string boundary_text_;  // holds it when the bytes do not stay where they are

  std::string line_;  // a line that did not lie in the buffer in one piece
  std::recursive_mutex lock_;
};

}  // namespace mimora

#endif  // MIMORA_STREAM_MINSTREAM_H_
