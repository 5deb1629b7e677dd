// Copyright (c) 2026 the mimora developers.
//
// Everything that the library asks the operating system. All functions may be called from any
// thread. Those that fail answer as stated and leave the reason in errno.
#ifndef MIMORA_PLATFORM_PLATFORM_H_
#define MIMORA_PLATFORM_PLATFORM_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mimora::platform {

// ---- Settings -----------------------------------------------------------------------------

// The setting of that name: environment variable MIMORA_<NAME IN UPPER CASE> (not honoured in
// set-user-id programs), else the line "<name>=..." of /etc/mimora.conf, else nothing.
std::optional<std::string> ReadSetting(const char* name);

// The value of the last line "<name>=..." in the text of a settings file.
std::optional<std::string> FindSetting(std::string_view text, std::string_view name);

// ---- Process, thread, clock -----------------------------------------------------------------

uint32_t ProcessId();

uint32_t ThreadId();

// Differs between threads that live at the same time. Cheap enough to be asked for every run of
// bytes, which a thread's id is not.
const void* ThreadToken();

struct LocalTime {
  int year, month, day, hour, minute, second;  // month and day counted from 1
  int weekday;                                 // counted from 0, Sunday
};
LocalTime Now();

// A time in seconds since 1970 began. Like TimeZoneBias it looks whether the zone (TZ) has changed.
LocalTime LocalTimeOf(int64_t time);

// What has to be added to the local time of now, in minutes, to get UTC: positive west of
// Greenwich. An unknown zone is UTC.
int32_t TimeZoneBias();

// Reads the four bytes at an address that may be anything at all. False when they cannot be read.
bool ReadWord(const void* address, uint32_t& word);

// ---- Files ----------------------------------------------------------------------------------
// Descriptors are closed on exec, interrupted calls are taken up again.

constexpr int kNoFile = -1;

// The largest position that a file stream can address.
constexpr int64_t kLargestFilePosition = 0x7FFFFFFF;

// Opens an existing file. kNoFile, with errno EISDIR, ESPIPE or EOVERFLOW, for a directory, a file
// that cannot be positioned and one beyond kLargestFilePosition. SIZE is set to the file's.
int OpenForReading(const char* name, int64_t* size = nullptr);

// Opens a file once more, for reading from its beginning; the position is shared. Fails alike.
int OpenAgain(int file);

// Creates or empties a file, readable and writable by its owner.
int OpenForWriting(const char* name);

// Creates a file, readable and writable by its owner, where there is nothing of that name, not even
// a link.
int CreateNew(const char* name);

// Creates a new file in the temporary directory (TMPDIR, else the system's; asked once) and stores
// its name.
int CreateTemporary(std::string& name);

void Close(int file);
void Remove(const char* name);
bool IsRegularFile(const char* name);

// A descriptor that is closed with the object, whatever is thrown meanwhile.
class OpenFile {
 public:
  explicit OpenFile(int file) : file_(file) {}
  ~OpenFile() {
    if (file_ != kNoFile) Close(file_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int Number() const { return file_; }

 private:
  const int file_;
};

// The paths of all in a directory, in the order of their names. Nothing when it cannot be read.
std::optional<std::vector<std::string>> ListDirectory(const std::string& directory);

// Reads up to LENGTH bytes; 0 at the end, -1 after an error.
int64_t Read(int file, void* destination, int64_t length);

// Writes all of it; the number written is smaller only after an error.
int64_t Write(int file, const void* data, int64_t length);

bool Seek(int file, int64_t position);
int64_t Tell(int file);

// A file that is opened for appending, and closed again with the object. What it cannot open or
// write is lost.
class AppendFile {
 public:
  explicit AppendFile(const char* name);
  void Write(std::string_view text);

 private:
  OpenFile file_;
};

// ---- File types -----------------------------------------------------------------------------

// The content type that this machine gives to files of an extension, which has no dot and may be in
// any case. Asked once: the file that the setting Mime_Types names, else /etc/mime.types and behind
// it the shared MIME database.
std::optional<std::string> RegisteredType(std::string_view extension);

}  // namespace mimora::platform

#endif  // MIMORA_PLATFORM_PLATFORM_H_
