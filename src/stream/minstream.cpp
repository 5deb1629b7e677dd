// Copyright (c) 2026 the mimora developers.
#include "stream/minstream.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <new>

#include "platform/ascii.h"
#include "stream/scan.h"

namespace mimora {
namespace {

constexpr int64_t kLongestLineEnd = 2;

// One read never asks for more.
constexpr int64_t kLargestRequest = 0x7FFFFFFF;

// No stream gets as far as this: positions can be added up without a thought.
constexpr int64_t kLargestPosition = INT64_MAX / 2;

// How much of a delimiter line is kept, beyond the delimiter itself: what decides about it.
constexpr size_t kKeptDelimiterTail = 2 + kLongestDelimiterPadding;

int64_t ReadFile(intptr_t context, void* destination, int64_t length) {
  return platform::Read(static_cast<int>(context), destination, length);
}

}  // namespace

// ---- Life ---------------------------------------------------------------------------------

Minstream::Minstream(MemorySource source)
    : mode_(kMemory),
      ok_(true),
      position_known_(true),
      data_(static_cast<const char*>(source.data)),
      capacity_(std::max<int64_t>(source.length, 0)),
      filled_(capacity_) {
  MIMORA_CHECK_TAG_IS_FIRST(Minstream);
  LogCreation(source.length);
}

Minstream::Minstream(FileSource source, int64_t buffer_size) : position_known_(true) {
  LogCreation(buffer_size);
  AllocateBuffer(buffer_size);
  const bool is_open = source.open_file != platform::kNoFile;
  if (source.name == nullptr && !is_open) return;
  file_ = is_open ? platform::OpenAgain(source.open_file)
                  : platform::OpenForReading(source.name, &file_size_);
  if (file_ == platform::kNoFile) {
    error_ = errno;
    return;
  }
  source_ = {.context = file_, .read = ReadFile};
  ok_ = true;
}

Minstream::Minstream(CallbackSource source, int64_t buffer_size) : source_(source) {
  LogCreation(buffer_size);
  AllocateBuffer(buffer_size);
  ok_ = source.read != nullptr || source.readptr != nullptr;
}

Minstream::~Minstream() {
  if (file_ != platform::kNoFile) platform::Close(file_);
  // Volatile, or the compiler would drop a store into an object that ends here.
  static_cast<volatile uint32_t&>(tag_) = 0;
}

void Minstream::LogCreation(int64_t size) const {
  LogTrace("_Minstream in this=%" PRIXPTR ", amode=%d, abufsize=%" PRIX64,
           reinterpret_cast<uintptr_t>(this), mode_, static_cast<uint64_t>(size));
}

void Minstream::AllocateBuffer(int64_t size) { Grow(size < 1 ? kDefaultBufferSize : size); }

// ---- Buffer -------------------------------------------------------------------------------

bool Minstream::Grow(int64_t capacity) {
  std::unique_ptr<char[]> larger(new (std::nothrow) char[static_cast<size_t>(capacity)]);
  if (larger == nullptr) {
    error_ = ENOMEM;
    return false;
  }
  if (filled_ > 0) std::memcpy(larger.get(), data_, static_cast<size_t>(filled_));
  buffer_ = std::move(larger);
  data_ = buffer_.get();
  capacity_ = capacity;
  return true;
}

// A source is asked once where it begins; from then on the bytes are counted here, so that one
// that lies about its position cannot spoil the tree.
void Minstream::FindStartPosition() {
  if (position_known_) return;
  const int64_t told = source_.tell != nullptr ? source_.tell(source_.context) : 0;
  buffer_end_ = std::clamp<int64_t>(told, 0, kLargestPosition);
  position_known_ = true;
}

void Minstream::CheckOwner() const {
  if (owner_ == nullptr || owner_ == platform::ThreadToken()) return;
  LogError("~<E> thread id %x reads what thread %x positioned", platform::ThreadId(),
           owner_thread_);
}

void Minstream::Compact() {
  if (index_ == 0) return;
  const int64_t unread = filled_ - index_;
  if (unread > 0) std::memmove(buffer_.get(), data_ + index_, static_cast<size_t>(unread));
  plain_ = std::max<int64_t>(plain_ - index_, 0);
  ahead_at_ = kNowhere;
  filled_ = unread;
  index_ = 0;
}

int64_t Minstream::CallRead(char* destination, int64_t request) {
  if (source_.read != nullptr) return source_.read(source_.context, destination, request);
  const void* bytes = nullptr;
  const int64_t count = source_.readptr(source_.context, &bytes, request);
  if (count <= 0 || count > request) return count;
  if (bytes == nullptr) return -1;
  std::memcpy(destination, bytes, static_cast<size_t>(count));
  return count;
}

// What is wrong with the answer of a read, an errno value; 0 for nothing.
int32_t Minstream::ErrorOfRead(int64_t count, int64_t request) const {
  if (count == -1 && errno != 0) return errno;
  // More than there is room for, or less than nothing: nothing that it wrote can be trusted.
  if (count < 0 || count > request) return EIO;
  const bool is_file = file_ != platform::kNoFile;
  return is_file && buffer_end_ + count > platform::kLargestFilePosition ? EOVERFLOW : 0;
}

// Gets new bytes behind those that are unread. False when there are none to be had.
bool Minstream::FillBuffer() {
  if (mode_ == kMemory || !ok_ || ended_ || buffer_ == nullptr) return false;
  int ex_pos = 1;
  int64_t request = 0;
  int64_t count = 0;
  try {
    FindStartPosition();
    if (read_limit_ >= 0 && buffer_end_ >= read_limit_) return false;
    Compact();
    request = std::min(capacity_ - filled_, kLargestRequest);
    if (request == 0) return false;
    if (file_ != platform::kNoFile && buffer_end_ < platform::kLargestFilePosition) {
      request = std::min(request, platform::kLargestFilePosition - buffer_end_);
    }
    ex_pos = 2;
    errno = 0;
    count = CallRead(buffer_.get() + filled_, request);
    ex_pos = 3;
    if (const int32_t error = ErrorOfRead(count, request)) {
      error_ = error;
      return false;
    }
  } catch (...) {
    LogError("<E> FillBuffer ex_pos=%d, out=%d", ex_pos, static_cast<int>(count));
    throw;
  }
  filled_ += count;
  buffer_end_ += count;
  // What a source hands out behind its end would tear apart what is read from it. A file that had
  // no more at that place already when it was opened need not be asked again.
  ended_ = count == 0 || (count < request && buffer_end_ == file_size_);
  return count > 0;
}

bool Minstream::FillUpTo(int64_t count) {
  while (EffectiveEnd() - index_ < count) {
    if (mode_ == kBuffered && count > capacity_ && !Grow(std::max(count, 2 * capacity_))) {
      return false;
    }
    if (!FillBuffer()) return false;
  }
  return true;
}

// ---- Delimiters ---------------------------------------------------------------------------

// Whether no delimiter line begins at P, as far as the bytes up to END tell.
bool Minstream::IsPlainAt(const char* p, const char* end) const {
  if (delimiters_.Empty() || *p != delimiters_.FirstCharacter()) return true;
  return MatchAt(p, end).verdict == DelimiterMatch::kNo;
}

DelimiterMatch Minstream::MatchAt(const char* p, const char* end) const {
  return delimiters_.Match(p, end - p, mode_ == kMemory, delimiters_.Count());
}

// Whether a delimiter line begins SKIP bytes behind the index; reads on until that is decided.
DelimiterMatch Minstream::DecideMatch(int64_t skip, size_t levels) {
  if (EffectiveEnd() - index_ > skip && data_[index_ + skip] != delimiters_.FirstCharacter()) {
    return {};
  }
  bool at_end = mode_ == kMemory;
  for (;;) {
    const int64_t available = EffectiveEnd() - index_ - skip;
    const DelimiterMatch match =
        delimiters_.Match(data_ + index_ + skip, available, at_end, levels);
    if (match.verdict != DelimiterMatch::kMore) return match;
    at_end = !Ensure(skip + match.needed);
  }
}

// The size of the line end that stands SKIP bytes behind the index, 0 when there is none. A lone CR
// is none: no delimiter line begins behind it.
int64_t Minstream::LineEndSizeAt(int64_t skip) {
  const char* p = data_ + index_ + skip;
  if (*p == '\n') return 1;
  if (*p != '\r' || !Ensure(skip + 2)) return 0;
  return data_[index_ + skip + 1] == '\n' ? 2 : 0;
}

// Whether the byte at the index is the first one of a delimiter, the line end in front of it
// included. If so the delimiter line is read.
bool Minstream::HitAtIndex() {
  int64_t line_end = 0;
  if (IsLineEnd(data_[index_])) {
    line_end = LineEndSizeAt(0);
    if (line_end == 0) return false;
    Ensure(line_end + 1);
  } else if (last_character_ != '\n' || data_[index_] != delimiters_.FirstCharacter()) {
    return false;
  }
  const bool known = ahead_at_ == index_ + line_end;
  const DelimiterMatch match = known ? ahead_ : DecideMatch(line_end, delimiters_.Count());
  if (match.verdict != DelimiterMatch::kYes) return false;
  boundary_position_ = Position();
  hit_line_end_ = line_end;
  index_ += line_end;
  ReadDelimiterLine(match);
  return true;
}

// Reads the delimiter line at the index. One that stands directly behind it replaces it: between
// them there is no part.
void Minstream::ReadDelimiterLine(DelimiterMatch match) {
  for (;;) {
    hit_level_ = match.level;
    hit_closes_ = match.closes;
    ReadRestOfLine();
    last_character_ = '\n';
    plain_ = index_;
    if (index_ == EffectiveEnd()) break;
    const int64_t line_end = LineEndSizeAt(0);
    if (line_end == 0) {  // a lone CR
      ++index_;
      last_character_ = '\r';
      break;
    }
    Ensure(line_end + 1);
    // Multiparts inside the one that was hit have ended, and their delimiters with them.
    match = DecideMatch(line_end, hit_level_ + 1);
    const bool another = match.verdict == DelimiterMatch::kYes;
    // The end of an inner multipart and the next delimiter of an outer one are two.
    if (another && hit_closes_ && match.level < hit_level_) break;
    index_ += line_end;
    if (!another) break;
  }
  ForgetRun();
  hit_ = true;
}

// Moves to the end of the line, which it keeps as the boundary line.
void Minstream::ReadRestOfLine() {
  const size_t kept = delimiters_.At(hit_level_).size() + kKeptDelimiterTail;
  boundary_text_.clear();
  for (bool whole = false; !whole && Ensure(1);) {
    const char* begin = data_ + index_;
    const char* end = data_ + EffectiveEnd();
    const std::string_view line(begin, FindLineEnd(begin, end));
    whole = line.size() < static_cast<size_t>(end - begin);
    index_ += std::ssize(line);
    if (mode_ == kMemory) {
      boundary_line_ = line.substr(0, kept);
    } else {
      boundary_text_ += line.substr(0, kept - boundary_text_.size());
      boundary_line_ = boundary_text_;
    }
  }
}

// How many bytes from the index on, whose byte is known to be plain, can be no part of a delimiter;
// at most LONGEST.
int64_t Minstream::PlainLength(int64_t longest) {
  const char* begin = data_ + index_;
  const char* end = data_ + EffectiveEnd();
  const char* stop = begin + std::min<int64_t>(end - begin, longest);
  if (delimiters_.Empty()) return stop - begin;
  // A line end that may belong to a delimiter is not cut, and not handed out while the bytes
  // behind it are not in view.
  const char* hold = stop;
  if (stop < end || mode_ == kBuffered) {
    if (hold[-1] == '\n') --hold;
    if (hold > begin && hold[-1] == '\r') --hold;
    if (hold <= begin) hold = stop;
  }
  const char* search_end = stop < end ? stop + 1 : stop;
  const char first = delimiters_.FirstCharacter();
  for (const char* p = begin;; ++p) {
    p = FindPair(p, search_end, '\n', first);
    if (p == search_end) return hold - begin;
    const char* start = p > begin && p[-1] == '\r' ? p - 1 : p;
    if (start == begin) continue;
    const DelimiterMatch match = MatchAt(p + 1, end);
    if (match.verdict == DelimiterMatch::kNo) continue;
    if (match.verdict == DelimiterMatch::kYes) {
      ahead_ = match;
      ahead_at_ = p + 1 - data_;
    }
    return std::min(start, hold) - begin;
  }
}

bool Minstream::FindPlainRun(int64_t longest) {
  CheckOwner();
  if (!ok_ || hit_ || !Ensure(1)) return false;
  if (!delimiters_.Empty() && HitAtIndex()) return false;
  plain_ = index_ + PlainLength(longest);
  return true;
}

void Minstream::ForgetRun() {
  plain_ = index_;
  ahead_at_ = kNowhere;
}

void Minstream::SetBoundary(std::string_view delimiter) {
  if (delimiters_.Count() == (delimiter.empty() ? 0 : 1) && GetBoundary() == delimiter) return;
  ClearBoundaryHit();
  delimiters_.Clear();
  if (!delimiter.empty()) delimiters_.Push(delimiter);
  ForgetRun();
}

void Minstream::EnterBoundary(std::string_view delimiter) {
  delimiters_.Push(delimiter);
  ForgetRun();
  if (!hit_) return;
  // The line that was taken for an outer delimiter may be the first one of this, unless it fits
  // that one better.
  if (delimiters_.Innermost().size() < delimiters_.At(hit_level_).size()) return;
  const DelimiterMatch match = delimiters_.MatchInnermost(boundary_line_);
  if (match.verdict != DelimiterMatch::kYes) return;
  hit_level_ = match.level;
  hit_closes_ = match.closes;
}

void Minstream::LeaveBoundary() {
  if (InnermostHit()) ClearBoundaryHit();
  delimiters_.Pop();
  ForgetRun();
}

void Minstream::ClearBoundaryHit() {
  hit_ = false;
  boundary_line_ = {};
  boundary_position_ = 0;
  hit_line_end_ = 0;
}

// ---- Reading ------------------------------------------------------------------------------

bool Minstream::GetChar(char& c) {
  const std::string_view run = NextRun();
  if (run.empty()) return false;
  c = run.front();
  Take(1);
  return true;
}

bool Minstream::ReadLine(std::string_view& line, LineEnd* line_end) {
  // No run is needed for a line that is in view together with what follows it.
  const char* const begin = data_ + index_;
  const char* const end = data_ + EffectiveEnd();
  const char* const stop = ok_ && !hit_ ? FindLineEnd(begin, end) : end;
  if (end - stop < kLongestLineEnd + 1) return ReadLineInPieces(line, line_end);
  const LineEnd found = *stop == '\n'     ? LineEnd::kLf
                        : stop[1] == '\n' ? LineEnd::kCrLf
                                          : LineEnd::kCr;
  const char* const next = stop + (found == LineEnd::kCrLf ? 2 : 1);
  // Behind a lone CR no delimiter line begins, but its line end may.
  const bool goes_on = found == LineEnd::kCr ? *next != '\r' : IsPlainAt(next, end);
  if (!goes_on || (last_character_ == '\n' && !IsPlainAt(begin, end))) {
    return ReadLineInPieces(line, line_end);
  }
  CheckOwner();
  if (line_end != nullptr) *line_end = found;
  line = {begin, stop};
  Take(static_cast<size_t>(next - begin));
  return true;
}

// A line next to a delimiter, or of which not all is in view.
bool Minstream::ReadLineInPieces(std::string_view& line, LineEnd* line_end) {
  const bool hit_before = hit_;
  LineEnd found = LineEnd::kNone;
  line_.clear();
  bool complete = false;
  bool any = false;
  while (!complete) {
    const std::string_view run = NextRun(kShortRun);
    if (run.empty()) {
      // The end of an empty line may be the one in front of a delimiter: that is a line, too.
      any = !line_.empty() || (hit_ && !hit_before && hit_line_end_ > 0);
      break;
    }
    const char* end = FindLineEnd(run.data(), run.data() + run.size());
    const auto length = static_cast<size_t>(end - run.data());
    complete = any = length < run.size();
    // What ends with the run has to be kept: the next one may take its place in the buffer.
    line_.append(run.data(), length);
    Take(length + (complete ? 1 : 0));
    if (!complete) continue;
    found = *end == '\n' ? LineEnd::kLf : LineEnd::kCr;
    if (found == LineEnd::kCr && NextRun(kShortRun).starts_with('\n')) {
      found = LineEnd::kCrLf;
      Take(1);
    }
  }
  line = line_;
  if (line_end != nullptr) *line_end = found;
  return any;
}

int64_t Minstream::ReadBlock(char* destination, int64_t length) {
  int64_t done = 0;
  while (done < length) {
    const std::string_view run = NextRun();
    if (run.empty()) break;
    const auto count =
        static_cast<size_t>(std::min(static_cast<int64_t>(run.size()), length - done));
    if (destination != nullptr) std::memcpy(destination + done, run.data(), count);
    Take(count);
    done += static_cast<int64_t>(count);
  }
  return done;
}

void Minstream::ReadToString(std::string& text, int64_t length) {
  while (length > 0) {
    std::string_view run = NextRun();
    if (run.empty()) break;
    run = run.substr(0, static_cast<size_t>(length));
    text.append(run);
    Take(run.size());
    length -= static_cast<int64_t>(run.size());
  }
}

// ---- Position -----------------------------------------------------------------------------

int64_t Minstream::Position() {
  if (mode_ == kMemory) return index_;
  FindStartPosition();
  return buffer_end_ - filled_ + index_;
}

bool Minstream::SeekSource(int64_t position) {
  if (file_ != platform::kNoFile) {
    if (platform::Seek(file_, position)) return true;
    error_ = errno;
  } else if (source_.seek != nullptr) {
    source_.seek(source_.context, position);
    return true;
  } else {
    error_ = ESPIPE;
  }
  return false;
}

void Minstream::Seek(int64_t position) {
  owner_ = platform::ThreadToken();
  owner_thread_ = platform::ThreadId();
  if (position < 0 || position > kLargestPosition) return;
  FindStartPosition();
  const int64_t buffer_start = mode_ == kMemory ? 0 : buffer_end_ - filled_;
  const bool inside = position >= buffer_start && position < buffer_start + filled_;
  if (inside || (mode_ == kMemory && position == 0)) {
    index_ = position - buffer_start;
  } else if (mode_ == kBuffered) {
    if (!SeekSource(position)) return;
    buffer_end_ = position;
    filled_ = index_ = 0;
  } else {
    return;
  }
  ForgetRun();
  ended_ = false;
  last_character_ = '\n';
  if (hit_) ClearBoundaryHit();
}

void Minstream::SetReadLimit(int64_t position) {
  read_limit_ = position;
  ForgetRun();
}

}  // namespace mimora
